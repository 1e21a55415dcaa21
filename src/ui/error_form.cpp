#include "ui/error_form.h"

#include "foundation/string_accumulator.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "platform/front_end.h"
#include "platform/ports.h"

namespace tmw {
namespace {

constexpr std::string_view kSectionSeparator = "\x01";
constexpr const char* kDefaultTitle = "Ошибка";

// On lines of its own behind what is there.
std::string DashLine() {
  std::string line(kCrLf);
  for (int i = 0; i < 50; ++i)
    line += "—";
  return line.append(kCrLf);
}

// A line whose value may not be had; an error window must not fail for it.
void AddLineIfKnown(StringAccumulator& text, std::string_view label, std::string (*get)()) {
  try {
    text.AddLine(std::string(label) + get());
  } catch (...) {  // NOLINT(bugprone-empty-catch): the text is complete without it
  }
}

}  // namespace

void ErrorForm::Compose(const std::string& message, const std::string& chain, std::int32_t code) {
  const std::vector<std::string> sections = Split(message, kSectionSeparator);
  short_text_ = sections.front();
  StringAccumulator text;
  text.Add(short_text_);
  for (std::size_t i = 1; i < sections.size(); ++i) {
    text.Add(DashLine());
    text.Add(sections[i]);
  }
  if (!chain.empty()) {
    text.Add(DashLine());
    text.AddLine("Стек:");
    text.Add(chain);
  }
  text.Add(DashLine());
  if (code != 0) text.AddLine("Код ошибки: " + std::to_string(code) + " (0x" + ToHex(code) + ")");
  AddLineIfKnown(text, "Сборка программы обновления: ", GetAppVersionString);
  AddLineIfKnown(text, "Версия Windows: ", GetOSVersionString);
  full_text_ = text.TakeText();
}

void ErrorForm::Execute(const std::string& message, const std::string& chain, std::int32_t code,
                        const std::string& caption) {
  Compose(message, chain, code);
  const std::string title = caption.empty() ? kDefaultTitle : caption;
  platform::FrontEnd& front_end = *platform::CurrentPorts().front_end;
  if (!front_end.CanAsk()) {
    front_end.ShowMessage(platform::MessageKind::kWarning, title, full_text_);
    return;
  }
  while (front_end.AskYesNo(
      title, VisibleText() + std::string(kCrLf) + std::string(kCrLf) + DetailsButtonText())) {
    ToggleDetails();
  }
}

}  // namespace tmw
