#include "foundation/file_names.h"
#include "foundation/number_text.h"
#include "publish/announcement.h"
#include "publish/answer.h"
#include "publish/command_runs.h"
#include "publish/pruning.h"
#include "publish/publish_texts.h"
#include "tools/fill.h"

namespace publish {

using tools::Fill;
using tools::Json;

int RunPrune(const tools::Arguments& arguments) {
  const std::string root = tmw::GetAbsoluteFileName(arguments.NeededValue("--output"));
  const auto keep = tmw::ReadWholeNumber(arguments.NeededValue("--keep"));
  if (keep.value_or(0) < 1) throw tools::UsageError(texts::kKeepNeedsNumber);
  const bool is_dry = arguments.Has("--dry-run");
  const AnnouncingLock lock(root);
  Faults faults;
  const auto pruned = Prune(root, static_cast<std::size_t>(*keep), is_dry, faults);
  Json list = Json::array();
  std::string words;
  for (const PrunedRelease& release : pruned) {
    list.push_back({{"version", release.version}, {"bytes", release.bytes}});
    words += Fill(is_dry ? texts::kWouldRemove : texts::kRemoved,
                  {release.version, std::to_string(release.bytes)});
  }
  if (faults.IsEmpty() && pruned.empty()) words = texts::kNothingToRemove;
  return Answer(arguments, {{is_dry ? "would_remove" : "removed", std::move(list)}}, faults, words);
}

}  // namespace publish
