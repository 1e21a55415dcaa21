#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "packages/signature_name.h"
#include "signature/secret_key.h"
#include "tests/engine/database_run_fixture.h"
#include "tests/transfer/download_fixture.h"
#include "transfer/inet.h"

namespace tests {

// What becomes of a run that somebody interferes with. Every word is derived from what is seen:
// refused   a box, and nothing installed
// cut       likewise, after an answer was broken off from this side
// retried   installed, with more requests than an undisturbed run makes
// ignored   installed as if nothing had happened
struct Attack {
  std::string name;
  std::function<void()> prepare;  // a good release lies on the server
  std::string word;
  std::string message{};  // a piece of the last box
};

// A server installation that trusts one key, and a signed release two versions ahead.
class AttackTest : public DatabaseRunTest {
 protected:
  using Files = std::map<std::string, std::string>;
  // Returns false if the file is to be sent.
  using Answer = std::function<bool(Peer& peer, const std::string& path)>;

  AttackTest() {
    key_.Generate();
    release_.files.insert(release_.files.begin(), {"Программа.dll", "new program"});
    release_.is_bound = true;
    release_.more_lines = "product:TMW\r\nserial:5\r\nexpires:2026-11-22\r\n";
    good_ = release_;
    on_answer_ = [shared = answer_](Peer& peer, const std::string& path) {
      const std::shared_ptr<const Answer> answer = shared->load();
      return *answer && (*answer)(peer, path);
    };
    Restore();
    Run();
    EXPECT_TRUE(updated_) << testing::PrintToString(front_end_.log);
    undisturbed_ = Requests().size();
  }

  ~AttackTest() override {
    AnswerWith(nullptr);
    while (is_sending_)
      Peer::Pause(1);
  }

  // As if no run had been tried yet, before a good release.
  void Restore() {
    for (const char* const folder : {"Продукт", "db", "tmp", "server", "own"})
      std::filesystem::remove_all(ToPath(Path(folder)));
    std::filesystem::create_directories(ToPath(Path("tmp")));
    sandbox_.Write("Продукт/Bin/Программа.dll", "old program");
    sandbox_.Write("Продукт/help.txt", "old help");
    sandbox_.Write("Продукт/TmWebUpdate.serial", "4\r\n");
    sandbox_.Write("db/Tamrin.mdb", kept_);
    sandbox_.Write("own/books", "the user's own");
    settings_.Set(ports::SettingsRoot::kMachine,
                  "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\UpdateKeys",
                  signature::PublicKeyText(key_.Public()));
    SetMode(false);
    url_.clear();
    AnswerWith(nullptr);
    on_request_ = nullptr;
    on_line_ = nullptr;
    front_end_.answers = {true};
    was_cut_ = false;
    release_ = good_;
    PublishSigned();
  }

  // The session that all downloads share is opened anew.
  static void OpenSession(std::int32_t access, const std::string& proxy = {}) {
    const auto connection = tmw::GetInetConnection();
    connection->AccessType = access;
    connection->Proxy = proxy;
    connection->OpenInternet();
  }

  // The server may still be at an answer of before.
  void AnswerWith(Answer answer) { *answer_ = std::make_shared<Answer>(std::move(answer)); }

  void Sign(const signature::SecretKey& key) const {
    const std::string digest = sandbox_.Read("server/TMW_version.dat");
    sandbox_.Write("server/" + tmw::SignatureName(digest), key.Sign(digest, ""));
  }

  void PublishSigned() {
    Publish();
    Sign(key_);
  }

  void Try(const Attack& attack) {
    SCOPED_TRACE(attack.name);
    Restore();
    attack.prepare();
    const Files installed = Under({"Продукт", "db"});
    const Files elsewhere = Under({"own"});
    Run();
    const std::string box = front_end_.log.empty() ? "" : front_end_.log.back();
    EXPECT_EQ(Word(), attack.word) << box;
    EXPECT_NE(box.find(attack.message), std::string::npos) << box;
    EXPECT_TRUE(Under({"own"}) == elsewhere);
    EXPECT_FALSE(sandbox_.Has("evil") || sandbox_.Has("tmp/evil"));
    if (updated_) {
      const ReleaseFile& program = release_.files[0];
      EXPECT_EQ(sandbox_.Read("Продукт/Bin/" + program.name), program.content);
      EXPECT_EQ(sandbox_.Read("Продукт/help.txt"), "new help");
      EXPECT_EQ(Rows("db/Tamrin.mdb", "Книга"), kNewBook);
    } else {
      EXPECT_TRUE(sandbox_.Read("db/Tamrin.mdb") == kept_);
      const std::string serial = sandbox_.Read("Продукт/TmWebUpdate.serial");
      EXPECT_TRUE(serial == "4\r\n" || serial == "5\r\n") << serial;
      EXPECT_TRUE(sandbox_.Has("Продукт/TMW_Installing.txt") ||
                  Under({"Продукт", "db"}) == installed);
    }
    if (!is_silent_) Print(attack.name, updated_ ? "" : box);
  }

  std::string Word() const {
    while (is_sending_)
      Peer::Pause(1);
    if (updated_) return Requests().size() > undisturbed_ ? "retried" : "ignored";
    return was_cut_ ? "cut" : "refused";
  }

  // One row of the table.
  void Print(const std::string& name, std::string box) const {
    box.erase(0, box.rfind('|') + 1);
    for (std::size_t at = 0; (at = box.find("\r\n")) != std::string::npos;)
      box.replace(at, 2, " ");
    std::cout << name << std::string(std::max<std::size_t>(58, name.size() + 1) - name.size(), ' ')
              << Word() << std::string(9 - Word().size(), ' ') << box << "\n";
  }

  // Every file and link below those folders of the sandbox, without the updater's own.
  Files Under(const std::vector<std::string>& folders) const {
    Files files;
    for (const std::string& folder : folders) {
      for (const auto& entry :
           std::filesystem::recursive_directory_iterator(ToPath(Path(folder)))) {
        const std::string path = FromPath(entry.path());
        if (entry.is_symlink()) {
          files[path] = "link to " + FromPath(std::filesystem::read_symlink(entry.path()));
        } else if (entry.is_regular_file() && !path.ends_with(".lock") &&
                   !path.ends_with(".serial")) {
          files[path] = tmw::ReadFileBytes(path);
        }
      }
    }
    return files;
  }

  // Sends what an endless answer consists of until the updater breaks off.
  void SendUntilCut(Peer& peer, const std::string& piece, int pause) {
    is_sending_ = true;
    peer.Send("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
    while (peer.Send(piece)) {
      if (pause > 0) Peer::Pause(pause);
    }
    was_cut_ = true;
    is_sending_ = false;
  }

  signature::SecretKey key_;
  Release good_;
  const std::string kept_ = sandbox_.Read("db/Tamrin.mdb");
  std::size_t undisturbed_ = 0;  // requests
  std::shared_ptr<std::atomic<std::shared_ptr<const Answer>>> answer_ =
      std::make_shared<std::atomic<std::shared_ptr<const Answer>>>();
  std::atomic<bool> was_cut_ = false;
  std::atomic<bool> is_sending_ = false;  // an endless answer
  bool is_silent_ = false;                // tries are not printed
};

}  // namespace tests
