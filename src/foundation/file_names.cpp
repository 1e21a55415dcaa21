#include "foundation/file_names.h"

#include <algorithm>
#include <cstddef>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/foundation_texts.h"
#include "foundation/text.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "mTmFilesOld";
constexpr std::string_view kSeparators = "/\\";

bool IsSeparator(char c) {
  return kSeparators.find(c) != std::string_view::npos;
}

// The length of a path without the separators at its end; a root keeps its own.
std::size_t LengthWithoutSeparatorsAtEnd(std::string_view path) {
  std::size_t length = path.size();
  while (length > 1 && IsSeparator(path[length - 1]) && path[length - 2] != ':')
    --length;
  return length;
}

}  // namespace

std::string SplitName::FileName() const {
  return Extension.empty() ? Name : Name + "." + Extension;
}

SplitName SplitFileName(std::string_view path) {
  SplitName split;
  const std::size_t separator = path.find_last_of(kSeparators);
  if (separator != std::string_view::npos) {
    const std::string_view folder = path.substr(0, separator + 1);
    split.Folder = folder.substr(0, LengthWithoutSeparatorsAtEnd(folder));
    path.remove_prefix(separator + 1);
  }
  const std::size_t dot = path.rfind('.');
  const bool has_extension = dot != std::string_view::npos && dot > 0 && dot + 1 < path.size();
  split.Name = path.substr(0, has_extension ? dot : path.size());
  if (has_extension) split.Extension = path.substr(dot + 1);
  return split;
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  if (folder.empty()) return NativePath(name);
  std::string path(folder.substr(0, LengthWithoutSeparatorsAtEnd(folder)));
  name.remove_prefix(std::min(name.find_first_not_of(kSeparators), name.size()));
  if (name.empty()) return path;
  if (!IsSeparator(path.back())) path += ports::CurrentPorts().files->Separator();
  return path + NativePath(name);
}

std::string NativePath(std::string_view path) {
  std::string native(path);
  std::replace_if(native.begin(), native.end(), IsSeparator,
                  ports::CurrentPorts().files->Separator());
  return native;
}

std::string GetAbsoluteFileName(const std::string& path) try {
  const auto absolute = ports::CurrentPorts().files->MakeAbsolute(path);
  if (!absolute) {
    RaiseApiErrorWithMessage(foundation_texts::Failed(foundation_texts::kFullName, path),
                             absolute.code);
  }
  return absolute.value;
} catch (...) {
  ReRaiseError(kModule, "GetAbsoluteFileName");
}

bool MatchesMask(std::string_view name, std::string_view mask) {
  if (mask == "*.*") return true;
  const std::u16string text = Utf8ToUtf16(LowerCase(name));
  const std::u16string pattern = Utf8ToUtf16(LowerCase(mask));
  std::size_t at = 0;
  std::size_t in_pattern = 0;
  // Where to go on when the text after the last star does not fit: the star takes one more.
  std::size_t after_star = std::u16string::npos;
  std::size_t star_ends = 0;
  while (at < text.size()) {
    const bool has_more = in_pattern < pattern.size();
    if (has_more && pattern[in_pattern] == u'*') {
      after_star = ++in_pattern;
      star_ends = at;
    } else if (has_more && (pattern[in_pattern] == u'?' || pattern[in_pattern] == text[at])) {
      ++in_pattern;
      ++at;
    } else if (after_star != std::u16string::npos) {
      in_pattern = after_star;
      at = ++star_ends;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of(u'*', in_pattern) == std::u16string::npos;
}

}  // namespace tmw
