#include "platform/factories.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <span>
#include <string_view>

#include "foundation/encodings.h"
#include "platform/linux/error_text_tables.h"
#include "ports/error_texts.h"

namespace platform {
namespace {

using error_text_tables::Entry;

constexpr ports::ErrorTexts::Module kSystemModule = 0;

struct TextModule {
  std::string_view name;
  std::span<const Entry> entries;
};

// Index 0 is the system; the others have the names of the Windows modules whose codes they explain.
const std::array<TextModule, 3>& Modules() {
  static const std::array<TextModule, 3> modules = {{
      {"", error_text_tables::SystemTexts()},
      {"wininet.dll", error_text_tables::InternetTexts()},
      {"dao360.dll", error_text_tables::DatabaseTexts()},
  }};
  return modules;
}

// The C library's words for a code that our table lacks; "Unknown error N" counts as no text.
std::string LibraryText(ports::SystemCode code) {
  const char* const name = strerrorname_np(code);
  if (name == nullptr) return {};
  return std::string(strerrordesc_np(code)) + " (" + name + ").";
}

class LinuxErrorTexts final : public ports::ErrorTexts {
 public:
  std::optional<Module> FindLoadedModule(const std::string& name) override {
    const auto& modules = Modules();
    const std::string wanted = tmw::LowerCase(name);
    const auto* const found =
        std::find_if(modules.begin() + 1, modules.end(),
                     [&](const TextModule& module) { return module.name == wanted; });
    if (found == modules.end()) return std::nullopt;
    return static_cast<Module>(std::distance(modules.begin(), found));
  }

  std::string Format(ports::SystemCode code, Module module) override {
    if (module >= Modules().size()) return {};
    const auto entries = Modules()[module].entries;
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const Entry& entry) { return entry.code == code; });
    std::string text;
    if (found != entries.end()) {
      text = found->text;
    } else if (module == kSystemModule) {
      text = LibraryText(code);
    }
    // System texts end with a line break, as they do on Windows.
    return text.empty() ? text : text + "\r\n";
  }

  ports::CodeMeaning MeaningOf(ports::SystemCode code) const override {
    switch (code) {
      case ENOSPC:
      case EDQUOT:
        return ports::CodeMeaning::kNoSpace;
      case EACCES:
      case EPERM:
      case EROFS:
        return ports::CodeMeaning::kNoRights;
      case EBUSY:
      case ETXTBSY:
        return ports::CodeMeaning::kHeld;
      default:
        return ports::CodeMeaning::kOther;
    }
  }
};

}  // namespace

std::unique_ptr<ports::ErrorTexts> MakeErrorTexts() {
  return std::make_unique<LinuxErrorTexts>();
}

}  // namespace platform
