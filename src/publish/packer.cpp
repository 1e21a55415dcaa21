#include "publish/packer.h"

#include <memory>
#include <string_view>
#include <utility>

#include "foundation/api_errors.h"
#include "foundation/command_line.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "packages/companion_functions.h"
#include "packages/rar_archive.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "publish/file_tree.h"
#include "publish/packer_texts.h"
#include "sha256/sha256.h"
#include "tools/command_line.h"
#include "tools/fill.h"
#include "tools/stop.h"

namespace publish {
namespace {

using tmw::JoinPath;

constexpr std::string_view kArchive = "{archive}";
constexpr std::string_view kFile = "{file}";
// Files in packed archives: 2000-01-01 00:00 UTC.
constexpr std::int64_t kTimeOfFiles = 946'684'800;
// After so many failures the others would tell nothing new.
constexpr int kMostFailures = 10;

bool Replace(std::string& word, std::string_view mark, const std::string& value) {
  bool is_replaced = false;
  for (std::size_t at = word.find(mark); at != std::string::npos;
       at = word.find(mark, at + value.size())) {
    word.replace(at, mark.size(), value);
    is_replaced = true;
  }
  return is_replaced;
}

// What the archiver printed last, for a message; empty if it has printed nothing.
std::string LastWords(const std::string& log) {
  if (!tmw::IsFileExists(log)) return {};
  std::string text = tmw::ReadFileBytes(log);
  if (!tmw::IsWellFormedUtf8(text)) text = tmw::CodePageToUtf8(tmw::CodePage::k866, text);
  std::string last;
  for (const std::string& line : tmw::Split(text, "\n")) {
    const std::string trimmed = tmw::TrimCharacters(line, " \t\r\b");
    if (!trimmed.empty()) last = trimmed;
  }
  return last.empty() ? "" : tools::Fill(texts::kPackerSays, {tmw::OneLine(last)});
}

std::int64_t LengthOf(const std::string& path) {
  return tmw::IsFileExists(path) ? tmw::GetFileLength(path) : 0;
}

// What the cache keeps in place of an archive that is not shorter than the stored package.
bool IsRefusal(const std::string& archive, const std::string& key) {
  return LengthOf(archive) == static_cast<std::int64_t>(key.size()) &&
         tmw::ReadFileBytes(archive) == key;
}

// The names of all entries.
std::vector<std::string> EntriesOf(const std::string& archive) {
  tmw::RarArchive reader;
  reader.OpenArchive(archive, ports::kRarList);
  std::vector<std::string> names;
  std::string name;
  std::uint32_t flags = 0;
  std::uint32_t packed = 0;
  std::uint32_t unpacked = 0;
  while (reader.ReadHeader(name, flags, packed, unpacked)) {
    names.push_back(name);
    reader.ProcessFile(ports::kRarSkip, "", "");
  }
  return names;
}

bool IsRar5(const std::string& archive) {
  const std::string start = packing::MakeBeginning(packing::RarFormat::kRar5).substr(0, 8);
  std::string found(start.size(), '\0');
  const auto file = OpenToRead(archive);
  ReadPiece(*file, found.data(), found.size(), archive);
  return found == start;
}

}  // namespace

void RequireMarks(const PackerOptions& options) {
  for (const std::string_view mark : {kArchive, kFile}) {
    if (options.command.find(mark) == std::string::npos)
      throw tools::UsageError(tools::Fill(texts::kPackerNeeds, {std::string(mark)}));
  }
}

Packer::Packer(const PackerOptions& options, packing::RarFormat format)
    : words_(tmw::SplitCommandLine(options.command, tmw::EmptyArguments::kKept)),
      command_(options.command),
      format_(format),
      most_silence_(options.most_silence),
      cache_(options.cache.empty() ? "" : tmw::GetAbsoluteFileName(options.cache)) {
  // It is started in another folder.
  std::string& program = words_.front();
  if (program.find_first_of("/\\") != std::string::npos)
    program = tmw::GetAbsoluteFileName(program);
  tmw::CompanionFunctions();  // loads the library before other threads start
}

std::optional<std::string> Packer::Pack(const PackJob& job, const std::string& scratch,
                                        Faults& faults) {
  // Archivers would take such a name for an option or for a list of names.
  if (job.name.starts_with('-') || job.name.starts_with('@')) return std::nullopt;
  tmw::CreateFolderIfAbsent(scratch);
  const std::string archive = JoinPath(scratch, "archive.rar");
  const std::string key = KeyOf(job);
  Faults ignored;
  const bool is_kept = cache_.Find(key, archive) &&
                       (IsRefusal(archive, key) || IsSound(job, archive, scratch, ignored));
  if (!is_kept) {
    if (failures_ >= kMostFailures) {
      faults.Add(job.place, texts::kPackerGivenUp);
      return std::nullopt;
    }
    tmw::DeleteFile(archive);
    if (!Run(job, scratch, archive, faults) || !IsSound(job, archive, scratch, faults)) {
      ++failures_;
      return std::nullopt;
    }
    if (LengthOf(archive) >= job.most_bytes) WriteWholeFile(archive, key);
    cache_.Keep(key, archive);
  }
  const bool is_wanted = LengthOf(archive) < job.most_bytes && !IsRefusal(archive, key);
  return is_wanted ? std::optional(archive) : std::nullopt;
}

bool Packer::Run(const PackJob& job, const std::string& scratch, const std::string& archive,
                 Faults& faults) const {
  const ports::Ports& ports = ports::CurrentPorts();
  const std::string folder = JoinPath(scratch, "in");
  const std::string copy = JoinPath(folder, job.name);
  tmw::CreateFolderIfAbsent(folder);
  CopyContent(job.source, copy);
  const ports::Status set =
      ports.files->SetFacts(copy, kTimeOfFiles, job.is_executable ? 0755 : 0644);
  if (!set) tmw::RaiseApiErrorWithMessage(tmw::Quoted(copy) + ": ", set.code);

  std::vector<std::string> words = words_;
  for (std::string& word : words) {
    Replace(word, kFile, job.name);
    Replace(word, kArchive, archive);
  }
  ports::StartRequest request;
  request.command_line = tmw::JoinCommandLine(words);
  request.working_folder = folder;
  request.output_file = JoinPath(scratch, "output");
  const auto started = ports.processes->Start(request);
  if (!started) {
    faults.Add(job.place, texts::kPackerNotStarted,
               {tmw::TrimCharacters(tmw::GetApiErrorText(started.code, ""), tmw::kCrLf)});
    return false;
  }
  ports::Process& process = *started.value;
  constexpr std::int32_t kSliceMs = 50;
  constexpr std::int64_t kMsPerSecond = 1000;
  std::int64_t written = 0;
  std::int64_t last_growth = ports.clock->TickCount();
  while (!process.Wait(kSliceMs).value) {
    const std::int64_t now = ports.clock->TickCount();
    const std::int64_t length = LengthOf(archive) + LengthOf(request.output_file);
    if (length != written) last_growth = now;
    written = length;
    const bool hangs = now - last_growth > most_silence_ * kMsPerSecond;
    if (!hangs && !tools::IsStopped()) continue;
    static_cast<void>(process.Kill());
    static_cast<void>(process.Wait(static_cast<std::int32_t>(kMsPerSecond)));
    tools::ThrowIfStopped();
    faults.Add(job.place, texts::kPackerHangs,
               {std::to_string(most_silence_), LastWords(request.output_file)});
    return false;
  }
  if (const auto code = process.ExitCode(); !code || code.value != 0) {
    faults.Add(job.place, texts::kPackerFailed,
               {std::to_string(code.value), LastWords(request.output_file)});
    return false;
  }
  if (LengthOf(archive) != 0) return true;
  faults.Add(job.place, texts::kPackerMadeNothing, {LastWords(request.output_file)});
  return false;
}

bool Packer::IsSound(const PackJob& job, const std::string& archive, const std::string& scratch,
                     Faults& faults) const {
  const std::string folder = JoinPath(scratch, "out");
  try {
    std::vector<std::string> names = EntriesOf(archive);
    if (names != std::vector<std::string>{job.name}) {
      faults.Add(job.place, texts::kPackerEntries, {job.name, tmw::Joined(names, ", ")});
      return false;
    }
    if (format_ == packing::RarFormat::kRar4 && IsRar5(archive)) {
      faults.Add(job.place, texts::kPackerNewFormat);
      return false;
    }
    std::string reason;
    if (!tmw::UnrarOneFile(archive, job.name, folder, "", reason, job.length, tools::GoesOn)) {
      tools::ThrowIfStopped();
      faults.Add(job.place, texts::kPackerMadeUnreadable, {reason});
      return false;
    }
  } catch (const tmw::ProgramError& error) {
    tools::ThrowIfStopped();
    faults.Add(job.place, texts::kPackerMadeUnreadable, {error.Description});
    return false;
  }
  const std::string unpacked = JoinPath(folder, job.name);
  const bool is_same = tmw::IsFileExists(unpacked) && tmw::GetFileLength(unpacked) == job.length &&
                       HashOfFile(unpacked) == job.hash;
  if (!is_same) faults.Add(job.place, texts::kPackerMadeOther);
  return is_same;
}

// Everything that the archive depends on; the first part is the version of this list.
std::string Packer::KeyOf(const PackJob& job) const {
  std::string text =
      "1\n" + command_ + "\n" + job.hash + "\n" + job.name + (job.is_executable ? "\nx" : "\n-");
  return sha256::CSHA256().SHA256(text + (format_ == packing::RarFormat::kRar4 ? "\n4" : "\n5"));
}

}  // namespace publish
