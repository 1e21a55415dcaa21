#include "services/message_boxes.h"

#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/box_titles.h"

namespace tmw {

void ShowInformation(const char* title, const std::string& text) {
  ports::CurrentPorts().front_end->ShowMessage(ports::MessageKind::kInformation, title, text);
}

void ShowWarning(const char* title, const std::string& text) {
  ports::CurrentPorts().front_end->ShowMessage(ports::MessageKind::kWarning, title, text);
}

void DownloadError(const std::string& message) {
  ShowWarning(box_titles::kDownloadError, message);
}

}  // namespace tmw
