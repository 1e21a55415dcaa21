#include "publish/description.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "foundation/contract_names.h"
#include "foundation/date_parts.h"
#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/path_guard.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "foundation/xml_helpers.h"
#include "publish/digest.h"
#include "publish/fault_texts.h"
#include "publish/located_xml.h"

namespace publish {
namespace {

using tmw::XmlNode;
using Names = std::initializer_list<std::string_view>;

bool Has(Names names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

class Reader {
 public:
  Reader(const LocatedXml& xml, Description& description, Faults& faults)
      : xml_(xml), result_(description), faults_(faults) {}

  void Read(const XmlNode& root) {
    ExpectAttributes(root, {"Product", "Version", "VersionID", "Date", "Archive"});
    ExpectElements(root, {"Updater", "Servers", "Files", "Database"});
    if (Needed(root, "Product") != tmw::names::kProductCode) {
      Blame(root, "Product", texts::kMustBe, {std::string(tmw::names::kProductCode)});
    }
    result_.version = Needed(root, "Version");
    result_.version_place = PlaceOf(root, "Version");
    if (!IsVersion(result_.version, 4)) Blame(root, "Version", texts::kMustBeNumbers[4]);
    result_.version_id = tmw::XmlGetStringAttributeDef(root, "VersionID", result_.version);
    if (!tmw::CheckFileName(result_.version_id).IsAccepted()) {
      Blame(root, "VersionID", texts::kNoFolderName);
    }
    ReadDate(root);
    const std::string archive = tmw::XmlGetStringAttributeDef(root, "Archive", "RAR5");
    if (archive == "RAR4") result_.format = packing::RarFormat::kRar4;
    if (archive != "RAR4" && archive != "RAR5") Blame(root, "Archive", texts::kNoArchive);
    ReadUpdater(root);
    ReadServers(root);
    for (const XmlNode* const files : tmw::XmlGetChildElements(root, "Files"))
      ReadFiles(*files);
    for (const XmlNode* const database : tmw::XmlGetChildElements(root, "Database"))
      ReadTables(*database);
  }

 private:
  // "release.xml:3: /Release/Updater/@MinVersion"
  std::string PlaceOf(const XmlNode& node, std::string_view attribute) const {
    std::string place = xml_.PlaceOf(node) + ": " + tmw::XmlGetNodePath(node);
    if (!attribute.empty()) place.append("/@").append(attribute);
    return place;
  }

  void Blame(const XmlNode& node, std::string_view attribute, const char* text,
             const std::vector<std::string>& values = {}) {
    faults_.Add(PlaceOf(node, attribute), text, values);
  }

  // Otherwise a misspelt name would be ignored silently.
  void ExpectAttributes(const XmlNode& node, Names names) {
    for (const ports::XmlAttribute& attribute : node.attributes) {
      if (!Has(names, attribute.name)) Blame(node, attribute.name, texts::kUnknownAttribute);
    }
  }

  void ExpectElements(const XmlNode& node, Names names) {
    for (const auto& child : node.children) {
      const bool is_element = child->kind == tmw::XmlNodeKind::kElement;
      if (is_element && !Has(names, child->name)) Blame(*child, "", texts::kUnknownElement);
    }
  }

  std::string Needed(const XmlNode& node, const char* attribute) {
    std::string value = tmw::XmlGetStringAttributeDef(node, attribute, "");
    if (value.empty()) Blame(node, attribute, texts::kMissing);
    return value;
  }

  std::optional<bool> Truth(const XmlNode& node, const char* attribute) {
    const std::string text = tmw::XmlGetStringAttributeDef(node, attribute, "");
    if (text.empty()) return std::nullopt;
    const bool value = tmw::XmlGetBooleanAttributeDef(node, attribute, false);
    if (value != tmw::XmlGetBooleanAttributeDef(node, attribute, true))
      Blame(node, attribute, texts::kNoTruth);
    return value;
  }

  void ReadDate(const XmlNode& root) {
    const std::string text = Needed(root, "Date");
    if (text.empty()) return;
    tmw::DateParts parts;
    std::optional<double> days;
    const std::vector<std::string> pieces = tmw::Split(text, "-");
    const bool has_form = text.size() == 10 && pieces.size() == 3 && pieces[0].size() == 4 &&
                          pieces[1].size() == 2 &&
                          text.find_first_not_of("0123456789-") == std::string::npos;
    if (has_form) {
      parts.year = std::stoi(pieces[0]);
      parts.month = std::stoi(pieces[1]);
      parts.day = std::stoi(pieces[2]);
      parts.hour = 12;
      days = tmw::DateFromParts(parts);
    }
    // RAR 4 cannot store an earlier date.
    if (!days || parts.year < 1980 || parts.year > 2100) {
      Blame(root, "Date", texts::kNoDate);
      return;
    }
    constexpr double kDay1970 = 25569;
    result_.date = static_cast<std::int64_t>((*days - kDay1970) * 24) * 3600;
  }

  void ReadUpdater(const XmlNode& root) {
    const XmlNode* const updater = tmw::XmlFindSingleNode(root, "Updater");
    if (updater == nullptr) {
      Blame(root, "", texts::kNoUpdater);
      return;
    }
    ExpectAttributes(*updater, {"MinVersion"});
    ExpectElements(*updater, {"Component"});
    result_.needed_updater = Needed(*updater, "MinVersion");
    result_.updater_place = PlaceOf(*updater, "MinVersion");
    if (!IsVersion(result_.needed_updater, 2))
      Blame(*updater, "MinVersion", texts::kMustBeNumbers[2]);
    for (const XmlNode* const component : tmw::XmlGetChildElements(*updater, "Component")) {
      ExpectAttributes(*component, {"File"});
      result_.updater_files.push_back(Needed(*component, "File"));
    }
  }

  void ReadServers(const XmlNode& root) {
    for (const XmlNode* const servers : tmw::XmlGetChildElements(root, "Servers")) {
      ExpectElements(*servers, {"Server"});
      for (const XmlNode* const server : tmw::XmlGetChildElements(*servers, "Server")) {
        ExpectAttributes(*server, {"Url"});
        result_.servers.push_back({Needed(*server, "Url"), PlaceOf(*server, "Url")});
      }
    }
    if (result_.servers.empty()) Blame(root, "", texts::kNamesNoServer);
  }

  void ReadFiles(const XmlNode& files) {
    ExpectElements(files, {"Folder", "File"});
    for (const XmlNode* const folder : tmw::XmlGetChildElements(files, "Folder")) {
      ExpectAttributes(*folder, {"Source", "Target", "Optional"});
      FolderRule rule;
      rule.source = tmw::XmlGetStringAttributeDef(*folder, "Source", "");
      std::replace(rule.source.begin(), rule.source.end(), '\\', '/');
      rule.source = tmw::TrimCharacters(rule.source, "/");
      rule.target = Needed(*folder, "Target");
      rule.place = PlaceOf(*folder, "Source");
      rule.is_optional = Truth(*folder, "Optional").value_or(false);
      result_.folders.push_back(rule);
    }
    for (const XmlNode* const file : tmw::XmlGetChildElements(files, "File"))
      ReadFileRule(*file);
  }

  void ReadFileRule(const XmlNode& file) {
    ExpectAttributes(file,
                     {"Mask", "Skip", "IsCom", "Executable", "PackType", "Package", "Optional"});
    FileRule rule;
    rule.mask = Needed(file, "Mask");
    std::replace(rule.mask.begin(), rule.mask.end(), '\\', '/');
    rule.place = PlaceOf(file, "Mask");
    rule.is_optional = Truth(file, "Optional").value_or(false);
    rule.is_skipped = Truth(file, "Skip").value_or(false);
    rule.is_com = Truth(file, "IsCom");
    rule.is_executable = Truth(file, "Executable");
    rule.package = tmw::XmlGetStringAttributeDef(file, "Package", "");
    const std::string method = tmw::XmlGetStringAttributeDef(file, "PackType", "");
    if (method == "1" || method == "2" || method == "3") {
      rule.pack_method = method.front() - '0';
    } else if (!method.empty()) {
      Blame(file, "PackType", texts::kNoPackMethod);
    }
    result_.files.push_back(std::move(rule));
  }

  void ReadTables(const XmlNode& database) {
    ExpectAttributes(database, {"From"});
    ExpectElements(database, {"Dict", "User", "Skip"});
    result_.oldest_database = {tmw::XmlGetStringAttributeDef(database, "From", ""),
                               PlaceOf(database, "From")};
    const std::string& oldest = result_.oldest_database.text;
    if (!oldest.empty() && !IsVersion(oldest, 3)) Blame(database, "From", texts::kMustBeNumbers[3]);
    for (const auto& child : database.children) {
      if (child->kind != tmw::XmlNodeKind::kElement) continue;
      const bool is_dictionary = child->name == "Dict";
      ExpectAttributes(*child, is_dictionary ? Names{"Mask", "Optional", "TakesOver"}
                                             : Names{"Mask", "Optional"});
      const TableKind kind = is_dictionary           ? TableKind::kDictionary
                             : child->name == "User" ? TableKind::kUser
                                                     : TableKind::kSkipped;
      result_.tables.push_back({kind, Needed(*child, "Mask"), PlaceOf(*child, "Mask"),
                                Truth(*child, "Optional").value_or(false),
                                is_dictionary && Truth(*child, "TakesOver").value_or(false)});
    }
  }

  const LocatedXml& xml_;
  Description& result_;
  Faults& faults_;
};

}  // namespace

bool ReadDescription(const std::string& file, Description& description, Faults& faults) {
  description.folder = tmw::SplitFileName(tmw::GetAbsoluteFileName(file)).Folder;
  const auto document = LocatedXml::Open(file, file, faults);
  if (!document) return false;
  const XmlNode* const root = tmw::XmlFindSingleNode(document->Node(), "Release");
  if (root == nullptr) {
    faults.Add(file, texts::kWrongRoot, {"Release"});
    return false;
  }
  Reader(*document, description, faults).Read(*root);
  return true;
}

}  // namespace publish
