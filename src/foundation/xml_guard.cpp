#include "foundation/xml_guard.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "foundation/encodings.h"
#include "foundation/foundation_texts.h"
#include "ports/xml_document.h"

namespace tmw {
namespace {

namespace texts = foundation_texts;

constexpr char kOther = 'x';  // stands for every character that is not ASCII

// A document as ASCII characters, one for each byte or UTF-16 unit.
class Characters {
 public:
  explicit Characters(std::string_view bytes) : bytes_(bytes) {
    const auto begins = [&](std::string_view mark) { return bytes.starts_with(mark); };
    using namespace std::string_view_literals;
    const bool is_little = begins("\xFF\xFE") || begins("<\0"sv);
    const bool is_big = begins("\xFE\xFF") || begins("\0<"sv);
    if (is_little || is_big) {
      width_ = 2;
      low_ = is_little ? 0 : 1;
    }
  }

  // Whether every "<" is seen as one. Encodings of four bytes are full of zeros; the last one is
  // what "<?xm" is in EBCDIC.
  bool CanBeRead() const {
    for (std::size_t i = 0; i < Size(); ++i)
      if ((*this)[i] == '\0') return false;
    return !bytes_.starts_with("\x4C\x6F\xA7\x94");
  }

  std::size_t Size() const { return bytes_.size() / width_; }

  char operator[](std::size_t i) const {
    const auto low = static_cast<unsigned char>(bytes_[i * width_ + low_]);
    const bool is_ascii = low < 0x80 && (width_ == 1 || bytes_[i * width_ + 1 - low_] == '\0');
    return is_ascii ? static_cast<char>(low) : kOther;
  }

  bool HasAt(std::size_t i, std::string_view text) const {
    if (Size() - i < text.size()) return false;
    for (std::size_t k = 0; k < text.size(); ++k)
      if ((*this)[i + k] != text[k]) return false;
    return true;
  }

 private:
  std::string_view bytes_;
  std::size_t width_ = 1;
  std::size_t low_ = 0;  // which of two bytes is the low one
};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

class Scan {
 public:
  Scan(std::string_view bytes, const std::function<bool()>& may_go_on)
      : text_(bytes), may_go_on_(may_go_on) {}

  const char* Run() {
    constexpr std::size_t kStretch = 65'536;
    if (!text_.CanBeRead()) return texts::kXmlEncoding;
    std::size_t asked_at = 0;
    while (at_ < text_.Size() && danger_ == nullptr) {
      if (may_go_on_ && at_ >= asked_at) {
        if (!may_go_on_()) return texts::kXmlCancelled;
        asked_at = at_ + kStretch;
      }
      if (text_[at_] == '<') {
        TakeMarkup();
      } else {
        ++at_;
      }
    }
    return danger_;
  }

 private:
  void TakeMarkup() {
    if (text_.HasAt(at_, "<!--")) {
      SkipPast(4, "-->");
    } else if (text_.HasAt(at_, "<![CDATA[")) {
      SkipPast(9, "]]>");
    } else if (text_.HasAt(at_, "<?")) {
      TakeInstruction();
    } else if (text_.HasAt(at_, "<!")) {
      TakeDocumentType();
    } else if (text_.HasAt(at_, "</")) {
      depth_ = std::max(depth_ - 1, 0);
      SkipPast(2, ">");
    } else {
      TakeElement();
    }
  }

  void SkipPast(std::size_t from, std::string_view end) {
    for (at_ += from; at_ < text_.Size(); ++at_) {
      if (!text_.HasAt(at_, end)) continue;
      at_ += end.size();
      return;
    }
  }

  // Of the XML declaration the encoding matters.
  void TakeInstruction() {
    const std::size_t begin = at_;
    SkipPast(2, "?>");
    if (!text_.HasAt(begin, "<?xml")) return;
    std::string declaration;
    for (std::size_t i = begin; i < std::min(at_, begin + 200); ++i)
      declaration += text_[i];
    const std::size_t place = declaration.find("encoding");
    if (place == std::string::npos) return;
    const std::size_t quote = declaration.find_first_of("'\"", place);
    if (quote == std::string::npos) return;
    const std::string name = LowerCase(declaration.substr(quote + 1));
    constexpr std::array<std::string_view, 7> kKnown = {
        "utf-8", "utf-16", "windows-125", "us-ascii", "iso-8859-", "koi8-", "cp866"};
    if (std::none_of(kKnown.begin(), kKnown.end(),
                     [&](std::string_view known) { return name.starts_with(known); }))
      danger_ = texts::kXmlEncoding;
  }

  void TakeDocumentType() {
    for (++at_; at_ < text_.Size() && text_[at_] != '>'; ++at_) {
      if (text_[at_] == '[') danger_ = texts::kXmlDeclarations;
      if (text_.HasAt(at_, "<!ENTITY")) danger_ = texts::kEntitiesRefused;
      if (text_[at_] == '"' || text_[at_] == '\'') SkipQuoted();
    }
  }

  // Stops at the closing quote, or at a "<", which no value may have.
  void SkipQuoted() {
    const char quote = text_[at_++];
    while (at_ < text_.Size() && text_[at_] != quote && text_[at_] != '<')
      ++at_;
  }

  void TakeElement() {
    int attributes = 0;
    int name = 0;
    char last = '<';  // not a blank
    for (++at_; at_ < text_.Size() && text_[at_] != '>'; ++at_) {
      const char c = text_[at_];
      if (last == '=' && (c == '"' || c == '\'')) {
        SkipQuoted();
      } else if (c == '=') {
        ++attributes;
      }
      name = IsBlank(c) || c == '=' ? 0 : name + 1;
      if (!IsBlank(c)) last = c;
      if (attributes > kMaxXmlAttributes) danger_ = texts::kXmlAttributes;
      if (name > kMaxXmlName) danger_ = texts::kXmlName;
      if (danger_ != nullptr) return;
    }
    ++at_;
    if (last != '/') ++depth_;
    if (depth_ > ports::kXmlMaxDepth) danger_ = texts::kXmlDepth;
    if (++elements_ > kMaxXmlElements) danger_ = texts::kXmlElements;
  }

  Characters text_;
  const std::function<bool()>& may_go_on_;
  std::size_t at_ = 0;
  int depth_ = 0;
  int elements_ = 0;
  const char* danger_ = nullptr;
};

}  // namespace

const char* FindXmlDanger(std::string_view bytes, const std::function<bool()>& may_go_on) {
  return Scan(bytes, may_go_on).Run();
}

}  // namespace tmw
