#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ports/error_view.h"
#include "ports/progress_view.h"

namespace ports {

enum class MessageKind { kWarning, kInformation };

// Everything that is said to the user and asked of him, and the events of his windows. All calls
// come from the one thread of the updater; boxes are modal.
class FrontEnd {
 public:
  virtual ~FrontEnd() = default;

  // False where nobody can answer: the program runs without a terminal, or in its background.
  virtual bool CanAsk() = 0;

  // A box with an OK button. Where nobody can answer it is printed, not awaited.
  virtual void ShowMessage(MessageKind kind, const std::string& title, const std::string& text) = 0;

  // A question with the buttons yes and no; true is yes. Where nobody can answer: no.
  virtual bool AskYesNo(const std::string& title, const std::string& question) = 0;

  // A line of text from the user, possibly empty; nothing when he declined or nobody can answer. A
  // secret (a password) is not shown while it is typed.
  virtual std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                             bool is_secret) = 0;

  // Lets pending events of the windows run; returns at once when there are none.
  virtual void RunPendingEvents() = 0;

  // Gives the mouse cursor its default shape.
  virtual void ResetCursor() = 0;

  // A window of a run, and a window of an error; not on the screen yet. The front end outlives
  // them. While the window of a run is open, boxes belong to it.
  virtual std::unique_ptr<ProgressView> MakeProgressView() = 0;
  virtual std::unique_ptr<ErrorView> MakeErrorView() = 0;
};

}  // namespace ports
