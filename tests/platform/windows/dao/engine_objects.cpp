#include "tests/platform/windows/dao/engine_objects.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>

#include "jet/engine.h"
#include "platform/windows/dao/dao_values.h"
#include "tests/platform/windows/dao/definitions.h"

namespace tests {
namespace {

using platform::ComPointer;
using platform::FromVariant;
using platform::LongOf;
using platform::TextOf;

std::string TextAt(const ServedObject::Arguments& arguments, std::size_t i) {
  return i < arguments.size() ? TextOf(FromVariant(*arguments[i])) : "";
}

bool TruthAt(const ServedObject::Arguments& arguments, std::size_t i) {
  return i < arguments.size() && platform::BooleanOf(FromVariant(*arguments[i]));
}

std::int32_t NumberAt(const ServedObject::Arguments& arguments, std::size_t i) {
  return i < arguments.size() ? LongOf(FromVariant(*arguments[i])) : 0;
}

// An open set of rows. Its fields live as long as it is referred to.
struct OpenRows {
  SharedDatabase shared;
  std::unique_ptr<ports::DatabaseRecordset> rows;

  ports::DatabaseRecordset& Get() const {
    if (rows == nullptr) Fail(kObjectInvalid);
    return *rows;
  }
};

class ServedRecordset final : public ServedObject {
 public:
  ServedRecordset(SharedDatabase shared, const std::string& source, ports::RecordsetType type)
      : ServedObject("Recordset"), open_(std::make_shared<OpenRows>()), type_(type) {
    open_->rows = shared->database->OpenRecordset(source, type);
    open_->shared = std::move(shared);
    fields_ = MakeServed<Collection>(
        "Fields", "Field", Collection::Source{.list = [open = open_] { return FieldsOf(open); }});
  }

 protected:
  void Answer(const DaoMember& member, const Arguments& /*arguments*/, VARIANT& result) override {
    const std::string name = member.name;
    ports::DatabaseRecordset& rows = open_->Get();
    if (name == "BOF") return platform::ToVariant(rows.AtBeginning(), result);
    if (name == "EOF") return platform::ToVariant(rows.AtEnd(), result);
    if (name == "Fields") return Give(fields_.Get(), result);
    if (name == "Index") return platform::ToVariant(Index(), result);
    if (name == "Close") return open_->rows.reset();
    const std::map<std::string, std::function<void()>> moves = {
        {"MoveFirst", [&] { rows.MoveFirst(); }}, {"MoveLast", [&] { rows.MoveLast(); }},
        {"MoveNext", [&] { rows.MoveNext(); }},   {"MovePrevious", [&] { rows.MovePrevious(); }},
        {"Edit", [&] { rows.Edit(); }},           {"AddNew", [&] { rows.AddNew(); }},
        {"Update", [&] { rows.Update(); }},       {"Delete", [&] { rows.Delete(); }}};
    moves.at(name)();
  }

  void Put(const DaoMember& /*property*/, const ports::DatabaseValue& value) override {
    Index();
    open_->Get().SetIndex(TextOf(value));
    index_ = TextOf(value);
  }

 private:
  static Definitions FieldsOf(const std::shared_ptr<OpenRows>& open) {
    Definitions items;
    for (const std::string& name : open->Get().FieldNames()) {
      auto item = MakeServed<Definition>("Field", "Recordset", Definition::Values{{"Name", name}});
      item->is_appended = true;
      const std::size_t position = items.size();
      item->read_value = [=] { return open->Get().Value(position); };
      item->write_value = [=](const auto& value) { open->Get().SetValue(position, value); };
      items.push_back(std::move(item));
    }
    return items;
  }

  const std::string& Index() const {
    if (type_ != ports::RecordsetType::kTable) Fail(kNotSupportedHere);
    return index_;
  }

  std::shared_ptr<OpenRows> open_;
  ports::RecordsetType type_;
  std::string index_;
  ComPointer<Collection> fields_;
};

class ServedDatabaseObject final : public ServedObject {
 public:
  ServedDatabaseObject(SharedDatabase shared, std::string path)
      : ServedObject("Database"),
        shared_(std::move(shared)),
        path_(std::move(path)),
        tables_(TablesOf(shared_)),
        relations_(RelationsOf(shared_)) {}

