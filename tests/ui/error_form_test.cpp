#include "ui/error_form.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "foundation/version.h"
#include "platform/system_info.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

const std::string kDashes = "\r\n——————————————————————————————————————————————————\r\n";

class BrokenSystemInfo final : public platform::SystemInfo {
 public:
  std::optional<platform::OsFacts> Os() override { throw std::runtime_error("no version"); }
  platform::HardwareFacts Hardware() override { throw std::runtime_error("no memory"); }
  platform::SystemFolders Folders() override { return {}; }
};

TEST(ErrorForm, TheFullTextGathersWhatSupportNeeds) {
  const std::string build = "Сборка программы обновления: " + GetAppVersionString() + "\r\n";
  const std::string tail = build + "Версия Windows: " + GetOSVersionString() + "\r\n";
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
  const tests::ScopedPorts ports;
  BrokenSystemInfo broken;
  ports->system_info = &broken;
  ErrorForm form;
  form.Compose("Беда", "", 0);
  EXPECT_EQ(form.FullText(), "Беда" + kDashes + build);
}

TEST(ErrorForm, TheDetailsButtonSwitchesBetweenTheViews) {
  const tests::ScopedPorts ports;
  tests::ScriptedFrontEnd front_end;
  ports->front_end = &front_end;
  front_end.answers = {true, true, false};
  ErrorForm form;
  form.Execute("A\x01Б", "", 0, "");
  const std::string shown_short = "question|Ошибка|A\r\n\r\nПодробнее  >>";
  EXPECT_EQ(front_end.log,
            (std::vector<std::string>{
                shown_short, "question|Ошибка|" + form.FullText() + "\r\n\r\nПодробнее  <<",
                shown_short}));
  front_end.log.clear();
  front_end.can_ask = false;
  form.Execute("A\x01Б", "", 0, "Заголовок");
  EXPECT_EQ(front_end.log, std::vector<std::string>{"warning|Заголовок|" + form.FullText()});
}

}  // namespace
}  // namespace tmw
