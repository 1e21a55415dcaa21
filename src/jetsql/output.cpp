#include "jetsql/output.h"

#include <iostream>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jetsql/jetsql_texts.h"
#include "ports/ports.h"
#include "tools/stop.h"

namespace jetsql {

Output::Output() : text_([this](std::string_view text) { WriteToStandardOutput(text); }) {}

Output::Output(const std::string& path, FileForm form)
    : path_(path), form_(form), text_([this](std::string_view text) { WriteToFile(text); }) {
  auto opened = ports::CurrentPorts().files->Open(path, ports::FileMode::kWriteNew);
  if (!opened)
    tmw::RaiseApiErrorWithMessage(Say(texts::kCannotWrite, {tmw::Quoted(path)}), opened.code);
  file_ = std::move(opened.value);
  if (form == FileForm::kUtf8WithMark) text_.Add("\xEF\xBB\xBF");
}

Output::~Output() {
  if (is_finished_ || !file_) return;
  file_.reset();
  static_cast<void>(tmw::DeleteFile(path_, true));
}

// Standard output of Windows makes CR LF of each LF.
void Output::WriteToStandardOutput(std::string_view text) const {
  tools::ThrowIfStopped();
  if (ports::CurrentPorts().files->Separator() != '\\') {
    std::cout << text;
    return;
  }
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' || i + 1 == text.size() || text[i + 1] != '\n') plain += text[i];
  }
  std::cout << plain;
}

void Output::WriteToFile(std::string_view text) {
  tools::ThrowIfStopped();
  std::string converted;
  if (form_ == FileForm::k1251) {
    auto bytes = tmw::TryUtf8ToCodePage(tmw::CodePage::k1251, text);
    if (!bytes) tmw::RaiseProgramError(Say(texts::kOutsideCodePage));
    converted = *std::move(bytes);
    text = converted;
  }
  const ports::Status written = file_->Write(text.data(), text.size());
  if (!written)
    tmw::RaiseApiErrorWithMessage(Say(texts::kCannotWrite, {tmw::Quoted(path_)}), written.code);
}

void Output::Finish() {
  text_.HandOn();
  if (!file_) {
    std::cout.flush();
    return;
  }
  for (const ports::Status& status : {file_->Flush(), file_->Close()}) {
    if (!status)
      tmw::RaiseApiErrorWithMessage(Say(texts::kCannotWrite, {tmw::Quoted(path_)}), status.code);
  }
  is_finished_ = true;
}

}  // namespace jetsql
