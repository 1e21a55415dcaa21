#include "companion/rar/names.h"

#include <gtest/gtest.h>

namespace companion::rar {
namespace {

TEST(RarNames, EveryStoredFormIsDecoded) {
  const struct {
    std::string bytes;
    bool has_unicode;
    bool from_unix;
    const char* text;
    bool sound;
  } kCases[] = {
      {"plain.txt", false, false, "plain.txt", true},
      {"\x8E\xE2\xE7\xF1\xE2", false, false, "Отчёт", true},  // code page 866
      {"\x8E\xE2\xE7\xF1\xE2", false, true, "Отчёт", true},   // not UTF-8: the same
      {"Отчёт", false, true, "Отчёт", true},                  // UTF-8 of a Unix host
      {"Отчёт", true, false, "Отчёт", true},                  // UTF-8 by the flag
      {"bad\xFF", true, false, "bad\uFFFD", false},
      // a low byte, one with the common high byte, both bytes
      {std::string("???\0\x04\x18\x41\x1E\x20\x26", 10), true, false, "AО☠", true},
      {std::string("abcdef\0\x04\xC0\x02", 10), true, false, "abcd", true},  // a run as it is
      {std::string("abcdef\0\x04\xC0\x80\x01", 11), true, false, "\u0462\u0463", true},  // shifted
      {std::string("abcdef\0\x04\xC0\x7F", 10), true, false, "abcdef",
       false},  // the run is too long
  };
  for (const auto& test : kCases) {
    const DecodedName name = DecodeRar4Name(test.bytes, test.has_unicode, test.from_unix);
    EXPECT_EQ(name.text, test.text);
    EXPECT_EQ(name.sound, test.sound) << test.text;
  }
}

TEST(RarNames, TheNextVolumeIsFound) {
  const struct {
    const char* name;
    bool new_names;
    const char* next;  // "": none
  } kCases[] = {
      {"d.9/a.part1.rar", true, "d.9/a.part2.rar"},
      {"a1b.rar", true, "a2b.rar"},
      {"/1/plain.rar", true, ""},
      {"a.rar", false, "a.r00"},
      {"a.r00", false, "a.r01"},
      {"a.r99", false, "a.s00"},
      {"a.z99", false, ""},
      {"a.tmz", false, "a.r00"},
      {"dir.x/a", false, "dir.x/a.r00"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(NextVolumeName(test.name, test.new_names).value_or(""), test.next) << test.name;
  }
}

}  // namespace
}  // namespace companion::rar
