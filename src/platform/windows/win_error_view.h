#pragma once

#include <memory>

#include "platform/windows/view_window.h"
#include "ports/error_view.h"

namespace platform {

// The error window; the open windows outlive it.
std::unique_ptr<ports::ErrorView> MakeWinErrorView(OpenWindows& open);

// Control identifiers.
inline constexpr int kErrorLabelId = 100;
inline constexpr int kErrorShortId = 101;
inline constexpr int kErrorFullId = 102;
inline constexpr int kErrorDetailsId = 103;
inline constexpr int kErrorCopyId = 104;
inline constexpr int kErrorCloseId = 105;
inline constexpr int kErrorFullNameId = 106;
inline constexpr int kErrorAdviceId = 107;
inline constexpr int kErrorLogLabelId = 108;
inline constexpr int kErrorLogPathId = 109;

}  // namespace platform
