#include "companion/zip/zip_command.h"

#include <algorithm>
#include <new>

#include "companion/boundary.h"
#include "companion/rar/block.h"
#include "companion/zip/content_source.h"
#include "companion/zip/failure.h"
#include "companion/zip/zip_format.h"
#include "companion/zip/zip_texts.h"

namespace companion::zip {
namespace {

// A zip file under its temporary name. The destructor removes it unless Publish has succeeded.
class NewZip {
 public:
  explicit NewZip(std::string path) : path_(std::move(path)) {
    try {
      file_ = os::CreateTemporaryBeside(path_, temporary_);
    } catch (...) {
      os::Remove(temporary_);
      throw;
    }
    if (!file_) throw SystemFailure(ports::kZipCreateFailed);
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
      throw SystemFailure(ports::kZipWriteFailed);
    directory_.entries.push_back(std::move(entry));
  }

  void SetComment(std::string comment) {
    comment.resize(std::min<std::size_t>(comment.size(), 0xFFFF));
    directory_.comment = std::move(comment);
  }

  // Users who may not read the first file may not read it in the zip file either.
  void Publish(const std::vector<ZipInput>& inputs) {
    const std::uint64_t offset = offset_;
    const std::string directory = MakeDirectory(directory_, offset);
    Write(directory);
    if (!file_->Flush() || !file_->Close()) throw SystemFailure(ports::kZipWriteFailed);
    ReadBack(offset, directory);
    const auto first = std::find_if(inputs.begin(), inputs.end(), [](const ZipInput& input) {
      return input.facts.kind == os::Kind::kFile;
    });
    if (first != inputs.end()) os::CopyRights(first->path, temporary_);
    if (!os::Rename(temporary_, path_)) throw SystemFailure(ports::kZipCreateFailed);
    published_ = true;
    // The file is complete; what fails from here on no longer matters.
    WithoutExceptions(0, 0, [this] {
      os::FlushFolderOf(path_);
      return 0;
    });
  }

 private:
  void Write(const void* data, std::size_t length) {
    if (!file_->Write(data, length)) throw SystemFailure(ports::kZipWriteFailed);
    offset_ += length;
  }
  void Write(const std::string& bytes) { Write(bytes.data(), bytes.size()); }

  // Reads the file back: the disk must return what was written.
  void ReadBack(std::uint64_t offset, const std::string& directory) const {
    os::ErrorCode error = 0;
    const auto file = os::OpenForReading(temporary_, error);
    if (!file) throw Failure{ports::kZipWriteFailed, error};
    try {
      for (const ZipEntry& entry : directory_.entries)
        CheckEntry(*file, entry);
      CheckBytes(*file, offset, directory);
    } catch (const Failure& failure) {
      throw Failure{ports::kZipWriteFailed, failure.error};
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

class Command {
 public:
  Command(const std::string& zip_path, const ZipSettings& settings, const ZipListeners& listeners)
      : zip_path_(zip_path), settings_(settings), listeners_(listeners) {}

  void Run(const std::vector<std::string>& names) {
    if (os::Examine(zip_path_).kind != os::Kind::kNone) throw Failure{ports::kZipCreateFailed};
    ZipInputs inputs = CollectInputs(names, settings_, zip_path_);
    for (const std::string& name : inputs.missing)
      Print(texts::NotMatched(name));
    // A backup without a file that was asked for must not look like a complete one.
    if (!inputs.missing.empty() && !inputs.found.empty()) throw Failure{ports::kZipOpenFailed};
    if (inputs.found.empty()) throw Failure{ports::kZipNothingToDo};
    WriteAll(inputs.found);
    if (settings_.move) RemoveInputs(inputs.found);
  }

 private:
  void Print(const std::string& line) const {
    if (!settings_.quiet) listeners_.print(line);
  }

  void WriteAll(const std::vector<ZipInput>& inputs) {
    NewZip zip(zip_path_);
    std::uint32_t latest = 0;
    for (const ZipInput& input : inputs) {
      latest = std::max(latest, rar::ToDosTime(input.facts.modified));
      Print(texts::Adding(input.stored_name));
      AddInput(zip, input);
      if (!listeners_.entry_done(input.stored_name, input.facts.size))
        throw Failure{ports::kZipAborted};
    }
    if (settings_.ask_comment) zip.SetComment(listeners_.ask_comment());
    zip.Publish(inputs);
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
    if (!file) throw Failure{ports::kZipOpenFailed, error};
    if (settings_.level > 0 && file->Size() > 0) entry.method = kMethodDeflated;
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
};

}  // namespace

ports::ZipResult RunZipCommand(const std::string& zip_path, const std::vector<std::string>& names,
                               const ZipSettings& settings,
                               const ZipListeners& listeners) noexcept {
  try {
    os::SetLastErrorCode(0);
    if (names.empty()) return ports::kZipNothingToDo;
    if (zip_path.empty()) return ports::kZipBadOptions;
    Command(zip_path, settings, listeners).Run(names);
    return ports::kZipOk;
  } catch (const Failure& failure) {
    os::SetLastErrorCode(failure.error);
    return failure.code;
  } catch (const std::bad_alloc&) {
    return ports::kZipNoMemory;
  } catch (...) {
    return ports::kZipInternal;
  }
}

}  // namespace companion::zip
