// Text conversions. The Unicode forms by known answers: the values they
// give for surrogates, values beyond the target form and malformed input,
// and where they stop. That the decoders agree with each other, that
// converting in pieces through a small target gives what one call gives,
// and that UTF-7 round-trips, the fuzz targets check on any input
// (fuzz/utf8_decode_fuzz.cpp, utf16_decode_fuzz.cpp, utf7_fuzz.cpp).
// Code pages through libkorcpx and the internal-products record: real text
// both ways, refusals instead of overflow, the -1 handle, and start-up from
// the registry.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#endif

#include "korutl.h"
#include "siblings/cpx/cpx.h"
#include "siblings/oss/oss.h"
#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

// Runs one conversion over all of `in` into a target of `room` units.
template <typename To>
struct Converted {
  int32_t result;
  std::vector<To> out;
  size_t consumed;
  bool operator==(const Converted &) const = default;
};

template <typename From, typename To>
Converted<To> run(int32_t (*fn)(const From **, const From *, To **, To *),
                  const std::vector<From> &in, size_t room = 64) {
  std::vector<To> target(room + 1, To{0x5A});
  const From *s = in.data();
  To *t = target.data();
  const int32_t r = fn(&s, in.data() + in.size(), &t, target.data() + room);
  EXPECT_EQ(target[room], To{0x5A}) << "wrote past the target end";
  return {r, std::vector<To>(target.data(), t), static_cast<size_t>(s - in.data())};
}

using U8 = std::vector<uint8_t>;
using U16 = std::vector<uint16_t>;
using U32 = std::vector<uint32_t>;

struct Encoded {
  int32_t result;
  std::string text;
  size_t consumed;
  bool operator==(const Encoded &) const = default;
};

Encoded encode(const std::u16string &in, bool optional_direct, bool close, size_t room = 256) {
  std::vector<uint8_t> out(room + 1, 0xAA);
  const auto *src = reinterpret_cast<const uint16_t *>(in.data());
  uint8_t *dst = out.data();
  const int32_t r = KORVOConvertUCS2toUTF7(&src, src + in.size(), &dst, out.data() + room,
                                           optional_direct ? 1 : 0, close ? 1 : 0);
  EXPECT_EQ(out[room], 0xAA) << "wrote past the target end";
  return {r, std::string(out.data(), dst),
          static_cast<size_t>(src - reinterpret_cast<const uint16_t *>(in.data()))};
}

Converted<uint16_t> decode(const std::string &in, size_t room = 256) {
  return run(KORVOConvertUTF7toUCS2, std::vector<uint8_t>(in.begin(), in.end()), room);
}

U16 units(const std::u16string &s) { return U16(s.begin(), s.end()); }

// The converted text, or "<refused>" (the length then untouched).
std::string convert(int32_t handle, const std::string &in, intptr_t capacity = 16,
                    intptr_t flags = CPX_TERMINATE) {
  char out[24];
  std::memset(out, 'x', sizeof out);
  int32_t written = -7;
  const int32_t ok = KORVOCpxConversion(
      &handle, reinterpret_cast<intptr_t>(in.data()), static_cast<intptr_t>(in.size()),
      reinterpret_cast<intptr_t>(out), capacity, reinterpret_cast<intptr_t>(&written), flags);
  EXPECT_EQ(out[capacity], 'x') << "wrote past the capacity";
  if (ok == 0) return written == -7 ? "<refused>" : "<refused, length changed>";
  EXPECT_TRUE(flags != CPX_TERMINATE || out[written] == '\0');
  return std::string(out, static_cast<size_t>(written));
}

int32_t open(int32_t from, int32_t to) {
  int32_t h = -1;
  EXPECT_EQ(cpx_open_conversion(from, to, &h), CPX_OK);
  return h;
}

using Conversions = korutl_test::TempStore;

