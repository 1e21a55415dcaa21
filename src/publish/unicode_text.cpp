#include "publish/unicode_text.h"

#include <cstddef>
#include <utility>

#include "foundation/encodings.h"
#include "packages/hash_api.h"
#include "publish/file_tree.h"
#include "tools/stop.h"

namespace publish {
namespace {

constexpr std::size_t kPiece = 256U << 10U;

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

}  // namespace

UnicodeText::UnicodeText(const std::string& path) : path_(path), file_(OpenToRead(path)) {}

std::string UnicodeText::Next() {
  for (;;) {
    tools::ThrowIfStopped();
    std::string bytes = std::exchange(rest_, {});
    const std::size_t kept = bytes.size();
    bytes.resize(kept + kPiece);
    const std::size_t got = ReadPiece(*file_, bytes.data() + kept, kPiece, path_);
    bytes.resize(kept + got);
    std::u16string units = tmw::BytesToUtf16(bytes);
    const bool is_split = got != 0 && !units.empty() && IsHighSurrogate(units.back());
    if (is_split) units.pop_back();
    if (got != 0) rest_ = bytes.substr(2 * units.size());
    const bool has_mark = is_start_ && units.starts_with(u'\xFEFF');
    if (!units.empty()) is_start_ = false;
    std::string text = tmw::Utf16ToUtf8(std::u16string_view(units).substr(has_mark ? 1 : 0));
    if (text.empty() && got != 0) continue;
    const std::string judged = tmw::Utf16ToBytes(tmw::Utf8ToUtf16(text));
    digest_.Update(judged.data(), judged.size());
    return text;
  }
}

std::string UnicodeText::Hash() {
  while (!Next().empty()) {
  }
  return tmw::GetHashString(digest_.Finish());
}

}  // namespace publish
