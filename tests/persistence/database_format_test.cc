// The gesture database text: the sample file, exact round trips, older versions, the rules that
// refuse damage, and a storm of damaged files that must never crash the reader.
#include "persistence/database_format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "waiting.h"

namespace zando {
namespace {

using Metadata = IGestureRecognition::Metadata;

const char kSampleFile[] =
    "#18\n0.000000000e+00\n0002\nUpdateHeadPositionPolicy_UseInitial\n1000\n3\n"
    "1.000000000e+00 1.000000000e+00\n0\n1\n0\n0\n1\n1\n1\n1\n0\n3.333300000e-01\n1\nwave\n"
    "GESTURE_ENABLED\nNO METADATA\n0 0 0 0 0 0 0 \n0 0 0 0 0 0 0 \n1\n"
    "0 0.000000000e+00 1.600000000e+00 0.000000000e+00 0.000000000e+00 0.000000000e+00 0.000000000e+00 "
    "1.000000000e+00 1.000000000e-01 1.000000000e+00 3.000000000e-01 0.000000000e+00 0.000000000e+00 "
    "0.000000000e+00 1.000000000e+00 0.000000000e+00 1.600000000e+00 0.000000000e+00 0.000000000e+00 "
    "0.000000000e+00 0.000000000e+00 1.000000000e+00 2.000000000e-01 1.100000000e+00 3.000000000e-01 "
    "0.000000000e+00 0.000000000e+00 0.000000000e+00 1.000000000e+00 0.000000000e+00 1.600000000e+00 "
    "0.000000000e+00 0.000000000e+00 0.000000000e+00 0.000000000e+00 1.000000000e+00\ni\nNO METADATA\n";

// Version 12: a three-character frame line, sample types, per-point head poses, stored rows that
// the reader replaces (D = 8 + 1 * 3).
const char kVersion12[] =
    "#12\n0.25\n101\n1 1\n0\n1\n2\n0\n0\n2\n0\n1\n1\nold\nNO METADATA\n5 5 5 5 5 5 5 5 5 5 5\n"
    "5 5 5 5 5 5 5 5 5 5 5\n1\n1 0 1.5 0 0 0 0 1 0.1 1 0.3 0 0 0 1 0 1.5 0 0 0 0 1\no\n";

// A default metadata block holding these bytes.
Metadata* metadata(const std::string& bytes) {
  auto* block = new IGestureRecognition::DefaultMetadata;
  block->setData(bytes.data(), static_cast<int>(bytes.size()));
  return block;
}

int load(GestureModel& model, const std::string& text, IGestureRecognition::MetadataCreatorFunction creator = nullptr,
         IGestureRecognition* owner = nullptr) {
  std::istringstream stream(text);
  return readGestureDatabase(model, stream, creator, owner);
}

std::string save(GestureModel& model, IGestureRecognition* owner = nullptr) {
  std::ostringstream stream;
  EXPECT_EQ(writeGestureDatabase(model, stream, owner), 0);
  return stream.str();
}

// Where line `index` (from 0) of the text begins.
size_t lineStart(const std::string& text, size_t index) {
  size_t at = 0;
  while (index-- > 0) at = text.find('\n', at) + 1;
  return at;
}

std::string withLine(std::string text, size_t index, const std::string& replacement) {
  const size_t at = lineStart(text, index);
  return text.replace(at, text.find('\n', at) - at, replacement);
}

// Dyadic values and infinities only, so that every number survives its decimal text exactly.
// D = 8 + 2 * 6 = 20; a network 20 -> 4 -> 3; three gestures with 1, 2 and 3 samples of 0, 3 and
// 6 points, later samples with fewer head records than hand points.
void buildModel(GestureModel& m, Metadata* setMetadata, Metadata* gestureMetadata) {
  ModelParameters& p = m.parameters;
  p.waypointCount = 2; p.waypointFeatureMode = 1; p.transferMode = 1;
  p.rotationFrameY = 1; p.rotationOrder = 4; p.updateHeadPositionPolicy = 0;
  p.featureScaleA = 0.75; p.featureScaleB = 2.5;
  m.recognitionScore = 0.875;
  m.networkInvalid = false;
  m.metadata = setMetadata;
  for (int k = 0, widths[3] = {20, 4, 3}; k < 2; ++k) {
    Matrix w(widths[k] + 1, widths[k + 1]);
    for (Eigen::Index i = 0; i < w.size(); ++i) w.data()[i] = ((i * 37 + k) % 29 - 14) / 64.0 * (i % 5 ? 1.0 : 1e20);
    m.weights.push_back(w);
  }
  m.weights[0](1, 0) = std::numeric_limits<double>::infinity();
  m.weights[1](2, 1) = -std::numeric_limits<double>::infinity();
  // An empty name must come first: the line breaks after a sample line are all taken with it.
  const char* names[3] = {"", "circle", "wave\x01 twice"};
  for (int g = 0; g < 3; ++g) {
    auto* gesture = new Gesture(names[g], g == 0 ? gestureMetadata : nullptr);
    gesture->gestureEnabled = g != 1;
    for (int s = 0; s <= g; ++s) {
      auto* stroke = new Stroke();
      stroke->sampleType = s % 2;
      stroke->headStart = StrokePoint(Vector3(0.0, 1.5, -s / 4.0), Quaternion(0.125, 0.0, 0.0, 1.0));
      for (int i = 0; i < 3 * g; ++i) {
        stroke->handPoints.emplace_back(Vector3(i / 8.0, -1.0 / 1024, 3.0), Quaternion(-0.5, 0.0, 0.0, 1.0));
        if (i < 3 * g - s) stroke->headPoints.emplace_back(Vector3(0.0, 1.5 + i / 16.0, 0.0), Quaternion());
      }
      gesture->gestureSamples.push_back(stroke);
    }
    m.gestures.push_back(gesture);
    m.gestureMeans.push_back(std::vector<double>(20, g / 4.0));
    m.gestureDeviations.push_back(std::vector<double>(20, -g / 32.0));
  }
}

void logPercent(int percent, void* log) { static_cast<std::vector<int>*>(log)->push_back(percent); }

// Written back, the sample file comes out as it went in; only the filler rows change form, since
// the zeros they stand for are now stored rows.
TEST(DatabaseFormatTest, SampleFileLoadsWithEveryValue) {
  std::unique_ptr<IGestureRecognition> owner(IGestureRecognition::create());
  owner->contdIdentificationPeriod = 7;
  GestureModel m;
  m.parameters.rotationOrder = 5;
  m.parameters.featureFlagC = false;
  ASSERT_EQ(load(m, kSampleFile, nullptr, owner.get()), 0);
  std::string row = "0.000000000000000e+00";
  for (int i = 0; i < 6; ++i) row += " 0.000000000000000e+00";
  EXPECT_EQ(save(m, owner.get()), withLine(withLine(kSampleFile, 21, row), 22, row));
  ASSERT_EQ(m.layerBuffers.size(), 1u);
  EXPECT_EQ(m.layerBuffers[0].cols(), 7);  // D, no bias: there is no network

  // Inside a row or matrix a word starting with i or I is an infinity and any other word a NaN,
  // so that the text any standard library writes for them comes back.
  ASSERT_EQ(load(m, withLine(kSampleFile, 21, "INF -Infinity nan(7) .5 +2 -0 0007.25e-2\r")), 0);
  const std::vector<double>& mean = m.gestureMeans.at(0);
  EXPECT_TRUE(std::isinf(mean[0]) && mean[0] > 0.0 && mean[1] == -mean[0]);
  EXPECT_TRUE(std::isnan(mean[2]) && std::isnan(mean[3]) && std::isnan(mean[4]));
  EXPECT_TRUE(mean[5] == 0.0 && std::signbit(mean[5]) && mean[6] == 0.0725);

  // Line breaks inside a name are dropped by the writer, outer blanks by the reader.
  m.gestures[0]->gestureName = " two\nli\rnes ";
  ASSERT_EQ(load(m, save(m)), 0);
  EXPECT_EQ(m.gestures[0]->gestureName, "twolines");
}

TEST(DatabaseFormatTest, FullModelRoundTripsExactly) {
  std::unique_ptr<Metadata> setMetadata(metadata(std::string("set \0 with\nline\r\nends ", 22)));
  std::unique_ptr<Metadata> gestureMetadata(metadata(std::string("\0\0 \n", 4)));
  std::unique_ptr<Metadata> emptyMetadata(metadata(""));  // written "0 ", read back empty
  GestureModel original;
  buildModel(original, setMetadata.get(), gestureMetadata.get());
  original.gestures[2]->gestureMetadata = emptyMetadata.get();
  std::unique_ptr<IGestureRecognition> owner(IGestureRecognition::create());
  owner->contdIdentificationPeriod = 2500;
  owner->contdIdentificationSmoothing = 0;
  std::vector<int> saved, loaded;
  original.saveProgress = &logPercent;
  original.saveProgressContext = &saved;
  const std::string text = save(original, owner.get());

  GestureModel copy;
  copy.loadProgress = &logPercent;
  copy.loadProgressContext = &loaded;
  owner->contdIdentificationPeriod = owner->contdIdentificationSmoothing = 1;
  ASSERT_EQ(load(copy, text, IGestureRecognition::getDefaultMetadataCreatorFunction(), owner.get()), 0);
  // Metadata bytes (an empty block included), names, poses, rows, period and smoothing.
  EXPECT_EQ(save(copy, owner.get()), text);
  EXPECT_TRUE(copy.parameters.sameAs(original.parameters));
  EXPECT_EQ(copy.weights, original.weights);
  EXPECT_EQ(copy.gestures[2]->gestureSamples.at(2)->headPoints.at(5).position.y, 1.5 + 3 / 16.0);  // repeated
  ASSERT_EQ(copy.layerBuffers.size(), 3u);
  for (int k = 0, widths[3] = {21, 5, 3}; k < 3; ++k) EXPECT_EQ(copy.layerBuffers[k].cols(), widths[k]);
  const std::vector<int> expected = {1, 10, 15, 20, 43, 66, 90, 99};
  EXPECT_EQ(saved, expected);
  EXPECT_EQ(loaded, expected);
  delete copy.metadata;
  delete copy.gestures[0]->gestureMetadata;
  delete copy.gestures[2]->gestureMetadata;
}

TEST(DatabaseFormatTest, OlderVersionsLoadWithAssumedValues) {
  std::unique_ptr<IGestureRecognition> owner(IGestureRecognition::create());
  const std::string pose7 = "0 1.5 0 0 0 0 1";
  // Version 1: no "#", one network layer whose width (2) is the gesture count, hand poses only.
  std::string v1 = "\n\n0.5\n2.0\n1\n2\n";
  for (int r = 0; r < 35; ++r) v1 += "0.25 -0.5\n";
  for (int g = 0; g < 2; ++g) {
    v1 += "g\nNO METADATA\n" + std::to_string(4 - g) + "\n";
    for (int s = 0; s < 4 - g; ++s) v1 += pose7 + " 0.1 1 0.3 0 0 0 1\n";
  }
  GestureModel m;
  m.parameters.rotationFrameX = 1;
  m.parameters.transferSlope = 0.5;
  owner->contdIdentificationPeriod = 50;
  ASSERT_EQ(load(m, v1, nullptr, owner.get()), 0);
  const ModelParameters& p = m.parameters;
  // Waypoints, header mode, flags A and B, transfer mode, policy; frame X left as it was.
  EXPECT_EQ(std::vector<int>({p.waypointCount, p.headerFeatureMode, p.featureFlagA, p.featureFlagB, p.transferMode,
                              p.updateHeadPositionPolicy, p.rotationFrameX}),
            std::vector<int>({8, 4, 0, 0, 0, 0, 1}));
  EXPECT_EQ(p.transferSlope, 0.33333);
  EXPECT_EQ(p.featureScaleB, 2.0);  // one number sets both scales
  EXPECT_EQ(owner->contdIdentificationPeriod, 1000);
  EXPECT_TRUE(m.networkInvalid);  // gesture 1 has only 3 samples
  ASSERT_EQ(m.gestureCount(), 2);
  EXPECT_EQ(m.gestures[1]->gestureSamples[0]->headPoints.at(0).position.y, 1.5);
  EXPECT_EQ(m.gestureMeans.at(1).size(), 34u);  // recomputed for D = 10 + 8 * 3
  v1.replace(v1.rfind("\n3\n"), 3, "\n4\n");
  ASSERT_EQ(load(m, v1 + pose7 + "\n"), 0);
  EXPECT_FALSE(m.networkInvalid);

  m.parameters.rotationOrder = 5;  // version 12 has no line for it
  ASSERT_EQ(load(m, kVersion12), 0);
  EXPECT_EQ(std::vector<int>({p.rotationFrameY, p.rotationFrameZ, p.rotationOrder, p.featureSelector}),
            std::vector<int>({0, 1, 5, 2}));
  EXPECT_EQ(m.gestures[0]->gestureSamples[0]->sampleType, 1);
  EXPECT_NE(m.gestureMeans[0], std::vector<double>(11, 5.0));

  // Version 16: enabled lines and set metadata, no policy or owner lines; rows are trusted.
  std::string v16 = withLine(withLine(withLine(kSampleFile, 0, "#16"), 19, "GESTURE_DISABLED"), 21,
                             "0.5 0.5 0.5 0.5 0.5 0.5 0.5");
  v16.erase(lineStart(v16, 3), lineStart(v16, 6) - lineStart(v16, 3));
  owner->contdIdentificationSmoothing = 9;
  ASSERT_EQ(load(m, v16, nullptr, owner.get()), 0);
  EXPECT_FALSE(m.gestures[0]->gestureEnabled);
  EXPECT_EQ(m.gestureMeans[0], std::vector<double>(7, 0.5));
  EXPECT_EQ(owner->contdIdentificationSmoothing, 3);
  EXPECT_EQ(p.updateHeadPositionPolicy, 0);

  // A number above 18 reads like 18; CRLF loads, but its "i" line no longer says invalid.
  std::string crlf;
  for (char c : withLine(kSampleFile, 0, "#25")) crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
  ASSERT_EQ(load(m, crlf, nullptr, owner.get()), 0);
  EXPECT_FALSE(m.networkInvalid);
  EXPECT_EQ(m.gestures[0]->gestureSamples[0]->headPoints.size(), 2u);
}

// One line of the sample file changed at a time; the first three stay within the rules.
TEST(DatabaseFormatTest, EachBrokenRuleFails) {
  GestureModel m;
  const std::vector<std::pair<size_t, std::string>> lines = {
      {1, "1.0"}, {6, "2.5"}, {25, "o"},
      {1, "1.5"}, {1, "-1e-9"}, {2, "002"}, {6, "0 1"}, {6, "1 inf"}, {7, "6"}, {7, "-1"}, {12, "4"}, {13, "2"},
      {15, "-1"}, {16, "1.0"}, {16, "0"}, {17, "10001"}, {19, "ENABLED"}, {20, "SOME METADATA"}, {20, "METADATA:"},
      {21, "0 0 0 0 0 0"}, {22, "0 0 0 0 0 0 0 0"}, {22, "0 0 0 0 0 0\r0"}, {23, "10001"}, {24, "2 0 0 0 0 0 0 1"},
      {24, "0 0 0 0 0 0 0 1 1 1 1 0 0 0 1"}, {26, "METADATA:\n0 "}, {26, "SOMETHING"}};
  for (size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(load(m, withLine(kSampleFile, lines[i].first, lines[i].second)), i < 3 ? 0 : -4) << lines[i].second;
  }
  const std::string sample(kSampleFile);
  for (size_t cut : {size_t{0}, size_t{40}, sample.find("NO METADATA"), sample.size() - 14}) {
    EXPECT_EQ(load(m, sample.substr(0, cut)), -4) << cut;
  }
}

// Damaged files in their thousands: only 0 or -4, never a crash, a hang or a runaway allocation.
TEST(DatabaseFormatTest, DamagedFilesNeverCrashTheReader) {
  const auto started = std::chrono::steady_clock::now();
  std::unique_ptr<Metadata> setMetadata(metadata("set bytes")), gestureMetadata(metadata("ab\ncd"));
  GestureModel full;
  buildModel(full, setMetadata.get(), gestureMetadata.get());
  const std::vector<std::string> seeds = {kSampleFile, kVersion12, save(full)};
  const char* huge[] = {"2147483647", "-2147483648", "4294967295", "99999999999999999999", "10000", "-1", "1000000"};
  const char alphabet[] = "0123456789-+.eEinfINaxM: \n\r\t#\0";
  std::mt19937 random(20240531u);
  int loaded = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string text = seeds[random() % seeds.size()];
    const size_t lines = static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
    const size_t at = lineStart(text, random() % lines), length = text.find('\n', at) + 1 - at;
    switch (round % 5) {
      case 0:
        for (int k = 0; k < 3; ++k) {
          text[random() % text.size()] =
              random() % 4 == 0 ? static_cast<char>(random()) : alphabet[random() % (sizeof(alphabet) - 1)];
        }
        break;
      case 1: text.resize(random() % text.size()); break;
      case 2: text.insert(at, text.substr(at, length)); break;
      case 3: text.erase(at, length); break;
      default: text.replace(at, length - 1, huge[random() % 7]);  // a count gone wild, or a stray number
    }
    GestureModel m;
    const int result = load(m, text, IGestureRecognition::getDefaultMetadataCreatorFunction());
    ASSERT_TRUE(result == 0 || result == -4) << text;
    loaded += result == 0;
    delete m.metadata;
    for (Gesture* g : m.gestures) delete g->gestureMetadata;
  }
  EXPECT_GT(loaded, 100);  // the mutations leave plenty of files whole
  EXPECT_LT(std::chrono::steady_clock::now() - started, testing_support::scaledSeconds(10));
}

}  // namespace
}  // namespace zando
