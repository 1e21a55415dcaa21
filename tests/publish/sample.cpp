#include "tests/publish/sample.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/encodings.h"
#include "packing/rar_writer.h"
#include "ports/database.h"
#include "ports/ports.h"
#include "publish/checker.h"
#include "publish/file_tree.h"

namespace tests {
namespace {

constexpr const char* kDescription = R"(<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="3.6.0.2" VersionID="R 3.6.0.2" Date="2026-11-20">
  <Updater MinVersion="1.0"><Component File="tm/Updater.exe"/></Updater>
  <Servers><Server Url="http://one.example/"/><Server Url="two.example"/></Servers>
  <Files>
    <Folder Source="tm" Target="{p}tm"/>
    <Folder Source="Справка" Target="{p}Help"/>
    <File Mask="*.ocx" IsCom="yes"/>
    <File Mask="tm/Core.dll" PackType="2"/>
    <File Mask="*.uni" PackType="3"/>
    <File Mask="Updater.exe" Executable="yes"/>
    <File Mask="*.pdb" Skip="yes"/>
  </Files>
  <Database From="3.5.0">
    <Dict Mask="*"/>
    <User Mask="Документы"/>
    <Skip Mask="Temp*"/>
  </Database>
</Release>
)";

std::vector<std::string> Lines(const publish::Faults& faults) {
  std::vector<std::string> lines;
  for (const publish::Fault& fault : faults.All())
    lines.push_back(fault.place + ": " + fault.text);
  return lines;
}

}  // namespace

Sample::Sample(const Sandbox& sandbox) : description(kDescription), sandbox_(sandbox) {
  options.description = sandbox.Path("release.xml");
  options.product = sandbox.Path("product");
  options.database = sandbox.Path("reference.mdb");
  options.scripts = sandbox.Path("scripts");
  options.output = sandbox.Path("server");
  const Contents files = {{"tm/Updater.exe", "updater"},
                          {"tm/Core.dll", std::string(100'000, 'c')},
                          {"tm/Core.pdb", "symbols"},
                          {"tm/Calc.ocx", "control"},
                          {"tm/Тексты/Бланк.uni", Utf16("текст")},
                          {"Справка/Счёт №1.htm", "help"},
                          {"Справка/empty", ""}};
  for (const auto& [name, bytes] : files)
    sandbox.Write("product/" + name, bytes);
  WriteScript("1.xml", "3.5.0", "3.5.7");
  WriteScript("2.xml", "3.5.7", "3.6.0");
  ports::CurrentPorts().database->CreateDatabase(options.database)->Close();
  for (const char* const sql :
       {"create table DBVersion (MajorVersion long)", "create table TempLog (a long)",
        "create table Ставки (Ид long primary key, Имя text(20))",
        "insert into Ставки values (1, 'Налог|№')", "insert into Ставки values (2, null)",
        "create table Документы (Ид long primary key, Сумма currency)",
        "insert into Документы values (1, 1.5)"})
    Execute(sql);
}

void Sample::Describe(const std::string& piece, const std::string& instead) {
  const std::size_t at = description.find(piece);
  ASSERT_NE(at, std::string::npos) << piece;
  description.replace(at, piece.size(), instead);
}

void Sample::WriteScript(const std::string& name, const std::string& from,
                         const std::string& to) const {
  sandbox_.Write("scripts/" + name,
                 "<?xml version=\"1.0\"?>\n<TMW_Database_Update db_version_from=\"" + from +
                     "\" db_version_to=\"" + to +
                     "\"><Action type=\"sql\">delete from Ставки</Action></TMW_Database_Update>");
}

void Sample::Execute(const std::string& sql) const {
  const auto database = ports::CurrentPorts().database->OpenDatabase(options.database, true, false);
  database->Execute(sql, true);
  database->Close();
}

std::vector<std::string> Sample::Publish() const {
  sandbox_.Write("release.xml", description);
  tools::Progress progress(false);
  publish::Faults faults;
  publish::Publish(options, progress, faults);
  return Lines(faults);
}

std::vector<std::string> Sample::Check(const std::string& place, const std::string& from) {
  tools::Progress progress(false);
  publish::Faults faults;
  publish::CheckOptions options;
  options.oldest_database = from;
  publish::CheckRelease(place, options, progress, faults);
  return Lines(faults);
}

bool HasFault(const std::vector<std::string>& faults, const std::string& piece) {
  return std::any_of(faults.begin(), faults.end(), [&](const std::string& fault) {
    return fault.find(piece) != std::string::npos;
  });
}

void Pack(const Sandbox& sandbox, const std::string& package, const Contents& contents,
          bool with_trailer) {
  const std::string path = sandbox.Write(package, "");
  packing::StoredRarWriter writer(path, packing::RarFormat::kRar5, with_trailer);
  for (const auto& [name, bytes] : contents) {
    packing::RarEntryFacts facts;
    facts.name = name;
    writer.AddFile(facts, sandbox.Write("entry", bytes));
  }
  writer.Finish();
}

std::string Everything(const Sandbox& sandbox, const std::string& folder) {
  std::string text;
  for (const publish::TreeEntry& entry : publish::ListTree(sandbox.Path(folder)))
    text.append(entry.path).append("\n").append(sandbox.Read(folder + "/" + entry.path)) += '\n';
  return text;
}

std::string Utf16(const std::string& text) {
  return tmw::Utf16ToBytes(tmw::Utf8ToUtf16(text));
}

}  // namespace tests
