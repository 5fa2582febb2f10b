// Peak resident memory of one .reg export or import, each in a process of
// its own (Google Benchmark's process keeps the memory of every run):
//   korutl_regfile_rss_probe fill KEYS VALUES   fills the store (KORVO_REGISTRY)
//   korutl_regfile_rss_probe export FILE        exports HKEY_LOCAL_MACHINE
//   korutl_regfile_rss_probe import FILE        imports FILE
//   korutl_regfile_rss_probe floor              one value read: the process's floor
// Each prints the process's peak resident set in KiB and the file's size.
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "siblings/rsv/rsv.h"

int main(int argc, char **argv) {
  if (argc < 2) return 2;
  const std::string mode = argv[1];
  const char *file = argc > 2 ? argv[2] : "";
  uint16_t rc = RSV_OK;
  if (mode == "fill" && argc > 3) {
    const std::string reg = "/tmp/korutl-rss-probe-fill.reg";
    std::FILE *out = std::fopen(reg.c_str(), "wb");
    if (out == nullptr) return 1;
    std::fputs("Windows Registry Editor Version 5.00\n\n", out);
    for (int k = 0; k < std::atoi(argv[2]); ++k) {
      std::fprintf(out, "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Bench\\K%d]\n", k);
      for (int v = 0; v < std::atoi(argv[3]); ++v)
        std::fprintf(out, "\"value%d\"=\"some text of value %d\"\n", v, v);
    }
    std::fclose(out);
    rc = rsv_import_file(reg.c_str(), nullptr, "probe", __LINE__);
    std::remove(reg.c_str());
  } else if (mode == "export") {
    rc = rsv_export_file("HKEY_LOCAL_MACHINE", file, "probe", __LINE__);
  } else if (mode == "import") {
    rc = rsv_import_file(file, nullptr, "probe", __LINE__);
  } else if (mode == "floor") {
    rc = rsv_query_key("HKEY_LOCAL_MACHINE", nullptr, nullptr, "probe", __LINE__);
  } else {
    return 2;
  }
  rusage use{};
  getrusage(RUSAGE_SELF, &use);
  struct stat st {};
  const long long size = stat(file, &st) == 0 ? static_cast<long long>(st.st_size) : 0;
  std::printf("%s: status %u, peak RSS %ld KiB, file %lld KiB\n", mode.c_str(), rc, use.ru_maxrss,
              size / 1024);
  return rc == RSV_OK ? 0 : 1;
}
