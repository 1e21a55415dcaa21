#pragma once

#include <string>

// Boxes that only inform. They are modal and end with "OK".
namespace tmw {

void ShowInformation(const char* title, const std::string& text);
void ShowWarning(const char* title, const std::string& text);

// Reports an expected failure of the run, as a warning titled "Ошибка загрузки".
void DownloadError(const std::string& message);

}  // namespace tmw
