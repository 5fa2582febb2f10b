// UTF-7 encoding and decoding of 1 MiB of mixed text (ASCII, Latin
// accents, CJK, plus signs) against glibc iconv's UTF-7 converter.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <string>
#include <vector>

#include "korutl.h"

namespace {

std::vector<uint16_t> mixed_units() {
  const std::u16string piece =
      u"Halcyra agent 42: Gr\u00fc\u00dfe, \u65e5\u672c\u8a9e + caf\u00e9 (ok) ~ done.\r\n";
  std::vector<uint16_t> units;
  while (units.size() * 2 < (1u << 20)) units.insert(units.end(), piece.begin(), piece.end());
  return units;
}

std::vector<uint8_t> as_utf7(const std::vector<uint16_t> &units) {
  std::vector<uint8_t> text(units.size() * 5);
  const uint16_t *src = units.data();
  uint8_t *dst = text.data();
  KORVOConvertUCS2toUTF7(&src, units.data() + units.size(), &dst, text.data() + text.size(), 0, 0);
  text.resize(static_cast<size_t>(dst - text.data()));
  return text;
}

void BM_KorutlUtf7Encode(benchmark::State &state) {
  const auto units = mixed_units();
  std::vector<uint8_t> out(units.size() * 5);
  for (auto _ : state) {
    const uint16_t *src = units.data();
    uint8_t *dst = out.data();
    benchmark::DoNotOptimize(KORVOConvertUCS2toUTF7(&src, units.data() + units.size(), &dst,
                                                    out.data() + out.size(), 0, 0));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(units.size() * 2));
}

void BM_KorutlUtf7Decode(benchmark::State &state) {
  const auto units = mixed_units();
  const auto text = as_utf7(units);
  std::vector<uint16_t> out(text.size());
  for (auto _ : state) {
    const uint8_t *src = text.data();
    uint16_t *dst = out.data();
    benchmark::DoNotOptimize(
        KORVOConvertUTF7toUCS2(&src, text.data() + text.size(), &dst, out.data() + out.size()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(units.size() * 2));
}

// One conversion descriptor for the whole run, reset before each pass.
void run_iconv(benchmark::State &state, const char *to, const char *from, const char *in,
               size_t in_size, size_t out_size, int64_t bytes) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) {
    state.SkipWithError("iconv_open failed");
    return;
  }
  std::vector<char> out(out_size);
  for (auto _ : state) {
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
    char *src = const_cast<char *>(in);
    size_t src_left = in_size;
    char *dst = out.data();
    size_t dst_left = out.size();
    benchmark::DoNotOptimize(iconv(cd, &src, &src_left, &dst, &dst_left));
  }
  iconv_close(cd);
  state.SetBytesProcessed(state.iterations() * bytes);
}

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr const char *kHostUtf16 = "UTF-16LE";
#else
constexpr const char *kHostUtf16 = "UTF-16BE";
#endif

void BM_IconvUtf7Encode(benchmark::State &state) {
  const auto units = mixed_units();
  run_iconv(state, "UTF-7", kHostUtf16, reinterpret_cast<const char *>(units.data()),
            units.size() * 2, units.size() * 5, static_cast<int64_t>(units.size() * 2));
}

void BM_IconvUtf7Decode(benchmark::State &state) {
  const auto units = mixed_units();
  const auto text = as_utf7(units);
  run_iconv(state, kHostUtf16, "UTF-7", reinterpret_cast<const char *>(text.data()), text.size(),
            text.size() * 2, static_cast<int64_t>(units.size() * 2));
}

BENCHMARK(BM_KorutlUtf7Encode);
BENCHMARK(BM_KorutlUtf7Decode);
BENCHMARK(BM_IconvUtf7Encode);
BENCHMARK(BM_IconvUtf7Decode);

}  // namespace
