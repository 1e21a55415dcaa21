#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <variant>
#include <vector>

// The values, definitions and errors that the database port speaks in.
namespace ports {

// The engine's field type codes, as DAO numbers them (dbBoolean …). Codes outside this list may
// come from a foreign file and are passed through.
enum class DataType : std::int32_t {
  kBoolean = 1,
  kByte = 2,
  kInteger = 3,  // 16 bits
  kLong = 4,     // 32 bits
  kCurrency = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kBinary = 9,
  kText = 10,
  kLongBinary = 11,
  kMemo = 12,
  kGuid = 15,
  kBigInt = 16,
  kVarBinary = 17,
  kChar = 18,
  kNumeric = 19,
  kDecimal = 20,
  kFloat = 21,
  kTime = 22,
  kTimeStamp = 23,
};

// Kinds of a value that the language has no type of its own for.
struct EmptyValue {
  bool operator==(const EmptyValue&) const = default;
};
struct NullValue {
  bool operator==(const NullValue&) const = default;
};
struct CurrencyValue {
  std::int64_t ten_thousandths = 0;
  bool operator==(const CurrencyValue&) const = default;
};
// Days since 1899-12-30; the fraction is the time of day, also before that day.
struct DateValue {
  double days = 0;
  bool operator==(const DateValue&) const = default;
};
// A number of up to 28 digits as its text, with "." as the separator.
struct DecimalValue {
  std::string text;
  bool operator==(const DecimalValue&) const = default;
};
struct BinaryValue {
  std::string bytes;
  bool operator==(const BinaryValue&) const = default;
};
// Anything else (arrays, objects): only its type code (VARTYPE) is known.
struct OtherValue {
  std::int32_t type_code = 0;
  bool operator==(const OtherValue&) const = default;
};

// One value of a field, parameter or property. Texts are UTF-8; a GUID travels as its text,
// "{guid {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}}".
using DatabaseValue = std::variant<EmptyValue, NullValue, bool, std::uint8_t, std::int16_t,
                                   std::int32_t, CurrencyValue, float, double, DateValue,
                                   DecimalValue, std::string, BinaryValue, OtherValue>;

// Attributes of tables and fields (bit masks of DAO).
inline constexpr std::uint32_t kSystemObject = 0x80000002;
inline constexpr std::uint32_t kHiddenObject = 0x00000001;
inline constexpr std::uint32_t kSystemTable = kSystemObject | kHiddenObject;  // none of a user's
inline constexpr std::uint32_t kLinkedTable = 0x60000000;  // to another database, or through ODBC
inline constexpr std::int32_t kAutoIncrementField = 16;

struct FieldDefinition {
  std::string name;
  DataType type = DataType::kText;
  // Text: UTF-16 units (0 asks for 255); Binary: bytes; ignored for the other types, for which the
  // engine hands back its own size.
  std::int32_t size = 0;
  std::int32_t attributes = 0;
  bool required = false;
  bool allow_zero_length = false;
  // An expression's text ("0", "\"нет\"", "Date()"); empty for none.
  std::string default_value;
  // Decimals only: digits in all and behind the point. DAO does not say them.
  std::int32_t precision = 0;
  std::int32_t scale = 0;
};

struct IndexFieldDefinition {
  std::string name;
  bool descending = false;
};

struct IndexDefinition {
  std::string name;
  bool primary = false;  // implies unique and required
  bool unique = false;
  bool required = false;  // no Null in any of its fields
  bool ignore_nulls = false;
  bool foreign = false;  // made by a relation
  std::vector<IndexFieldDefinition> fields;
};

// Attributes of relations (bit masks of DAO). Without any the relation is one to many, is enforced
// and refuses what would break it.
inline constexpr std::int32_t kRelationUnique = 1;       // one to one
inline constexpr std::int32_t kRelationDontEnforce = 2;  // says how tables belong together, no more
inline constexpr std::int32_t kRelationInherited = 4;    // of linked tables: lies in their database
inline constexpr std::int32_t kRelationUpdateCascade = 0x100;
inline constexpr std::int32_t kRelationDeleteCascade = 0x1000;
inline constexpr std::int32_t kRelationLeft = 0x1000000;   // queries join its tables by a LEFT JOIN
inline constexpr std::int32_t kRelationRight = 0x2000000;  // ... by a RIGHT JOIN
// The referring fields become Null. Made by statements only (ON DELETE SET NULL).
inline constexpr std::int32_t kRelationUpdateNull = 0x200;
inline constexpr std::int32_t kRelationDeleteNull = 0x2000;

struct RelationFieldPair {
  std::string name;          // in the table that is referred to
  std::string foreign_name;  // in the referring table
};

// Rows of the foreign table refer to rows of the table by equal values of their fields. An enforced
// relation has an index of its own name in the foreign table.
struct RelationDefinition {
  std::string name;
  std::string table;
  std::string foreign_table;
  std::int32_t attributes = 0;
  std::vector<RelationFieldPair> fields;
};

struct TableSummary {
  std::string name;
  std::uint32_t attributes = 0;
};

struct TableDefinition {
  std::string name;
  std::uint32_t attributes = 0;
  std::vector<FieldDefinition> fields;   // in the table's field order
  std::vector<IndexDefinition> indexes;  // in the collection's order
};

// A failure of the engine: its own number and words, and the component it comes from. Enters the
// program's error chain as it is.
class DatabaseError : public std::exception {
 public:
  DatabaseError(std::int32_t number, std::string description, std::string source)
      : Number(number), Description(std::move(description)), Source(std::move(source)) {}

  const char* what() const noexcept override { return Description.c_str(); }

  std::int32_t Number;
  std::string Description;
  std::string Source;
};

// Numbers that callers tell apart.
inline constexpr std::int32_t kNoCurrentRecord = 3021;
inline constexpr std::int32_t kDiskFull = 3026;
inline constexpr std::int32_t kDiskError = 3043;
inline constexpr std::int32_t kFileAlreadyInUse = 3045;
// Executing a statement that only gives rows.
inline constexpr std::int32_t kNotAnActionQuery = 3065;
inline constexpr std::int32_t kItemNotFound = 3265;
inline constexpr std::int32_t kOpenedExclusively = 3356;

}  // namespace ports
