#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "foundation/program_error.h"
#include "ports/host.h"
#include "transfer/inet_file_downloader.h"

// Downloads one URL in turn with curl and with InetFileDownloader, each time in a process of its
// own, and prints the ratio of the median wall times and the downloader's peak memory. Both times
// include bringing the file to the disk. Fails above the limits.
//   download URL FOLDER
namespace {

constexpr int kRounds = 3;
constexpr double kMaxRatio = 1.15;
constexpr long kMaxKilobytes = 32L * 1024;

class Silent final : public tmw::DownloaderEvents {
 public:
  void OnChunkLoaded(bool /*is_skipped*/, std::int32_t /*byte_count*/) override {}
  void OnCheckCancel(bool& /*is_cancelled*/) override {}
};

struct Cost {
  double seconds = 0;
  long kilobytes = 0;
  bool is_right = false;
};

Cost Measure(const std::function<int()>& action) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) _exit(action());
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  return {passed.count(), usage.ru_maxrss, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

int RunCurl(const std::string& url, const std::string& file) {
  const pid_t curl = fork();
  if (curl == 0) {
    execlp("curl", "curl", "-s", "-f", "-o", file.c_str(), url.c_str(), nullptr);
    _exit(1);
  }
  int status = 0;
  waitpid(curl, &status, 0);
  const int descriptor = open(file.c_str(), O_WRONLY | O_CLOEXEC);
  return status == 0 && fsync(descriptor) == 0 ? 0 : 1;
}

int RunOurs(const std::string& url, const std::string& file) {
  Silent events;
  try {
    return tmw::InetFileDownloader(events).DownloadFile(url, file, true) ? 0 : 1;
  } catch (const tmw::ProgramError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  const std::string url = argv[1];
  const std::string file = std::string(argv[2]) + "/downloaded";
  std::vector<double> theirs;
  std::vector<double> ours;
  long kilobytes = 0;
  for (int round = 0; round < kRounds; ++round) {
    std::remove(file.c_str());
    const Cost curl = Measure([&] { return RunCurl(url, file); });
    std::remove(file.c_str());
    const Cost own = Measure([&] { return RunOurs(url, file); });
    if (!curl.is_right || !own.is_right) return 2;
    std::printf("curl %.2f s, InetFileDownloader %.2f s, %ld KiB\n", curl.seconds, own.seconds,
                own.kilobytes);
    theirs.push_back(curl.seconds);
    ours.push_back(own.seconds);
    kilobytes = std::max(kilobytes, own.kilobytes);
  }
  const double ratio = Median(ours) / Median(theirs);
  std::printf("ratio %.2f (at most %.2f), peak memory %.1f MiB (at most %ld)\n", ratio, kMaxRatio,
              static_cast<double>(kilobytes) / 1024, kMaxKilobytes / 1024);
  return ratio <= kMaxRatio && kilobytes <= kMaxKilobytes ? 0 : 1;
}
