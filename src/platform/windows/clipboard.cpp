#include "platform/windows/clipboard.h"

#include <cstring>

#include "platform/windows/wide.h"

namespace platform {
namespace {

constexpr int kTries = 25;
constexpr DWORD kPauseMs = 20;

bool OpenWithPatience(HWND owner) {
  for (int i = 0; i < kTries; ++i) {
    if (OpenClipboard(owner) != FALSE) return true;
    Sleep(kPauseMs);
  }
  return false;
}

HGLOBAL MakeBlock(const std::wstring& text) {
  const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
  const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
  void* const memory = block == nullptr ? nullptr : GlobalLock(block);
  if (memory == nullptr) return block;
  std::memcpy(memory, text.c_str(), size);
  GlobalUnlock(block);
  return block;
}

}  // namespace

bool PutTextOnClipboard(HWND owner, const std::string& text) {
  const HGLOBAL block = MakeBlock(ToWide(text));
  bool is_done = false;
  if (block != nullptr && OpenWithPatience(owner)) {
    // The clipboard owns the block once it has taken it.
    is_done = EmptyClipboard() != FALSE && SetClipboardData(CF_UNICODETEXT, block) != nullptr;
    CloseClipboard();
  }
  if (!is_done && block != nullptr) GlobalFree(block);
  return is_done;
}

}  // namespace platform
