#pragma once

// The system's headers. Included in this folder only, and last: their macros have the names of our
// verbs (DeleteFile, MoveFile, CopyFile, GetMessage ...).
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
