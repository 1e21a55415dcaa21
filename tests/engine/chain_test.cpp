#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "ports/companion_library.h"
#include "ports/database.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "services/processes.h"
#include "tests/engine/release.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_server.h"

namespace tests {
namespace {

// Linux: with letters that code page 1251 lacks.
const std::string kProduct = kOnWindows ? "product" : "Әлия & Müller";
constexpr const char* kKey = "SOFTWARE\\Kestrel Soft\\Tamrin\\General";

// The settings of a client installation, where the real program reads them.
class ClientSettings {
 public:
  explicit ClientSettings(const Sandbox& sandbox) : sandbox_(sandbox) {
    const std::pair<const char*, std::string> values[] = {
        {"RootPath", sandbox.Path(kProduct)},
        {"DataBasePath", sandbox.Path("db")},
        {"InstallationType", "Client"},
    };
    std::string text = "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\" + std::string(kKey) + "]\n";
    for (const auto& [name, value] : values) {
      text += "\"" + std::string(name) + "\"=\"" + value + "\"\n";
      if (kOnWindows) Reg("add", " /v " + std::string(name) + " /d \"" + value + "\"");
    }
    sandbox.Write("machine.reg", "\xEF\xBB\xBF" + text);
  }
  ~ClientSettings() {
    if (kOnWindows) Reg("delete", "");
  }

 private:
  static void Reg(const std::string& verb, const std::string& rest) {
    const std::string line = "reg " + verb + " \"HKLM\\" + kKey + "\"" + rest + " /f /reg:32";
    EXPECT_EQ(tmw::RunProcess("", line, "", true, 0), 0) << line;
  }

  const Sandbox& sandbox_;
  ScopedVariable machine_{"TAMRIN_MACHINE_REG", sandbox_.Path("machine.reg")};
  ScopedVariable user_{"TAMRIN_USER_REG", sandbox_.Path("none.reg")};
};

// The updater of the product's folder copies itself, the copy fetches a newer updater, and that one
// updates the product and starts it again.
TEST(Chain, FirstCopyTemporaryCopyAndNewerUpdaterDoOneUpdate) {
  const Sandbox sandbox;
  const ClientSettings settings(sandbox);
  const ScopedVariable temporary(kOnWindows ? "TMP" : "TMPDIR", sandbox.Path("tmp"));
  const ScopedVariable locks("TMW_LOCK_FOLDER", sandbox.Path("locks"));
  const ScopedVariable engine("TMW_TEST_DATABASE_ENGINE", "embedded");
  const std::string companion = ports::CurrentPorts().companion->Path();
  std::string program = sandbox.Path(kProduct + "/tm/TmWebUpdate");
  program += ports::CurrentPorts().processes->ProgramEnding();
  for (const std::string& folder : {kProduct + "/tm", std::string("db"), std::string("tmp")})
    std::filesystem::create_directories(ToPath(sandbox.Path(folder)));
  tmw::CopyFile(TMW_UPDATER, program);
  tmw::CopyFile(companion,
                sandbox.Path(kProduct + "/tm/" + tmw::SplitFileName(companion).FileName()));
  ports::CurrentPorts().database->CreateDatabase(sandbox.Path("db/Tamrin.mdb"))->Close();
  sandbox.Write(kProduct + "/tm/Tamrin.dat", "old");
  // Files of these names in the working folder are not the updater's.
  for (const std::string& path : {program, companion})
    sandbox.Write("elsewhere/" + tmw::SplitFileName(path).FileName(), "planted");

  ScriptedServer server([&](Peer& peer, const std::string& head) {
    const std::string path = "server" + tmw::Split(head, " ").at(1);
    const std::string body = sandbox.Has(path) ? sandbox.Read(path) : "";
    peer.Send("HTTP/1.1 " + std::string(body.empty() ? "404 No" : "200 OK") +
              "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
  });
  const tmw::AppVersion own = tmw::GetAppVersion();
  Release release;
  release.files = {{"Tamrin.dat", "new", "{p}tm"}};
  release.needed_updater = std::to_string(own.Major) + "." + std::to_string(own.Minor + 1);
  release.updater_components = {{tmw::SplitFileName(program).FileName(), TMW_NEWER_UPDATER}};
  WriteRelease(release, sandbox.Path("server"), server.Url(""));

  const std::int32_t exit_code =
      tmw::RunProcess(program,
                      "\"" + program + "\" -y -w " + server.Url("") + " -e \"" + ChildProgram() +
                          "\" -p \"report done updated\"",
                      sandbox.Path("elsewhere"), true, 0);
  EXPECT_EQ(exit_code, 0);
  // The product's folder is the folder of the program that was named.
  const std::string report = tmw::JoinPath(tmw::SplitFileName(ChildProgram()).Folder, "done");
  for (int i = 0; i < 600 && !tmw::IsFileExists(report); ++i)
    Peer::Pause(50);
  ASSERT_TRUE(tmw::IsFileExists(report)) << "the product was not started again";
  tmw::DeleteFileRepeatedly(report);
  EXPECT_EQ(sandbox.Read(kProduct + "/tm/Tamrin.dat"), "new");
  const auto asked = server.Heads();
  const auto count = [&](const std::string& path) {
    return std::count_if(asked.begin(), asked.end(), [&](const std::string& head) {
      return head.starts_with("GET /" + path + " ");
    });
  };
  EXPECT_EQ(count("TMW_version.dat"), 2) << "by the temporary copy and by the newer updater";
  EXPECT_EQ(count("TMW_3.6.0.2/" + tmw::SplitFileName(program).FileName()), 1);
  EXPECT_EQ(count("TMW_3.6.0.2/f1.tmz"), 1);
}

}  // namespace
}  // namespace tests
