#include "publish/commands.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include "foundation/file_names.h"
#include "foundation/number_text.h"
#include "foundation/utc_day.h"
#include "publish/announcement.h"
#include "publish/checker.h"
#include "publish/difference.h"
#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/publish_texts.h"
#include "publish/publisher.h"
#include "publish/signer.h"
#include "tools/fill.h"
#include "tools/json.h"
#include "tools/progress.h"

namespace publish {
namespace {

using tools::Arguments;
using tools::Fill;
using tools::Json;

// Prints the answer with the faults as JSON, or the faults and the words. Returns the exit code,
// which depends on whether there are faults.
int Answer(const Arguments& arguments, Json answer, const Faults& faults,
           const std::string& words) {
  if (arguments.Has(tools::kJsonOption)) {
    Json list = Json::array();
    for (const Fault& fault : faults.All())
      list.push_back({{"place", fault.place}, {"text", fault.text}});
    answer["faults"] = std::move(list);
    std::cout << tools::JsonLine(answer);
  } else {
    for (const Fault& fault : faults.All())
      std::cout << fault.place << ": " << fault.text << '\n';
    if (!faults.IsEmpty())
      std::cout << Fill(texts::kFaultCount, {std::to_string(faults.All().size())});
    std::cout << words;
  }
  return faults.IsEmpty() ? tools::kDone : kFaultsFound;
}

// The signer that the command line asks for, or null.
std::unique_ptr<Signer> MakeSigner(const Arguments& arguments) {
  constexpr std::int64_t kUsualDays = 180;
  const auto key = arguments.Value("--sign");
  if (!key) {
    for (const tools::Option& option : texts::kSigningOptions) {
      if (arguments.Has(option.name))
        throw tools::UsageError(Fill(texts::kNeedsSign, {option.name}));
    }
    return nullptr;
  }
  SigningOptions options;
  options.key_file = *key;
  options.password_file = arguments.Value("--password-file").value_or("");
  options.last_day = Today() + kUsualDays;
  if (const auto expires = arguments.Value("--expires")) {
    constexpr std::int64_t kMostDays = 36'500;
    const auto days = tmw::ReadWholeNumber(*expires);
    const auto day = days && *days <= kMostDays ? Today() + *days : tmw::ReadUtcDay(*expires);
    if (!day || *day < Today()) throw tools::UsageError(texts::kExpiresNeedsDay);
    options.last_day = *day;
  }
  if (const auto serial = arguments.Value("--serial")) {
    options.serial = tmw::ReadWholeNumber(*serial);
    if (options.serial.value_or(0) < 1) throw tools::UsageError(texts::kSerialNeedsNumber);
  }
  return std::make_unique<Signer>(options);
}

void AddTo(Json& answer, const SignedPart& part, const std::string& key_id) {
  answer["serial"] = part.serial;
  answer["expires"] = tmw::UtcDayText(part.last_day);
  answer["key"] = key_id;
}

std::string WordsOf(const SignedPart& part, const std::string& key_id) {
  return Fill(texts::kSignedAs,
              {key_id, std::to_string(part.serial), tmw::UtcDayText(part.last_day)});
}

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

int RunAnnounce(const Arguments& arguments) {
  const std::string version = arguments.Words().front();
  if (!IsVersion(version, 4)) throw tools::UsageError(texts::kVersionNeeded);
  const std::string root = RootOf(arguments);
  const auto signer = MakeSigner(arguments);
  Faults faults;
  const Announcement made = AnnounceNewer(root, version, signer.get(), faults);
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

int RunKeygen(const Arguments& arguments) {
  const bool is_open = arguments.Has("--no-password");
  std::optional<std::string> password_file = arguments.Value("--password-file");
  if (is_open && password_file) throw tools::UsageError(texts::kTwoPasswords);
  if (!is_open && !password_file) password_file = "";
  const std::string file = arguments.Words().front();
  const KeyPair pair = MakeKeys(file, password_file);
  return Answer(arguments,
                {{"secret_key_file", file},
                 {"public_key_file", pair.public_file},
                 {"public_key", pair.public_key},
                 {"key", pair.key_id}},
                {}, Fill(texts::kMadeKey, {file, pair.public_file, pair.public_key}));
}

int RunPublish(const Arguments& arguments) {
  PublishOptions options;
  options.is_announced = !arguments.Has("--no-announce");
  if (!options.is_announced && arguments.Has("--sign"))
    throw tools::UsageError(texts::kSignsWhatIsAnnounced);
  const auto signer = MakeSigner(arguments);
  options.signer = signer.get();
  options.may_replace = arguments.Has("--replace");
  options.product = arguments.NeededValue("--product");
  options.database = arguments.NeededValue("--database");
  options.scripts = arguments.NeededValue("--scripts");
  options.output = arguments.NeededValue("--output");
  options.description = arguments.Words().front();
  Faults faults;
  PublishedRelease made;
  {
    tools::Progress progress;
    made = Publish(options, progress, faults);
  }
  if (!faults.IsEmpty()) return Answer(arguments, Json::object(), faults, texts::kNothingPublished);
  Json answer = {{"version", made.version},
                 {"folder", made.folder},
                 {"files", made.files},
                 {"dictionaries", made.dictionaries},
                 {"user_tables", made.user_tables},
                 {"scripts", made.scripts},
                 {"volume", made.volume}};
  std::string words =
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

int RunCheck(const Arguments& arguments) {
  CheckOptions options;
  options.oldest_database = arguments.Value("--from").value_or("");
  if (!options.oldest_database.empty() && !IsVersion(options.oldest_database, 3))
    throw tools::UsageError(texts::kFromNeedsVersion);
  if (const auto key = arguments.Value("--key")) options.key = ReadPublicKey(*key);
  Faults faults;
  CheckedRelease release;
  {
    tools::Progress progress;
    release = CheckRelease(arguments.Words().front(), options, progress, faults);
  }
  Json answer = {{"version", release.version},
                 {"files", release.files},
                 {"tables", release.tables},
                 {"volume", release.volume}};
  Json warnings = Json::array();
  std::string words;
  for (const Fault& warning : release.warnings.All()) {
    warnings.push_back({{"place", warning.place}, {"text", warning.text}});
    words += Fill(texts::kWarning, {warning.place, warning.text});
  }
  answer["warnings"] = std::move(warnings);
  if (release.signed_part) {
    const std::string key_id = signature::KeyIdText(options.key->id);
    AddTo(answer, *release.signed_part, key_id);
    answer["trusted_comment"] = release.trusted_comment;
    words +=
        WordsOf(*release.signed_part, key_id) + Fill(texts::kComment, {release.trusted_comment});
  }
  if (faults.IsEmpty()) {
    words +=
        Fill(texts::kInOrder, {release.version, std::to_string(release.files),
                               std::to_string(release.tables), std::to_string(release.volume)});
  }
  return Answer(arguments, answer, faults, words);
}

// The same word for people and for machines.
const char* NameOf(DownloadKind kind) {
  if (kind == DownloadKind::kFile) return "file";
  return kind == DownloadKind::kDictionary ? "dictionary" : "package";
}

std::string WordsOf(const Difference& difference) {
  std::string words = Fill(texts::kReleases, {difference.old_version, difference.new_version});
  for (const Download& download : difference.downloads) {
    words += std::to_string(download.bytes) + "\t" + NameOf(download.kind) + "\t" + download.name +
             (download.is_new ? texts::kIsNew : "") + "\n";
  }
  for (const std::string& file : difference.left_over)
    words += std::string("0\t") + texts::kLeftOver + "\t" + file + "\n";
  return words + Fill(texts::kVolumes, {std::to_string(difference.volume),
                                        std::to_string(difference.client_volume)});
}

Json ObjectOf(const Difference& difference) {
  Json downloads = Json::array();
  for (const Download& download : difference.downloads) {
    downloads.push_back({{"kind", NameOf(download.kind)},
                         {"name", download.name},
                         {"bytes", download.bytes},
                         {"new", download.is_new ? 1 : 0}});
  }
  Json left_over = Json::array();
  for (const std::string& file : difference.left_over)
    left_over.push_back({{"name", file}});
  return {{"old", difference.old_version},     {"new", difference.new_version},
          {"downloads", std::move(downloads)}, {"left_over", std::move(left_over)},
          {"volume", difference.volume},       {"client_volume", difference.client_volume}};
}

int RunDiff(const Arguments& arguments) {
  Faults faults;
  Manifest old_release;
  Manifest new_release;
  const bool has_old = LoadManifest(arguments.Words()[0], old_release, faults);
  const bool has_new = LoadManifest(arguments.Words()[1], new_release, faults);
  if (!has_old || !has_new) return Answer(arguments, Json::object(), faults, "");
  const Difference difference = Compare(old_release, new_release);
  return Answer(arguments, ObjectOf(difference), faults, WordsOf(difference));
}

}  // namespace

tools::Program MakeProgram() {
  return {"tmpublish",
          texts::kHelpHead,
          texts::kHelpTail,
          {{texts::kPublish, RunPublish},
           {texts::kAnnounce, RunAnnounce},
           {texts::kRetract, RunRetract},
           {texts::kRenew, RunRenew},
           {texts::kCheck, RunCheck},
           {texts::kDiff, RunDiff},
           {texts::kKeygen, RunKeygen}},
          true,
          kFailed};
}

}  // namespace publish
