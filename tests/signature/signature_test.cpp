#include <gtest/gtest.h>

#include <tuple>

#include "signature/secret_key.h"
#include "signature/verification.h"

namespace tests {
namespace {

using signature::KeyFileVerdict;
using signature::Verdict;

// Made by the program minisign: its keys, and its signatures of "hello" and a line end.
const std::string kKey = "RWRsU3cS+wlg2ZBjJ9G5oejCsAMbZLC0m+L1EQ++Ir8NN4lIbHmuF+GN";
const std::string kSecretKey =
    "untrusted comment: minisign encrypted secret key\n"
    "RWQAAEIyAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAbFN3EvsJYNm7LIgOw/"
    "QDCsBVlR2uss45wALnfVBfLbQaDbscO9sNupBjJ9G5oejCsAMbZLC0m+L1EQ++Ir8NN4lIbHmuF+"
    "GNAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=\n";
const std::string kSignature =
    "untrusted comment: my comment\n"
    "RURsU3cS+wlg2Z3jRz8fJZUu0o6Dcctl/+/r/J5ctM1Pzwedq0bAJCF0yc8Nz99bLXwa3IKoyi+"
    "SBIbE9uYZslFOImPDqX90/As=\n"
    "trusted comment: trusted words\n"
    "9X565sftuYKo0X5HF9J5GwhnneBBeZEwLjCCDA/"
    "Clzg3ACgFRLVroOH62lJIYbSPWSAZ19MtDfA2nDgsuhPBCw==\n";
const std::string kLegacySignature =
    "untrusted comment: signature from minisign secret key\n"
    "RWRsU3cS+wlg2fUDEfnRsZbiO2WeTSGpfN4oXSUrABgmpnfuG3juA48g/XB6a9tWaz+"
    "wj6ZBzECwKgzwKZUG9MtwHCPOSGWbmgw=\n"
    "trusted comment: timestamp:1795319216\tfile:f\n"
    "IQqQ/hvL+8ihvMtzFB8LCWxoYVb2l0DXgi2rpZCLM3fIEwTFdkDxtGgC5x5leXIhNXb5T3Q8FR6FV0vGg+jvAw==\n";
const std::string kMessage = "hello\n";

std::string Replaced(std::string text, const std::string& piece, const std::string& instead) {
  return text.replace(text.find(piece), piece.size(), instead);
}

TEST(Signature, OnlyWhatTheKeySignedIsGood) {
  signature::SecretKey other;
  other.Generate();
  signature::PublicKey same_id = other.Public();
  same_id.id = signature::ParsePublicKey(kKey)->id;
  const signature::PublicKey key = *signature::ParsePublicKey(kKey + "\r\n");
  const std::vector<signature::PublicKey> both = {other.Public(), key};
  const std::string words = "trusted words";
  const struct {
    const char* what;
    std::string message;
    std::string file;
    std::vector<signature::PublicKey> keys;
    Verdict verdict;
  } cases[] = {
      {"as made", kMessage, kSignature, {key}, Verdict::kGood},
      {"two keys", kMessage, kSignature, both, Verdict::kGood},
      {"lines of Windows", kMessage, Replaced(kSignature, "words\n", "words\r\n"), both,
       Verdict::kGood},
      {"message", "hello!\n", kSignature, both, Verdict::kDiffers},
      {"signature", kMessage, Replaced(kSignature, "3jRz8", "3jRz9"), both, Verdict::kDiffers},
      {"comment", kMessage, Replaced(kSignature, words, "trusted Words"), both, Verdict::kDiffers},
      {"global", kMessage, Replaced(kSignature, "9X565", "9X566"), both, Verdict::kDiffers},
      {"the key's id under another key", kMessage, kSignature, {same_id}, Verdict::kDiffers},
      {"another key", kMessage, kSignature, {other.Public()}, Verdict::kUnknownKey},
      {"no key", kMessage, kSignature, {}, Verdict::kUnknownKey},
      {"of the message itself", kMessage, kLegacySignature, both, Verdict::kOtherKind},
      {"another algorithm", kMessage, Replaced(kSignature, "RUR", "RVR"), both,
       Verdict::kMalformed},
      {"empty", kMessage, "", both, Verdict::kMalformed},
      {"cut", kMessage, kSignature.substr(0, kSignature.size() - 10), both, Verdict::kMalformed},
      {"three lines", kMessage, kSignature.substr(0, kSignature.rfind("9X565")), both,
       Verdict::kMalformed},
      {"five lines", kMessage, kSignature + "\n", both, Verdict::kMalformed},
      {"no base64", kMessage, Replaced(kSignature, "3jRz8", "3j z8"), both, Verdict::kMalformed},
      {"too long", kMessage, Replaced(kSignature, words, std::string(4096, 'x')), both,
       Verdict::kMalformed},
  };
  for (const auto& c : cases) {
    const signature::Verification result = signature::Verify(c.message, c.file, c.keys);
    EXPECT_EQ(result.verdict, c.verdict) << c.what;
    EXPECT_EQ(result.trusted_comment, c.verdict == Verdict::kGood ? words : "") << c.what;
  }
  EXPECT_EQ(signature::KeyIdText(signature::Verify(kMessage, kSignature, {}).key_id),
            "D96009FB1277536C");
}

TEST(Signature, AFaultyPublicKeyIsNoKey) {
  const std::string comment = "untrusted comment: x\n";
  // Base64 of "Ed", eight bytes of id and the point of order 1, under which anybody signs.
  const std::string neutral = "RWRsU3cS+wlg2QEA" + std::string(40, 'A');
  for (const std::string& text :
       {std::string(), kKey.substr(1), kKey + "A", "RXR" + kKey.substr(3), kKey + "\n" + kKey,
        "comment\n" + kKey, comment, kKey + " ", neutral}) {
    EXPECT_FALSE(signature::ParsePublicKey(text)) << text;
  }
  const auto key = signature::ParsePublicKey(comment + kKey + "\n");
  ASSERT_TRUE(key);
  EXPECT_EQ(signature::PublicKeyText(*key), kKey);
}

TEST(Signature, KeyFilesAreMinisignsOwn) {
  signature::SecretKey key;
  ASSERT_EQ(key.Read(kSecretKey, ""), KeyFileVerdict::kGood);
  EXPECT_EQ(signature::PublicKeyText(key.Public()), kKey);
  const auto made = signature::Verify("m", key.Sign("m", "Слова"), {key.Public()});
  EXPECT_EQ(made.verdict, Verdict::kGood);
  EXPECT_EQ(made.trusted_comment, "Слова");
  EXPECT_THROW(key.Sign("m", "a\nb"), std::invalid_argument);

  const std::string encrypted = key.FileText("пароль", {32768, 16 << 20});
  EXPECT_TRUE(signature::NeedsPassword(encrypted));
  EXPECT_FALSE(signature::NeedsPassword(key.FileText("")));
  EXPECT_NE(key.FileText("").find("bFN3EvsJYNm7LIgOw"), std::string::npos);
  EXPECT_EQ(encrypted.find("bFN3EvsJYNm7LIgOw"), std::string::npos);
  for (const auto& [text, password, verdict] :
       {std::tuple(encrypted, "пароль", KeyFileVerdict::kGood),
        {key.FileText(""), "", KeyFileVerdict::kGood},
        {encrypted, "", KeyFileVerdict::kWrongPassword},
        {encrypted, "Пароль", KeyFileVerdict::kWrongPassword},
        {Replaced(kSecretKey, "RWQ", "RXQ"), "", KeyFileVerdict::kMalformed},
        {Replaced(kSecretKey, "pBjJ9", "pBjJ8"), "", KeyFileVerdict::kMalformed},
        {Replaced(kSecretKey, "QAAE", "QBBE"), "", KeyFileVerdict::kMalformed},
        {kSecretKey.substr(49), "", KeyFileVerdict::kMalformed}}) {
    signature::SecretKey again;
    EXPECT_EQ(again.Read(text, password), verdict) << text << password;
    if (verdict == KeyFileVerdict::kGood) {
      EXPECT_EQ(signature::PublicKeyText(again.Public()), kKey);
    }
  }
}

}  // namespace
}  // namespace tests
