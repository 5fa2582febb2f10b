// The converter under libkorcpx: iconv on Linux (unix/codec.cpp), the
// Windows code-page functions on Windows (win/codec.cpp). cpx.cpp keeps
// the handles and the argument checks for both.
#ifndef KORUTL_SIBLINGS_CPX_CODEC_H
#define KORUTL_SIBLINGS_CPX_CODEC_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "siblings/cpx/cpx.h"

namespace korcpx {

// The code sets the library knows, with their iconv names. The first entry
// of a name wins when the local code set is looked up.
struct CodeSet {
  int32_t number;
  const char *iconv_name;
};
inline constexpr CodeSet kCodeSets[] = {
    {437, "CP437"},
    {850, "CP850"},
    {1200, "UTF-16LE"},
    {1201, "UTF-16BE"},
    {1250, "CP1250"},
    {1251, "CP1251"},
    {1252, "CP1252"},
    {20127, "ANSI_X3.4-1968"},
    {28591, "ISO-8859-1"},
    {28592, "ISO-8859-2"},
    {28605, "ISO-8859-15"},
    {65001, "UTF-8"},
    {CPX_CODESET_FAMILY, "UTF-8"},
};

// The entry of kCodeSets with that number, or null.
inline const CodeSet *code_set(int32_t number) {
  for (const CodeSet &c : kCodeSets) {
    if (c.number == number) return &c;
  }
  return nullptr;
}

// One open conversion from one code set to another.
class Codec {
 public:
  virtual ~Codec() = default;
  // Converts all of [in, in + length) into `out` of `capacity` bytes and
  // sets `written`. Returns CPX_OK, CPX_E_TARGET_TOO_SMALL or
  // CPX_E_INVALID_INPUT; never writes beyond `capacity`. A codec serves one
  // caller at a time.
  virtual int32_t convert(const char *in, size_t length, char *out, size_t capacity,
                          size_t &written) = 0;
};

// Null when either number is not in kCodeSets or the system cannot convert
// between them.
std::unique_ptr<Codec> open_codec(int32_t from, int32_t to);

// The number of the current locale's (Windows: the ANSI) code set, or 0.
int32_t local_codeset();

}  // namespace korcpx

#endif
