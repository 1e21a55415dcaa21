#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "packing/rar_writer.h"
#include "publish/description.h"
#include "publish/digest.h"
#include "publish/faults.h"
#include "publish/manifest.h"
#include "publish/packer.h"
#include "publish/product_files.h"
#include "publish/tables.h"
#include "tools/progress.h"

namespace publish {

// Fills the folder of one release.
class ReleaseBuilder {
 public:
  // Both folders exist and are empty; work holds temporary files. Without a packer everything is
  // stored.
  ReleaseBuilder(const Description& description, std::string release, std::string work,
                 tools::Progress& progress, Packer* packer = nullptr);

  // Writes the tables' packages and the package of structures.
  void AddTables(ReferenceTables& reference, std::vector<TableRecord> tables, Faults& faults);

  // Writes the files' packages, several in parallel. Does nothing if there are faults already or
  // the list has some: packing takes long, and there will be no release.
  void AddFiles(std::vector<ProductFile> files, Faults& faults);

  // Packs the "*.xml" files of the folder; none if its name is empty.
  void AddScripts(const std::string& folder);

  // Copies the updater's own files from the product's folder.
  void AddUpdater(const std::string& product_folder, Faults& faults);

  // Checks the release as a whole, then writes the manifest's package and the listing.
  void Finish(Faults& faults);

  const Manifest& Content() const { return manifest_; }

  // The digest that announces the release.
  const Digest& Announcement() const { return digest_; }

 private:
  // A file and its name in the package.
  using Entry = std::pair<std::string, std::string>;

  std::string PathOf(const std::string& server_name) const;
  packing::RarEntryFacts FactsOf(const std::string& name, bool is_executable = false) const;
  PackageRecord PackTogether(const std::string& server_name, const std::vector<Entry>& entries);
  PackageRecord PackAlone(const std::string& server_name, const Entry& entry, Faults& faults);
  bool PackShorter(const PackJob& job, const std::string& target, bool with_trailer,
                   const std::string& scratch, Faults& faults) const;
  void PackFile(ProductFile& file, std::size_t number, const packing::PieceHandler& on_piece,
                Faults& faults) const;
  void TakeReadyPackage(ProductFile& file, const std::string& scratch, Faults& faults) const;
  void CheckText(const ProductFile& file, Faults& faults) const;
  std::string Listing() const;

  const Description& description_;
  std::string release_;
  std::string work_;
  tools::Progress& progress_;
  Packer* packer_;
  Manifest manifest_;
  Digest digest_;
  bool is_packed_ = false;
};

}  // namespace publish
