#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ports/xml_document.h"

// XML documents, read only (module mTmXmlToolsErr).
//
// Errors name a node by its place: "/KSUpdateManifest/Files/Folder[2]/File[17]", an attribute of it
// by "/@" and its name. Names are case-sensitive.
namespace tmw {

using ports::XmlNode;
using ports::XmlNodeKind;

// Longer files are refused before they are read. Ours have a few megabytes at most; a parsed
// document takes about twenty times its length in memory.
inline constexpr std::int64_t kMaxXmlLength = std::int64_t{16} * 1024 * 1024;

// A loaded document, or an empty one. Nodes live as long as it does.
class XmlDocument {
 public:
  // Of kind kDocument. Its children are what stands outside the root, and the root, in order; the
  // XML declaration is the first when there is one.
  const XmlNode& Node() const { return *node_; }

 private:
  friend bool XmlLoadDocumentSafe(XmlDocument&, const std::string&, std::string&,
                                  const std::function<bool()>&);
  std::unique_ptr<XmlNode> node_ = std::make_unique<XmlNode>(XmlNodeKind::kDocument);
};

// An empty document; nothing, with the reason, if the system's XML component is missing.
std::unique_ptr<XmlDocument> XmlCreateDocument(std::string& reason);

// Returns false, an explanation and an empty document if the file cannot be read or is no
// well-formed XML. The explanation is three lines, each beginning with three blanks, without a line
// break at the end: "   Reason: ", "   Source: " (the line of the file, shortened), "   Line: ". A
// document beyond the bounds of xml_guard.h is refused before it is parsed; may_go_on: see there.
[[nodiscard]] bool XmlLoadDocumentSafe(XmlDocument& document, const std::string& file,
                                       std::string& explanation,
                                       const std::function<bool()>& may_go_on = {});

// The place of a node, as errors name it.
std::string XmlGetNodePath(const XmlNode& node);

// The first element that a path of child element names ("KSUpdateManifest/DataBase") leads to. A
// missing one raises "Missing node " and the path from the document on.
const XmlNode& XmlSelectSingleNode(const XmlNode& node, std::string_view path);

// The same; null when there is none.
const XmlNode* XmlFindSingleNode(const XmlNode& node, std::string_view path);

// Child elements of that name, in document order.
std::vector<const XmlNode*> XmlGetChildElements(const XmlNode& node, std::string_view name);

// The texts of the node and of everything in it, put together; comments do not count.
std::string XmlGetText(const XmlNode& node);

// A missing attribute raises "Missing attribute " and its place.
std::string XmlGetStringAttribute(const XmlNode& node, std::string_view name);

std::string XmlGetStringAttributeDef(const XmlNode& node, std::string_view name,
                                     std::string_view default_value);

// A required attribute as a signed 32-bit number: decimal digits with an optional sign, blanks
// around them. Anything else raises kTypeMismatchErrorNumber, a number out of range
// kOverflowErrorNumber; both name the attribute and its value.
std::int32_t XmlGetLongAttribute(const XmlNode& node, std::string_view name);

// "yes", "1", "true" and "no", "0", "false" in any letter case, with blanks around them; anything
// else, and no attribute, is the default.
bool XmlGetBooleanAttributeDef(const XmlNode& node, std::string_view name, bool default_value);

// An XML name made of any text, different texts giving different names. A character that may not
// stand at its place in a name, ":" and "_" become "_" and the four hexadecimal digits (upper-case)
// of their UTF-16 unit, those beyond the basic plane one such group for each of their two units:
// "3.05 а_б" gives "_0033.05_0020а_005Fб". An empty text gives an empty name.
std::string XmlMakeNodeName(std::string_view text);

}  // namespace tmw
