#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ports/error_view.h"
#include "ports/progress_view.h"

namespace ports {

enum class MessageKind { kWarning, kInformation };

// Everything that is shown to users and asked of them, and the events of the windows. All calls
// come from the updater's one thread; boxes are modal.
class FrontEnd {
 public:
  virtual ~FrontEnd() = default;

  // Returns false if nobody can answer: the program runs without a terminal or in the background.
  virtual bool CanAsk() = 0;

  // A box with an OK button; if nobody can answer, its text is printed and nothing is waited for.
  // The advice, which may be empty, says what the user can do next and stands apart below the text;
  // a box with one lets the user copy all that it shows.
  virtual void ShowMessage(MessageKind kind, const std::string& title, const std::string& text,
                           const std::string& advice) = 0;

  // A question with the buttons yes and no. Returns true for yes, false also if nobody can answer.
  virtual bool AskYesNo(const std::string& title, const std::string& question) = 0;

  // A line of text from the user, possibly empty; nothing if they declined or nobody can answer. A
  // secret (a password) is not shown while it is typed.
  virtual std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                             bool is_secret) = 0;

  // The path of a file to write, which may exist: the user has agreed to replace it. Nothing if
  // they declined or nobody can answer. A terminal takes the suggested name.
  virtual std::optional<std::string> AskSavePlace(const std::string& title,
                                                  const std::string& suggested_name) = 0;

  // Processes the pending events of the windows; returns at once if there are none.
  virtual void RunPendingEvents() = 0;

  // Gives the mouse cursor its default shape.
  virtual void ResetCursor() = 0;

  // A progress window and an error window, not on the screen yet. The front end outlives them.
  // Boxes belong to the progress window while it is open.
  virtual std::unique_ptr<ProgressView> MakeProgressView() = 0;
  virtual std::unique_ptr<ErrorView> MakeErrorView() = 0;
};

}  // namespace ports
