// The gesture database text: the sample file, exact round trips, every older version, the rules
// that refuse damage, progress, and a storm of damaged files that must never crash the reader.
#include "persistence/database_format.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

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

// Counts live objects, so that tests can see which metadata a load deletes.
struct CountedMetadata : IGestureRecognition::DefaultMetadata {
  static int alive;
  CountedMetadata() { ++alive; }
  ~CountedMetadata() override { --alive; }
};
int CountedMetadata::alive = 0;
Metadata* createCounted() { return new CountedMetadata(); }

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

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string joinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

std::string withLine(const std::string& text, size_t index, const std::string& replacement) {
  std::vector<std::string> lines = splitLines(text);
  lines.at(index) = replacement;
  return joinLines(lines);
}

IGestureRecognition::DefaultMetadata* makeMetadata(const std::string& bytes) {
  auto* m = new CountedMetadata();
  m->data = std::malloc(bytes.size());
  std::memcpy(m->data, bytes.data(), bytes.size());
  m->size = static_cast<int>(bytes.size());
  return m;
}

StrokePoint pose(double x, double y, double z, double qx = 0.0) {
  return StrokePoint(Vector3(x, y, z), Quaternion(qx, 0.0, 0.0, 1.0));
}

// Dyadic values only, so that every number survives its decimal text exactly.
void buildModel(GestureModel& m, Metadata* setMetadata, Metadata* gestureMetadata) {
  m.parameters.waypointCount = 2;
  m.parameters.waypointFeatureMode = 1;  // D = 8 + 2 * 6 = 20
  m.parameters.rotationFrameY = 1;
  m.parameters.rotationOrder = 4;
  m.parameters.updateHeadPositionPolicy = 0;
  m.parameters.featureScaleA = 0.75;
  m.parameters.featureScaleB = 2.5;
  m.parameters.transferMode = 1;
  m.recognitionScore = 0.875;
  m.networkInvalid = false;
  m.metadata = setMetadata;
  const int widths[3] = {20, 4, 3};
  for (int k = 0; k < 2; ++k) {
    Matrix w(widths[k] + 1, widths[k + 1]);
    for (Eigen::Index i = 0; i < w.size(); ++i) w.data()[i] = ((i * 37 + k) % 29 - 14) / 64.0 * (i % 5 ? 1.0 : 1e20);
    m.weights.push_back(w);
  }
  // An empty name must come first: the line breaks after a sample line are all taken with it.
  const char* names[3] = {"", "circle", "wave\x01 twice"};
  for (int g = 0; g < 3; ++g) {
    auto* gesture = new Gesture(names[g], g == 0 ? gestureMetadata : nullptr);
    gesture->gestureEnabled = g != 1;
    for (int s = 0; s < g + 1; ++s) {
      auto* stroke = new Stroke();
      stroke->sampleType = s % 2;
      stroke->headStart = pose(0.0, 1.5, -s / 4.0, 0.125);
      for (int p = 0; p < 3 * g; ++p) {
        stroke->handPoints.push_back(pose(p / 8.0, -1.0 / 1024, 3.0, -0.5));
        stroke->headPoints.push_back(pose(0.0, 1.5 + p / 16.0, 0.0));
      }
      gesture->gestureSamples.push_back(stroke);
    }
    m.gestures.push_back(gesture);
    m.gestureMeans.push_back(std::vector<double>(20, g / 4.0));
    m.gestureDeviations.push_back(std::vector<double>(20, -g / 32.0));
  }
}

