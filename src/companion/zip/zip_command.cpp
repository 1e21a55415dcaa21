#include "companion/zip/zip_command.h"

#include <algorithm>
#include <new>

#include "companion/rar/block.h"
#include "companion/zip/content_source.h"
#include "companion/zip/failure.h"
#include "companion/zip/zip_format.h"
#include "companion/zip/zip_texts.h"
#include "foundation/encodings.h"

namespace companion::zip {
namespace {

// A zip file under its temporary name. The destructor removes it unless Publish has succeeded.
class NewZip {
 public:
  explicit NewZip(std::string path) : path_(std::move(path)) {
    file_ = os::CreateTemporaryBeside(path_, temporary_);
    if (!file_) throw Failure{ports::kZipCreateFailed};
  }
  NewZip(const NewZip&) = delete;
  NewZip& operator=(const NewZip&) = delete;
  ~NewZip() {
    file_ = nullptr;
    if (!published_) os::Remove(temporary_);
  }

  // The entry's sizes and checksum are filled in once its content has been read.
  void Add(ZipEntry entry, const ContentReader& read, int level) {
    entry.offset = offset_;
    Write(MakeLocalHeader(entry));
    const PackedWriter write = [&](const std::uint8_t* data, std::size_t length) {
      Write(data, length);
    };
    const DeflateTotals totals = entry.method == kMethodDeflated
                                     ? DeflateInParallel(read, write, level)
                                     : Store(read, write);
    entry.crc = totals.crc;
    entry.size = totals.size;
    entry.packed_size = totals.packed_size;
    constexpr std::uint64_t kLargest = 0xFFFFFFFE;
    if (!entry.has_local_zip64 && std::max(entry.size, entry.packed_size) > kLargest) {
      throw Failure{ports::kZipReadFailed};  // the file has become too large for its header
    }
    const std::string header = MakeLocalHeader(entry);
    if (!file_->WriteAt(entry.offset, header.data(), header.size()))
      throw Failure{ports::kZipWriteFailed};
    directory_.entries.push_back(std::move(entry));
  }

  // Copies an entry of another zip file in its packed form.
  void Copy(os::ReadableFile& source, ZipEntry entry) {
    std::uint64_t from = DataOffset(source, entry);
    entry.flags = static_cast<std::uint16_t>(entry.flags & ~kFlagDescriptor);
    entry.offset = offset_;
    entry.has_local_zip64 = std::max(entry.size, entry.packed_size) >= 0xFFFFFFFF;
    Write(MakeLocalHeader(entry));
    std::vector<std::uint8_t> buffer(256U << 10U);
    for (std::uint64_t left = entry.packed_size; left > 0;) {
      const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size()));
      const auto got = source.ReadAt(from, buffer.data(), wanted);
      if (!got || *got == 0) throw Failure{ports::kZipReadFailed};
      Write(buffer.data(), *got);
      from += *got;
      left -= *got;
    }
    directory_.entries.push_back(std::move(entry));
  }

  void SetComment(std::string comment) {
    comment.resize(std::min<std::size_t>(comment.size(), 0xFFFF));
    directory_.comment = std::move(comment);
  }

  void Publish() {
    Write(MakeDirectory(directory_, offset_));
    const bool is_on_disk = file_->Flush();
    if (!file_->Close() || !is_on_disk) throw Failure{ports::kZipWriteFailed};
    file_ = nullptr;
    ReadBack();
    if (!os::Rename(temporary_, path_)) throw Failure{ports::kZipCreateFailed};
    published_ = true;
    os::FlushFolderOf(path_);
  }

 private:
  void Write(const void* data, std::size_t length) {
    if (!file_->Write(data, length)) throw Failure{ports::kZipWriteFailed};
    offset_ += length;
  }
  void Write(const std::string& bytes) { Write(bytes.data(), bytes.size()); }

