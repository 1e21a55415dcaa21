#include "publish/manifest.h"

#include <algorithm>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "foundation/xml_helpers.h"
#include "publish/fault_texts.h"

namespace publish {
namespace {

using tmw::XmlNode;

constexpr const char* kRoot = "KSUpdateManifest";

// White space other than blanks is escaped, too: it would be read back as blanks.
std::string Escaped(std::string_view value) {
  std::string text;
  for (const char c : value) {
    if (std::string_view("&<>\"\t\r\n").find(c) != std::string_view::npos) {
      text += "&#" + std::to_string(static_cast<int>(c)) + ";";
    } else {
      text += c;
    }
  }
  return text;
}

class Writer {
 public:
  void Open(std::string_view indent, std::string_view element) {
    text_.append(indent).append("<").append(element);
  }
  void Attribute(std::string_view name, std::string_view value) {
    text_.append(" ").append(name).append("=\"").append(Escaped(value)).append("\"");
  }
  void Attribute(std::string_view name, std::int64_t value) {
    Attribute(name, std::to_string(value));
  }
  void Line(std::string_view end) { text_.append(end).append("\n"); }
  std::string TakeText() { return std::move(text_); }

 private:
  std::string text_;
};

void WriteFiles(const Manifest& manifest, Writer& writer) {
  writer.Line(" <Files>");
  const std::string* folder = nullptr;
  for (const FileRecord& file : manifest.files) {
    if (folder == nullptr || *folder != file.folder) {
      if (folder != nullptr) writer.Line("  </Folder>");
      folder = &file.folder;
      writer.Open("  ", "Folder");
      writer.Attribute("name", file.folder);
      writer.Line(">");
    }
    writer.Open("   ", "File");
    writer.Attribute("OrigName", file.name);
    writer.Attribute("SrvName", file.server_name);
    writer.Attribute("OrigSize", file.length);
    writer.Attribute("SrvSize", file.server_length);
    writer.Attribute("PackType", file.pack_method);
    writer.Attribute("Hash", file.hash);
    if (file.is_com) writer.Attribute("IsCom", "yes");
    writer.Line("/>");
  }
  if (folder != nullptr) writer.Line("  </Folder>");
  writer.Line(" </Files>");
}

void WriteTables(const Manifest& manifest, Writer& writer) {
  writer.Line(" <DataBase>");
  for (const TableRecord& table : manifest.tables) {
    writer.Open("  ", table.is_user ? "User" : "Dict");
    writer.Attribute("TableName", table.name);
    if (!table.is_user) {
      writer.Attribute("SrvFile", TablePackage(table.name));
      writer.Attribute("SrvSize", table.server_length);
      writer.Attribute("Hash", table.hash);
    }
    writer.Line("/>");
  }
  writer.Line(" </DataBase>");
}

void WritePackage(const char* element, const PackageRecord& package, Writer& writer) {
  writer.Open(" ", element);
  writer.Attribute("SrvName", package.server_name);
  writer.Attribute("PackSize", package.length);
  writer.Attribute("PackHash", package.hash);
  writer.Line("/>");
}

class Reader {
 public:
  explicit Reader(Faults& faults) : faults_(faults) {}

  Manifest Read(const XmlNode& root) {
    Manifest manifest;
    manifest.product = Text(root, "ProductID");
    manifest.version = Text(root, "Version");
    manifest.version_id = Text(root, "VersionID");
    for (const XmlNode* const files : tmw::XmlGetChildElements(root, "Files")) {
      for (const XmlNode* const folder : tmw::XmlGetChildElements(*files, "Folder")) {
        const std::string name = Text(*folder, "name");
        for (const XmlNode* const file : tmw::XmlGetChildElements(*folder, "File"))
          manifest.files.push_back(ReadFile(*file, name));
      }
    }
    if (const XmlNode* const database = Only(root, "DataBase")) {
      for (const XmlNode* const node : tmw::XmlGetChildElements(*database, "Dict")) {
        TableRecord table = {Text(*node, "TableName"), false, Number(*node, "SrvSize"),
                             Text(*node, "Hash")};
        Text(*node, "SrvFile");
        manifest.tables.push_back(std::move(table));
      }
      for (const XmlNode* const node : tmw::XmlGetChildElements(*database, "User"))
        manifest.tables.push_back({Text(*node, "TableName"), true, 0, ""});
    }
    manifest.scripts = ReadPackage(root, "DBUpdates");
    manifest.structures = ReadPackage(root, "DBStruct");
    return manifest;
  }

