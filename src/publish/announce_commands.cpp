#include "foundation/file_names.h"
#include "publish/announcement.h"
#include "publish/answer.h"
#include "publish/command_runs.h"
#include "publish/digest.h"
#include "publish/publish_texts.h"
#include "publish/signing_arguments.h"
#include "tools/fill.h"

namespace publish {
namespace {

using tools::Arguments;
using tools::Fill;
using tools::Json;

int AnswerAnnouncement(const Arguments& arguments, const Announcement& announcement,
                       const Faults& faults) {
  Json answer = {{"version", announcement.version}};
  if (!faults.IsEmpty()) return Answer(arguments, answer, faults, texts::kNothingAnnouncedNow);
  std::string words = Fill(texts::kAnnounced, {announcement.version});
  if (announcement.signed_part) {
    AddTo(answer, *announcement.signed_part, announcement.key_id);
    words += WordsOf(*announcement.signed_part, announcement.key_id);
  }
  return Answer(arguments, answer, faults, words);
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
  Faults faults;
  if (!arguments.Has("--downgrade")) CheckNotOlder(root, version, texts::kInDigest, faults);
  const Announcement made = Announce(root, version, signer.get(), faults);
  return AnswerAnnouncement(arguments, made, faults);
}

int RunRetract(const Arguments& arguments) {
  const std::string root = RootOf(arguments);
  const auto signer = MakeSigner(arguments);
  Faults faults;
  const Announcement made = Retract(root, signer.get(), faults);
  return AnswerAnnouncement(arguments, made, faults);
}

int RunRenew(const Arguments& arguments) {
  const std::string root = RootOf(arguments);
  const auto signer = MakeSigner(arguments);
  if (signer == nullptr) throw tools::UsageError(Fill(texts::kNeedsSign, {texts::kRenew.name}));
  Faults faults;
  const Announcement made = Renew(root, *signer, faults);
  return AnswerAnnouncement(arguments, made, faults);
}

}  // namespace publish
