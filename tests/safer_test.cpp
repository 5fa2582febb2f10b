// KORVOSaferCrypt through the exported interface: key texts, the mode
// table, the ciphertext format and every way a decryption is refused.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korutl.h"

namespace {

using Bytes = std::vector<uint8_t>;

struct Result {
  int32_t ok;
  Bytes out;
};

Result crypt(int32_t mode, const Bytes &in, const char *key) {
  Bytes out(in.size() + 16, 0xAA);
  uint32_t len = 0xDEADBEEF;
  const int32_t ok =
      KORVOSaferCrypt(mode, in.data(), static_cast<uint32_t>(in.size()), out.data(), &len, key);
  if (ok == 0) {
    // A failed call leaves the caller's buffer and length as they were.
    EXPECT_EQ(len, 0xDEADBEEF);
    for (uint8_t b : out) EXPECT_EQ(b, 0xAA);
    return {0, {}};
  }
  out.resize(len);
  return {ok, out};
}

Bytes hex(const std::string &h) {
  Bytes b;
  for (size_t i = 0; i + 1 < h.size(); i += 2)
    b.push_back(static_cast<uint8_t>(std::stoi(h.substr(i, 2), nullptr, 16)));
  return b;
}

Bytes first_block(const Bytes &b) { return Bytes(b.begin(), b.begin() + 8); }

// With a zero initial vector the first CBC block is the plain block
// cipher, so published ECB vectors check the key text reading and the mode
// table end to end. Key texts are the base-95 spellings of the vector keys.
TEST(SaferCrypt, FirstBlockMatchesPublishedVectors) {
  struct Case {
    const char *source;
    int32_t mode;
    const char *key_text;
    const char *plain;
    const char *cipher;
  } cases[] = {
      // Crypto++ saferval.dat, SAFER K-64, all-zero key.
      {"cryptopp K-64", 0, "", "0000000000000000", "032808C90EE7AB7F"},
      {"cryptopp K-64", 4, "", "0102030405060708", "7D28038633B92EB4"},
      {"cryptopp K-64", 42, "        ", "0102030405060708", "7D28038633B92EB4"},
      // libtomcrypt self-test (ETH reference), SAFER SK-128, key 0102..08 then zeros.
      {"ltc-selftest SK-128", 2, "w2&`}\\Gq?", "0102030405060708", "FF7811E4B3A72E71"},
      {"ltc-selftest SK-128", 6, "w2&`}\\Gq?", "0102030405060708", "FF7811E4B3A72E71"},
      // libtomcrypt cipher_tv.txt, SAFER K-128, key 00 01 .. 0F.
      {"ltc-tv K-128", 0, "RD#+emW\\6]k?N+eF{j/", "0001020304050607", "4D791DB28D724E55"},
      // libtomcrypt cipher_tv.txt, SAFER SK-128, key 00 01 .. 0F.
      {"ltc-tv SK-128", 6, "RD#+emW\\6]k?N+eF{j/", "0001020304050607", "511E4D5D8D70B37E"},
  };
  for (const Case &c : cases) {
    const Result r = crypt(c.mode, hex(c.plain), c.key_text);
    ASSERT_EQ(r.ok, 1) << c.source;
    ASSERT_EQ(r.out.size(), 16u);
    EXPECT_EQ(first_block(r.out), hex(c.cipher)) << c.source << " mode " << c.mode;
  }
}

TEST(SaferCrypt, ModeAndKeyEquivalences) {
  const Bytes plain = hex("00112233445566778899AABBCCDDEEFF01");
  const auto enc = [&](int32_t mode, const char *key) { return crypt(mode, plain, key).out; };
  struct Case {
    const char *what;
    int32_t mode_a;
    const char *key_a;
    int32_t mode_b;
    const char *key_b;
    bool same;
  } cases[] = {
      {"mode 4 is mode 0", 4, "key", 0, "key", true},
      {"mode 8 encrypts as 0", 8, "key", 0, "key", true},
      {"mode -1 encrypts as 0", -1, "key", 0, "key", true},
      {"short key: SK 6 rounds differs from SK 8 rounds", 6, "key", 2, "key", false},
      {"long key: modes 2 and 6 both 10 rounds", 6, "long key!", 2, "long key!", true},
      {"long key: modes 0 and 4 both 10 rounds", 4, "long key!", 0, "long key!", true},
      {"leading blanks are zero digits", 0, " !", 0, "!", true},
      {"nine characters select the 128-bit key", 0, "        !", 0, "!", false},
      // 2^128 + 1 in base 95 wraps to the same key as 1 in 20 digits.
      {"key number wraps modulo 2^128", 0, ")!_oEk9A$(P^Z?P?*r!^", 0, "                   !", true},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(enc(c.mode_a, c.key_a) == enc(c.mode_b, c.key_b), c.same) << c.what;
  }
  // A fresh zero vector per call: same input, same output; a shared first
  // block gives a shared first ciphertext block.
  EXPECT_EQ(enc(0, "k"), enc(0, "k"));
  Bytes other = plain;
  other[9] ^= 1;
  EXPECT_EQ(first_block(crypt(0, other, "k").out), first_block(enc(0, "k")));
}

TEST(SaferCrypt, RefusedInputs) {
  const Bytes sixteen_zeros(16, 0);
  const Bytes two_blocks = crypt(0, sixteen_zeros, "k").out;
  ASSERT_EQ(two_blocks.size(), 24u);
  const Bytes truncated(two_blocks.begin(), two_blocks.begin() + 16);

  struct Case {
    const char *what;
    int32_t mode;
    Bytes input;
    const char *key;
  } cases[] = {
      {"tab in key", 0, Bytes(3), "a\tb"},
      {"byte 128 or more in key", 0, Bytes(3), "caf\xe9"},
      {"code 127 in key", 1, Bytes(8), "\x7f"},
      {"decrypt 0 bytes", 1, Bytes{}, "k"},
      {"decrypt 5 bytes", 1, Bytes(5), "k"},
      {"decrypt 17 bytes", 3, Bytes(17), "k"},
      {"length 0 does not end in the last data block", 1, truncated, "k"},
      {"encrypt 8192 bytes", 0, Bytes(8192), "k"},
      {"decrypt 8192 bytes", 1, Bytes(8192), "k"},
  };
  for (const Case &c : cases) EXPECT_EQ(crypt(c.mode, c.input, c.key).ok, 0) << c.what;

  uint8_t out[32];
  uint32_t len = 0;
  EXPECT_EQ(KORVOSaferCrypt(0, out, 8, out, &len, nullptr), 0);
  EXPECT_EQ(KORVOSaferCrypt(0, nullptr, 8, out, &len, "k"), 0);
  EXPECT_EQ(KORVOSaferCrypt(0, out, 8, nullptr, &len, "k"), 0);
}

// Ciphertexts whose length block decodes to a bad bit count: built by
// encrypting chosen length blocks, which are the plaintext of a one-block
// ciphertext when the preceding data is empty.
TEST(SaferCrypt, LengthBlockChecks) {
  // One block decrypting to the bytes `length_block`: encrypt those 8
  // bytes as data and keep the first ciphertext block.
  const auto block_for = [](const Bytes &length_block) {
    return first_block(crypt(0, length_block, "k").out);
  };
  struct Case {
    const char *what;
    Bytes length_block;
    int32_t ok;
    size_t out_len;
  } cases[] = {
      {"empty plaintext", hex("0000000000000000"), 1, 0},
      {"bit count not a multiple of 8", hex("0100000000000000"), 0, 0},
      {"one block must announce 0 bytes", hex("0800000000000000"), 0, 0},
      {"2^35 bits or more", hex("0000000008000000"), 0, 0},
  };
  for (const Case &c : cases) {
    const Result r = crypt(1, block_for(c.length_block), "k");
    EXPECT_EQ(r.ok, c.ok) << c.what;
    EXPECT_EQ(r.out.size(), c.out_len) << c.what;
  }
}

}  // namespace
