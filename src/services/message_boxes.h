#pragma once

#include <string>

#include "services/advice.h"

// The boxes of the updater. They are modal; each is recorded in the log with its answer.
namespace tmw {

// Boxes that only inform and end with "OK". Advice is shown where a kind of failure is given.
void ShowInformation(const char* title, const std::string& text);
void ShowInformation(const char* title, const std::string& text, FailureKind kind);
void ShowWarning(const char* title, const std::string& text);
void ShowWarning(const char* title, const std::string& text, FailureKind kind);

// Reports an expected failure of the run, as a warning titled "Ошибка загрузки". The advice is that
// of the kind; without one, of the noted kind.
void DownloadError(const std::string& message);
void DownloadError(const std::string& message, FailureKind kind);

// A question with the buttons yes and no. Returns false also if nobody can answer.
bool AskQuestion(const char* title, const std::string& question);

}  // namespace tmw
