#include "publish/commands.h"

#include <iostream>

#include "publish/checker.h"
#include "publish/difference.h"
#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/publish_texts.h"
#include "publish/publisher.h"
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

int RunPublish(const Arguments& arguments) {
  PublishOptions options;
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
  const Json answer = {{"version", made.version},
                       {"folder", made.folder},
                       {"files", made.files},
                       {"dictionaries", made.dictionaries},
                       {"user_tables", made.user_tables},
                       {"scripts", made.scripts},
                       {"volume", made.volume}};
  const std::string words =
      Fill(texts::kPublished, {made.folder, std::to_string(made.files),
                               std::to_string(made.dictionaries), std::to_string(made.user_tables),
                               std::to_string(made.scripts), std::to_string(made.volume)});
  return Answer(arguments, answer, faults, words);
}

int RunCheck(const Arguments& arguments) {
  const std::string oldest = arguments.Value("--from").value_or("");
  if (!oldest.empty() && !IsVersion(oldest, 3)) throw tools::UsageError(texts::kFromNeedsVersion);
  Faults faults;
  CheckedRelease release;
  {
    tools::Progress progress;
    release = CheckRelease(arguments.Words().front(), oldest, progress, faults);
  }
  const Json answer = {{"version", release.version},
                       {"files", release.files},
                       {"tables", release.tables},
                       {"volume", release.volume}};
  const std::string words =
      Fill(texts::kInOrder, {release.version, std::to_string(release.files),
                             std::to_string(release.tables), std::to_string(release.volume)});
  return Answer(arguments, answer, faults, faults.IsEmpty() ? words : "");
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
          {{texts::kPublish, RunPublish}, {texts::kCheck, RunCheck}, {texts::kDiff, RunDiff}},
          true,
          kFailed};
}

}  // namespace publish
