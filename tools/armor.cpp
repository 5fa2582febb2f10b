#include "tools/armor.h"

#include <algorithm>
#include <cstdio>

#include "korutl.h"

namespace korutl_tool {

namespace {

// Bytes encoded per library call: a multiple of 3, so that only the last
// call of a stream pads.
constexpr size_t kEncodeBatch = 3 * 16384;
// Accepted characters decoded per library call.
constexpr size_t kDecodeBatch = 4 * 16384;

bool is_blank(uint8_t c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

bool is_base64(uint8_t c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
         c == '/';
}

bool is_hex(uint8_t c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

}  // namespace

void TextEncoder::append_wrapped(const char *text, size_t n, std::string &out) {
  if (wrap_ == 0) {
    out.append(text, n);
    return;
  }
  while (n > 0) {
    const size_t room = std::min(n, wrap_ - column_);
    out.append(text, room);
    text += room, n -= room, column_ += room;
    if (column_ == wrap_) {
      out += '\n';
      column_ = 0;
    }
  }
}

std::string TextEncoder::feed(const uint8_t *data, size_t n) {
  std::string out;
  std::string text;
  held_.insert(held_.end(), data, data + n);
  const size_t whole = form_ == TextForm::base64 ? held_.size() / 3 * 3 : held_.size();
  for (size_t at = 0; at < whole;) {
    const auto len = static_cast<int32_t>(std::min(kEncodeBatch, whole - at));
    if (form_ == TextForm::base64) {
      text.resize(static_cast<size_t>(len) / 3 * 4 + 1);
      text.resize(static_cast<size_t>(
          KORVOBase64Crypt(KORVO_BASE64_ENCODE, held_.data() + at, text.data(), len)));
    } else {
      text.resize(static_cast<size_t>(len) * 2 + 1);
      uint32_t written = 0;
      KORVOCSPrepareBinaryBuffer(KORVO_BINARY_TO_HEX, held_.data() + at, len, text.data(),
                                 &written);
      text.resize(written);
    }
    append_wrapped(text.data(), text.size(), out);
    at += static_cast<size_t>(len);
  }
  held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(whole));
  return out;
}

std::string TextEncoder::finish() {
  std::string out;
  if (!held_.empty()) {  // one to two Base64 bytes: a padded group
    char group[5];
    const auto len = static_cast<int32_t>(held_.size());
    append_wrapped(
        group, static_cast<size_t>(KORVOBase64Crypt(KORVO_BASE64_ENCODE, held_.data(), group, len)),
        out);
    held_.clear();
  }
  if (column_ > 0 || wrap_ == 0) out += '\n';
  column_ = 0;
  return out;
}

bool TextDecoder::take(uint8_t c, size_t offset) {
  char what[96];
  if (form_ == TextForm::hex) {
    if (is_hex(c)) return clean_ += static_cast<char>(c), true;
    std::snprintf(what, sizeof what, "not a hexadecimal digit: byte 0x%02X at offset %zu", c,
                  offset);
  } else if (ended_) {
    std::snprintf(what, sizeof what, "text after the Base64 padding at offset %zu", offset);
  } else if (c == '=' && clean_.size() % 4 >= 2) {
    ++pads_;
    clean_ += '=';
    ended_ = clean_.size() % 4 == 0;
    return true;
  } else if (c == '=') {
    std::snprintf(what, sizeof what, "misplaced Base64 padding at offset %zu", offset);
  } else if (is_base64(c) && pads_ == 0) {
    return clean_ += static_cast<char>(c), true;
  } else if (is_base64(c)) {
    std::snprintf(what, sizeof what, "text after the Base64 padding at offset %zu", offset);
  } else {
    std::snprintf(what, sizeof what, "not a Base64 character: byte 0x%02X at offset %zu", c,
                  offset);
  }
  error_ = what;
  return false;
}

void TextDecoder::decode_whole_groups(Bytes &out, bool last) {
  const size_t unit = form_ == TextForm::base64 ? 4 : 2;
  const size_t whole = clean_.size() / unit * unit;
  if (whole == 0 || (!last && whole < kDecodeBatch)) return;
  const size_t start = out.size();
  const auto len = static_cast<int32_t>(whole);
  if (form_ == TextForm::base64) {
    out.resize(start + whole / 4 * 3 + 1);
    out.resize(start + static_cast<size_t>(KORVOBase64Crypt(KORVO_BASE64_DECODE, clean_.data(),
                                                            out.data() + start, len)));
    // The library decodes each pad as a zero byte; they are not data.
    if (ended_ && whole == clean_.size()) out.resize(out.size() - pads_);
  } else {
    out.resize(start + whole / 2 + 1);
    uint32_t written = 0;
    KORVOCSPrepareBinaryBuffer(KORVO_HEX_TO_BINARY, clean_.data(), len, out.data() + start,
                               &written);
    out.resize(start + written);
  }
  clean_.erase(0, whole);
}

bool TextDecoder::feed(const uint8_t *text, size_t n, Bytes &out) {
  if (!error_.empty()) return false;
  for (size_t i = 0; i < n; ++i) {
    if (is_blank(text[i])) continue;
    if (!take(text[i], static_cast<size_t>(offset_ + i))) return false;
    if (clean_.size() >= kDecodeBatch) decode_whole_groups(out, false);
  }
  offset_ += n;
  decode_whole_groups(out, false);
  return true;
}

bool TextDecoder::finish(Bytes &out) {
  if (!error_.empty()) return false;
  decode_whole_groups(out, true);
  if (!clean_.empty()) {
    error_ = form_ == TextForm::hex ? "an odd number of hexadecimal digits"
                                    : "the Base64 text ends inside a group (padding missing)";
    return false;
  }
  return true;
}

std::string armor_text(TextForm form, const Bytes &data) {
  TextEncoder encoder(form);
  std::string text = encoder.feed(data.data(), data.size());
  return text + encoder.finish();
}

std::optional<Bytes> unarmor_text(TextForm form, const Bytes &text, std::string &error) {
  TextDecoder decoder(form);
  Bytes out;
  if (decoder.feed(text.data(), text.size(), out) && decoder.finish(out)) return out;
  error = decoder.error();
  return std::nullopt;
}

}  // namespace korutl_tool
