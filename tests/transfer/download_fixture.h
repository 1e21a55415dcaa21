#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/program_error.h"
#include "platform/factories.h"
#include "ports/clock.h"
#include "ports/internet.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"
#include "transfer/inet_file_downloader.h"

namespace tests {

// A listener that records everything and cancels on request.
class Listener final : public tmw::DownloaderEvents {
 public:
  std::int32_t skipped = -1;  // -1: the download has not resumed
  std::int64_t loaded = 0;
  int chunks = 0;
  int checks = 0;
  std::function<bool()> wants_cancel;

  void OnChunkLoaded(bool is_skipped, std::int32_t byte_count) override {
    if (is_skipped) {
      skipped = byte_count;
    } else {
      loaded += byte_count;
      ++chunks;
    }
  }
  void OnCheckCancel(bool& is_cancelled) override {
    ++checks;
    if (wants_cancel) is_cancelled = wants_cancel();
  }
};

// The result of a download: "done", "cancelled" or the error's description.
inline std::string Download(Listener& listener, const std::string& url, const std::string& target,
                            bool check_for_continue = true) {
  tmw::InetFileDownloader downloader(listener);
  try {
    return downloader.DownloadFile(url, target, check_for_continue) ? "done" : "cancelled";
  } catch (const tmw::ProgramError& error) {
    return error.Description;
  }
}

// The body behind a URL, or the error's description.
inline std::string Fetch(const std::shared_ptr<tmw::InetConnection>& connection,
                         const std::string& url) {
  try {
    tmw::InetOpenedUrl opened_url;
    opened_url.OpenUrl(connection, url, 0);
    std::string body;
    char bytes[4096];
    for (std::int32_t count = 0; opened_url.ReadChunk(bytes, sizeof(bytes), count);)
      body.append(bytes, static_cast<std::size_t>(count));
    return body;
  } catch (const tmw::ProgramError& error) {
    return error.Description;
  }
}

inline std::shared_ptr<tmw::InetConnection> Connect(std::int32_t access_type,
                                                    const std::string& proxy = {},
                                                    const std::string& bypass = {}) {
  auto connection = std::make_shared<tmw::InetConnection>();
  connection->AccessType = access_type;
  connection->Proxy = proxy;
  connection->ProxyBypass = bypass;
  connection->OpenInternet();
  return connection;
}

// Runs so fast that the stall limit of a minute takes half a second, or two under Wine.
class FastClock final : public ports::Clock {
 public:
  static constexpr std::int32_t kHaste = kOnWindows ? 30 : 120;
  void Sleep(std::int32_t milliseconds) override { real_->Sleep(milliseconds / kHaste + 1); }
  std::int64_t TickCount() override { return real_->TickCount() * kHaste; }
  std::int64_t UtcSeconds() override { return real_->UtcSeconds(); }

 private:
  ports::Clock* real_ = ports::CurrentPorts().clock;
};

// Tests of a room with a network: a folder, and sessions that soon give up on a silent server.
class DownloadTest : public testing::Test {
 protected:
  static constexpr std::int32_t kStallLimit = ports::kInternetStallLimit / FastClock::kHaste;

  DownloadTest() {
    ports_->internet = internet_.get();
    ports_->clock = &fast_clock_;
  }

  ScopedPorts ports_;
  FastClock fast_clock_;
  std::unique_ptr<ports::Internet> internet_ = platform::MakeInternet(kStallLimit);
  Sandbox sandbox_;
};

}  // namespace tests
