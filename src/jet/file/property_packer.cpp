#include "jet/file/property_packer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "foundation/encodings.h"
#include "jet/file/bytes.h"
#include "jet/file/format.h"

namespace jet::file {
namespace {

using Names = std::vector<std::string>;

Names NamesOf(const std::vector<PropertySet>& sets) {
  Names names;
  for (const PropertySet& set : sets) {
    for (const StoredProperty& property : set.properties) {
      if (std::find(names.begin(), names.end(), property.name) == names.end())
        names.push_back(property.name);
    }
  }
  return names;
}

void AppendText(std::string& to, std::string_view text) {
  const std::string bytes = tmw::Utf16ToBytes(tmw::Utf8ToUtf16(text));
  AppendLittle(to, static_cast<std::uint16_t>(bytes.size()));
  to += bytes;
}

void AppendChunk(std::string& to, std::uint16_t kind, std::string_view contents) {
  AppendLittle(to, static_cast<std::uint32_t>(properties::kChunkHead + contents.size()));
  AppendLittle(to, kind);
  to += contents;
}

std::string PackSet(const PropertySet& set, const Names& names) {
  std::string owner;
  AppendText(owner, set.owner);
  std::string contents;
  AppendLittle(contents, static_cast<std::uint32_t>(sizeof(std::uint32_t) + owner.size()));
  contents += owner;
  for (const StoredProperty& property : set.properties) {
    const auto name = std::find(names.begin(), names.end(), property.name) - names.begin();
    AppendLittle(contents,
                 static_cast<std::uint16_t>(properties::kContents + property.value.size()));
    AppendLittle(contents, property.flag);
    AppendLittle(contents, property.type);
    AppendLittle(contents, static_cast<std::uint16_t>(name));
    AppendLittle(contents, static_cast<std::uint16_t>(property.value.size()));
    contents += property.value;
  }
  return contents;
}

}  // namespace

std::string PackProperties(const std::vector<PropertySet>& sets) {
  std::string block;
  const Names names = NamesOf(sets);
  if (names.empty()) return block;
  block.append(properties::kMark, sizeof(properties::kMark));
  std::string name_list;
  for (const std::string& name : names)
    AppendText(name_list, name);
  AppendChunk(block, properties::kNames, name_list);
  for (const PropertySet& set : sets) {
    if (!set.properties.empty()) AppendChunk(block, set.kind, PackSet(set, names));
  }
  return block;
}

}  // namespace jet::file