TEST_F(Conversions, UnicodeForms) {
  EXPECT_EQ(run(KORVOConvertUCS4toUTF16, U32{0x1F600}).out, (U16{0xD83D, 0xDE00}));
  // The UCS-4 encoder joins a pair given as two units; lone and reversed
  // surrogates pass through the UTF-16 decoders (through UTF-8 as well:
  // the decoders' agreement is the fuzz target's).
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0xD83D, 0xDE00}).out, (U8{0xF0, 0x9F, 0x98, 0x80}));
  EXPECT_EQ(run(KORVOConvertUTF16toUCS4, U16{0xDC00, 0xD800}).out, (U32{0xDC00, 0xD800}));
  // Values beyond the target form.
  EXPECT_EQ(run(KORVOConvertUCS4toUTF16, U32{0x110000}).out, U16{0xFFFD});
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0x110000}).out, (U8{0xF4, 0x90, 0x80, 0x80}));
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0x80000000}).out, (U8{0xEF, 0xBF, 0xBD}));
  EXPECT_EQ(run(KORVOConvertUCS4toUTF8, U32{0x7FFFFFFF}).out,
            (U8{0xFD, 0xBF, 0xBF, 0xBF, 0xBF, 0xBF}));
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xF4, 0x90, 0x80, 0x80}).out, U16{0xFFFD});
  EXPECT_EQ(run(KORVOConvertUTF8toUCS4, U8{0xFE, 0x80, 0x80, 0x80, 0x80, 0x80}).out, U32{0xFFFD});
  // Lenient UTF-8: stray continuation bytes and short sequences are read
  // as they come; a sum that wraps below the offset is past 0x7FFFFFFF.
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0x80}).out, U16{0x80});
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xC3, 0x41}).out, U16{0x81});
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xC0, 0x80}).out, U16{0});
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0xC0, 0x00}).out, U16{0xFFFD});
  // A cut sequence at the end of the source is left for the next call; a
  // character that does not fit the target is not begun.
  EXPECT_EQ(run(KORVOConvertUTF8toUTF16, U8{0x41, 0xE2, 0x82}),
            (Converted<uint16_t>{CONV_SOURCE_EXHAUSTED, {0x41}, 1}));
  EXPECT_EQ(run(KORVOConvertUCS4toUTF16, U32{0x1F600}, 1),
            (Converted<uint16_t>{CONV_TARGET_EXHAUSTED, {}, 0}));
  const std::tuple<const char16_t *, bool, bool, const char *> encoded[] = {
      {u"\u00e9", false, false, "+AOk"},    {u"\u00e9", false, true, "+AOk-"},
      {u"\u00e9a", false, false, "+AOk-a"}, {u"\u00e9 ", false, false, "+AOk "},
      {u"a+b", false, false, "a+-b"},       {u"~\\!", false, false, "+AH4AXAAh"},
      {u"~\\!", true, true, "+AH4AXA-!"}};
  for (const auto &[in, optional_direct, close, out] : encoded)
    EXPECT_EQ(encode(in, optional_direct, close).text, out);
}

