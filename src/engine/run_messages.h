#pragma once

#include <cstdint>
#include <string>

#include "engine/records.h"

// The questions of a run, and the boxes that end it without a failure.
namespace tmw {

// Returns true without asking in an unattended run.
bool AskYesNo(const std::string& question, const std::string& title);

// Asks whether so many bytes may be downloaded and installed.
bool AskForDownload(std::int32_t volume);

// Asks whether the installed version, which is the offered one, is to be checked and repaired. Also
// asks in an unattended run: a repair is not taken for granted.
bool AskForRepair(const std::string& version);

// Returns false after showing why there is nothing to do. A client installation does not update
// tables alone.
bool HasWork(const UpdateNeed& need, bool is_client);

// A number of bytes in words: the larger unit from 800 of the smaller one on, one decimal with the
// user's separator. Short: " ГБ", " М", " К" and nothing for bytes.
std::string GetFriendlySizeString(double bytes, bool is_short);

}  // namespace tmw