// Every value of the file is in the text written back: the filler rows are the only lines whose
// form changes, since the zeros they stand for are now stored rows.
TEST(DatabaseFormatTest, SampleFileLoadsWithEveryValue) {
  std::unique_ptr<IGestureRecognition> owner(IGestureRecognition::create());
  owner->contdIdentificationPeriod = 7;
  GestureModel m;
  m.parameters.rotationOrder = 5;
  m.parameters.featureFlagC = false;
  ASSERT_EQ(load(m, kSampleFile, nullptr, owner.get()), 0);
  std::vector<std::string> expected = splitLines(kSampleFile);
  expected[21] = expected[22] = "0.000000000000000e+00 0.000000000000000e+00 0.000000000000000e+00 "
                                "0.000000000000000e+00 0.000000000000000e+00 0.000000000000000e+00 "
                                "0.000000000000000e+00";
  std::ostringstream out;
  writeGestureDatabase(m, out, owner.get());
  EXPECT_EQ(out.str(), joinLines(expected));
  EXPECT_TRUE(out.flags() & std::ios_base::scientific);
  EXPECT_EQ(out.precision(), 9);
  EXPECT_EQ(m.parameters.transferSlope, 0.33333);
  EXPECT_EQ(m.gestures.at(0)->gestureSamples.at(0)->handPoints.at(1).position.y, 1.1);
  ASSERT_EQ(m.layerBuffers.size(), 1u);
  EXPECT_EQ(m.layerBuffers[0].cols(), 7);  // D, no bias: there is no network
}

TEST(DatabaseFormatTest, FullModelRoundTripsExactly) {
  CountedMetadata::alive = 0;
  const std::string setBytes("set \0 with\nline\r\nends ", 22);
  const std::string gestureBytes("\0\0 \n", 4);
  std::unique_ptr<Metadata> gestureMetadata(makeMetadata(gestureBytes));
  GestureModel original;
  buildModel(original, makeMetadata(setBytes), gestureMetadata.get());
  // An empty block on a gesture ("0 ") reads back as an empty object without failing the load.
  std::unique_ptr<Metadata> emptyMetadata(new CountedMetadata());
  original.gestures[2]->gestureMetadata = emptyMetadata.get();
  std::unique_ptr<IGestureRecognition> owner(IGestureRecognition::create());
  owner->contdIdentificationPeriod = 2500;
  owner->contdIdentificationSmoothing = 0;
  const std::string text = save(original, owner.get());
  delete original.metadata;
  original.metadata = nullptr;

  GestureModel copy;
  copy.metadata = makeMetadata("old");  // replaced by the load, and deleted
  owner->contdIdentificationPeriod = owner->contdIdentificationSmoothing = 1;
  ASSERT_EQ(load(copy, text, &createCounted, owner.get()), 0);
  EXPECT_EQ(save(copy, owner.get()), text);  // metadata bytes, names, poses, period and smoothing
  EXPECT_EQ(CountedMetadata::alive, 5);        // the caller's two gesture blocks, three new ones
  EXPECT_EQ(static_cast<CountedMetadata*>(copy.gestures[2]->gestureMetadata)->size, 0);
  EXPECT_TRUE(copy.parameters.sameAs(original.parameters));
  EXPECT_EQ(copy.weights, original.weights);
  EXPECT_EQ(copy.gestureMeans, original.gestureMeans);
  EXPECT_EQ(copy.gestures[2]->gestureSamples.at(1)->headPoints.at(5).position.y, 1.5 + 5 / 16.0);
  ASSERT_EQ(copy.layerBuffers.size(), 3u);
  EXPECT_EQ(copy.layerBuffers[0].cols(), 21);
  EXPECT_EQ(copy.layerBuffers[1].cols(), 5);
  EXPECT_EQ(copy.layerBuffers[2].cols(), 3);
  delete copy.metadata;
  delete copy.gestures[0]->gestureMetadata;
  delete copy.gestures[2]->gestureMetadata;
}

