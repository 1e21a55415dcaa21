#pragma once

#include <string>

// Small shared operations of the run (module miUpdaterUtils).
namespace tmw {

// A number of bytes in words: the larger unit from 800 of the smaller one, one decimal with the
// user's separator. Short: " ГБ", " М", " К" and nothing for bytes.
std::string GetFriendlySizeString(double bytes, bool is_short);

// Yes without asking in an unattended run.
bool AskYesNo(const std::string& question, const std::string& title);

// The maker's own setting that keeps components unregistered; read once per process.
bool GetNoRegisteringParam();

}  // namespace tmw
