// KORVOBase64Crypt against OpenSSL's EVP_EncodeBlock / EVP_DecodeBlock on
// 8 KiB and 1 MiB.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "korutl.h"

#ifdef KORUTL_BENCH_HAVE_LIBCRYPTO
#include <openssl/evp.h>
#endif

namespace {

std::vector<uint8_t> sample(size_t n) {
  std::vector<uint8_t> v(n);
  for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>(i * 131 + 17);
  return v;
}

std::string encoded(size_t n) {
  const auto in = sample(n);
  std::string text((n + 2) / 3 * 4 + 1, '\0');
  text.resize(
      static_cast<size_t>(KORVOBase64Crypt(1, in.data(), text.data(), static_cast<int32_t>(n))));
  return text;
}

void BM_KorutlBase64Encode(benchmark::State &state) {
  const auto n = static_cast<size_t>(state.range(0));
  const auto in = sample(n);
  std::vector<char> out((n + 2) / 3 * 4 + 1);
  for (auto _ : state)
    benchmark::DoNotOptimize(KORVOBase64Crypt(1, in.data(), out.data(), static_cast<int32_t>(n)));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(n));
}

void BM_KorutlBase64Decode(benchmark::State &state) {
  const std::string text = encoded(static_cast<size_t>(state.range(0)));
  std::vector<uint8_t> out(text.size() / 4 * 3 + 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        KORVOBase64Crypt(0, text.data(), out.data(), static_cast<int32_t>(text.size())));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

BENCHMARK(BM_KorutlBase64Encode)->Arg(8 << 10)->Arg(1 << 20);
BENCHMARK(BM_KorutlBase64Decode)->Arg(8 << 10)->Arg(1 << 20);

#ifdef KORUTL_BENCH_HAVE_LIBCRYPTO
void BM_OpensslEncodeBlock(benchmark::State &state) {
  const auto n = static_cast<size_t>(state.range(0));
  const auto in = sample(n);
  std::vector<unsigned char> out((n + 2) / 3 * 4 + 1);
  for (auto _ : state)
    benchmark::DoNotOptimize(EVP_EncodeBlock(out.data(), in.data(), static_cast<int>(n)));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(n));
}

void BM_OpensslDecodeBlock(benchmark::State &state) {
  const std::string text = encoded(static_cast<size_t>(state.range(0)));
  std::vector<unsigned char> out(text.size() / 4 * 3 + 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(EVP_DecodeBlock(out.data(),
                                             reinterpret_cast<const unsigned char *>(text.data()),
                                             static_cast<int>(text.size())));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

BENCHMARK(BM_OpensslEncodeBlock)->Arg(8 << 10)->Arg(1 << 20);
BENCHMARK(BM_OpensslDecodeBlock)->Arg(8 << 10)->Arg(1 << 20);
#endif

}  // namespace
