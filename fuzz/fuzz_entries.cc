#include "fuzz_entries.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "persistence/archive.h"
#include "zando/zando.h"

namespace zando_fuzz {

namespace {

const double kHead[3] = {0.0, 1.7, 0.0};
const double kFacing[4] = {0.0, 0.0, 0.0, 1.0};

int clampedSize(size_t size) { return static_cast<int>(std::min<size_t>(size, INT_MAX)); }

// A short curve, different for each gesture and variant, fed as hand poses.
template <class Feed>
void drawCurve(int gesture, int variant, Feed feed) {
  for (int i = 0; i < 24; ++i) {
    const double t = 6.283 * i / 23.0;
    const double p[3] = {0.2 * std::sin((gesture + 1) * t) + 0.01 * variant, 1.4 + 0.2 * std::cos(t), 0.4};
    feed(p);
  }
}

void useRecognition(void* gro) {
  const int gestures = GestureRecognition_numberOfGestures(gro);
  for (int g = 0; g < std::min(gestures, 64); ++g) {
    GestureRecognition_getGestureNameLength(gro, g);
    GestureRecognition_getGestureSampleLength(gro, g, 0, 1);
    GestureRecognition_getGestureMeanLength(gro, g);
  }
  std::vector<double> p(static_cast<size_t>(std::max(gestures, 1))), s(p.size());
  for (int variant = 0; variant < 2; ++variant) {
    GestureRecognition_startStroke(gro, kHead, kFacing, -1);
    int points = 0;
    drawCurve(variant, variant, [&](const double* point) {
      GestureRecognition_contdStrokeQ(gro, point, kFacing);
      double similarity = 0.0;
      if (++points % 6 == 0) GestureRecognition_contdIdentify(gro, kHead, kFacing, &similarity);
      int gesture = -1;
      GestureRecognition_contdDetect(gro, kHead, kFacing, &gesture, &similarity);
    });
    int count = static_cast<int>(p.size());
    double pos[3], scale, dir0[3], dir1[3], dir2[3];
    GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(gro, p.data(), s.data(), &count, pos, &scale,
                                                                      dir0, dir1, dir2);
  }
}

void useCombinations(void* gco) {
  const int parts = std::min(GestureCombinations_numberOfParts(gco), 8);
  GestureCombinations_numberOfGestureCombinations(gco);
  std::vector<double> probabilities(static_cast<size_t>(std::max(parts, 1))), similarities(probabilities.size());
  for (int part = 0; part < parts; ++part) GestureCombinations_startStroke(gco, part, kHead, kFacing, -1);
  drawCurve(1, 0, [&](const double* point) {
    for (int part = 0; part < parts; ++part) GestureCombinations_contdStrokeQ(gco, part, point, kFacing);
    double similarity = 0.0;
    GestureCombinations_contdIdentify(gco, kHead, kFacing, &similarity, probabilities.data(), similarities.data());
    int combination = -1;
    GestureCombinations_contdDetect(gco, kHead, kFacing, &combination, &similarity);
  });
  for (int part = 0; part < parts; ++part) {
    double pos[3], scale, dir0[3], dir1[3], dir2[3];
    GestureCombinations_endStroke(gco, part, pos, &scale, dir0, dir1, dir2);
  }
  double probability = 0.0, similarity = 0.0;
  GestureCombinations_identifyGestureCombination(gco, &probability, &similarity, probabilities.data(),
                                                 similarities.data());
}

// A host owns the metadata objects that a load makes for it: it frees every one it can reach (two
// gestures may share one) once the object is gone.
void freeMetadata(const std::set<void*>& held) {
  for (void* metadata : held) GestureRecognition_deleteDefaultMetadata(metadata);
}

void deleteRecognition(void* gro) {
  std::set<void*> held = {GestureRecognition_getMetadata(gro)};
  for (int g = 0; g < GestureRecognition_numberOfGestures(gro); ++g) {
    held.insert(GestureRecognition_getGestureMetadata(gro, g));
  }
  GestureRecognition_delete(gro);
  held.erase(nullptr);
  freeMetadata(held);
}

void deleteCombinations(void* gco) {
  std::set<void*> held = {GestureCombinations_getMetadata(gco)};
  for (int c = 0; c < GestureCombinations_numberOfGestureCombinations(gco); ++c) {
    held.insert(GestureCombinations_getGestureCombinationMetadata(gco, c));
  }
  for (int p = 0; p < GestureCombinations_numberOfParts(gco); ++p) {
    for (int g = 0; g < GestureCombinations_numberOfGestures(gco, p); ++g) {
      held.insert(GestureCombinations_getGestureMetadata(gco, p, g));
    }
  }
  GestureCombinations_delete(gco);
  held.erase(nullptr);
  freeMetadata(held);
}

// Records `samples` performances of each of `gestures` gestures through the flat functions.
void recordSet(void* gro, int gestures, int samples) {
  for (int g = 0; g < gestures; ++g) {
    GestureRecognition_createGesture(gro, g == 0 ? "circle" : "wave", nullptr);
    for (int s = 0; s < samples; ++s) {
      GestureRecognition_startStroke(gro, kHead, kFacing, g);
      drawCurve(g, s, [&](const double* point) { GestureRecognition_contdStrokeQ(gro, point, kFacing); });
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
  }
}

}  // namespace

const char* targetName(Target target) {
  switch (target) {
    case Target::RecognitionLoad: return "recognition_load_buffer";
    case Target::RecognitionImport: return "recognition_import_buffer";
    case Target::CombinationsLoad: return "combinations_load_buffer";
  }
  return "unknown";
}

int runInput(Target target, const uint8_t* data, size_t size, int* held) {
  const char* bytes = reinterpret_cast<const char*>(data);
  const auto metadata = GestureRecognition_getDefaultMetadataCreatorFunction();
  int result = 0;
  if (target == Target::CombinationsLoad) {
    void* gco = GestureCombinations_create(2);
    result = GestureCombinations_loadFromBuffer(gco, bytes, clampedSize(size), metadata);
    if (result == 0) useCombinations(gco);
    if (held != nullptr) *held = GestureCombinations_numberOfGestureCombinations(gco);
    deleteCombinations(gco);
    return result;
  }
  void* gro = GestureRecognition_create();
  if (target == Target::RecognitionImport) {
    // An import merges by name into what is there.
    recordSet(gro, 2, 1);
    result = GestureRecognition_importFromBuffer(gro, bytes, clampedSize(size), metadata);
  } else {
    result = GestureRecognition_loadFromBuffer(gro, bytes, clampedSize(size), metadata);
  }
  if (result == 0) useRecognition(gro);
  if (held != nullptr) *held = GestureRecognition_numberOfGestures(gro);
  deleteRecognition(gro);
  return result;
}

namespace {

// A scratch file of this process, removed when it goes out of scope.
class ScratchFile {
 public:
  ScratchFile()
      : path_((std::filesystem::temp_directory_path() / ("zando-seed-" + std::to_string(getpid()) + ".zip")).string()) {}
  ~ScratchFile() { std::remove(path_.c_str()); }
  const char* path() const { return path_.c_str(); }
  std::string bytes() const {
    std::ifstream in(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

 private:
  std::string path_;
};

std::string archiveOf(const std::string& text) {
  ScratchFile file;
  zando::writeArchiveMember(file.path(), zando::kDatabaseMember, text);
  return file.bytes();
}

// A gesture database in the layout of `version` (1 to 18): one network layer, two gestures of two
// samples each, metadata on the set and on one gesture where the version has room for it. Settings
// the version has no line for take the values a reader assumes for them, so the feature width and
// with it the layer and row sizes follow from the version.
std::string databaseText(int version) {
  const int waypoints = version >= 2 ? 2 : 8;
  const int headerMode = version >= 12 ? 0 : 4;
  const int width = (headerMode == 4 ? 10 : 4) + waypoints * 3;
  std::ostringstream text;
  if (version >= 2) text << "#" << version << "\n";
  text << "0.5\n";
  if (version >= 3) text << (version >= 14 ? "0002" : "000") << "\n";
  if (version >= 17) text << "UpdateHeadPositionPolicy_UseInitial\n";
  if (version >= 18) text << "1000\n3\n";
  text << "1 1\n1\n";
  if (version >= 2) text << waypoints << "\n";
  if (version >= 12) text << headerMode << "\n";
  if (version >= 4) text << "0\n";
  if (version >= 7) text << "1\n";
  if (version >= 6) text << "1\n";
  if (version >= 10) text << "0\n";
  if (version >= 11) text << "0\n";
  if (version >= 15) text << "0\n0.33333\n";
  text << "2\n";
  // The bias row and one row for each feature.
  for (int row = 0; row <= width; ++row) text << (row % 3) * 0.25 << " " << -0.5 + row * 0.01 << "\n";
  if (version >= 3) text << "2\n";
  const auto pose = [](double x, double y) {
    std::ostringstream p;
    p << x << " " << y << " 0.4 0 0 0 1";
    return p.str();
  };
  for (int g = 0; g < 2; ++g) {
    text << (g == 0 ? "circle" : "wave") << "\n";
    if (version >= 16) text << "GESTURE_ENABLED\n";
    text << (g == 1 ? "METADATA:\n4 abcd" : "NO METADATA\n");
    if (version >= 5) {
      for (int row = 0; row < 2; ++row) {
        for (int i = 0; i < width; ++i) text << 0.1 * (row + 1) << " ";
        text << "\n";
      }
    }
    text << "2\n";
    for (int s = 0; s < 2; ++s) {
      if (version >= 9) text << "0 ";
      text << "0 1.7 0 0 0 0 1";
      for (int i = 0; i < 6; ++i) {
        text << " " << pose(0.1 * std::sin((g + 1) * i) + 0.01 * s, 1.4 + 0.1 * std::cos(i));
        if (version >= 13) text << " 0 1.7 0 0 0 0 1";
      }
      text << "\n";
    }
  }
  if (version >= 2) text << "o\n";
  // The block has no line end of its own: whatever a stream holds next follows directly.
  if (version >= 16) text << "METADATA:\n3 set";
  return text.str();
}

std::vector<std::pair<std::string, std::string>> recognitionSeeds() {
  std::vector<std::pair<std::string, std::string>> seeds;
  for (int version = 1; version <= 18; ++version) {
    const std::string text = databaseText(version);
    seeds.emplace_back("text-v" + std::to_string(version), text);
    seeds.emplace_back("archive-v" + std::to_string(version), archiveOf(text));
  }
  // As the library writes them today: recorded samples, with and without the enhanced mode.
  for (const int enhanced : {0, 1}) {
    void* gro = GestureRecognition_create();
    recordSet(gro, 2, 2);
    GestureRecognition_setEnhancedRecognition(gro, enhanced);
    ScratchFile file;
    GestureRecognition_saveToFile(gro, file.path());
    seeds.emplace_back(enhanced != 0 ? "saved-enhanced" : "saved", file.bytes());
    GestureRecognition_delete(gro);
  }
  return seeds;
}

std::vector<std::pair<std::string, std::string>> combinationSeeds() {
  std::vector<std::pair<std::string, std::string>> seeds;
  // The single-stream layouts: parts' databases in turn, then the combinations.
  const std::string part = databaseText(18);
  const std::string combination = "both\n2\n0 1 \n";
  seeds.emplace_back("stream-v1", "2\n" + part + part + "1\n" + combination);
  seeds.emplace_back("stream-m1", "M1\n2\n" + part + part + "1\n" + combination);
  const std::string v2 = "M2\n2\n" + part + "GRO_ENABLED\n" + part + "GRO_DISABLED\n1\nboth\nNO METADATA\n2\n0 1 \n" +
                         "METADATA:\n3 set0.5\n";
  seeds.emplace_back("stream-m2", v2);
  seeds.emplace_back("archive-stream-m2", archiveOf(v2));
  // The archive as the library writes it today.
  for (const int enhanced : {0, 1}) {
    void* gco = GestureCombinations_create(2);
    for (int p = 0; p < 2; ++p) {
      GestureCombinations_createGesture(gco, p, "circle", nullptr);
      GestureCombinations_createGesture(gco, p, "wave", nullptr);
      for (int g = 0; g < 2; ++g) {
        GestureCombinations_startStroke(gco, p, kHead, kFacing, g);
        drawCurve(g, p, [&](const double* point) { GestureCombinations_contdStrokeQ(gco, p, point, kFacing); });
        GestureCombinations_endStroke(gco, p, nullptr, nullptr, nullptr, nullptr, nullptr);
      }
    }
    const int both = GestureCombinations_createGestureCombination(gco, "both");
    GestureCombinations_setCombinationPartGesture(gco, both, 0, 0);
    GestureCombinations_setCombinationPartGesture(gco, both, 1, 1);
    GestureCombinations_setEnhancedRecognition(gco, enhanced);
    ScratchFile file;
    GestureCombinations_saveToFile(gco, file.path());
    seeds.emplace_back(enhanced != 0 ? "saved-enhanced" : "saved", file.bytes());
    GestureCombinations_delete(gco);
  }
  return seeds;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> seedFiles(Target target) {
  return target == Target::CombinationsLoad ? combinationSeeds() : recognitionSeeds();
}

}  // namespace zando_fuzz
