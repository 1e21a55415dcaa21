#include "tests/platform/windows/dao_model.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "platform/windows/dao/dao_values.h"

namespace tests {
namespace {

using platform::FromVariant;
using platform::LongOf;
using platform::TextOf;

constexpr std::int32_t kInvalidArgument = 3001;
constexpr std::int32_t kTableExists = 3010;
constexpr std::int32_t kObjectExists = 3012;
constexpr std::int32_t kInvalidOperation = 3219;
constexpr std::int32_t kNoFieldsDefined = 3264;
constexpr std::int32_t kPropertyNotFound = 3270;
constexpr std::int32_t kUsedInRelation = 3281;
constexpr std::int32_t kIndexExists = 3284;
constexpr std::int32_t kPropertyExists = 3367;
constexpr std::int32_t kFieldExists = 3191;

bool IsOfKind(const VARIANT& value, DaoKind kind) {
  const bool is_number = value.vt == VT_I2 || value.vt == VT_I4 || value.vt == VT_UI1;
  switch (kind) {
    case DaoKind::kText:
      return value.vt == VT_BSTR;
    case DaoKind::kNumber:
      return is_number;
    case DaoKind::kTruth:
      return value.vt == VT_BOOL;
    case DaoKind::kKey:
      return value.vt == VT_BSTR || is_number;
    case DaoKind::kValue:
      return value.vt != VT_DISPATCH && value.vt != VT_ERROR;
    case DaoKind::kObject:
      return value.vt == VT_DISPATCH && value.pdispVal != nullptr;
    case DaoKind::kNothing:
      break;
  }
  return false;
}

// What a property holds before anybody sets it.
ports::DatabaseValue Initial(DaoKind kind) {
  switch (kind) {
    case DaoKind::kText:
      return std::string();
    case DaoKind::kNumber:
      return std::int32_t{0};
    case DaoKind::kTruth:
      return false;
    default:
      return ports::EmptyValue{};
  }
}

DaoModelObject& ObjectOf(const VARIANT& argument) {
  return *static_cast<DaoModelObject*>(argument.pdispVal);
}

std::string Words(const VARIANT& argument) {
  if (argument.vt == VT_DISPATCH) return ObjectOf(argument).Name();
  if (argument.vt == VT_EMPTY) return "Empty";
  if (argument.vt == VT_NULL) return "Null";
  const ports::DatabaseValue value = FromVariant(argument);
  if (const auto* const text = std::get_if<std::string>(&value)) return *text;
  if (const auto* const truth = std::get_if<bool>(&value)) return *truth ? "True" : "False";
  return std::to_string(LongOf(value));
}

HRESULT Raise(std::int32_t number, EXCEPINFO& details) {
  details.scode = static_cast<HRESULT>(0x800A0000U + static_cast<std::uint32_t>(number));
  return DISP_E_EXCEPTION;
}

void Give(DaoModelObject* object, VARIANT& result) {
  object->AddRef();
  result.vt = VT_DISPATCH;
  result.pdispVal = object;
}

}  // namespace

DaoModelObject::DaoModelObject(DaoModel& model, std::string class_name, std::string owner)
    : model_(model), class_(std::move(class_name)), owner_(std::move(owner)) {
  for (const DaoMember& member : DaoMembers()) {
    if (class_ != member.object || member.access == DaoAccess::kMethod) continue;
    if (member.result != DaoKind::kObject) {
      values[member.name] = Initial(member.result);
    } else if (member.parameters.empty()) {
      objects[member.name] = &model.Make(member.result_object, class_);
    }
  }
}

HRESULT DaoModelObject::QueryInterface(REFIID, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}

platform::DaoObject DaoModelObject::Own() {
  AddRef();
  platform::ComPointer<IDispatch> pointer;
  *pointer.Out() = this;
  return platform::DaoObject(std::move(pointer));
}

std::string DaoModelObject::Name() const {
  const auto name = values.find("Name");
  return name == values.end() ? class_ : TextOf(name->second);
}

DaoModelObject* DaoModelObject::Find(const std::string& name) const {
  for (DaoModelObject* const item : items) {
    if (tmw::EqualIgnoringCase(item->Name(), name)) return item;
  }
  return nullptr;
}

HRESULT DaoModelObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) {
  ids[0] = FindDaoMember(class_, platform::FromWide(names[0]));
  return ids[0] < 0 ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT DaoModelObject::CheckCall(const DaoMember& member, WORD kind,
                                  const Arguments& arguments) const {
  if (kind == DISPATCH_PROPERTYPUT) {
    if (member.access != DaoAccess::kReadWrite) return DISP_E_MEMBERNOTFOUND;
    if (arguments.size() != 1) return DISP_E_BADPARAMCOUNT;
    return IsOfKind(*arguments[0], member.result) ? S_OK : DISP_E_TYPEMISMATCH;
  }
  const WORD needed = member.access == DaoAccess::kMethod ? DISPATCH_METHOD : DISPATCH_PROPERTYGET;
  if ((kind & needed) == 0) return DISP_E_MEMBERNOTFOUND;
  if (arguments.size() > member.parameters.size()) return DISP_E_BADPARAMCOUNT;
  for (std::size_t i = 0; i < member.parameters.size(); ++i) {
    if (i >= arguments.size()) {
      if (!member.parameters[i].is_optional) return DISP_E_BADPARAMCOUNT;
    } else if (!IsOfKind(*arguments[i], member.parameters[i].kind)) {
      return DISP_E_TYPEMISMATCH;
    }
  }
  return S_OK;
}

HRESULT DaoModelObject::Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                               VARIANT* result, EXCEPINFO* details, UINT*) {
  const DaoMember& member = DaoMembers()[static_cast<std::size_t>(id)];
  Arguments arguments;
  std::string words;
  for (UINT i = parameters->cArgs; i > 0; --i) {
    arguments.push_back(&parameters->rgvarg[i - 1]);
    words += (arguments.size() > 1 ? ", " : "") + Words(*arguments.back());
  }
  const bool is_put = kind == DISPATCH_PROPERTYPUT;
  // The new value of a property is an argument with a name of its own.
  const bool is_named =
      parameters->cNamedArgs == 1 && parameters->rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
  if (is_put ? !is_named : parameters->cNamedArgs != 0) return DISP_E_NONAMEDARGS;
  const HRESULT refusal = CheckCall(member, kind, arguments);
  if (FAILED(refusal)) return refusal;

  const std::string place = class_ + "." + member.name;
  for (std::size_t i = 0; !is_put && i < arguments.size(); ++i) {
    const DaoParameter& parameter = member.parameters[i];
    if (parameter.kind == DaoKind::kNumber &&
        !parameter.numbers.Allow(LongOf(FromVariant(*arguments[i]))))
      return Raise(kInvalidArgument, *details);
  }
  if (is_put) {
    model_.log.push_back(place + " = " + words);
  } else if (member.access == DaoAccess::kMethod) {
    model_.log.push_back(place + "(" + words + ")");
  }
  platform::ComValue unwanted;
  VARIANT& answer = result == nullptr ? unwanted.Get() : *result;
  const auto scripted = model_.failures.find(place);
  std::int32_t error = 0;
  if (scripted != model_.failures.end()) {
    error = scripted->second;
  } else {
    error = is_put ? Put(member.name, *arguments[0]) : Run(member, arguments, answer);
  }
  return error == 0 ? S_OK : Raise(error, *details);
}

