#pragma once

#include "foundation/unique_handle.h"
#include "platform/windows/windows_headers.h"

namespace platform {

struct FontTraits {
  using Type = HFONT;
  static Type Invalid() { return nullptr; }
  static void Close(Type font) { DeleteObject(font); }
};
using UniqueFont = tmw::UniqueHandle<FontTraits>;

struct IconTraits {
  using Type = HICON;
  static Type Invalid() { return nullptr; }
  static void Close(Type icon) { DestroyIcon(icon); }
};
using UniqueIcon = tmw::UniqueHandle<IconTraits>;

// Dots per inch of the screen that the window is on; of the system before Windows 10 1607.
int GetWindowDpi(HWND window);

// A length drawn for 96 dots per inch.
constexpr int ScaleTo(int dpi, int length) {
  return (length * dpi + 48) / 96;
}

// The font that the user has chosen for message boxes, at a percentage of its size.
UniqueFont MakeMessageFont(int dpi, int percent = 100);

// Size of a window whose client area has the given size.
SIZE GetOuterSize(HWND window, SIZE client, int dpi);

// What a text needs on one line.
SIZE MeasureText(HWND window, HFONT font, const wchar_t* text);

// An icon of the program's resources, and the program's own in both sizes of a window; a square of
// size pixels. Empty when there is none of that name.
UniqueIcon LoadPicture(const wchar_t* name, int size);
inline constexpr wchar_t kProgramPicture[] = L"PROGRAM";

// The system's warning sign.
UniqueIcon LoadWarningSign(int size);

}  // namespace platform
