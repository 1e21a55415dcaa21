#include <gtest/gtest.h>

#include "platform/windows/xml_document.h"

namespace platform {
namespace {

using ports::XmlNode;

std::string Shown(const XmlNode& node) {
  std::string text = std::to_string(static_cast<int>(node.kind)) + node.name + "=" + node.value;
  for (const ports::XmlAttribute& attribute : node.attributes)
    text += " " + attribute.name + "=" + attribute.value;
  text += "(";
  for (const auto& child : node.children)
    text += Shown(*child);
  return text + ")";
}

std::string Parsed(const wchar_t* version, const std::string& text) {
  const auto result = MakeMsXmlParser({version})->Parse(text);
  return result.document ? Shown(*result.document)
                         : "refused at " + std::to_string(result.error.line);
}

TEST(XmlVersions, GiveEqualResults) {
  std::string deep;
  for (int i = 0; i < 300; ++i)
    deep += "<a>";
  const std::string declaration = "<?xml version=\"1.0\" encoding=\"windows-1251\"?>";
  const std::pair<std::string, bool> cases[] = {
      {declaration + "<a \xE1='1'>\xE2 <![CDATA[ <b> ]]><!-- c --><d/>\r\n</a>", true},
      {"<a><b>\n</b> <c> x </c></a>", true},
      {"<!DOCTYPE a [<!ELEMENT a ANY>]><a>&lt;</a>", true},
      {"<!DOCTYPE a SYSTEM 'file:///nowhere.dtd'><a/>", true},
      {"<a xmlns='u' xmlns:p='v' p:q='1'/>", true},
      {"<a>\n<b></a>", false},
      {"", false},
      {deep, false}};
  for (const auto& [text, is_good] : cases) {
    const std::string old = Parsed(kMsXml4, text);
    EXPECT_EQ(Parsed(kMsXml6, text), old);
    EXPECT_EQ(!old.starts_with("refused"), is_good) << old;
  }
}

TEST(XmlVersions, StandInForEachOtherAndOnlyWithoutBothThereIsNone) {
  std::string reason;
  EXPECT_TRUE(MakeMsXmlParser({L"No.Such", kMsXml6})->IsAvailable(reason));
  EXPECT_TRUE(MakeMsXmlParser({kMsXml4, L"No.Such"})->IsAvailable(reason));
  EXPECT_EQ(reason, "");
  EXPECT_FALSE(MakeMsXmlParser({L"No.Such", L"None.Such"})->IsAvailable(reason));
  EXPECT_NE(reason.find("\"No.Such\""), std::string::npos);
}

}  // namespace
}  // namespace platform
