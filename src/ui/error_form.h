#pragma once

#include <cstdint>
#include <string>

#include "foundation/error_handling.h"

namespace tmw {

// The window that ends the life of an error: the message in a short view and, on request, a
// detailed text that can be sent to support. It is shown as a box of the front end whose question
// is the details button; where nobody can answer, the detailed text is printed.
class ErrorForm final : public ErrorWindow {
 public:
  void Execute(const std::string& message, const std::string& chain, std::int32_t code,
               const std::string& caption) override;

  // Sets both texts. Sections of the message are separated by the character with code 1.
  void Compose(const std::string& message, const std::string& chain, std::int32_t code);

  // The details button: to the other view.
  void ToggleDetails() { detail_view_ = !detail_view_; }

  // The message's first section.
  const std::string& ShortText() const { return short_text_; }

  // All sections, the chain of frames, the code, the program's build and the system's version.
  const std::string& FullText() const { return full_text_; }

  bool DetailView() const { return detail_view_; }
  const std::string& VisibleText() const { return detail_view_ ? full_text_ : short_text_; }
  const char* DetailsButtonText() const { return detail_view_ ? "Подробнее  <<" : "Подробнее  >>"; }

 private:
  std::string short_text_;
  std::string full_text_;
  bool detail_view_ = false;
};

}  // namespace tmw
