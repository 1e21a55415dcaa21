#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "ports/page_file.h"
#include "ports/ports.h"
#include "tests/support/sandbox.h"

namespace {

using ports::PageFileMode;

ports::PageFiles& Files() {
  return *ports::CurrentPorts().page_files;
}

std::string ReadAt(ports::PageFile& file, std::uint64_t offset, std::size_t length) {
  std::string bytes(length, '?');
  const auto count = file.ReadAt(offset, bytes.data(), length);
  EXPECT_TRUE(count.ok);
  return bytes.substr(0, count.value);
}

TEST(PageFile, WritesAndReadsAtGivenPlaces) {
  const tests::Sandbox sandbox;
  const std::string path = sandbox.Path("Книга.mdb");
  auto created = Files().Open(path, PageFileMode::kCreateNew);
  ASSERT_TRUE(created.ok);
  EXPECT_TRUE(created.value->WriteAt(5, "world", 5).ok);
  EXPECT_TRUE(created.value->WriteAt(0, "hello", 5).ok);
  EXPECT_EQ(created.value->Size().value, 10U);
  EXPECT_EQ(ReadAt(*created.value, 3, 4), "lowo");
  EXPECT_TRUE(created.value->Flush().ok);
  EXPECT_TRUE(created.value->Close().ok);
  EXPECT_FALSE(created.value->Close().ok);

  EXPECT_FALSE(Files().Open(path, PageFileMode::kCreateNew).ok);
  auto opened = Files().Open(path, PageFileMode::kRead);
  ASSERT_TRUE(opened.ok);
  // Only what is there, also when the end lies within.
  EXPECT_EQ(ReadAt(*opened.value, 8, 100), "ld");
  EXPECT_EQ(ReadAt(*opened.value, 10, 100), "");
  EXPECT_EQ(ReadAt(*opened.value, 5000000000, 1), "");
  EXPECT_FALSE(opened.value->WriteAt(0, "x", 1).ok);
}

TEST(PageFile, KnowsWhichFileANameStandsFor) {
  const tests::Sandbox sandbox;
  const std::string old_path = sandbox.Path("a.mdb");
  const std::string new_path = sandbox.Path("b.mdb");
  EXPECT_FALSE(Files().IdentityOf(old_path).ok);
  EXPECT_FALSE(Files().Open(old_path, PageFileMode::kRead).ok);
  for (const std::string& path : {old_path, new_path})
    ASSERT_TRUE(Files().Open(path, PageFileMode::kCreateNew).ok);
  auto held = Files().Open(old_path, PageFileMode::kRead);
  ASSERT_TRUE(held.ok);
  EXPECT_EQ(held.value->Identity().value, Files().IdentityOf(old_path).value);
  EXPECT_FALSE(held.value->Identity().value == Files().IdentityOf(new_path).value);

  // Another file takes the name while the first one is open.
  std::filesystem::rename(tests::ToPath(old_path), tests::ToPath(sandbox.Path("c.mdb")));
  std::filesystem::rename(tests::ToPath(new_path), tests::ToPath(old_path));
  EXPECT_FALSE(held.value->Identity().value == Files().IdentityOf(old_path).value);
}

}  // namespace
