// Files that tests write and read back: unique paths in the test's temporary folder, removed
// again by a holder, whole-file reads, and the member list of an archive.
#ifndef ZANDO_TESTS_SCRATCH_FILES_H
#define ZANDO_TESTS_SCRATCH_FILES_H

#include <gtest/gtest.h>

#include <unistd.h>
#include <zip.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace zando {
namespace testing_support {

inline std::string scratchPath(const std::string& name) {
  return ::testing::TempDir() + "zando_" + std::to_string(::getpid()) + "_" + name;
}

// Hands out scratch paths (UTF-8) and removes whatever is at them, folders included, when it goes.
class ScratchFiles {
 public:
  ScratchFiles() = default;
  ScratchFiles(const ScratchFiles&) = delete;
  ScratchFiles& operator=(const ScratchFiles&) = delete;
  ~ScratchFiles() {
    std::error_code ignored;
    for (const std::string& path : paths_) std::filesystem::remove_all(std::filesystem::u8path(path), ignored);
  }
  std::string operator()(const std::string& name) {
    paths_.push_back(scratchPath(name));
    return paths_.back();
  }

 private:
  std::vector<std::string> paths_;
};

inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The members of an archive file, each as its name and whether it is deflated.
inline std::vector<std::string> archiveMembers(const std::string& path) {
  int error = 0;
  zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
  std::vector<std::string> members;
  zip_stat_t stat;
  for (zip_uint64_t i = 0; archive != nullptr && zip_stat_index(archive, i, 0, &stat) == 0; ++i) {
    members.push_back(std::string(stat.name) + (stat.comp_method == ZIP_CM_DEFLATE ? " deflated" : " stored"));
  }
  if (archive != nullptr) zip_discard(archive);
  return members;
}

}  // namespace testing_support
}  // namespace zando

#endif  // ZANDO_TESTS_SCRATCH_FILES_H