  // Reads the file back: the disk must return what was written.
  void ReadBack() const {
    os::ErrorCode error = 0;
    const auto file = os::OpenForReading(temporary_, error);
    if (!file) throw Failure{ports::kZipWriteFailed};
    try {
      const ZipDirectory found = ReadDirectory(*file);
      if (found.entries.size() != directory_.entries.size()) throw Failure{ports::kZipBadStructure};
      for (std::size_t i = 0; i < found.entries.size(); ++i) {
        const ZipEntry& entry = found.entries[i];
        const ZipEntry& written = directory_.entries[i];
        if (entry.name != written.name || entry.crc != written.crc || entry.size != written.size) {
          throw Failure{ports::kZipBadStructure};
        }
        CheckEntry(*file, entry);
      }
    } catch (const Failure&) {
      throw Failure{ports::kZipWriteFailed};
    }
  }

  std::string path_;
  std::string temporary_;
  std::unique_ptr<os::WritableFile> file_;
  std::uint64_t offset_ = 0;
  ZipDirectory directory_;
  bool published_ = false;
};

bool IsAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The name as text: UTF-8 if its flag says so, otherwise from the DOS code page.
std::string NameOf(const ZipEntry& entry) {
  if ((entry.flags & kFlagUtf8) != 0) return entry.name;
  return tmw::CodePageToUtf8(tmw::CodePage::k866, entry.name);
}

class Command {
 public:
  Command(const std::string& zip_path, const ZipSettings& settings, const ZipListeners& listeners)
      : zip_path_(zip_path), settings_(settings), listeners_(listeners) {
    const os::Facts facts = os::Examine(zip_path_);
    if (facts.kind == os::Kind::kNone) return;
    if (facts.kind != os::Kind::kFile) throw Failure{ports::kZipCreateFailed};
    os::ErrorCode error = 0;
    old_file_ = os::OpenForReading(zip_path_, error);
    if (!old_file_) throw Failure{ports::kZipOpenFailed};
    old_ = ReadDirectory(*old_file_);
  }

  void Delete(const std::vector<std::string>& names) {
    if (!old_file_) throw Failure{ports::kZipMissingZip};
    const std::size_t before = old_.entries.size();
    std::erase_if(old_.entries, [&](const ZipEntry& entry) {
      return std::any_of(names.begin(), names.end(),
                         [&](const std::string& name) { return MatchesMask(NameOf(entry), name); });
    });
    if (old_.entries.size() == before) throw Failure{ports::kZipNothingToDo};
    if (old_.entries.empty()) {
      old_file_ = nullptr;
      if (!os::Remove(zip_path_)) throw Failure{ports::kZipWriteFailed};
      return;
    }
    WriteAll({});
  }

  void Add(const std::vector<std::string>& names) {
    if (settings_.freshen && !old_file_) throw Failure{ports::kZipMissingZip};
    ZipInputs inputs = CollectInputs(names, settings_, zip_path_);
    for (const std::string& name : inputs.missing)
      Print(texts::NotMatched(name));
    // A backup without a file that was asked for must not look like a complete one.
    if (!inputs.missing.empty() && !inputs.found.empty()) throw Failure{ports::kZipOpenFailed};
    std::erase_if(inputs.found, [&](const ZipInput& input) { return !IsWanted(input); });
    if (inputs.found.empty()) throw Failure{ports::kZipNothingToDo};
    for (const ZipInput& input : inputs.found) {
      std::erase_if(old_.entries,
                    [&](const ZipEntry& e) { return NameOf(e) == input.stored_name; });
    }
    WriteAll(inputs.found);
    if (settings_.move) RemoveInputs(inputs.found);
  }

 private:
  void Print(const std::string& line) const {
    if (!settings_.quiet) listeners_.print(line);
  }

  // Applies the rules of update and freshen.
  bool IsWanted(const ZipInput& input) const {
    if (!settings_.update && !settings_.freshen) return true;
    const auto old = std::find_if(old_.entries.begin(), old_.entries.end(), [&](const ZipEntry& e) {
      return NameOf(e) == input.stored_name;
    });
    if (old == old_.entries.end()) return !settings_.freshen;
    return rar::ToDosTime(input.facts.modified) > old->dos_time;
  }

