#include "services/run_log.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "ports/log_files.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr std::int64_t kLimit = 1024 * 1024;  // of each file
constexpr std::string_view kMask = "***";

struct LogPlace {
  std::string text;
  std::string old_text;
  std::string json;
  std::string old_json;
  bool is_written = false;
};

// None until the first event; empty names if there is no place to write to.
std::optional<LogPlace>& PlaceSlot() {
  static std::optional<LogPlace> place;
  return place;
}

LogPlace& Place(ports::LogFiles& files) {
  std::optional<LogPlace>& slot = PlaceSlot();
  if (slot) return *slot;
  slot.emplace();
  if (const auto folder = files.Folder()) {
    const std::string start = folder.value + "/" + std::string(names::kLogName);
    slot->text = start + std::string(names::kLogEnding);
    slot->old_text = start + std::string(names::kOldLogEnding);
    slot->json = start + std::string(names::kJsonLogEnding);
    slot->old_json = start + std::string(names::kOldJsonLogEnding);
  }
  return *slot;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// "user:password@": the part in front of "@" reaches back to a blank or a "/".
std::string WithoutAuthorities(std::string_view text) {
  std::string result;
  std::size_t start = 0;  // of the word under way
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && !IsBlank(text[i]) && text[i] != '/') continue;
    std::string_view word = text.substr(start, i - start);
    const std::size_t at = word.rfind('@');
    const std::size_t colon = word.find(':');
    if (at != std::string_view::npos && colon < at) {
      result.append(word.substr(0, colon + 1)).append(kMask);
      word.remove_prefix(at);
    }
    result.append(word);
    if (i < text.size()) result.push_back(text[i]);
    start = i + 1;
  }
  return result;
}

// "password=value" up to a blank, a quote or what separates fields.
std::string WithoutNamedPasswords(std::string text) {
  constexpr std::array<std::string_view, 4> kNames = {"password=", "passwd=", "pwd=", "token="};
  const std::string lower = LowerCase(text);
  if (lower.size() != text.size()) return text;  // positions would not agree
  for (std::size_t i = text.size(); i-- > 0;) {
    for (const std::string_view name : kNames) {
      if (lower.compare(i, name.size(), name) != 0) continue;
      const std::size_t value = i + name.size();
      const std::size_t end = text.find_first_of("&;\"' \t\r\n", value);
      text.replace(value, std::min(end, text.size()) - value, kMask);
    }
  }
  return text;
}

std::string JsonString(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      result.append(1, '\\').append(1, c);
    } else if (c == '\n') {
      result.append("\\n");
    } else if (c == '\r') {
      result.append("\\r");
    } else if (static_cast<unsigned char>(c) < 0x20) {
      std::array<char, 8> code{};
      static_cast<void>(std::snprintf(code.data(), code.size(), "\\u%04x", c));
      result.append(code.data());
    } else {
      result.push_back(c);
    }
  }
  return result + "\"";
}

std::string TextValue(const LogField& field) {
  const bool is_word = !field.value.empty() &&
                       field.value.find_first_of(" \"\\=") == std::string::npos &&
                       std::none_of(field.value.begin(), field.value.end(),
                                    [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  return is_word ? field.value : JsonString(field.value);
}

struct TimeWords {
  std::string date;
  std::string time;
  std::string zone;
};

TimeWords WordsOf(const ports::LocalMoment& moment) {
  std::array<char, 48> date{};
  std::array<char, 48> time{};
  std::array<char, 32> zone{};
  const int offset = moment.utc_offset < 0 ? -moment.utc_offset : moment.utc_offset;
  static_cast<void>(std::snprintf(date.data(), date.size(), "%04d-%02d-%02d", moment.year,
                                  moment.month, moment.day));
  static_cast<void>(std::snprintf(time.data(), time.size(), "%02d:%02d:%02d.%03d", moment.hour,
                                  moment.minute, moment.second, moment.millisecond));
  static_cast<void>(std::snprintf(zone.data(), zone.size(), "%c%02d:%02d",
                                  moment.utc_offset < 0 ? '-' : '+', offset / 60, offset % 60));
  return {date.data(), time.data(), zone.data()};
}

// What is no UTF-8 becomes U+FFFD.
std::string Cleaned(std::string_view value) {
  return Utf16ToUtf8(Utf8ToUtf16(WithoutPasswords(value)));
}

void Write(ports::LogFiles& files, std::string_view event, std::initializer_list<LogField> fields) {
  LogPlace& place = Place(files);
  if (place.text.empty()) return;
  const TimeWords now = WordsOf(files.Now());
  const std::string process = std::to_string(files.OwnProcess());
  std::string text = now.date + " " + now.time + " " + now.zone + " " + process + " ";
  std::string json = "{\"time\":\"" + now.date + "T" + now.time + now.zone +
                     "\",\"process\":" + process + ",\"event\":\"";
  text.append(event);
  json.append(event).append("\"");
  for (LogField field : fields) {
    if (!field.is_plain) field.value = Cleaned(field.value);
    text.append(" ").append(field.name).append("=").append(TextValue(field));
    json.append(",\"").append(field.name).append("\":");
    json.append(field.is_plain ? field.value : JsonString(field.value));
  }
  text.append(files.LineEnd());
  json.append("}\n");
  place.is_written = files.Append(place.text, text, kLimit, place.old_text).ok;
  static_cast<void>(files.Append(place.json, json, kLimit, place.old_json));
}

}  // namespace

void LogEvent(std::string_view event, std::initializer_list<LogField> fields) noexcept {
  try {
    if (ports::LogFiles* const files = ports::CurrentPorts().log_files)
      Write(*files, event, fields);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a log never stops what it records
  }
}

std::string RunLogPath() {
  const std::optional<LogPlace>& place = PlaceSlot();
  return place && place->is_written ? place->text : std::string();
}

std::string WithoutPasswords(std::string_view text) {
  return WithoutNamedPasswords(WithoutAuthorities(text));
}

void ForgetRunLog() {
  PlaceSlot().reset();
}

}  // namespace tmw
