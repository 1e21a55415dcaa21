#pragma once

#include <string>

#include "foundation/text.h"

// What users read about other programs that run and about the settings.
namespace tmw::services_texts {

inline std::string ApplicationIsOpen(const std::string& title) {
  return "Для начала работы программы обновления необходимо закрыть приложение " + Quoted(title) +
         ".\r\n\r\nВ данный момент приложение открыто. Продолжать ожидание?";
}

inline std::string SeveralCopies() {
  return "Одновременно может работать только одна копия программы обновления. В данный момент "
         "запущено несколько копий этой программы. Имеется возможность либо подождать, пока лишние "
         "копии программы обновления не будут закрыты, либо прекратить работу программы "
         "обновления.\r\n\r\nПодождать, пока лишние копии программы обновления не будут закрыты?";
}

inline std::string NoLockFolder(const std::string& folder) {
  return "Папку блокировок " + Quoted(folder) +
         " создать или использовать нельзя: она должна принадлежать текущему пользователю и быть "
         "закрытой для остальных:";
}

inline std::string MissingSetting(const std::string& path, const std::string& place) {
  return "В настройках программы \"Tamrin\" не задан параметр " + Quoted(path) +
         ".\r\nЕго место: " + place + ".";
}

inline std::string ReadingSettingFailed(const std::string& path) {
  return "Ошибка чтения параметра " + Quoted(path) + ":";
}

}  // namespace tmw::services_texts
