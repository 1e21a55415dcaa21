#pragma once

#include <span>

#include "ports/outcome.h"

// Russian texts of error codes where the system has none of its own.
namespace platform::error_text_tables {

struct Entry {
  ports::SystemCode code;
  const char* text;
};

// errno values.
std::span<const Entry> SystemTexts();

// Codes of the internet layer, 12001 and above, numbered as WinINet numbers them.
std::span<const Entry> InternetTexts();

// Numbers of the database engine, as DAO numbers them.
std::span<const Entry> DatabaseTexts();

}  // namespace platform::error_text_tables
