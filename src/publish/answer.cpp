#include "publish/answer.h"

#include <iostream>
#include <utility>

#include "foundation/utc_day.h"
#include "publish/publish_texts.h"
#include "tools/fill.h"
#include "tools/program.h"

namespace publish {

using tools::Arguments;
using tools::Fill;
using tools::Json;

int Answer(const Arguments& arguments, Json answer, const Faults& faults,
           const std::string& words) {
  if (arguments.Has(tools::kJsonOption)) {
    Json list = Json::array();
    for (const Fault& fault : faults.All())
      list.push_back({{"place", fault.place}, {"text", fault.text}});
    answer["faults"] = std::move(list);
    std::cout << tools::JsonLine(answer);
  } else {
    for (const Fault& fault : faults.All())
      std::cout << fault.place << ": " << fault.text << '\n';
    if (!faults.IsEmpty())
      std::cout << Fill(texts::kFaultCount, {std::to_string(faults.All().size())});
    std::cout << words;
  }
  return faults.IsEmpty() ? tools::kDone : kFaultsFound;
}

void AddTo(Json& answer, const SignedPart& part, const std::string& key_id) {
  answer["serial"] = part.serial;
  answer["expires"] = tmw::UtcDayText(part.last_day);
  answer["key"] = key_id;
}

std::string WordsOf(const SignedPart& part, const std::string& key_id) {
  return Fill(texts::kSignedAs,
              {key_id, std::to_string(part.serial), tmw::UtcDayText(part.last_day)});
}

}  // namespace publish
