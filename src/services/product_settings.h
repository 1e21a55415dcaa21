#pragma once

#include <cstdint>
#include <string>

// The product's settings, for reading (module mTmRegistryParams). A missing key or value, and one
// of another type, gives the default; other failures of the store raise.
namespace tmw {

// Joined with one "\"; one trailing "\" of key and one leading "\" of sub_key are dropped. An empty
// sub_key gives key.
std::string ConcatenateRegistryKeys(const std::string& key, const std::string& sub_key);

// machine_wide: the machine's settings, otherwise the user's; section lies below the product's key.
std::string GetProductSetting_String(bool machine_wide, const std::string& section,
                                     const std::string& name, const std::string& default_value);
std::int32_t GetProductSetting_Long(bool machine_wide, const std::string& section,
                                    const std::string& name, std::int32_t default_value);
// A value outside min..max gives the default.
std::int32_t GetProductSetting_LongRanged(bool machine_wide, const std::string& section,
                                          const std::string& name, std::int32_t min,
                                          std::int32_t max, std::int32_t default_value);
// Written as a word: "true", "1", "-1", "yes", "y" / "false", "0", "no", "n", in any letter case.
bool GetProductSetting_Boolean(bool machine_wide, const std::string& section,
                               const std::string& name, bool default_value);

// The same for a value below any key.
bool ReadRegistryBoolean(bool machine_wide, const std::string& key, const std::string& name,
                         bool default_value);

// The product's folders, with a separator at the end; read once per process. On a system that has
// no defaults for them, a missing setting raises an error that names it.
std::string GetDataBasePath();
std::string GetProductRootPath();

// Forgets both, for whoever has changed the settings.
void ForgetProductPaths();

}  // namespace tmw