std::int32_t DaoModelObject::Run(const DaoMember& member, const Arguments& arguments,
                                 VARIANT& result) {
  const std::string name = member.name;
  if (name == "Count") values[name] = static_cast<std::int32_t>(items.size());
  if (name == "Append") return Append(ObjectOf(*arguments[0]));
  if (name == "Delete" && !arguments.empty()) return Delete(TextOf(FromVariant(*arguments[0])));
  if (name == "Refresh") {
    items.insert(items.end(), unseen.begin(), unseen.end());
    unseen.clear();
    Sort();
  } else if (name == "Item") {
    DaoModelObject* item = nullptr;
    const std::int32_t error = FindItem(*arguments[0], item);
    if (error == 0) Give(item, result);
    return error;
  } else if (const auto object = objects.find(name); object != objects.end()) {
    Give(object->second, result);
  } else if (member.result == DaoKind::kObject) {
    Give(Create(member, arguments), result);
  } else if (const auto value = values.find(name); value != values.end()) {
    platform::ToVariant(value->second, result);
  }
  return 0;
}

// The arguments of a Create method are the first values of what it makes.
DaoModelObject* DaoModelObject::Create(const DaoMember& member, const Arguments& arguments) {
  DaoModelObject& made = model_.Make(member.result_object, class_);
  for (std::size_t i = 0; i < arguments.size(); ++i)
    made.values[member.parameters[i].name] = FromVariant(*arguments[i]);
  return &made;
}

