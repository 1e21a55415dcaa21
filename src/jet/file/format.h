#pragma once

#include <cstddef>
#include <cstdint>

// Where everything stands in the file: offsets, widths, markers and the kinds of pages. Offsets
// count from the beginning of the page, row or block that the names say. Numbers are little-endian
// unless stated otherwise.
namespace jet::file {

using PageNumber = std::uint32_t;

// A number of type T at a fixed place of its structure.
template <typename T>
struct Field {
  std::size_t offset;
};

inline constexpr std::size_t kPageSize = 4096;

enum class PageKind : std::uint8_t {
  kHeader = 0,
  kData = 1,
  kDefinition = 2,
  kIndexNode = 3,
  kIndexLeaf = 4,
  kUsageBitmap = 5,
};

namespace page {
inline constexpr Field<std::uint8_t> kKind{0x00};
inline constexpr Field<std::uint8_t> kMark{0x01};  // kMarkValue on all pages but the first
inline constexpr std::uint8_t kMarkValue = 1;
inline constexpr Field<std::uint16_t> kFree{0x02};   // not on bitmap pages
inline constexpr Field<std::uint32_t> kOwner{0x04};  // definition page; data and index pages
}  // namespace page

// The first page.
namespace header {
inline constexpr PageNumber kPage = 0;
inline constexpr std::size_t kBeginning = 0x00;
inline constexpr char kBeginningBytes[] = {0, 1, 0, 0};
inline constexpr std::size_t kFormatName = 0x04;
inline constexpr char kJetName[] = "Standard Jet DB";    // with its zero
inline constexpr char kNewerName[] = "Standard ACE DB";  // with its zero
inline constexpr Field<std::uint32_t> kVersion{0x14};
inline constexpr std::uint32_t kVersion3 = 0;
inline constexpr std::uint32_t kVersion4 = 1;

// A stretch combined (XOR) with the stream of one fixed key. What stands in it:
inline constexpr std::size_t kMasked = 0x18;
inline constexpr std::size_t kMaskedLength = 0x80;
inline constexpr std::uint32_t kMaskKey = 0x6B39DAC7;
inline constexpr Field<std::uint32_t> kFirstWord{0x18};   // 0x100
inline constexpr Field<std::uint32_t> kSecondWord{0x1C};  // 0x101
inline constexpr std::uint32_t kFirstWordValue = 0x100;
inline constexpr std::uint32_t kSecondWordValue = 0x101;
inline constexpr Field<std::uint32_t> kObjectsTable{0x20};  // definition pages of the four
inline constexpr Field<std::uint32_t> kRightsTable{0x24};   // system tables
inline constexpr Field<std::uint32_t> kQueriesTable{0x28};
inline constexpr Field<std::uint32_t> kRelationsTable{0x2C};
inline constexpr Field<std::uint16_t> kCodePage{0x3C};
inline constexpr Field<std::uint32_t> kPageKey{0x3E};  // 0: the pages are not encoded
inline constexpr std::size_t kPassword = 0x42;
inline constexpr std::size_t kPasswordLength = 40;
inline constexpr Field<std::uint32_t> kBuildNumber{0x6A};
inline constexpr Field<std::uint32_t> kSortOrder{0x6E};  // LCID, then its version in the last byte
inline constexpr Field<double> kCreationDate{0x72};      // days since 1899-12-30
inline constexpr Field<std::uint32_t> kDateWord{0x72};   // its first half
inline constexpr std::size_t kAccountKeyRegion = 0x42;   // what the account ids' key is made of
inline constexpr std::size_t kAccountKeyLength = 0x50;
inline constexpr std::size_t kAccountKeySteps = 40;

inline constexpr std::size_t kVersionText = 0x98;
inline constexpr char kVersionTextBytes[] = {0x54, 0x06, 0, 0, '4', '.', '0', 0};

// Pairs of bytes in which users of the file note what they are about to commit.
inline constexpr std::size_t kCommitArea = 0xE00;
inline constexpr std::size_t kCommitPairs = 256;
inline constexpr std::uint16_t kFirstCommitPair = 0x0101;
inline constexpr std::uint16_t kOtherCommitPair = 0x0100;
inline constexpr std::uint16_t kPendingCommit = 0x0000;
}  // namespace header

// The page with the map of the free pages of the whole file, in its first row.
namespace space {
inline constexpr PageNumber kPage = 1;
inline constexpr std::uint8_t kFreePagesRow = 0;
}  // namespace space

// A row pointer: the row in the lowest byte, the page above it (in index entries as four big-endian
// bytes with the page first, which is the same number).
namespace row_pointer {
inline constexpr std::uint32_t kRowMask = 0xFF;
inline constexpr unsigned kPageShift = 8;
}  // namespace row_pointer

// Pages of rows: of tables, of long values and of usage maps.
namespace data {
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;  // "LVAL"
inline constexpr Field<std::uint32_t> kChainWord{0x08};  // long values: repeated in their reference
inline constexpr Field<std::uint16_t> kRowCount{0x0C};
inline constexpr std::size_t kSlots = 0x0E;  // two bytes a row; rows grow from the page's end
inline constexpr std::size_t kSlotWidth = 2;
inline constexpr std::uint16_t kHidden = 0x8000;  // only the pointer of a moved row leads here
inline constexpr std::uint16_t kMoved = 0x4000;   // the row is a row pointer to its contents
inline constexpr std::uint16_t kDead = 0xC000;    // both: nothing stands here any more
inline constexpr std::uint16_t kOffsetMask = 0x1FFF;
inline constexpr std::size_t kMovedWidth = 4;
}  // namespace data

// A record: column count, fixed part, variable part, end of the variable part, offsets of the
// variable columns (last first), their count, null mask. The three before the mask are there only
// in tables with variable columns.
namespace record {
inline constexpr Field<std::uint16_t> kColumnCount{0x00};
inline constexpr std::size_t kFixedPart = 0x02;
inline constexpr std::size_t kOffsetWidth = 2;
}  // namespace record

// A reference to a long value, as it stands in the record.
namespace long_value {
inline constexpr std::size_t kReferenceWidth = 12;
inline constexpr Field<std::uint32_t> kLength{0x00};
inline constexpr Field<std::uint32_t> kPointer{0x04};
inline constexpr Field<std::uint32_t> kChainWord{0x08};
inline constexpr std::uint32_t kLengthMask = 0x3FFFFFFF;
inline constexpr std::uint32_t kInline = 0x80000000;       // the value follows the reference
inline constexpr std::uint32_t kSingleRow = 0x40000000;    // one row holds it; else a chain of rows
inline constexpr Field<std::uint32_t> kNextInChain{0x00};  // of a row of a chain; 0 in the last
inline constexpr std::size_t kChainPayload = 0x04;
// How a value is written follows from its length, that of a text before compression.
inline constexpr std::size_t kLongestInline = 64;
inline constexpr std::size_t kLongestSingleRow = 3816;  // may be compressed, like an inline text
inline constexpr std::size_t kChainPiece = 4072;        // bytes of the value in a row of a chain
inline constexpr std::size_t kRoomWorthNoting = 256;    // on a page, to be listed as one with room
}  // namespace long_value

// A table's definition. Its pages form a chain; what follows the head of each page, put together,
// is the contents in which the fields below count.
namespace definition {
inline constexpr Field<std::uint32_t> kNextPage{0x04};
inline constexpr std::size_t kHead = 0x08;
inline constexpr std::uint32_t kMarker = 0x659;       // meaning unknown; in most blocks
inline constexpr std::uint32_t kIndexMarker = 0x783;  // meaning unknown

// The first block.
inline constexpr std::size_t kFixedLength = 55;
inline constexpr Field<std::uint32_t> kLength{0x00};  // of the contents, plus kHead
inline constexpr std::size_t kReserve = 8;            // behind the contents, on a page of the chain
inline constexpr Field<std::uint32_t> kFirstMarker{0x04};
inline constexpr Field<std::uint32_t> kRowCount{0x08};
inline constexpr Field<std::uint32_t> kLastAutonumber{0x0C};
inline constexpr Field<std::uint32_t> kAutonumberStep{0x10};
inline constexpr Field<std::uint8_t> kTableKind{0x20};
inline constexpr std::uint8_t kUserTable = 0x4E;
inline constexpr std::uint8_t kSystemTable = 0x53;
inline constexpr Field<std::uint16_t> kColumnIds{0x21};  // highest id ever given, plus one
inline constexpr Field<std::uint16_t> kVariableColumns{0x23};
inline constexpr Field<std::uint16_t> kColumns{0x25};
inline constexpr Field<std::uint32_t> kLogicalIndexes{0x27};
inline constexpr Field<std::uint32_t> kRealIndexes{0x2B};
inline constexpr Field<std::uint32_t> kRowsMap{0x2F};   // row pointers to usage maps
inline constexpr Field<std::uint32_t> kSpaceMap{0x33};  // pages with room for rows

// Statistics, one block for each real index.
namespace statistics {
inline constexpr std::size_t kWidth = 12;
inline constexpr Field<std::uint32_t> kUnknown{0x00};  // 0 to 3 in real files
inline constexpr Field<std::uint32_t> kEntries{0x04};  // distinct keys
}  // namespace statistics

namespace column {
inline constexpr std::size_t kWidth = 25;
inline constexpr Field<std::uint8_t> kType{0x00};
inline constexpr Field<std::uint32_t> kMarker{0x01};
inline constexpr Field<std::uint16_t> kId{0x05};
inline constexpr Field<std::uint16_t> kVariableSlot{0x07};  // fixed: variable ones of smaller id
inline constexpr Field<std::uint16_t> kOrdinal{0x09};
inline constexpr Field<std::uint32_t> kSortOrder{0x0B};  // numeric columns: precision, then scale
inline constexpr Field<std::uint8_t> kPrecision{0x0B};
inline constexpr Field<std::uint8_t> kScale{0x0C};
inline constexpr Field<std::uint8_t> kFlags{0x0F};
inline constexpr Field<std::uint8_t> kExtraFlags{0x10};
inline constexpr Field<std::uint16_t> kFixedOffset{0x15};  // in the record's fixed part
inline constexpr Field<std::uint16_t> kSize{0x17};         // bytes
inline constexpr std::uint8_t kFixed = 0x01;
inline constexpr std::uint8_t kNullable = 0x02;
inline constexpr std::uint8_t kAutonumber = 0x04;
inline constexpr std::uint8_t kSystem = 0x10;
inline constexpr std::uint8_t kSystemId = 0x20;
inline constexpr std::uint8_t kAutoGuid = 0x40;
inline constexpr std::uint8_t kHyperlink = 0x80;
inline constexpr std::uint8_t kCompressed = 0x01;  // extra flag
}  // namespace column

// Names of columns, and later of logical indexes: length in bytes, then UTF-16.
inline constexpr std::size_t kNameLengthWidth = 2;

namespace real_index {
inline constexpr std::size_t kWidth = 52;
inline constexpr Field<std::uint32_t> kMarker{0x00};  // kIndexMarker
inline constexpr std::size_t kKeyColumns = 0x04;
inline constexpr std::size_t kKeyColumnCount = 10;
inline constexpr std::size_t kKeyColumnWidth = 3;
inline constexpr Field<std::uint16_t> kKeyColumnId{0x00};  // kNoColumn in an unused place
inline constexpr Field<std::uint8_t> kKeyDirection{0x02};
inline constexpr std::uint16_t kNoColumn = 0xFFFF;
inline constexpr std::uint8_t kAscending = 1;
inline constexpr std::uint8_t kDescending = 0;
inline constexpr Field<std::uint32_t> kPagesMap{0x22};
inline constexpr Field<std::uint32_t> kRoot{0x26};
inline constexpr Field<std::uint32_t> kUnjudged{0x2A};
inline constexpr Field<std::uint8_t> kFlags{0x2E};
inline constexpr std::uint8_t kUnique = 0x01;
inline constexpr std::uint8_t kIgnoreNulls = 0x02;
inline constexpr std::uint8_t kRequired = 0x08;
inline constexpr std::uint8_t kAlways = 0x80;
}  // namespace real_index

namespace logical_index {
inline constexpr std::size_t kWidth = 28;
inline constexpr Field<std::uint32_t> kMarker{0x00};
inline constexpr Field<std::uint32_t> kNumber{0x04};
inline constexpr Field<std::uint32_t> kRealIndex{0x08};
inline constexpr Field<std::uint8_t> kRelationSide{0x0C};
inline constexpr std::uint8_t kReferencedSide = 1;
inline constexpr std::uint8_t kReferencingSide = 2;
inline constexpr Field<std::uint32_t> kOtherNumber{0x0D};  // of the index at the other end
inline constexpr std::uint32_t kNoOther = 0xFFFFFFFF;
inline constexpr Field<std::uint32_t> kOtherTable{0x11};  // its definition page
inline constexpr Field<std::uint8_t> kCascadeUpdate{0x15};
inline constexpr Field<std::uint8_t> kCascadeDelete{0x16};
inline constexpr std::uint8_t kNoCascade = 4;  // in both, where there is no relation
inline constexpr Field<std::uint8_t> kKind{0x17};
inline constexpr std::uint8_t kOrdinary = 0;
inline constexpr std::uint8_t kPrimary = 1;
inline constexpr std::uint8_t kForeign = 2;
}  // namespace logical_index

// The usage maps of long columns, after which kNoMoreColumns stands.
namespace long_column {
inline constexpr std::size_t kWidth = 10;
inline constexpr Field<std::uint16_t> kColumnId{0x00};
inline constexpr Field<std::uint32_t> kPagesMap{0x02};
inline constexpr Field<std::uint32_t> kSpaceMap{0x06};
inline constexpr std::uint16_t kNoMoreColumns = 0xFFFF;
inline constexpr std::size_t kEndWidth = 2;
}  // namespace long_column
}  // namespace definition

// A set of pages, as a row of some data page.
namespace usage_map {
inline constexpr Field<std::uint8_t> kForm{0x00};
inline constexpr std::uint8_t kDirect = 0;
inline constexpr std::uint8_t kReferences = 1;
inline constexpr Field<std::uint32_t> kFirstPage{0x01};  // of a direct map
inline constexpr std::size_t kBits = 0x05;
inline constexpr std::size_t kDirectLength = 69;    // of a row that the engine makes
inline constexpr PageNumber kDirectPages = 512;     // that such a row covers
inline constexpr std::size_t kPageNumbers = 0x01;   // of a map of references
inline constexpr std::size_t kReferenceCount = 17;  // in a row that the engine makes
inline constexpr std::size_t kBitmapBits = 0x04;    // of a bitmap page
inline constexpr PageNumber kBitmapPages = 32736;   // that such a page covers
}  // namespace usage_map

// Index pages.
namespace index {
inline constexpr Field<std::uint32_t> kPrevious{0x0C};  // leaf of the same tree
inline constexpr Field<std::uint32_t> kNext{0x10};
inline constexpr Field<std::uint32_t> kLastChild{0x14};  // a node's rightmost child
inline constexpr Field<std::uint16_t> kPrefixLength{0x18};
inline constexpr Field<std::uint8_t> kHeight{0x1A};  // 0 on a leaf
inline constexpr std::size_t kEndBits = 0x1B;        // a bit for each byte where an entry ends
inline constexpr std::size_t kEntries = 0x1E0;
inline constexpr std::size_t kEntrySpace = kPageSize - kEntries;
inline constexpr std::size_t kPointerWidth = 4;  // row pointer, and in nodes the child's page
inline constexpr std::uint8_t kValue = 0x7F;     // before a key column's value
inline constexpr std::uint8_t kNull = 0x00;
}  // namespace index

// Values of properties: a mark, then chunks of length, kind and contents.
namespace properties {
inline constexpr char kMark[] = {'M', 'R', '2', 0};
inline constexpr std::size_t kFirstChunk = 0x04;
inline constexpr Field<std::uint32_t> kChunkLength{0x00};  // with this head
inline constexpr Field<std::uint16_t> kChunkKind{0x04};
inline constexpr std::size_t kChunkHead = 0x06;
inline constexpr std::uint16_t kNames = 0x80;
inline constexpr std::uint16_t kOfObject = 0x00;
inline constexpr std::uint16_t kOfColumn = 0x01;
inline constexpr std::size_t kTextLengthWidth = 2;

// Contents of a chunk of values: the name's block, then values to the chunk's end.
inline constexpr Field<std::uint32_t> kNameBlockLength{0x00};  // with this word
inline constexpr Field<std::uint16_t> kNameLength{0x04};
inline constexpr std::size_t kName = 0x06;
inline constexpr Field<std::uint16_t> kValueLength{0x00};  // of all that belongs to the value
inline constexpr Field<std::uint8_t> kValueFlag{0x02};
inline constexpr Field<std::uint8_t> kValueType{0x03};
inline constexpr Field<std::uint16_t> kValueName{0x04};  // counted in the list of names
inline constexpr Field<std::uint16_t> kContentsLength{0x06};
inline constexpr std::size_t kContents = 0x08;
}  // namespace properties

}  // namespace jet::file
