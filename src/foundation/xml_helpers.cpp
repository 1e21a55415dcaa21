#include "foundation/xml_helpers.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/foundation_texts.h"
#include "foundation/text.h"
#include "foundation/xml_guard.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr std::string_view kModule = "mTmXmlToolsErr";

const XmlNode* FindChildElement(const XmlNode& node, std::string_view name) {
  for (const auto& child : node.children) {
    if (child->kind == XmlNodeKind::kElement && child->name == name) return child.get();
  }
  return nullptr;
}

const ports::XmlAttribute* FindAttribute(const XmlNode& node, std::string_view name) {
  const auto found = std::find_if(node.attributes.begin(), node.attributes.end(),
                                  [&](const auto& attribute) { return attribute.name == name; });
  return found == node.attributes.end() ? nullptr : &*found;
}

std::string AttributePath(const XmlNode& node, std::string_view name) {
  return XmlGetNodePath(node).append("/@").append(name);
}

std::string Explain(const ports::XmlParseError& error) {
  return std::string("   Reason: ")
      .append(OneLine(error.reason))
      .append(kCrLf)
      .append("   Source: ")
      .append(OneLine(error.source_line))
      .append(kCrLf)
      .append("   Line: ")
      .append(std::to_string(error.line));
}

ports::XmlParseResult ParseFile(const std::string& file, const std::function<bool()>& may_go_on) {
  ports::XmlParseResult result;
  try {
    if (GetFileLength(file) > kMaxXmlLength) {
      result.error.reason = foundation_texts::kFileTooLarge;
      return result;
    }
    const std::string bytes = ReadFileBytes(file);
    const char* const danger = FindXmlDanger(bytes, may_go_on);
    if (danger == nullptr) return ports::CurrentPorts().xml->Parse(bytes);
    result.error.reason = danger;
  } catch (const ProgramError& error) {
    result.error.reason = TrimCharacters(error.Description, " \r\n");
  }
  return result;
}

struct Range {
  char16_t first;
  char16_t last;
};

// XML 1.0 (fifth edition), productions [4] and [4a], basic plane, without ":" and "_".
constexpr std::array kNameStart = {
    Range{u'A', u'Z'},     Range{u'a', u'z'},     Range{0x00C0, 0x00D6}, Range{0x00D8, 0x00F6},
    Range{0x00F8, 0x02FF}, Range{0x0370, 0x037D}, Range{0x037F, 0x1FFF}, Range{0x200C, 0x200D},
    Range{0x2070, 0x218F}, Range{0x2C00, 0x2FEF}, Range{0x3001, 0xD7FF}, Range{0xF900, 0xFDCF},
    Range{0xFDF0, 0xFFFD}};
constexpr std::array kNameRest = {Range{u'-', u'.'}, Range{u'0', u'9'}, Range{0x00B7, 0x00B7},
                                  Range{0x0300, 0x036F}, Range{0x203F, 0x2040}};

template <typename Ranges>
bool IsIn(const Ranges& ranges, char16_t unit) {
  return std::any_of(ranges.begin(), ranges.end(), [unit](const Range& range) {
    return range.first <= unit && unit <= range.last;
  });
}

}  // namespace

std::unique_ptr<XmlDocument> XmlCreateDocument(std::string& reason) try {
  if (!ports::CurrentPorts().xml->IsAvailable(reason)) return nullptr;
  return std::make_unique<XmlDocument>();
} catch (...) {
  ReRaiseError(kModule, "XmlCreateDocument");
}

bool XmlLoadDocumentSafe(XmlDocument& document, const std::string& file, std::string& explanation,
                         const std::function<bool()>& may_go_on) try {
  ports::XmlParseResult result = ParseFile(file, may_go_on);
  const bool is_loaded = static_cast<bool>(result);
  if (!is_loaded) {
    explanation = Explain(result.error);
    result.document = std::make_unique<XmlNode>(XmlNodeKind::kDocument);
  }
  document.node_ = std::move(result.document);
  return is_loaded;
} catch (...) {
  ReRaiseError(kModule, "XmlLoadDocumentSafe");
}