TEST_F(Conversions, Utf7) {
  // Decoding goes on after malformed input and reports it at the end.
  const std::tuple<const char *, int32_t, const char16_t *> decoded[] = {
      {"+AOk x", CONV_OK, u"\u00e9 x"},
      {"~\\", CONV_OK, u"~\\"},  // not strict about what RFC 2152 would encode
      {"+AOl-", CONV_SOURCE_ILLEGAL, u"\u00e9"},
      {"+ x", CONV_SOURCE_ILLEGAL, u" x"},
      {"a\351b", CONV_SOURCE_ILLEGAL, u"a\uffe9b"},
      {"+A-ok", CONV_SOURCE_ILLEGAL, u"ok"}};
  for (const auto &[in, result, out] : decoded) {
    const auto d = decode(in);
    EXPECT_EQ(d.result, result) << in;
    EXPECT_EQ(d.out, units(out)) << in;
  }
  // The fuzz target sizes its targets for the worst case; here they run out.
  // Encoder: room for "a+" only; '-' of the plus sign does not fit.
  EXPECT_EQ(encode(u"a+b", false, false, 2), (Encoded{CONV_TARGET_EXHAUSTED, "a+", 2}));
  // Inside a run: "+AO" fits, the last sextet of U+00E9 does not; closing
  // the run needs room for the hyphen before 'a'.
  EXPECT_EQ(encode(u"\u00e9", false, false, 3).text, "+AO");
  EXPECT_EQ(encode(u"\u00e9a", false, false, 4).text, "+AOk");
  EXPECT_EQ(decode("abc", 2), (Converted<uint16_t>{CONV_TARGET_EXHAUSTED, units(u"ab"), 3}));
  // Exhaustion wins over an earlier malformed byte.
  EXPECT_EQ(decode("\xe9xyz", 2).result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(decode("+-", 0).result, CONV_TARGET_EXHAUSTED);
  EXPECT_EQ(KORVOConvertUCS2toUTF7(nullptr, nullptr, nullptr, nullptr, 0, 0), CONV_OK);
  EXPECT_EQ(KORVOConvertUTF7toUCS2(nullptr, nullptr, nullptr, nullptr), CONV_OK);
}

TEST_F(Conversions, CodePagesAndTheirStart) {
  // Start-up through the registry: the conversion objects' folder comes
  // from the "Cpx_Objects_Path" setting, and trace lines then reach stderr.
  const std::string folder = std::filesystem::temp_directory_path().string();
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Cpx_Objects_Path",
                             (folder + "/no-such-folder").c_str()),
            1);
  KORVOIntProdData *record = reinterpret_cast<KORVOIntProdData *>(&record);  // stale value
  EXPECT_EQ(KORVOInitInternalProducts(&record), 0);
  EXPECT_EQ(record, nullptr) << "a failed start leaves null";
  int32_t h = 0;
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED) << "ended again";
  // An existing folder starts it (so does an empty setting: the allocation
  // sweep's case).
  ASSERT_EQ(KORVOSaveSetting("Halcyra", "Global", "Cpx_Objects_Path", folder.c_str()), 1);
  ASSERT_EQ(KORVOInitInternalProducts(&record), 1);
  EXPECT_EQ(record->readyFlag1, 1);
  EXPECT_EQ(record->readyFlag2, 1);
  ::testing::internal::CaptureStderr();
  intptr_t handle = 0;
  oss_load_library("no-such-language.dll", &handle, "I18N/korstrng", 12);
  const std::string err = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(err.rfind("I18N/korstrng:12: oss_load_library: ", 0), 0u) << err;
  KORVOCleanupInternalProducts(record);
  EXPECT_EQ(KORVOInitInternalProducts(nullptr), 0);
  oss_set_trace_func(nullptr, "test", __LINE__);
  rsv_set_trace_func(nullptr, "test", __LINE__);
  ASSERT_EQ(cpx_init(), CPX_OK);
  const std::string cp1252 = "Gr\374\337e \200", utf8 = "Gr\303\274\303\237e \342\202\254";
  EXPECT_EQ(convert(open(1252, 65456), cp1252), utf8);
  const int32_t from_utf8 = open(65456, 1252);
  EXPECT_EQ(convert(from_utf8, utf8), cp1252);
  EXPECT_EQ(convert(from_utf8, "\xC3"), "<refused>") << "cut sequence";
  EXPECT_EQ(convert(from_utf8, "\xFF\xFE"), "<refused>") << "no UTF-8";
  const int32_t to_utf8 = open(1252, 65001);
  EXPECT_EQ(convert(to_utf8, "\xFC\xFC\xFC", 6), "<refused>") << "no room for the terminator";
  EXPECT_EQ(convert(to_utf8, "\xFC\xFC\xFC", 6, 0), "\xC3\xBC\xC3\xBC\xC3\xBC");
  int32_t never = 5;
  EXPECT_EQ(cpx_open_conversion(1252, 4242, &never), CPX_E_UNKNOWN_CODESET);
  int32_t dead = -1;
  EXPECT_EQ(KORVOCpxConversion(&dead, 1, 1, 1, 1, 0, 0), 0) << "-1 converts nothing";
  EXPECT_EQ(KORVOCpxConversion(nullptr, 1, 1, 1, 1, 0, 0), 0);
  cpx_term();
  // The record converts between UTF-8 and the local code set: on Windows
  // the ANSI code page, whatever the C locale (1252 under an English
  // system); on Linux that of the locale, US-ASCII (20127) for "C".
#if defined(_WIN32)
  if (GetACP() != 1252) GTEST_SKIP() << "expectations are for code page 1252, this is " << GetACP();
  const char *local = "\xFC";
#else
  setenv("LC_ALL", "C", 1);
  std::setlocale(LC_ALL, "");
  const char *local = "<refused>";  // u-umlaut has no ASCII form
#endif
  ASSERT_EQ(cpx_init(), CPX_OK);
  KORVOIntProdData *fresh = KORVOCreateIntProdData();
  ASSERT_NE(fresh, nullptr);
  EXPECT_EQ(fresh->readyFlag1, 0);
  EXPECT_EQ(convert(*fresh->cpxToLocal, "\xC3\xBC"), local);
  EXPECT_EQ(convert(*fresh->cpxToLocal, "\xE4\xB8\xAD"), "<refused>")
      << "no form, and no best-fit stand-in either";
  EXPECT_EQ(convert(*fresh->cpxFromLocal, "plain"), "plain");
  KORVODestroyIntProdData(fresh);
  KORVODestroyIntProdData(nullptr);
  cpx_term();
  std::setlocale(LC_ALL, "C");
  unsetenv("LC_ALL");
  // Cleanup ends the library even without a record.
  ASSERT_EQ(cpx_init(), CPX_OK);
  KORVOCleanupInternalProducts(nullptr);
  EXPECT_EQ(cpx_open_conversion(1252, 65456, &h), CPX_E_NOT_STARTED);
}

}  // namespace
