// Every tree the store holds must come back from its backup: a tree built
// from the input (names and data of any bytes, every value type) is
// exported from one store, imported into an empty one and exported again;
// the two files must be the same bytes and the two trees the same.
// Input: a list of steps. Step byte % 3: 0 a subkey of an earlier key
// (index byte, name), 1 a value on the newest key (name, type byte with
// four more bytes for an unlisted type, data), 2 the same with a data
// length of two bytes. A name or data is a length byte and that many bytes.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/store.h"
#include "siblings/rsv/regfile.h"

namespace store = korutl::store;

namespace {

std::string scratch_dir;

class Steps {
 public:
  Steps(const uint8_t *data, size_t size) : data_(data), size_(size) {}
  bool done() const { return at_ >= size_; }
  uint8_t byte() { return at_ < size_ ? data_[at_++] : 0; }
  std::string bytes(size_t n) {
    n = std::min(n, size_ - std::min(at_, size_));
    std::string s(reinterpret_cast<const char *>(data_ + at_), n);
    at_ += n;
    return s;
  }
  // A key name: not empty, no backslash, at most max_name_length bytes.
  std::string name() {
    std::string s = bytes(byte());
    for (char &c : s)
      if (c == '\\') c = '/';
    return s.empty() ? std::string("k") : s;
  }

 private:
  const uint8_t *data_;
  size_t size_, at_ = 0;
};

constexpr uint32_t types[] = {store::type_none,   store::type_sz,    store::type_expand_sz,
                              store::type_binary, store::type_dword, store::type_multi_sz,
                              store::type_qword};

// The tree of the input under the root `records[0].path`.
std::vector<store::KeyRecord> tree_of(const uint8_t *data, size_t size) {
  Steps in(data, size);
  std::vector<store::KeyRecord> records(1);
  records[0].path = in.name();
  while (!in.done() && records.size() < 64) {
    const uint8_t step = in.byte() % 3;
    if (step == 0) {
      const std::string parent = records[in.byte() % records.size()].path;
      records.emplace_back();
      records.back().path = parent + "\\" + in.name();
      continue;
    }
    store::Value v;
    v.name = in.bytes(in.byte());
    const uint8_t t = in.byte();
    v.type = types[t % std::size(types)];
    if (t >= 0xF0) {
      const std::string code = in.bytes(4);
      for (const char c : code) v.type = v.type << 8 | static_cast<uint8_t>(c);
    }
    size_t length = in.byte();
    if (step == 2) length = length << 8 | in.byte();
    v.data = in.bytes(length);
    if (records.size() > 1) records.back().values.push_back(std::move(v));  // roots hold none
  }
  return records;
}

std::string export_of(const std::string &root, const std::string &file) {
  std::string why;
  if (korutl::regfile::export_file(root, file.c_str(), why) != store::Status::ok || !why.empty())
    std::abort();
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The subtree at `path` in pre-order as one text: each key's path, values
// (name, type, data) and subkey names, every field with its length.
void dump(const std::string &path, std::string &out) {
  std::vector<store::Value> values;
  std::vector<std::string> subkeys;
  if (store::list_values(path, values) != store::Status::ok ||
      store::list_subkeys(path, subkeys) != store::Status::ok)
    std::abort();
  const auto field = [&out](const std::string &s) { out += std::to_string(s.size()) + ":" + s; };
  field(path);
  for (const store::Value &v : values) {
    field(v.name);
    field(std::to_string(v.type));
    field(v.data);
  }
  for (const std::string &sub : subkeys) field(sub);
  for (const std::string &sub : subkeys) dump(path + "\\" + sub, out);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  // Memory-backed where there is such a place: every step commits.
  const char *base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  scratch_dir = std::string(base) + "/korutl-fuzz-regfile-" + std::to_string(getpid());
  std::atexit([] {
    for (const char *name : {"/a.db", "/a.db-wal", "/a.db-shm", "/b.db", "/b.db-wal", "/b.db-shm",
                             "/first.reg", "/second.reg"})
      unlink((scratch_dir + name).c_str());
    rmdir(scratch_dir.c_str());
  });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::vector<store::KeyRecord> tree = tree_of(data, size);
  const std::string &root = tree[0].path;
  const std::string a = scratch_dir + "/a.db", b = scratch_dir + "/b.db";
  setenv("KORVO_REGISTRY", a.c_str(), 1);
  if (store::write_batch(tree) != store::Status::ok) {
    fprintf(stderr, "DBG %s\n", store::last_error().c_str());
    std::abort();
  }
  const std::string first = export_of(root, scratch_dir + "/first.reg");
  std::vector<store::KeyRecord> records;
  size_t bad_line = 0;
  if (korutl::regfile::read_file((scratch_dir + "/first.reg").c_str(), records, bad_line) !=
      korutl::regfile::Parsed::ok)
    std::abort();
  setenv("KORVO_REGISTRY", b.c_str(), 1);
  if (store::write_batch(records) != store::Status::ok) std::abort();
  if (export_of(root, scratch_dir + "/second.reg") != first) std::abort();
  std::string in_b, in_a;
  dump(root, in_b);
  store::delete_key(root);
  setenv("KORVO_REGISTRY", a.c_str(), 1);
  dump(root, in_a);
  store::delete_key(root);
  if (in_a != in_b) std::abort();
  return 0;
}
