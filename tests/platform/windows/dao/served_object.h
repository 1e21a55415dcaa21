#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/windows/com.h"
#include "ports/database_types.h"
#include "tests/platform/windows/dao/members.h"

namespace tests {

// DAO's numbers that the objects fail with themselves.
inline constexpr std::int32_t kInvalidArgument = 3001;
inline constexpr std::int32_t kFieldExists = 3191;
inline constexpr std::int32_t kInvalidOperation = 3219;
inline constexpr std::int32_t kNotSupportedHere = 3251;
inline constexpr std::int32_t kInvalidFieldType = 3259;
inline constexpr std::int32_t kNoFieldsDefined = 3264;
inline constexpr std::int32_t kPropertyNotFound = 3270;
inline constexpr std::int32_t kCannotAppend = 3367;
inline constexpr std::int32_t kObjectInvalid = 3420;
inline constexpr std::int32_t kConversionFailed = 3421;

[[noreturn]] void Fail(std::int32_t number);

// An automation object that knows the members of its class in the table of members and nothing
// else: other names, wrong counts and kinds of arguments, numbers that are not allowed and members
// used as what they are not fail as automation fails them. What its members throw as DatabaseErrors
// are exceptions of automation with DAO's numbers. Made with one reference, ends with the last one.
class ServedObject : public IDispatch {
 public:
  using Arguments = std::vector<const VARIANT*>;  // the first one first

  explicit ServedObject(std::string class_name);
  ServedObject(const ServedObject&) = delete;
  ServedObject& operator=(const ServedObject&) = delete;
  virtual ~ServedObject();

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override;
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override;
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* details, UINT*) override;

  const std::string& Class() const { return class_; }
  static int Living();  // objects of the process that have references

 protected:
  // A property is read or a method called; the arguments are as the table says.
  virtual void Answer(const DaoMember& member, const Arguments& arguments, VARIANT& result) = 0;
  virtual void Put(const DaoMember& property, const ports::DatabaseValue& value);

 private:
  std::string class_;
  ULONG references_ = 1;
};

template <typename T, typename... Arguments>
platform::ComPointer<T> MakeServed(Arguments&&... arguments) {
  platform::ComPointer<T> made;
  *made.Out() = new T(std::forward<Arguments>(arguments)...);
  return made;
}

// Hands out one more reference.
void Give(IDispatch* object, VARIANT& result);

}  // namespace tests
