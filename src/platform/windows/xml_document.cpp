#include "platform/windows/xml_document.h"

#include <cstring>
#include <limits>
#include <utility>

#include "foundation/text.h"
#include "platform/factories.h"
#include "platform/windows/com.h"
#include "platform/windows/windows_texts.h"
#include "ports/xml_document.h"
// The system's headers come first: this one builds on them.
#include <msxml2.h>

namespace platform {
namespace {

// IXMLDOMDocument2; the cross compiler's libraries lack it.
constexpr IID kDocumentInterface = {
    0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};

std::string InHex(HRESULT code) {
  return "0x" + tmw::ToHex(static_cast<std::int32_t>(code));
}

std::string WhyNotCreated(const wchar_t* prog_id, HRESULT code) {
  const std::string component = tmw::Quoted(FromWide(prog_id));
  const bool is_missing = code == CO_E_CLASSSTRING || code == REGDB_E_CLASSNOTREG;
  return is_missing ? windows_texts::XmlNotRegistered(component, InHex(code))
                    : windows_texts::XmlNotCreated(component, InHex(code));
}

HRESULT CreateVersion(const wchar_t* prog_id, ComPointer<IXMLDOMDocument2>& document) {
  CLSID class_id{};
  const HRESULT found = CLSIDFromProgID(prog_id, &class_id);
  if (FAILED(found)) return found;
  return CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, kDocumentInterface,
                          reinterpret_cast<void**>(document.Out()));
}

void SetProperty(IXMLDOMDocument2& document, const char* name, VARTYPE kind, LONG number) {
  const ComText text(name);
  ComValue value;
  value.Out()->vt = kind;
  if (kind == VT_BOOL) {
    value.Get().boolVal = static_cast<VARIANT_BOOL>(number);
  } else {
    value.Get().lVal = number;
  }
  static_cast<void>(document.setProperty(text.Get(), value.Get()));
}

// White space is kept here and filtered by CopyNode, by the same rule as on Linux.
HRESULT Configure(IXMLDOMDocument2& document) {
  // Version 6.0 refuses what 4.0, which does not know these properties, allows.
  SetProperty(document, "ProhibitDTD", VT_BOOL, VARIANT_FALSE);
  SetProperty(document, "MaxElementDepth", VT_I4, 0);
  HRESULT result = document.put_async(VARIANT_FALSE);
  if (SUCCEEDED(result)) result = document.put_validateOnParse(VARIANT_FALSE);
  if (SUCCEEDED(result)) result = document.put_resolveExternals(VARIANT_FALSE);
  if (SUCCEEDED(result)) result = document.put_preserveWhiteSpace(VARIANT_TRUE);
  return result;
}

// The component detects the encoding only if it is given bytes.
HRESULT MakeByteArray(std::string_view bytes, ComValue& value) {
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  if (array == nullptr) return E_OUTOFMEMORY;
  value.Out()->vt = VT_ARRAY | VT_UI1;
  value.Get().parray = array;
  void* data = nullptr;
  const HRESULT result = SafeArrayAccessData(array, &data);
  if (FAILED(result)) return result;
  std::memcpy(data, bytes.data(), bytes.size());
  return SafeArrayUnaccessData(array);
}

HRESULT NameOf(IXMLDOMNode& node, std::string& name) {
  ComText text;
  const HRESULT result = node.get_nodeName(text.Out());
  if (SUCCEEDED(result)) name = text.ToString();
  return result;
}

HRESULT ValueOf(IXMLDOMNode& node, std::string& value) {
  ComValue text;
  const HRESULT result = node.get_nodeValue(text.Out());
  if (SUCCEEDED(result)) value = text.ToString();
  return result;
}

HRESULT CopyAttributes(IXMLDOMNode& source, ports::XmlNode& element) {
  ComPointer<IXMLDOMNamedNodeMap> map;
  HRESULT result = source.get_attributes(map.Out());
  while (SUCCEEDED(result) && map) {
    ComPointer<IXMLDOMNode> node;
    ports::XmlAttribute attribute;
    result = map->nextNode(node.Out());
    if (FAILED(result) || !node) break;
    result = NameOf(*node.Get(), attribute.name);
    if (SUCCEEDED(result)) result = ValueOf(*node.Get(), attribute.value);
    const bool is_namespace = attribute.name == "xmlns" || attribute.name.starts_with("xmlns:");
    if (!is_namespace) element.attributes.push_back(std::move(attribute));
  }
  return result;
}

HRESULT CopyChildren(IXMLDOMNode& source, ports::XmlNode& parent, int depth);

HRESULT CopyNode(IXMLDOMNode& node, ports::XmlNode& parent, int depth) {
  DOMNodeType type = NODE_INVALID;
  HRESULT result = node.get_nodeType(&type);
  if (FAILED(result)) return result;
  switch (type) {
    case NODE_ELEMENT: {
      if (depth > ports::kXmlMaxDepth) return HRESULT_FROM_WIN32(ERROR_STACK_OVERFLOW);
      ports::XmlNode& element = parent.Append(ports::XmlNodeKind::kElement);
      result = NameOf(node, element.name);
      if (SUCCEEDED(result)) result = CopyAttributes(node, element);
      if (SUCCEEDED(result)) result = CopyChildren(node, element, depth + 1);
      return result;
    }
    case NODE_TEXT:
    case NODE_CDATA_SECTION: {
      std::string text;
      result = ValueOf(node, text);
      if (FAILED(result) || (type == NODE_TEXT && ports::IsXmlWhiteSpace(text))) return result;
      parent.Append(ports::XmlNodeKind::kText).value = std::move(text);
      return result;
    }
    case NODE_COMMENT:
      return ValueOf(node, parent.Append(ports::XmlNodeKind::kComment).value);
    case NODE_PROCESSING_INSTRUCTION: {
      std::string name;
      result = NameOf(node, name);
      if (name == "xml") {
        parent.Append(ports::XmlNodeKind::kDeclaration).name = name;
      } else {
        parent.Append(ports::XmlNodeKind::kOther);
      }
      return result;
    }
    case NODE_ENTITY_REFERENCE:  // its text is not known
      return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    default:
      parent.Append(ports::XmlNodeKind::kOther);
      return result;
  }
}

HRESULT CopyChildren(IXMLDOMNode& source, ports::XmlNode& parent, int depth) {
  ComPointer<IXMLDOMNodeList> children;
  HRESULT result = source.get_childNodes(children.Out());
  while (SUCCEEDED(result)) {
    ComPointer<IXMLDOMNode> child;
    result = children->nextNode(child.Out());
    if (FAILED(result) || !child) break;
    result = CopyNode(*child.Get(), parent, depth);
  }
  return result;
}

// What the component says about a document that it has refused.
ports::XmlParseError ExplainRefusal(IXMLDOMDocument2& document) {
  ports::XmlParseError explanation;
  ComPointer<IXMLDOMParseError> error;
  if (FAILED(document.get_parseError(error.Out())) || !error) return explanation;
  ComText text;
  if (SUCCEEDED(error->get_reason(text.Out())))
    explanation.reason = tmw::TrimCharacters(text.ToString(), " \r\n");
  if (SUCCEEDED(error->get_srcText(text.Out())))
    explanation.source_line = tmw::TrimCharacters(text.ToString(), " \t\r\n");
  long line = 0;
  if (SUCCEEDED(error->get_line(&line))) explanation.line = static_cast<std::int32_t>(line);
  return explanation;
}

ports::XmlParseResult Refused(HRESULT code) {
  ports::XmlParseResult result;
  const bool is_too_deep = code == HRESULT_FROM_WIN32(ERROR_STACK_OVERFLOW);
  result.error.reason =
      is_too_deep ? windows_texts::kXmlTooDeep : windows_texts::XmlFailed(InHex(code));
  return result;
}

class MsXmlParser final : public ports::XmlParser {
 public:
  explicit MsXmlParser(std::vector<const wchar_t*> prog_ids) : prog_ids_(std::move(prog_ids)) {}

