#pragma once

#include <string>

// What users read of this wing's own.
namespace platform::windows_texts {

inline constexpr const wchar_t* kOk = L"OK";
inline constexpr const wchar_t* kCancel = L"Отмена";
inline constexpr const wchar_t* kCopy = L"&Копировать";

// Why the machine is not shut down while files are installed.
inline constexpr const wchar_t* kBusy = L"Устанавливается обновление программы";

// On a 64-bit system the editor of the registry shows these keys below WOW6432Node.
inline std::string RegistryPlace(const std::string& root) {
  return "реестр, " + root + " (32-разрядная часть)";
}

// The XML component; the code is in hexadecimal digits.
inline std::string XmlNotRegistered(const std::string& component, const std::string& code) {
  return "компонента " + component + " не зарегистрирована (" + code + ").";
}

inline std::string XmlNotCreated(const std::string& component, const std::string& code) {
  return "не удалось создать компоненту " + component + " (" + code + ").";
}

inline std::string XmlFailed(const std::string& code) {
  return "Ошибка компоненты XML (" + code + ").";
}

inline constexpr const char* kXmlTooDeep = "Слишком большая вложенность элементов.";

}  // namespace platform::windows_texts
