#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "database/db_version.h"
#include "database/wu_db_upd_node.h"
#include "foundation/xml_helpers.h"
#include "ports/database.h"

namespace tmw {

// One database update script: the step from one version of the database to the next. A file
//   <?xml …?>
//   <TMW_Database_Update db_version_from="3.6.1" db_version_to="3.6.2">
//     <Action type="sql" SuppressErrors="no">statement; statement</Action>
//     <Action type="addfield" Table="…" FieldName="…" Type="text" Size="20" …/>
//     <Action type="customscript" Name="…"/>
//   </TMW_Database_Update>
class WuDbVerUpdate {
 public:
  static constexpr std::int32_t kLoaded = 1;
  static constexpr std::int32_t kOtherProduct = -1;  // to be passed over
  static constexpr std::int32_t kFailed = 0;         // reported

  std::int32_t LoadFromFile(const std::string& file, const std::string& product_code);

  // Runs the actions in order, then writes the end version into the database. Returns false after
  // the first failure, which has been reported.
  bool Execute(ports::Database& database, HeldRelations& relations) const;

  // The path it was loaded from.
  const std::string& File() const { return file_; }

  // As they stand in the file.
  const std::string& FromVersionText() const { return from_text_; }
  const std::string& ToVersionText() const { return to_text_; }

  const DbVersion& ToVersion() const { return to_; }

 private:
  std::int32_t LoadRoot(const XmlDocument& document, const std::string& product_code);
  void LoadVersions(const XmlNode& root);
  void LoadingError(const std::string& reason) const;

  std::string file_;
  std::string from_text_;
  std::string to_text_;
  DbVersion to_{};
  std::vector<WuDbUpdNode> actions_;
};

}  // namespace tmw
