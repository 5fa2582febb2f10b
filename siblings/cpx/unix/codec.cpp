// libkorcpx's converter on iconv. A descriptor keeps shift state, so each
// conversion starts from the initial state and flushes a closing sequence.
#include <iconv.h>
#include <langinfo.h>
#include <strings.h>

#include <cerrno>

#include "siblings/cpx/codec.h"

namespace korcpx {
namespace {

class IconvCodec final : public Codec {
 public:
  explicit IconvCodec(iconv_t cd) : cd_(cd) {}
  ~IconvCodec() override { iconv_close(cd_); }
  int32_t convert(const char *in, size_t length, char *out, size_t capacity,
                  size_t &written) override {
    char *from = const_cast<char *>(in);
    char *to = out;
    size_t out_left = capacity;
    iconv(cd_, nullptr, nullptr, nullptr, nullptr);  // a fresh shift state per text
    if (iconv(cd_, &from, &length, &to, &out_left) == static_cast<size_t>(-1))
      return errno == E2BIG ? CPX_E_TARGET_TOO_SMALL : CPX_E_INVALID_INPUT;
    if (iconv(cd_, nullptr, nullptr, &to, &out_left) == static_cast<size_t>(-1))
      return CPX_E_TARGET_TOO_SMALL;
    written = static_cast<size_t>(to - out);
    return CPX_OK;
  }

 private:
  iconv_t cd_;
};

}  // namespace

std::unique_ptr<Codec> open_codec(int32_t from, int32_t to) {
  const CodeSet *source = code_set(from);
  const CodeSet *target = code_set(to);
  if (source == nullptr || target == nullptr) return nullptr;
  iconv_t cd = iconv_open(target->iconv_name, source->iconv_name);
  if (cd == reinterpret_cast<iconv_t>(-1)) return nullptr;
  // The descriptor is closed again if its owner cannot be allocated.
  try {
    return std::make_unique<IconvCodec>(cd);
  } catch (...) {
    iconv_close(cd);
    throw;
  }
}

int32_t local_codeset() {
  const char *name = nl_langinfo(CODESET);
  if (name == nullptr) return 0;
  for (const CodeSet &c : kCodeSets) {
    if (strcasecmp(c.iconv_name, name) == 0) return c.number;
  }
  return 0;
}

}  // namespace korcpx