  void WriteAll(const std::vector<ZipInput>& inputs) {
    NewZip zip(zip_path_);
    std::uint32_t latest = 0;
    for (const ZipEntry& entry : old_.entries) {
      zip.Copy(*old_file_, entry);
      latest = std::max(latest, entry.dos_time);
    }
    for (const ZipInput& input : inputs) {
      latest = std::max(latest, rar::ToDosTime(input.facts.modified));
      Print(texts::Adding(input.stored_name));
      AddInput(zip, input);
      if (!listeners_.entry_done(input.stored_name, input.facts.size))
        throw Failure{ports::kZipAborted};
    }
    zip.SetComment(settings_.ask_comment ? listeners_.ask_comment(old_.comment) : old_.comment);
    old_file_ = nullptr;  // Windows does not replace an open file
    zip.Publish();
    if (settings_.latest_time) os::SetModified(zip_path_, rar::FromDosTime(latest));
  }

  void AddInput(NewZip& zip, const ZipInput& input) const {
    const bool is_folder = input.facts.kind == os::Kind::kFolder;
    ZipEntry entry;
    entry.name = input.stored_name;
    if (!IsAscii(entry.name)) entry.flags = kFlagUtf8;
    entry.dos_time = rar::ToDosTime(input.facts.modified);
    constexpr std::uint32_t kEarliest = 0x00210000;  // the first of January 1980
    entry.dos_time = std::max(entry.dos_time, kEarliest);
    entry.external_attributes = input.facts.unix_mode << 16U | input.facts.dos_attributes;
    entry.made_by = input.facts.unix_mode != 0 ? 3 << 8U | 20 : 20;
    if (settings_.with_extra) entry.extra = MakeTimeExtra(input.facts.modified);
    entry.has_local_zip64 = input.facts.size >= 0xF0000000;
    if (is_folder) {
      zip.Add(
          entry, [](std::uint8_t*, std::size_t) { return std::size_t{0}; }, 0);
      return;
    }
    os::ErrorCode error = 0;
    std::shared_ptr<os::ReadableFile> file = os::OpenForReading(input.path, error);
    if (!file) throw Failure{ports::kZipOpenFailed};
    if (settings_.level > 0 && file->Size() > 0) entry.method = kMethodDeflated;
    if (settings_.level >= 8) entry.flags |= 2U;
    const LineEnds line_ends = settings_.crlf_to_lf   ? LineEnds::kToLf
                               : settings_.lf_to_crlf ? LineEnds::kToCrLf
                                                      : LineEnds::kAsTheyAre;
    zip.Add(entry, ReadContent(std::move(file), line_ends), settings_.level);
  }

  // Files first, then the folders they leave empty, innermost first.
  static void RemoveInputs(const std::vector<ZipInput>& inputs) {
    for (const ZipInput& input : inputs) {
      if (input.facts.kind == os::Kind::kFile) os::Remove(input.path);
    }
    for (auto input = inputs.rbegin(); input != inputs.rend(); ++input) {
      if (input->facts.kind == os::Kind::kFolder) os::RemoveFolder(input->path);
    }
  }

  std::string zip_path_;
  const ZipSettings& settings_;
  const ZipListeners& listeners_;
  std::unique_ptr<os::ReadableFile> old_file_;
  ZipDirectory old_;
};

}  // namespace

ports::ZipResult RunZipCommand(const std::string& zip_path, const std::vector<std::string>& names,
                               const ZipSettings& settings,
                               const ZipListeners& listeners) noexcept {
  try {
    if (names.empty()) return ports::kZipNothingToDo;
    if (zip_path.empty()) return ports::kZipBadOptions;
    Command command(zip_path, settings, listeners);
    if (settings.delete_entries) {
      command.Delete(names);
    } else {
      command.Add(names);
    }
    return ports::kZipOk;
  } catch (const Failure& failure) {
    return failure.code;
  } catch (const std::bad_alloc&) {
    return ports::kZipNoMemory;
  } catch (const std::exception&) {
    return ports::kZipInternal;
  }
}

}  // namespace companion::zip
