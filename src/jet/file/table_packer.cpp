#include "jet/file/table_packer.h"

#include <algorithm>
#include <utility>

#include "jet/errors.h"
#include "jet/file/index_builder.h"
#include "jet/file/limits.h"

namespace jet::file {

TablePacker::TablePacker(PageSink& sink, ScratchFile& scratch, TableLayout layout, std::string name)
    : sink_(&sink),
      scratch_(&scratch),
      layout_(std::move(layout)),
      name_(std::move(name)),
      packer_(layout_),
      is_in_key_(layout_.columns.size()),
      rows_(layout_.page),
      cells_(layout_.columns.size()),
      references_(layout_.columns.size()),
      beginnings_(layout_.columns.size()) {
  layout_.row_count = 0;
  for (std::size_t place = 0; place < layout_.columns.size(); ++place) {
    const ColumnType type = layout_.columns[place].type;
    if (layout_.columns[place].IsAutonumber() && type == ColumnType::kLong)
      autonumber_place_ = place;
    if (IsLong(type)) long_values_.try_emplace(place, sink, type == ColumnType::kMemo);
  }
  for (IndexLayout& index : layout_.indexes) {
    index.root = sink.Reserve();
    const std::size_t memory = limits::kSortMemory / layout_.indexes.size();
    indexes_.push_back({IndexKey(layout_, index), KeySorter(memory, scratch)});
    for (const std::size_t place : indexes_.back().key.Places())
      is_in_key_[place] = IsLong(layout_.columns[place].type);
  }
}

void TablePacker::AddRow(StoredValues values) {
  std::copy(values.begin(), values.end(), cells_.begin());
  for (auto& [place, packer] : long_values_) {
    if (!values[place]) continue;
    references_[place] = packer.Pack(*values[place]);
    cells_[place] = references_[place];
  }
  key_cells_.assign(values.begin(), values.end());
  AddRecord(key_cells_);
}

void TablePacker::CopyRow(PageSource& pages, const RowView& row, const TableLayout& source) {
  for (std::size_t place = 0; place < cells_.size(); ++place)
    cells_[place] = row.Stored(source.columns[place]);
  key_cells_ = cells_;
  for (auto& [place, packer] : long_values_) {
    if (!cells_[place]) continue;
    const ByteView stored(row.Record().Page(), *cells_[place]);
    if (is_in_key_[place]) {
      beginnings_[place] = LongValueReader(pages, stored).Next().value_or(std::string_view{});
      key_cells_[place] = beginnings_[place];
    }
    references_[place] = packer.Copy(pages, stored);
    cells_[place] = references_[place];
  }
  AddRecord(key_cells_);
}

void TablePacker::AddRecord(StoredValues values) {
  const std::string_view record = packer_.Pack(cells_);
  if (record.size() > limits::kRecordLength) Fail(kRecordTooLong, name_);
  NoteAutonumber(values);
  AddKeys(values, Place(record));
  ++layout_.row_count;
}

void TablePacker::NoteAutonumber(StoredValues values) {
  if (!autonumber_place_ || !values[*autonumber_place_]) return;
  const auto number = LoadLittle<std::int32_t>(values[*autonumber_place_]->data());
  greatest_autonumber_ = std::max(greatest_autonumber_.value_or(number), number);
}

RowPointer TablePacker::Place(std::string_view record) {
  if (page_ && !rows_.HasRoomFor(record.size())) {
    sink_->Put(*page_, rows_.Page());
    page_.reset();
  }
  if (!page_) {
    page_ = sink_->Reserve();
    pages_.Add(*page_);
    rows_ = DataPagePacker(layout_.page);
  }
  return {*page_, rows_.Add(record)};
}

void TablePacker::AddKeys(StoredValues values, RowPointer row) {
  for (std::size_t i = 0; i < indexes_.size(); ++i) {
    if (!indexes_[i].key.Make(values, entry_)) continue;
    if (entry_.size() > limits::kIndexKeyLength) Fail(kRecordTooLong, name_);
    AppendBig(entry_, row.ToWord());
    indexes_[i].keys.Add(entry_);
  }
}

void TablePacker::BuildIndex(std::size_t index) {
  IndexLayout& layout = layout_.indexes[index];
  IndexBuilder builder(*sink_, layout_.page, layout.root);
  KeySorter& keys = indexes_[index].keys;
  keys.Sort();
  for (std::string_view entry; keys.Next(entry);)
    builder.Add(entry);
  builder.Finish();
  layout.entry_statistics = builder.DistinctKeys();
  index_pages_.push_back(builder.Pages());
}

TableLayout TablePacker::Finish(UsageMapPacker& maps) {
  if (page_) sink_->Put(*page_, rows_.Page());
  for (auto& [place, packer] : long_values_)
    packer.Finish();
  for (std::size_t i = 0; i < indexes_.size(); ++i)
    BuildIndex(i);
  indexes_.clear();
  scratch_->Clear();
  layout_.rows_map = maps.Add(pages_);
  layout_.space_map = maps.AddSpace(page_);
  // In the order of the columns' ids, whatever their places.
  std::map<std::uint16_t, std::size_t> by_id;
  for (const auto& [place, packer] : long_values_)
    by_id[layout_.columns[place].id] = place;
  for (const auto& [id, place] : by_id) {
    const LongValuePacker& packer = long_values_.at(place);
    const RowPointer pages = maps.Add(packer.Pages());
    layout_.columns[place].long_maps = LongColumnMaps{pages, maps.AddSpace(packer.SpacePage())};
  }
  for (std::size_t i = 0; i < layout_.indexes.size(); ++i)
    layout_.indexes[i].pages_map = maps.Add(index_pages_[i]);
  return layout_;
}

}  // namespace jet::file
