#include "jet/file/property_block.h"

#include <cstddef>
#include <string_view>
#include <utility>

#include "foundation/encodings.h"

namespace jet::file {
namespace {

std::string Utf8(std::string_view stored) {
  return tmw::Utf16ToUtf8(tmw::BytesToUtf16(stored));
}

std::vector<std::string> ParseNames(ByteView chunk) {
  std::vector<std::string> names;
  std::size_t at = 0;
  while (at < chunk.Length()) {
    const std::size_t length = chunk.Get(Field<std::uint16_t>{at});
    at += properties::kTextLengthWidth;
    names.push_back(Utf8(chunk.Slice(at, length)));
    at += length;
  }
  return names;
}

PropertySet ParseSet(ByteView chunk, std::uint16_t kind, const std::vector<std::string>& names) {
  PropertySet set;
  set.kind = kind;
  set.owner = Utf8(chunk.Slice(properties::kName, chunk.Get(properties::kNameLength)));
  std::size_t at = chunk.Get(properties::kNameBlockLength);
  while (at < chunk.Length()) {
    const std::size_t length = chunk.Get(properties::kValueLength, at);
    const ByteView record = chunk.Part(at, length);
    const std::size_t name = record.Get(properties::kValueName);
    if (name >= names.size()) chunk.Fail(texts::kBadProperties);
    StoredProperty property;
    property.name = names[name];
    property.type = record.Get(properties::kValueType);
    property.flag = record.Get(properties::kValueFlag);
    property.value = record.Slice(properties::kContents, record.Get(properties::kContentsLength));
    set.properties.push_back(std::move(property));
    at += length;
  }
  return set;
}

}  // namespace

std::vector<PropertySet> ParseProperties(ByteView block) {
  std::vector<PropertySet> sets;
  if (block.Length() == 0) return sets;
  const std::string_view mark(properties::kMark, sizeof(properties::kMark));
  if (block.Slice(0, mark.size()) != mark) block.Fail(texts::kBadProperties);
  std::vector<std::string> names;
  std::size_t at = properties::kFirstChunk;
  while (at < block.Length()) {
    const std::size_t length = block.Get(properties::kChunkLength, at);
    const std::uint16_t kind = block.Get(properties::kChunkKind, at);
    if (length < properties::kChunkHead) block.Fail(texts::kBadProperties);
    const ByteView chunk =
        block.Part(at, length).Part(properties::kChunkHead, length - properties::kChunkHead);
    if (kind == properties::kNames) {
      names = ParseNames(chunk);
    } else {
      sets.push_back(ParseSet(chunk, kind, names));
    }
    at += length;
  }
  return sets;
}

}  // namespace jet::file
