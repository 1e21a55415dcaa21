#include "platform/windows/dao/dao_errors.h"

#include <utility>

#include "foundation/text.h"

namespace platform {
namespace {

constexpr const char* kComponent = "DAO";

std::int32_t NumberOf(HRESULT code) {
  // FACILITY_CONTROL carries the component's own numbers.
  constexpr std::uint32_t kOwnNumbers = 0x800A0000U;
  const auto bits = static_cast<std::uint32_t>(code);
  if ((bits & 0xFFFF0000U) == kOwnNumbers) return static_cast<std::int32_t>(bits & 0xFFFFU);
  return static_cast<std::int32_t>(bits);
}

std::string TakeText(BSTR& text) {
  ComText owner;
  *owner.Out() = text;
  text = nullptr;
  return owner.ToString();
}

}  // namespace

ports::DatabaseError ErrorOfCall(HRESULT result, EXCEPINFO& details) {
  if (result == DISP_E_EXCEPTION && details.pfnDeferredFillIn != nullptr)
    details.pfnDeferredFillIn(&details);
  std::string description = TakeText(details.bstrDescription);
  std::string source = TakeText(details.bstrSource);
  TakeText(details.bstrHelpFile);
  std::int32_t number = NumberOf(result);
  if (result == DISP_E_EXCEPTION)
    number = details.wCode != 0 ? details.wCode : NumberOf(details.scode);
  if (description.empty())
    description = "Ошибка базы данных (0x" + tmw::ToHex(static_cast<std::int32_t>(result)) + ").";
  if (source.empty()) source = kComponent;
  return {number, std::move(description), std::move(source)};
}

ports::DatabaseError NoDao(HRESULT result) {
  std::string text =
      "Для работы с базой данных нужна компонента DAO 3.6 (\"DAO.DBEngine.36\"): она не "
      "установлена или не работает (0x" +
      tmw::ToHex(static_cast<std::int32_t>(result)) + ").";
  if constexpr (sizeof(void*) > 4)
    text += " Она бывает только 32-разрядной, а запущена 64-разрядная программа обновления.";
  return {static_cast<std::int32_t>(result), std::move(text), kComponent};
}

}  // namespace platform
