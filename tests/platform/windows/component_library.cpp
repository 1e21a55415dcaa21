#include "tests/platform/windows/component_library.h"

#include <memory>
#include <string>

namespace tests {
namespace {

// One factory a component; they live as long as the library.
class Factory final : public IClassFactory {
 public:
  explicit Factory(const ServedComponent& component) : component_(component) {}
  virtual ~Factory() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    const bool is_known =
        IsEqualIID(id, IID_IUnknown) != FALSE || IsEqualIID(id, IID_IClassFactory) != FALSE;
    *object = is_known ? this : nullptr;
    return is_known ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return component_.make()->QueryInterface(id, object);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  const ServedComponent& component_;
};

std::wstring TextOf(const CLSID& id) {
  wchar_t text[64] = {};
  StringFromGUID2(id, text, 64);
  return text;
}

HRESULT Write(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
  const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
  return HRESULT_FROM_WIN32(static_cast<DWORD>(
      RegSetKeyValueW(HKEY_CLASSES_ROOT, key.c_str(), name, REG_SZ, value.c_str(), size)));
}

std::wstring OwnPath() {
  HMODULE own = nullptr;
  wchar_t path[MAX_PATH] = {};
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<const wchar_t*>(&ServedComponents), &own);
  GetModuleFileNameW(own, path, MAX_PATH);
  return path;
}

}  // namespace
}  // namespace tests

extern "C" {

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID class_id, REFIID id, void** object) {
  for (const tests::ServedComponent& component : tests::ServedComponents()) {
    if (IsEqualCLSID(class_id, component.class_id) == FALSE) continue;
    static std::vector<std::unique_ptr<tests::Factory>> factories;
    factories.push_back(std::make_unique<tests::Factory>(component));
    return factories.back()->QueryInterface(id, object);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  return tests::ServedObject::Living() == 0 ? S_OK : S_FALSE;
}

HRESULT STDAPICALLTYPE DllRegisterServer() {
  for (const tests::ServedComponent& component : tests::ServedComponents()) {
    const std::wstring id = tests::TextOf(component.class_id);
    const std::wstring server = L"CLSID\\" + id + L"\\InprocServer32";
    for (const HRESULT result :
         {tests::Write(std::wstring(component.name) + L"\\CLSID", nullptr, id),
          tests::Write(server, nullptr, tests::OwnPath()),
          tests::Write(server, L"ThreadingModel", L"Apartment")}) {
      if (FAILED(result)) return result;
    }
  }
  return S_OK;
}

HRESULT STDAPICALLTYPE DllUnregisterServer() {
  for (const tests::ServedComponent& component : tests::ServedComponents()) {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, component.name);
    RegDeleteTreeW(HKEY_CLASSES_ROOT, (L"CLSID\\" + tests::TextOf(component.class_id)).c_str());
  }
  return S_OK;
}
}
