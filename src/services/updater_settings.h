#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace tmw {

// What the product's settings and the command line say about this run. Written once, when the
// command line is read.
struct UpdaterSettings {
  bool NoFinalMessage = false;              // "-y"
  bool IsRestartedAfterSelfUpdate = false;  // "-r"
  bool UseNormalExit = false;               // "-d"
  bool IsTempCopy = false;                  // "-t"
  bool IsElevated = false;                  // "-a": started again with administrator rights
  std::string Url;                          // "-w", else the custom or the primary default server
  bool IsDefaultUrl = false;                // Url is the primary default
  std::string OldProductVersion;            // "-v"
  std::string MainExeFile;                  // "-e"
  std::string MainExeParams;                // "-p"
  std::int32_t ProxyType = 0;               // 0..4
  std::string ProxyServer;                  // with ProxyType 3 only
  bool NoFtp = false;
  bool IsClientInstallation = false;
  bool IsNetworkInstallation = false;
};

namespace detail {
inline UpdaterSettings& SettingsSlot() {
  static UpdaterSettings settings;
  return settings;
}
}  // namespace detail

// The one process-wide record.
inline const UpdaterSettings& GetUpdaterSettings() {
  return detail::SettingsSlot();
}

// For the reader of the command line (and tests) only.
inline void SetUpdaterSettings(UpdaterSettings settings) {
  detail::SettingsSlot() = std::move(settings);
}

}  // namespace tmw
