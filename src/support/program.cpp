#include "support/program.h"

#include <iostream>
#include <optional>

#include "foundation/error_handling.h"
#include "foundation/file_names.h"
#include "foundation/version.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "services/message_boxes.h"
#include "support/bundle.h"
#include "support/support_texts.h"

namespace support {
namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr const char* kOutputOption = "--output";

bool IsInTerminal() {
  return ports::CurrentPorts().processes->HasTerminal() ||
         !ports::CurrentPorts().front_end->CanAsk();
}

// Nothing if the user has changed their mind.
std::optional<std::string> ChooseTarget() {
  if (IsInTerminal()) return SuggestedName();
  return ports::CurrentPorts().front_end->AskSavePlace(texts::kTitle, SuggestedName());
}

int Save(const std::string& target) {
  try {
    MakeBundle(target);
  } catch (...) {
    const tmw::ProgramError error = tmw::CurrentError();
    if (IsInTerminal()) {
      std::cerr << error.Description << '\n';
    } else {
      tmw::ShowWarning(texts::kTitle, error.Description, tmw::KindOfNumber(error.Number));
    }
    return kFailed;
  }
  const std::string saved = texts::Saved(tmw::GetAbsoluteFileName(target));
  if (IsInTerminal()) {
    std::cout << saved << '\n' << texts::kSendIt << '\n';
  } else {
    tmw::ShowInformation(texts::kTitle, saved + "\r\n" + texts::kSendIt);
  }
  return kDone;
}

}  // namespace

int Run(const std::vector<std::string>& arguments) {
  if (arguments.size() == 1 && arguments[0] == "--help") {
    std::cout << texts::kHelp << '\n';
    return kDone;
  }
  if (arguments.size() == 1 && arguments[0] == "--version") {
    std::cout << "TmSupport " << tmw::GetAppVersionString() << '\n';
    return kDone;
  }
  if (arguments.size() == 2 && arguments[0] == kOutputOption) return Save(arguments[1]);
  if (!arguments.empty()) {
    std::cerr << texts::UnknownArgument(arguments[0]) << '\n';
    return kWrongUsage;
  }
  const std::optional<std::string> target = ChooseTarget();
  return target ? Save(*target) : kDone;
}

}  // namespace support
