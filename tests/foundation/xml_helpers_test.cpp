#include "foundation/xml_helpers.h"

#include <gtest/gtest.h>

#include "foundation/encodings.h"
#include "foundation/program_error.h"
#include "ports/ports.h"
#include "tests/support/sandbox.h"

namespace tmw {
namespace {

// A tree in one line: <?> the declaration, <!> a comment with its text, <*> anything else that is
// no element, texts in quotes.
std::string Shape(const XmlNode& node) {
  switch (node.kind) {
    case XmlNodeKind::kDeclaration:
      return "<?" + node.name + ">";
    case XmlNodeKind::kComment:
      return "<!" + node.value + ">";
    case XmlNodeKind::kText:
      return "'" + node.value + "'";
    case XmlNodeKind::kOther:
      return "<*>";
    default:
      break;
  }
  std::string shape = node.name;
  for (const auto& attribute : node.attributes)
    shape.append(" ").append(attribute.name).append("=").append(attribute.value);
  if (node.children.empty()) return shape;
  shape += "(";
  for (const auto& child : node.children) {
    if (&child != &node.children.front()) shape += ",";
    shape += Shape(*child);
  }
  return shape + ")";
}

class Xml : public testing::Test {
 protected:
  // The loaded document's shape, or the explanation of its refusal.
  std::string Load(std::string_view bytes) {
    std::string explanation;
    const std::string file = sandbox_.Write("файл.xml", bytes);
    return XmlLoadDocumentSafe(document_, file, explanation) ? Shape(document_.Node())
                                                             : explanation;
  }

