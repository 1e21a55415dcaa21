#include "product/obstacles.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include "foundation/api_errors.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "product/look_texts.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"

namespace tmw {
namespace {

using ports::Hindrance;

constexpr const char* kProbeFile = "TmWebUpdate.probe";
constexpr int kHeldAttempts = 10;
constexpr std::int32_t kHeldWait = 100;   // milliseconds
constexpr std::int32_t kAskedWait = 500;  // after a question
constexpr std::size_t kNamedPlaces = 5;   // of one kind, in one box

ports::Status TryToWrite(const std::string& folder) {
  const ports::Ports& ports = ports::CurrentPorts();
  const std::string probe = JoinPath(folder, kProbeFile);
  static_cast<void>(ports.files->RemoveFile(probe));
  const auto opened = ports.files->Open(probe, ports::FileMode::kCreateNew);
  if (!opened) return ports::Status::Failure(opened.code);
  const ports::Status closed = opened.value->Close();
  const ports::Status removed = ports.files->RemoveFile(probe);
  return closed ? removed : closed;
}

Obstacle Refused(ObstacleSite site, std::string place, ports::SystemCode code) {
  return {site, ports::CurrentPorts().file_probe->MeaningOf(code), std::move(place), code};
}

// Of the folder or, if it is missing, of the nearest one above it that exists; which is added to
// seen and examined once.
std::optional<Obstacle> ExamineFolder(std::string folder, std::set<std::string>& seen) {
  for (;;) {
    const auto facts = ports::CurrentPorts().files->Examine(folder);
    if (!facts) return Refused(ObstacleSite::kFolder, folder, facts.code);
    if (facts.value.kind == ports::FileKind::kFolder) break;
    if (facts.value.kind != ports::FileKind::kNone)
      return Obstacle{ObstacleSite::kFolder, Hindrance::kOther, folder, 0};
    std::string above = SplitFileName(folder).Folder;
    if (above.empty() || above == folder) break;
    folder = std::move(above);
  }
  if (!seen.insert(folder).second) return std::nullopt;
  const ports::Status written = TryToWrite(folder);
  if (written) return std::nullopt;
  return Refused(ObstacleSite::kFolder, folder, written.code);
}

std::optional<Obstacle> ExamineFile(const LookTarget& target, int& patience) {
  for (;;) {
    const auto finding = ports::CurrentPorts().file_probe->Examine(target.Path, target.How);
    if (finding.hindrance == Hindrance::kNone) return std::nullopt;
    if (finding.hindrance != Hindrance::kHeld || patience == 0)
      return Obstacle{ObstacleSite::kFile, finding.hindrance, target.Path, finding.code};
    --patience;
    ports::CurrentPorts().clock->Sleep(kHeldWait);
  }
}

std::vector<Obstacle> Selected(const std::vector<Obstacle>& all, bool is_held) {
  std::vector<Obstacle> selected;
  std::copy_if(all.begin(), all.end(), std::back_inserter(selected),
               [&](const Obstacle& one) { return (one.Kind == Hindrance::kHeld) == is_held; });
  return selected;
}

// Without the first one, which the sentence before is about.
std::string OtherPlaces(const std::vector<Obstacle>& alike) {
  std::vector<std::string> places;
  for (std::size_t i = 1; i < std::min(alike.size(), kNamedPlaces); ++i)
    places.push_back(Quoted(alike[i].Place));
  return places.empty() ? "" : look_texts::OtherPlaces(places, alike.size() - 1 - places.size());
}

std::string Sentence(const Obstacle& first) {
  // The system's words end with a line break.
  const std::string reason =
      first.Code == 0 ? "" : TrimCharacters(GetApiErrorText(first.Code, ""), " \r\n");
  if (first.Site == ObstacleSite::kRegistry) return look_texts::RegistryForbidden(reason);
  const bool is_folder = first.Site == ObstacleSite::kFolder;
  switch (first.Kind) {
    case Hindrance::kFolder:
      return look_texts::FolderInThePlace(first.Place);
    case Hindrance::kOther:
      return is_folder ? look_texts::FileInThePlace(first.Place)
                       : look_texts::DeviceInThePlace(first.Place);
    case Hindrance::kProtected:
      return look_texts::Protected(first.Place, is_folder, reason);
    default:
      return is_folder ? look_texts::FolderNotWritable(first.Place, reason)
                       : look_texts::FileForbidden(first.Place, reason);
  }
}

bool AskAboutHeld(const std::vector<Obstacle>& held) {
  ports::FrontEnd& front_end = *ports::CurrentPorts().front_end;
  const std::string question = look_texts::HeldQuestion(
      held.front().Place, ports::CurrentPorts().file_probe->Holders(held.front().Place),
      OtherPlaces(held));
  if (!AskQuestion(box_titles::kFileInUse, question)) return false;
  front_end.RunPendingEvents();
  ports::CurrentPorts().clock->Sleep(kAskedWait);
  return true;
}

}  // namespace

bool LookResult::IsAccessDenied() const {
  return std::any_of(Obstacles.begin(), Obstacles.end(),
                     [](const Obstacle& one) { return one.Kind == Hindrance::kForbidden; });
}

std::vector<Obstacle> LookResult::Held() const {
  return Selected(Obstacles, true);
}

std::vector<Obstacle> LookResult::Lasting() const {
  return Selected(Obstacles, false);
}

LookResult LookAtTargets(const LookPlan& plan) {
  LookResult result;
  std::set<std::string> seen;
  for (const std::string& folder : plan.Folders) {
    if (auto obstacle = ExamineFolder(folder, seen))
      result.Obstacles.push_back(*std::move(obstacle));
  }
  int patience = kHeldAttempts;
  for (const LookTarget& target : plan.Files) {
    if (auto obstacle = ExamineFile(target, patience))
      result.Obstacles.push_back(*std::move(obstacle));
  }
  if (plan.Registers) {
    const ports::Status allowed = ports::CurrentPorts().file_probe->MayRegister();
    if (!allowed) result.Obstacles.push_back(Refused(ObstacleSite::kRegistry, "", allowed.code));
  }
  return result;
}

std::string DescribeObstacles(const std::vector<Obstacle>& obstacles) {
  std::vector<std::string> paragraphs;
  std::set<std::pair<ObstacleSite, Hindrance>> described;
  for (const Obstacle& first : obstacles) {
    if (!described.emplace(first.Site, first.Kind).second) continue;
    std::vector<Obstacle> alike;
    std::copy_if(
        obstacles.begin(), obstacles.end(), std::back_inserter(alike),
        [&](const Obstacle& one) { return one.Site == first.Site && one.Kind == first.Kind; });
    paragraphs.push_back(Sentence(first) + OtherPlaces(alike));
  }
  return Joined(paragraphs, "\r\n\r\n") + look_texts::kNothingChanged;
}

bool IsWayClear(const LookPlan& plan, const std::function<void()>& on_denied) {
  for (;;) {
    const LookResult result = LookAtTargets(plan);
    if (const auto lasting = result.Lasting(); !lasting.empty()) {
      if (on_denied && result.IsAccessDenied()) on_denied();
      const std::string text = DescribeObstacles(lasting);
      if (result.IsAccessDenied()) {
        DownloadError(text, FailureKind::kNoRights);
      } else {
        ShowWarning(box_titles::kDownloadError, text);  // which says what to do
      }
      return false;
    }
    const auto held = result.Held();
    if (held.empty()) return true;
    if (!AskAboutHeld(held)) return false;
  }
}

}  // namespace tmw
