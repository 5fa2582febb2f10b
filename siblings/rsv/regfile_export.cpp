// Exporting to a named file without ever leaving a half-written one where
// a good backup was: regular files are replaced by a rename.
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include "siblings/rsv/regfile.h"

namespace korutl::regfile {

namespace {

namespace fs = std::filesystem;

// Puts the file's data on the disk before it is renamed into place.
bool sync(std::FILE *f) {
  if (std::fflush(f) != 0) return false;
#if defined(_WIN32)
  return _commit(_fileno(f)) == 0;
#else
  return fsync(fileno(f)) == 0;
#endif
}

// A name beside `target` that nothing has yet.
fs::path temporary_beside(const fs::path &target) {
  std::random_device random;
  std::error_code ec;
  for (int attempt = 0;; ++attempt) {
    char suffix[24];
    std::snprintf(suffix, sizeof suffix, ".%08x%08x", random(), random());
    fs::path candidate = target;
    candidate += suffix;
    if (!fs::exists(candidate, ec) || attempt == 16) return candidate;
  }
}

// Names of a stream the process already has open, whatever it leads to.
bool open_stream(std::string_view name) {
  return name == "/dev/stdout" || name == "/dev/stderr" || name.rfind("/dev/fd/", 0) == 0 ||
         name.rfind("/proc/", 0) == 0;
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

// Writes the snapshot's subtree to `file` and closes it; ok with an empty
// `why` when the data reached it.
store::Status write_to(const std::string &path, File file, bool must_sync, std::string &why) {
  store::Status st;
  {
    const store::SnapshotScope snapshot;  // one committed state, whole or not at all
    st = write(path, file.get());
  }
  const bool written =
      !std::ferror(file.get()) && (must_sync ? sync(file.get()) : std::fflush(file.get()) == 0);
  if (std::fclose(file.release()) != 0 || !written) why = "cannot write";
  return st;
}

// Removes a temporary file on every way out but its rename.
class Temporary {
 public:
  explicit Temporary(fs::path path) : path_(std::move(path)) {}
  ~Temporary() {
    std::error_code ec;
    if (!path_.empty()) fs::remove(path_, ec);
  }
  Temporary(const Temporary &) = delete;
  Temporary &operator=(const Temporary &) = delete;
  const fs::path &path() const { return path_; }
  void kept() { path_.clear(); }

 private:
  fs::path path_;
};

}  // namespace

store::Status export_file(const std::string &path, const char *file, std::string &file_error) {
  file_error.clear();
  std::error_code ec;
  const fs::path named(file);
  const fs::file_type type = fs::status(named, ec).type();
  if (open_stream(file) || (type != fs::file_type::regular && type != fs::file_type::not_found)) {
    // Appending: /dev/stdout redirected to a file ("> f" or ">> f") must
    // neither be truncated nor replaced behind the shell's back.
    File out(std::fopen(file, "ab"), std::fclose);
    if (out == nullptr) {
      file_error = std::string("cannot open ") + file;
      return store::Status::ok;
    }
    const store::Status st = write_to(path, std::move(out), false, file_error);
    if (!file_error.empty()) file_error += std::string(" ") + file;
    return st;
  }
  // Through a link, the file it names is the one replaced.
  ec.clear();
  const fs::path target = type == fs::file_type::regular ? fs::canonical(named, ec) : named;
  if (ec) {
    file_error = std::string("cannot resolve ") + file;
    return store::Status::ok;
  }
  File out(nullptr, std::fclose);
  Temporary temporary(temporary_beside(target));
  out.reset(std::fopen(temporary.path().string().c_str(), "wb"));
  if (out == nullptr) {
    file_error = "cannot create " + temporary.path().string();
    temporary.kept();  // not ours to remove
    return store::Status::ok;
  }
  if (type == fs::file_type::regular)
    fs::permissions(temporary.path(), fs::status(target, ec).permissions(), ec);
  const store::Status st = write_to(path, std::move(out), true, file_error);
  if (st == store::Status::ok && file_error.empty()) {
    fs::rename(temporary.path(), target, ec);
    if (!ec) {
      temporary.kept();
      return st;
    }
    file_error = "cannot rename " + temporary.path().string() + " to";
  }
  if (!file_error.empty()) file_error += std::string(" ") + file;
  return st;
}

}  // namespace korutl::regfile