 private:
  std::string Text(const XmlNode& node, const char* attribute) {
    try {
      return tmw::XmlGetStringAttribute(node, attribute);
    } catch (const tmw::ProgramError& error) {
      faults_.Add(texts::kInManifest, error.Description);
      return {};
    }
  }

  std::int64_t Number(const XmlNode& node, const char* attribute) {
    try {
      const std::int32_t number = tmw::XmlGetLongAttribute(node, attribute);
      if (number < 0) faults_.Add(tmw::XmlGetNodePath(node), texts::kNegative);
      return number;
    } catch (const tmw::ProgramError& error) {
      faults_.Add(texts::kInManifest, error.Description);
      return 0;
    }
  }

  // The updater would take the first of several, which cannot be intended.
  const XmlNode* Only(const XmlNode& root, const char* element) {
    const auto nodes = tmw::XmlGetChildElements(root, element);
    if (nodes.size() != 1) {
      faults_.Add(texts::kInManifest, texts::kNotOneElement,
                  {std::to_string(nodes.size()), element});
    }
    return nodes.empty() ? nullptr : nodes.front();
  }

  FileRecord ReadFile(const XmlNode& node, const std::string& folder) {
    FileRecord file;
    file.folder = folder;
    file.name = Text(node, "OrigName");
    file.server_name = Text(node, "SrvName");
    file.length = Number(node, "OrigSize");
    file.server_length = Number(node, "SrvSize");
    file.pack_method = static_cast<std::int32_t>(Number(node, "PackType"));
    file.hash = Text(node, "Hash");
    file.is_com = tmw::XmlGetBooleanAttributeDef(node, "IsCom", false);
    if (file.is_com != tmw::XmlGetBooleanAttributeDef(node, "IsCom", true) &&
        !tmw::XmlGetStringAttributeDef(node, "IsCom", "").empty()) {
      faults_.Add(file.name, texts::kIsComUnclear);
    }
    return file;
  }

  PackageRecord ReadPackage(const XmlNode& root, const char* element) {
    const XmlNode* const node = Only(root, element);
    if (node == nullptr) return {};
    return {Text(*node, "SrvName"), Number(*node, "PackSize"), Text(*node, "PackHash")};
  }

  Faults& faults_;
};

}  // namespace

std::string WriteManifest(const Manifest& manifest) {
  Writer writer;
  writer.Line("<?xml version=\"1.0\" encoding=\"utf-8\"?>");
  writer.Open("", kRoot);
  writer.Attribute("ProductID", manifest.product);
  writer.Attribute("Version", manifest.version);
  writer.Attribute("VersionID", manifest.version_id);
  writer.Line(">");
  WriteFiles(manifest, writer);
  WriteTables(manifest, writer);
  WritePackage("DBUpdates", manifest.scripts, writer);
  WritePackage("DBStruct", manifest.structures, writer);
  writer.Line("</" + std::string(kRoot) + ">");
  return writer.TakeText();
}

bool ReadManifest(const std::string& file, Manifest& manifest, Faults& faults) {
  const auto document = OpenXml(file, texts::kInManifest, faults);
  if (document == nullptr) return false;
  const XmlNode* const root = tmw::XmlFindSingleNode(document->Node(), kRoot);
  if (root == nullptr) {
    faults.Add(texts::kInManifest, texts::kWrongRoot, {kRoot});
    return false;
  }
  manifest = Reader(faults).Read(*root);
  return true;
}

std::string TablePackage(const std::string& table) {
  return table + std::string(tmw::names::kPackedTableEnding);
}

std::string InstalledPlace(const FileRecord& file) {
  std::string folder = file.folder;
  std::replace(folder.begin(), folder.end(), '\\', '/');
  // "{p}Bin" and "{p}/Bin" are one folder: the constant ends in a separator.
  constexpr std::string_view kProduct = "{p}";
  if (folder.starts_with(kProduct)) folder.insert(kProduct.size(), "/");
  std::string place;
  for (const std::string& part : tmw::Split(folder, "/")) {
    if (!part.empty()) place += part + "/";
  }
  return tmw::LowerCase(place + file.name);
}

std::int64_t WholeVolume(const Manifest& manifest) {
  std::int64_t sum = manifest.scripts.length + manifest.structures.length;
  for (const FileRecord& file : manifest.files)
    sum += file.server_length;
  for (const TableRecord& table : manifest.tables)
    sum += table.server_length;
  return sum;
}

}  // namespace publish
