#include "jet/file/account_ids.h"

#include <cstddef>

#include "jet/file/rc4.h"

namespace jet::file {
namespace {

constexpr unsigned kShiftRange = 24;

}  // namespace

AccountIds::AccountIds(const Header& header) {
  std::string region(header.plain.data() + header::kAccountKeyRegion - header::kMasked,
                     header::kAccountKeyLength);
  std::string day;
  AppendLittle(day, CreationDay(header));
  for (std::size_t i = 0; i < header::kPasswordLength; ++i)
    region[i] = static_cast<char>(region[i] ^ day[i % day.size()]);
  std::uint32_t key = header.Get(header::kDateWord);
  for (unsigned i = 0; i < header::kAccountKeySteps; ++i) {
    const std::uint32_t byte = static_cast<unsigned char>(region[std::size_t{2} * i]);
    key ^= byte << (i % kShiftRange);
  }
  AppendLittle(key_, key);
}

std::string AccountIds::Stored(Account account) const {
  return Combine(PlainId(account));
}

std::string AccountIds::Combine(std::string_view id) const {
  return ApplyRc4(key_, id);
}

std::string_view PlainId(Account account) {
  switch (account) {
    case Account::kAdmin:
      return {"\x03\x01", 2};
    case Account::kUsers:
      return {"\x02\x01", 2};
    case Account::kEngine:
      return {"\x02\x03", 2};
    case Account::kCreator:
      break;
  }
  return {"\x02\x04", 2};
}

}  // namespace jet::file
