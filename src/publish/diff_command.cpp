#include <utility>

#include "publish/answer.h"
#include "publish/checker.h"
#include "publish/command_runs.h"
#include "publish/difference.h"
#include "publish/publish_texts.h"
#include "tools/fill.h"

namespace publish {
namespace {

using tools::Arguments;
using tools::Fill;
using tools::Json;

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

}  // namespace

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

}  // namespace publish
