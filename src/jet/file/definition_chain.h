#pragma once

#include <string>
#include <vector>

#include "jet/file/page_source.h"

namespace jet::file {

// One definition put together from the pages of its chain.
struct DefinitionChain {
  std::vector<PageNumber> pages;
  std::string contents;  // as long as the definition says

  ByteView View() const { return {pages.front(), contents}; }
};

// Throws Damage when the chain is no definition, ends early or goes on for too long.
DefinitionChain ReadDefinitionChain(PageSource& source, PageNumber first, PageNumber from);

}  // namespace jet::file
