#include "jet/sql/definition_parser.h"

#include <string_view>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/errors.h"

namespace jet::sql {
namespace {

using enum ports::DataType;

constexpr std::int32_t kUsualPrecision = 18;

struct TypeWords {
  std::string_view words;  // in lower case
  ports::DataType type;
  std::int32_t attributes = 0;
};

constexpr TypeWords kTypes[] = {
    {"bit boolean logical logical1 yesno", kBoolean},
    {"byte integer1 tinyint", kByte},
    {"integer2 short smallint", kInteger},
    {"int integer integer4 long", kLong},
    {"autoincrement counter identity", kLong, ports::kAutoIncrementField},
    {"currency money", kCurrency},
    {"float4 ieeesingle real single", kSingle},
    {"dec decimal", kDecimal},
    {"double float float8 ieeedouble number numeric", kDouble},
    {"date datetime time timestamp", kDate},
    {"binary varbinary", kBinary},
    {"alphanumeric char character string text varchar", kText},
    {"general image longbinary oleobject", kLongBinary},
    {"longchar longtext memo note", kMemo},
    {"guid uniqueidentifier", kGuid},
};

const TypeWords* FindType(const std::string& lower_word) {
  for (const TypeWords& entry : kTypes) {
    for (const std::string& word : tmw::Split(entry.words, " ")) {
      if (word == lower_word) return &entry;
    }
  }
  return nullptr;
}

}  // namespace

Statement DefinitionParser::ReadCreate() {
  tokens_.ExpectKeyword("create");
  if (tokens_.TakeKeyword("table")) return ReadCreateTable();
  const bool unique = tokens_.TakeKeyword("unique");
  if (tokens_.TakeKeyword("index")) return ReadCreateIndex(unique);
  for (const char* const what : {"VIEW", "PROCEDURE", "PROC", "USER", "GROUP"}) {
    if (tokens_.AtKeyword(tmw::LowerCase(what))) FailUnsupported(std::string("CREATE ") + what);
  }
  tokens_.FailAt("TABLE");
}

Statement DefinitionParser::ReadCreateTable() {
  const ClauseScope clause(tokens_, kSyntaxInCreateTable);
  CreateTable create;
  create.table = tokens_.ExpectName();
  tokens_.ReadBracketedList([&] {
    if (AtConstraint()) {
      create.constraints.push_back(ReadTableConstraint());
    } else {
      create.fields.push_back(ReadField(&create.constraints));
    }
  });
  return create;
}

// True at a table constraint, false at a field definition.
bool DefinitionParser::AtConstraint() const {
  return tokens_.AtKeyword("constraint") ||
         (tokens_.AtKeyword("primary") && tokens_.AtKeyword("key", 1)) ||
         (tokens_.AtKeyword("unique") && tokens_.AtSymbol("(", 1)) ||
         (tokens_.AtKeyword("foreign") && tokens_.AtKeyword("key", 1));
}

ports::FieldDefinition DefinitionParser::ReadField(std::vector<Constraint>* constraints) {
  const ClauseScope clause(tokens_, kSyntaxInFieldDefinition);
  ports::FieldDefinition field;
  field.name = tokens_.ExpectName();
  ReadType(field);
  // Unlike fields created through definitions, those created by SQL always allow empty texts.
  field.allow_zero_length = field.type == kText || field.type == kMemo;
  while (constraints != nullptr && ReadFieldConstraint(field, *constraints)) {
  }
  return field;
}

void DefinitionParser::ReadType(ports::FieldDefinition& field) {
  if (tokens_.Peek().kind != TokenKind::kName) tokens_.FailAt("тип поля");
  const std::string word = tmw::LowerCase(tokens_.Peek().text);
  const TypeWords* const type = FindType(word);
  if (type == nullptr) tokens_.FailAt("тип поля");
  tokens_.Take();
  // Some types have two words.
  if (word == "double") tokens_.TakeKeyword("precision");
  if (word == "long" && tokens_.TakeKeyword("binary")) {
    field.type = kLongBinary;
    return;
  }
  field.type = type->type;
  field.attributes = type->attributes;
  if (field.type == kDecimal) field.precision = kUsualPrecision;
  if (!tokens_.TakeSymbol("(")) return;
  if (field.attributes != 0) {
    ReadNumbering(field);
    return;
  }
  if (tokens_.Peek().kind != TokenKind::kInteger) tokens_.FailAt("размер");
  const auto size = static_cast<std::int32_t>(tokens_.Take().number);
  if (type->type == kText || type->type == kBinary) {
    if (size < 1) Fail(kSyntaxInFieldDefinition, "размер поля " + field.name);
    field.size = size;
  } else if (tokens_.TakeSymbol(",")) {
    if (tokens_.Peek().kind != TokenKind::kInteger) tokens_.FailAt("число знаков");
    field.scale = static_cast<std::int32_t>(tokens_.Take().number);
  }
  field.precision = type->type == kDecimal ? size : 0;
  tokens_.ExpectSymbol(")");
}

// The first number and the step of a counter. Only 1 is supported for both.
void DefinitionParser::ReadNumbering(const ports::FieldDefinition& field) {
  tokens_.ReadList([&] {
    const Token number = tokens_.Take();
    if (number.kind != TokenKind::kInteger) tokens_.FailAt("число");
    if (number.number != 1)
      FailUnsupported("нумерация поля " + field.name + " не с 1 или не через 1");
  });
  tokens_.ExpectSymbol(")");
}

// PRIMARY KEY or UNIQUE.
bool DefinitionParser::TakeKey(Constraint& constraint) {
  const bool is_primary = tokens_.TakeKeyword("primary");
  if (!is_primary && !tokens_.TakeKeyword("unique")) return false;
  if (is_primary) tokens_.ExpectKeyword("key");
  constraint.kind = is_primary ? ConstraintKind::kPrimaryKey : ConstraintKind::kUnique;
  return true;
}

bool DefinitionParser::ReadFieldConstraint(ports::FieldDefinition& field,
                                           std::vector<Constraint>& constraints) {
  Constraint constraint;
  if (tokens_.TakeKeyword("constraint")) constraint.name = tokens_.ExpectName();
  constraint.fields.push_back(field.name);
  if (tokens_.TakeKeyword("not")) {
    tokens_.ExpectKeyword("null");
    field.required = true;
    return true;
  }
  if (tokens_.AtKeyword("default")) FailUnsupported("DEFAULT");
  if (tokens_.AtKeyword("references")) {
    ReadReference(constraint);
  } else if (!TakeKey(constraint)) {
    if (constraint.name.empty()) return tokens_.TakeKeyword("null");
    tokens_.FailAt("PRIMARY KEY");
  }
  constraints.push_back(std::move(constraint));
  return true;
}

Constraint DefinitionParser::ReadTableConstraint() {
  Constraint constraint;
  if (tokens_.TakeKeyword("constraint")) constraint.name = tokens_.ExpectName();
  if (tokens_.TakeKeyword("not")) {
    tokens_.ExpectKeyword("null");
    constraint.kind = ConstraintKind::kNotNull;
  } else if (tokens_.TakeKeyword("foreign")) {
    tokens_.ExpectKeyword("key");
    constraint.kind = ConstraintKind::kForeignKey;
  } else if (!TakeKey(constraint)) {
    tokens_.FailAt("PRIMARY KEY");
  }
  constraint.fields = ReadNames();
  if (constraint.kind == ConstraintKind::kForeignKey) ReadReference(constraint);
  return constraint;
}

void DefinitionParser::ReadReference(Constraint& constraint) {
  tokens_.ExpectKeyword("references");
  constraint.kind = ConstraintKind::kForeignKey;
  constraint.referenced_table = tokens_.ExpectName();
  if (tokens_.AtSymbol("(")) constraint.referenced_fields = ReadNames();
  while (tokens_.TakeKeyword("on")) {
    const bool is_update = tokens_.TakeKeyword("update");
    if (!is_update) tokens_.ExpectKeyword("delete");
    (is_update ? constraint.on_update : constraint.on_delete) = ReadAction();
  }
}

ReferenceAction DefinitionParser::ReadAction() {
  if (tokens_.TakeKeyword("cascade")) return ReferenceAction::kCascade;
  if (tokens_.TakeKeyword("set")) {
    tokens_.ExpectKeyword("null");
    return ReferenceAction::kSetNull;
  }
  tokens_.ExpectKeyword("no");
  tokens_.ExpectKeyword("action");
  return ReferenceAction::kRefuse;
}

std::vector<std::string> DefinitionParser::ReadNames() {
  std::vector<std::string> names;
  tokens_.ReadBracketedList([&] { names.push_back(tokens_.ExpectName()); });
  return names;
}

Statement DefinitionParser::ReadCreateIndex(bool unique) {
  const ClauseScope clause(tokens_, kSyntaxInCreateIndex);
  CreateIndex create;
  create.index.unique = unique;
  create.index.name = tokens_.ExpectName();
  tokens_.ExpectKeyword("on");
  create.table = tokens_.ExpectName();
  tokens_.ReadBracketedList([&] {
    ports::IndexFieldDefinition field;
    field.name = tokens_.ExpectName();
    field.descending = tokens_.TakeDescending();
    create.index.fields.push_back(std::move(field));
  });
  if (!tokens_.TakeKeyword("with")) return create;
  do {
    if (tokens_.TakeKeyword("primary")) {
      create.index.primary = true;
    } else if (tokens_.TakeKeyword("disallow")) {
      tokens_.ExpectKeyword("null");
      create.index.required = true;
    } else {
      tokens_.ExpectKeyword("ignore");
      tokens_.ExpectKeyword("null");
      create.index.ignore_nulls = true;
    }
  } while (tokens_.AtKeyword("disallow") || tokens_.AtKeyword("ignore"));
  return create;
}

Statement DefinitionParser::ReadAlter() {
  tokens_.ExpectKeyword("alter");
  if (!tokens_.AtKeyword("table")) tokens_.FailAt("TABLE");
  const ClauseScope clause(tokens_, kSyntaxInAlterTable);
  tokens_.Take();
  const std::string table = tokens_.ExpectName();
  if (tokens_.TakeKeyword("add")) {
    if (AtConstraint()) return AddConstraint{table, ReadTableConstraint()};
    tokens_.TakeKeyword("column");
    AddColumn add;
    add.table = table;
    add.field = ReadField(&add.constraints);
    return add;
  }
  if (tokens_.TakeKeyword("alter")) {
    tokens_.TakeKeyword("column");
    std::vector<Constraint> constraints;
    AlterColumn alter{table, ReadField(&constraints)};
    if (!constraints.empty()) tokens_.FailAt("конец инструкции");
    return alter;
  }
  tokens_.ExpectKeyword("drop");
  if (tokens_.TakeKeyword("constraint")) return DropConstraint{table, tokens_.ExpectName()};
  tokens_.TakeKeyword("column");
  return DropColumn{table, tokens_.ExpectName()};
}

Statement DefinitionParser::ReadDrop() {
  tokens_.ExpectKeyword("drop");
  const ClauseScope clause(tokens_, kSyntaxInDrop);
  if (tokens_.TakeKeyword("table")) return DropTable{tokens_.ExpectName()};
  for (const char* const what : {"VIEW", "PROCEDURE", "USER", "GROUP"}) {
    if (tokens_.AtKeyword(tmw::LowerCase(what))) FailUnsupported(std::string("DROP ") + what);
  }
  tokens_.ExpectKeyword("index");
  DropIndex drop;
  drop.index = tokens_.ExpectName();
  tokens_.ExpectKeyword("on");
  drop.table = tokens_.ExpectName();
  return drop;
}

}  // namespace jet::sql
