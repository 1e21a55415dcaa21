#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "engine/ks_updater.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/database.h"
#include "ports/power.h"
#include "ports/product_version.h"
#include "services/product_settings.h"
#include "services/run_outcome.h"
#include "services/updater_settings.h"
#include "tests/engine/release.h"
#include "tests/engine/run_listener.h"
#include "tests/fakes/hand_clock.h"
#include "tests/fakes/memory_settings.h"
#include "tests/fakes/recording_processes.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"
#include "tests/support/scripted_server.h"

namespace tests {

class FixedProductVersion final : public ports::ProductVersion {
 public:
  std::optional<std::string> version;
  std::optional<std::string> InstalledVersion() override { return version; }
};

// Notes in a log when the machine is kept awake.
class RecordingPower final : public ports::Power {
 public:
  explicit RecordingPower(std::vector<std::string>& log) : log_(log) {}
  std::unique_ptr<ports::StayAwake> KeepAwake(const std::string&, const std::string&) override {
    log_.push_back("awake");
    return std::make_unique<Awake>(log_);
  }

 private:
  struct Awake final : ports::StayAwake {
    explicit Awake(std::vector<std::string>& awake_log) : log(awake_log) {}
    ~Awake() override { log.push_back("asleep"); }
    std::vector<std::string>& log;
  };
  std::vector<std::string>& log_;
};

// A client installation, a server on loopback with a release, and runs of the engine as the
// temporary copy. Files, transfers, packages and the database are real.
class RunTest : public testing::Test {
 protected:
  RunTest() {
    ports_->clock = &clock_;
    ports_->front_end = &front_end_;
    ports_->processes = &processes_;
    ports_->power = &power_;
    ports_->product_version = &product_version_;
    ports_->settings = &settings_;
    const std::string general = "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\";
    settings_.Set(ports::SettingsRoot::kMachine, general + "RootPath", Path("Продукт"));
    settings_.Set(ports::SettingsRoot::kMachine, general + "DataBasePath", Path("db"));
    tmw::ForgetProductPaths();
    std::filesystem::create_directories(ToPath(Path("tmp")));
    std::filesystem::create_directories(ToPath(Path("db")));
    ports::CurrentPorts().database->CreateDatabase(Path("db/Tamrin.mdb"))->Close();
    SetMode(true);
    front_end_.answers = {true};
    release_.files = {{"Программа.dll", "new program"}, {"help.txt", "new help", "{p}"}};
  }
  ~RunTest() override { tmw::ForgetProductPaths(); }

  void SetMode(bool is_client, bool is_temp_copy = true) {
    tmw::UpdaterSettings settings;
    settings.IsClientInstallation = is_client;
    settings.IsTempCopy = is_temp_copy;
    settings.ProxyType = 1;
    tmw::SetUpdaterSettings(settings);
  }

  std::string Path(const std::string& name) const { return tmw::JoinPath(sandbox_.Path(), name); }

  void Publish() { WriteRelease(release_, sandbox_.Path("server"), server_.Url("")); }

  // One run. Returns the boxes that it showed and the error that it ended with ("error|text").
  std::vector<std::string> Run() {
    front_end_.log.clear();
    listener_ = RunListener();
    listener_.cancel_at = cancel_at_;
    listener_.on_line = on_line_;
    requests_before_ = server_.Heads().size();
    updated_ = true;
    has_exited_ = false;
    tmw::SetRunOutcome(tmw::RunOutcome::kFailed);
    tmw::KsUpdater updater(listener_, [this] {
      has_exited_ = true;
      throw ProcessEnded();
    });
    updater.SetOldProductVersion(old_version_);
    try {
      updater.Execute("TMW", url_.empty() ? server_.Url("") : url_, fallback_url_, updated_);
    } catch (const tmw::ProgramError& error) {
      front_end_.log.push_back("error|" + error.Description);
    }
    EXPECT_TRUE(!updated_ || listener_.Has("icon brush")) << "the last stage";
    advice_ = updater.AdviceOnUnfinished();
    return front_end_.log;
  }

  // The paths that the last run asked for.
  std::vector<std::string> Requests() const {
    std::vector<std::string> paths;
    const std::vector<std::string> heads = server_.Heads();
    for (std::size_t i = requests_before_; i < heads.size(); ++i)
      paths.push_back(tmw::Split(heads[i], " ").at(1));
    return paths;
  }

  void Serve(Peer& peer, const std::string& head) const {
    std::string path = "server" + tmw::Split(head, " ").at(1);
    for (std::size_t at = 0; (at = path.find('%', at)) != std::string::npos; ++at)
      path.replace(at, 3, 1, static_cast<char>(std::stoi(path.substr(at + 1, 2), nullptr, 16)));
    if (on_request_) on_request_(path);
    if (on_answer_ && on_answer_(peer, path)) return;
    if (!sandbox_.Has(path)) {
      peer.Send("HTTP/1.1 404 Not Found\r\nConnection: close\r\nContent-Length: 0\r\n\r\n");
      return;
    }
    std::string body = sandbox_.Read(path);
    const std::size_t range = head.find("Range: bytes=");
    const std::size_t first = range == std::string::npos ? 0 : std::stoul(head.substr(range + 13));
    const std::string place = "206 Part\r\nContent-Range: bytes " + std::to_string(first) + "-" +
                              std::to_string(body.size() - 1) + "/" + std::to_string(body.size());
    body.erase(0, first);
    peer.Send("HTTP/1.1 " + (first == 0 ? "200 OK" : place) + "\r\nConnection: close" +
              "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  }

  Sandbox sandbox_;
  ScopedPorts ports_;
  ScopedVariable temporary_{kOnWindows ? "TMP" : "TMPDIR", sandbox_.Path("tmp")};
  HandClock clock_;
  ScriptedFrontEnd front_end_;
  RecordingProcesses processes_;
  FixedProductVersion product_version_;
  MemorySettings settings_;
  std::function<void(const std::string& path)> on_request_;             // on the server's thread
  std::function<bool(Peer& peer, const std::string& path)> on_answer_;  // false: the file is sent
  Release release_;
  RunListener listener_;
  RecordingPower power_{listener_.log};
  std::string cancel_at_;
  std::function<void(const std::string& line)> on_line_;
  std::string url_;  // empty: the server's
  std::string fallback_url_;
  std::string old_version_;
  bool updated_ = false;
  std::string advice_;       // on an unfinished installation
  bool has_exited_ = false;  // and the next updater has been started
  std::size_t requests_before_ = 0;
  ScriptedServer server_{[this](Peer& peer, const std::string& head) { Serve(peer, head); }};
};

}  // namespace tests
