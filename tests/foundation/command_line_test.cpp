#include "foundation/command_line.h"

#include <gtest/gtest.h>

namespace tmw {
namespace {

using Words = std::vector<std::string>;

TEST(CommandLine, IsSplitAtBlanksOutsideQuotesWithCaretsAsEscapes) {
  const struct {
    const char* line;
    Words words;
  } cases[] = {
      {"", {}},
      {"  \t ", {}},
      {" -W\thttp://x/  -e prog ", {"-W", "http://x/", "-e", "prog"}},
      {"\"C:\\Program Files\\а.exe\" -p \"a\tb\"", {"C:\\Program Files\\а.exe", "-p", "a\tb"}},
      {"a\"b c\"d", {"ab cd"}},
      {"a \"\" b", {"a", "b"}},
      {"\"open  end  ", {"open  end"}},
      {"^\"a b^\"", {"\"a", "b\""}},
      {"\"x ^\"y^\" z\"", {"x \"y\" z"}},
      {"a^^b ^c d^", {"a^b", "^c", "d^"}},
      {"^^\"a b\"", {"^a b"}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(SplitCommandLine(c.line), c.words) << c.line;
}

TEST(CommandLine, JoinedArgumentsSplitIntoThemselves) {
  Words words = {"-e", "c:\\Мои программы\\a.exe", "\"", "^", "^^\"", "a\"b^c d", "\t", "-p"};
  EXPECT_EQ(SplitCommandLine(JoinCommandLine(words)), words);
  words.insert(words.end(), {"", "-t", ""});
  EXPECT_EQ(SplitCommandLine(JoinCommandLine(words), EmptyArguments::kKept), words);
  EXPECT_EQ(SplitCommandLine("-p \"\" -t"), (Words{"-p", "-t"}));
}

}  // namespace
}  // namespace tmw
