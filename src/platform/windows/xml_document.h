#pragma once

#include <memory>
#include <vector>

#include "ports/xml_document.h"

namespace platform {

// The product's own version, and the one that every system has. Both are made to accept the same
// documents.
inline constexpr const wchar_t* kMsXml4 = L"Msxml2.DOMDocument.4.0";
inline constexpr const wchar_t* kMsXml6 = L"Msxml2.DOMDocument.6.0";

// The XML port on the first of these components that the system has.
std::unique_ptr<ports::XmlParser> MakeMsXmlParser(std::vector<const wchar_t*> prog_ids);

}  // namespace platform