std::int32_t DaoModelObject::FindItem(const VARIANT& key, DaoModelObject*& item) const {
  if (key.vt == VT_BSTR) {
    item = Find(TextOf(FromVariant(key)));
  } else {
    const std::int32_t position = LongOf(FromVariant(key));
    const bool is_there = position >= 0 && position < static_cast<std::int32_t>(items.size());
    item = is_there ? items[static_cast<std::size_t>(position)] : nullptr;
  }
  if (item != nullptr) return 0;
  return class_ == "Properties" ? kPropertyNotFound : ports::kItemNotFound;
}

std::int32_t DaoModelObject::Append(DaoModelObject& item) {
  const std::map<std::string, std::int32_t> taken = {{"TableDefs", kTableExists},
                                                     {"Relations", kObjectExists},
                                                     {"Fields", kFieldExists},
                                                     {"Indexes", kIndexExists},
                                                     {"Properties", kPropertyExists}};
  if (Find(item.Name()) != nullptr) return taken.at(class_);
  const auto fields = item.objects.find("Fields");
  if (fields != item.objects.end() && fields->second->items.empty()) return kNoFieldsDefined;
  if (class_ == "Relations") {
    for (const DaoModelObject* const field : fields->second->items) {
      if (TextOf(field->values.at("ForeignName")).empty()) return kNoFieldsDefined;
    }
  }
  items.push_back(&item);
  Sort();
  return 0;
}

// A table cannot go while it stands on either side of a relation.
std::int32_t DaoModelObject::Delete(const std::string& name) {
  DaoModelObject* const item = Find(name);
  if (item == nullptr) return ports::kItemNotFound;
  if (class_ == "TableDefs") {
    for (const DaoModelObject* const relation : model_.database->objects["Relations"]->items) {
      for (const char* const side : {"Table", "ForeignTable"}) {
        if (tmw::EqualIgnoringCase(TextOf(relation->values.at(side)), name)) return kUsedInRelation;
      }
    }
  }
  std::erase(items, item);
  return 0;
}

std::int32_t DaoModelObject::Put(const std::string& property, const VARIANT& value) {
  if (class_ == "Field" && property == "AllowZeroLength") {
    const std::int32_t type = LongOf(values["Type"]);
    if (type != 10 && type != 12) return kInvalidOperation;  // Text, Memo
  }
  values[property] = FromVariant(value);
  return 0;
}

// A table's fields by their positions; equal ones, like all other members, by name. The fields of
// indexes, relations and rows stay as they are.
void DaoModelObject::Sort() {
  if (class_ == "Fields" && owner_ != "TableDef") return;
  std::stable_sort(items.begin(), items.end(), [](const auto* a, const auto* b) {
    const auto position = [](const DaoModelObject* object) {
      const auto found = object->values.find("OrdinalPosition");
      return found == object->values.end() ? 0 : LongOf(found->second);
    };
    if (position(a) != position(b)) return position(a) < position(b);
    return tmw::LowerCase(a->Name()) < tmw::LowerCase(b->Name());
  });
}

DaoModel::DaoModel() {
  engine = &Make("DBEngine");
  database = &Make("Database");
  recordset = &Make("Recordset");
  engine->objects["OpenDatabase"] = engine->objects["CreateDatabase"] = database;
  database->objects["OpenRecordset"] = recordset;
}

DaoModelObject& DaoModel::Make(const std::string& class_name, const std::string& owner) {
  auto object = std::make_unique<DaoModelObject>(*this, class_name, owner);
  DaoModelObject& made = *object;
  pool_.push_back(std::move(object));
  return made;
}

DaoModelObject& DaoModel::AddTable(const std::string& name,
                                   const std::vector<std::string>& fields) {
  DaoModelObject& table = Make("TableDef", "Database");
  table.values["Name"] = name;
  for (const std::string& field : fields) {
    DaoModelObject& made = Make("Field", "TableDef");
    made.values["Name"] = field;
    made.values["OrdinalPosition"] =
        static_cast<std::int32_t>(table.objects["Fields"]->items.size());
    table.objects["Fields"]->items.push_back(&made);
  }
  database->objects["TableDefs"]->unseen.push_back(&table);
  return table;
}

bool DaoModel::IsAllGivenBack() const {
  return std::all_of(pool_.begin(), pool_.end(),
                     [](const auto& object) { return object->references == 0; });
}

}  // namespace tests
