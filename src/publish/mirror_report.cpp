#include "publish/mirror_report.h"

#include <algorithm>
#include <cstdint>

#include "foundation/number_text.h"
#include "foundation/text.h"
#include "publish/answer.h"
#include "publish/publish_texts.h"
#include "tools/fill.h"
#include "tools/program.h"

namespace publish {

using tools::Fill;
using tools::Json;

std::optional<std::size_t> SampleOf(const tools::Arguments& arguments) {
  const auto given = arguments.Value("--sample");
  if (!given) return std::nullopt;
  if (!arguments.Has("--mirrors"))
    throw tools::UsageError(Fill(texts::kNeedsMirrors, {"--sample"}));
  const auto number = tmw::ReadWholeNumber(*given);
  if (number.value_or(0) < 1) throw tools::UsageError(texts::kSampleNeedsNumber);
  return static_cast<std::size_t>(*number);
}

std::string AddTo(Json& answer, const std::vector<MirrorState>& states) {
  Json list = Json::array();
  std::string words;
  for (const MirrorState& state : states) {
    const std::vector<Fault>& faults = state.faults.All();
    Json mirror = {{"server", state.server},
                   {"state", state.IsWhole()           ? "whole"
                             : state.unreached.empty() ? "faulty"
                                                       : "unreached"},
                   {"checked", state.checked},
                   {"components", state.components},
                   {"faults", ListOf(faults)}};
    list.push_back(std::move(mirror));
    if (!state.unreached.empty()) {
      words += Fill(texts::kMirrorUnreached, {state.server, tmw::OneLine(state.unreached)});
    } else if (!faults.empty()) {
      words +=
          Fill(texts::kMirrorFaulty, {state.server, std::to_string(faults.size()),
                                      faults.front().place, tmw::OneLine(faults.front().text)});
    } else {
      words += Fill(texts::kMirrorWhole, {state.server, std::to_string(state.checked),
                                          std::to_string(state.components)});
    }
  }
  answer["mirrors"] = std::move(list);
  return words;
}

int CodeOf(const std::vector<MirrorState>& states) {
  int code = tools::kDone;
  for (const MirrorState& state : states) {
    if (!state.IsWhole()) code = std::max(code, state.unreached.empty() ? kFaultsFound : kFailed);
  }
  return code;
}

}  // namespace publish
