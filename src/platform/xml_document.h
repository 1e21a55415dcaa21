#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

enum class XmlNodeKind { kElement, kDeclaration, kComment, kText, kOther };

// Why a document could not be read.
struct XmlParseError {
  std::string reason;       // the parser's words
  std::string source_line;  // the text of the line, empty when unknown
  std::int32_t line = 0;    // 1-based; 0 when unknown
};

// A node of a loaded document. Lives as long as its document.
class XmlNode {
 public:
  virtual ~XmlNode() = default;

  virtual XmlNodeKind Kind() const = 0;

  // The qualified name of an element; "xml" for the declaration.
  virtual std::string Name() const = 0;

  // The text of the node and all that is in it, put together.
  virtual std::string Text() const = 0;

  virtual std::optional<std::string> Attribute(const std::string& name) const = 0;

  // All children in document order; white space between elements is not listed.
  virtual std::vector<const XmlNode*> Children() const = 0;
};

class XmlDocument {
 public:
  virtual ~XmlDocument() = default;

  // The document's own children: the XML declaration first when the text has one, then comments and
  // the root element in document order.
  virtual std::vector<const XmlNode*> Children() const = 0;
};

struct XmlLoadResult {
  std::unique_ptr<XmlDocument> document;  // none on failure
  XmlParseError error;
};

// The system's XML parser: MSXML 4.0 on Windows, libxml2 on Linux. UTF-8, UTF-16 and windows-1251
// documents; no network, no external entities, entity expansion and depth are limited.
class XmlParser {
 public:
  virtual ~XmlParser() = default;

  // False when the system's XML component is not there; reason says why.
  virtual bool IsAvailable(std::string& reason) = 0;

  virtual XmlLoadResult LoadFile(const std::string& path) = 0;
};

std::unique_ptr<XmlParser> MakeXmlParser();

}  // namespace platform
