#pragma once

#include <string>

#include "foundation/text.h"

// What users can do next, one sentence for each kind of failure.
namespace tmw::advice_texts {

inline constexpr const char* kOther =
    "Повторите попытку, а если ошибка повторится, обратитесь в поддержку и приложите "
    "архив, который создаст программа TmSupport.";

// The network.
inline constexpr const char* kNoConnection =
    "Проверьте подключение компьютера к Интернету и запустите обновление еще раз.";
inline constexpr const char* kNameNotResolved =
    "Адрес сервера не найден: проверьте подключение к Интернету и настройки сети (DNS), затем "
    "запустите обновление еще раз.";
inline constexpr const char* kInterrupted =
    "Проверьте подключение к Интернету и запустите обновление еще раз: загруженное сохранено, "
    "загрузка продолжится с того же места.";
// Behind another sentence's end.
inline constexpr const char* kOldProtocols =
    "; в Windows 7 причиной может быть отключенный протокол TLS 1.2: установите обновления системы "
    "и включите его в свойствах обозревателя (вкладка \"Дополнительно\").";
inline constexpr const char* kNoSecureChannel =
    "Защищенное соединение не установлено: возможно, система не знает протокола, которого требует "
    "сервер, — установите обновления системы, а если это не поможет, обратитесь к администратору "
    "сети.";
inline constexpr const char* kUnknownAuthority =
    "Сертификат сервера выдан центром, которого нет в списке системы: установите обновления системы "
    "(список мог устареть), а если соединения проверяет антивирус или сеть организации, обратитесь "
    "к администратору сети.";
inline constexpr const char* kCertificateDate =
    "Проверьте дату и время на компьютере: по ним срок действия сертификата сервера истек или еще "
    "не наступил.";
inline constexpr const char* kCertificate =
    "Подлинность сервера не подтверждена: возможно, защищенные соединения проверяет антивирус или "
    "сеть организации, — обратитесь к администратору сети.";
inline constexpr const char* kLoginPage =
    "Вместо файла получена веб-страница: похоже, сеть требует входа через браузер, — откройте "
    "браузер, войдите в сеть и запустите обновление еще раз.";

inline std::string NoConnectionThrough(const std::string& proxy) {
  return "Проверьте подключение компьютера к Интернету и прокси-сервер " + Quoted(proxy) +
         ", указанный в настройках обновления.";
}

// Without a name it is the system's proxy.
inline std::string ProxyWords(const std::string& proxy) {
  return proxy.empty() ? "указанный в настройках системы"
                       : Quoted(proxy) + ", указанный в настройках обновления";
}

inline std::string ProxyFailed(const std::string& proxy) {
  return "Не отвечает прокси-сервер " + ProxyWords(proxy) +
         ": проверьте его адрес или обратитесь к администратору сети.";
}

inline std::string ProxyWantsLogin(const std::string& proxy) {
  return "Имя и пароль требует прокси-сервер " + ProxyWords(proxy) +
         ": впишите их в его адрес или обратитесь к администратору сети.";
}

// The server's answers.
inline constexpr const char* kLogin =
    "Сервер обновлений требует имя и пароль: проверьте адрес сервера в настройках обновления или "
    "обратитесь к администратору.";
inline constexpr const char* kForbidden =
    "Доступ к файлу запрещен: обратитесь к администратору сети, а если сеть доступ не ограничивает, "
    "— в поддержку.";
inline constexpr const char* kNotFound =
    "На сервере нет этого файла: возможно, обновление как раз выкладывается, — повторите попытку "
    "через час, а если ошибка повторится, обратитесь в поддержку.";
inline constexpr const char* kServerFault =
    "На сервере обновлений временная неполадка: повторите попытку через час.";
inline constexpr const char* kRefused =
    "Сервер обновлений не выполнил запрос: повторите попытку позже, а если ошибка повторится, "
    "обратитесь в поддержку.";
inline constexpr const char* kDamagedFile =
    "Файл пришел поврежденным и удален: запустите обновление еще раз, а если ошибка повторится, "
    "обратитесь в поддержку.";
inline constexpr const char* kSignature =
    "Не устанавливайте это обновление: повторите попытку через час, а если ошибка повторится, "
    "обратитесь в поддержку.";
inline constexpr const char* kWrongData =
    "Ошибка в файлах на сервере обновлений: повторите попытку через час, а если ошибка повторится, "
    "обратитесь в поддержку.";

// This computer.
inline constexpr const char* kDiskFull = "Освободите место на диске и повторите попытку.";
inline constexpr const char* kNoRights =
    "Не хватает прав: повторите попытку от имени администратора или обратитесь к нему.";
inline constexpr const char* kNoRightsOnLinux =
    "Не хватает прав: повторите попытку через sudo или pkexec или обратитесь к администратору.";
inline constexpr const char* kFileHeld =
    "Закройте программы, которые используют этот файл, или перезагрузите компьютер, затем "
    "повторите попытку.";
inline constexpr const char* kOwnFiles =
    "Проверьте, не удалил ли файл антивирус, и восстановите его, а если это не удается, установите "
    "программу заново поверх имеющейся.";
inline constexpr const char* kVanished =
    "Возможно, файл удалил антивирус: проверьте его карантин и повторите попытку.";
inline constexpr const char* kCommandLine =
    "Запустите обновление из программы \"Tamrin\" или исправьте параметры в ярлыке.";
inline constexpr const char* kNetworkInstallation =
    "Попросите администратора обновить программу на том компьютере, на котором лежат ее файлы.";
inline constexpr const char* kRegistration =
    "Повторите попытку от имени администратора, а если ошибка повторится, обратитесь в "
    "поддержку.";
inline constexpr const char* kSetting =
    "Исправьте параметр или обратитесь к администратору, который устанавливал программу.";

// The database.
inline constexpr const char* kDatabaseHeld =
    "Закройте программы, работающие с базой данных, на всех компьютерах и повторите попытку.";
inline constexpr const char* kDatabaseMissing =
    "Проверьте, доступен ли диск с базой данных и верно ли указана ее папка в настройках программы.";
inline constexpr const char* kBackup =
    "Рабочая база данных не изменена: проверьте место на диске и права на ее папку и запустите "
    "обновление еще раз.";
inline constexpr const char* kDatabase =
    "Рабочая база данных не изменена; обратитесь в поддержку и приложите архив, который создаст "
    "программа TmSupport.";
inline constexpr const char* kScript =
    "Данные не изменены; обратитесь в поддержку и приложите архив, который создаст программа "
    "TmSupport.";

inline constexpr const char* kVersions = "Обратитесь в поддержку и сообщите номера обеих версий.";
inline constexpr const char* kByHand =
    "Загрузите полную установку программы с сайта ее производителя и установите ее поверх "
    "имеющейся.";

}  // namespace tmw::advice_texts
