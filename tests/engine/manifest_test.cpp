#include "engine/manifest.h"

#include "ports/xml_document.h"
#include "tests/engine/run_fixture.h"
#include "tests/support/caught.h"

namespace tests {
namespace {

const std::string kGood =
    "<KSUpdateManifest ProductID=\"TMW\" Version=\"3.6.0.2\" VersionID=\"R 3\"><Files/>"
    "<DataBase><User TableName=\"User1\" Hash=\"x\"/>"
    "<Dict TableName=\"Dict1\" SrvFile=\"d.bin\" SrvSize=\"5\" Hash=\"hd\"/></DataBase>"
    "<Files><Folder name=\"{p}Bin\\Sub/\"><File OrigName=\"a.dll\" SrvName=\"parts/a.tmz\" "
    "OrigSize=\" 7 \" SrvSize=\"9\" PackType=\"4\" Hash=\"Hf\" IsCom=\" TRUE \"/></Folder>"
    "<Folder name=\"{p}\"><File OrigName=\"b\" OrigSize=\"1\" Hash=\"hb\" "
    "SrvName=\"b.tmz\" SrvSize=\"2\" PackType=\"1\" IsCom=\"да\"/></Folder></Files>"
    "<DBUpdates SrvName=\"u.tmz\" PackSize=\"3\" PackHash=\"hu\"/>"
    "<DBStruct SrvName=\"s.tmz\" PackSize=\"4\" PackHash=\"hs\"/></KSUpdateManifest>";

class ManifestTest : public RunTest {
 protected:
  ManifestTest() {
    settings_.Set(ports::SettingsRoot::kMachine,
                  "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\DataBasePath", Path("Продукт/db"));
    tmw::ForgetProductPaths();
  }

  // Reads the good manifest with one text in the place of another. Returns "", the reason of a
  // refusal or "raised " and the error.
  std::string Read(const std::string& old_text, const std::string& new_text) {
    std::string xml = kGood;
    const auto at = xml.find(old_text);
    EXPECT_NE(at, std::string::npos) << old_text;
    const std::string file = sandbox_.Write("m.xml", xml.replace(at, old_text.size(), new_text));
    std::string reason;
    try {
      const bool is_read = tmw::TryParseManifest(file, "TMW", "3.6.0.2", manifest_, reason);
      EXPECT_EQ(is_read, reason.empty()) << reason;
    } catch (const tmw::ProgramError& error) {
      EXPECT_NE(error.Source.find("KsUpdater.ParseManifest"), std::string::npos) << error.Source;
      return "raised " + error.Description;
    }
    return reason;
  }

