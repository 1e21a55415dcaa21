#pragma once

#include <functional>
#include <string_view>

namespace tmw {

// What an XML document may hold before a parser sees it. Parsers take minutes over one element with
// a hundred thousand attributes, or expand a few lines without bounds.
inline constexpr int kMaxXmlAttributes = 256;  // of one element
inline constexpr int kMaxXmlName = 1000;       // characters
inline constexpr int kMaxXmlElements = 400'000;

// Returns null for a document within the bounds, else what is wrong with it, in words. Bounded,
// too: the depth, by ports::kXmlMaxDepth. Refused: entity declarations, a document type with
// declarations of its own, encodings in which "<" is not what it looks like. Whether the document
// is well-formed is the parser's affair. may_go_on (may be empty) is called now and then; if it
// returns false, the rest is not looked at and the document is refused.
const char* FindXmlDanger(std::string_view bytes, const std::function<bool()>& may_go_on);

}  // namespace tmw
