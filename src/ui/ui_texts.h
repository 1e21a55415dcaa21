#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "foundation/text.h"

// What the windows show.
namespace tmw::ui_texts {

inline constexpr const char* kCaption = "Web-обновление Tamrin";
inline constexpr const char* kClientSuffix = " (клиентский компьютер)";
inline constexpr const char* kCancel = "Отмена";
inline constexpr const char* kBytes = "байт";
inline constexpr const char* kClose = "Закрыть";
inline constexpr const char* kCancelQuestion = "Прекратить загрузку и обновление?";

inline constexpr const char* kErrorLabel = "При обновлении программы произошла ошибка:";
inline constexpr const char* kFullTextName = "Подробное описание ошибки";
inline constexpr const char* kLogPlace = "Журнал:";
inline constexpr const char* kCopy = "Копировать";
inline constexpr const char* kMoreDetails = "Подробнее  >>";
inline constexpr const char* kLessDetails = "Подробнее  <<";

// The details of an error.
inline constexpr const char* kChain = "Стек:";
inline constexpr const char* kUpdaterBuild = "Сборка программы обновления: ";
inline constexpr const char* kWindowsVersion = "Версия Windows: ";
inline constexpr const char* kSystemVersion = "Версия системы: ";

inline std::string ErrorCode(std::int32_t code) {
  return "Код ошибки: " + std::to_string(code) + " (0x" + ToHex(code) + ")";
}

inline std::string Step(std::int32_t step, std::int32_t count) {
  return "этап " + std::to_string(step) + " из " + std::to_string(count);
}

// The pace of a transfer.
inline constexpr std::array kSpeedUnits = {"Б/с", "КБ/с", "МБ/с", "ГБ/с"};

inline std::string SecondsLeft(std::int64_t seconds) {
  return ", осталось " + std::to_string(seconds) + " с";
}

inline std::string MinutesLeft(std::int64_t minutes) {
  return ", осталось " + std::to_string(minutes) + " мин";
}

// Minutes of a whole hour are left out.
inline std::string HoursLeft(std::int64_t hours, std::int64_t minutes) {
  const std::string rest = minutes == 0 ? "" : " " + std::to_string(minutes) + " мин";
  return ", осталось " + std::to_string(hours) + " ч" + rest;
}

}  // namespace tmw::ui_texts
