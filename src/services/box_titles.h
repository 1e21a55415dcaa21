#pragma once

// The titles of all message boxes, by what a box is about. Users quote them to support.
namespace tmw::box_titles {

// Of the updater itself: nothing to do, done, its command line.
inline constexpr const char* kUpdaterProgram = "Программа обновления";
inline constexpr const char* kUpdaterStart = "Запуск программы обновления";
inline constexpr const char* kWebUpdate = "Web-обновление";

// Of the product that is being updated.
inline constexpr const char* kProductUpdate = "Обновление программы";
inline constexpr const char* kUpdateNotNeeded = "Обновления не требуется";
inline constexpr const char* kUpdateImpossible = "Обновление невозможно";

// Of failures.
inline constexpr const char* kDownloadError = "Ошибка загрузки";
inline constexpr const char* kDatabaseError = "Ошибка обновления базы данных";
inline constexpr const char* kFileInUse = "Файл уже используется";
inline constexpr const char* kError = "Ошибка";

}  // namespace tmw::box_titles
