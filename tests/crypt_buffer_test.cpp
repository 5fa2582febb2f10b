// The buffer front end, the XOR scrambler, Base64 and the binary-to-text
// preparation through the exported interface.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "korutl.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes bytes_of(const std::string &s) { return Bytes(s.begin(), s.end()); }

TEST(ObxCrypt, KeystreamAndInverse) {
  // Empty key: the keystream is 0, 7, 21, 42, 70, so zero bytes show it.
  uint8_t zeros[5] = {};
  KORVOObxCrypt(1, nullptr, 0, zeros, 5);
  EXPECT_EQ(Bytes(zeros, zeros + 5), (Bytes{0, 7, 21, 42, 70}));

  // Key checksum 1*'a' + 2*'b' = 97 + 196 = 293 = 37 mod 256.
  const uint8_t key[] = {'a', 'b'};
  uint8_t one = 0;
  KORVOObxCrypt(2, key, 2, &one, 1);
  EXPECT_EQ(one, 37);

  Bytes buf(300);
  for (size_t i = 0; i < buf.size(); ++i) buf[i] = static_cast<uint8_t>(i);
  const Bytes original = buf;
  KORVOObxCrypt(1, key, 2, buf.data(), 300);
  EXPECT_NE(buf, original);
  KORVOObxCrypt(2, key, 2, buf.data(), 300);
  EXPECT_EQ(buf, original);

  KORVOObxCrypt(1, key, 2, buf.data(), 0);
  KORVOObxCrypt(1, key, 2, buf.data(), -4);
  EXPECT_EQ(buf, original);
}

