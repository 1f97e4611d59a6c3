// Gesture set files across builds for different systems. `write STEM` builds a set through the
// flat face, saves it twice (trained network; enhanced recognition), loads each file back and
// writes the answers to a fixed list of strokes; `check STEM`, run by another build, loads the
// same files, answers the same strokes and compares: same gestures, same probabilities and
// similarities to the nine digits that the files keep, and the same text when it saves them again.
#include <zando/zando.h>
#include <zip.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "probe_strokes.h"

namespace {

using probe_strokes::kGestures;
constexpr int kSamplesEach = 5;
constexpr int kProbesEach = 3;
const char* const kModes[2] = {"network", "enhanced"};

// One performance of a probe gesture (see probe_strokes.h), varied by `seed`.
void perform(void* gro, int gesture, int seed, int recordAs) {
  const double head[3] = {0.0, 1.7, 0.0};
  const double facing[4] = {0.0, 0.0, 0.0, 1.0};
  GestureRecognition_startStroke(gro, head, facing, recordAs);
  for (int i = 0; i < probe_strokes::kPoints; ++i) {
    double p[3];
    probe_strokes::point(gesture, seed, i, p);
    GestureRecognition_contdStrokeQ(gro, p, facing);
  }
}

std::string setPath(const std::string& stem, int mode) { return stem + "-" + kModes[mode] + ".dat"; }

// The answers of a loaded set to every probe, one line each: mode, probe, gesture, then the
// probabilities and similarities.
std::string answers(const std::string& stem, int mode, std::string& error) {
  void* gro = GestureRecognition_create();
  std::ostringstream out;
  const int loaded = GestureRecognition_loadFromFile(gro, setPath(stem, mode).c_str(), nullptr);
  if (loaded != 0) {
    error = setPath(stem, mode) + " does not load: " + std::to_string(loaded);
  } else {
    out.precision(17);
    for (int probe = 0; probe < kGestures * kProbesEach; ++probe) {
      perform(gro, probe % kGestures, 1000 + probe, -1);
      double probabilities[kGestures] = {}, similarities[kGestures] = {};
      int count = kGestures;
      const int gesture = GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(
          gro, probabilities, similarities, &count, nullptr, nullptr, nullptr, nullptr, nullptr);
      out << kModes[mode] << ' ' << probe << ' ' << gesture << ' ' << count;
      for (int g = 0; g < count; ++g) out << ' ' << probabilities[g] << ' ' << similarities[g];
      out << '\n';
    }
  }
  GestureRecognition_delete(gro);
  return out.str();
}

// The database text inside a set file.
std::string databaseText(const std::string& path) {
  int error = 0;
  zip_t* archive = zip_open(path.c_str(), ZIP_RDONLY, &error);
  if (archive == nullptr) return {};
  std::string text;
  zip_stat_t stat;
  zip_file_t* file = zip_stat(archive, "nn.txt", 0, &stat) == 0 ? zip_fopen(archive, "nn.txt", 0) : nullptr;
  if (file != nullptr) {
    text.resize(stat.size);
    if (zip_fread(file, text.data(), stat.size) != static_cast<zip_int64_t>(stat.size)) text.clear();
    zip_fclose(file);
  }
  zip_discard(archive);
  return text;
}

int write(const std::string& stem) {
  void* gro = GestureRecognition_create();
  const char* names[kGestures] = {"circle", "swipe", "zigzag", "V"};
  for (int g = 0; g < kGestures; ++g) GestureRecognition_createGesture(gro, names[g], nullptr);
  for (int s = 0; s < kSamplesEach; ++s) {
    for (int g = 0; g < kGestures; ++g) {
      perform(gro, g, 10 * g + s, g);
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
  }
  GestureRecognition_setMaxTrainingTime(gro, 1);  // any network will do: the files are what is compared
  if (GestureRecognition_startTraining(gro) != 0) return 1;
  while (GestureRecognition_isTraining(gro)) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  int result = GestureRecognition_saveToFile(gro, setPath(stem, 0).c_str());
  if (result == 0) GestureRecognition_setEnhancedRecognition(gro, 1);
  if (result == 0) result = GestureRecognition_saveToFile(gro, setPath(stem, 1).c_str());
  GestureRecognition_delete(gro);
  if (result != 0) {
    std::fprintf(stderr, "saving failed: %d\n", result);
    return 1;
  }
  std::string error;
  std::string text;
  for (int mode = 0; mode < 2 && error.empty(); ++mode) text += answers(stem, mode, error);
  std::ofstream out(stem + ".answers", std::ios::binary);
  out << text;
  if (!error.empty() || !out.flush()) {
    std::fprintf(stderr, "%s\n", error.empty() ? "answers not written" : error.c_str());
    return 1;
  }
  std::printf("wrote %s and %s with the answers to %d strokes\n", setPath(stem, 0).c_str(), setPath(stem, 1).c_str(),
              kGestures * kProbesEach);
  return 0;
}

// Whether two answer lines agree: the same words but for numbers, which may differ in the
// digits beyond those kept in the files.
bool sameAnswer(const std::string& expected, const std::string& actual) {
  std::istringstream a(expected), b(actual);
  std::string wordA, wordB;
  while (a >> wordA) {
    if (!(b >> wordB)) return false;
    if (wordA == wordB) continue;
    char* endA = nullptr;
    char* endB = nullptr;
    const double x = std::strtod(wordA.c_str(), &endA), y = std::strtod(wordB.c_str(), &endB);
    if (*endA != '\0' || *endB != '\0' || !(std::fabs(x - y) <= 1e-9 * std::fmax(1.0, std::fabs(x)))) return false;
  }
  return !(b >> wordB);
}

int check(const std::string& stem) {
  std::ifstream in(stem + ".answers", std::ios::binary);
  std::vector<std::string> expected;
  for (std::string line; std::getline(in, line);) expected.push_back(line);
  if (expected.size() != 2u * kGestures * kProbesEach) {
    std::fprintf(stderr, "%s.answers: %zu answers\n", stem.c_str(), expected.size());
    return 1;
  }
  int failures = 0;
  for (int mode = 0; mode < 2; ++mode) {
    std::string error;
    std::istringstream lines(answers(stem, mode, error));
    if (!error.empty()) {
      std::fprintf(stderr, "%s\n", error.c_str());
      return 1;
    }
    std::string line;
    for (int probe = 0; probe < kGestures * kProbesEach && std::getline(lines, line); ++probe) {
      const std::string& want = expected[mode * kGestures * kProbesEach + probe];
      if (!sameAnswer(want, line)) {
        std::fprintf(stderr, "answer differs:\n  written: %s\n  here:    %s\n", want.c_str(), line.c_str());
        ++failures;
      }
    }
    // Saved again here, the set must read as it was written there.
    void* gro = GestureRecognition_create();
    const std::string again = stem + "-" + kModes[mode] + "-again.dat";
    if (GestureRecognition_loadFromFile(gro, setPath(stem, mode).c_str(), nullptr) != 0 ||
        GestureRecognition_saveToFile(gro, again.c_str()) != 0) {
      std::fprintf(stderr, "%s: load and save again failed\n", setPath(stem, mode).c_str());
      ++failures;
    } else if (databaseText(again).empty() || databaseText(again) != databaseText(setPath(stem, mode))) {
      std::fprintf(stderr, "%s: saved again, the text differs\n", setPath(stem, mode).c_str());
      ++failures;
    }
    GestureRecognition_delete(gro);
  }
  std::printf("%s: %d of %zu answers and 2 files as written\n", stem.c_str(),
              static_cast<int>(expected.size()) - failures, expected.size());
  return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc == 3 ? argv[1] : "";
  if (command == "write") return write(argv[2]);
  if (command == "check") return check(argv[2]);
  std::fprintf(stderr, "usage: file_exchange write|check STEM\n");
  return 2;
}
