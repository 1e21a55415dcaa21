#include <algorithm>

#include "publish/answer.h"
#include "publish/checker.h"
#include "publish/command_runs.h"
#include "publish/digest.h"
#include "publish/mirror_report.h"
#include "publish/publish_texts.h"
#include "publish/rehearsal_report.h"
#include "publish/signer.h"
#include "tools/fill.h"
#include "tools/progress.h"

namespace publish {

using tools::Arguments;
using tools::Fill;
using tools::Json;

int RunCheck(const Arguments& arguments) {
  CheckOptions options;
  options.oldest_database = arguments.Value("--from").value_or("");
  if (!options.oldest_database.empty() && !IsVersion(options.oldest_database, 3))
    throw tools::UsageError(texts::kFromNeedsVersion);
  if (const auto key = arguments.Value("--key")) options.key = ReadPublicKey(*key);
  const std::optional<std::size_t> sample = SampleOf(arguments);
  options.tries = arguments.Values("--try");
  Faults faults;
  CheckedRelease release;
  std::vector<MirrorState> mirrors;
  {
    tools::Progress progress;
    release = CheckRelease(arguments.Words().front(), options, progress, faults);
    if (arguments.Has("--mirrors") && release.digest.manifest)
      mirrors = CheckMirrors(release.digest, release.server_list, sample, progress);
  }
  Json answer = {{"version", release.version},
                 {"files", release.files},
                 {"tables", release.tables},
                 {"volume", release.volume}};
  std::string words;
  if (release.signed_part) {
    const std::string key_id = signature::KeyIdText(options.key->id);
    AddTo(answer, *release.signed_part, key_id);
    answer["trusted_comment"] = release.trusted_comment;
    words +=
        WordsOf(*release.signed_part, key_id) + Fill(texts::kComment, {release.trusted_comment});
  }
  words += AddTo(answer, release.tried);
  if (faults.IsEmpty()) {
    words +=
        Fill(texts::kInOrder, {release.version, std::to_string(release.files),
                               std::to_string(release.tables), std::to_string(release.volume)});
  }
  if (arguments.Has("--mirrors")) words += AddTo(answer, mirrors);
  return std::max(Answer(arguments, answer, faults, words), CodeOf(mirrors));
}

}  // namespace publish
