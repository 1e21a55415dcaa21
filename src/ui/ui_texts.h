#pragma once

// What the windows say.
namespace tmw::ui_texts {

inline constexpr const char* kCaption = "Web-обновление Tamrin";
inline constexpr const char* kClientSuffix = " (клиентский компьютер)";
inline constexpr const char* kCancel = "Отмена";
inline constexpr const char* kClose = "Закрыть";
inline constexpr const char* kUpdateTitle = "Обновление программы";
inline constexpr const char* kCancelQuestion = "Прекратить загрузку и обновление?";

inline constexpr const char* kErrorTitle = "Ошибка";
inline constexpr const char* kErrorLabel = "При обновлении программы произошла ошибка:";
inline constexpr const char* kFullTextName = "Подробное описание ошибки";
inline constexpr const char* kCopy = "Копировать";
inline constexpr const char* kMoreDetails = "Подробнее  >>";
inline constexpr const char* kLessDetails = "Подробнее  <<";

}  // namespace tmw::ui_texts
