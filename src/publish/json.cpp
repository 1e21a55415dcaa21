#include "publish/json.h"

#include <array>
#include <cstdio>

#include "foundation/encodings.h"

namespace publish {

void JsonWriter::Text(std::string_view key, std::string_view value) {
  Key(key);
  String(value);
}

void JsonWriter::Number(std::string_view key, std::int64_t value) {
  Key(key);
  text_ += std::to_string(value);
}

void JsonWriter::BeginList(std::string_view key) {
  Key(key);
  Open('[');
}

void JsonWriter::BeginObject() {
  Separate();
  Open('{');
}

std::string JsonWriter::Finish() {
  Close('}');
  return text_ + "\n";
}

void JsonWriter::Open(char bracket) {
  text_ += bracket;
  needs_comma_ = false;
}

void JsonWriter::Close(char bracket) {
  text_ += bracket;
  needs_comma_ = true;
}

void JsonWriter::Key(std::string_view key) {
  Separate();
  String(key);
  text_ += ':';
}

// Malformed UTF-8, which names on the disk may have, becomes replacement characters.
void JsonWriter::String(std::string_view value) {
  text_ += '"';
  for (const char c : tmw::Utf16ToUtf8(tmw::Utf8ToUtf16(value))) {
    if (c == '"' || c == '\\') {
      text_ += '\\';
      text_ += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      std::array<char, 8> escape{};
      static_cast<void>(
          std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c)));
      text_ += escape.data();
    } else {
      text_ += c;
    }
  }
  text_ += '"';
}

void JsonWriter::Separate() {
  if (needs_comma_) text_ += ',';
  needs_comma_ = true;
}

}  // namespace publish
