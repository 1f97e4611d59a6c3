// What each fuzz target does with one input, and the valid files it starts from. The fuzz targets
// are thin wrappers; the test suite replays the kept findings and the seed files through the same
// functions.
#ifndef ZANDO_FUZZ_FUZZ_ENTRIES_H
#define ZANDO_FUZZ_FUZZ_ENTRIES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zando_fuzz {

enum class Target { RecognitionLoad, RecognitionImport, CombinationsLoad };

constexpr Target kTargets[] = {Target::RecognitionLoad, Target::RecognitionImport, Target::CombinationsLoad};

// The target's program name, also the name of its folders of seeds and findings.
const char* targetName(Target target);

// Hands the bytes to the target's reader through the flat functions and, when they load, uses what
// was loaded as a host would: names, samples, strokes identified at their end and continuously.
// Returns the reader's code; `held`, if given, receives how many gestures (for a combinations set:
// combinations) the object holds afterwards.
int runInput(Target target, const uint8_t* data, size_t size, int* held = nullptr);

// Valid files of every layout and format version the target's reader takes, as {name, bytes}.
std::vector<std::pair<std::string, std::string>> seedFiles(Target target);

}  // namespace zando_fuzz

#endif  // ZANDO_FUZZ_FUZZ_ENTRIES_H
