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
    <File Mask="Reg.dll" IsCom="yes"/>
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
                          {"tm/Reg.dll", PeImage(32, "DllRegisterServer", 0)},
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

std::string PeImage(int bits, const std::string& exported, std::uint32_t major_and_minor) {
  std::string bytes(0x400, '\0');
  const auto put = [&](std::size_t place, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
      bytes[place + i] = static_cast<char>(value >> 8 * i);
  };
  const std::size_t directories = 0x58 + (bits == 64 ? 112U : 96U);
  bytes.replace(0, 2, "MZ");
  put(0x3C, 0x40);
  bytes.replace(0x40, 2, "PE");
  put(0x46, 1);  // sections
  put(0x54, static_cast<std::uint32_t>(directories + 128 - 0x58));
  put(0x58, bits == 64 ? 0x20B : 0x10B);
  put(directories - 4, 16);
  put(directories, 0x1000);       // exports
  put(directories + 16, 0x1100);  // resources
  put(directories + 128 + 12, 0x1000);
  put(directories + 128 + 16, 0x200);
  put(directories + 128 + 20, 0x200);
  put(0x200 + 24, 1);
  put(0x200 + 32, 0x1040);
  put(0x240, 0x1050);
  bytes.replace(0x250, exported.size(), exported);
  // The version is the first language of the first resource of kind 16, behind another kind.
  for (const auto& [place, value] :
       std::initializer_list<std::pair<std::size_t, std::uint32_t>>{{0x30C, 2U << 16},
                                                                    {0x310, 3},
                                                                    {0x318, 16},
                                                                    {0x31C, 0x80000020},
                                                                    {0x32C, 1U << 16},
                                                                    {0x334, 0x80000038},
                                                                    {0x344, 1U << 16},
                                                                    {0x34C, 0x50},
                                                                    {0x350, 0x1160}})
    put(place, value);
  put(0x360 + 40, major_and_minor == 0 ? 0 : 0xFEEF04BD);
  put(0x360 + 48, major_and_minor);
  return bytes;
}

}  // namespace tests