TEST(DatabaseFormatTest, WriterPairsPosesAndCleansNames) {
  GestureModel m;
  auto* gesture = new Gesture(" two\nlines\r ", nullptr);
  auto* stroke = new Stroke();
  stroke->headStart = pose(9.0, 9.0, 9.0);
  stroke->handPoints = {pose(1, 0, 0), pose(2, 0, 0), pose(3, 0, 0)};
  stroke->headPoints = {pose(0, 1, 0)};
  gesture->gestureSamples = {stroke, new Stroke()};
  m.gestures.push_back(gesture);
  m.weights.push_back(Matrix::Constant(121, 2, std::numeric_limits<double>::infinity()));
  m.weights[0](1, 0) = -std::numeric_limits<double>::infinity();
  m.weights[0](2, 1) = std::numeric_limits<double>::quiet_NaN();
  const std::string text = save(m);
  EXPECT_NE(text.find("\n twolines \n"), std::string::npos);
  GestureModel copy;
  ASSERT_EQ(load(copy, text), 0);
  EXPECT_EQ(copy.gestures[0]->gestureName, "twolines");  // joined and trimmed
  const Stroke& s = *copy.gestures[0]->gestureSamples[0];
  ASSERT_EQ(s.headPoints.size(), 3u);
  EXPECT_EQ(s.headPoints[2].position.y, 1.0);  // the last head pose, repeated
  EXPECT_TRUE(copy.gestures[0]->gestureSamples[1]->handPoints.empty());
  const Matrix& w = copy.weights.at(0);
  EXPECT_EQ(w(0, 0), std::numeric_limits<double>::infinity());
  EXPECT_EQ(w(1, 0), -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(w(2, 1)));
  // A network for 2 outputs with 1 gesture: the reader does not judge fitness.
  EXPECT_EQ(copy.layerBuffers.back().cols(), 2);
}

// Numbers inside a matrix: what a digit starts is read as a stream reads it; a word starting
// with i or I is an infinity, any other word a NaN.
TEST(DatabaseFormatTest, MatrixNumbersReadAsTheStreamWould) {
  // A layer of one column over D = 7 inputs: eight rows, each one number, blank lines between.
  auto withLayer = [](const std::vector<std::string>& rows) {
    std::string layer = "1\n";
    for (const std::string& row : rows) layer += "\n  " + row + "\t\n";
    return withLine(withLine(kSampleFile, 7, "1"), 17, layer + "1");
  };
  const std::vector<std::string> numbers = {"1e", "2.5e+", "0007.25e-2", "1e400", "-1e400", "1e-400", "3.",
                                            "12345678901234567890123"};
  GestureModel m;
  ASSERT_EQ(load(m, withLayer(numbers)), 0);
  for (size_t r = 0; r < numbers.size(); ++r) {
    std::istringstream reference(numbers[r]);
    double expected = 0.0;
    reference >> expected;
    EXPECT_EQ(m.weights[0](static_cast<Eigen::Index>(r), 0), expected) << numbers[r];
  }
  ASSERT_EQ(load(m, withLayer({"INF", "-Infinity", "nan(7)", ".5", "+2", "-0", "7", "8"})), 0);
  const Matrix& w = m.weights[0];
  EXPECT_EQ(w(0, 0), std::numeric_limits<double>::infinity());
  EXPECT_EQ(w(1, 0), -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(w(2, 0)) && std::isnan(w(3, 0)) && std::isnan(w(4, 0)));
  EXPECT_TRUE(w(5, 0) == 0.0 && std::signbit(w(5, 0)));
  // Two numbers where one is due, or a line break inside a row, break the matrix; a trailing one is
  // trimmed away.
  EXPECT_EQ(load(m, withLayer({"1", "2", "3 4", "5", "6", "7", "8", "9"})), -4);
  EXPECT_EQ(load(m, withLayer({"1", "2", "3\r", "5", "6", "7", "8", "9"})), 0);
  EXPECT_EQ(load(m, withLayer({"1", "2", "3\r4", "5", "6", "7", "8", "9"})), -4);
}

