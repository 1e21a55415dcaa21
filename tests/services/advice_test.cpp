#include "services/advice.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "services/updater_settings.h"
#include "tests/support/environment.h"

namespace {

using namespace tmw;

TEST(Advice, FollowsFromTheNumberOfAnError) {
  const bool on_windows = tests::kOnWindows;
  const std::pair<std::int32_t, FailureKind> cases[] = {
      {12007, FailureKind::kNameNotResolved},
      {12029, FailureKind::kNoConnection},
      {12031, FailureKind::kInterrupted},
      {12037, FailureKind::kCertificateDate},
      {12038, FailureKind::kCertificate},
      {12045, FailureKind::kUnknownAuthority},
      {12157, FailureKind::kNoSecureChannel},
      {12165, FailureKind::kProxy},
      {3045, FailureKind::kDatabaseHeld},
      {3356, FailureKind::kDatabaseHeld},
      {3024, FailureKind::kDatabaseMissing},
      {3026, FailureKind::kDiskFull},
      {on_windows ? 112 : ENOSPC, FailureKind::kDiskFull},
      {on_windows ? 5 : EACCES, FailureKind::kNoRights},
      {on_windows ? 1223 : EROFS, FailureKind::kNoRights},
      {on_windows ? 32 : ETXTBSY, FailureKind::kFileHeld},
      {1001, FailureKind::kOther},
      {0, FailureKind::kOther}};
  for (const auto& [number, kind] : cases)
    EXPECT_EQ(KindOfNumber(number), kind) << number;
}

TEST(Advice, NamesTheProxyWithoutItsPassword) {
  UpdaterSettings settings;
  for (const char* const proxy : {"", "u:тайна@proxy:3128"}) {
    settings.ProxyServer = proxy;
    SetUpdaterSettings(settings);
    for (const FailureKind kind : {FailureKind::kNoConnection, FailureKind::kNameNotResolved,
                                   FailureKind::kProxy, FailureKind::kProxyLogin}) {
      const bool is_named = AdviceFor(kind).find("\"u:***@proxy:3128\"") != std::string::npos;
      EXPECT_EQ(is_named, *proxy != 0) << AdviceFor(kind);
      EXPECT_EQ(AdviceFor(kind).find("тайна"), std::string::npos);
    }
  }
  SetUpdaterSettings({});
}

TEST(Advice, NamesTheCommandsThatGiveRightsWhereThereAreSuch) {
  const bool names_them =
      AdviceFor(FailureKind::kNoRights).find("sudo или pkexec") != std::string::npos;
  EXPECT_EQ(names_them, !tests::kOnWindows);
}

TEST(Advice, IsOneSentenceForEachKind) {
  for (int kind = 0; kind <= static_cast<int>(FailureKind::kVersions); ++kind) {
    const std::string advice = AdviceFor(FailureKind(kind));
    EXPECT_TRUE(advice.ends_with('.')) << advice;
    EXPECT_EQ(advice.find(". "), std::string::npos) << advice;
    EXPECT_EQ(advice == AdviceFor(FailureKind::kOther), kind == 0) << advice;
  }
}

}  // namespace
