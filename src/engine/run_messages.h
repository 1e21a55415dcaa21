#pragma once

#include <cstdint>
#include <string>

#include "engine/records.h"

// The questions of a run, and its boxes that are no failures (see message_boxes.h).
namespace tmw {

// Returns true without asking in an unattended run.
bool AskYesNo(const std::string& question, const std::string& title);

// Whether so many bytes may be loaded and installed.
bool AskForDownload(std::int32_t volume);

// Whether the installed version, which is the offered one, is to be checked and repaired. Asked in
// an unattended run too: that does not mean a repair.
bool AskForRepair(const std::string& version);

// Shows why there is nothing to do, and returns false, unless the update has something to bring. A
// client installation does not update tables by themselves.
bool HasWork(const UpdateNeed& need, bool is_client);

// A number of bytes in words: the larger unit from 800 of the smaller one on, one decimal with the
// user's separator. Short: " ГБ", " М", " К" and nothing for bytes.
std::string GetFriendlySizeString(double bytes, bool is_short);

}  // namespace tmw
