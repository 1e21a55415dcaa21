#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "foundation/program_error.h"
#include "foundation/utc_day.h"
#include "packages/signature_name.h"
#include "publish/announcement.h"
#include "publish/checker.h"
#include "publish/file_tree.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/fakes/hand_clock.h"
#include "tests/publish/sample.h"
#include "tests/support/scoped_ports.h"

// Signed announcements: making them, and checking them as an updater with a key does.
namespace tests {
namespace {

using Log = std::vector<std::string>;

constexpr std::int64_t kDay = 86400;  // seconds

class Signing : public testing::Test {
 protected:
  Signing() : sample_(sandbox_) {
    ports_->clock = &clock_;
    sample_.options.signer = &signer_;
    sample_.Describe("\"two.example", "\"https://two.example");
  }

  static std::string MakeKey(const Sandbox& sandbox) {
    publish::MakeKeys(sandbox.Path("key"), std::nullopt);
    return sandbox.Path("key");
  }

  publish::SigningOptions Options(std::int64_t days) const {
    return {key_file_, "", tmw::UtcDayOf(clock_.utc) + days, {}};
  }

  // The faults of a check with the key, then the warnings.
  Log Check(const std::string& key = {}) {
    tools::Progress progress(false);
    publish::Faults faults;
    publish::CheckOptions options;
    options.key = publish::ReadPublicKey(key.empty() ? key_file_ + ".pub" : key);
    const auto release = publish::CheckRelease(sandbox_.Path("server"), options, progress, faults);
    comment_ = release.trusted_comment;
    return Lines(faults);
  }

  static Log Lines(const publish::Faults& faults) {
    Log lines;
    for (const publish::Fault& fault : faults.All())
      lines.push_back(fault.place + ": " + fault.text);
    for (const publish::Fault& warning : faults.Warnings())
      lines.push_back("warning " + warning.place + ": " + warning.text);
    return lines;
  }

  std::string SignatureFile() const {
    return "server/" + tmw::SignatureName(sandbox_.Read("server/TMW_version.dat"));
  }

  // Changes the digest and signs it with the key, as somebody may by hand.
  void Resign(const std::string& piece, const std::string& instead) {
    std::string digest = sandbox_.Read("server/TMW_version.dat");
    digest.replace(digest.find(piece), piece.size(), instead);
    sandbox_.Write("server/TMW_version.dat", digest);
    const std::string signature = signer_.Sign({}, digest);
    sandbox_.Write(SignatureFile(), signature);
    sandbox_.Write("server/TMW_version.dat.minisig", signature);
  }

