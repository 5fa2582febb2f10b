// KORVOSaferCrypt per call (key schedule included, as every call builds
// its own) against Crypto++'s SAFER in CBC mode with its key setup, on the
// same sizes. Crypto++ gets the zero-padded input plus one length block so
// that both encrypt the same number of blocks.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "korutl.h"

#ifdef KORUTL_BENCH_HAVE_CRYPTOPP
#include <cryptopp/modes.h>
#include <cryptopp/safer.h>
#endif

namespace {

// 8 characters select the 64-bit variants, 9 or more the 128-bit ones;
// Crypto++ gets the same characters as its key bytes.
constexpr const char *kKey64 = "korutl!!";
constexpr const char *kKey128 = "korutl!!safer128";

std::vector<uint8_t> sample(size_t n) {
  std::vector<uint8_t> v(n);
  for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>(i * 131 + 17);
  return v;
}

void BM_KorutlSaferEncrypt(benchmark::State &state, int32_t mode, const char *key) {
  const auto n = static_cast<size_t>(state.range(0));
  const std::vector<uint8_t> in = sample(n);
  std::vector<uint8_t> out(n + 16);
  uint32_t len = 0;
  for (auto _ : state) {
    KORVOSaferCrypt(mode, in.data(), static_cast<uint32_t>(n), out.data(), &len, key);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(n));
}

void BM_KorutlSaferDecrypt(benchmark::State &state, int32_t mode, const char *key) {
  const auto n = static_cast<size_t>(state.range(0));
  const std::vector<uint8_t> plain = sample(n);
  std::vector<uint8_t> sealed(n + 16);
  uint32_t sealed_len = 0;
  KORVOSaferCrypt(mode - 1, plain.data(), static_cast<uint32_t>(n), sealed.data(), &sealed_len,
                  key);
  std::vector<uint8_t> out(n + 16);
  uint32_t len = 0;
  for (auto _ : state) {
    KORVOSaferCrypt(mode, sealed.data(), sealed_len, out.data(), &len, key);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(n));
}

BENCHMARK_CAPTURE(BM_KorutlSaferEncrypt, K64_mode0, 0, kKey64)->Arg(64)->Arg(1024)->Arg(8000);
BENCHMARK_CAPTURE(BM_KorutlSaferEncrypt, SK64_mode2, 2, kKey64)->Arg(64)->Arg(1024)->Arg(8000);
BENCHMARK_CAPTURE(BM_KorutlSaferEncrypt, SK64_6rounds_mode6, 6, kKey64)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(8000);
BENCHMARK_CAPTURE(BM_KorutlSaferDecrypt, K64_mode1, 1, kKey64)->Arg(64)->Arg(1024)->Arg(8000);
BENCHMARK_CAPTURE(BM_KorutlSaferDecrypt, SK64_mode3, 3, kKey64)->Arg(64)->Arg(1024)->Arg(8000);
BENCHMARK_CAPTURE(BM_KorutlSaferEncrypt, K128_mode0, 0, kKey128)->Arg(64)->Arg(1024);
BENCHMARK_CAPTURE(BM_KorutlSaferEncrypt, SK128_mode2, 2, kKey128)->Arg(64)->Arg(1024);
BENCHMARK_CAPTURE(BM_KorutlSaferDecrypt, K128_mode1, 1, kKey128)->Arg(64)->Arg(1024);
BENCHMARK_CAPTURE(BM_KorutlSaferDecrypt, SK128_mode3, 3, kKey128)->Arg(64)->Arg(1024);

#ifdef KORUTL_BENCH_HAVE_CRYPTOPP
// `Mode` is a Crypto++ CBC encryption or decryption of SAFER-K or SAFER-SK;
// for 8-byte keys their default rounds (6 and 8) are those of modes 0 and 2,
// for 16-byte keys (10) those of every mode with a key text of 9 or more
// characters.
template <class Mode, size_t kKeyBytes>
void BM_CryptoppSaferCbc(benchmark::State &state) {
  const auto n = static_cast<size_t>(state.range(0));
  std::vector<uint8_t> in = sample(n);
  in.resize((n + 7) / 8 * 8 + 8, 0);
  std::vector<uint8_t> out(in.size());
  uint8_t key[kKeyBytes];
  std::memcpy(key, kKeyBytes == 8 ? kKey64 : kKey128, kKeyBytes);
  const uint8_t iv[8] = {};
  for (auto _ : state) {
    Mode cipher;
    cipher.SetKeyWithIV(key, sizeof key, iv, sizeof iv);
    cipher.ProcessData(out.data(), in.data(), in.size());
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(n));
}

using CryptoPP::CBC_Mode;
using CryptoPP::SAFER_K;
using CryptoPP::SAFER_SK;
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_K>::Encryption, 8)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(8000);
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_SK>::Encryption, 8)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(8000);
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_K>::Decryption, 8)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(8000);
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_SK>::Decryption, 8)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(8000);
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_K>::Encryption, 16)->Arg(64)->Arg(1024);
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_SK>::Encryption, 16)->Arg(64)->Arg(1024);
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_K>::Decryption, 16)->Arg(64)->Arg(1024);
BENCHMARK_TEMPLATE(BM_CryptoppSaferCbc, CBC_Mode<SAFER_SK>::Decryption, 16)->Arg(64)->Arg(1024);
#endif

}  // namespace
