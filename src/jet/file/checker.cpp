#include "jet/file/checker.h"

#include <map>
#include <utility>

#include "jet/file/catalogue_check.h"
#include "jet/file/check_texts.h"
#include "jet/file/database_reader.h"
#include "jet/file/index_check.h"
#include "jet/file/system_rows.h"
#include "jet/file/table_check.h"

namespace jet::file {
namespace {

class Checker {
 public:
  Checker(DatabaseReader& reader, CheckDepth depth)
      : reader_(reader),
        census_(reader.Pages().PageCount()),
        maps_(census_, report_.findings),
        context_{reader.Pages(), census_, maps_, report_.findings, depth},
        catalogue_(context_, reader.FileHeader(), reader.Objects()) {}

  CheckReport Run() {
    CheckHeader();
    for (const CatalogueObject& object : reader_.Objects()) {
      if (IsStoredTable(object)) CheckTable(object);
    }
    catalogue_.Run();
    CheckSpace();
    return std::move(report_);
  }

 private:
  void CheckHeader() {
    census_.Claim(header::kPage, census_.NewOwner(check_texts::kHeader), report_.findings);
    if (reader_.FileHeader().has_pending_commit)
      report_.findings.AddFault(texts::kPendingCommit, {}, header::kPage);
    if (context_.source.HasTornEnd())
      report_.findings.AddFault(check_texts::kTornEnd, {}, context_.source.PageCount());
    report_.page_count = context_.source.PageCount();
  }

  void CheckTable(const CatalogueObject& object) {
    const std::string words = check_texts::Table(object.name);
    const PageCensus::Owner owner = census_.NewOwner(words);
    const std::uint64_t claims_before = census_.ClaimCount();
    CheckedTable facts{object.name, (object.flags & ports::kSystemObject) != 0, 0, 0};
    try {
      const PageNumber page = object.id & object_id::kMaskOfPage;
      table_names_[page] = object.name;
      const DefinitionChain chain = ReadDefinitionChain(context_.source, page, object.place.page);
      bool is_ours = true;
      for (const PageNumber number : chain.pages)
        is_ours = census_.Claim(number, owner, report_.findings) && is_ours;
      if (is_ours) CheckContents(object, ParseDefinition(chain), owner, facts);
    } catch (const Damage& damage) {
      report_.findings.AddDamage(words, damage);
    }
    facts.page_count = census_.ClaimCount() - claims_before;
    report_.tables.push_back(std::move(facts));
  }

  void CheckContents(const CatalogueObject& object, const TableLayout& layout,
                     PageCensus::Owner owner, CheckedTable& facts) {
    catalogue_.AddTable(object.name, layout);
    TableCheck table(context_, object.name, layout, owner);
    table.Run();
    facts.row_count = table.Rows().Size();
    for (std::size_t i = 0; i < layout.indexes.size(); ++i) {
      IndexCheck index(context_, check_texts::Index(NameOf(layout, i), object.name), layout,
                       layout.indexes[i], table.Rows());
      index.Run();
    }
    try {
      ReadProperties(context_.source, object);
    } catch (const Damage& damage) {
      report_.findings.AddDamage(check_texts::Object(object.name), damage);
    }
  }

  // A tree is called by the first of its indexes.
  static std::string NameOf(const TableLayout& layout, std::size_t tree) {
    for (const LogicalIndexLayout& index : layout.logical_indexes) {
      if (index.real_index == tree) return index.name;
    }
    return "#" + std::to_string(tree);
  }

  void CheckSpace() {
    try {
      UsageMap free = maps_.Open(context_.source, {space::kPage, space::kFreePagesRow},
                                 header::kPage, check_texts::kFreeMap);
      for (PageNumber page = 0; page < context_.source.PageCount(); ++page)
        CheckPage(page, !free.Covers(page) || free.Contains(page));
    } catch (const Damage& damage) {
      report_.findings.AddDamage(check_texts::kFreeMap, damage);
    }
  }

  void CheckPage(PageNumber page, bool is_free) {
    const PageCensus::Owner owner = census_.OwnerOf(page);
    if (is_free) ++report_.free_page_count;
    if (is_free && owner != PageCensus::kNobody)
      report_.findings.AddFault(check_texts::kUsedPageFree, census_.NameOf(owner), page);
    // What stands on a free page no longer matters.
    if (owner != PageCensus::kNobody || is_free) return;
    try {
      if (ReportLostRows(context_.source.Read(page))) return;
    } catch (const Damage&) {
      // Nobody's page may hold anything.
    }
    report_.findings.AddNote(check_texts::kLostPage, {}, page);
  }

  // Returns false when no live rows of a table stand on the page.
  bool ReportLostRows(const PageView& view) {
    if (view.Kind() != PageKind::kData) return false;
    const auto table = table_names_.find(view.Get(page::kOwner));
    if (table == table_names_.end()) return false;
    const DataPage page(view);
    std::size_t count = 0;
    for (std::size_t row = 0; row < page.RowCount(); ++row) {
      const RowState state = page.At(row).state;
      if (state == RowState::kLive || state == RowState::kHidden) ++count;
    }
    if (count != 0)
      report_.findings.AddFault(check_texts::kLostRows, check_texts::Table(table->second),
                                view.Page(), std::to_string(count));
    return count != 0;
  }

  DatabaseReader& reader_;
  CheckReport report_;
  PageCensus census_;
  MapRegister maps_;
  CheckContext context_;
  CatalogueCheck catalogue_;
  std::map<PageNumber, std::string> table_names_;  // by definition page
};

}  // namespace

CheckReport CheckDatabase(const std::shared_ptr<ports::PageFile>& file,
                          const std::string& file_name, CheckDepth depth) {
  DatabaseReader reader(file, file_name, false);
  return Checker(reader, depth).Run();
}

}  // namespace jet::file
