#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/string_accumulator.h"
#include "ports/file_system.h"

namespace jetsql {

// Where a command writes: standard output, or a file that is removed unless the output is finished.
class Output {
 public:
  Output();
  // UTF-8, with its mark, or code page 1251; a character that the page lacks is an error.
  enum class FileForm { kUtf8, kUtf8WithMark, k1251 };
  Output(const std::string& path, FileForm form);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  tmw::StringAccumulator& Text() { return text_; }

  // Writes what is left; a file is flushed to the disk.
  void Finish();

 private:
  void WriteToStandardOutput(std::string_view text) const;
  void WriteToFile(std::string_view text);

  std::string path_;
  FileForm form_ = FileForm::kUtf8;
  std::unique_ptr<ports::File> file_;
  bool is_finished_ = false;
  tmw::StringAccumulator text_;
};

}  // namespace jetsql
