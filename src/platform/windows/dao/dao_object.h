#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/windows/com.h"
#include "ports/database_types.h"

namespace platform {

// One object of DAO, spoken to by the names of its members. Failures are DatabaseErrors.
class DaoObject {
 public:
  using Arguments = std::vector<ports::DatabaseValue>;

  DaoObject() = default;
  explicit DaoObject(ComPointer<IDispatch> object) : object_(std::move(object)) {}

  // The engine's object, or the error of NoDao.
  static DaoObject CreateEngine();

  ports::DatabaseValue Get(const wchar_t* name, const Arguments& arguments = {}) const;
  DaoObject GetObject(const wchar_t* name, const Arguments& arguments = {}) const;
  void Put(const wchar_t* name, const ports::DatabaseValue& value) const;
  void Call(const wchar_t* name, const Arguments& arguments = {}) const;
  DaoObject CallObject(const wchar_t* name, const Arguments& arguments = {}) const;
  // For collections.
  void Append(const DaoObject& member) const;
  std::int32_t Count() const;
  DaoObject Item(const ports::DatabaseValue& name_or_position) const;

 private:
  void Invoke(const wchar_t* name, WORD kind, std::vector<VARIANT>& reversed,
              VARIANT* result) const;
  void InvokeWith(const wchar_t* name, WORD kind, const Arguments& arguments,
                  VARIANT* result) const;

  ComPointer<IDispatch> object_;
};

}  // namespace platform
