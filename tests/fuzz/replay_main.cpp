// Runs a fuzzer's function over files: every regular file named on the command line, and every one
// in the folders named there. Fails when there is none, so that a lost seed folder is noticed.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (file.bad()) {
    std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
    return false;
  }
  // A block of exactly this size, so that a sanitizer sees a read past the end.
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    std::error_code error;
    if (std::filesystem::is_directory(argv[i], error)) {
      for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i], error)) {
        if (!entry.is_regular_file()) {
          continue;
        }
        if (!Replay(entry.path())) {
          return 1;
        }
        ++count;
      }
      if (error) {
        std::fprintf(stderr, "%s: %s\n", argv[i], error.message().c_str());
        return 1;
      }
    } else {
      if (!Replay(argv[i])) {
        return 1;
      }
      ++count;
    }
  }
  std::printf("%zu inputs replayed\n", count);
  return count == 0 ? 1 : 0;
}
