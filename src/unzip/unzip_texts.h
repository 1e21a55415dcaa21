#pragma once

// Why an archive is not unpacked; each follows a colon.
namespace tmw::unzip_texts {

inline constexpr const char* kNoSuchArchive = "это не архив с одним файлом";
inline constexpr const char* kUnknownMethod = "файл в архиве упакован неизвестным способом";
inline constexpr const char* kNotRead = "архив не читается";
inline constexpr const char* kDamaged = "содержимое архива повреждено";
inline constexpr const char* kStopped = "распаковка прервана";

}  // namespace tmw::unzip_texts
