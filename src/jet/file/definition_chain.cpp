#include "jet/file/definition_chain.h"

#include <cstddef>

namespace jet::file {
namespace {

constexpr std::size_t kPagePayload = kPageSize - definition::kHead;

}  // namespace

DefinitionChain ReadDefinitionChain(PageSource& source, PageNumber first, PageNumber from) {
  DefinitionChain chain;
  std::size_t length = 0;
  std::size_t most_pages = 1;
  PageNumber next = first;
  while (next != 0) {
    if (chain.pages.size() == most_pages) throw Damage(first, texts::kLongDefinitionChain);
    const PageView page = source.Read(next, from);
    page.Expect(PageKind::kDefinition);
    if (chain.pages.empty()) {
      length = page.Get(definition::kLength, definition::kHead);
      if (length < definition::kHead + definition::kFixedLength ||
          length > limits::kDefinitionLength)
        page.Fail(texts::kBadDefinitionLength);
      length -= definition::kHead;
      most_pages = (length + definition::kReserve + kPagePayload - 1) / kPagePayload;
    }
    chain.pages.push_back(next);
    chain.contents += page.Slice(definition::kHead, kPagePayload);
    from = next;
    next = page.Get(definition::kNextPage);
  }
  if (first == 0 || chain.contents.size() < length)
    throw Damage(first, texts::kShortDefinitionChain);
  chain.contents.resize(length);
  return chain;
}

}  // namespace jet::file
