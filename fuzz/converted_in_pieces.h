// Runs one of the Unicode conversions over a whole source, through a target
// of `room` units, calling again after each CONV_TARGET_EXHAUSTED as a
// caller with a small buffer would. Gives the output, the last result and
// how many source units were consumed; aborts if a call moves the target
// pointer outside the target.
#ifndef KORUTL_FUZZ_CONVERTED_IN_PIECES_H
#define KORUTL_FUZZ_CONVERTED_IN_PIECES_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "korutl.h"

template <typename From, typename To>
std::vector<To> converted_in_pieces(int32_t (*fn)(const From **, const From *, To **, To *),
                                    const From *data, size_t size, size_t room, int32_t &result,
                                    size_t &consumed) {
  std::vector<To> out;
  std::vector<To> target(room);
  const From *s = data;
  do {
    To *t = target.data();
    result = fn(&s, data + size, &t, target.data() + room);
    if (t < target.data() || t > target.data() + room) std::abort();
    out.insert(out.end(), target.data(), t);
  } while (result == CONV_TARGET_EXHAUSTED);
  consumed = static_cast<size_t>(s - data);
  return out;
}

#endif
