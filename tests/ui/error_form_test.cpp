#include "ui/error_form.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "foundation/version.h"
#include "ports/system_info.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

const std::string kDashes = "\r\n——————————————————————————————————————————————————\r\n";

class FixedSystemInfo final : public ports::SystemInfo {
 public:
  bool is_broken = false;
  std::string name;

  std::optional<ports::OsFacts> Os() override {
    if (is_broken) throw std::runtime_error("no version");
    return ports::OsFacts{6, 1, 7601, 2, "Service Pack 1", name};
  }
  ports::HardwareFacts Hardware() override { return {2047U << 20, 1024U << 20, 7, 0, 4}; }
  ports::SystemFolders Folders() override { return {}; }
  std::string DecimalSeparator() override { return ","; }
};

TEST(ErrorForm, TheFullTextGathersWhatSupportNeeds) {
  const std::string build = "Сборка программы обновления: " + GetAppVersionString() + "\r\n";
  const std::string tail =
      build +
      "Версия Windows: 6.1.7601 (NT), Service Pack 1\r\n"
      "RAM: 2047 Mb, free: 1024 Mb; VM: 0 Mb, free VM: 0 Mb; processors: 4\r\n";
  const tests::ScopedPorts ports;
  FixedSystemInfo system_info;
  ports->system_info = &system_info;
  const struct {
    const char* message;
    const char* chain;
    std::int32_t code;
    const char* short_text;
    std::string full_text;  // up to the build
  } cases[] = {
      {"Беда", "", 0, "Беда", "Беда" + kDashes},
      {"Беда", "", 5, "Беда", "Беда" + kDashes + "Код ошибки: 5 (0x5)\r\n"},
      {"A\x01"
       "B\x01",
       "", 0, "A", "A" + kDashes + "B" + kDashes + kDashes},
      {"Нет", "[a]\r\n[b]", -2147467259, "Нет",
       "Нет" + kDashes + "Стек:\r\n[a]\r\n[b]" + kDashes +
           "Код ошибки: -2147467259 (0x80004005)\r\n"},
      {"", "", 0, "", kDashes},
  };
  for (const auto& c : cases) {
    ErrorForm form;
    form.Compose(c.message, c.chain, c.code);
    EXPECT_EQ(form.ShortText(), c.short_text);
    EXPECT_EQ(form.FullText(), c.full_text + tail);
  }
  ErrorForm form;
  system_info.name = "Система 12, Ядро 6.1";
  form.Compose("Беда", "", 0);
  EXPECT_NE(form.FullText().find("\r\nВерсия системы: Система 12, Ядро 6.1\r\nRAM: "),
            std::string::npos);
  system_info.is_broken = true;
  form.Compose("Беда", "", 0);
  EXPECT_EQ(form.FullText(), "Беда" + kDashes + build);
}

TEST(ErrorForm, DetailsAndCopyingActOnTheWholeText) {
  const tests::ScopedPorts ports;
  tests::ScriptedFrontEnd front_end;
  ports->front_end = &front_end;
  ErrorForm form;
  front_end.windows.on_error = [&](ports::ErrorViewEvents& events) {
    events.OnCopy();
    events.OnDetails();
    events.OnDetails();
    front_end.windows.has_clipboard = false;
    events.OnCopy();
  };
  form.Execute("A\x01Б", "", 0, "");
  const std::string copied = "copy " + form.FullText();
  EXPECT_EQ(front_end.windows.log,
            (std::vector<std::string>{"error Ошибка|A|" + form.FullText(), "short Подробнее  >>",
                                      copied, "full Подробнее  <<", "short Подробнее  >>", copied,
                                      "full Подробнее  <<"}));
  front_end.windows.log.clear();
  front_end.windows.on_error = nullptr;
  ErrorForm().Execute("http://u:p@s/", "", 0, "Заголовок");
  EXPECT_TRUE(
      front_end.windows.log.front().starts_with("error Заголовок|http://u:***@s/|http://u:***@s/"));
}

}  // namespace
}  // namespace tmw
