#include <string>

#include "foundation/program_error.h"
#include "platform/host.h"
#include "transfer/inet_file_downloader.h"

namespace {

class Silent final : public tmw::DownloaderEvents {
 public:
  void OnChunkLoaded(bool, std::int32_t) override {}
  void OnCheckCancel(bool&) override {}
};

}  // namespace

// A process to be killed: downloads the URL into the file, continuing what is there.
int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const auto host = platform::MakeHost(argc, argv);
  platform::CurrentPorts() = host->MakePorts();
  Silent events;
  try {
    return tmw::InetFileDownloader(events).DownloadFile(argv[1], argv[2], true) ? 0 : 1;
  } catch (const tmw::ProgramError&) {
    return 1;
  }
}
