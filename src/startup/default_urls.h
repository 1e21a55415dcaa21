#pragma once

// The maker's update servers, used when neither the settings nor the command line name another one.
// They can be set at configure time (TMW_PRIMARY_URL, TMW_FALLBACK_URL).
#ifndef TMW_PRIMARY_URL
#define TMW_PRIMARY_URL "https://update.tamrin.example/web_update/"
#endif
#ifndef TMW_FALLBACK_URL
#define TMW_FALLBACK_URL "https://update2.tamrin.example/web_update/"
#endif

namespace tmw {

inline constexpr const char* kPrimaryUrl = TMW_PRIMARY_URL;

// The second address of a run, asked only while the first one is kPrimaryUrl.
inline constexpr const char* kFallbackUrl = TMW_FALLBACK_URL;

}  // namespace tmw