TEST(DatabaseFormatTest, OlderVersionsLoadWithAssumedValues) {
  std::unique_ptr<IGestureRecognition> owner(IGestureRecognition::create());
  const std::string pose7 = " 0 1.5 0 0 0 0 1";
  // Version 1: no "#", one network layer whose width (2) is the gesture count, hand poses only.
  std::string v1 = "\n\n0.5\n2.0\n1\n2\n";
  for (int r = 0; r < 35; ++r) v1 += "0.25 -0.5\n";
  for (int g = 0; g < 2; ++g) {
    v1 += "g" + std::to_string(g) + "\nNO METADATA\n" + std::to_string(4 - g) + "\n";
    for (int s = 0; s < 4 - g; ++s) v1 += pose7.substr(1) + " 0.1 1 0.3 0 0 0 1\n";
  }
  GestureModel m;
  m.parameters.rotationFrameX = 1;
  owner->contdIdentificationPeriod = 50;
  ASSERT_EQ(load(m, v1, nullptr, owner.get()), 0);
  EXPECT_EQ(m.parameters.waypointCount, 8);
  EXPECT_EQ(m.parameters.headerFeatureMode, 4);
  EXPECT_EQ(m.parameters.featureFlagA + m.parameters.featureFlagB + m.parameters.transferMode, 0);
  EXPECT_EQ(m.parameters.featureScaleB, 2.0);  // one number sets both scales
  EXPECT_EQ(m.parameters.rotationFrameX, 1);   // left as it was
  EXPECT_EQ(m.parameters.updateHeadPositionPolicy, 0);
  EXPECT_EQ(owner->contdIdentificationPeriod, 1000);
  EXPECT_TRUE(m.networkInvalid);  // gesture 1 has only 3 samples
  ASSERT_EQ(m.gestureCount(), 2);
  EXPECT_EQ(m.gestures[1]->gestureSamples[0]->headPoints.at(0).position.y, 1.5);
  EXPECT_EQ(m.gestureMeans.at(1).size(), 34u);  // recomputed for D = 10 + 8 * 3
  v1.replace(v1.rfind("\n3\n"), 3, "\n4\n");
  v1 += pose7.substr(1) + "\n";
  ASSERT_EQ(load(m, v1), 0);
  EXPECT_FALSE(m.networkInvalid);

  // Version 12: three-character frame line, sample types, stored rows that are replaced.
  const std::string row = "5 5 5 5 5 5 5 5 5 5 5\n";  // D = 8 + 1 * 3
  m.parameters.rotationOrder = 5;
  ASSERT_EQ(load(m, "#12\n0.25\n101\n1 1\n0\n1\n2\n0\n0\n2\n0\n1\n1\nold\nNO METADATA\n" + row + row +
                        "1\n1" + pose7 + " 0.1 1 0.3 0 0 0 1\no\n"),
            0);
  EXPECT_EQ(m.parameters.rotationFrameY, 0);
  EXPECT_EQ(m.parameters.rotationFrameZ, 1);
  EXPECT_EQ(m.parameters.rotationOrder, 5);
  EXPECT_EQ(m.parameters.featureSelector, 2);
  EXPECT_EQ(m.parameters.transferSlope, 0.33333);
  EXPECT_FALSE(m.networkInvalid);
  EXPECT_EQ(m.gestures[0]->gestureSamples[0]->sampleType, 1);
  EXPECT_NE(m.gestureMeans[0], std::vector<double>(11, 5.0));

  // Version 16: enabled lines and set metadata, no policy or owner lines; rows are trusted.
  std::string v16 = withLine(kSampleFile, 0, "#16");
  v16 = withLine(v16, 19, "GESTURE_DISABLED");
  v16 = withLine(v16, 21, "0.5 0.5 0.5 0.5 0.5 0.5 0.5");
  std::vector<std::string> lines = splitLines(v16);
  lines.erase(lines.begin() + 3, lines.begin() + 6);
  owner->contdIdentificationSmoothing = 9;
  ASSERT_EQ(load(m, joinLines(lines), nullptr, owner.get()), 0);
  EXPECT_FALSE(m.gestures[0]->gestureEnabled);
  EXPECT_EQ(m.gestureMeans[0], std::vector<double>(7, 0.5));
  EXPECT_EQ(owner->contdIdentificationSmoothing, 3);
  EXPECT_EQ(m.parameters.updateHeadPositionPolicy, 0);

  // A number above 18 reads like 18; CRLF loads, but its "i" line no longer says invalid.
  std::string crlf;
  for (const std::string& line : splitLines(withLine(kSampleFile, 0, "#25"))) crlf += line + "\r\n";
  ASSERT_EQ(load(m, crlf, nullptr, owner.get()), 0);
  EXPECT_FALSE(m.networkInvalid);
  EXPECT_EQ(m.gestures[0]->gestureSamples[0]->headPoints.size(), 2u);
}

