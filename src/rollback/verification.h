#pragma once

#include <optional>
#include <string>
#include <vector>

#include "product/kept_list.h"
#include "services/updater_events.h"

// What can be brought back, found out before anything is asked or changed.
namespace rollback {

enum class Books {
  kNotKept,    // the update did not get to them, or there are none on a client
  kUnchanged,  // the present database still is the one from before the update
  kChanged,    // they can be brought back
};

struct Findings {
  tmw::KeptList List;
  Books BooksState = Books::kNotKept;
  int Replaced = 0;                 // files that differ from the kept ones
  int Added = 0;                    // files of the release that are there
  bool IsUpdateUnfinished = false;  // an installation has been marked and not completed
};

enum class Verdict {
  kGood,
  kRefused,    // nothing is kept, or the updater has to finish its work first
  kDamaged,    // what is kept cannot be used
  kCancelled,  // by the user
};

// Fills findings, or reason unless the verdict is kGood or kCancelled. Every kept file is compared
// with the list, and so is the content of the books' backup unless with_books is false: one that is
// spoiled or missing refuses the whole.
Verdict Verify(bool with_books, tmw::UpdaterEvents& events, Findings& findings,
               std::string& reason);

// The folders in which an updater may have left marks of an installation.
std::vector<std::string> UpdaterWorkingPlaces();

}  // namespace rollback
