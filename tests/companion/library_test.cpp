#include <gtest/gtest.h>

#include "packages/companion_functions.h"
#include "platform/factories.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "sha256/integrity_trailer.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tests {
namespace {

TEST(CompanionLibrary, WithoutTheFileTheErrorNamesIt) {
  Sandbox sandbox;
  const ScopedPorts ports;
  const auto missing = platform::MakeCompanionLibrary(sandbox.Path("UnTmz.none"));
  const auto no_library = platform::MakeCompanionLibrary(sandbox.Write("text", "no library"));
  const auto other_library = platform::MakeCompanionLibrary(TMW_REGISTERING_LIBRARY);
  for (const auto* library : {&missing, &no_library, &other_library}) {
    ports->companion = library->get();
    const tmw::ProgramError error = Caught([] { tmw::CompanionFunctions(); });
    EXPECT_NE(error.Number, 0);
    EXPECT_TRUE(error.Description.starts_with("Ошибка загрузки библиотеки \"" + (*library)->Path() +
                                              "\": \r\n"))
        << error.Description;
  }
}

std::string WithTrailer(const std::string& content) {
  sha256::Stream digest;
  digest.Update(content.data(), content.size());
  const auto trailer = sha256::MakeIntegrityTrailer({content.size(), digest.Finish()});
  return content + std::string(trailer.begin(), trailer.end());
}

TEST(CompanionLibrary, IntegrityDataIsCheckedByBothFunctions) {
  Sandbox sandbox;
  const std::string sound = WithTrailer(std::string(100000, 'x'));
  std::string changed = sound;
  changed[5] = 'y';
  std::string changed_trailer = sound;
  changed_trailer.back() = 'y';
  const struct {
    std::string bytes;
    bool intact;
  } kCases[] = {
      {sound, true},        {WithTrailer(""), true},  {changed, false}, {changed_trailer, false},
      {sound + "x", false}, {sound.substr(1), false}, {"short", false}, {"", false}};
  const ports::EntryPoints& functions = tmw::CompanionFunctions();
  for (const auto& test : kCases) {
    sandbox.Write("file", test.bytes);
    const std::string path = ports::CurrentPorts().companion->NarrowPath(sandbox.Path("file"));
    for (const auto function : {functions.Sha256_GetFileCrc, functions.Sha256_GetFileCrcEx}) {
      const bool intact = function(path.c_str()) != 0;
      const ports::SystemCode code = ports::CurrentPorts().companion->LastError();
      EXPECT_EQ(intact, test.intact) << test.bytes.size();
      EXPECT_TRUE(intact || code != 0) << test.bytes.size();
    }
  }
  EXPECT_EQ(functions.Sha256_GetFileCrc("none"), 0);
  const ports::SystemCode code = ports::CurrentPorts().companion->LastError();
  EXPECT_TRUE(ports::CurrentPorts().files->MeansMissing(code));
}

TEST(CompanionLibrary, RegistrationHandsOnWhatTheLibrarySays) {
  const ports::EntryPoints& functions = tmw::CompanionFunctions();
  Sandbox sandbox;
  EXPECT_EQ(functions.RegisterDll(TMW_REGISTERING_LIBRARY), 0);
  EXPECT_EQ(functions.UnregisterDll(TMW_REGISTERING_LIBRARY), 5);
  EXPECT_NE(functions.RegisterDll("none.dll"), 0);
  const std::string path =
      ports::CurrentPorts().companion->NarrowPath(sandbox.Write("a.dll", "text"));
  EXPECT_NE(functions.RegisterDll(path.c_str()), 0);
}

}  // namespace
}  // namespace tests