TEST(DatabaseFormatTest, EachBrokenRuleFails) {
  GestureModel m;
  const std::vector<std::pair<size_t, std::string>> accepted = {{1, "1.0"}, {6, "2.5"}, {25, "o"}};
  for (const auto& [line, text] : accepted) EXPECT_EQ(load(m, withLine(kSampleFile, line, text)), 0) << text;
  const std::vector<std::pair<size_t, std::string>> broken = {
      {1, "1.5"},     {1, "-1e-9"},  {2, "002"},           {6, "0 1"},        {6, "1 inf"},
      {7, "6"},       {7, "-1"},     {12, "4"},            {13, "2"},         {15, "-1"},
      {16, "1.0"},    {16, "0"},     {17, "10001"},        {19, "ENABLED"},   {20, "SOME METADATA"},
      {20, "METADATA:"}, {21, "0 0 0 0 0 0"}, {22, "0 0 0 0 0 0 0 0"}, {23, "10001"}, {24, "2 0 0 0 0 0 0 1"},
      {24, "0 0 0 0 0 0 0 1 1 1 1 0 0 0 1"},  {26, "METADATA:\n0 "}, {26, "SOMETHING"}};
  for (const auto& [line, text] : broken) EXPECT_EQ(load(m, withLine(kSampleFile, line, text)), -4) << text;
  const std::string sample(kSampleFile);
  for (size_t cut : {size_t{0}, size_t{40}, sample.find("NO METADATA"), sample.size() - 14}) {
    EXPECT_EQ(load(m, sample.substr(0, cut)), -4) << cut;
  }

  // 10000 gestures load, 10001 do not.
  std::string many = withLine(kSampleFile, 17, "10000");
  const std::string one = "g\nGESTURE_ENABLED\nNO METADATA\n0 0 0 0 0 0 0\n0 0 0 0 0 0 0\n0\n";
  std::string body;
  for (int g = 0; g < 9999; ++g) body += one;
  many.insert(many.rfind("i\n"), body);
  EXPECT_EQ(load(m, many), 0);
  EXPECT_EQ(m.gestureCount(), 10000);

  // A failed set block deletes its new object; the old one is deleted in any case, and a
  // failure after the gesture count leaves the new, partly filled gesture list behind.
  CountedMetadata::alive = 0;
  m.metadata = makeMetadata("old");
  EXPECT_EQ(load(m, withLine(kSampleFile, 26, "METADATA:\n0 "), &createCounted), -4);
  EXPECT_EQ(m.metadata, nullptr);
  EXPECT_EQ(CountedMetadata::alive, 0);
  m.metadata = makeMetadata("old");
  EXPECT_EQ(load(m, withLine(withLine(kSampleFile, 16, "0.5"), 19, "?")), -4);
  EXPECT_EQ(m.parameters.transferSlope, 0.5);
  EXPECT_EQ(m.gestureCount(), 1);
  EXPECT_EQ(m.gestures[0]->gestureName, "wave");
  EXPECT_TRUE(m.gestures[0]->gestureSamples.empty());
  EXPECT_EQ(CountedMetadata::alive, 1);
  delete m.metadata;
}

