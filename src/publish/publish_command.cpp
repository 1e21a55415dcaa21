#include <optional>

#include "foundation/number_text.h"
#include "publish/answer.h"
#include "publish/command_runs.h"
#include "publish/packer_texts.h"
#include "publish/publish_texts.h"
#include "publish/publisher.h"
#include "publish/rehearsal_report.h"
#include "publish/signing_arguments.h"
#include "tools/fill.h"
#include "tools/progress.h"

namespace publish {

using tools::Arguments;
using tools::Fill;
using tools::Json;

namespace {

std::optional<PackerOptions> PackerFrom(const Arguments& arguments) {
  PackerOptions packer;
  packer.cache = arguments.Value("--cache").value_or("");
  const auto limit = arguments.Value("--packer-limit");
  const auto seconds = tmw::ReadWholeNumber(limit.value_or("600"));
  if (!seconds || *seconds < 1) throw tools::UsageError(texts::kLimitNeedsSeconds);
  packer.most_silence = *seconds;
  const auto command = arguments.Value("--packer");
  if (command) {
    packer.command = *command;
    RequireMarks(packer);
    return packer;
  }
  for (const char* const option : {"--cache", "--packer-limit"}) {
    if (arguments.Has(option)) throw tools::UsageError(Fill(texts::kNeedsPacker, {option}));
  }
  return std::nullopt;
}

}  // namespace

int RunPublish(const Arguments& arguments) {
  PublishOptions options;
  options.is_announced = !arguments.Has("--no-announce");
  if (!options.is_announced && arguments.Has("--sign"))
    throw tools::UsageError(texts::kSignsWhatIsAnnounced);
  const auto signer = MakeSigner(arguments);
  options.signer = signer.get();
  options.may_downgrade = arguments.Has("--downgrade");
  options.may_replace = arguments.Has("--replace");
  options.product = arguments.NeededValue("--product");
  options.database = arguments.NeededValue("--database");
  options.scripts = arguments.Value("--scripts").value_or("");
  options.output = arguments.NeededValue("--output");
  options.packer = PackerFrom(arguments);
  options.tries = arguments.Values("--try");
  options.description = arguments.Words().front();
  Faults faults;
  PublishedRelease made;
  {
    tools::Progress progress;
    made = Publish(options, progress, faults);
  }
  Json failure = Json::object();
  const std::string tried = AddTo(failure, made.tried);
  if (!faults.IsEmpty())
    return Answer(arguments, failure, faults, tried + texts::kNothingPublished);
  Json answer = {{"version", made.version},
                 {"folder", made.folder},
                 {"files", made.files},
                 {"dictionaries", made.dictionaries},
                 {"user_tables", made.user_tables},
                 {"scripts", made.scripts},
                 {"volume", made.volume}};
  std::string words =
      AddTo(answer, made.tried) +
      Fill(texts::kPublished, {made.folder, std::to_string(made.files),
                               std::to_string(made.dictionaries), std::to_string(made.user_tables),
                               std::to_string(made.scripts), std::to_string(made.volume)});
  if (made.announcement.signed_part) {
    AddTo(answer, *made.announcement.signed_part, made.announcement.key_id);
    words += WordsOf(*made.announcement.signed_part, made.announcement.key_id);
  } else if (!options.is_announced) {
    words += Fill(texts::kNotAnnounced, {made.version, options.output});
  }
  return Answer(arguments, answer, faults, words);
}

}  // namespace publish
