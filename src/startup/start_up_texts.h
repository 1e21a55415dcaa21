#pragma once

#include <string>

#include "foundation/text.h"

// What start-up shows to the user.
namespace tmw::start_up_texts {

inline constexpr const char* kNetworkInstallation =
    "Программа \"Tamrin\" установлена в режиме, когда программные компоненты располагаются на "
    "сетевом диске и используются несколькими пользовательскими компьютерами. \r\n\r\n"
    "Утилиту Web-обновления в этом случае использовать нельзя.";

inline std::string CommandLineError(const std::string& message) {
  return "Ошибка параметров командной строки:" + std::string(kCrLf) + message;
}

inline std::string UnknownOption(const std::string& option) {
  return "Неизвестный параметр \"" + option + "\".";
}

inline constexpr const char* kRollbackUnfinished =
    "Возврат к предыдущей версии программы \"Tamrin\" был прерван. До его завершения обновлять "
    "программу и работать с ней нельзя.\r\n\r\nЗавершить возврат?";

inline std::string RollbackProgramMissing(const std::string& program) {
  return "Возврат к предыдущей версии программы \"Tamrin\" был прерван, а программа " +
         Quoted(program) + ", которая его завершает, не найдена.";
}

inline std::string Updated(const std::string& version) {
  return "Программа \"Tamrin\" обновлена до версии " + version + ".";
}

}  // namespace tmw::start_up_texts
