#include "publish/faults.h"

#include "foundation/program_error.h"
#include "foundation/text.h"

namespace publish {

void Raise(const char* text, const std::string& name) {
  tmw::RaiseProgramError(tools::Fill(text, {tmw::Quoted(name)}));
}

std::unique_ptr<tmw::XmlDocument> OpenXml(const std::string& file, const std::string& place,
                                          Faults& faults) {
  std::string reason;
  auto document = tmw::XmlCreateDocument(reason);
  if (document == nullptr) tmw::RaiseProgramError(tools::Fill(texts::kNoXmlComponent, {reason}));
  if (tmw::XmlLoadDocumentSafe(*document, file, reason)) return document;
  faults.Add(place, texts::kUnreadable, {reason});
  return nullptr;
}

}  // namespace publish
