#pragma once

#include <string>
#include <variant>
#include <vector>

#include "database/held_relations.h"
#include "foundation/xml_helpers.h"
#include "ports/database.h"

namespace tmw {

// The kinds of actions.
namespace update_actions {

// Each statement is a transaction of its own.
struct Sql {
  std::vector<std::string> statements;
  bool suppress_errors = false;
};

struct Property {
  const char* name;
  ports::DataType type;
  ports::DatabaseValue value;
};

struct AddField {
  std::string table;
  ports::FieldDefinition field;
  std::vector<Property> properties;  // in the order in which they are set
  bool suppress_errors = false;
};

struct CustomScript {
  std::string name;
};

}  // namespace update_actions

// One action of a database update script.
class WuDbUpdNode {
 public:
  // From an Action element; what is missing or wrong in it raises error 1001.
  void LoadFromNode(const XmlNode& node);

  // SuppressErrors covers each statement and the creation of a field, but not a missing table.
  // Statements that drop a held relation take it off the list.
  void Execute(ports::Database& database, HeldRelations& relations) const;

 private:
  std::variant<update_actions::Sql, update_actions::AddField, update_actions::CustomScript> action_;
};

}  // namespace tmw
