#include "database/wu_db_ver_update.h"

#include "database/database_texts.h"
#include "database/transaction.h"
#include "foundation/error_handling.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"

namespace tmw {
namespace {

constexpr const char* kModule = "WuDbVerUpdate";
constexpr const char* kRootEnding = "_Database_Update";

}  // namespace

std::int32_t WuDbVerUpdate::LoadFromFile(const std::string& file,
                                         const std::string& product_code) try {
  file_ = file;
  XmlDocument document;
  std::string explanation;
  if (!XmlLoadDocumentSafe(document, file, explanation)) {
    LoadingError(explanation);
    return kFailed;
  }
  try {
    return LoadRoot(document, product_code);
  } catch (const ProgramError& error) {
    if (error.Number != kProgramErrorNumber && error.Number != kTypeMismatchErrorNumber &&
        error.Number != kOverflowErrorNumber)
      throw;
    LoadingError(error.Description);
    return kFailed;
  }
} catch (...) {
  ReRaiseError(kModule, "LoadFromFile");
}

std::int32_t WuDbVerUpdate::LoadRoot(const XmlDocument& document, const std::string& product_code) {
  // The first node is the XML declaration; the one after it is taken for the root.
  const auto& nodes = document.Node().children;
  const std::string name = nodes.size() < 2 ? "" : nodes[1]->name;
  if (name != product_code + kRootEnding) {
    if (name.ends_with(kRootEnding)) return kOtherProduct;
    RaiseProgramError(database_texts::BadScriptRoot(name));
  }
  LoadVersions(*nodes[1]);
  for (const XmlNode* const action : XmlGetChildElements(*nodes[1], "Action"))
    actions_.emplace_back().LoadFromNode(*action);
  return kLoaded;
}

void WuDbVerUpdate::LoadVersions(const XmlNode& root) {
  from_text_ = XmlGetStringAttribute(root, "db_version_from");
  const auto from = ParseDbVersion(from_text_);
  if (!from) RaiseProgramError(database_texts::BadFromVersion(from_text_));
  to_text_ = XmlGetStringAttribute(root, "db_version_to");
  const auto to = ParseDbVersion(to_text_);
  if (!to) RaiseProgramError(database_texts::BadToVersion(to_text_));
  // Run again and again, such a script would never reach the target version.
  if (*to <= *from) RaiseProgramError(database_texts::VersionsNotRising(from_text_, to_text_));
  to_ = *to;
}

bool WuDbVerUpdate::Execute(ports::Database& database, HeldRelations& relations) const try {
  try {
    for (const WuDbUpdNode& action : actions_)
      action.Execute(database, relations);
  } catch (...) {
    ShowWarning(box_titles::kError,
                database_texts::ScriptFailed(to_text_, CurrentError().Description),
                FailureKind::kScript);
    return false;
  }
  Transaction transaction;
  database.Execute(SetDataBaseVersionSql(to_), true);
  transaction.Commit();
  return true;
} catch (...) {
  ReRaiseError(kModule, "Execute");
}

void WuDbVerUpdate::LoadingError(const std::string& reason) const {
  ShowWarning(box_titles::kError, database_texts::ScriptNotLoaded(file_, reason),
              FailureKind::kScript);
}

}  // namespace tmw
