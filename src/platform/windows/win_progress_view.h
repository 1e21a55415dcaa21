#pragma once

#include <memory>

#include "platform/windows/view_window.h"
#include "ports/progress_view.h"

namespace platform {

// The progress window; the open windows outlive it.
std::unique_ptr<ports::ProgressView> MakeWinProgressView(OpenWindows& open);

// Control identifiers. The button is not IDCANCEL: Esc and the close box work while it is disabled.
inline constexpr int kProgressStageId = 100;
inline constexpr int kProgressBarId = 101;
inline constexpr int kProgressCounterId = 102;
inline constexpr int kProgressDetailId = 103;
inline constexpr int kProgressPaceId = 104;
inline constexpr int kProgressButtonId = 105;
inline constexpr int kProgressStepId = 106;
inline constexpr int kProgressComponentId = 107;
inline constexpr int kProgressUnitId = 108;

}  // namespace platform
