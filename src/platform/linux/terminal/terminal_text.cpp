#include "platform/linux/terminal/terminal_text.h"

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <wchar.h>   // NOLINT(modernize-deprecated-headers): wcwidth is POSIX

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "foundation/encodings.h"
#include "foundation/unique_handle.h"

namespace platform {
namespace {

struct ConverterTraits {
  using Type = iconv_t;
  static Type Invalid() {
    return reinterpret_cast<Type>(-1);  // NOLINT(performance-no-int-to-ptr): the call's own value
  }
  static void Close(Type converter) { iconv_close(converter); }
};

struct LocaleTraits {
  using Type = locale_t;
  static Type Invalid() { return nullptr; }
  static void Close(Type locale) { freelocale(locale); }
};

// The encoding in the name of a locale ("ru_RU.KOI8-R@x"); empty when it has none.
std::string EncodingOfLocaleName() {
  for (const char* const variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    const std::string name = value;
    const std::size_t dot = name.find('.');
    if (dot == std::string::npos) return {};
    return name.substr(dot + 1, name.find('@', dot) - dot - 1);
  }
  return {};
}

// The system's widths of characters for the time of a scope, whatever the program's locale is.
class UnicodeWidths {
 public:
  UnicodeWidths() : saved_(uselocale(Locale())) {}
  UnicodeWidths(const UnicodeWidths&) = delete;
  UnicodeWidths& operator=(const UnicodeWidths&) = delete;
  ~UnicodeWidths() { uselocale(saved_); }

  static int Of(std::string_view character) {
    std::array<wchar_t, 2> wide{};
    mbstate_t state{};
    const std::size_t length = mbrtowc(wide.data(), character.data(), character.size(), &state);
    return length > character.size() ? 1 : std::max(wcwidth(wide[0]), 0);
  }

 private:
  // Without the system's Unicode locale every character counts as one column.
  static locale_t Locale() {
    static const tmw::UniqueHandle<LocaleTraits> kLocale(
        newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr));
    return kLocale.Get();
  }

  locale_t saved_;
};

struct Character {
  std::string_view bytes;
  int columns = 0;
};

std::vector<Character> CharactersOf(std::string_view text) {
  const UnicodeWidths widths;
  std::vector<Character> characters;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t end = i + 1;
    while (end < text.size() && tmw::ContinuesCharacter(text[end]))
      ++end;
    const std::string_view bytes = text.substr(i, end - i);
    const bool is_ascii = bytes.size() == 1 && static_cast<unsigned char>(bytes[0]) < 0x80;
    characters.push_back({bytes, is_ascii ? 1 : UnicodeWidths::Of(bytes)});
    i = end;
  }
  return characters;
}

int SumOfColumns(const std::vector<Character>& characters) {
  int columns = 0;
  for (const Character& character : characters)
    columns += character.columns;
  return columns;
}

}  // namespace

std::string EncodingOfLocale() {
  const tmw::UniqueHandle<LocaleTraits> locale(newlocale(LC_CTYPE_MASK, "", nullptr));
  const std::string encoding =
      locale ? nl_langinfo_l(CODESET, locale.Get()) : EncodingOfLocaleName();
  // The "C" locale says ASCII; terminals are UTF-8 all the same.
  return encoding.empty() || encoding == "ANSI_X3.4-1968" ? "UTF-8" : encoding;
}

std::string ConvertText(std::string_view text, const std::string& from, const std::string& to) {
  const tmw::UniqueHandle<ConverterTraits> converter(iconv_open(to.c_str(), from.c_str()));
  if (!converter) return std::string(text);
  std::string input(text);
  std::string result;
  char* in = input.data();
  std::size_t in_left = input.size();
  while (in_left > 0) {
    std::array<char, 512> buffer{};
    char* out = buffer.data();
    std::size_t out_left = buffer.size();
    const bool is_done =
        iconv(converter.Get(), &in, &in_left, &out, &out_left) != static_cast<std::size_t>(-1);
    const int code = errno;
    result.append(buffer.data(), buffer.size() - out_left);
    if (is_done || code == E2BIG) continue;
    result.push_back('?');
    do {
      ++in;
      --in_left;
    } while (from == "UTF-8" && in_left > 0 && tmw::ContinuesCharacter(*in));
  }
  return result;
}

std::string WithoutControls(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte < 0x20 && byte != '\n') || byte == 0x7F) continue;
    const bool is_pair = byte == 0xC2 && i + 1 < text.size();
    if (is_pair && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      ++i;
      continue;
    }
    plain.push_back(text[i]);
  }
  return plain;
}

int ColumnsOf(std::string_view text) {
  return SumOfColumns(CharactersOf(text));
}

std::string FitColumns(std::string_view text, int columns, std::string_view ellipsis) {
  const std::vector<Character> characters = CharactersOf(text);
  if (SumOfColumns(characters) <= columns) return std::string(text);
  const int room = std::max(columns - ColumnsOf(ellipsis), 0);
  int head_room = room / 3;
  int tail_room = room - head_room;
  std::string result;
  for (const Character& character : characters) {
    head_room -= character.columns;
    if (head_room < 0) break;
    result += character.bytes;
  }
  result += ellipsis;
  std::size_t tail = characters.size();
  while (tail > 0 && characters[tail - 1].columns <= tail_room)
    tail_room -= characters[--tail].columns;
  // Combining marks without their base character are skipped.
  while (tail < characters.size() && characters[tail].columns == 0)
    ++tail;
  for (; tail < characters.size(); ++tail)
    result += characters[tail].bytes;
  return result;
}

bool IsOneOf(std::string_view answer, std::span<const char* const> words) {
  return std::find(words.begin(), words.end(), answer) != words.end();
}

}  // namespace platform
