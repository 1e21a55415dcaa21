#include "jet/file/header.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include "jet/errors.h"
#include "jet/file/rc4.h"

namespace jet::file {
namespace {

constexpr std::string_view kOldContainerName = "SQLite format 3";

template <std::size_t N>
std::string_view WithZero(const char (&bytes)[N]) {
  return {bytes, N};
}

std::string MaskKey() {
  std::string key;
  AppendLittle(key, header::kMaskKey);
  return key;
}

void JudgeFormat(const PageView& page) {
  const auto has = [&page](std::size_t offset, std::string_view bytes) {
    return page.Slice(offset, bytes.size()) == bytes;
  };
  if (has(0, kOldContainerName)) page.Fail(texts::kOldContainer);
  if (!has(header::kBeginning, WithZero(header::kBeginningBytes))) page.Fail(texts::kNotADatabase);
  if (has(header::kFormatName, WithZero(header::kNewerName))) page.Fail(texts::kNewer);
  if (!has(header::kFormatName, WithZero(header::kJetName))) page.Fail(texts::kNotADatabase);
  const std::uint32_t version = page.Get(header::kVersion);
  if (version == header::kVersion3) page.Fail(texts::kVersion3);
  if (version != header::kVersion4) page.Fail(texts::kUnknownVersion);
}

bool HasPassword(const Header& header) {
  std::string none;
  while (none.size() < header::kPasswordLength)
    AppendLittle(none, CreationDay(header));
  const std::string_view plain(header.plain.data(), header.plain.size());
  return plain.substr(header::kPassword - header::kMasked, none.size()) != none;
}

bool HasPendingCommit(const PageView& page) {
  for (std::size_t i = 0; i < header::kCommitPairs; ++i) {
    const Field<std::uint16_t> pair{header::kCommitArea + 2 * i};
    if (page.Get(pair) == header::kPendingCommit) return true;
  }
  return false;
}

}  // namespace

Header ParseHeader(const PageView& page) {
  JudgeFormat(page);
  const std::string plain = ApplyRc4(MaskKey(), page.Slice(header::kMasked, header::kMaskedLength));
  Header header;
  std::copy(plain.begin(), plain.end(), header.plain.begin());
  if (header.Get(header::kPageKey) != 0) page.Fail(texts::kEncoded);
  if (HasPassword(header)) Fail(kInvalidPassword);
  header.has_pending_commit = HasPendingCommit(page);
  return header;
}

Header MakeHeader(const HeaderFacts& facts) {
  Header header;
  header.Set(header::kFirstWord, header::kFirstWordValue);
  header.Set(header::kSecondWord, header::kSecondWordValue);
  constexpr PageNumber kFirstTable = space::kPage + 1;
  header.Set(header::kObjectsTable, kFirstTable);
  header.Set(header::kRightsTable, kFirstTable + 1);
  header.Set(header::kQueriesTable, kFirstTable + 2);
  header.Set(header::kRelationsTable, kFirstTable + 3);
  header.Set(header::kCodePage, facts.code_page);
  header.Set(header::kBuildNumber, facts.build_number);
  header.Set(header::kSortOrder, facts.sort_order);
  header.Set(header::kCreationDate, facts.creation_date);
  for (std::size_t i = 0; i < header::kPasswordLength; i += sizeof(std::uint32_t))
    header.Set(Field<std::uint32_t>{header::kPassword + i}, CreationDay(header));
  return header;
}

PageBuffer PackHeader(const Header& header) {
  PageBuffer page;
  page.Put(header::kBeginning, WithZero(header::kBeginningBytes));
  page.Put(header::kFormatName, WithZero(header::kJetName));
  page.Set(header::kVersion, header::kVersion4);
  page.Put(header::kMasked, ApplyRc4(MaskKey(), {header.plain.data(), header.plain.size()}));
  page.Put(header::kVersionText, WithZero(header::kVersionTextBytes));
  for (std::size_t i = 0; i < header::kCommitPairs; ++i) {
    const Field<std::uint16_t> pair{header::kCommitArea + 2 * i};
    page.Set(pair, i == 0 ? header::kFirstCommitPair : header::kOtherCommitPair);
  }
  return page;
}

std::uint32_t CreationDay(const Header& header) {
  constexpr double kLimit = 0x7FFFFFFF;
  const double date = header.CreationDate();
  if (!(std::abs(date) < kLimit)) return 0;
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(date));
}

}  // namespace jet::file
