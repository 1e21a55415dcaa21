#pragma once

namespace tmw {

// The module that the procedures of an update run name in an error's frames, in whatever room and
// file they lie: support knows them by it.
inline constexpr const char* kRunModule = "KsUpdater";

}  // namespace tmw
