#include "jetsql/text_input.h"

#include <array>
#include <cstddef>
#include <iostream>
#include <iterator>
#include <memory>
#include <utility>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jetsql/jetsql_texts.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "tools/command_line.h"
#include "tools/fill.h"

namespace jetsql {
namespace {

constexpr std::size_t kPiece = 1U << 18U;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf16BigEndianMark = "\xFE\xFF";

// Bytes of the character that a lead byte begins; 1 for any other byte.
std::size_t CharacterLength(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

// How much of the bytes ends with a whole character.
std::size_t WholeCharacters(std::string_view bytes) {
  for (std::size_t back = 1; back <= 3 && back <= bytes.size(); ++back) {
    const char c = bytes[bytes.size() - back];
    if (tmw::ContinuesCharacter(c)) continue;
    return CharacterLength(c) > back ? bytes.size() - back : bytes.size();
  }
  return bytes.size();
}

// Makes UTF-8 of pieces of bytes.
class Decoder {
 public:
  Decoder(Encoding encoding, std::string name) : encoding_(encoding), name_(std::move(name)) {}

  std::string Decode(std::string bytes, bool is_last) {
    bytes.insert(0, std::exchange(rest_, {}));
    const std::size_t whole = is_last ? bytes.size() : WholeLength(bytes);
    rest_ = bytes.substr(whole);
    bytes.resize(whole);
    switch (encoding_) {
      case Encoding::k1251:
        return tmw::CodePageToUtf8(tmw::CodePage::k1251, bytes);
      case Encoding::kUtf16BigEndian:
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
          std::swap(bytes[i], bytes[i + 1]);
        [[fallthrough]];
      case Encoding::kUtf16:
        return tmw::Utf16ToUtf8(tmw::BytesToUtf16(bytes));
      case Encoding::kUtf8:
        break;
    }
    if (!tmw::IsWellFormedUtf8(bytes))
      tmw::RaiseProgramError(Say(texts::kNotUtf8, {tmw::Quoted(name_)}));
    return bytes;
  }

 private:
  std::size_t WholeLength(std::string_view bytes) const {
    if (encoding_ == Encoding::k1251) return bytes.size();
    if (encoding_ == Encoding::kUtf8) return WholeCharacters(bytes);
    std::size_t whole = bytes.size() / 2 * 2;
    // A pair of surrogates stays together.
    const std::size_t high = encoding_ == Encoding::kUtf16BigEndian ? 2 : 1;
    if (whole >= 2 && (static_cast<unsigned char>(bytes[whole - high]) & 0xFCU) == 0xD8) whole -= 2;
    return whole;
  }

  Encoding encoding_;
  std::string name_;
  std::string rest_;
};

std::unique_ptr<ports::File> OpenFile(const std::string& path) {
  auto opened = ports::CurrentPorts().files->Open(path, ports::FileMode::kRead);
  if (!opened)
    tmw::RaiseApiErrorWithMessage(Say(texts::kCannotRead, {tmw::Quoted(path)}), opened.code);
  return std::move(opened.value);
}

std::string ReadPiece(ports::File& file, const std::string& path) {
  std::string piece(kPiece, '\0');
  const auto got = file.Read(piece.data(), piece.size());
  if (!got) tmw::RaiseApiErrorWithMessage(Say(texts::kCannotRead, {tmw::Quoted(path)}), got.code);
  piece.resize(got.value);
  return piece;
}

// What the first bytes say; nothing if they leave it open.
std::optional<Encoding> MarkOf(std::string_view beginning) {
  if (beginning.starts_with(kUtf8Mark)) return Encoding::kUtf8;
  // A text that begins with a letter of ASCII in UTF-16 has a zero there.
  if (beginning.starts_with(kUtf16Mark) || (beginning.size() > 1 && beginning[1] == '\0'))
    return Encoding::kUtf16;
  if (beginning.starts_with(kUtf16BigEndianMark) || (beginning.size() > 1 && beginning[0] == '\0'))
    return Encoding::kUtf16BigEndian;
  return std::nullopt;
}

std::size_t MarkLength(std::string_view beginning) {
  if (beginning.starts_with(kUtf8Mark)) return kUtf8Mark.size();
  const bool is_utf16 =
      beginning.starts_with(kUtf16Mark) || beginning.starts_with(kUtf16BigEndianMark);
  return is_utf16 ? kUtf16Mark.size() : 0;
}

Encoding Judged(const Utf8Judge& judge) {
  return judge.IsWellFormed() ? Encoding::kUtf8 : Encoding::k1251;
}

}  // namespace

std::optional<Encoding> EncodingOf(const std::optional<std::string>& name) {
  if (!name) return std::nullopt;
  if (*name == "utf8" || *name == "utf-8") return Encoding::kUtf8;
  if (*name == "1251") return Encoding::k1251;
  if (*name == "utf16") return Encoding::kUtf16;
  throw tools::UsageError(Say(texts::kUnknownEncoding, {*name}));
}

void Utf8Judge::Add(std::string_view bytes) {
  if (!is_well_formed_) return;
  std::string whole = std::exchange(rest_, {});
  whole += bytes;
  const std::size_t length = WholeCharacters(whole);
  rest_ = whole.substr(length);
  whole.resize(length);
  is_well_formed_ = tmw::IsWellFormedUtf8(whole);
}

TextSource ReadTextFile(const std::string& path, std::optional<Encoding> encoding) {
  std::shared_ptr<ports::File> file = OpenFile(path);
  auto first = std::make_shared<std::string>(ReadPiece(*file, path));
  if (!encoding || MarkLength(*first) != 0) {
    if (const auto marked = MarkOf(*first)) encoding = marked;
  }
  if (!encoding) {
    Utf8Judge judge;
    for (std::string piece = *first; !piece.empty(); piece = ReadPiece(*file, path))
      judge.Add(piece);
    encoding = Judged(judge);
    file = OpenFile(path);
    *first = ReadPiece(*file, path);
  }
  first->erase(0, MarkLength(*first));
  auto decoder = std::make_shared<Decoder>(*encoding, path);
  auto is_over = std::make_shared<bool>(false);
  return [file, first, decoder, is_over, path] {
    // A piece may end before its first character does.
    while (!*is_over) {
      std::string bytes = std::exchange(*first, {});
      if (bytes.empty()) bytes = ReadPiece(*file, path);
      *is_over = bytes.empty();
      std::string text = decoder->Decode(std::move(bytes), *is_over);
      if (!text.empty()) return text;
    }
    return std::string();
  };
}

TextSource ReadStandardInput(std::optional<Encoding> encoding) {
  if (!encoding) {
    const std::string bytes{std::istreambuf_iterator<char>(std::cin), {}};
    Utf8Judge judge;
    judge.Add(bytes);
    Decoder decoder(MarkOf(bytes).value_or(Judged(judge)), "stdin");
    return ReadText(decoder.Decode(bytes.substr(MarkLength(bytes)), true));
  }
  const auto read = [] {
    std::string bytes(kPiece, '\0');
    std::cin.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::cin.gcount()));
    return bytes;
  };
  auto first = std::make_shared<std::string>(read());
  if (const std::size_t mark = MarkLength(*first); mark != 0) {
    encoding = MarkOf(*first);
    first->erase(0, mark);
  }
  auto decoder = std::make_shared<Decoder>(*encoding, "stdin");
  auto is_over = std::make_shared<bool>(false);
  return [read, first, decoder, is_over] {
    while (!*is_over) {
      std::string bytes = std::exchange(*first, {});
      if (bytes.empty()) bytes = read();
      *is_over = bytes.empty();
      std::string text = decoder->Decode(std::move(bytes), *is_over);
      if (!text.empty()) return text;
    }
    return std::string();
  };
}

TextSource ReadText(std::string text) {
  return [held = std::move(text)]() mutable { return std::exchange(held, {}); };
}

}  // namespace jetsql
