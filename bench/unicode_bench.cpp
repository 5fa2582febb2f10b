// UTF-8 to UTF-16 and back, and UTF-8 to UCS-4, on 1 MiB of ASCII and of
// mixed text, beside glibc iconv and (when found) ICU.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdint>
#include <string>
#include <vector>

#include "korutl.h"

#ifdef KORUTL_BENCH_HAVE_ICU
#include <unicode/ustring.h>
#endif

namespace {

constexpr size_t kTextBytes = 1 << 20;

// About 60 % ASCII, 30 % two-byte and 10 % three- and four-byte characters,
// mixed in short runs as real text is.
std::string make_text(bool ascii_only) {
  std::string text;
  uint32_t seed = 12345;
  while (text.size() < kTextBytes - 4) {
    seed = seed * 1103515245 + 12345;
    const unsigned pick = (seed >> 16) % 100;
    if (ascii_only || pick < 60) {
      text += static_cast<char>('a' + (seed >> 8) % 26);
    } else if (pick < 90) {
      text += "\xC3\xA9";
    } else if (pick < 96) {
      text += "\xE2\x82\xAC";
    } else {
      text += "\xF0\x9F\x98\x80";
    }
  }
  return text;
}

const std::string &text_for(int64_t mixed) {
  static const std::string ascii = make_text(true), mixed_text = make_text(false);
  return mixed != 0 ? mixed_text : ascii;
}

std::vector<uint16_t> utf16_of(const std::string &text) {
  std::vector<uint16_t> out(text.size());
  const auto *s = reinterpret_cast<const uint8_t *>(text.data());
  uint16_t *t = out.data();
  KORVOConvertUTF8toUTF16(&s, s + text.size(), &t, out.data() + out.size());
  out.resize(static_cast<size_t>(t - out.data()));
  return out;
}

void label(benchmark::State &state, size_t bytes) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
  state.SetLabel(state.range(0) != 0 ? "mixed" : "ascii");
}

void BM_Korutl_Utf8ToUtf16(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  std::vector<uint16_t> out(text.size());
  for (auto _ : state) {
    const auto *s = reinterpret_cast<const uint8_t *>(text.data());
    uint16_t *t = out.data();
    benchmark::DoNotOptimize(
        KORVOConvertUTF8toUTF16(&s, s + text.size(), &t, out.data() + out.size()));
  }
  label(state, text.size());
}

void BM_Korutl_Utf16ToUtf8(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  const std::vector<uint16_t> in = utf16_of(text);
  std::vector<uint8_t> out(text.size());
  for (auto _ : state) {
    const uint16_t *s = in.data();
    uint8_t *t = out.data();
    benchmark::DoNotOptimize(
        KORVOConvertUTF16toUTF8(&s, s + in.size(), &t, out.data() + out.size()));
  }
  label(state, text.size());
}

void BM_Korutl_Utf8ToUcs4(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  std::vector<uint32_t> out(text.size());
  for (auto _ : state) {
    const auto *s = reinterpret_cast<const uint8_t *>(text.data());
    uint32_t *t = out.data();
    benchmark::DoNotOptimize(
        KORVOConvertUTF8toUCS4(&s, s + text.size(), &t, out.data() + out.size()));
  }
  label(state, text.size());
}

void run_iconv(benchmark::State &state, const char *to, const char *from, const char *in,
               size_t in_bytes, size_t out_bytes) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) {
    state.SkipWithError("iconv_open failed");
    return;
  }
  std::vector<char> out(out_bytes);
  for (auto _ : state) {
    char *src = const_cast<char *>(in);
    size_t src_left = in_bytes;
    char *dst = out.data();
    size_t dst_left = out.size();
    benchmark::DoNotOptimize(iconv(cd, &src, &src_left, &dst, &dst_left));
  }
  iconv_close(cd);
}

void BM_Iconv_Utf8ToUtf16(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  run_iconv(state, "UTF-16LE", "UTF-8", text.data(), text.size(), text.size() * 2);
  label(state, text.size());
}

void BM_Iconv_Utf16ToUtf8(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  const std::vector<uint16_t> in = utf16_of(text);
  run_iconv(state, "UTF-8", "UTF-16LE", reinterpret_cast<const char *>(in.data()), in.size() * 2,
            text.size());
  label(state, text.size());
}

void BM_Iconv_Utf8ToUcs4(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  run_iconv(state, "UTF-32LE", "UTF-8", text.data(), text.size(), text.size() * 4);
  label(state, text.size());
}

BENCHMARK(BM_Korutl_Utf8ToUtf16)->Arg(0)->Arg(1);
BENCHMARK(BM_Iconv_Utf8ToUtf16)->Arg(0)->Arg(1);
BENCHMARK(BM_Korutl_Utf16ToUtf8)->Arg(0)->Arg(1);
BENCHMARK(BM_Iconv_Utf16ToUtf8)->Arg(0)->Arg(1);
BENCHMARK(BM_Korutl_Utf8ToUcs4)->Arg(0)->Arg(1);
BENCHMARK(BM_Iconv_Utf8ToUcs4)->Arg(0)->Arg(1);

#ifdef KORUTL_BENCH_HAVE_ICU
void BM_Icu_Utf8ToUtf16(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  std::vector<UChar> out(text.size());
  for (auto _ : state) {
    int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    benchmark::DoNotOptimize(u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()), &length,
                                           text.data(), static_cast<int32_t>(text.size()), &error));
  }
  label(state, text.size());
}

void BM_Icu_Utf16ToUtf8(benchmark::State &state) {
  const std::string &text = text_for(state.range(0));
  const std::vector<uint16_t> in = utf16_of(text);
  std::vector<UChar> units(in.begin(), in.end());
  std::vector<char> out(text.size());
  for (auto _ : state) {
    int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    benchmark::DoNotOptimize(u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &length,
                                         units.data(), static_cast<int32_t>(units.size()), &error));
  }
  label(state, text.size());
}

BENCHMARK(BM_Icu_Utf8ToUtf16)->Arg(0)->Arg(1);
BENCHMARK(BM_Icu_Utf16ToUtf8)->Arg(0)->Arg(1);
#endif

}  // namespace
