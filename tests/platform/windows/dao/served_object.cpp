#include "tests/platform/windows/dao/served_object.h"

#include <cstddef>
#include <exception>

#include "platform/windows/dao/dao_values.h"

namespace tests {
namespace {

int living = 0;

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

HRESULT CheckCall(const DaoMember& member, WORD kind, const ServedObject::Arguments& arguments) {
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

void CheckNumbers(const DaoMember& member, const ServedObject::Arguments& arguments) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const DaoParameter& parameter = member.parameters[i];
    if (parameter.kind == DaoKind::kNumber &&
        !parameter.numbers.Allow(platform::LongOf(platform::FromVariant(*arguments[i]))))
      Fail(kInvalidArgument);
  }
}

BSTR Text(const std::string& text) {
  return SysAllocString(platform::ToWide(text).c_str());
}

}  // namespace

void Fail(std::int32_t number) {
  throw ports::DatabaseError(number, "DAO: " + std::to_string(number), "");
}

void Give(IDispatch* object, VARIANT& result) {
  object->AddRef();
  result.vt = VT_DISPATCH;
  result.pdispVal = object;
}

ServedObject::ServedObject(std::string class_name) : class_(std::move(class_name)) {
  ++living;
}

ServedObject::~ServedObject() {
  --living;
}

int ServedObject::Living() {
  return living;
}

HRESULT ServedObject::QueryInterface(REFIID id, void** object) {
  const bool is_known =
      IsEqualIID(id, IID_IUnknown) != FALSE || IsEqualIID(id, IID_IDispatch) != FALSE;
  *object = is_known ? static_cast<IDispatch*>(this) : nullptr;
  if (!is_known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG ServedObject::Release() {
  const ULONG left = --references_;
  if (left == 0) delete this;
  return left;
}

HRESULT ServedObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
  ids[0] = FindDaoMember(class_, platform::FromWide(names[0]));
  return count != 1 || ids[0] < 0 ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT ServedObject::Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                             VARIANT* result, EXCEPINFO* details, UINT*) {
  const std::vector<DaoMember>& members = DaoMembers();
  if (id < 0 || id >= static_cast<DISPID>(members.size())) return DISP_E_MEMBERNOTFOUND;
  const DaoMember& member = members[static_cast<std::size_t>(id)];
  if (class_ != member.object) return DISP_E_MEMBERNOTFOUND;
  Arguments arguments;
  for (UINT i = parameters->cArgs; i > 0; --i)
    arguments.push_back(&parameters->rgvarg[i - 1]);
  const bool is_put = kind == DISPATCH_PROPERTYPUT;
  // The new value of a property is an argument with a name of its own.
  const bool is_named =
      parameters->cNamedArgs == 1 && parameters->rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
  if (is_put ? !is_named : parameters->cNamedArgs != 0) return DISP_E_NONAMEDARGS;
  const HRESULT refusal = CheckCall(member, kind, arguments);
  if (FAILED(refusal)) return refusal;
  platform::ComValue unwanted;
  try {
    if (is_put) {
      Put(member, platform::FromVariant(*arguments[0]));
    } else {
      CheckNumbers(member, arguments);
      Answer(member, arguments, result == nullptr ? unwanted.Get() : *result);
    }
  } catch (const ports::DatabaseError& error) {
    details->scode = static_cast<HRESULT>(0x800A0000U + static_cast<std::uint32_t>(error.Number));
    details->bstrDescription = Text(error.Description);
    details->bstrSource = Text("DAO." + class_);
    return DISP_E_EXCEPTION;
  } catch (const std::exception&) {
    return E_UNEXPECTED;
  }
  return S_OK;
}

void ServedObject::Put(const DaoMember& /*property*/, const ports::DatabaseValue& /*value*/) {
  Fail(kInvalidOperation);
}

}  // namespace tests