  tests::Sandbox sandbox_;
  XmlDocument document_;
};

std::string Utf16(std::string_view text, bool is_big_endian) {
  std::string bytes = Utf16ToBytes(u"\uFEFF" + Utf8ToUtf16(text));
  for (std::size_t i = 0; is_big_endian && i < bytes.size(); i += 2)
    std::swap(bytes[i], bytes[i + 1]);
  return bytes;
}

std::string Repeated(std::string_view text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += text;
  return all;
}

TEST_F(Xml, DocumentsAreReadAlikeOnBothSystems) {
  const std::string ansi = Utf8ToCodePage(
      CodePage::k1251, "<?xml version=\"1.0\" encoding=\"windows-1251\"?><к п=\"№ Ё\">Яблоко</к>");
  const std::string wide = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n<к п=\"№\">Ж</к>";
  const struct {
    std::string bytes;
    const char* shape;
  } cases[] = {
      {"<?xml version=\"1.0\" encoding=\"UTF-8\"?><к п=\"№\">Ж</к>", "(<?xml>,к п=№('Ж'))"},
      {"\xEF\xBB\xBF<?xml version=\"1.0\" standalone=\"yes\"?>\n<a/>\n", "(<?xml>,a)"},
      {Utf16(wide, false), "(<?xml>,к п=№('Ж'))"},
      {Utf16(wide, true), "(<?xml>,к п=№('Ж'))"},
      {Utf16("<a>Ж</a>", false), "(a('Ж'))"},
      {ansi, "(<?xml>,к п=№ Ё('Яблоко'))"},
      {"<a/>", "(a)"},
      {"<!--до--><a/><!--после-->", "(<!до>,a,<!после>)"},
      {"<?xml version='1.0'?>\n<!--к-->\n<?p i?>\n<a/>", "(<?xml>,<!к>,<*>,a)"},
      {"<!DOCTYPE a SYSTEM \"http://127.0.0.1:9/none.dtd\"><a/>", "(<*>,a)"},
      {"<a x='&lt;&quot;&#1046;&amp;&#x416;' y=''/>", "(a x=<\"Ж&Ж y=)"},
      {"<a x='1\r\n2\t3'/>", "(a x=1 2 3)"},
      {"<a>\r\n  <b/>\t<c> d </c>\n</a>", "(a(b,c(' d ')))"},
      {"<a>s &lt; 1;\r\n<![CDATA[ x<y ]]><!--n--><b>&#1046;</b></a>",
       "(a('s < 1;\n',' x<y ',<!n>,b('Ж')))"},
      {"<a xmlns='urn:x' xmlns:p='urn:y'><p:b p:c='1'/></a>", "(a(p:b p:c=1))"},
      {"<a x = '>=\"=' y=\"'\"><!--<b = '--><?p <b = ?></a>", "(a x=>=\"= y='(<!<b = '>,<*>))"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Load(c.bytes), c.shape) << c.bytes;
}

TEST_F(Xml, BrokenDocumentsAreRefusedWithTheirLine) {
  const struct {
    std::string bytes;
    const char* source;  // a part of the line shown; empty: no line is known
    const char* line;
  } cases[] = {
      {"<?xml version=\"1.0\"?>\r\n<a>\r\n  <b>Строка</c>\r\n</a>", "<b>Строка</c>", "3"},
      {Utf16("<a>\n<b к=Ж></b></a>", false), "<b к=Ж></b></a>", "2"},
      {Utf8ToCodePage(CodePage::k1251,
                      "<?xml version=\"1.0\" encoding=\"windows-1251\"?>\n<к>Ж</я>"),
       "<к>Ж</я>", "2"},
      {"<a/><b/>", "<a/><b/>", "1"},
      {"<a x='1' x='2'/>", "<a x='1' x='2'/>", "1"},
      {"<a>\n&unknown;</a>", "&unknown;</a>", "2"},
      {"просто текст", "просто текст", "1"},
      {"", "", "0"},
  };
  for (const auto& c : cases) {
    const std::string explanation = Load(c.bytes);
    EXPECT_TRUE(explanation.starts_with("   Reason: ")) << explanation;
    EXPECT_FALSE(explanation.starts_with("   Reason: \r\n")) << c.bytes;
    // Wine's own component refuses with this one word and nothing more.
    const bool is_told = !explanation.starts_with("   Reason: error\r\n");
    const std::string source = std::string("\r\n   Source: ") + (is_told ? c.source : "");
    EXPECT_NE(explanation.find(source), std::string::npos) << explanation;
    EXPECT_TRUE(explanation.ends_with(std::string("\r\n   Line: ") + (is_told ? c.line : "0")))
        << explanation;
    EXPECT_TRUE(document_.Node().children.empty());
  }
}

TEST_F(Xml, AMissingFileIsExplainedAndWhatIsTooLongIsCut) {
  std::string explanation;
  EXPECT_FALSE(XmlLoadDocumentSafe(document_, sandbox_.Path("нет.xml"), explanation));
  EXPECT_NE(explanation.find("нет.xml\""), std::string::npos) << explanation;
  EXPECT_TRUE(explanation.ends_with("\r\n   Source: \r\n   Line: 0")) << explanation;
  explanation = Load("<a>" + Repeated("я", 100000) + "</b>");
  EXPECT_LT(explanation.size(), 1000U);
  const std::string element = "<b x='" + std::string(2000, 'y') + "'/>";
  const int count = static_cast<int>(kMaxXmlLength / static_cast<int>(element.size()));
  const std::string longest = Load("<a>" + Repeated(element, count - 1) + "</a>");
  // Wine's own component stops at ten megabytes, with its one word.
  EXPECT_TRUE(longest.starts_with("(a(b x=yy") || longest.starts_with("   Reason: error\r\n"));
  EXPECT_TRUE(Load("<a>" + Repeated(element, count + 1) + "</a>")
                  .starts_with("   Reason: Файл слишком велик."));
}

TEST_F(Xml, DocumentsThatAreMeantToHurtAreRefused) {
  const std::string secret = sandbox_.Write("тайна.txt", "SECRET");
  std::string laughs = "<!DOCTYPE a [<!ENTITY e0 \"ha\">";
  for (int i = 1; i < 12; ++i) {
    laughs += "<!ENTITY e" + std::to_string(i) + " \"" +
              Repeated("&e" + std::to_string(i - 1) + ";", 10) + "\">";
  }
  laughs += "]><a>&e11;</a>";
  const std::string external =
      "<!DOCTYPE a [<!ENTITY x SYSTEM \"file://" + secret + "\">]><a>&x;</a>";
  const std::string bad[] = {laughs, Utf16(laughs, true), external,
                             Repeated("<a>", 300) + Repeated("</a>", 300), Repeated("<a>", 100000)};
  for (const std::string& bytes : bad) {
    const std::string explanation = Load(bytes);
    EXPECT_TRUE(explanation.starts_with("   Reason: ")) << explanation.substr(0, 200);
    EXPECT_EQ(explanation.find("SECRET"), std::string::npos);
  }
  EXPECT_TRUE(Load(external).starts_with("   Reason: Описания сущностей (ENTITY)"));
  // The parser alone opens nothing and follows no path.
  const auto parsed = ports::CurrentPorts().xml->Parse(external);
  EXPECT_TRUE(!parsed.document || Shape(*parsed.document).find("SECRET") == std::string::npos);
  const std::string deep = Repeated("<a>", 250) + "x" + Repeated("</a>", 250);
  EXPECT_TRUE(Load(deep).starts_with("(a(a(")) << Load(deep);
}

TEST_F(Xml, WhatParsersTakeMinutesOverIsRefusedBefore) {
  const auto attributes = [](int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
      text += " a" + std::to_string(i) + "='1'";
    return text;
  };
  const auto wide = [](const std::string& text) { return Utf16(text, true); };
  std::u32string four = U"\uFEFF<a/>";
  const char* const many = "Слишком много атрибутов в одном элементе.";
  const char* const encoding = "Кодировка не поддерживается.";
  const struct {
    std::string bytes;
    const char* reason;  // nullptr: accepted
  } cases[] = {
      {"<a" + attributes(256) + "/>", nullptr},
      {"<a" + attributes(257) + "/>", many},
      {wide("<a" + attributes(100'000) + "/>"), many},
      {wide("<a>" + Repeated("м=", 1000) + "</a>"), nullptr},  // one byte of "м" is a "<"
      {"<a x=\"<b" + attributes(257) + "\"/>", many},
      {"<a\"" + attributes(257) + "\"/>", many},
      {"<a><![CDATA[<b" + attributes(257) + "]]></a>", nullptr},
      {"<!DOCTYPE a [<!ATTLIST a x CDATA '1'>]><a/>", "Описания внутри DOCTYPE не допускаются."},
      {"<" + std::string(1001, 'a') + "/>", "Слишком длинное имя."},
      {"<a>" + Repeated("<b/>", 400'000) + "</a>", "Слишком много элементов."},
      {Repeated("<a>", 257) + Repeated("</a>", 257), "Элементы вложены слишком глубоко."},
      {{reinterpret_cast<const char*>(four.data()), four.size() * 4}, encoding},
      {"<?xml version='1.0' encoding='IBM037'?><a/>", encoding},
      {"\x4C\x6F\xA7\x94", encoding},
  };
  for (const auto& c : cases) {
    const std::string loaded = Load(c.bytes);
    EXPECT_TRUE(
        loaded.starts_with(c.reason == nullptr ? "(a" : std::string("   Reason: ") + c.reason))
        << loaded.substr(0, 300);
  }
  std::string explanation;
  EXPECT_FALSE(XmlLoadDocumentSafe(document_, sandbox_.Write("f", "<a/>"), explanation,
                                   [] { return false; }));
  EXPECT_TRUE(explanation.starts_with("   Reason: Чтение прервано.")) << explanation;
}

// The message of the error that the action raises, after its number.
template <typename Action>
std::string Raised(Action action) {
  try {
    action();
  } catch (const ProgramError& error) {
    return std::to_string(error.Number) + " " + error.Description;
  }
  return "nothing was raised";
}

TEST_F(Xml, NodesAreFoundByNameAndMissingOnesAreNamedWithTheirPlace) {
  Load("<?xml version='1.0'?><R><A><x/></A><A n='2'><B/><B/><b/><C>1<D>2</D></C></A></R>");
  const XmlNode& root = XmlSelectSingleNode(document_.Node(), "R");
  const std::vector<const XmlNode*> groups = XmlGetChildElements(root, "A");
  ASSERT_EQ(groups.size(), 2U);
  const std::vector<const XmlNode*> items = XmlGetChildElements(*groups[1], "B");
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(XmlGetNodePath(*items[1]), "/R/A[2]/B[2]");
  EXPECT_EQ(&XmlSelectSingleNode(document_.Node(), "R/A/B"), items[0]);
  EXPECT_EQ(XmlGetText(XmlSelectSingleNode(root, "A/C")), "12");
  EXPECT_EQ(XmlFindSingleNode(root, "B"), nullptr);
  EXPECT_EQ(Raised([&] { XmlSelectSingleNode(document_.Node(), "r"); }), "1001 Missing node /r");
  EXPECT_EQ(Raised([&] { XmlSelectSingleNode(*groups[1], "C/E"); }),
            "1001 Missing node /R/A[2]/C/E");
  EXPECT_EQ(Raised([&] { XmlGetStringAttribute(*items[1], "Hash"); }),
            "1001 Missing attribute /R/A[2]/B[2]/@Hash");
  EXPECT_EQ(Raised([&] { XmlGetStringAttribute(*groups[1], "N"); }),
            "1001 Missing attribute /R/A[2]/@N");
  EXPECT_EQ(XmlGetStringAttributeDef(*groups[1], "n", "@@@"), "2");
  EXPECT_EQ(XmlGetStringAttributeDef(*groups[0], "n", "@@@"), "@@@");
}

TEST_F(Xml, NumbersAreSigned32BitAndNothingElseConverts) {
  const std::string not_a_number = "): ожидается целое число.";
  const std::string too_large = "): число слишком велико.";
  const struct {
    const char* text;
    std::int32_t value;
    std::string error;
  } cases[] = {
      {"0", 0, ""},
      {" 17 ", 17, ""},
      {"+5", 5, ""},
      {"007", 7, ""},
      {"2147483647", 2147483647, ""},
      {"-2147483648", -2147483647 - 1, ""},
      {"2147483648", 0, "6" + too_large},
      {"-99999999999999999999", 0, "6" + too_large},
      {"", 0, "13" + not_a_number},
      {"+", 0, "13" + not_a_number},
      {"+-1", 0, "13" + not_a_number},
      {"1 2", 0, "13" + not_a_number},
      {"1.5", 0, "13" + not_a_number},
      {"0x10", 0, "13" + not_a_number},
      {"99999999999x", 0, "13" + not_a_number},
  };
  for (const auto& c : cases) {
    Load("<a v='" + std::string(c.text) + "'/>");
    const XmlNode& node = XmlSelectSingleNode(document_.Node(), "a");
    if (c.error.empty()) {
      EXPECT_EQ(XmlGetLongAttribute(node, "v"), c.value) << c.text;
      continue;
    }
    const std::size_t end = c.error.find(')');
    EXPECT_EQ(Raised([&] { XmlGetLongAttribute(node, "v"); }),
              c.error.substr(0, end) + " Ошибочное значение атрибута /a/@v (\"" + c.text + "\"" +
                  c.error.substr(end));
  }
}

TEST_F(Xml, BooleansKnowSixWordsAndElseTheDefault) {
  const struct {
    const char* attribute;
    bool with_false;  // the value when the default is false
    bool with_true;
  } cases[] = {
      {"v='yes'", true, true},   {"v='1'", true, true},    {"v='  TRUE '", true, true},
      {"v='No'", false, false},  {"v='0'", false, false},  {"v=' faLse'", false, false},
      {"v='да'", false, true},   {"v=''", false, true},    {"v='2'", false, true},
      {"v='yes.'", false, true}, {"V='yes'", false, true}, {"", false, true},
  };
  for (const auto& c : cases) {
    Load("<a " + std::string(c.attribute) + "/>");
    const XmlNode& node = XmlSelectSingleNode(document_.Node(), "a");
    EXPECT_EQ(XmlGetBooleanAttributeDef(node, "v", false), c.with_false) << c.attribute;
    EXPECT_EQ(XmlGetBooleanAttributeDef(node, "v", true), c.with_true) << c.attribute;
  }
}

TEST_F(Xml, AnyTextMakesANameThatTheParserTakes) {
  const struct {
    const char* text;
    const char* name;
  } cases[] = {
      {"", ""},
      {"TMW-3.05", "TMW-3.05"},
      {"3.05 а_б", "_0033.05_0020а_005Fб"},
      {".a:b", "_002Ea_003Ab"},
      {"<\"&\t×", "_003C_0022_0026_0009_00D7"},
      {"a\xF0\x9F\x98\x80", "a_D83D_DE00"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(XmlMakeNodeName(c.text), c.name);
    const std::string name = c.name;
    EXPECT_TRUE(name.empty() || Load("<" + name + "/>") == "(" + name + ")") << name;
  }
}

}  // namespace
}  // namespace tmw
