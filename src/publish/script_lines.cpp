#include "publish/script_lines.h"

#include <charconv>
#include <utility>

#include "foundation/encodings.h"

namespace publish {
namespace {

constexpr bool IsWhite(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The character that a reference of XML stands for; empty if it is none.
std::string Resolved(std::string_view reference) {
  constexpr std::pair<std::string_view, const char*> kNamed[] = {
      {"lt", "<"}, {"gt", ">"}, {"amp", "&"}, {"quot", "\""}, {"apos", "'"}};
  for (const auto& [name, text] : kNamed) {
    if (reference == name) return text;
  }
  if (!reference.starts_with('#')) return {};
  const bool is_hex = reference.starts_with("#x");
  reference.remove_prefix(is_hex ? 2 : 1);
  std::uint32_t code = 0;
  const auto read = std::from_chars(reference.data(), reference.data() + reference.size(), code,
                                    is_hex ? 16 : 10);
  std::string text;
  if (read.ec == std::errc() && read.ptr == reference.data() + reference.size())
    tmw::AppendUtf8(text, code);
  return text;
}

}  // namespace

ScriptLines::ScriptLines(std::string_view bytes) {
  const std::string source = tmw::IsWellFormedUtf8(bytes)
                                 ? std::string(bytes)
                                 : tmw::CodePageToUtf8(tmw::CodePage::k1251, bytes);
  std::uint32_t line = 1;
  bool is_comment = false;
  for (std::size_t i = 0; i < source.size(); ++i) {
    const std::string_view rest = std::string_view(source).substr(i);
    if (rest.starts_with("<!--")) is_comment = true;
    if (source[i] == '\n') ++line;
    if (is_comment && rest.starts_with("-->")) {
      is_comment = false;
      i += 2;
      continue;
    }
    if (is_comment || IsWhite(source[i])) continue;
    std::string piece(1, source[i]);
    if (source[i] == '&') {
      constexpr std::size_t kLongest = 10;
      const std::size_t end = rest.substr(0, kLongest).find(';');
      const std::string resolved =
          end == std::string_view::npos ? "" : Resolved(rest.substr(1, end - 1));
      if (!resolved.empty()) {
        i += end;
        piece = IsWhite(resolved.front()) ? "" : resolved;
      }
    }
    text_ += piece;
    lines_.resize(text_.size(), line);
  }
}

std::size_t ScriptLines::Find(std::string_view text) {
  std::string wanted;
  for (const char c : text) {
    if (!IsWhite(c)) wanted += c;
  }
  const std::size_t found = wanted.empty() ? std::string::npos : text_.find(wanted, at_);
  if (found == std::string::npos) return 0;
  at_ = found + wanted.size();
  return lines_[found];
}

}  // namespace publish
