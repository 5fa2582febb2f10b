// The block cipher against published SAFER vectors, one block each way.
// tests/data/safer-published.txt lists them with their source per line:
//  - ltc-selftest: the self-test vectors of the libtomcrypt SAFER code,
//    themselves the ETH reference vectors of the cipher's designers;
//  - cryptopp: Crypto++ TestData/saferval.dat (K-64, K-128 with 12 rounds,
//    SK-64 with 6 rounds, SK-128);
//  - ltc-tv: libtomcrypt notes/cipher_tv.txt, chained vectors for K-64,
//    SK-64, K-128 and SK-128 at their default round counts.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "crypt/safer_block.h"

namespace {

namespace safer = korutl::safer;

struct Vector {
  std::string source;
  bool strengthened;
  int rounds;
  std::vector<uint8_t> key, plain, cipher;
};

std::vector<uint8_t> from_hex(const std::string &hex) {
  std::vector<uint8_t> out;
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    out.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  return out;
}

std::vector<Vector> load_vectors() {
  std::ifstream in(KORUTL_TEST_DATA_DIR "/safer-published.txt");
  std::vector<Vector> vectors;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    Vector v;
    std::string schedule, key, plain, cipher;
    fields >> v.source >> schedule >> v.rounds >> key >> plain >> cipher;
    v.strengthened = schedule == "SK";
    v.key = from_hex(key);
    v.plain = from_hex(plain);
    v.cipher = from_hex(cipher);
    vectors.push_back(v);
  }
  return vectors;
}

TEST(SaferBlock, PublishedVectors) {
  const std::vector<Vector> vectors = load_vectors();
  ASSERT_GE(vectors.size(), 200u);
  std::set<std::pair<size_t, bool>> variants;  // K-64, SK-64, K-128, SK-128 all seen
  for (const Vector &v : vectors) {
    ASSERT_TRUE(v.key.size() == 8 || v.key.size() == 16);
    ASSERT_EQ(v.plain.size(), 8u);
    variants.emplace(v.key.size(), v.strengthened);
    // A 64-bit key is key A and key B at once.
    safer::Schedule schedule;
    safer::expand_key(v.key.data(), v.key.data() + v.key.size() - 8, v.rounds, v.strengthened,
                      schedule);
    uint8_t block[8];
    std::memcpy(block, v.plain.data(), 8);
    safer::encrypt_block(block, schedule);
    EXPECT_EQ(std::vector<uint8_t>(block, block + 8), v.cipher)
        << v.source << " key " << v.key.size();
    safer::decrypt_block(block, schedule);
    EXPECT_EQ(std::vector<uint8_t>(block, block + 8), v.plain) << v.source;
  }
  EXPECT_EQ(variants.size(), 4u);
}

// Round counts above 13 are cut to 13 instead of running off the schedule.
TEST(SaferBlock, RoundsCappedAtThirteen) {
  const uint8_t key[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  safer::Schedule capped, thirteen;
  safer::expand_key(key, key, 40, true, capped);
  safer::expand_key(key, key, 13, true, thirteen);
  EXPECT_EQ(capped[0], 13);
  EXPECT_EQ(0, std::memcmp(capped, thirteen, sizeof capped));
}

}  // namespace
