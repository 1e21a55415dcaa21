#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/windows/com.h"
#include "platform/windows/dao/dao_object.h"
#include "ports/database_types.h"
#include "tests/platform/windows/dao_members.h"

namespace tests {

class DaoModel;

// One object in the place of one of DAO's. It knows the members of its class in the table of
// members and nothing else: other names, wrong counts and kinds of arguments and members used as
// what they are not fail as automation fails them.
class DaoModelObject final : public IDispatch {
 public:
  DaoModelObject(DaoModel& model, std::string class_name, std::string owner);
  virtual ~DaoModelObject() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* details, UINT*) override;

  // A reference for the code that is tested.
  platform::DaoObject Own();
  std::string Name() const;
  DaoModelObject* Find(const std::string& name) const;  // in a collection; null when there is none

  ULONG references = 0;
  std::map<std::string, ports::DatabaseValue> values;  // of properties, by name
  std::map<std::string, DaoModelObject*> objects;      // of properties and methods, by name
  std::vector<DaoModelObject*> items;                  // of a collection, in its order
  std::vector<DaoModelObject*> unseen;                 // ... that a refresh brings

 private:
  using Arguments = std::vector<const VARIANT*>;  // the first one first

  HRESULT CheckCall(const DaoMember& member, WORD kind, const Arguments& arguments) const;
  std::int32_t Run(const DaoMember& member, const Arguments& arguments, VARIANT& result);
  DaoModelObject* Create(const DaoMember& member, const Arguments& arguments);
  std::int32_t FindItem(const VARIANT& key, DaoModelObject*& item) const;
  std::int32_t Append(DaoModelObject& item);
  std::int32_t Delete(const std::string& name);
  std::int32_t Put(const std::string& property, const VARIANT& value);
  void Sort();

  DaoModel& model_;
  std::string class_;
  std::string owner_;  // a collection's: the class whose property it is
};

// DAO's objects: one engine with one database in it. Calls that change something are written down
// as "Object.Member(arguments)" and "Object.Property = value".
class DaoModel {
 public:
  DaoModel();

  DaoModelObject& Make(const std::string& class_name, const std::string& owner = "");
  // A table as a statement would make it: found after a refresh.
  DaoModelObject& AddTable(const std::string& name, const std::vector<std::string>& fields);
  bool IsAllGivenBack() const;

  std::vector<std::string> log;
  std::map<std::string, std::int32_t> failures;  // DAO's number by "Object.Member"
  DaoModelObject* engine = nullptr;
  DaoModelObject* database = nullptr;
  DaoModelObject* recordset = nullptr;

 private:
  std::vector<std::unique_ptr<DaoModelObject>> pool_;
};

}  // namespace tests
