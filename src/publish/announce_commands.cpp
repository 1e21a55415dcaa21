#include <algorithm>

#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "publish/announcement.h"
#include "publish/answer.h"
#include "publish/command_runs.h"
#include "publish/digest.h"
#include "publish/mirror_report.h"
#include "publish/publish_texts.h"
#include "publish/signing_arguments.h"
#include "tools/fill.h"
#include "tools/program.h"
#include "tools/progress.h"

namespace publish {
namespace {

using tools::Arguments;
using tools::Fill;
using tools::Json;

int AnswerAnnouncement(const Arguments& arguments, const Announcement& announcement,
                       const Faults& faults, const std::vector<MirrorState>& mirrors = {}) {
  Json answer = {{"version", announcement.version}};
  std::string words = mirrors.empty() ? "" : AddTo(answer, mirrors);
  words += announcement.version.empty() ? texts::kNothingAnnouncedNow
                                        : Fill(texts::kAnnounced, {announcement.version});
  if (announcement.signed_part) {
    AddTo(answer, *announcement.signed_part, announcement.key_id);
    words += WordsOf(*announcement.signed_part, announcement.key_id);
  }
  return std::max(Answer(arguments, answer, faults, words), CodeOf(mirrors));
}

std::string RootOf(const Arguments& arguments) {
  return tmw::GetAbsoluteFileName(arguments.NeededValue("--output"));
}

}  // namespace

int RunAnnounce(const Arguments& arguments) {
  const std::string version = arguments.Words().front();
  if (!IsVersion(version, 4)) throw tools::UsageError(texts::kVersionNeeded);
  const std::string root = RootOf(arguments);
  const auto signer = MakeSigner(arguments);
  const std::optional<std::size_t> sample = SampleOf(arguments);
  const AnnouncingLock lock(root);
  Faults faults;
  if (!arguments.Has("--downgrade")) CheckNotOlder(root, version, texts::kInDigest, faults);
  std::vector<MirrorState> mirrors;
  if (arguments.Has("--mirrors")) {
    tools::Progress progress;
    const KeptAnnouncement kept = ReadKept(root, version, faults);
    if (faults.IsEmpty())
      mirrors = CheckMirrors(kept.digest, tmw::FileTextOf(kept.server_list), sample, progress);
  }
  Announcement made;
  if (!arguments.Has("--mirrors") || (faults.IsEmpty() && CodeOf(mirrors) == tools::kDone))
    made = Announce(root, version, signer.get(), faults);
  return AnswerAnnouncement(arguments, made, faults, mirrors);
}

int RunRetract(const Arguments& arguments) {
  const std::string root = RootOf(arguments);
  const auto signer = MakeSigner(arguments);
  const AnnouncingLock lock(root);
  Faults faults;
  const Announcement made = Retract(root, signer.get(), faults);
  return AnswerAnnouncement(arguments, made, faults);
}

int RunRenew(const Arguments& arguments) {
  const std::string root = RootOf(arguments);
  const auto signer = MakeSigner(arguments);
  if (signer == nullptr) throw tools::UsageError(Fill(texts::kNeedsSign, {texts::kRenew.name}));
  const AnnouncingLock lock(root);
  Faults faults;
  const Announcement made = Renew(root, *signer, faults);
  return AnswerAnnouncement(arguments, made, faults);
}

}  // namespace publish