 protected:
  void Answer(const DaoMember& member, const Arguments& arguments, VARIANT& result) override {
    const std::string name = member.name;
    if (name == "Name") return platform::ToVariant(path_, result);
    if (name == "TableDefs") return Give(tables_.Get(), result);
    if (name == "Relations") return Give(relations_.Get(), result);
    if (name == "RecordsAffected") return platform::ToVariant(records_affected_, result);
    if (name == "Execute") return Execute(TextAt(arguments, 0), NumberAt(arguments, 1));
    if (name == "Close") return Close();
    if (name == "OpenRecordset") {
      const auto rows = MakeServed<ServedRecordset>(shared_, TextAt(arguments, 0),
                                                    TypeOf(NumberAt(arguments, 1)));
      return Give(rows.Get(), result);
    }
    Give(Create(member, "Database", arguments).Get(), result);
  }

 private:
  void Close() {
    if (is_closed_) Fail(kObjectInvalid);
    shared_->database->Close();
    is_closed_ = true;
  }

  static ports::RecordsetType TypeOf(std::int32_t type) {
    constexpr std::int32_t kTable = 1;
    constexpr std::int32_t kDynaset = 2;
    if (type != kTable && type != kDynaset) Fail(kNotSupportedHere);
    return type == kTable ? ports::RecordsetType::kTable : ports::RecordsetType::kDynaset;
  }

  // Unless asked to fail, DAO leaves out the rows that cannot be changed and says nothing.
  void Execute(const std::string& sql, std::int32_t options) {
    constexpr std::int32_t kFailOnError = 128;
    constexpr std::int32_t kRowErrors[] = {3022, 3058, 3163, 3200, 3201, 3314, 3315, 3421};
    records_affected_ = 0;
    try {
      records_affected_ = static_cast<std::int32_t>(shared_->database->Execute(sql, true));
    } catch (const ports::DatabaseError& error) {
      const bool is_of_a_row = std::find(std::begin(kRowErrors), std::end(kRowErrors),
                                         error.Number) != std::end(kRowErrors);
      if ((options & kFailOnError) != 0 || !is_of_a_row) throw;
    }
  }

  SharedDatabase shared_;
  std::string path_;
  ComPointer<Collection> tables_;
  ComPointer<Collection> relations_;
  std::int32_t records_affected_ = 0;
  bool is_closed_ = false;
};

class ServedEngine final : public ServedObject {
 public:
  ServedEngine() : ServedObject("DBEngine") {}

 protected:
  void Answer(const DaoMember& member, const Arguments& arguments, VARIANT& result) override {
    const std::string name = member.name;
    if (name == "Version") return platform::ToVariant(std::string("3.6"), result);
    if (name == "BeginTrans") return engine_->BeginTrans();
    if (name == "CommitTrans") return engine_->CommitTrans();
    if (name == "Rollback") return engine_->Rollback();
    if (name == "Idle")
      return engine_->Idle(static_cast<ports::IdleOption>(NumberAt(arguments, 0)));
    const std::string path = TextAt(arguments, 0);
    if (name == "CompactDatabase") {
      if (arguments.size() > 2) Fail(kNotSupportedHere);
      return engine_->CompactDatabase(path, TextAt(arguments, 1));
    }
    const auto shared = std::make_shared<ServedDatabase>();
    shared->engine = engine_;
    if (name == "OpenDatabase") {
      shared->database = engine_->OpenDatabase(path, TruthAt(arguments, 1), TruthAt(arguments, 2));
    } else {
      // A file of Jet 4 with a sort order: what the embedded engine makes.
      constexpr std::int32_t kJet4 = 64;
      if (!TextAt(arguments, 1).starts_with(";LANGID=") || NumberAt(arguments, 2) != kJet4)
        Fail(kInvalidArgument);
      shared->database = engine_->CreateDatabase(path);
    }
    Give(MakeServed<ServedDatabaseObject>(shared, path).Get(), result);
  }

 private:
  std::shared_ptr<ports::DatabaseEngine> engine_ = jet::MakeEngine();
};

}  // namespace

ComPointer<ServedObject> MakeServedEngine() {
  ComPointer<ServedObject> engine;
  *engine.Out() = new ServedEngine;
  return engine;
}

}  // namespace tests
