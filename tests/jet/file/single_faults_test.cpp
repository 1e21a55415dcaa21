#include <functional>
#include <set>

#include "jet/file/check_texts.h"
#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "jet/file/index_page.h"
#include "jet/file/system_rows.h"
#include "tests/jet/file/patient.h"

// Good files with one fault each. The check must report it with its own words, and other words
// only where one fault is several things.
namespace {

namespace file = jet::file;
namespace check = jet::file::check_texts;
namespace texts = jet::file::texts;
using file::Field;
using file::PageNumber;
using tests::Patient;

struct Fault {
  const char* sample;
  std::function<void(Patient&)> make;
  std::set<std::string> kinds;  // of the faults that the check reports
};

// The slot of a row on its page.
Field<std::uint16_t> Slot(file::RowPointer row) {
  return {file::data::kSlots + std::size_t{row.row} * file::data::kSlotWidth};
}

constexpr const char* kIndexed = "compindexv2000.mdb";  // Table1: 512 rows, indexes of two levels
constexpr const char* kRelated = "indexv2000.mdb";      // Table1 to Table3 with two relations
constexpr const char* kMoved = "overflowv2003.mdb";     // Table1 has moved rows
constexpr const char* kLong = "common2v2003.mdb";       // MSP_PROJECTS: every form of long values
constexpr const char* kQueries = "querytestv2000.mdb";

PageNumber Leaf(Patient& patient, std::size_t index = 0) {
  PageNumber page = patient.Table("Table1").indexes[index].root;
  for (;;) {
    const file::IndexPage taken(patient.Source().Read(page));
    if (taken.IsLeaf()) return page;
    page = taken.Children().front();
  }
}

// The tree of the table whose root is a node.
std::size_t TallIndex(Patient& patient) {
  const auto& indexes = patient.Table("Table1").indexes;
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    if (!file::IndexPage(patient.Source().Read(indexes[i].root)).IsLeaf()) return i;
  }
  ADD_FAILURE() << "no tall index";
  return 0;
}

void Judge(const std::vector<Fault>& faults) {
  for (std::size_t i = 0; i < faults.size(); ++i) {
    Patient patient(faults[i].sample);
    faults[i].make(patient);
    const file::CheckReport report = patient.Check();
    std::set<std::string> kinds;
    std::string words;
    for (const file::Finding& finding : report.findings.Kept()) {
      if (finding.severity == file::Severity::kFault) kinds.insert(finding.kind);
      words += finding.Text() + "\n";
    }
    EXPECT_EQ(kinds, faults[i].kinds) << "fault " << i << " of " << faults[i].sample << "\n"
                                      << words;
  }
}

class JetFileCheck : public tests::JetSamples {};

TEST_F(JetFileCheck, FindsFaultsOfPages) {
  namespace page = file::page;
  const file::RowPointer global{file::space::kPage, file::space::kFreePagesRow};
  Judge({
      {kIndexed, [](Patient& p) { p.Bytes() += "half a page"; }, {check::kTornEnd}},
      {kIndexed,
       [](Patient& p) {
         p.Set(0, Field<std::uint16_t>{file::header::kCommitArea + 100}, std::uint16_t{0});
       },
       {texts::kPendingCommit}},
      {kIndexed,
       [&](Patient& p) { p.FlipMapBit(global, p.Row("Table1").page); },
       {check::kUsedPageFree}},
      {kIndexed,
       [](Patient& p) { p.FlipMapBit(p.Table("Table1").rows_map, p.Row("Table1").page); },
       {check::kLostRows, check::kRowCount, check::kEntryOfNoRow}},
      {kIndexed,
       [](Patient& p) {
         p.FlipMapBit(p.Table("Table1").rows_map, p.Table("Table1").indexes[0].root);
       },
       {texts::kWrongPageKind, check::kPageTwice}},
      {kIndexed,
       [](Patient& p) {
         const PageNumber number = p.Row("Table1").page;
         p.Set(number, page::kFree, static_cast<std::uint16_t>(p.Get(number, page::kFree) + 1));
       },
       {check::kFreeBytesHigh}},
      {kIndexed,
       [](Patient& p) { p.Set(p.Row("Table1").page, page::kOwner, PageNumber{7}); },
       {texts::kWrongOwner, check::kRowCount, check::kEntryOfNoRow}},
      {kIndexed,
       [](Patient& p) {
         const auto& table = p.Table("Table1");
         p.Set(table.page, file::definition::kSpaceMap, table.rows_map.ToWord(),
               file::definition::kHead);
       },
       {check::kMapTwice}},
      {kIndexed,
       [](Patient& p) {
         const file::RowPointer map = p.Table("Table1").rows_map;
         *p.At(map.page, p.RowOffset(map)) = 9;
       },
       {texts::kNotAMap, check::kRowCount, check::kEntryOfNoRow, check::kLostRows}},
  });
}

