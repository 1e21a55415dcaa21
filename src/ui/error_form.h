#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/error_environment.h"
#include "ports/error_view.h"

namespace tmw {

// Shows an error that ends here: the message in a short view and, on request, a detailed text that
// can be sent to support. The view only displays.
class ErrorForm final : public ErrorWindow, private ports::ErrorViewEvents {
 public:
  // Modal; a view that nobody can answer prints the detailed text.
  void Execute(const std::string& message, const std::string& chain, std::int32_t code,
               const std::string& caption) override;

  // Sets both texts. Sections of the message are separated by the character with code 1.
  void Compose(const std::string& message, const std::string& chain, std::int32_t code);

  // The message's first section.
  const std::string& ShortText() const { return short_text_; }

  // All sections, the chain of frames, the code, the program's build and the system's version.
  const std::string& FullText() const { return full_text_; }

  bool DetailView() const { return detail_view_; }

 private:
  void OnDetails() override;
  void OnCopy() override;
  void ApplyView();

  std::unique_ptr<ports::ErrorView> view_;  // while it is shown
  std::string short_text_;
  std::string full_text_;
  bool detail_view_ = false;
};

}  // namespace tmw
