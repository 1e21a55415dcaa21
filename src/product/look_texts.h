#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "foundation/text.h"

// What is shown when a look before the installation finds something in its way.
namespace tmw::look_texts {

// Behind the last sentence.
inline constexpr const char* kNothingChanged = " Ничего не изменено.";

inline std::string FolderNotWritable(const std::string& folder, const std::string& reason) {
  return "Невозможно заменить файлы в папке " + Quoted(folder) + ":\r\n" + reason +
         "\r\nВозможно, у текущего пользователя нет необходимых прав.";
}

inline std::string FileForbidden(const std::string& file, const std::string& reason) {
  return "Невозможно заменить файл " + Quoted(file) + ":\r\n" + reason +
         "\r\nВозможно, у текущего пользователя нет необходимых прав.";
}

inline std::string RegistryForbidden(const std::string& reason) {
  return "Невозможно зарегистрировать компоненты программы в системном реестре:\r\n" + reason +
         "\r\nВозможно, у текущего пользователя нет необходимых прав.";
}

inline std::string FolderInThePlace(const std::string& file) {
  return "На месте файла " + Quoted(file) +
         " находится папка. Переименуйте ее или перенесите в другое место и повторите попытку.";
}

inline std::string DeviceInThePlace(const std::string& file) {
  return "На месте файла " + Quoted(file) +
         " находится объект, который не является файлом. Переименуйте его или перенесите в другое "
         "место и повторите попытку.";
}

inline std::string FileInThePlace(const std::string& folder) {
  return "На месте папки " + Quoted(folder) +
         " находится файл. Переименуйте его или перенесите в другое место и повторите попытку.";
}

inline std::string Protected(const std::string& place, bool is_folder, const std::string& reason) {
  return (is_folder ? "Папка " : "Файл ") + Quoted(place) + (is_folder ? " защищена" : " защищен") +
         " от изменений:\r\n" + reason +
         "\r\nСнимите защиту или обратитесь к администратору и повторите попытку.";
}

inline std::string OtherPlaces(const std::vector<std::string>& places, std::size_t unnamed) {
  return "\r\nТо же относится к следующему: " + Joined(places, ", ") +
         (unnamed == 0 ? "." : " и еще " + std::to_string(unnamed) + ".");
}

// holders: programs; empty if they are not known. others: a sentence about other files, or empty.
inline std::string HeldQuestion(const std::string& file, const std::vector<std::string>& holders,
                                const std::string& others) {
  return "Файл " + Quoted(file) + " занят " +
         (holders.empty()       ? "другой программой"
          : holders.size() == 1 ? "программой " + Quoted(holders[0])
                                : "программами " + Quoted(Joined(holders, "\", \""))) +
         ", поэтому его невозможно заменить." + others +
         "\r\n\r\nЗакройте программы, которые используют файлы программы \"Tamrin\", и нажмите "
         "\"Да\". Нажмите \"Нет\", чтобы прервать работу; пока ничего не изменено.\r\n\r\n"
         "Повторить попытку?";
}

// needed and free: sizes in words.
inline std::string NoRoom(const std::string& folder, const std::string& needed,
                          const std::string& free) {
  return "Недостаточно места на диске, на котором находится папка " + Quoted(folder) +
         ".\r\nДля обновления необходимо не менее " + needed + ", свободно " + free +
         ". Ничего не изменено.";
}

inline std::string PerhapsNoRoom(const std::string& folder, const std::string& needed,
                                 const std::string& free) {
  return "Может не хватить места на диске, на котором находится папка " + Quoted(folder) +
         ".\r\nДля обновления может понадобиться до " + needed + ", свободно " + free +
         ".\r\n\r\nЛучше освободить место, прежде чем продолжать: если его не хватит, обновление "
         "прервется. Пока ничего не изменено.\r\n\r\nПродолжить обновление?";
}

}  // namespace tmw::look_texts
