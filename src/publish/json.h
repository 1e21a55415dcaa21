#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace publish {

// Writes one JSON object, on one line. Members come in the order of the calls.
class JsonWriter {
 public:
  JsonWriter() { Open('{'); }

  void Text(std::string_view key, std::string_view value);
  void Number(std::string_view key, std::int64_t value);
  void BeginList(std::string_view key);  // of objects
  void BeginObject();                    // in a list
  void EndObject() { Close('}'); }
  void EndList() { Close(']'); }

  // The object's text; it is complete.
  std::string Finish();

 private:
  void Open(char bracket);
  void Close(char bracket);
  void Key(std::string_view key);
  void String(std::string_view value);
  void Separate();

  std::string text_;
  bool needs_comma_ = false;
};

}  // namespace publish
