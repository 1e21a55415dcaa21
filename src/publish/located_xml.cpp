#include "publish/located_xml.h"

#include <algorithm>
#include <utility>

#include "foundation/file_utils.h"

namespace publish {
namespace {

// The document with one byte a character, as far as markup is concerned.
std::string MarkupOf(std::string_view bytes) {
  const bool is_little = bytes.starts_with("\xFF\xFE");
  if (!is_little && !bytes.starts_with("\xFE\xFF")) return std::string(bytes);
  std::string markup;
  for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
    const char high = bytes[is_little ? i + 1 : i];
    markup += high == '\0' ? bytes[is_little ? i : i + 1] : '?';
  }
  return markup;
}

// Where the markup that begins here ends, if it is none that begins an element.
std::size_t EndOfOther(std::string_view markup) {
  constexpr std::pair<std::string_view, std::string_view> kOthers[] = {
      {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}, {"<!", ">"}, {"</", ">"}};
  for (const auto& [opener, closer] : kOthers) {
    if (!markup.starts_with(opener)) continue;
    const std::size_t end = markup.find(closer, opener.size());
    return end == std::string_view::npos ? markup.size() : end + closer.size();
  }
  return 0;
}

}  // namespace

std::vector<std::int32_t> ElementLines(std::string_view bytes) {
  const std::string text = MarkupOf(bytes);
  const std::string_view markup = text;
  std::vector<std::int32_t> lines;
  std::int32_t line = 1;
  std::size_t counted = 0;
  for (std::size_t at = markup.find('<'); at < markup.size(); at = markup.find('<', at)) {
    if (const std::size_t length = EndOfOther(markup.substr(at)); length > 0) {
      at += length;
      continue;
    }
    line += static_cast<std::int32_t>(
        std::count(markup.begin() + static_cast<std::ptrdiff_t>(counted),
                   markup.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
    counted = at++;
    lines.push_back(line);
  }
  return lines;
}

std::optional<LocatedXml> LocatedXml::Open(const std::string& file, const std::string& name,
                                           Faults& faults) {
  LocatedXml xml;
  xml.name_ = name;
  xml.document_ = OpenXml(file, name, faults);
  if (xml.document_ == nullptr) return std::nullopt;
  std::size_t element = 0;
  xml.Number(xml.Node(), ElementLines(tmw::ReadFileBytes(file)), element);
  return xml;
}

void LocatedXml::Number(const tmw::XmlNode& node, const std::vector<std::int32_t>& lines,
                        std::size_t& element) {
  if (node.kind == tmw::XmlNodeKind::kElement && element < lines.size())
    lines_[&node] = lines[element++];
  for (const auto& child : node.children)
    Number(*child, lines, element);
}

std::string LocatedXml::PlaceOf(const tmw::XmlNode& node) const {
  const auto found = lines_.find(&node);
  return found == lines_.end() ? name_ : name_ + ":" + std::to_string(found->second);
}

}  // namespace publish
