#include "companion/zip/content_source.h"

#include <algorithm>
#include <vector>

#include "companion/zip/failure.h"

namespace companion::zip {
namespace {

std::size_t ReadOrFail(os::ReadableFile& file, std::uint64_t offset, std::uint8_t* buffer,
                       std::size_t length) {
  const auto got = file.ReadAt(offset, buffer, length);
  if (!got) throw SystemFailure(ports::kZipReadFailed);
  return *got;
}

bool IsText(os::ReadableFile& file) {
  std::vector<std::uint8_t> beginning(32U << 10U);
  beginning.resize(ReadOrFail(file, 0, beginning.data(), beginning.size()));
  return std::find(beginning.begin(), beginning.end(), 0) == beginning.end();
}

// A text whose line ends are converted while it is read.
class LineEndReader {
 public:
  LineEndReader(std::shared_ptr<os::ReadableFile> file, LineEnds line_ends)
      : file_(std::move(file)), line_ends_(line_ends) {}

  std::size_t Read(std::uint8_t* buffer, std::size_t length) {
    std::size_t done = 0;
    while (done < length) {
      if (position_ == converted_.size() && !Convert()) break;
      const std::size_t taken = std::min(length - done, converted_.size() - position_);
      std::copy_n(converted_.begin() + static_cast<std::ptrdiff_t>(position_), taken,
                  buffer + done);
      position_ += taken;
      done += taken;
    }
    return done;
  }

 private:
  // Reads the next piece of the file; returns false at its end.
  bool Convert() {
    std::vector<std::uint8_t> raw(64U << 10U);
    raw.resize(ReadOrFail(*file_, offset_, raw.data(), raw.size()));
    offset_ += raw.size();
    converted_.clear();
    position_ = 0;
    if (raw.empty()) {
      if (held_return_) converted_.push_back('\r');
      held_return_ = false;
      return !converted_.empty();
    }
    for (const std::uint8_t byte : raw)
      Take(byte);
    return !converted_.empty() || Convert();
  }

  void Take(std::uint8_t byte) {
    if (line_ends_ == LineEnds::kToCrLf) {
      if (byte == '\n' && previous_ != '\r') converted_.push_back('\r');
      converted_.push_back(byte);
      previous_ = byte;
      return;
    }
    // A carriage return is held back: before a line feed it is dropped.
    if (held_return_ && byte != '\n') converted_.push_back('\r');
    held_return_ = byte == '\r';
    if (!held_return_) converted_.push_back(byte);
  }

  std::shared_ptr<os::ReadableFile> file_;
  LineEnds line_ends_;
  std::vector<std::uint8_t> converted_;
  std::size_t position_ = 0;
  std::uint64_t offset_ = 0;
  std::uint8_t previous_ = 0;
  bool held_return_ = false;
};

}  // namespace

ContentReader ReadContent(std::shared_ptr<os::ReadableFile> file, LineEnds line_ends) {
  if (line_ends != LineEnds::kAsTheyAre && IsText(*file)) {
    return [reader = std::make_shared<LineEndReader>(std::move(file), line_ends)](
               std::uint8_t* buffer, std::size_t length) { return reader->Read(buffer, length); };
  }
  return [file = std::move(file), offset = std::uint64_t{0}](std::uint8_t* buffer,
                                                             std::size_t length) mutable {
    const std::size_t got = ReadOrFail(*file, offset, buffer, length);
    offset += got;
    return got;
  };
}

}  // namespace companion::zip