  bool IsAvailable(std::string& reason) override {
    const ComScope scope;
    ComPointer<IXMLDOMDocument2> document;
    const HRESULT created = Create(document);
    if (FAILED(created)) reason = WhyNotCreated(prog_ids_.front(), created);
    return SUCCEEDED(created);
  }

  ports::XmlParseResult Parse(std::string_view bytes) override {
    ports::XmlParseResult result;
    if (bytes.size() > std::numeric_limits<std::int32_t>::max()) return Refused(E_OUTOFMEMORY);
    const ComScope scope;
    ComPointer<IXMLDOMDocument2> document;
    HRESULT code = Create(document);
    if (FAILED(code)) {
      result.error.reason = WhyNotCreated(prog_ids_.front(), code);
      return result;
    }
    ComValue array;
    code = Configure(*document.Get());
    if (SUCCEEDED(code)) code = MakeByteArray(bytes, array);
    VARIANT_BOOL is_loaded = VARIANT_FALSE;
    if (SUCCEEDED(code)) code = document->load(array.Get(), &is_loaded);
    if (FAILED(code)) return Refused(code);
    if (is_loaded == VARIANT_FALSE) {
      result.error = ExplainRefusal(*document.Get());
      return result;
    }
    auto tree = std::make_unique<ports::XmlNode>(ports::XmlNodeKind::kDocument);
    code = CopyChildren(*document.Get(), *tree, 1);
    if (FAILED(code)) return Refused(code);
    result.document = std::move(tree);
    return result;
  }

 private:
  // The first version that there is; without any the failure of the first.
  HRESULT Create(ComPointer<IXMLDOMDocument2>& document) const {
    HRESULT first = S_OK;
    for (const wchar_t* const prog_id : prog_ids_) {
      const HRESULT created = CreateVersion(prog_id, document);
      if (SUCCEEDED(created)) return created;
      if (SUCCEEDED(first)) first = created;
    }
    return first;
  }

  std::vector<const wchar_t*> prog_ids_;
};

}  // namespace

std::unique_ptr<ports::XmlParser> MakeMsXmlParser(std::vector<const wchar_t*> prog_ids) {
  return std::make_unique<MsXmlParser>(std::move(prog_ids));
}

std::unique_ptr<ports::XmlParser> MakeXmlParser() {
  return MakeMsXmlParser({kMsXml4, kMsXml6});
}

}  // namespace platform
