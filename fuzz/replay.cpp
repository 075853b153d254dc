// Runs a target on every file of the folders and files named, for builds without libFuzzer.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz/target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> files_in(const fs::path& place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(place)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
  if (!in) return false;
  // Printed before it runs, so that a crash shows which input it was.
  std::cout << file.filename().string() << std::endl;
  return LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                bytes.size()) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : files_in(argv[i])) {
      if (!replay(file)) {
        std::cerr << "cannot replay " << file.string() << '\n';
        return 1;
      }
      ++replayed;
    }
  }
  std::cout << replayed << " inputs\n";
  return replayed > 0 ? 0 : 1;
}
