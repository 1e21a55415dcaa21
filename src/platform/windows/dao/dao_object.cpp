#include "platform/windows/dao/dao_object.h"

#include "platform/windows/dao/dao_errors.h"
#include "platform/windows/dao/dao_values.h"

namespace platform {
namespace {

constexpr const wchar_t* kProgId = L"DAO.DBEngine.36";
constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

ComPointer<IDispatch> TakeObject(VARIANT& variant) {
  ComPointer<IDispatch> object;
  if (variant.vt == VT_DISPATCH && variant.pdispVal != nullptr) {
    *object.Out() = variant.pdispVal;
    variant.vt = VT_EMPTY;
  }
  return object;
}

// The arguments of one call; they are given back at its end.
class ArgumentList {
 public:
  explicit ArgumentList(const DaoObject::Arguments& arguments) : values_(arguments.size()) {
    // Automation takes arguments last one first.
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      VARIANT& place = values_[arguments.size() - 1 - i];
      VariantInit(&place);
      ToVariant(arguments[i], place);
    }
  }
  ArgumentList(const ArgumentList&) = delete;
  ArgumentList& operator=(const ArgumentList&) = delete;
  ~ArgumentList() {
    for (VARIANT& value : values_)
      VariantClear(&value);
  }

  std::vector<VARIANT>& Reversed() { return values_; }

 private:
  std::vector<VARIANT> values_;
};

}  // namespace

DaoObject DaoObject::CreateEngine() {
  CLSID class_id{};
  HRESULT result = CLSIDFromProgID(kProgId, &class_id);
  ComPointer<IDispatch> engine;
  if (SUCCEEDED(result)) {
    result = CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                              reinterpret_cast<void**>(engine.Out()));
  }
  if (FAILED(result)) throw NoDao(result);
  return DaoObject(std::move(engine));
}

void DaoObject::Invoke(const wchar_t* name, WORD kind, std::vector<VARIANT>& reversed,
                       VARIANT* result) const {
  EXCEPINFO details = {};
  if (!object_) throw ErrorOfCall(E_POINTER, details);
  DISPID member = 0;
  auto* text = const_cast<wchar_t*>(name);
  HRESULT code = object_->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &member);
  if (FAILED(code)) throw ErrorOfCall(code, details);
  DISPID put = DISPID_PROPERTYPUT;
  DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  if (kind == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &put;
    parameters.cNamedArgs = 1;
  }
  code = object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, result, &details,
                         nullptr);
  if (FAILED(code)) throw ErrorOfCall(code, details);
}

void DaoObject::InvokeWith(const wchar_t* name, WORD kind, const Arguments& arguments,
                           VARIANT* result) const {
  ArgumentList list(arguments);
  Invoke(name, kind, list.Reversed(), result);
}

ports::DatabaseValue DaoObject::Get(const wchar_t* name, const Arguments& arguments) const {
  ComValue result;
  InvokeWith(name, kCall, arguments, result.Out());
  return FromVariant(result.Get());
}

DaoObject DaoObject::GetObject(const wchar_t* name, const Arguments& arguments) const {
  return CallObject(name, arguments);
}

void DaoObject::Put(const wchar_t* name, const ports::DatabaseValue& value) const {
  InvokeWith(name, DISPATCH_PROPERTYPUT, {value}, nullptr);
}

void DaoObject::Call(const wchar_t* name, const Arguments& arguments) const {
  ComValue ignored;
  InvokeWith(name, DISPATCH_METHOD, arguments, ignored.Out());
}

DaoObject DaoObject::CallObject(const wchar_t* name, const Arguments& arguments) const {
  ComValue result;
  InvokeWith(name, kCall, arguments, result.Out());
  return DaoObject(TakeObject(result.Get()));
}

void DaoObject::Append(const DaoObject& member) const {
  std::vector<VARIANT> arguments(1);
  VariantInit(arguments.data());
  arguments[0].vt = VT_DISPATCH;
  arguments[0].pdispVal = member.object_.Get();
  Invoke(L"Append", DISPATCH_METHOD, arguments, nullptr);
}

std::int32_t DaoObject::Count() const {
  return LongOf(Get(L"Count"));
}

DaoObject DaoObject::Item(const ports::DatabaseValue& name_or_position) const {
  return CallObject(L"Item", {name_or_position});
}

}  // namespace platform
