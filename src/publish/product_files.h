#pragma once

#include <string>
#include <vector>

#include "publish/description.h"
#include "publish/faults.h"
#include "publish/manifest.h"

namespace publish {

// A file of the product and what becomes of it. The record's lengths and hash are filled in by
// packing.
struct ProductFile {
  std::string path;    // relative to the product's folder, "/" separates
  std::string source;  // the file itself
  FileRecord record;
  bool is_executable = false;
  std::string ready_package;  // the file of a ready-made package; empty: packed here
};

// The files of the product's folder that the description does not skip, in the order of the
// manifest: by folder, then by name.
std::vector<ProductFile> CollectProductFiles(const std::string& product_folder,
                                             const Description& description, Faults& faults);

// A name for the server made of a relative path: letters, digits and a few signs of ASCII, so that
// it needs no escaping in a URL. Paths of other characters get a piece of their hash behind.
std::string MakeServerName(const std::string& path);

}  // namespace publish
