// Demo step: a buffer protected with SAFER, armoured in Base64, restored.
#include <string>

#include "korutl.h"
#include "tools/armor.h"
#include "tools/unix/demo.h"

namespace korutl_tool::demo {

namespace {

void protect_restore(Context &c) {
  const std::string secret = "Install_Path=/opt/vantrel/halcyra";
  const char *key = "demo key 2026";  // 13 characters: the 128-bit variant
  Bytes sealed(secret.size() + 16);
  uint32_t sealed_len = 0;
  KORVOCSCryptBuffer(KORVO_CRYPT_SAFER, reinterpret_cast<const uint8_t *>(secret.data()),
                     static_cast<uint32_t>(secret.size()), sealed.data(), &sealed_len, key);
  c.report.call(
      "KORVOCSCryptBuffer(2 /* SAFER */, " + quoted(secret.c_str()) + ", key " + quoted(key) + ")",
      std::to_string(sealed_len) + " bytes");
  const uint32_t expected_len = static_cast<uint32_t>((secret.size() + 7) / 8 * 8 + 8);
  if (!c.report.expect(sealed_len == expected_len, "SAFER output is 8 x ceil(n / 8) + 8 = " +
                                                       std::to_string(expected_len) + " bytes"))
    return;
  sealed.resize(sealed_len);
  std::string armour = armor_text(TextForm::base64, sealed);
  armour.pop_back();  // the line break
  c.report.call("KORVOBase64Crypt(1, ...)", quoted(armour.c_str()));
  if (!c.report.expect(armour.size() == (sealed.size() + 2) / 3 * 4,
                       "Base64 armour of the sealed bytes"))
    return;
  std::string error;
  const auto unarmoured =
      unarmor_text(TextForm::base64, Bytes(armour.begin(), armour.end()), error);
  c.report.call("KORVOBase64Crypt(0, ...)",
                unarmoured ? std::to_string(unarmoured->size()) + " bytes" : "null");
  if (!c.report.expect(unarmoured && *unarmoured == sealed, "Base64 gives the sealed bytes back"))
    return;
  Bytes restored(sealed.size());
  uint32_t restored_len = 0;
  KORVOCSDecryptBuffer(KORVO_CRYPT_SAFER, unarmoured->data(),
                       static_cast<uint32_t>(unarmoured->size()), restored.data(), &restored_len,
                       key);
  const std::string plain(restored.begin(), restored.begin() + restored_len);
  c.report.call("KORVOCSDecryptBuffer(2, ..., key " + quoted(key) + ")", quoted(plain.c_str()));
  c.report.expect(plain == secret, "the restored buffer equals the original");
}

}  // namespace

KORUTL_DEMO_STEP(110, "Protect and restore a buffer with SAFER, with its Base64 armour",
                 protect_restore);

}  // namespace korutl_tool::demo