TEST_F(JetFileCheck, FindsFaultsOfDefinitions) {
  namespace definition = file::definition;
  const auto at_head = definition::kHead;
  Judge({
      {kIndexed,
       [=](Patient& p) { p.Set(p.Table("Table1").page, definition::kRowCount, 511U, at_head); },
       {check::kRowCount}},
      {kIndexed,
       [=](Patient& p) {
         const PageNumber page = p.Table("Table1").page;
         const auto length = p.Get(page, definition::kLength, at_head);
         p.Set(page, definition::kLength, length + 1, at_head);
       },
       {texts::kBadDefinitionEnd, check::kLostRows}},
      {kIndexed,
       [=](Patient& p) { p.Set(p.Table("Table1").page, definition::kFirstMarker, 0U, at_head); },
       {texts::kMissingMarker, check::kLostRows}},
      {kIndexed,
       [](Patient& p) {
         const PageNumber page = p.Table("Table1").page;
         p.Set(page, definition::kNextPage, page);
       },
       {texts::kLongDefinitionChain, check::kLostRows}},
      {kLong,
       [](Patient& p) {
         const PageNumber page = p.Table("MSP_PROJECTS").page;
         p.Set(page, definition::kNextPage, PageNumber{0});
       },
       {texts::kShortDefinitionChain, check::kLostRows}},
  });
}

TEST_F(JetFileCheck, FindsFaultsOfRecords) {
  namespace data = file::data;
  Judge({
      {kIndexed,
       [](Patient& p) {
         const file::RowPointer row = p.Row("Table1", 5);
         const auto slot = p.Get(row.page, Slot(row));
         p.Set(row.page, Slot(row), static_cast<std::uint16_t>(slot | data::kDead));
       },
       {check::kRowCount, check::kEntryOfNoRow}},
      {kIndexed,
       [](Patient& p) {
         const file::RowPointer row = p.Row("Table1", 5);
         const auto slot = p.Get(row.page, Slot(row));
         p.Set(row.page, Slot(row), static_cast<std::uint16_t>(slot | data::kHidden));
       },
       {check::kRowCount, check::kEntryOfNoRow, check::kOrphanRow}},
      {kIndexed,
       [](Patient& p) {
         const file::RowPointer row = p.Row("Table1", 5);
         p.Set(row.page, Field<std::uint16_t>{p.RowOffset(row)}, std::uint16_t{200});
       },
       {texts::kBadRecord}},
      {kIndexed,
       [](Patient& p) { p.Set(p.Row("Table1").page, data::kRowCount, std::uint16_t{3000}); },
       {texts::kBadRowDirectory, check::kRowCount, check::kEntryOfNoRow}},
      {kMoved,
       [](Patient& p) {
         // The first moved row points to itself.
         for (std::size_t i = 0;; ++i) {
           const file::RowPointer row = p.Row("Table1", i);
           if ((p.Get(row.page, Slot(row)) & data::kMoved) == 0) continue;
           p.Set(row.page, Field<std::uint32_t>{p.RowOffset(row)}, row.ToWord());
           return;
         }
       },
       {texts::kLostRow, check::kOrphanRow}},
  });
}

TEST_F(JetFileCheck, FindsFaultsOfLongValues) {
  namespace long_value = file::long_value;
  // References of the forms of the only row.
  const auto change = [](file::LongValueForm form,
                         const std::function<void(Patient&, PageNumber, std::size_t)>& make) {
    return [form, make](Patient& p) {
      const file::RowPointer row = p.Row("MSP_PROJECTS");
      for (const auto& column : p.Table("MSP_PROJECTS").columns) {
        if (!file::IsLong(column.type)) continue;
        file::TableCursor cursor(p.Source(), p.Table("MSP_PROJECTS"));
        EXPECT_TRUE(cursor.Next());
        const auto stored = cursor.Row().Stored(column);
        if (!stored || file::LongValueReference::Parse({0, *stored}).form != form) continue;
        make(p, row.page, p.ValueOffset("MSP_PROJECTS", row, column.name.c_str()));
        return;
      }
      ADD_FAILURE() << "no such value";
    };
  };
  using Form = file::LongValueForm;
  Judge({
      {kLong,
       change(Form::kInline,
              [](Patient& p, PageNumber page, std::size_t at) {
                p.Set(page, Field<std::uint32_t>{at}, long_value::kInline | 4000U);
              }),
       {texts::kBadLongValue}},
      {kLong,
       change(Form::kSingleRow,
              [](Patient& p, PageNumber page, std::size_t at) {
                p.Set(page, Field<std::uint32_t>{at}, long_value::kSingleRow | 1U);
              }),
       {texts::kBadLongValue, check::kOrphanPiece}},
      {kLong,
       change(Form::kChain,
              [](Patient& p, PageNumber page, std::size_t at) {
                const auto length = p.Get(page, Field<std::uint32_t>{at});
                p.Set(page, Field<std::uint32_t>{at}, length + 1);
              }),
       {texts::kBadLongValue, check::kOrphanPiece}},
      {kLong,
       change(Form::kChain,
              [](Patient& p, PageNumber page, std::size_t at) {
                p.Set(page, Field<std::uint32_t>{at + 8}, 12345U);
              }),
       {texts::kForeignLongValue, check::kOrphanPiece}},
      {kLong,
       change(Form::kChain,
              [](Patient& p, PageNumber page, std::size_t at) {
                // The first piece leads back to itself.
                const auto word = p.Get(page, Field<std::uint32_t>{at + 4});
                const auto row = file::RowPointer::FromWord(word);
                p.Set(row.page, Field<std::uint32_t>{p.RowOffset(row)}, word);
              }),
       {check::kPieceTwice, check::kOrphanPiece}},
      {kLong,
       change(Form::kChain,
              [](Patient& p, PageNumber page, std::size_t at) {
                p.Set(page, Field<std::uint32_t>{at + 4}, 0xFFFFFF00U);
              }),
       {texts::kNoSuchPage, check::kOrphanPiece}},
  });
}

