#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/xml_helpers.h"
#include "publish/faults.h"

namespace publish {

// The 1-based lines on which the elements of a well-formed document begin, in document order.
std::vector<std::int32_t> ElementLines(std::string_view bytes);

// An XML file of the maker's, in which faults have a line.
class LocatedXml {
 public:
  // Returns nothing for a file that cannot be read, which is a fault. name is what faults call it.
  static std::optional<LocatedXml> Open(const std::string& file, const std::string& name,
                                        Faults& faults);

  const tmw::XmlNode& Node() const { return document_->Node(); }

  // "release.xml:17" for an element, "release.xml" for the document.
  std::string PlaceOf(const tmw::XmlNode& node) const;

 private:
  LocatedXml() = default;

  void Number(const tmw::XmlNode& node, const std::vector<std::int32_t>& lines,
              std::size_t& element);

  std::string name_;
  std::unique_ptr<tmw::XmlDocument> document_;
  std::map<const tmw::XmlNode*, std::int32_t> lines_;
};

}  // namespace publish
