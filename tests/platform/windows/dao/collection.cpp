#include "tests/platform/windows/dao/collection.h"

#include <algorithm>
#include <cstddef>

#include "foundation/text.h"
#include "platform/windows/dao/dao_values.h"
#include "tests/platform/windows/dao/definitions.h"

namespace tests {
namespace {

platform::ComPointer<Definition> Keep(Definition* item) {
  platform::ComPointer<Definition> kept;
  item->AddRef();
  *kept.Out() = item;
  return kept;
}

}  // namespace

Definition::Definition(std::string class_name, std::string owner, Values new_values)
    : ServedObject(std::move(class_name)),
      values(std::move(new_values)),
      owner_(std::move(owner)) {}

std::string Definition::Text(const char* property) const {
  return platform::TextOf(values.at(property));
}

std::int32_t Definition::Number(const char* property) const {
  return platform::LongOf(values.at(property));
}

bool Definition::Truth(const char* property) const {
  return platform::BooleanOf(values.at(property));
}

std::vector<Definition*> Definition::Items(const char* collection) const {
  std::vector<Definition*> items;
  for (const auto& item : collections.at(collection)->Items())
    items.push_back(item.Get());
  return items;
}

void Definition::Answer(const DaoMember& member, const Arguments& arguments, VARIANT& result) {
  const std::string name = member.name;
  if (member.access == DaoAccess::kMethod) {
    Give(Create(member, Class(), arguments).Get(), result);
  } else if (name == "Value" && read_value) {
    platform::ToVariant(read_value(), result);
  } else if (const auto found = collections.find(name); found != collections.end()) {
    Give(found->second.Get(), result);
  } else if (const auto value = values.find(name); value != values.end()) {
    platform::ToVariant(value->second, result);
  } else {
    Fail(kNotSupportedHere);
  }
}

void Definition::Put(const DaoMember& property, const ports::DatabaseValue& value) {
  const std::string name = property.name;
  if (name == "Value" && write_value) return write_value(value);
  const auto place = values.find(name);
  if (place == values.end()) Fail(kNotSupportedHere);
  if (is_appended) Fail(kInvalidOperation);
  CheckNewValue(*this, owner_, name, value);
  place->second = value;
}

Collection::Collection(std::string class_name, const char* item_class, Source source)
    : ServedObject(std::move(class_name)), item_class_(item_class), source_(std::move(source)) {}

const Definitions& Collection::Items() {
  if (!is_filled_) Refresh();
  return items_;
}

void Collection::TakeOver(Source source) {
  source_ = std::move(source);
  for (const auto& item : items_)
    item->is_appended = true;
}

Definition* Collection::Find(const std::string& name) {
  for (const auto& item : Items()) {
    if (tmw::EqualIgnoringCase(item->Text("Name"), name)) return item.Get();
  }
  return nullptr;
}

void Collection::Refresh() {
  is_filled_ = true;
  if (!source_.list) return;
  Definitions fresh = source_.list();
  if (source_.keeps_items) {
    for (auto& item : fresh) {
      if (Definition* const known = Find(item->Text("Name")); known != nullptr) item = Keep(known);
    }
  }
  items_ = std::move(fresh);
}

void Collection::Answer(const DaoMember& member, const Arguments& arguments, VARIANT& result) {
  const std::string name = member.name;
  if (name == "Count") {
    platform::ToVariant(static_cast<std::int16_t>(Items().size()), result);
  } else if (name == "Refresh") {
    Refresh();
  } else if (name == "Append") {
    Append(arguments[0]->pdispVal);
  } else if (name == "Delete") {
    Delete(platform::TextOf(platform::FromVariant(*arguments[0])));
  } else if (source_.find && arguments[0]->vt == VT_BSTR) {
    const auto found = source_.find(platform::TextOf(platform::FromVariant(*arguments[0])));
    if (!found) Fail(kPropertyNotFound);
    Give(found.Get(), result);
  } else {
    Give(&Item(*arguments[0]), result);
  }
}

Definition& Collection::Item(const VARIANT& key) {
  const ports::DatabaseValue value = platform::FromVariant(key);
  Definition* item = nullptr;
  if (key.vt == VT_BSTR) {
    item = Find(platform::TextOf(value));
  } else if (const auto at = static_cast<std::size_t>(platform::LongOf(value));
             at < Items().size()) {
    item = items_[at].Get();
  }
  if (item == nullptr) Fail(ports::kItemNotFound);
  return *item;
}

void Collection::Append(IDispatch* object) {
  auto* const item = dynamic_cast<Definition*>(object);
  if (item == nullptr || item->Class() != item_class_ || item->is_appended) Fail(kCannotAppend);
  if (source_.append) {
    source_.append(*item);
    item->is_appended = true;
  } else if (source_.list) {
    Fail(kInvalidOperation);
  } else {
    if (Find(item->Text("Name")) != nullptr) Fail(kFieldExists);
    CheckComplete(*item);
  }
  items_.push_back(Keep(item));
}

void Collection::Delete(const std::string& name) {
  Definition* const item = Find(name);
  if (item == nullptr) Fail(ports::kItemNotFound);
  if (source_.remove) {
    source_.remove(name);
  } else if (source_.list) {
    Fail(kInvalidOperation);
  }
  std::erase_if(items_, [&](const auto& own) { return own.Get() == item; });
}

}  // namespace tests
