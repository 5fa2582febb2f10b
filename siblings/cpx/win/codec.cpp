// libkorcpx's converter on Windows: MultiByteToWideChar to UTF-16, then
// WideCharToMultiByte to the target, with the code page numbers as they
// are. 65456, the family's code set, is UTF-8; 1200 and 1201 (UTF-16LE and
// BE) are no "multi-byte" code pages and are read and written directly.
// Bytes that are no text in the source, and characters that the target
// cannot show (no best-fit substitutes, no default character), are invalid
// input, as with iconv.
#include <windows.h>

#include <climits>
#include <cstring>
#include <string>

#include "siblings/cpx/codec.h"

namespace korcpx {
namespace {

constexpr UINT kUtf16Le = 1200;
constexpr UINT kUtf16Be = 1201;

UINT code_page_of(int32_t number) {
  return number == CPX_CODESET_FAMILY ? CP_UTF8 : static_cast<UINT>(number);
}

void swap_bytes(std::wstring &text) {
  for (wchar_t &c : text) c = static_cast<wchar_t>(((c & 0xFF) << 8) | ((c >> 8) & 0xFF));
}

bool decode(UINT cp, const char *in, size_t length, std::wstring &wide) {
  if (length > INT_MAX) return false;
  if (cp == kUtf16Le || cp == kUtf16Be) {
    if (length % 2 != 0) return false;
    wide.resize(length / 2);
    std::memcpy(wide.data(), in, length);
    if (cp == kUtf16Be) swap_bytes(wide);
    return true;
  }
  if (length == 0) return true;
  const int n =
      MultiByteToWideChar(cp, MB_ERR_INVALID_CHARS, in, static_cast<int>(length), nullptr, 0);
  if (n <= 0) return false;
  wide.resize(static_cast<size_t>(n));
  return MultiByteToWideChar(cp, MB_ERR_INVALID_CHARS, in, static_cast<int>(length), wide.data(),
                             n) == n;
}

int32_t encode(UINT cp, std::wstring &wide, char *out, size_t capacity, size_t &written) {
  if (cp == kUtf16Le || cp == kUtf16Be) {
    const size_t bytes = wide.size() * 2;
    if (bytes > capacity) return CPX_E_TARGET_TOO_SMALL;
    if (cp == kUtf16Be) swap_bytes(wide);
    std::memcpy(out, wide.data(), bytes);
    written = bytes;
    return CPX_OK;
  }
  written = 0;
  if (wide.empty()) return CPX_OK;
  // UTF-8 refuses lone surrogates itself and takes no default character.
  const bool utf8 = cp == CP_UTF8;
  const DWORD flags = utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS;
  BOOL defaulted = FALSE;
  const int size = static_cast<int>(wide.size());
  const int n = WideCharToMultiByte(cp, flags, wide.data(), size, nullptr, 0, nullptr,
                                    utf8 ? nullptr : &defaulted);
  if (n <= 0 || defaulted) return CPX_E_INVALID_INPUT;
  if (static_cast<size_t>(n) > capacity) return CPX_E_TARGET_TOO_SMALL;
  if (WideCharToMultiByte(cp, flags, wide.data(), size, out, n, nullptr, nullptr) != n)
    return CPX_E_INVALID_INPUT;
  written = static_cast<size_t>(n);
  return CPX_OK;
}

class Win32Codec final : public Codec {
 public:
  Win32Codec(UINT from, UINT to) : from_(from), to_(to) {}
  int32_t convert(const char *in, size_t length, char *out, size_t capacity,
                  size_t &written) override {
    std::wstring wide;
    if (!decode(from_, in, length, wide)) return CPX_E_INVALID_INPUT;
    return encode(to_, wide, out, capacity, written);
  }

 private:
  UINT from_;
  UINT to_;
};

bool usable(int32_t number) {
  const UINT cp = code_page_of(number);
  return code_set(number) != nullptr && (cp == kUtf16Le || cp == kUtf16Be || IsValidCodePage(cp));
}

}  // namespace

std::unique_ptr<Codec> open_codec(int32_t from, int32_t to) {
  if (!usable(from) || !usable(to)) return nullptr;
  return std::make_unique<Win32Codec>(code_page_of(from), code_page_of(to));
}

int32_t local_codeset() {
  const auto acp = static_cast<int32_t>(GetACP());
  return code_set(acp) != nullptr ? acp : 0;
}

}  // namespace korcpx
