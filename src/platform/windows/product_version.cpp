#include "platform/factories.h"

#include "platform/windows/com.h"
#include "ports/product_version.h"

namespace platform {
namespace {

constexpr const wchar_t* kProgId = L"Tm_Version.VersionInfo";

ComPointer<IDispatch> CreateComponent() {
  ComPointer<IDispatch> component;
  CLSID class_id{};
  if (SUCCEEDED(CLSIDFromProgID(kProgId, &class_id))) {
    // A failure leaves the pointer empty: the component is not there.
    static_cast<void>(CoCreateInstance(class_id, nullptr,
                                       CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch,
                                       reinterpret_cast<void**>(component.Out())));
  }
  return component;
}

std::optional<std::string> ReadVersion() {
  const ComPointer<IDispatch> component = CreateComponent();
  if (!component) return std::nullopt;
  wchar_t name[] = L"VersionEx";
  wchar_t* names[] = {name};
  DISPID member = 0;
  if (FAILED(component->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member)))
    return std::nullopt;
  DISPPARAMS none{};
  ComValue value;
  if (FAILED(component->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT,
                               DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none, value.Out(), nullptr,
                               nullptr)))
    return std::nullopt;
  return value.ToString();
}

class WindowsProductVersion final : public ports::ProductVersion {
 public:
  std::optional<std::string> InstalledVersion() override {
    const ComScope scope;
    std::optional<std::string> version = ReadVersion();
    // The update may replace the component's library, which must not stay loaded. The end of the
    // scope unloads it only if no other scope of the thread is open, and without a delay given here
    // the system keeps unused libraries for ten minutes.
    constexpr DWORD kNoDelay = 0;
    CoFreeUnusedLibrariesEx(kNoDelay, 0);
    return version;
  }
};

}  // namespace

std::unique_ptr<ports::ProductVersion> MakeProductVersion() {
  return std::make_unique<WindowsProductVersion>();
}

}  // namespace platform
