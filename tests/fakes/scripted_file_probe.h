#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ports/file_probe.h"

namespace tests {

// A probe that passes everything on to the real one, except what a script says.
class ScriptedFileProbe final : public ports::FileProbe {
 public:
  std::map<std::string, std::deque<ports::FileFinding>> findings;  // of the next examinations
  std::vector<std::string> holders;
  ports::Status may_register = ports::Status::Success();
  std::function<std::optional<ports::DiskSpace>(const std::string& folder)> space;

  explicit ScriptedFileProbe(ports::FileProbe& real) : real_(real) {}

  ports::FileFinding Examine(const std::string& path, ports::Replacement replacement) override {
    auto& script = findings[path];
    if (script.empty()) return real_.Examine(path, replacement);
    const ports::FileFinding finding = script.front();
    script.pop_front();
    return finding;
  }
  ports::Hindrance MeaningOf(ports::SystemCode code) const override {
    return real_.MeaningOf(code);
  }
  std::vector<std::string> Holders(const std::string& /*path*/) override { return holders; }
  ports::Outcome<ports::DiskSpace> SpaceOf(const std::string& folder) override {
    const auto scripted = space ? space(folder) : std::nullopt;
    return scripted ? ports::Outcome<ports::DiskSpace>::Success(*scripted) : real_.SpaceOf(folder);
  }
  ports::Status MayRegister() override { return may_register; }

 private:
  ports::FileProbe& real_;
};

}  // namespace tests
