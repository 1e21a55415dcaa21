#include "packing/rar_writer.h"

#include <vector>

#include "foundation/api_errors.h"
#include "foundation/error_handling.h"
#include "packing/packing_texts.h"
#include "ports/ports.h"
#include "sha256/integrity_trailer.h"

namespace packing {
namespace {

constexpr const char* kModule = "StoredRarWriter";

std::unique_ptr<ports::File> Open(const std::string& path, ports::FileMode mode) {
  auto opened = ports::CurrentPorts().files->Open(path, mode);
  if (!opened) tmw::RaiseApiErrorWithMessage(texts::OpeningFailed(path), opened.code);
  return std::move(opened.value);
}

void Require(const ports::Status& status, const std::string& path) {
  if (!status) tmw::RaiseApiErrorWithMessage(texts::WritingFailed(path), status.code);
}

// Passes the file's bytes to take, piece by piece.
void ForEachPiece(const std::string& path, const PieceHandler& on_piece,
                  const std::function<void(std::string_view)>& take) {
  const std::unique_ptr<ports::File> file = Open(path, ports::FileMode::kRead);
  std::vector<char> buffer(256U << 10U);
  for (;;) {
    const auto got = file->Read(buffer.data(), buffer.size());
    if (!got) tmw::RaiseApiErrorWithMessage(texts::ReadingFailed(path), got.code);
    if (got.value == 0) return;
    take({buffer.data(), got.value});
    if (on_piece) on_piece(got.value);
  }
}

std::string TrailerBytes(sha256::Stream& digest, std::uint64_t length) {
  const sha256::IntegrityTrailer trailer = sha256::MakeIntegrityTrailer({length, digest.Finish()});
  return {trailer.begin(), trailer.end()};
}

EntryHeader HeaderOf(const RarEntryFacts& facts) {
  EntryHeader header;
  header.name = facts.name;
  header.modified = facts.modified;
  if (facts.unix_mode) header.unix_mode = *facts.unix_mode & 0777U;
  return header;
}

}  // namespace

StoredRarWriter::StoredRarWriter(const std::string& package, RarFormat format,
                                 bool with_trailer) try
    : package_(package), format_(format), file_(Open(package, ports::FileMode::kWriteNew)) {
  if (with_trailer) digest_.emplace();
  Write(MakeBeginning(format_));
} catch (...) {
  tmw::ReRaiseError(kModule, "StoredRarWriter");
}

// The header precedes the data but contains its checksum, so the source is read twice. A file that
// changes in between is an error.
PackedFile StoredRarWriter::AddFile(const RarEntryFacts& facts, const std::string& source,
                                    const PieceHandler& on_piece) try {
  EntryHeader header = HeaderOf(facts);
  sha256::Stream content;
  ForEachPiece(source, on_piece, [&](std::string_view piece) {
    header.crc = UpdateCrc32(header.crc, piece);
    content.Update(piece.data(), piece.size());
    header.size += piece.size();
  });
  if (header.size > static_cast<std::uint64_t>(kLargestFile))
    tmw::RaiseProgramError(texts::TooLarge(source));
  Write(MakeEntryHeader(format_, header));
  std::uint32_t crc = 0;
  std::uint64_t length = 0;
  ForEachPiece(source, on_piece, [&](std::string_view piece) {
    crc = UpdateCrc32(crc, piece);
    length += piece.size();
    Write(piece);
  });
  if (crc != header.crc || length != header.size) tmw::RaiseProgramError(texts::Changed(source));
  return {static_cast<std::int64_t>(length), content.Finish()};
} catch (...) {
  tmw::ReRaiseError(kModule, "AddFile");
}

void StoredRarWriter::AddFolder(const RarEntryFacts& facts) try {
  EntryHeader header = HeaderOf(facts);
  header.is_folder = true;
  Write(MakeEntryHeader(format_, header));
} catch (...) {
  tmw::ReRaiseError(kModule, "AddFolder");
}

void StoredRarWriter::Finish(bool is_flushed) try {
  Write(MakeEnd(format_));
  if (digest_) {
    const std::string trailer = TrailerBytes(*digest_, length_);
    Require(file_->Write(trailer.data(), trailer.size()), package_);
  }
  if (is_flushed) Require(file_->Flush(), package_);
  Require(file_->Close(), package_);
  file_ = nullptr;
} catch (...) {
  tmw::ReRaiseError(kModule, "Finish");
}

void StoredRarWriter::Write(std::string_view bytes) {
  Require(file_->Write(bytes.data(), bytes.size()), package_);
  if (digest_) digest_->Update(bytes.data(), bytes.size());
  length_ += bytes.size();
}

std::int64_t StoredSize(RarFormat format, const RarEntryFacts& facts, std::int64_t length) {
  EntryHeader header = HeaderOf(facts);
  header.size = static_cast<std::uint64_t>(length);
  const std::size_t blocks = MakeBeginning(format).size() + MakeEntryHeader(format, header).size() +
                             MakeEnd(format).size();
  return length + static_cast<std::int64_t>(blocks);
}

void CopyFileWithIntegrityTrailer(const std::string& source, const std::string& target,
                                  const PieceHandler& on_piece) try {
  const std::unique_ptr<ports::File> file = Open(target, ports::FileMode::kWriteNew);
  sha256::Stream digest;
  std::uint64_t length = 0;
  ForEachPiece(source, on_piece, [&](std::string_view piece) {
    Require(file->Write(piece.data(), piece.size()), target);
    digest.Update(piece.data(), piece.size());
    length += piece.size();
  });
  const std::string trailer = TrailerBytes(digest, length);
  Require(file->Write(trailer.data(), trailer.size()), target);
  Require(file->Close(), target);
} catch (...) {
  tmw::ReRaiseError(kModule, "CopyFileWithIntegrityTrailer");
}

}  // namespace packing