TEST(Base64, EncodeTable) {
  struct Case {
    std::string in, out;
  } cases[] = {
      {"f", "Zg=="},        {"fo", "Zm8="},         {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="}, {"foobar", "Zm9vYmFy"}, {std::string("\xff\xfe\x00", 3), "//4A"},
  };
  for (const Case &c : cases) {
    char out[32];
    std::memset(out, 'X', sizeof out);
    EXPECT_EQ(KORVOBase64Crypt(1, c.in.data(), out, static_cast<int32_t>(c.in.size())),
              static_cast<int32_t>(c.out.size()));
    EXPECT_STREQ(out, c.out.c_str());
  }
  // No line breaks, however long.
  const std::string long_in(3000, 'x');
  std::vector<char> out(4001);
  EXPECT_EQ(KORVOBase64Crypt(1, long_in.data(), out.data(), 3000), 4000);
  EXPECT_EQ(std::strchr(out.data(), '\n'), nullptr);
}

TEST(Base64, DecodeIsLenient) {
  struct Case {
    std::string in;
    int32_t count;
    Bytes out;
  } cases[] = {
      {"Zm9v", 3, bytes_of("foo")},
      {"Zg==", 3, {'f', 0, 0}},        // padding decodes as zero bytes, counted
      {"Zm9vYg", 3, bytes_of("foo")},  // beyond the last whole group: ignored
      {"Zm", 0, {}},
      {"Z m9", 3, {0x64, 0x09, 0xBD}},  // a blank is the value 0, not skipped
      {"\xe9\xe9\xe9\xe9", 3, {0, 0, 0}},
  };
  for (const Case &c : cases) {
    uint8_t out[16];
    std::memset(out, 0xAA, sizeof out);
    ASSERT_EQ(KORVOBase64Crypt(0, c.in.data(), out, static_cast<int32_t>(c.in.size())), c.count)
        << c.in;
    EXPECT_EQ(Bytes(out, out + c.count), c.out) << c.in;
    EXPECT_EQ(out[c.count], 0) << c.in;
    EXPECT_EQ(out[c.count + 1], 0xAA) << c.in;
  }
  // Length 0 (or negative) writes nothing at all, in both directions.
  uint8_t out[4] = {0xAA, 0xAA, 0xAA, 0xAA};
  EXPECT_EQ(KORVOBase64Crypt(1, "abc", out, 0), 0);
  EXPECT_EQ(KORVOBase64Crypt(0, "abcd", out, 0), 0);
  EXPECT_EQ(KORVOBase64Crypt(0, "abcd", out, -8), 0);
  EXPECT_EQ(Bytes(out, out + 4), Bytes(4, 0xAA));
}

struct FrontEnd {
  Bytes out;
  uint32_t len;
};

FrontEnd front_end(bool protect, int32_t method, const Bytes &in, const char *key) {
  FrontEnd r{Bytes(in.size() + 32, 0xAA), 0xDEADBEEF};
  (protect ? KORVOCSCryptBuffer : KORVOCSDecryptBuffer)(
      method, in.data(), static_cast<uint32_t>(in.size()), r.out.data(), &r.len, key);
  return r;
}

TEST(CryptBuffer, ScramblerLosesBytesAfterZero) {
  const Bytes in = {'a', 'b', 0, 'c', 'd'};
  const FrontEnd prot = front_end(true, 1, in, "key");
  ASSERT_EQ(prot.len, 5u);
  EXPECT_EQ(prot.out[5], 0);  // terminator at the input length
  // The scrambled form of "ab\0\0\0" is what the restore sees; it gives
  // "ab" followed by zeros, unless the scrambling produced a zero byte.
  Bytes scrambled(prot.out.begin(), prot.out.begin() + 5);
  const FrontEnd back = front_end(false, 1, scrambled, "key");
  EXPECT_EQ(back.len, 5u);
  EXPECT_EQ(Bytes(back.out.begin(), back.out.begin() + 6), (Bytes{'a', 'b', 0, 0, 0, 0}));
}

TEST(CryptBuffer, MethodsRoundTrip) {
  const Bytes text = bytes_of("Halcyra protected value");
  for (const int32_t method : {1, 2}) {
    const FrontEnd prot = front_end(true, method, text, "secret key");
    Bytes sealed(prot.out.begin(), prot.out.begin() + prot.len);
    const FrontEnd back = front_end(false, method, sealed, "secret key");
    ASSERT_EQ(back.len, text.size()) << "method " << method;
    EXPECT_EQ(Bytes(back.out.begin(), back.out.begin() + back.len), text) << "method " << method;
  }
  // Method 2 is SAFER mode 6.
  const FrontEnd prot = front_end(true, 2, text, "k");
  Bytes direct(text.size() + 16);
  uint32_t direct_len = 0;
  ASSERT_EQ(KORVOSaferCrypt(6, text.data(), static_cast<uint32_t>(text.size()), direct.data(),
                            &direct_len, "k"),
            1);
  EXPECT_EQ(prot.len, direct_len);
  EXPECT_EQ(Bytes(prot.out.begin(), prot.out.begin() + prot.len),
            Bytes(direct.begin(), direct.begin() + direct_len));

  // Copy methods stop at a zero byte and zero-fill; no terminator added.
  for (const int32_t method : {0, 3, -7}) {
    const FrontEnd copy = front_end(true, method, {'x', 'y', 0, 'z'}, "k");
    EXPECT_EQ(copy.len, 4u);
    EXPECT_EQ(Bytes(copy.out.begin(), copy.out.begin() + 5), (Bytes{'x', 'y', 0, 0, 0xAA}));
  }
}

TEST(CryptBuffer, FailuresGiveEmptyOutput) {
  struct Case {
    const char *what;
    bool protect;
    int32_t method;
    Bytes in;
    const char *key;
  } cases[] = {
      {"SAFER restore of a malformed ciphertext", false, 2, Bytes(13, 1), "k"},
      {"SAFER with an invalid key text", true, 2, Bytes(4, 1), "bad\tkey"},
      {"scrambler beyond its 2,048-byte area", true, 1, Bytes(2049, 'a'), "k"},
      {"scrambler without a key", true, 1, Bytes(4, 'a'), nullptr},
  };
  for (const Case &c : cases) {
    const FrontEnd r = front_end(c.protect, c.method, c.in, c.key);
    EXPECT_EQ(r.len, 0u) << c.what;
    EXPECT_EQ(r.out[0], 0) << c.what;
  }
  // A wrong key is caught when the length checks fail: either empty, or
  // some bytes come back, never more than the ciphertext can hold.
  const Bytes text = bytes_of("0123456789");
  const FrontEnd prot = front_end(true, 2, text, "right key");
  const FrontEnd wrong =
      front_end(false, 2, Bytes(prot.out.begin(), prot.out.begin() + prot.len), "wrong key");
  EXPECT_TRUE(wrong.len == 0 ? wrong.out[0] == 0 : wrong.len <= prot.len - 8);
  // 2,048 bytes still fit the scrambler's area.
  EXPECT_EQ(front_end(true, 1, Bytes(2048, 'a'), "k").len, 2048u);
}

struct Prepared {
  std::string out;
  uint32_t len;
  bool touched;
};

Prepared prepare(int32_t mode, const std::string &in) {
  std::vector<char> out(8192, 'Q');
  uint32_t len = 0xDEADBEEF;
  KORVOCSPrepareBinaryBuffer(mode, in.data(), static_cast<int32_t>(in.size()), out.data(), &len);
  if (len == 0xDEADBEEF) return {"", len, out[0] != 'Q'};
  EXPECT_EQ(out[len], 0) << "terminator, mode " << mode;
  return {std::string(out.data(), len), len, true};
}

TEST(PrepareBinaryBuffer, Table) {
  struct Case {
    int32_t mode;
    std::string in, out;
  } cases[] = {
      {1, "abc", "A2FiYw=="},
      {1, "", "AA=="},
      {-1, "A2FiYw==", "abc"},
      {-1, "AA==", ""},
      {-1, "A2Fi", ""},  // announces 3 bytes, holds 2
      {-1, "", ""},
      {2, std::string("\x00\x7f\x80\xff", 4), "007F80FF"},
      {-2, "007f80FFa", std::string("\x00\x7f\x80\xff\xa0", 5)},
      {-2, "zz", std::string(1, '\0')},
      {-2, "", ""},
  };
  for (const Case &c : cases) {
    const Prepared p = prepare(c.mode, c.in);
    EXPECT_EQ(p.out, c.out) << "mode " << c.mode << " '" << c.in << "'";
  }
}

TEST(PrepareBinaryBuffer, Limits) {
  EXPECT_EQ(prepare(1, std::string(255, 'x')).len, 344u);
  const Prepared too_long = prepare(1, std::string(256, 'x'));
  EXPECT_EQ(too_long.len, 0u);
  EXPECT_EQ(too_long.out, "");

  // The longest prefixed payload round-trips; a text beyond the decode
  // work area is refused rather than overflowing it.
  const std::string payload(255, '\x9c');
  const Prepared text = prepare(1, payload);
  EXPECT_EQ(prepare(-1, text.out).out, payload);
  EXPECT_EQ(prepare(-1, text.out + std::string(2735 - text.out.size(), 'A')).out, payload);
  EXPECT_EQ(prepare(-1, text.out + std::string(2736 - text.out.size(), 'A')).len, 0u);

  for (const int32_t mode : {0, 3, -3, 1000}) {
    const Prepared p = prepare(mode, "abc");
    EXPECT_EQ(p.len, 0xDEADBEEF) << mode;
    EXPECT_FALSE(p.touched) << mode;
  }
  std::vector<char> out(8, 'Q');
  uint32_t len = 7;
  KORVOCSPrepareBinaryBuffer(2, "ab", -1, out.data(), &len);
  EXPECT_EQ(len, 0u);
  EXPECT_EQ(out[0], 0);
}

}  // namespace
