#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/database.h"
#include "tests/platform/windows/dao/served_object.h"

namespace tests {

class Collection;

// A TableDef, Field, Index, Relation or Property: a set of values and of collections. A property
// that this kind of object does not have in the place where it stands is not among its values.
class Definition final : public ServedObject {
 public:
  using Values = std::map<std::string, ports::DatabaseValue>;

  // The owner is the class whose Fields the object is made for, or empty.
  Definition(std::string class_name, std::string owner, Values new_values);

  std::string Text(const char* property) const;
  std::int32_t Number(const char* property) const;
  bool Truth(const char* property) const;
  std::vector<Definition*> Items(const char* collection) const;

  Values values;
  std::map<std::string, platform::ComPointer<Collection>> collections;
  // The value that lies in the database.
  std::function<ports::DatabaseValue()> read_value;
  std::function<void(const ports::DatabaseValue&)> write_value;
  bool is_appended = false;  // its other properties can no longer be changed

 protected:
  void Answer(const DaoMember& member, const Arguments& arguments, VARIANT& result) override;
  void Put(const DaoMember& property, const ports::DatabaseValue& value) override;

 private:
  std::string owner_;
};

using Definitions = std::vector<platform::ComPointer<Definition>>;

// A collection of a database shows what was there when it was first looked at or last refreshed,
// and what was appended and deleted through it since. One of a definition that is not in the
// database yet shows what was appended.
class Collection final : public ServedObject {
 public:
  struct Source {
    std::function<Definitions()> list = {};
    // Instead of it, where members cannot be listed; null for an unknown name.
    std::function<platform::ComPointer<Definition>(const std::string& name)> find = {};
    std::function<void(Definition& item)> append = {};  // into the database
    std::function<void(const std::string& name)> remove = {};
    // The items keep what they have shown already when the collection is refreshed.
    bool keeps_items = false;
  };

  Collection(std::string class_name, const char* item_class, Source source);

  const Definitions& Items();
  void TakeOver(Source source);  // the definition has come into the database

 protected:
  void Answer(const DaoMember& member, const Arguments& arguments, VARIANT& result) override;

 private:
  Definition* Find(const std::string& name);
  Definition& Item(const VARIANT& key);
  void Refresh();
  void Append(IDispatch* object);
  void Delete(const std::string& name);

  std::string item_class_;
  Source source_;
  bool is_filled_ = false;
  Definitions items_;
};

}  // namespace tests
