#include "foundation/path_guard.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <vector>

#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/foundation_texts.h"
#include "foundation/text.h"

namespace tmw {
namespace {

namespace texts = foundation_texts;

constexpr const char* kModule = "mPathGuard";
constexpr std::size_t kLongestQuotedUnits = 100;

// Why a name is refused; empty when it is not.
using Reason = std::string_view;

bool IsControl(char16_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

// Direction marks, line ends and zero-width characters, which make a message show another name.
bool IsInvisible(char16_t c) {
  return c == 0x00AD || c == 0x061C || (c >= 0x200B && c <= 0x200F) ||
         (c >= 0x2028 && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF;
}

bool IsBlank(char16_t c) {
  return c == u' ' || c == 0x00A0;
}

bool IsSeparator(char16_t c) {
  return c == u'/' || c == u'\\';
}

bool IsPortDigit(char16_t c) {
  return (c >= u'1' && c <= u'9') || c == 0x00B9 || c == 0x00B2 || c == 0x00B3;
}

// Devices keep their meaning in every folder, in any letter case and with any extension.
bool IsDevice(std::u16string_view name) {
  static constexpr std::array<std::u16string_view, 7> kDevices = {
      u"con", u"prn", u"aux", u"nul", u"conin$", u"conout$", u"clock$"};
  std::u16string base(name.substr(0, name.find(u'.')));
  while (!base.empty() && IsBlank(base.back()))
    base.pop_back();
  std::transform(base.begin(), base.end(), base.begin(),
                 [](char16_t c) { return static_cast<char16_t>(LowerCaseCodePoint(c)); });
  if (std::find(kDevices.begin(), kDevices.end(), base) != kDevices.end()) return true;
  return base.size() == 4 && (base.starts_with(u"com") || base.starts_with(u"lpt")) &&
         IsPortDigit(base.back());
}

Reason CheckCharacters(std::u16string_view name) {
  constexpr std::u16string_view kReserved = u"<>\"|?*";
  for (const char16_t c : name) {
    if (IsControl(c)) return texts::kControlCharacter;
    if (IsInvisible(c)) return texts::kInvisibleCharacter;
    if (IsSeparator(c)) return texts::kSeparatorInside;
    if (c == u':') return texts::kColonInside;
    if (kReserved.find(c) != std::u16string_view::npos) return texts::kReservedCharacter;
  }
  return {};
}

Reason CheckPart(std::string_view name) {
  if (name.empty()) return texts::kEmptyName;
  const std::optional<std::u16string> units = TryUtf8ToUtf16(name);
  if (!units) return texts::kNotUtf8;
  if (const Reason reason = CheckCharacters(*units); !reason.empty()) return reason;
  if (name == "." || name == "..") return texts::kMeansFolder;
  if (IsBlank(units->front())) return texts::kBlankAtStart;
  if (IsBlank(units->back())) return texts::kBlankAtEnd;
  if (units->back() == u'.') return texts::kDotAtEnd;
  if (IsDevice(*units)) return texts::kMeansDevice;
  if (units->size() > kLongestNameUnits || name.size() > kLongestNameBytes)
    return texts::kNameTooLong;
  return {};
}

// The name in a form that can be shown: malformed and invisible characters replaced, a long name
// cut.
std::string Shown(std::string_view name) {
  std::u16string units = Utf8ToUtf16(name.substr(0, kLongestPathBytes));
  std::replace_if(
      units.begin(), units.end(), [](char16_t c) { return IsControl(c) || IsInvisible(c); },
      u'\xFFFD');
  if (units.size() > kLongestQuotedUnits) units.replace(kLongestQuotedUnits, units.npos, u"...");
  return Quoted(Utf16ToUtf8(units));
}

GuardVerdict Verdict(std::string_view title, std::string_view name, std::string_view reason) {
  if (reason.empty()) return {};
  return {std::string(title) + Shown(name) + ": " + std::string(reason) + "."};
}

// The reason of a name of several parts says which part it is about.
std::string ReasonOfPart(std::string_view part) {
  const Reason reason = CheckPart(part);
  if (reason.empty()) return {};
  return texts::OfPart(Shown(part), reason);
}

// Where a path begins, and the names that lead on from there.
struct Place {
  std::string anchor;  // "c:", "\\" or "/"; empty when the path is not absolute
  std::vector<std::string> parts;

  bool IsWindows() const { return anchor.size() == 2; }
};

bool IsByteSeparator(char c) {
  return c == '/' || c == '\\';
}

Place Locate(std::string_view path) {
  const bool is_rooted = !path.empty() && IsByteSeparator(path[0]);
  Place place;
  if (path.size() > 2 && path[1] == ':' && IsByteSeparator(path[2])) {
    place.anchor = LowerCase(path.substr(0, 2));
    path.remove_prefix(2);
  } else if (is_rooted && path.size() > 1 && path[0] == '\\' && path[1] == '\\') {
    place.anchor = "\\\\";
  } else if (is_rooted && path[0] == '/') {
    place.anchor = "/";
  }
  std::string unified(path);
  std::replace(unified.begin(), unified.end(), '\\', '/');
  for (std::string& part : Split(unified, "/")) {
    if (!part.empty()) place.parts.push_back(std::move(part));
  }
  return place;
}

bool LiesUnder(const Place& place, const Place& root) {
  if (root.anchor.empty() || place.anchor != root.anchor) return false;
  if (place.parts.size() < root.parts.size()) return false;
  return std::equal(root.parts.begin(), root.parts.end(), place.parts.begin(),
                    [&](const std::string& a, const std::string& b) {
                      return root.IsWindows() ? EqualIgnoringCase(a, b) : a == b;
                    });
}

void Require(const GuardVerdict& verdict) {
  if (!verdict.IsAccepted()) RaiseProgramError(verdict.message);
}

}  // namespace

GuardVerdict CheckFileName(std::string_view name) {
  return Verdict(texts::kBadFileName, name, CheckPart(name));
}

GuardVerdict CheckRelativeName(std::string_view name) {
  if (name.find('/') == std::string_view::npos) return CheckFileName(name);
  if (name.size() > kLongestPathBytes)
    return Verdict(texts::kBadFileName, name, texts::kNameTooLong);
  for (const std::string& part : Split(name, "/")) {
    const std::string reason = ReasonOfPart(part);
    if (!reason.empty()) return Verdict(texts::kBadFileName, name, reason);
  }
  return {};
}

GuardVerdict CheckFolderUnderRoot(std::string_view folder, std::string_view root) {
  if (folder.size() > kLongestPathBytes)
    return Verdict(texts::kBadFolder, folder, texts::kFolderNameTooLong);
  const Place place = Locate(folder);
  const Place root_place = Locate(root);
  if (!LiesUnder(place, root_place))
    return Verdict(texts::kBadFolder, folder, texts::OutsideOf(Shown(root)));
  const auto first = std::next(place.parts.begin(), std::ssize(root_place.parts));
  for (auto part = first; part != place.parts.end(); ++part) {
    const std::string reason = ReasonOfPart(*part);
    if (!reason.empty()) return Verdict(texts::kBadFolder, folder, reason);
  }
  return {};
}

void RequireFileName(std::string_view name) try { Require(CheckFileName(name)); } catch (...) {
  ReRaiseError(kModule, "RequireFileName");
}

void RequireRelativeName(std::string_view name) try {
  Require(CheckRelativeName(name));
} catch (...) {
  ReRaiseError(kModule, "RequireRelativeName");
}

void RequireFolderUnderRoot(std::string_view folder, std::string_view root) try {
  Require(CheckFolderUnderRoot(folder, root));
} catch (...) {
  ReRaiseError(kModule, "RequireFolderUnderRoot");
}

}  // namespace tmw
