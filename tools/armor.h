// Text forms of binary data for the korutl command -- Base64 and
// hexadecimal -- on the library's own Base64 and hexadecimal functions,
// fed in pieces so that a stream of any size takes constant memory. Shared
// by `encode`, `crypt --armor` and `demo`.
//
// The library's decoders read every character, taking what is not of the
// form as 0; the command is stricter: blanks and line breaks are skipped,
// any other character, misplaced padding, or text ending inside a Base64
// group or a hexadecimal pair is refused. Padding is required (a Base64
// text's length is a multiple of four once blanks are left out); the unused
// bits of a padded group are not checked.
#ifndef KORUTL_TOOLS_ARMOR_H
#define KORUTL_TOOLS_ARMOR_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korutl_tool {

using Bytes = std::vector<uint8_t>;

enum class TextForm { base64, hex };

// Bytes to text, piece by piece.
class TextEncoder {
 public:
  // `wrap` > 0 ends a line after every `wrap` characters.
  explicit TextEncoder(TextForm form, size_t wrap = 0) : form_(form), wrap_(wrap) {}
  // The text of `n` more bytes, as far as it is known: Base64 keeps up to
  // two bytes back until the next piece or finish().
  std::string feed(const uint8_t *data, size_t n);
  // The text of the bytes held back and a final line break.
  std::string finish();

 private:
  void append_wrapped(const char *text, size_t n, std::string &out);
  TextForm form_;
  size_t wrap_;
  size_t column_ = 0;
  Bytes held_;
};

// Text to bytes, piece by piece.
class TextDecoder {
 public:
  explicit TextDecoder(TextForm form) : form_(form) {}
  // Appends the bytes of `n` more characters to `out` (possibly fewer: the
  // characters of an unfinished group wait). False once the text is found
  // bad; error() then says why.
  bool feed(const uint8_t *text, size_t n, Bytes &out);
  // Appends the last bytes; false when the text ends inside a group.
  bool finish(Bytes &out);
  const std::string &error() const { return error_; }

 private:
  bool take(uint8_t c, size_t offset);
  void decode_whole_groups(Bytes &out, bool last);
  TextForm form_;
  std::string clean_;  // accepted characters not decoded yet
  uint64_t offset_ = 0;
  size_t pads_ = 0;
  bool ended_ = false;  // a padded group ended the Base64 text
  std::string error_;
};

// A whole buffer as text, with a final line break.
std::string armor_text(TextForm form, const Bytes &data);

// A whole text as bytes; nothing, with the reason in `error`, when it is bad.
std::optional<Bytes> unarmor_text(TextForm form, const Bytes &text, std::string &error);

}  // namespace korutl_tool

#endif
