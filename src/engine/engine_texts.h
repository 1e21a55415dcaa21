#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/text.h"

// What the update run shows to the user, in the order of the run; titles stand in box_titles.h. A
// function fills values into a sentence.
namespace tmw::engine_texts {

inline const std::string kBreak{kCrLf};

// The run.
inline constexpr const char* kStillTooOld =
    "Для обновления этой версии требуется загрузить новую программу обновления. Попытка сделать "
    "это автоматически не удалась. Обновление программы придется производить вручную.";
inline constexpr const char* kServerComputerOnly =
    "Требуется обновление таблиц или справочников в базе данных, однако эту операцию следует "
    "выполнять с серверного компьютера.";
inline constexpr const char* kNothingToDo =
    "Все компоненты, справочники и таблицы установленной на данном компьютере программы "
    "соответствуют тем, что находятся на сервере Kestrel Soft.";

// Units of the volume.
inline constexpr const char* kGigabytes = " гигабайт";
inline constexpr const char* kMegabytes = " мегабайт";
inline constexpr const char* kKilobytes = " килобайт";
inline constexpr const char* kBytes = "байт";
inline constexpr const char* kShortGiga = " ГБ";
inline constexpr const char* kShortMega = " М";
inline constexpr const char* kShortKilo = " К";

inline std::string VolumeQuestion(const std::string& size) {
  return "Ориентировочный объем файлов, которые необходимо загрузить," + kBreak + "составляет " +
         size + "." + kBreak + kBreak + "Осуществлять загрузку и установку?";
}

inline std::string TwoDatabases(const std::string& file, const std::string& copy) {
  return "Рабочая база данных существует дважды: " + Quoted(file) + " и " + Quoted(copy) +
         ". Вторую Windows завела для программ, которые пишут в защищенную папку без прав "
         "администратора, и неизвестно, в какой из них лежат последние записи. Ничего не изменено. "
         "Обратитесь в поддержку, прежде чем удалять одну из них.";
}

inline std::string TwoSettings(const std::string& key, const std::string& copy) {
  return "Настройки программы существуют дважды: " + Quoted(key) + " и " + Quoted(copy) +
         ". Вторые Windows завела для программ, которые пишут в защищенный раздел реестра без прав "
         "администратора, и неизвестно, какие из них верны. Ничего не изменено. Обратитесь в "
         "поддержку, прежде чем удалять одни из них.";
}

// The digest.
inline constexpr const char* kGettingVersion = "Получение номера текущей версии...";
inline constexpr const char* kDigestEmpty = "Файл с информацией о версии пуст.";
inline constexpr const char* kDigestError = "Ошибка в файле версии.";
inline constexpr const char* kNoUpdateVersion =
    "Ошибка формата файла версии: невозможно определить версию загружаемого обновления.";
inline constexpr const char* kNoUpdaterVersion =
    "Ошибка формата файла версии: невозможно определить минимальную необходимую версию программы "
    "обновления.";
inline constexpr const char* kUpdaterTooOld =
    "Версия данной программы обновления слишком старая, чтобы произвести автоматическую загрузку и "
    "обновление программы. \r\nВ этот раз загрузку и установку обновления придется делать вручную.";
inline constexpr const char* kUpdateLineEmpty =
    "Ошибка формата файла версии: строка Update пустая.";
inline constexpr const char* kUpdateLineShort =
    "Ошибка формата файла версии: количество параметров в строке Update меньше ожидаемого.";
inline constexpr const char* kUpdateLineSize =
    "Ошибка формата файла версии: ошибка размера файла в сроке Update.";

inline constexpr const char* kLineMissing = "нет";
inline constexpr const char* kLineTwice = "дважды встречается";
inline constexpr const char* kLineMalformed = "неверно записана";

// name: of a line of the digest; fault: one of the above.
inline std::string DigestLineFault(const std::string& name, const std::string& fault) {
  const bool is_missing = fault == kLineMissing;
  return "Ошибка формата файла версии: " + fault + (is_missing ? " строки " : " строка ") + name +
         ".";
}

inline std::string DigestNotLoaded(const std::string& reason) {
  return "Ошибка загрузки файла с информацией о версии:" + kBreak + reason;
}

// Its signature.
inline const std::string kNothingChanged = "На данном компьютере ничего не изменено.";

inline constexpr const char* kKeysAreNoText =
    "Параметр General\\UpdateKeys с открытыми ключами обновлений должен быть строкой (REG_SZ).";

inline std::string FaultyKey(const std::string& key) {
  return "Открытый ключ обновлений в параметре General\\UpdateKeys записан неверно: " +
         Quoted(key) + ".";
}

inline std::string WebPageInstead(const std::string& url) {
  return "По адресу " + Quoted(url) +
         " вместо файла с информацией о версии получена веб-страница. " + kNothingChanged;
}

inline std::string DigestNotTrusted(const std::string& reasons) {
  return "Подлинность файла с информацией о версии не подтверждена, поэтому обновление не "
         "проводится. " +
         kNothingChanged + kBreak + kBreak + reasons;
}

inline std::string SignatureNotLoaded(const std::string& reason) {
  return "Подпись не загружена: " + reason;
}

inline std::string SignatureMalformed(const std::string& url) {
  return "Подпись файла " + Quoted(url) + " повреждена.";
}

inline std::string SignatureOfOtherKind(const std::string& url) {
  return "Подпись файла " + Quoted(url) + " сделана способом, который больше не принимается.";
}

inline std::string SignedByUnknownKey(const std::string& url, const std::string& key) {
  return "Файл " + Quoted(url) + " подписан ключом " + key +
         ", которого нет среди ключей этой программы.";
}

inline std::string SignatureDiffers(const std::string& url) {
  return "Подпись не соответствует файлу " + Quoted(url) + ".";
}

inline std::string SignedForOtherProduct(const std::string& found) {
  return "Файл с информацией о версии подписан для другого программного продукта (" + found +
         "). " + kNothingChanged;
}

inline std::string SerialTooLow(std::int64_t found, std::int64_t accepted) {
  return "Сервер отдает устаревший файл с информацией о версии: его номер " +
         std::to_string(found) + ", а раньше уже был получен номер " + std::to_string(accepted) +
         ". " + kNothingChanged;
}

inline std::string DigestExpired(const std::string& last_day, const std::string& today) {
  return "Срок действия файла с информацией о версии истек: последний день — " + last_day +
         ", сегодня — " + today +
         ". Если дата на этом компьютере верна, сервер отдает устаревший файл. " + kNothingChanged;
}

// The server list.
inline constexpr const char* kChoosingServer = "Выбор сервера для загрузки...";
inline constexpr const char* kServerListEmpty = "Файл со списком серверов для загрузки пуст.";
inline constexpr const char* kNoServer = "Не найдено ни одного сервера для загрузки обновления.";

inline std::string ServerListNotLoaded(const std::string& reason) {
  return "Ошибка загрузки Файла со списком серверов обновлений:" + kBreak + reason;
}

// The installed product's version.
inline constexpr const char* kComparingVersions = "Сравнение версий...";

inline std::string SameVersionQuestion(const std::string& installed) {
  return "Текущая версия программы (" + installed +
         ") совпадает с версией, находящейся на сайте. Как правило, в данной ситуации обновления "
         "не требуется." +
         kBreak + kBreak +
         "Есть возможность сверить файлы, установленные на данном компьютере, с теми, что "
         "находятся на сервере, и, в случае расхождения, установить с сервера правильные "
         "компоненты." +
         kBreak + kBreak + "Провести проверку и восстановление текущей версии программы?";
}

inline std::string InstalledIsNewer(const std::string& installed, const std::string& on_server) {
  return "Текущая версия программы (" + installed +
         ") новее той, что находится на сервере Kestrel Soft (" + OneLine(on_server) + ")." +
         kBreak + kBreak +
         "Ситуация необычна. Обновление программы средствами данной утилиты невозможно.";
}

inline std::string VersionsNotComparable(const std::string& installed,
                                         const std::string& on_server) {
  return "Ошибка сравнения версий программы и обновления." + kBreak + kBreak +
         "Текущая версия: " + installed + kBreak + "Версия обновления: " + OneLine(on_server);
}

// The manifest.
inline constexpr const char* kGettingFileList = "Получение списка файлов...";
inline constexpr const char* kParsingFileList = "Разбор списка файлов...";

inline std::string ManifestNotAnnounced(const std::string& url) {
  return "Список файлов, загруженный по адресу " + Quoted(url) +
         ", не совпадает с объявленным в файле с информацией о версии: этот сервер отдает "
         "устаревший, поврежденный или чужой список. " +
         kNothingChanged;
}

inline std::string ReleaseReplaced(const std::string& begun, const std::string& announced) {
  return "Пока загружалась версия " + begun + ", на сервере было объявлено другое обновление (" +
         announced + "). " + kNothingChanged;
}

inline std::string NoXmlComponent(const std::string& reason) {
  return "Ошибка при обращении к системной компоненте поддержки XML: " + reason + kBreak + kBreak +
         "Возможно, системная библиотека Microsoft XML 4.0 не установлена на данном компьютере.";
}

inline std::string ManifestNotReadable(const std::string& reason) {
  return "Ошибка формата файла списка загружаемых файлов: " + reason;
}

inline std::string OtherProduct(const std::string& expected) {
  return "Загруженный файл обновления предназначен для другого программного продукта (" + expected +
         ").";
}

inline std::string OtherVersion(const std::string& found, const std::string& expected) {
  return "Загруженный файл обновления предназначен для другой версии программного продукта (" +
         OneLine(found) + ", в то время как ожидается " + expected + ").";
}

inline std::string TableTwice(const std::string& name) {
  return "В списке файлов дважды встречается таблица " + Quoted(name) + ".";
}

inline std::string VersionTableNamed(const std::string& name) {
  return "В списке файлов встречается служебная таблица " + Quoted(name) + ".";
}

inline std::string UserFileNamed(const std::string& name) {
  return "В списке файлов встречается " + Quoted(name) +
         " в папке базы данных. В этом файле лежат данные пользователя; программа обновления его "
         "не заменяет.";
}

inline std::string UpdatersFolderNamed(const std::string& folder) {
  return "В списке файлов встречается папка " + Quoted(OneLine(folder)) +
         ". В ней программа обновления хранит предыдущую версию.";
}

inline std::string UpdatersNoteNamed(const std::string& name) {
  return "В списке файлов встречается " + Quoted(name) +
         ". В этом файле программа обновления хранит собственные записи; из обновления он не "
         "берётся.";
}

inline std::string FileTwice(const std::string& name) {
  return "В списке файлов дважды и с разным содержимым встречается файл " + Quoted(name) + ".";
}

inline std::string UnknownConstant(const std::string& name) {
  return "Unknown Const name: " + OneLine(name);
}

// The update list.
inline constexpr const char* kSelecting = "Отбор компонент, подлежащих загрузке...";

inline std::string JudgingFile(const std::string& name) {
  return "Компонента: " + name;
}

inline std::string JudgingTable(const std::string& name, bool is_user) {
  return (is_user ? "Таблица: " : "Справочник: ") + name;
}

// Downloading.
inline constexpr const char* kDownloading = "Загрузка компонент...";
inline constexpr const char* kVolumeOverflow =
    "Переполнение: объем загрузки превышает 2 гигабайта.";

inline std::string NotLoaded(const std::string& url) {
  return "Ошибка загрузки файла " + url + " .";
}

inline std::string LoadingFault(const std::string& name, const std::string& fault) {
  return "Ошибка загрузки файла " + name + ":" + kBreak + fault;
}

inline constexpr const char* kFileAbsent = "Файл не загрузился.";
inline constexpr const char* kLengthDiffers = "Длина файла не совпадает с ожидаемой.";
inline constexpr const char* kHashDiffers = "Контрольная сумма файла не совпадает с ожидаемой.";
inline constexpr const char* kUnpackedAbsent = "Распакованный файл отсутствует.";

inline std::string UnknownPackMethod(const std::string& name, std::int32_t size) {
  return "Ошибка распаковки файла " + name + ": неизвестный метод упаковки (" +
         std::to_string(size) + ").";
}

inline std::string NotUnpacked(const std::string& name, const std::string& reason) {
  return "Ошибка распаковки файла " + name + ":" + kBreak + reason;
}

inline std::string PackageNotUnpacked(const std::string& package, const std::string& reason) {
  return "Ошибка распаковки архивного файла " + package + ":" + kBreak + reason + ".";
}

inline std::string NotMovedToLoaded(const std::string& name, const std::string& folder) {
  return "Невозможно перенести загруженный файл " + name + " в папку успешно загруженных файлов (" +
         folder + ").";
}

inline std::string CheckFailed(const std::string& file, const std::string& reason) {
  return "Ошибка проверки загруженного файла " + file + ":" + kBreak + reason + ".";
}

inline std::string CheckFailedUnknown(const std::string& file) {
  return "Неизвестная ошибка проверки загруженного файла " + file + " .";
}

inline std::string TooMuchReceived(const std::string& url) {
  return "Сервер передает больше данных, чем объявлено в списке файлов: " + Quoted(url) + ".";
}

// The databases.
inline constexpr const char* kBackingUp = "Резервное копирование базы данных...";
inline constexpr const char* kPlacingDatabase = "Установка обновленной базы данных...";
inline constexpr const char* kPlacingReference = "Установка справочной базы данных...";
inline constexpr const char* kPlacingWorking = "Установка рабочей базы данных...";
inline constexpr const char* kPlacingScripts = "Установка скриптов обновления...";
inline constexpr const char* kDatabaseChanged =
    "Пока готовилась новая база данных, другая программа изменила рабочую базу данных. Рабочая "
    "база данных оставлена без изменений. Закройте все программы, работающие с этой базой данных, "
    "и запустите обновление еще раз.";

inline std::string DatabaseNotRead(const std::string& file) {
  return "Ошибка чтения файла " + Quoted(file) + ":";
}

inline std::string BackupFailed(const std::string& reason) {
  return "Ошибка создания резервной копии базы данных:" + kBreak + reason;
}

inline std::string ZipResult(std::int32_t code) {
  return "Код ошибки архиватора: " + std::to_string(code) + ".";
}

inline std::string CopyDiffers(const std::string& built, const std::string& copy) {
  return "Копия новой базы данных " + Quoted(copy) + " не совпадает с исходным файлом " +
         Quoted(built) + ". Рабочая база данных не изменена.";
}

inline std::string BuiltDatabaseChanged(const std::string& built) {
  return "Новая база данных " + Quoted(built) +
         " изменилась после того, как была построена. Она не установлена; при следующем запуске "
         "обновления она будет построена заново.";
}

inline std::string NewDatabaseTooOld(const std::string& version) {
  return "В новой базе данных стоит номер версии " + version +
         ", который меньше номера версии обновления. Рабочая база данных не изменена.";
}

inline std::string CopyNotNamed(const std::string& reason, const std::string& copy,
                                const std::string& database) {
  return reason + kBreak + kBreak +
         "Новая рабочая база данных со всеми вашими записями лежит в файле " + Quoted(copy) +
         ". Запустите обновление еще раз: оно даст ей имя " + Quoted(database) + ".";
}

// Keeping what is going to be replaced.
inline constexpr const char* kKeeping = "Сохранение предыдущей версии...";

inline std::string NotKept(const std::string& reason) {
  return "Не удалось сохранить предыдущую версию программы:" + kBreak + reason + kBreak + kBreak +
         "Без нее нельзя будет вернуться к предыдущей версии после обновления. Резервная копия базы "
         "данных создается в любом случае." +
         kBreak + kBreak + "Продолжить обновление без возможности вернуться?";
}

// Installing.
inline constexpr const char* kRemovingOld = "Удаление старых компонент...";
inline constexpr const char* kInstalling = "Установка новых компонент...";
inline constexpr const char* kBusyInstalling = "Идет установка обновления программы \"Tamrin\".";
inline constexpr const char* kCleaning = "Удаление временных файлов...";

inline std::string LoadedFileMissing(const std::string& file) {
  return "По неизвестной причине отсутствует загруженный файл " + Quoted(file) + ".";
}

inline std::string LoadedFileChanged(const std::string& file) {
  return "Загруженный файл " + Quoted(file) +
         " изменился после проверки и поэтому не установлен. При следующем запуске обновления он "
         "будет загружен заново.";
}

// reasons: of some; unnamed: how many others there are.
inline std::string UnchangedNotRegistered(const std::string& reasons, std::size_t unnamed) {
  return "Не удалось заново зарегистрировать компоненты, оставшиеся от прерванного обновления. "
         "Установка продолжается." +
         kBreak + kBreak + reasons +
         (unnamed == 0
              ? ""
              : kBreak + kBreak + "Других таких компонент: " + std::to_string(unnamed) + ".");
}

inline std::string InstallationUnfinished(const std::string& updater) {
  return "Обновление установлено не полностью. Устраните причину и запустите программу обновления "
         "еще раз: она завершит установку. Заново загружать то, что уже загружено, не "
         "понадобится." +
         kBreak + kBreak + "Программа обновления: " + Quoted(updater);
}

// Restarting as a temporary copy, and as a newer updater.
inline constexpr const char* kCopyingUpdater =
    "Перенос программы обновления во временный каталог...";
inline constexpr const char* kRestarting = "Перезапуск программы обновления...";
inline constexpr const char* kLoadingUpdater = "Загрузка новой версии программы обновления...";
inline constexpr const char* kNoComponents = "Список компонент программы обновления пуст.";

inline std::string CopyingFile(const std::string& name) {
  return "Файл " + name + "...";
}

inline std::string LoadingComponent(const std::string& url) {
  return "Загрузка " + url + " ...";
}

inline std::string ProgramNotPrepared(const std::string& file) {
  return "Ошибка подготовки программы " + Quoted(file) + ":";
}

inline std::string OwnFileMissing(const std::string& file) {
  return "Файл " + Quoted(file) + ", необходимый для работы программы обновления, не найден.";
}

inline std::string NoFreeName(const std::string& name, const std::string& folder) {
  return "Невозможно отыскать уникальное имя файла для загружаемого модуля " + Quoted(name) +
         " . Возможно, текущему пользователю не хватает прав для работы во временной папке \"" +
         folder + "\".";
}

inline std::string ComponentNotLoaded(const std::string& url) {
  return "Ошибка загрузки файла " + Quoted(url) + ". Файл не был загружен.";
}

inline std::string ComponentLengthDiffers(const std::string& url, std::int64_t length,
                                          std::int32_t expected) {
  return "Длина загруженного файла " + Quoted(url) + " не совпадает с ожидаемой (длина " +
         std::to_string(length) + ", ожидается " + std::to_string(expected) + ").";
}

inline std::string ComponentHashDiffers(const std::string& url) {
  return "Контрольная сумма загруженного файла " + Quoted(url) + " не совпадает с ожидаемой.";
}

}  // namespace tmw::engine_texts