  tmw::Manifest manifest_;
};

TEST_F(ManifestTest, FaultsAreNamed) {
  const std::string user_file =
      "\" в папке базы данных. В этом файле лежат данные пользователя; программа обновления его "
      "не заменяет.";
  const std::string other_version =
      "Загруженный файл обновления предназначен для другой версии программного продукта (3.6.0.3, "
      "в то время как ожидается 3.6.0.2).";
  const std::string other_content =
      "raised В списке файлов дважды и с разным содержимым встречается файл \"A.dll\".";
  const std::string file_b = "OrigName=\"b\" OrigSize=\"1\" Hash=\"hb\"";
  const std::string bad_size =
      "raised Ошибочное значение атрибута /KSUpdateManifest/Files[2]/Folder[1]/File/@SrvSize (";
  const struct {
    std::string old_text;
    std::string new_text;
    std::string result;  // its beginning
  } cases[] = {
      {"</KSUpdateManifest>", "", "Ошибка формата файла списка загружаемых файлов:    Reason: "},
      {"\"TMW\"", "\"tmw\"",
       "Загруженный файл обновления предназначен для другого программного продукта (TMW)."},
      {"3.6.0.2", "3.6.0.3", other_version},
      {"VersionID", "ID", "raised Missing attribute /KSUpdateManifest/@VersionID"},
      {"<DataBase>", "<DataBase2/><DataBase>", ""},
      {"DBStruct", "DBstruct", "raised Missing node /KSUpdateManifest/DBStruct"},
      {"\"9\"", "\"9x\"", bad_size + "\"9x\")"},
      {"\"9\"", "\"99999999999\"", bad_size + "\"99999999999\"): число"},
      {"{p}Bin", "{q}", "raised Unknown Const name: q"},
      {"\"Dict1\"", "\"USER1\"", "raised В списке файлов дважды встречается таблица \"User1\"."},
      {file_b, "OrigName=\"A.dll\" OrigSize=\"7\" Hash=\"hb\"", other_content},
      {file_b, "OrigName=\"A.dll\" OrigSize=\"8\" Hash=\"Hf\"", other_content},
      {file_b, "OrigName=\"A.dll\" OrigSize=\"7\" Hash=\"Hf\"", ""},
      {"OrigName=\"b\"", "OrigName=\"DICT1.table\"",
       "raised В списке файлов дважды и с разным содержимым встречается файл \"Dict1.table\"."},
      {"OrigName=\"b\"", "OrigName=\"tmwebupdate.Serial\"",
       "raised В списке файлов встречается \"tmwebupdate.Serial\". В этом файле программа"},
      {"{p}Bin\\Sub/", "{p}предыдущая Версия\\Sub/",
       "raised В списке файлов встречается папка \"{p}предыдущая Версия\\Sub/\"."},
      {"Dict1", "DBVersion", "raised В списке файлов встречается служебная таблица \"DBVersion\"."},
      {"User1", "MSysX", "raised В списке файлов встречается служебная таблица \"MSysX\"."},
      {"{p}Bin\\Sub/\"><File OrigName=\"a.dll", "{p}db\"><File OrigName=\"Tamrin.mdb",
       "raised В списке файлов встречается \"Tamrin.mdb" + user_file},
      {"{p}Bin\\Sub/\"><File OrigName=\"a.dll", "{p}db\"><File OrigName=\"tamrin.MDB.new",
       "raised В списке файлов встречается \"tamrin.MDB.new" + user_file},
      {"{p}Bin\\Sub/\"><File OrigName=\"a.dll", "{p}db\"><File OrigName=\"Tamrin_0.zip",
       "raised В списке файлов встречается \"Tamrin_0.zip" + user_file},
      {"{p}Bin\\Sub/\"><File OrigName=\"a.dll", "{p}Образцы\"><File OrigName=\"Tamrin.mdb", ""},
  };
  for (const auto& c : cases) {
    const std::string result = Read(c.old_text, c.new_text);
    EXPECT_TRUE(c.result.empty() ? result.empty() : result.starts_with(c.result))
        << c.new_text << ": " << result;
  }
}

TEST_F(ManifestTest, WithoutAnXmlParserTheComponentIsNamed) {
  struct NoParser final : ports::XmlParser {
    bool IsAvailable(std::string& reason) override { return reason = "нет", false; }
    ports::XmlParseResult Parse(std::string_view) override { return {}; }
  } parser;
  ports_->xml = &parser;
  EXPECT_EQ(Read("\"x\"", ""),
            "Ошибка при обращении к системной компоненте поддержки XML: нет\r\n\r\nВозможно, "
            "системная библиотека Microsoft XML 4.0 не установлена на данном компьютере.");
}

TEST(FolderConstants, AreReplacedOnceAndBracesCanBeEscaped) {
  const std::map<std::string, std::string> constants = {{"p", "C:\\{p}\\"}, {"", "nothing"}};
  const char* const cases[][2] = {
      {"{p}Bin", "C:\\{p}\\Bin"},
      {"{p}{p}", "C:\\{p}\\C:\\{p}\\"},
      {"a{{p}}b", "a{p}b"},
      {"{{p}}{p}", "{p}C:\\{p}\\"},
      {"{{p}", "{{p}"},
      {"a{p", "a{p"},
      {"}{p}", "}C:\\{p}\\"},
      {"{}", "nothing"},
      {"", ""},
      {"{{}}", "{}"},
      {"a{p}tail", "aC:\\{p}\\tail"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(tmw::ParseConsts(c[0], constants), c[1]) << c[0];
  const auto error = Caught([&] { tmw::ParseConsts("{p}{q}", constants); });
  EXPECT_EQ(error.Description, "Unknown Const name: q");
}

}  // namespace
}  // namespace tests
