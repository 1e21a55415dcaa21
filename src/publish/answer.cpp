#include "publish/answer.h"

#include <algorithm>
#include <initializer_list>
#include <iostream>
#include <map>
#include <string_view>
#include <vector>

#include "foundation/utc_day.h"
#include "publish/publish_texts.h"
#include "tools/fill.h"
#include "tools/program.h"

namespace publish {

using tools::Arguments;
using tools::Fill;
using tools::Json;

namespace {

// More faults of one cause become one line.
constexpr std::size_t kMostLines = 3;

// What the places of faults of that cause are.
const char* PlacesOf(const std::string& cause) {
  const auto is_one_of = [&](std::initializer_list<std::string_view> causes) {
    return std::find(causes.begin(), causes.end(), cause) != causes.end();
  };
  if (is_one_of({texts::kUnknownKind, texts::kBecomesDictionary, texts::kNotImported,
                 texts::kTableTwice, texts::kVersionTable, texts::kFileOfTable}))
    return texts::kTablesOfCause;
  const bool is_of_lines = is_one_of(
      {texts::kUnknownAttribute, texts::kUnknownElement, texts::kMissing, texts::kNoTruth,
       texts::kNoPackMethod, texts::kNoAddress, texts::kMatchesNoFile, texts::kMatchesNoTable});
  return is_of_lines ? texts::kLinesOfCause : texts::kFilesOfCause;
}

// One line a fault; many of one cause share the line of the first.
std::string LinesOf(const std::vector<Fault>& faults, const char* line) {
  std::map<std::string_view, std::size_t> counts;
  for (const Fault& fault : faults)
    ++counts[fault.cause];
  std::string lines;
  for (const Fault& fault : faults) {
    std::size_t& count = counts[fault.cause];
    if (count == 0) continue;  // it has been counted on another's line
    std::string place = fault.place;
    if (count > kMostLines) {
      place = Fill(PlacesOf(fault.cause), {std::to_string(count), place});
      count = 0;
    }
    lines += Fill(line, {place, fault.text});
  }
  return lines;
}

}  // namespace

Json ListOf(const std::vector<Fault>& faults) {
  Json list = Json::array();
  for (const Fault& fault : faults)
    list.push_back({{"place", fault.place}, {"text", fault.text}});
  return list;
}

int Answer(const Arguments& arguments, Json answer, const Faults& faults,
           const std::string& words) {
  if (arguments.Has(tools::kJsonOption)) {
    answer["warnings"] = ListOf(faults.Warnings());
    answer["faults"] = ListOf(faults.All());
    std::cout << tools::JsonLine(answer);
  } else {
    std::cout << LinesOf(faults.All(), texts::kFault);
    if (!faults.IsEmpty())
      std::cout << Fill(texts::kFaultCount, {std::to_string(faults.All().size())});
    std::cout << LinesOf(faults.Warnings(), texts::kWarning) << words;
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
