#include "platform/windows/dao/dao_values.h"
#include "tests/platform/windows/component_library.h"

// The component that knows the product's version, of a product of version TMW_PRODUCT_VERSION.
namespace tests {
namespace {

class VersionInfo final : public ServedObject {
 public:
  VersionInfo() : ServedObject("VersionInfo") {}

 protected:
  void Answer(const DaoMember& /*member*/, const Arguments& /*arguments*/,
              VARIANT& result) override {
    platform::ToVariant(std::string(TMW_PRODUCT_VERSION), result);
  }
};

platform::ComPointer<ServedObject> MakeVersionInfo() {
  platform::ComPointer<ServedObject> made;
  *made.Out() = new VersionInfo;
  return made;
}

}  // namespace

const std::vector<ServedComponent>& ServedComponents() {
  static const std::vector<ServedComponent> kComponents = {
      {L"Tm_Version.VersionInfo",
       {0x1d9e7a30, 0x4c62, 0x4f8d, {0xb5, 0x0e, 0x73, 0xc8, 0x21, 0x96, 0xfa, 0x4d}},
       MakeVersionInfo}};
  return kComponents;
}

}  // namespace tests
