// korutl crypt protect|restore: a buffer from stdin through the library's
// protection methods to stdout. The key comes from a file or an environment
// variable, never from the command line, so it does not show in `ps`.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "korutl.h"
#include "tools/armor.h"
#include "tools/commands.h"
#include "tools/output.h"
#include "tools/stream_io.h"

namespace korutl_tool {

namespace {

struct CryptOptions {
  std::string action;
  std::string method = "safer";
  std::string key_file;
  std::string key_env;
  std::string armor;
};

int crypt_failed(const std::string &message) {
  fail("crypt: " + message);
  return exit_failed;
}

// A key file holds the key text; one trailing line break is not part of it.
std::optional<std::string> read_key(const CryptOptions &opt) {
  if (!opt.key_env.empty()) {
    const char *value = std::getenv(opt.key_env.c_str());
    if (value == nullptr) return std::nullopt;
    return std::string(value);
  }
  std::ifstream in(opt.key_file, std::ios::binary);
  if (!in) return std::nullopt;
  std::string key((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!key.empty() && key.back() == '\n') key.pop_back();
  if (!key.empty() && key.back() == '\r') key.pop_back();
  return key;
}

TextForm form_of(const CryptOptions &opt) {
  return opt.armor == "base64" ? TextForm::base64 : TextForm::hex;
}

bool write_armored(const CryptOptions &opt, const Bytes &out) {
  if (opt.armor.empty()) return write_all(out.data(), out.size());
  const std::string text = armor_text(form_of(opt), out);
  return write_all(text.data(), text.size());
}

int run(const CryptOptions &opt) {
  const auto key = read_key(opt);
  if (!key) {
    return crypt_failed(opt.key_env.empty()
                            ? "cannot read key file " + opt.key_file
                            : "environment variable " + opt.key_env + " is not set");
  }
  const bool protect = opt.action == "protect";
  Bytes in = read_all(stdin);
  if (!protect && !opt.armor.empty()) {
    std::string error;
    auto raw = unarmor_text(form_of(opt), in, error);
    if (!raw) return crypt_failed(error);
    in = std::move(*raw);
  }
  if (in.size() > UINT32_MAX / 2) return crypt_failed("input too long");
  const auto n = static_cast<uint32_t>(in.size());
  Bytes out(in.size() + 16);
  uint32_t len = 0;
  if (opt.method == "safer") {
    // The front end's SAFER method (KORVO_CRYPT_SAFER_MODE), called directly so that
    // an empty plaintext and a failed restore can be told apart.
    if (KORVOSaferCrypt(
            KORVO_CRYPT_SAFER_MODE | (protect ? KORVO_SAFER_ENCRYPT : KORVO_SAFER_DECRYPT),
            in.data(), n, out.data(), &len, key->c_str()) == 0) {
      if (in.size() >= 8192) return crypt_failed("input too long for SAFER (at most 8,191 bytes)");
      return crypt_failed(protect ? "the key text may hold only the characters from blank to '~'"
                                  : "restore failed: wrong key, wrong method or damaged input");
    }
  } else {
    const int32_t method = opt.method == "xor" ? KORVO_CRYPT_SCRAMBLE : 0;  // 0: a copy
    (protect ? KORVOCSCryptBuffer : KORVOCSDecryptBuffer)(method, in.data(), n, out.data(), &len,
                                                          key->c_str());
    if (len != n) return crypt_failed("input too long for the XOR scrambler (at most 2,048 bytes)");
  }
  out.resize(len);
  if (protect ? !write_armored(opt, out) : !write_all(out.data(), out.size()))
    return crypt_failed("cannot write output");
  return 0;
}

void add_crypt_command(CLI::App &app) {
  static CryptOptions opt;
  auto *cmd = app.add_subcommand("crypt", "Protect or restore a buffer, stdin to stdout");
  cmd->add_option("ACTION", opt.action, "protect or restore")
      ->required()
      ->check(CLI::IsMember({"protect", "restore"}));
  cmd->add_option("--method", opt.method, "safer (default), xor or none")
      ->check(CLI::IsMember({"safer", "xor", "none"}));
  auto *file = cmd->add_option("--key-file", opt.key_file, "File holding the key text");
  auto *env =
      cmd->add_option("--key-env", opt.key_env, "Environment variable holding the key text");
  file->excludes(env);
  cmd->add_option("--armor", opt.armor, "Protected form as text: base64 or hex")
      ->check(CLI::IsMember({"base64", "hex"}));
  cmd->callback([file, env] {
    if (file->count() + env->count() == 0) {
      throw CLI::RequiredError("--key-file or --key-env");
    }
    exit_code = run(opt);
  });
}

}  // namespace

KORUTL_TOOL_COMMAND("crypt", add_crypt_command);

}  // namespace korutl_tool
