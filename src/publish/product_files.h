#pragma once

#include <string>
#include <vector>

#include "publish/description.h"
#include "publish/faults.h"
#include "publish/manifest.h"

namespace publish {

// A file of the product and how it is published. Packing fills in the record's lengths and hash.
struct ProductFile {
  std::string path;    // relative to the product's folder, "/" between parts
  std::string source;  // the file itself
  FileRecord record;
  bool is_executable = false;
  std::string com_place;      // the line of the description that says whether it is registered
  std::string ready_package;  // a ready-made package; empty if the file is to be packed
};

// The files of the product's folder that the description does not skip, in the order of the
// manifest: by folder, then by name.
std::vector<ProductFile> CollectProductFiles(const std::string& product_folder,
                                             const Description& description, Faults& faults);

// Makes a name for the server from a relative path. It consists of ASCII letters, digits and a few
// signs, so that it needs no escaping in a URL; other paths end with a part of their hash.
std::string MakeServerName(const std::string& path);

}  // namespace publish
