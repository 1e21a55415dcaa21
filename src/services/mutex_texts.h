#pragma once

#include <string>

// What the single-instance control says.
namespace tmw::mutex_texts {

inline constexpr const char* kTitle = "Запуск программы обновления";

inline std::string ApplicationIsOpen(const std::string& title) {
  return "Для начала работы программы обновления необходимо закрыть приложение \"" + title +
         "\".\r\n\r\n"
         "В данный момент приложение открыто. Продолжать ожидание?";
}

inline std::string SeveralCopies() {
  return "Одновременно может работать только одна копия программы обновления. "
         "В данный момент запущено несколько копий этой программы. "
         "Имеется возможность либо подождать, пока лишние копии программы обновления не будут "
         "закрыты, либо прекратить работу программы обновления.\r\n\r\n"
         "Подождать, пока лишние копии программы обновления не будут закрыты?";
}

}  // namespace tmw::mutex_texts
