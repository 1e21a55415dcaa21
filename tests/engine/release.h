#pragma once

#include <string>
#include <utility>
#include <vector>

// A small release as the maker's server offers it, written by this system's own package writer.
namespace tests {

struct ReleaseFile {
  std::string name;     // OrigName
  std::string content;  // as installed; pack type 2 appends its integrity data
  std::string folder = "{p}Bin";
  std::string server_name{};  // empty: name + ".tmz", with "f" and a number for other letters
  int pack_type = 1;
  std::string is_com{};  // the attribute; empty: none
  bool is_executable = false;
};

struct Release {
  std::string version = "3.6.0.2";
  std::string needed_updater = "1.0";
  std::string version_id = "R 3.6.0.2";
  std::vector<ReleaseFile> files;
  std::string product = "TMW";
  std::string dict{};       // a dictionary table's name; empty: none
  std::string dict_text{};  // its content
  std::string user{};       // a user table's name
  std::vector<std::pair<std::string, std::string>> scripts{};     // name, content
  std::vector<std::pair<std::string, std::string>> structures{};  // as above
  std::string scripts_package = "updates.tmz";
  std::string structures_package = "structures.tmz";
  std::vector<std::pair<std::string, std::string>> updater_components{};  // name, file
  bool is_bound = false;     // the digest announces the manifest's package
  std::string more_lines{};  // of the digest
  std::vector<std::pair<std::string, std::string>> manifest_edits{};  // text, what replaces it
};

// Writes the release's files into the folder of a server with that address.
void WriteRelease(const Release& release, const std::string& folder, const std::string& url);

}  // namespace tests
