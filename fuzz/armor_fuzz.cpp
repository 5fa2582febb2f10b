// The korutl command's strict Base64 and hexadecimal text (tools/armor.h)
// on arbitrary text fed in two pieces: the pieces decide as the whole text
// does; an accepted text's bytes, encoded in pieces and wrapped, decode
// back to them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tools/armor.h"

using korutl_tool::Bytes;
using korutl_tool::TextForm;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 2) return 0;
  const TextForm form = data[0] & 1 ? TextForm::hex : TextForm::base64;
  const size_t wrap = data[0] >> 1, split = data[1] % (size - 1);
  const Bytes text(data + 2, data + size);
  std::string error;
  const auto whole = korutl_tool::unarmor_text(form, text, error);
  korutl_tool::TextDecoder decoder(form);
  Bytes pieces;
  const bool ok = decoder.feed(text.data(), split, pieces) &&
                  decoder.feed(text.data() + split, text.size() - split, pieces) &&
                  decoder.finish(pieces);
  if (ok != whole.has_value() || (ok && pieces != *whole)) std::abort();
  if (!ok) return 0;
  korutl_tool::TextEncoder encoder(form, wrap);
  std::string again = encoder.feed(pieces.data(), split % (pieces.size() + 1));
  again += encoder.feed(pieces.data() + split % (pieces.size() + 1),
                        pieces.size() - split % (pieces.size() + 1));
  again += encoder.finish();
  const auto back = korutl_tool::unarmor_text(form, Bytes(again.begin(), again.end()), error);
  if (!back || *back != pieces) std::abort();
  return 0;
}
