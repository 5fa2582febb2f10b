// Runs a fuzz target once over each file of the folders and files named on
// the command line: the seed corpus becomes an ordinary test of builds
// without libFuzzer (in the sanitize build, under the sanitizers). A folder
// that is missing or empty fails, since a run that checks nothing must not pass.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
// Defined by the targets that set up once per process, as libFuzzer allows.
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int *argc, char ***argv);

int main(int argc, char **argv) {
  namespace fs = std::filesystem;
  std::vector<fs::path> inputs;
  for (int i = 1; i < argc; ++i) {
    const size_t before = inputs.size();
    std::error_code ec;
    for (const auto &entry : fs::directory_iterator(argv[i], ec))
      if (entry.is_regular_file()) inputs.push_back(entry.path());
    if (fs::is_regular_file(argv[i], ec)) inputs.emplace_back(argv[i]);
    if (inputs.size() == before) return std::fprintf(stderr, "%s: no inputs\n", argv[i]), 1;
    std::sort(inputs.begin() + static_cast<long>(before), inputs.end());
  }
  if (inputs.empty()) return std::fprintf(stderr, "usage: %s FOLDER|FILE...\n", argv[0]), 1;
  if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
  for (const auto &path : inputs) {
    std::fprintf(stderr, "%s\n", path.string().c_str());  // names the input a crash is on
    // A heap block of exactly the input's size, so that ASan sees a read past it.
    const auto size = static_cast<size_t>(fs::file_size(path));
    const std::unique_ptr<uint8_t[]> data(new uint8_t[size]);
    std::ifstream in(path, std::ios::binary);
    if (!in.read(reinterpret_cast<char *>(data.get()), static_cast<std::streamsize>(size)))
      return std::fprintf(stderr, "%s: cannot read\n", path.string().c_str()), 1;
    LLVMFuzzerTestOneInput(data.get(), size);
  }
  std::printf("%zu inputs\n", inputs.size());
  return 0;
}