TEST_F(JetFileCheck, FindsFaultsOfIndexes) {
  namespace index = file::index;
  const auto low_byte = [](PageNumber page, std::size_t at, Patient& p) { *p.At(page, at) ^= 1; };
  Judge({
      {kIndexed,
       [&](Patient& p) {
         // The row of the first entry.
         const PageNumber leaf = Leaf(p);
         const std::string entry = file::IndexPage(p.Source().Read(leaf)).Entry(0);
         low_byte(leaf, index::kEntries + entry.size() - 1, p);
       },
       {check::kEntryTwice, check::kRowWithoutEntry, check::kWrongKey}},
      {kIndexed,
       [](Patient& p) {
         const PageNumber leaf = Leaf(p);
         p.Set(leaf, index::kNext, PageNumber{leaf});
       },
       {check::kLeafLinks}},
      {kIndexed,
       [](Patient& p) { p.Set(Leaf(p), index::kHeight, std::uint8_t{1}); },
       {check::kHeight}},
      {kIndexed,
       [](Patient& p) {
         const auto& tall = p.Table("Table1").indexes[TallIndex(p)];
         p.Set(tall.root, index::kLastChild, tall.root);
       },
       {check::kPageTwice}},
      {kIndexed,
       [](Patient& p) {
         const std::size_t tall = TallIndex(p);
         p.FlipMapBit(p.Table("Table1").indexes[tall].pages_map, Leaf(p, tall));
       },
       {check::kIndexMap}},
      {kIndexed,
       [](Patient& p) {
         // A key byte of the entry that stands for the first branch.
         const std::size_t tall = TallIndex(p);
         *p.At(p.Table("Table1").indexes[tall].root, index::kEntries + 1) ^= 1;
       },
       {check::kSeparator}},
      {kIndexed,
       [](Patient& p) {
         // The first key becomes the greatest.
         *p.At(Leaf(p), index::kEntries) = '\xFF';
       },
       {check::kEntryOrder, check::kSeparator, check::kWrongKey}},
      {kIndexed,
       [](Patient& p) { p.Set(Leaf(p), index::kPrefixLength, std::uint16_t{500}); },
       {texts::kBadIndexPage}},
  });
}

TEST_F(JetFileCheck, FindsFaultsOfTheCatalogue) {
  const auto put = [](const char* table, const char* column, const std::string& bytes) {
    return [=](Patient& p) {
      const file::RowPointer row = p.Row(table);
      bytes.copy(p.At(row.page, p.ValueOffset(table, row, column)), bytes.size());
    };
  };
  const std::string no_id("\x56\x34\x12\0", 4);
  Judge({
      {"adox_jet4.mdb",
       put("MSysObjects", "ParentId", no_id),
       {check::kNoParent, check::kWrongKey}},
      {"adox_jet4.mdb",
       put("MSysACEs", "ObjectId", no_id),
       {check::kRightsOfNothing, check::kWrongKey}},
      {"adox_jet4.mdb", put("MSysACEs", "SID", "\1\1"), {check::kUnknownAccount}},
      {"adox_jet4.mdb", put("MSysObjects", "Owner", "\1\1"), {check::kUnknownOwner}},
      {kQueries, put("MSysQueries", "ObjectId", no_id), {check::kQueryOfNothing, check::kWrongKey}},
      {kIndexed, put("Table1", "CD_AGENTE", no_id), {check::kWrongKey}},
      {kRelated, put("MSysRelationships", "ccolumn", "\2"), {texts::kBadRelation}},
      {kRelated, put("MSysRelationships", "szColumn", "AB"), {check::kRelationOfNothing}},
  });
}

}  // namespace
