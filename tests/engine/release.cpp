#include "tests/engine/release.h"

#include <filesystem>
#include <fstream>
#include <string_view>

#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "packing/rar_writer.h"
#include "sha256/sha256.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::filesystem::create_directories(ToPath(path).parent_path());
  std::ofstream(ToPath(path), std::ios::binary) << bytes;
}

std::string Attribute(const std::string& name, const std::string& value) {
  std::string escaped;
  for (const char c : value) {
    const bool is_special = std::string_view("&\"<").find(c) != std::string_view::npos;
    escaped += is_special ? "&#" + std::to_string(c) + ";" : std::string(1, c);
  }
  return " " + name + "=\"" + escaped + "\"";
}

std::string SizeOf(const std::string& path) {
  return std::to_string(tmw::GetFileLength(path));
}

class Writer {
 public:
  Writer(const Release& release, const std::string& folder)
      : release_(release), folder_(folder), source_(folder + "/source") {}

  void WriteFiles() {
    std::string manifest = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<KSUpdateManifest" +
                           Attribute("ProductID", release_.product) +
                           Attribute("Version", release_.version) +
                           Attribute("VersionID", release_.version_id) + ">";
    for (const ReleaseFile& file : release_.files)
      manifest += FileElement(file);
    manifest += "<DataBase>";
    if (!release_.user.empty()) manifest += "<User" + Attribute("TableName", release_.user) + "/>";
    if (!release_.dict.empty()) {
      const std::string text = tmw::Utf16ToBytes(tmw::Utf8ToUtf16(release_.dict_text));
      WriteBytes(source_, text);
      Pack(release_.dict + ".table.tmz", release_.dict + ".table");
      manifest += "<Dict" + Attribute("TableName", release_.dict) + Attribute("SrvFile", "x") +
                  Attribute("SrvSize", "10") + Attribute("Hash", sha256::CSHA256().SHA256(text)) +
                  "/>";
    }
    manifest += "</DataBase>" +
                PackageElement("DBUpdates", release_.scripts_package, release_.scripts) +
                PackageElement("DBStruct", release_.structures_package, release_.structures) +
                "</KSUpdateManifest>";
    for (const auto& [text, instead] : release_.manifest_edits)
      manifest.replace(manifest.find(text), text.size(), instead);
    WriteBytes(source_, manifest);
    Pack("_PackageManifest.tmz", "TMW_manifest.xml");
    std::filesystem::remove(ToPath(source_));
  }

  // Into the folder of the version.
  std::string Path(const std::string& server_name) const {
    return folder_ + "/TMW_" + release_.version + "/" + server_name;
  }

 private:
  std::string FileElement(const ReleaseFile& file) {
    const std::string server_name =
        file.server_name.empty() ? "f" + std::to_string(++count_) + ".tmz" : file.server_name;
    WriteBytes(source_, file.content);
    if (file.pack_type == 2) {
      WriteBytes(source_ + "2", file.content);
      packing::CopyFileWithIntegrityTrailer(source_ + "2", source_);
      std::filesystem::remove(ToPath(source_ + "2"));
    }
    Pack(server_name, file.name, file.pack_type == 2, file.is_executable);
    const std::string com = file.is_com.empty() ? "" : Attribute("IsCom", file.is_com);
    return "<Files><Folder" + Attribute("name", file.folder) + "><File" +
           Attribute("OrigName", file.name) + Attribute("SrvName", server_name) +
           Attribute("OrigSize", SizeOf(source_)) +
           Attribute("SrvSize", SizeOf(Path(server_name))) +
           Attribute("PackType", std::to_string(file.pack_type)) +
           Attribute("Hash", sha256::CSHA256().SHA256(tmw::ReadFileBytes(source_))) + com +
           "/></Folder></Files>";
  }

  std::string PackageElement(const std::string& element, const std::string& name,
                             const std::vector<std::pair<std::string, std::string>>& files) {
    std::filesystem::create_directories(ToPath(Path(name)).parent_path());
    packing::StoredRarWriter writer(Path(name), packing::RarFormat::kRar5);
    AddEntry(writer, element + ".txt", "script");
    for (const auto& [entry, content] : files)
      AddEntry(writer, entry, content);
    writer.Finish();
    return "<" + element + Attribute("SrvName", name) + Attribute("PackSize", SizeOf(Path(name))) +
           Attribute("PackHash", sha256::CSHA256().SHA256(tmw::ReadFileBytes(Path(name)))) + "/>";
  }

  void AddEntry(packing::StoredRarWriter& writer, const std::string& entry,
                const std::string& content) const {
    WriteBytes(source_, content);
    AddSource(writer, entry, false);
  }

  void AddSource(packing::StoredRarWriter& writer, const std::string& entry,
                 bool is_executable) const {
    packing::RarEntryFacts facts;
    facts.name = entry;
    facts.modified = 1'700'000'000;
    facts.unix_mode = is_executable ? 0755 : 0644;
    writer.AddFile(facts, source_);
  }

  void Pack(const std::string& server_name, const std::string& entry, bool with_trailer = false,
            bool is_executable = false) {
    std::filesystem::create_directories(ToPath(Path(server_name)).parent_path());
    packing::StoredRarWriter writer(Path(server_name), packing::RarFormat::kRar5, with_trailer);
    AddSource(writer, entry, is_executable);
    writer.Finish();
  }

  const Release& release_;
  std::string folder_;
  std::string source_;  // what is being packed
  int count_ = 0;
};

}  // namespace

void WriteRelease(const Release& release, const std::string& folder, const std::string& url) {
  Writer writer(release, folder);
  writer.WriteFiles();
  std::string digest = release.version + "\r\n" + release.needed_updater + "\r\n";
  for (const auto& [name, file] : release.updater_components) {
    const std::string bytes = file.empty() ? "" : tmw::ReadFileBytes(file);
    WriteBytes(writer.Path(name), bytes);
    digest += "updater:" + name + "|" + std::to_string(bytes.size()) + "|" +
              sha256::CSHA256().SHA256(bytes) + "\r\n";
  }
  if (release.is_bound) {
    const std::string package = tmw::ReadFileBytes(writer.Path("_PackageManifest.tmz"));
    digest += "manifest:" + std::to_string(package.size()) + "|" +
              sha256::CSHA256().SHA256(package) + "\r\n";
  }
  digest += release.more_lines;
  WriteBytes(folder + "/TMW_links.dat", "\r\n  " + url + "  \r\n");
  WriteBytes(folder + "/TMW_version.dat", digest);
}

}  // namespace tests
