#include <optional>

#include "publish/answer.h"
#include "publish/command_runs.h"
#include "publish/publish_texts.h"
#include "publish/signer.h"
#include "tools/fill.h"

namespace publish {

using tools::Fill;

int RunKeygen(const tools::Arguments& arguments) {
  const bool is_open = arguments.Has("--no-password");
  std::optional<std::string> password_file = arguments.Value("--password-file");
  if (is_open && password_file) throw tools::UsageError(texts::kTwoPasswords);
  if (!is_open && !password_file) password_file = "";
  const std::string file = arguments.Words().front();
  const KeyPair pair = MakeKeys(file, password_file);
  return Answer(arguments,
                {{"secret_key_file", file},
                 {"public_key_file", pair.public_file},
                 {"public_key", pair.public_key},
                 {"key", pair.key_id}},
                {}, Fill(texts::kMadeKey, {file, pair.public_file, pair.public_key}));
}

}  // namespace publish
