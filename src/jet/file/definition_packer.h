#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "jet/file/page_sink.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// The contents of a definition, as they stand behind the heads of its pages. Bytes that the
// format's own engine leaves as they were are zero.
std::string PackDefinition(const TableLayout& table);

// Pages that contents of a length take.
std::size_t DefinitionPageCount(std::size_t contents_length);

// Writes the contents to pages that were reserved for them, as many as they take.
void PutDefinition(PageSink& sink, std::span<const PageNumber> pages, std::string_view contents);

}  // namespace jet::file
