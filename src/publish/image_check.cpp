#include "publish/image_check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/version.h"

namespace publish {
namespace {

std::string EndingOf(const std::string& name) {
  return tmw::LowerCase(tmw::SplitFileName(name).Extension);
}

// The bitness of most programs and libraries; of as many of both, that of the programs, else that
// of the first. 0 if there are none.
int UsualBits(const std::vector<ReleaseImage>& images) {
  std::ptrdiff_t balance = 0;  // 64-bit files above 32-bit ones
  std::ptrdiff_t program_balance = 0;
  int first = 0;
  for (const ReleaseImage& image : images) {
    if (!image.facts || image.facts->bits == 0) continue;
    const std::ptrdiff_t step = image.facts->bits == 64 ? 1 : -1;
    balance += step;
    if (EndingOf(image.name) == "exe") program_balance += step;
    if (first == 0) first = image.facts->bits;
  }
  if (balance == 0) balance = program_balance;
  if (balance == 0) return first;
  return balance > 0 ? 64 : 32;
}

}  // namespace

bool MayBeImage(const std::string& name) {
  const std::string ending = EndingOf(name);
  return ending == "exe" || ending == "dll" || ending == "ocx" || ending == "so";
}

void CheckRegistered(const std::vector<ReleaseImage>& images, Faults& faults) {
  const int usual = UsualBits(images);
  for (const ReleaseImage& image : images) {
    if (image.marked_by.empty()) continue;
    if (!image.facts) {
      faults.Add(image.place, texts::kNoImage, {image.marked_by});
    } else if (!image.facts->can_be_registered) {
      faults.Add(image.place, texts::kRegistersNothing, {image.marked_by});
    } else if (image.facts->bits != 0 && image.facts->bits != usual) {
      faults.Add(image.place, texts::kOtherBits,
                 {image.marked_by, std::to_string(image.facts->bits), std::to_string(usual)});
    }
  }
}

void CheckNeededUpdater(const std::string& needed, const std::string& program_name,
                        const std::optional<ImageFacts>& program, const std::string& place,
                        Faults& faults) {
  std::array<std::int32_t, 4> demanded{};
  std::int32_t count = 0;
  if (!tmw::ParseVersionString(needed, demanded[0], demanded[1], demanded[2], demanded[3], count))
    return;  // reported elsewhere
  const bool is_known = program && program->version;
  const tmw::AppVersion own = tmw::GetAppVersion();
  const std::int32_t major = is_known ? program->version->at(0) : own.Major;
  const std::int32_t minor = is_known ? program->version->at(1) : own.Minor;
  // The updater compares the second number whatever the first one is.
  if (major >= demanded[0] && minor >= demanded[1]) return;
  const std::string found = std::to_string(major) + "." + std::to_string(minor);
  if (is_known) {
    faults.Add(place, texts::kUpdaterTooOld, {needed, program_name, found});
  } else {
    faults.Add(place, texts::kUpdaterUnknown, {needed, found});
  }
}

}  // namespace publish
