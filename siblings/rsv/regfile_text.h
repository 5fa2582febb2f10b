// The text of .reg files: the store's names and data are byte strings
// (UTF-8 where they are text), the files are UTF-16 (or 8-bit text).
//
// Every byte string has a UTF-16 form that gives it back exactly. Well-formed
// UTF-8 sequences become their characters; every byte that is not part of
// one becomes the lone low surrogate U+DC00 + byte (U+DC80..U+DCFF, one
// unit per byte). Names use the same form for the bytes a .reg line cannot
// hold as they are (NUL, line feed, carriage return: U+DC00, U+DC0A,
// U+DC0D). Well-formed UTF-8 never holds a surrogate, so on the way back a
// lone U+DC00..U+DCFF is always that one byte; any other unpaired surrogate
// is malformed.
#ifndef KORUTL_SIBLINGS_RSV_REGFILE_TEXT_H
#define KORUTL_SIBLINGS_RSV_REGFILE_TEXT_H

#include <string>
#include <string_view>

namespace korutl::regfile {

// The unit that stands for byte b.
constexpr char16_t escaped_byte(unsigned char b) { return static_cast<char16_t>(0xDC00 + b); }

// Appends the UTF-16 form of `bytes`. With `name`, NUL, LF and CR are
// escaped as well.
void append_units(std::string_view bytes, bool name, std::u16string &out);

// Appends the bytes a UTF-16 text stands for. False on an unpaired
// surrogate other than U+DC00..U+DCFF.
bool append_bytes(std::u16string_view units, std::string &out);

// One line of an 8-bit or UTF-8 file as units, so that append_bytes gives
// its bytes back: ASCII as it is, every other byte escaped. With `utf8`,
// well-formed UTF-8 becomes its characters and the 3-byte forms of
// U+DC00..U+DCFF (as converters that keep lone surrogates write them) their
// units; without it (8-bit text) every byte stays a byte.
void line_units(std::string_view line, bool utf8, std::u16string &out);

}  // namespace korutl::regfile

#endif
