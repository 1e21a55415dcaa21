#include "platform/factories.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "ports/xml_document.h"

namespace platform {
namespace {

struct FreeContext {
  void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
};

struct FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

struct FreeText {
  void operator()(xmlChar* text) const { xmlFree(text); }
};

std::string ToString(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

std::string QualifiedName(const xmlNs* space, const xmlChar* name) {
  const bool has_prefix = space != nullptr && space->prefix != nullptr;
  return has_prefix ? ToString(space->prefix) + ":" + ToString(name) : ToString(name);
}

void CopyAttributes(const xmlNode* source, ports::XmlNode& element) {
  for (const xmlAttr* a = source->properties; a != nullptr; a = a->next) {
    const std::unique_ptr<xmlChar, FreeText> value(
        xmlNodeListGetString(source->doc, a->children, 1));
    element.attributes.push_back({QualifiedName(a->ns, a->name), ToString(value.get())});
  }
}

// Copies the chain of siblings into parent. Returns false at a reference to an entity that the
// document does not define. The parser has limited the depth.
bool CopySiblings(const xmlNode* first, ports::XmlNode& parent) {
  for (const xmlNode* node = first; node != nullptr; node = node->next) {
    switch (node->type) {
      case XML_ELEMENT_NODE: {
        ports::XmlNode& element = parent.Append(ports::XmlNodeKind::kElement);
        element.name = QualifiedName(node->ns, node->name);
        CopyAttributes(node, element);
        if (!CopySiblings(node->children, element)) return false;
        break;
      }
      case XML_TEXT_NODE:
      case XML_CDATA_SECTION_NODE: {
        std::string text = ToString(node->content);
        if (node->type == XML_TEXT_NODE && ports::IsXmlWhiteSpace(text)) break;
        parent.Append(ports::XmlNodeKind::kText).value = std::move(text);
        break;
      }
      case XML_COMMENT_NODE:
        parent.Append(ports::XmlNodeKind::kComment).value = ToString(node->content);
        break;
      case XML_ENTITY_REF_NODE:
        return false;
      default:
        parent.Append(ports::XmlNodeKind::kOther);
        break;
    }
  }
  return true;
}

// A line of the document as UTF-8, for the explanation of an error.
std::string SourceLine(std::string_view bytes, std::int32_t line) {
  std::string text;
  if (bytes.starts_with("\xFF\xFE")) {
    text = tmw::Utf16ToUtf8(tmw::BytesToUtf16(bytes.substr(2)));
  } else if (bytes.starts_with("\xFE\xFF")) {
    std::string swapped(bytes.substr(2));
    for (std::size_t i = 0; i + 1 < swapped.size(); i += 2)
      std::swap(swapped[i], swapped[i + 1]);
    text = tmw::Utf16ToUtf8(tmw::BytesToUtf16(swapped));
  } else if (tmw::TryUtf8ToUtf16(bytes)) {
    text = bytes;
  } else {
    text = tmw::CodePageToUtf8(tmw::CodePage::k1251, bytes);
  }
  std::size_t start = 0;
  for (std::int32_t i = 1; i < line && start != std::string::npos; ++i) {
    const std::size_t end = text.find('\n', start);
    start = end == std::string::npos ? end : end + 1;
  }
  if (start == std::string::npos) return {};
  return tmw::TrimCharacters(std::string_view(text).substr(start, text.find('\n', start) - start),
                             " \t\r");
}

// Hands the document over piece by piece: in a single piece the library refuses one of more than
// ten megabytes.
int GiveBytes(void* source, char* buffer, int length) {
  auto& rest = *static_cast<std::string_view*>(source);
  const std::size_t count = rest.copy(buffer, static_cast<std::size_t>(length));
  rest.remove_prefix(count);
  return static_cast<int>(count);
}

class LibXmlParser final : public ports::XmlParser {
 public:
  LibXmlParser() { xmlInitParser(); }

  bool IsAvailable(std::string& /*reason*/) override { return true; }

  ports::XmlParseResult Parse(std::string_view bytes) override {
    ports::XmlParseResult result;
    if (bytes.empty()) {
      result.error.reason = "Document is empty";
      return result;
    }
    const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlNewParserCtxt());
    if (!context) throw std::bad_alloc();
    std::string_view rest = bytes;
    // Without the options for huge documents the library bounds depth, entity growth and the length
    // of a single text; without those for document types it opens nothing.
    const std::unique_ptr<xmlDoc, FreeDocument> document(
        xmlCtxtReadIO(context.get(), GiveBytes, nullptr, &rest, nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (!document || context->wellFormed == 0 || context->nsWellFormed == 0) {
      const xmlError* const error = xmlCtxtGetLastError(context.get());
      const char* const reason = error == nullptr ? nullptr : error->message;
      result.error.reason =
          reason == nullptr ? "Unknown error" : tmw::TrimCharacters(reason, " \r\n");
      if (error != nullptr && error->line > 0) result.error.line = error->line;
      if (result.error.line > 0) result.error.source_line = SourceLine(bytes, result.error.line);
      return result;
    }
    auto tree = std::make_unique<ports::XmlNode>(ports::XmlNodeKind::kDocument);
    // The library does not list the declaration, but standalone is -1 only if there was none.
    if (document->standalone != -1) tree->Append(ports::XmlNodeKind::kDeclaration).name = "xml";
    if (CopySiblings(document->children, *tree)) {
      result.document = std::move(tree);
    } else {
      result.error.reason = "Reference to an undefined entity";
    }
    return result;
  }
};

}  // namespace

std::unique_ptr<ports::XmlParser> MakeXmlParser() {
  return std::make_unique<LibXmlParser>();
}

}  // namespace platform
