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

std::vector<uint8_t> from_hex(const std::string &hex) {
  std::vector<uint8_t> out;
  for (size_t i = 0; i + 1 < hex.size(); i += 2)
    out.push_back(static_cast<uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  return out;
}

TEST(SaferBlock, PublishedVectorsAndRoundsCappedAtThirteen) {
  std::ifstream in(KORUTL_TEST_DATA_DIR "/safer-published.txt");
  std::set<std::pair<size_t, bool>> variants;  // K-64, SK-64, K-128, SK-128 all seen
  int count = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string source, schedule, key_hex, plain, cipher;
    int rounds = 0;
    fields >> source >> schedule >> rounds >> key_hex >> plain >> cipher;
    const std::vector<uint8_t> key = from_hex(key_hex);
    ASSERT_TRUE(key.size() == 8 || key.size() == 16) << line;
    variants.emplace(key.size(), schedule == "SK");
    ++count;
    // A 64-bit key is key A and key B at once.
    safer::Schedule expanded;
    safer::expand_key(key.data(), key.data() + key.size() - 8, rounds, schedule == "SK", expanded);
    std::vector<uint8_t> block = from_hex(plain);
    ASSERT_EQ(block.size(), 8u) << line;
    safer::encrypt_block(block.data(), expanded);
    EXPECT_EQ(block, from_hex(cipher)) << line;
    safer::decrypt_block(block.data(), expanded);
    EXPECT_EQ(block, from_hex(plain)) << line;
  }
  EXPECT_GE(count, 200);
  EXPECT_EQ(variants.size(), 4u);
  // Round counts above 13 are cut to 13 instead of running off the schedule.
  const uint8_t key[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  safer::Schedule capped, thirteen;
  safer::expand_key(key, key, 40, true, capped);
  safer::expand_key(key, key, 13, true, thirteen);
  EXPECT_EQ(capped[0], 13);
  EXPECT_EQ(0, std::memcmp(capped, thirteen, sizeof capped));
}

}  // namespace
