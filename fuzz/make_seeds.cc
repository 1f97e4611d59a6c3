// Writes the fuzz targets' seed files: make_seeds DIR puts each target's files into DIR/<target>.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "fuzz_entries.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
    return 2;
  }
  for (const zando_fuzz::Target target : zando_fuzz::kTargets) {
    const std::filesystem::path folder = std::filesystem::path(argv[1]) / zando_fuzz::targetName(target);
    std::filesystem::create_directories(folder);
    for (const auto& [name, bytes] : zando_fuzz::seedFiles(target)) {
      std::ofstream(folder / name, std::ios::binary) << bytes;
    }
  }
  return 0;
}