std::string XmlGetNodePath(const XmlNode& node) {
  if (node.parent == nullptr) return {};
  std::string step = "/" + node.name;
  const std::vector<const XmlNode*> namesakes = XmlGetChildElements(*node.parent, node.name);
  const auto place = std::find(namesakes.begin(), namesakes.end(), &node);
  if (namesakes.size() > 1 && place != namesakes.end())
    step += "[" + std::to_string(place - namesakes.begin() + 1) + "]";
  return XmlGetNodePath(*node.parent) + step;
}

const XmlNode& XmlSelectSingleNode(const XmlNode& node, std::string_view path) try {
  const XmlNode* const found = XmlFindSingleNode(node, path);
  if (found != nullptr) return *found;
  RaiseProgramError("Missing node " + XmlGetNodePath(node).append("/").append(path));
} catch (...) {
  ReRaiseError(kModule, "XmlSelectSingleNode");
}

const XmlNode* XmlFindSingleNode(const XmlNode& node, std::string_view path) {
  const std::size_t slash = path.find('/');
  if (slash == std::string_view::npos) return FindChildElement(node, path);
  for (const XmlNode* const child : XmlGetChildElements(node, path.substr(0, slash))) {
    const XmlNode* const found = XmlFindSingleNode(*child, path.substr(slash + 1));
    if (found != nullptr) return found;
  }
  return nullptr;
}

std::vector<const XmlNode*> XmlGetChildElements(const XmlNode& node, std::string_view name) {
  std::vector<const XmlNode*> elements;
  for (const auto& child : node.children) {
    if (child->kind == XmlNodeKind::kElement && child->name == name)
      elements.push_back(child.get());
  }
  return elements;
}

std::string XmlGetText(const XmlNode& node) {
  if (node.kind == XmlNodeKind::kText) return node.value;
  std::string text;
  for (const auto& child : node.children)
    text += XmlGetText(*child);
  return text;
}

std::string XmlGetStringAttribute(const XmlNode& node, std::string_view name) try {
  const ports::XmlAttribute* const attribute = FindAttribute(node, name);
  if (attribute != nullptr) return attribute->value;
  RaiseProgramError("Missing attribute " + AttributePath(node, name));
} catch (...) {
  ReRaiseError(kModule, "XmlGetStringAttribute");
}

std::string XmlGetStringAttributeDef(const XmlNode& node, std::string_view name,
                                     std::string_view default_value) {
  const ports::XmlAttribute* const attribute = FindAttribute(node, name);
  return attribute == nullptr ? std::string(default_value) : attribute->value;
}

std::int32_t XmlGetLongAttribute(const XmlNode& node, std::string_view name) try {
  const std::string value = XmlGetStringAttribute(node, name);
  std::string digits = Trim(value);
  // from_chars takes a minus but no plus.
  if (digits.size() > 1 && digits[0] == '+' && digits[1] != '-') digits.erase(0, 1);
  std::int32_t number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, number);
  if (stop == end && error == std::errc{}) return number;
  const bool is_too_large = stop == end && error == std::errc::result_out_of_range;
  throw ProgramError(is_too_large ? kOverflowErrorNumber : kTypeMismatchErrorNumber,
                     foundation_texts::BadNumber(AttributePath(node, name), value, is_too_large));
} catch (...) {
  ReRaiseError(kModule, "XmlGetLongAttribute");
}

bool XmlGetBooleanAttributeDef(const XmlNode& node, std::string_view name, bool default_value) {
  const std::string word = LowerCase(Trim(XmlGetStringAttributeDef(node, name, "")));
  if (word == "yes" || word == "1" || word == "true") return true;
  if (word == "no" || word == "0" || word == "false") return false;
  return default_value;
}

std::string XmlMakeNodeName(std::string_view text) {
  std::string name;
  for (const char16_t unit : Utf8ToUtf16(text)) {
    if (IsIn(kNameStart, unit) || (!name.empty() && IsIn(kNameRest, unit))) {
      AppendUtf8(name, unit);
      continue;
    }
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    name.push_back('_');
    for (const unsigned shift : {12U, 8U, 4U, 0U})
      name.push_back(kDigits[(unit >> shift) & 0xFU]);
  }
  return name;
}

}  // namespace tmw