  const Sandbox sandbox_;
  ScopedPorts ports_;
  HandClock clock_;
  const std::string key_file_ = MakeKey(sandbox_);
  publish::Signer signer_{Options(180)};
  Sample sample_;
  std::string comment_;
};

TEST_F(Signing, ACheckWithAKeySeesWhatAnUpdaterWouldRefuse) {
  ASSERT_EQ(sample_.Publish(), Log{});
  ASSERT_EQ(Check(), Log{});
  EXPECT_EQ(comment_, "TMW 3.6.0.2 serial:1 expires:2027-05-21 signed:2026-11-22");
  const std::int64_t now = clock_.utc;
  const auto resigned = [&](const std::string& piece, const std::string& instead) {
    return [=, this] { Resign(piece, instead); };
  };
  const struct {
    std::function<void()> spoil;
    Log lines;  // a piece of each
  } cases[] = {
      {[&] { sandbox_.Write("server/TMW_version.dat", "3.6.0.2\r\n1.0\r\n"); },
       {"cannot be had: there is no such file", "warning TMW_links"}},
      {[&] { sandbox_.Write(SignatureFile(), "garbage"); }, {"signature is malformed"}},
      {[&] { sandbox_.Write(SignatureFile(), signer_.Sign({}, "else")); }, {"does not belong"}},
      {resigned("product:", "products:"), {"demand the lines manifest:, product:"}},
      {resigned("product:TMW", "product:ABC"), {"signed for another product: ABC"}},
      {resigned("manifest:", "manifests:"), {"demand the lines", "warning TMW_links.dat: 1 of 2"}},
      {resigned("serial:1", "serial:1\r\nserial:1"), {"The line serial: comes twice"}},
      {[&] { sandbox_.Write("server/TMW_version.dat.minisig", ""); }, {"people would verify"}},
      {[&] { clock_.utc = now + 149 * kDay; }, {}},
      {[&] { clock_.utc = now + 150 * kDay; }, {"warning TMW_version.dat: It expires on 2027-05-"}},
      {[&] { clock_.utc = now + 180 * kDay; }, {"warning TMW_version.dat: It expires on 2027-05-"}},
      {[&] { clock_.utc = now + 181 * kDay; }, {"It has expired: its last day is 2027-05-21"}},
  };
  const std::string good = sandbox_.Read("server/TMW_version.dat");
  const std::string signature = sandbox_.Read(SignatureFile());
  for (const auto& c : cases) {
    c.spoil();
    const Log lines = Check();
    EXPECT_EQ(lines.size(), c.lines.size()) << testing::PrintToString(lines);
    for (const std::string& line : c.lines)
      EXPECT_TRUE(HasFault(lines, line)) << line << testing::PrintToString(lines);
    clock_.utc = now;
    sandbox_.Write("server/TMW_version.dat", good);
    sandbox_.Write("server/TMW_version.dat.minisig", signature);
    sandbox_.Write(SignatureFile(), signature);
  }
  publish::MakeKeys(sandbox_.Path("other"), std::nullopt);
  EXPECT_TRUE(HasFault(Check(sandbox_.Path("other.pub")), "of the key " + signer_.KeyId()));
}

TEST_F(Signing, SerialsGrowAndWhatWasSignedIsFollowedBySignedOnesOnly) {
  const std::string root = sandbox_.Path("server");
  publish::Faults faults;
  EXPECT_TRUE(publish::Renew(root, signer_, faults).version.empty());
  EXPECT_TRUE(HasFault(Lines(faults), "Nothing is announced here"));
  ASSERT_EQ(sample_.Publish(), Log{});
  sample_.Describe("3.6.0.2\" V", "3.6.1.4\" V");
  sample_.WriteScript("next.xml", "3.6.0", "3.6.1");
  sample_.options.signer = nullptr;
  EXPECT_TRUE(HasFault(sample_.Publish(), "sign this one too"));
  EXPECT_FALSE(sandbox_.Has("server/TMW_3.6.1.4"));
  sample_.options.is_announced = false;
  ASSERT_EQ(sample_.Publish(), Log{});
  ASSERT_EQ(Check(), Log{}) << "the older release is still announced";

  const auto expect = [&](const publish::Announcement& made, const std::string& version,
                          std::int64_t serial) {
    EXPECT_EQ(made.version, version);
    ASSERT_TRUE(made.signed_part);
    EXPECT_EQ(made.signed_part->serial, serial);
    EXPECT_EQ(Check(), Log{});
    EXPECT_NE(comment_.find(version + " serial:" + std::to_string(serial)), std::string::npos);
  };
  faults = {};
  expect(publish::Announce(root, "3.6.1.4", &signer_, faults), "3.6.1.4", 2);
  expect(publish::Renew(root, signer_, faults), "3.6.1.4", 3);
  publish::CheckNotOlder(root, "3.6.0.2", "", faults);
  EXPECT_TRUE(HasFault(Lines(faults), "Version 3.6.1.4 is announced, which is newer"));
  faults = {};
  const std::string servers = sandbox_.Write("server/TMW_links.dat", "https://kept/\r\n");
  expect(publish::Retract(root, &signer_, faults), "3.6.0.2", 4);
  EXPECT_EQ(sandbox_.Read("server/TMW_links.dat"), "https://kept/\r\n");
  publish::SigningOptions options = Options(1);
  options.serial = 4;
  publish::Renew(root, publish::Signer(options), faults);
  EXPECT_TRUE(HasFault(Lines(faults), "must be higher than the announced one, 4"));
  options.serial = 1'000'000'000'000'001;
  publish::Renew(root, publish::Signer(options), faults);
  EXPECT_TRUE(HasFault(Lines(faults), "The serial is above 1000000000000000"));
  faults = {};
  options.serial = 40;
  publish::Renew(root, publish::Signer(options), faults);
  EXPECT_EQ(publish::Renew(root, signer_, faults).signed_part->serial, 41);
  // What has been changed since is not signed.
  sandbox_.Write("server/TMW_3.6.0.2/Updater.exe", "upd4ter");
  const std::string before = sandbox_.Read("server/TMW_version.dat");
  publish::Renew(root, signer_, faults);
  sandbox_.Write("server/TMW_3.6.1.4/_PackageManifest.tmz", "swapped");
  publish::Announce(root, "3.6.1.4", &signer_, faults);
  EXPECT_TRUE(HasFault(Lines(faults), "Updater.exe: It is not the file that was published"));
  EXPECT_TRUE(HasFault(Lines(faults), "Manifest.tmz: It is not the file that was published"));
  EXPECT_EQ(sandbox_.Read("server/TMW_version.dat"), before);
  faults = {};
  sandbox_.Write("server/TMW_version.dat", "3.6.0.2\r\n1.0\r\nserial:x\r\n");
  publish::CheckMayAnnounce(root, &signer_, faults);
  EXPECT_TRUE(HasFault(Lines(faults), "give --serial"));
}

TEST_F(Signing, NoFaultLeavesADigestWithoutItsSignature) {
  ASSERT_EQ(sample_.Publish(), Log{});
  FaultyFileSystem files(*ports_->files);
  ports_->files = &files;
  bool is_done = false;
  for (std::size_t changes = 0; !is_done; ++changes) {
    files.changes_left = changes;
    try {
      publish::Faults faults;
      publish::Announce(sandbox_.Path("server"), "3.6.0.2", &signer_, faults);
      is_done = true;
    } catch (const tmw::ProgramError&) {
      // The next one gets a step further.
    }
    files.changes_left.reset();
    for (const std::string& line : Check())
      EXPECT_TRUE(line.starts_with("warning TMW_version.dat.minisig")) << changes << line;
    ASSERT_LT(changes, 100U);
  }
  EXPECT_EQ(Check(), Log{});
}

}  // namespace
}  // namespace tests
