#include "jetsql/row_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "database/db_string.h"
#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/value_text.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "tools/program.h"

namespace jetsql {
namespace {

using ports::DatabaseValue;
using Names = std::vector<std::string>;
using Values = std::vector<DatabaseValue>;

struct ModeName {
  const char* name;
  Mode mode;
};

constexpr ModeName kModes[] = {{"table", Mode::kTable}, {"tabs", Mode::kTabs},
                               {"csv", Mode::kCsv},     {"json", Mode::kJson},
                               {"lines", Mode::kLines}, {"tabletext", Mode::kTableText}};

bool IsNull(const DatabaseValue& value) {
  return std::holds_alternative<ports::NullValue>(value) ||
         std::holds_alternative<ports::EmptyValue>(value);
}

// Without characters that would break a line or a column.
std::string Escaped(const std::string& text) {
  if (text.find_first_of("\t\r\n\\") == std::string::npos) return text;
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '\t':
        escaped += "\\t";
        break;
      case '\r':
        escaped += "\\r";
        break;
      case '\n':
        escaped += "\\n";
        break;
      case '\\':
        escaped += "\\\\";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

class TabsWriter final : public RowWriter {
 public:
  TabsWriter(tmw::StringAccumulator& text, const RowFormat& format)
      : text_(text), format_(format) {}

  void Begin(const Names& names) override {
    if (!format_.has_header) return;
    Names escaped;
    for (const std::string& name : names)
      escaped.push_back(Escaped(name));
    text_.Add(tmw::Joined(escaped, "\t") + "\n");
  }

  void Row(const Values& values) override {
    line_.clear();
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i != 0) line_ += '\t';
      line_ += format_.mode == Mode::kTableText ? tmw::VariantToDBString(values[i])
                                                : Escaped(PlainText(values[i]));
    }
    text_.Add(line_ += '\n');
  }

 private:
  tmw::StringAccumulator& text_;
  RowFormat format_;
  std::string line_;
};

class CsvWriter final : public RowWriter {
 public:
  CsvWriter(tmw::StringAccumulator& text, const RowFormat& format) : text_(text), format_(format) {}

  void Begin(const Names& names) override {
    if (!format_.has_header) return;
    for (std::size_t i = 0; i < names.size(); ++i)
      Put(i, names[i]);
    EndLine();
  }

  void Row(const Values& values) override {
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (!IsNull(values[i])) {
        Put(i, PlainText(values[i]));
      } else if (i != 0) {
        line_ += ',';
      }
    }
    EndLine();
  }

 private:
  void Put(std::size_t place, const std::string& value) {
    if (place != 0) line_ += ',';
    const bool is_plain = !value.empty() && value.find_first_of(",\"\r\n") == std::string::npos &&
                          value.front() != ' ' && value.back() != ' ';
    if (is_plain) {
      line_ += value;
      return;
    }
    line_ += '"';
    for (const char c : value) {
      line_ += c;
      if (c == '"') line_ += c;
    }
    line_ += '"';
  }

  void EndLine() {
    text_.AddLine(line_);
    line_.clear();
  }

  tmw::StringAccumulator& text_;
  RowFormat format_;
  std::string line_;
};

class JsonWriter final : public RowWriter {
 public:
  explicit JsonWriter(tmw::StringAccumulator& text) : text_(text) {}

  void Begin(const Names& names) override {
    Names unique = names;
    for (std::size_t i = 0; i < unique.size(); ++i) {
      for (int number = 2;
           std::find(unique.begin(), unique.begin() + static_cast<std::ptrdiff_t>(i), unique[i]) !=
           unique.begin() + static_cast<std::ptrdiff_t>(i);
           ++number)
        unique[i] = names[i] + "_" + std::to_string(number);
      keys_.push_back(JsonString(unique[i]) + ": ");
    }
    text_.Add("[");
  }

  void Row(const Values& values) override {
    line_ = is_first_ ? "\n{" : ",\n{";
    is_first_ = false;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i != 0) line_ += ", ";
      line_ += keys_[i];
      line_ += JsonText(values[i]);
    }
    text_.Add(line_ += '}');
  }

  void End() override { text_.Add(is_first_ ? "]\n" : "\n]\n"); }

 private:
  tmw::StringAccumulator& text_;
  Names keys_;
  std::string line_;
  bool is_first_ = true;
};

class LinesWriter final : public RowWriter {
 public:
  explicit LinesWriter(tmw::StringAccumulator& text) : text_(text) {}

  void Begin(const Names& names) override {
    names_ = names;
    for (const std::string& name : names_)
      width_ = std::max(width_, tmw::CountCharacters(name));
  }

  void Row(const Values& values) override {
    if (!is_first_) text_.Add("\n");
    is_first_ = false;
    for (std::size_t i = 0; i < values.size(); ++i)
      text_.Add(std::string(width_ - tmw::CountCharacters(names_[i]), ' ') + names_[i] + " = " +
                Escaped(PlainText(values[i])) + "\n");
  }

