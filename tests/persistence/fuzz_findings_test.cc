// The fuzz targets' inputs in the normal suite: every seed file is a valid file of its layout and
// version and loads, and every input a fuzzing run found harmful is read safely now.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "fuzz_entries.h"

namespace zando_fuzz {
namespace {

// Loaded whole: both gestures of a set (an import adds them to the two there, merging by name),
// the one combination of a combinations set.
TEST(FuzzInputs, EverySeedFileLoadsWhole) {
  for (const Target target : kTargets) {
    const auto seeds = seedFiles(target);
    EXPECT_GE(seeds.size(), 6u);
    for (const auto& [name, bytes] : seeds) {
      int held = 0;
      EXPECT_EQ(runInput(target, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), &held), 0)
          << targetName(target) << " " << name;
      EXPECT_EQ(held, target == Target::CombinationsLoad ? 1 : 2) << targetName(target) << " " << name;
    }
  }
}

// A damaged file is refused with a reader's code (-3 unreadable, -4 invalid content, -18 metadata
// without a creator, -19 a missing part) or loads; it never crashes.
TEST(FuzzInputs, KeptFindingsAreReadSafely) {
  const std::set<int> codes = {0, -3, -4, -18, -19};
  for (const Target target : kTargets) {
    const std::filesystem::path folder = std::filesystem::path(ZANDO_FUZZ_FINDINGS) / targetName(target);
    if (!std::filesystem::is_directory(folder)) continue;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      std::ifstream in(entry.path(), std::ios::binary);
      const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      const int result = runInput(target, reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
      EXPECT_EQ(codes.count(result), 1u) << entry.path() << " gave " << result;
    }
  }
}

}  // namespace
}  // namespace zando_fuzz
