#include "sha256/sha256.h"

#include <gtest/gtest.h>

#include <iostream>
#include <random>
#include <vector>

namespace sha256 {
namespace {

std::string Hex(const Digest& digest) {
  std::string text;
  for (const std::uint8_t byte : digest) {
    text += "0123456789abcdef"[byte >> 4U];
    text += "0123456789abcdef"[byte & 15U];
  }
  return text;
}

std::string HashInPieces(Path path, const std::string& text, std::size_t piece) {
  Stream stream(path);
  for (std::size_t i = 0; i < text.size(); i += piece) {
    stream.Update(text.data() + i, std::min(piece, text.size() - i));
  }
  return Hex(stream.Finish());
}

// FIPS 180-4 examples and lengths around the block's end, their digests from openssl.
const struct {
  std::string message;
  std::string digest;
} kVectors[] = {
    {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
    {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
    {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
     "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
    {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
    {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
};

TEST(Sha256, EveryPathGivesThePublishedDigestsHoweverTheBytesArrive) {
  for (const Path path : {Path::kPortable, Path::kProcessor}) {
    if (!IsPathAvailable(path)) {
      std::cout << "this processor has no SHA instructions: that path is not tested\n";
      continue;
    }
    for (const auto& [message, digest] : kVectors) {
      for (const std::size_t piece : {std::size_t{1}, std::size_t{63}, std::size_t{4096}}) {
        if (piece == 1 && message.size() > 1000) continue;
        EXPECT_EQ(HashInPieces(path, message, piece), digest) << message.size() << " by " << piece;
      }
    }
  }
}

TEST(Sha256, ThePathsAgreeOnRandomBytes) {
  if (!IsPathAvailable(Path::kProcessor)) {
    std::cout << "this processor has no SHA instructions: nothing to compare\n";
    return;
  }
  std::mt19937 random(1);
  std::string bytes;
  for (int i = 0; i < 300; ++i) {
    bytes.push_back(static_cast<char>(random()));
    ASSERT_EQ(HashInPieces(Path::kPortable, bytes, 7),
              HashInPieces(Path::kProcessor, bytes, bytes.size()));
  }
}

TEST(CSHA256, TextIsLowerCaseHexadecimal) {
  const std::vector<std::uint8_t> bytes = {'a', 'b', 'c'};
  EXPECT_EQ(CSHA256().SHA256(bytes),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

}  // namespace
}  // namespace sha256