TEST(DatabaseFormatTest, ProgressPercentages) {
  struct Log {
    static void add(int percent, void* context) { static_cast<std::vector<int>*>(context)->push_back(percent); }
  };
  GestureModel m;
  buildModel(m, nullptr, nullptr);
  std::vector<int> saved, loaded;
  m.saveProgress = &Log::add;
  m.saveProgressContext = &saved;
  const std::string text = save(m);
  GestureModel copy;
  copy.loadProgress = &Log::add;
  copy.loadProgressContext = &loaded;
  ASSERT_EQ(load(copy, text), 0);
  const std::vector<int> expected = {1, 10, 15, 20, 43, 66, 90, 99};
  EXPECT_EQ(saved, expected);
  EXPECT_EQ(loaded, expected);
}

// Damaged files in their thousands: only 0 or -4, never a crash, a hang or a runaway allocation.
TEST(DatabaseFormatTest, DamagedFilesNeverCrashTheReader) {
  const auto started = std::chrono::steady_clock::now();
  std::vector<std::string> seeds = {kSampleFile};
  {
    GestureModel m;
    std::unique_ptr<Metadata> gestureMetadata(makeMetadata("ab\ncd"));
    buildModel(m, makeMetadata("set bytes"), gestureMetadata.get());
    seeds.push_back(save(m));
    delete m.metadata;
    m.metadata = nullptr;
    m.parameters.waypointCount = 1;
    m.weights.clear();
    seeds.push_back(save(m));
  }
  seeds.push_back("#12\n0.25\n101\n1 1\n0\n1\n0\n0\n0\n1\n0\n1\n1\nold\nNO METADATA\n0 0 0 0 0 0 0\n"
                  "0 0 0 0 0 0 0\n2\n1 0 1.5 0 0 0 0 1 0.1 1 0.3 0 0 0 1 0.2 1 0.3 0 0 0 1\n"
                  "0 0 1.5 0 0 0 0 1 0.1 1 0.3 0 0 0 1\no\n");
  const char* huge[] = {"2147483647", "-2147483648", "4294967295", "99999999999999999999", "10000", "-1", "1000000"};
  const char alphabet[] = "0123456789-+.eEinfINaxM: \n\r\t#\0";
  std::mt19937 random(20240531u);
  int loaded = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string text = seeds[random() % seeds.size()];
    std::vector<std::string> lines = splitLines(text);
    const size_t at = random() % lines.size();
    switch (round % 5) {
      case 0:
        for (int k = 0; k < 3; ++k) {
          const size_t i = random() % text.size();
          text[i] = random() % 4 == 0 ? static_cast<char>(random()) : alphabet[random() % (sizeof(alphabet) - 1)];
        }
        break;
      case 1: text.resize(random() % text.size()); break;
      case 2: lines.insert(lines.begin() + static_cast<long>(at), lines[at]); text = joinLines(lines); break;
      case 3: lines.erase(lines.begin() + static_cast<long>(at)); text = joinLines(lines); break;
      default:
        for (size_t i = at; i < lines.size(); ++i) {
          if (!lines[i].empty() && lines[i].find_first_not_of("0123456789") == std::string::npos) {
            lines[i] = huge[random() % 7];
            break;
          }
        }
        text = joinLines(lines);
    }
    GestureModel m;
    const int result = load(m, text, IGestureRecognition::getDefaultMetadataCreatorFunction());
    ASSERT_TRUE(result == 0 || result == -4) << text;
    loaded += result == 0;
    delete m.metadata;
    for (Gesture* g : m.gestures) delete g->gestureMetadata;
  }
  EXPECT_GT(loaded, 100);  // the mutations leave plenty of files whole
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
}

}  // namespace
}  // namespace zando
