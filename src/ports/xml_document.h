#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ports {

enum class XmlNodeKind {
  kDocument,
  kElement,
  kDeclaration,  // <?xml ...?>; its name is "xml"
  kComment,
  kText,   // text or a CDATA section
  kOther,  // a processing instruction, a document type
};

struct XmlAttribute {
  std::string name;  // qualified
  std::string value;
};

// A node of a document with everything in it. The parser builds the tree; it is not changed
// afterwards.
struct XmlNode {
  explicit XmlNode(XmlNodeKind node_kind, XmlNode* node_parent = nullptr)
      : kind(node_kind), parent(node_parent) {}
  XmlNode(const XmlNode&) = delete;
  XmlNode& operator=(const XmlNode&) = delete;

  XmlNode& Append(XmlNodeKind child_kind) {
    return *children.emplace_back(std::make_unique<XmlNode>(child_kind, this));
  }

  XmlNodeKind kind;
  const XmlNode* parent;                           // none for the document itself
  std::string name;                                // qualified; elements and the declaration only
  std::string value;                               // texts and comments only
  std::vector<XmlAttribute> attributes;            // elements only, without namespace declarations
  std::vector<std::unique_ptr<XmlNode>> children;  // in document order
};

// Why a document could not be read.
struct XmlParseError {
  std::string reason;       // the parser's words
  std::string source_line;  // the text of the line, empty when unknown
  std::int32_t line = 0;    // 1-based; 0 when unknown
};

// As Outcome, with the words of the parser in place of a code.
struct [[nodiscard]] XmlParseResult {
  std::unique_ptr<XmlNode> document;  // of kind kDocument; none on failure
  XmlParseError error;

  explicit operator bool() const { return document != nullptr; }
};

// Text between elements that only lays the document out.
inline bool IsXmlWhiteSpace(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// Elements nested deeper than this are refused.
inline constexpr int kXmlMaxDepth = 256;

// The system's XML parser: MSXML 4.0, else 6.0, on Windows; libxml2 on Linux. Nothing but the given
// bytes is ever read: no network, no external entities, no external document type.
class XmlParser {
 public:
  virtual ~XmlParser() = default;

  // Returns false and the reason if the system's XML component is missing.
  virtual bool IsAvailable(std::string& reason) = 0;

  // Parses a whole document in UTF-8, UTF-16 with its mark or windows-1251, as its own declaration
  // says. The document's children are the XML declaration, when the text has one, then comments,
  // the document type and the root element in document order. Text of nothing but white space is
  // omitted, CDATA sections never are.
  virtual XmlParseResult Parse(std::string_view bytes) = 0;
};

}  // namespace ports
