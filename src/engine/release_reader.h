#pragma once

#include <string>

#include "engine/records.h"
#include "services/updater_events.h"

namespace tmw {

// Fetches and reads what the servers say of a release. The files go to the temporary folder. An
// operation that returns false has reported why, unless the user has cancelled. Each sets the text
// of its stage and leaves it to the caller to clear it.
class ReleaseReader {
 public:
  ReleaseReader(UpdaterEvents& events, std::string product_code, UpdateServers servers,
                std::string temp_dir);

  bool ReadDigest(Digest& digest);

  // Chooses one of the listed servers; loading_url becomes the release's folder there.
  bool ChooseServer(const std::string& version, std::string& loading_url);

  // Refuses a manifest of another product or version, or one that differs from what the digest
  // binds. The digest is then read once more: its release may have been replaced meanwhile.
  bool ReadManifest(const std::string& loading_url, Digest& digest, Manifest& manifest);

 private:
  bool FetchSmallFile(const std::string& name, const std::string& local,
                      std::string (*failure)(const std::string& reason));
  // The digest's text; its signature is good if one is demanded.
  bool FetchDigest(const std::string& local, std::string& text);
  bool FetchManifest(const std::string& url, const std::string& package, Digest& digest);
  bool ReadDigestAgain(Digest& digest);

  UpdaterEvents& events_;
  std::string product_code_;
  UpdateServers servers_;
  std::string temp_dir_;
};

}  // namespace tmw
