#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ports/file_probe.h"
#include "ports/outcome.h"

// The look before the leap: whether everything that an installation is going to touch can be
// replaced. It is taken before the user agrees to the download and again before the first file is
// removed, and changes nothing.
namespace tmw {

struct LookTarget {
  std::string Path;
  ports::Replacement How = ports::Replacement::kRemoval;
};

// What an installation touches.
struct LookPlan {
  std::vector<LookTarget> Files;     // that are replaced or removed; need not exist
  std::vector<std::string> Folders;  // that get new files; need not exist
  bool Registers = false;            // components are registered with the system
};

enum class ObstacleSite { kFile, kFolder, kRegistry };

struct Obstacle {
  ObstacleSite Site = ObstacleSite::kFile;
  ports::Hindrance Kind = ports::Hindrance::kNone;
  std::string Place;           // the file or the folder; empty for the registry
  ports::SystemCode Code = 0;  // the system's, 0 if it gave none
};

struct LookResult {
  std::vector<Obstacle> Obstacles;  // empty: the way is clear

  // True if this user lacks rights somewhere; a run with more rights may succeed.
  bool IsAccessDenied() const;
  // Those that go away when the programs concerned are closed.
  std::vector<Obstacle> Held() const;
  // All others.
  std::vector<Obstacle> Lasting() const;
};

// Gives programs that hold a file for a moment (virus scanners) a second to release it.
LookResult LookAtTargets(const LookPlan& plan);

// What a box says about lasting obstacles: for each kind the first place, how many others there
// are, and what to do.
std::string DescribeObstacles(const std::vector<Obstacle>& obstacles);

// Looks until the way is clear. Returns false after reporting what is in the way, or if the user
// does not want to try again after closing the programs that hold files. Where rights are missing
// on_denied is called first, if given; it may end the process.
bool IsWayClear(const LookPlan& plan, const std::function<void()>& on_denied = {});

}  // namespace tmw
