#pragma once

#include <array>
#include <cstdint>

#include "jet/file/page_buffer.h"
#include "jet/file/page_view.h"

namespace jet::file {

// The first page of a file. Besides what the accessors name, the stretch holds bytes of unknown
// meaning, so it is kept as a whole: a rewritten file takes it over from its source.
struct Header {
  std::array<char, header::kMaskedLength> plain{};  // bytes 0x18 to 0x97, unmasked
  bool has_pending_commit = false;                  // somebody died while changing the file

  PageNumber ObjectsTable() const { return Get(header::kObjectsTable); }
  PageNumber RightsTable() const { return Get(header::kRightsTable); }
  PageNumber QueriesTable() const { return Get(header::kQueriesTable); }
  PageNumber RelationsTable() const { return Get(header::kRelationsTable); }
  std::uint16_t CodePage() const { return Get(header::kCodePage); }
  std::uint32_t BuildNumber() const { return Get(header::kBuildNumber); }
  std::uint32_t SortOrder() const { return Get(header::kSortOrder); }
  double CreationDate() const { return Get(header::kCreationDate); }  // days since 1899-12-30

  template <typename T>
  T Get(Field<T> field) const {
    return LoadLittle<T>(plain.data() + field.offset - header::kMasked);
  }
  template <typename T>
  void Set(Field<T> field, T value) {
    StoreLittle(plain.data() + field.offset - header::kMasked, value);
  }
  bool operator==(const Header&) const = default;
};

// Throws Damage with the reason when this is no file of this format or its pages are encoded; 3031
// when it is protected by a password.
Header ParseHeader(const PageView& page);

// What a new file's header says.
struct HeaderFacts {
  double creation_date = 0;
  std::uint16_t code_page = 1252;
  std::uint32_t sort_order = 0x409;
  std::uint32_t build_number = 9756;
};

Header MakeHeader(const HeaderFacts& facts);

// The whole first page, no commit pending.
PageBuffer PackHeader(const Header& header);

// The integer part of the creation date, whose bytes stand in the place of an empty password and
// in the key of the account ids. 0 for what is no date.
std::uint32_t CreationDay(const Header& header);

}  // namespace jet::file
