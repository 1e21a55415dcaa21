#include "publish/signer.h"

#include <algorithm>
#include <memory>

#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "foundation/utc_day.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "publish/faults.h"
#include "publish/file_tree.h"

namespace publish {
namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";

std::string FirstLineOf(const std::string& file) {
  if (!tmw::IsFileExists(file)) Raise(texts::kNoFile, file);
  std::string line = tmw::ReadFileBytes(file);
  // Editors put a mark before the text that nobody types in a terminal.
  if (line.starts_with(kMark)) line.erase(0, kMark.size());
  line.erase(std::min(line.find_first_of(tmw::kCrLf), line.size()));
  const bool is_utf16 = line.find('\0') != std::string::npos;
  if (line.empty() || is_utf16) Raise(texts::kNoPasswordInFile, file);
  return line;
}

std::string Ask(const char* prompt, const std::string& key_file) {
  const auto answer = ports::CurrentPorts().front_end->AskText(
      texts::kSigning, tools::Fill(prompt, {tmw::Quoted(key_file)}), true);
  if (!answer) Raise(texts::kNobodyToAsk, key_file);
  return *answer;
}

std::string NewPassword(const std::string& key_file) {
  std::string password = Ask(texts::kAskNewPassword, key_file);
  if (password.empty()) Raise(texts::kEmptyPassword, key_file);
  if (Ask(texts::kAskAgain, key_file) != password) Raise(texts::kPasswordsDiffer, key_file);
  return password;
}

// The file must not exist: nobody's key is overwritten.
void WriteNewFile(const std::string& path, std::string_view bytes) {
  auto opened = ports::CurrentPorts().files->Open(path, ports::FileMode::kCreateNew);
  if (!opened) Raise(texts::kFileNotMade, path);
  WritePiece(*opened.value, bytes, path);
  if (!opened.value->Flush()) Raise(texts::kFileNotMade, path);
  CloseWritten(*opened.value, path);
}

}  // namespace

Signer::Signer(const SigningOptions& options)
    : last_day_(options.last_day), serial_(options.serial) {
  const std::string& file = options.key_file;
  if (!tmw::IsFileExists(file)) Raise(texts::kNoFile, file);
  const std::string text = tmw::ReadFileBytes(file);
  std::string password;
  if (signature::NeedsPassword(text)) {
    password = options.password_file.empty() ? Ask(texts::kAskPassword, file)
                                             : FirstLineOf(options.password_file);
  }
  switch (key_.Read(text, password)) {
    case signature::KeyFileVerdict::kGood:
      break;
    case signature::KeyFileVerdict::kMalformed:
      Raise(texts::kNoSecretKey, file);
    case signature::KeyFileVerdict::kWrongPassword:
      Raise(texts::kWrongPassword, file);
    case signature::KeyFileVerdict::kNoMemory:
      Raise(texts::kNoMemoryForKey, file);
  }
}

SignedPart Signer::PartOf(std::int64_t serial) const {
  return {std::string(tmw::names::kProductCode), serial, last_day_};
}

std::string Signer::Sign(const Digest& digest, std::string_view bytes) const {
  const SignedPart part = digest.signed_part.value_or(SignedPart{});
  return key_.Sign(bytes, tools::Fill(texts::kTrustedComment,
                                      {part.product, digest.version, std::to_string(part.serial),
                                       tmw::UtcDayText(part.last_day), tmw::UtcDayText(Today())}));
}

std::string Signer::KeyId() const {
  return signature::KeyIdText(key_.Public().id);
}

KeyPair MakeKeys(const std::string& key_file, const std::optional<std::string>& password_file) {
  const std::string public_file = key_file + ".pub";
  for (const std::string& file : {key_file, public_file}) {
    if (tmw::IsFileExists(file)) Raise(texts::kThereAlready, file);
  }
  std::string password;
  if (password_file)
    password = password_file->empty() ? NewPassword(key_file) : FirstLineOf(*password_file);
  signature::SecretKey key;
  key.Generate();
  const signature::PublicKey made = key.Public();
  WriteNewFile(key_file, key.FileText(password));
  WriteWholeFile(public_file, signature::PublicKeyFileText(made));
  return {public_file, signature::PublicKeyText(made), signature::KeyIdText(made.id)};
}

signature::PublicKey ReadPublicKey(const std::string& text_or_file) {
  auto key = signature::ParsePublicKey(text_or_file);
  if (!key && tmw::IsFileExists(text_or_file))
    key = signature::ParsePublicKey(tmw::ReadFileBytes(text_or_file));
  if (!key) Raise(texts::kNoPublicKey, text_or_file);
  return *key;
}

std::int64_t Today() {
  return tmw::UtcDayOf(ports::CurrentPorts().clock->UtcSeconds());
}

}  // namespace publish
