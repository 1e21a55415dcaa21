#pragma once

#include <cstdint>
#include <string>

namespace tmw {

// What the building of the databases tells and asks; the update run implements it.
class BuildEvents {
 public:
  virtual void SetMainAction(const std::string& text) = 0;
  virtual void SetSubAction(const std::string& text) = 0;
  // A progress range 0..max; 0 takes the bar away.
  virtual void SetupProgress(std::int32_t max, bool show_count) = 0;
  virtual void SetProgress(std::int32_t value) = 0;
  // Lets pending events run; true when the user wants out.
  virtual bool CancelPressed() = 0;
  // An expected failure, told to the user before a step returns false.
  virtual void DownloadError(const std::string& message) = 0;
  // The working copy of the user database is about to be made: what is written to the original from
  // now on may not be in it. Nothing of the building opens the original for writing afterwards.
  virtual void OnCopyingUserDatabase() = 0;

  // Takes both texts and the bar away.
  void ClearProgress() {
    SetMainAction("");
    SetSubAction("");
    SetupProgress(0, false);
  }

 protected:
  ~BuildEvents() = default;
};

}  // namespace tmw