 private:
  tmw::StringAccumulator& text_;
  Names names_;
  std::size_t width_ = 0;
  bool is_first_ = true;
};

// The widths follow from the first rows; a longer value further down moves its line.
class TableWriter final : public RowWriter {
 public:
  TableWriter(tmw::StringAccumulator& text, bool has_header)
      : text_(text), has_header_(has_header) {}

  void Begin(const Names& names) override {
    widths_.resize(names.size());
    is_number_.assign(names.size(), true);
    names_ = names;
  }

  void Row(const Values& values) override {
    Names cells;
    for (std::size_t i = 0; i < values.size(); ++i) {
      cells.push_back(Escaped(PlainText(values[i])));
      const bool is_text = std::holds_alternative<std::string>(values[i]) ||
                           std::holds_alternative<ports::BinaryValue>(values[i]) ||
                           std::holds_alternative<bool>(values[i]);
      if (is_text) is_number_[i] = false;
    }
    if (has_begun_) {
      Put(cells);
      return;
    }
    first_rows_.push_back(std::move(cells));
    if (first_rows_.size() == kMeasured) PutFirstRows();
  }

  void End() override {
    if (!has_begun_) PutFirstRows();
  }

 private:
  static constexpr std::size_t kMeasured = 1000;

  void PutFirstRows() {
    has_begun_ = true;
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (has_header_) widths_[i] = tmw::CountCharacters(Escaped(names_[i]));
      for (const Names& row : first_rows_)
        widths_[i] = std::max(widths_[i], tmw::CountCharacters(row[i]));
    }
    if (has_header_) {
      Names names;
      Names rules;
      for (std::size_t i = 0; i < names_.size(); ++i) {
        names.push_back(Escaped(names_[i]));
        rules.emplace_back(widths_[i], '-');
      }
      Put(names);
      Put(rules);
    }
    for (const Names& row : first_rows_)
      Put(row);
    first_rows_.clear();
  }

  void Put(const Names& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::size_t width = tmw::CountCharacters(cells[i]);
      const std::string blanks(widths_[i] - std::min(widths_[i], width), ' ');
      if (i != 0) line += "  ";
      line += is_number_[i] ? blanks + cells[i] : cells[i] + blanks;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text_.Add(line + "\n");
  }

  tmw::StringAccumulator& text_;
  bool has_header_;
  Names names_;
  std::vector<std::size_t> widths_;
  std::vector<bool> is_number_;
  std::vector<Names> first_rows_;
  bool has_begun_ = false;
};

}  // namespace

const tools::Option& ModeOption() {
  static const tools::Option kOption = {"--mode", "MODE", texts::kModeHelp};
  return kOption;
}

const tools::Option& HeaderOption() {
  static const tools::Option kOption = {"--header", "", texts::kHeaderHelp};
  return kOption;
}

const tools::Option& NoHeaderOption() {
  static const tools::Option kOption = {"--no-header", "", texts::kNoHeaderHelp};
  return kOption;
}

std::optional<Mode> ModeOf(const tools::Arguments& arguments) {
  const auto name = arguments.Value("--mode");
  if (!name) {
    if (arguments.Has(tools::kJsonOption)) return Mode::kJson;
    return std::nullopt;
  }
  for (const ModeName& mode : kModes) {
    if (*name == mode.name) return mode.mode;
  }
  throw tools::UsageError(Say(texts::kUnknownMode, {*name}));
}

RowFormat FormatOf(const tools::Arguments& arguments) {
  RowFormat format;
  format.mode = ModeOf(arguments).value_or(
      ports::CurrentPorts().processes->PrintsToTerminal() ? Mode::kTable : Mode::kTabs);
  format.has_header = arguments.Has("--header") || !arguments.Has("--no-header");
  return format;
}

std::unique_ptr<RowWriter> MakeRowWriter(const RowFormat& format, tmw::StringAccumulator& text) {
  switch (format.mode) {
    case Mode::kTable:
      return std::make_unique<TableWriter>(text, format.has_header);
    case Mode::kCsv:
      return std::make_unique<CsvWriter>(text, format);
    case Mode::kJson:
      return std::make_unique<JsonWriter>(text);
    case Mode::kLines:
      return std::make_unique<LinesWriter>(text);
    case Mode::kTabs:
    case Mode::kTableText:
      break;
  }
  return std::make_unique<TabsWriter>(text, format);
}

std::uint64_t WriteRows(ports::DatabaseRecordset& rows, RowWriter& writer) {
  const Names names = rows.FieldNames();
  writer.Begin(names);
  Values values(names.size());
  std::uint64_t count = 0;
  for (; !rows.AtEnd(); rows.MoveNext(), ++count) {
    for (std::size_t i = 0; i < values.size(); ++i)
      values[i] = rows.Value(i);
    writer.Row(values);
  }
  writer.End();
  return count;
}

}  // namespace jetsql
