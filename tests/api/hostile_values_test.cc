// Hostile values at the flat face, on a recogniser and on a combination object: non-finite poses,
// out-of-range indices and counts, null pointers and paths that cannot be used. Every call must
// come back with its code, an index or a count; nothing may crash, hang or throw.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

#include "scratch_files.h"
#include "waiting.h"
#include "zando/zando.h"

namespace {

using zando::testing_support::scratchPath;
using zando::testing_support::waitUntil;

bool isCode(int code) {
  static const int kCodes[] = {-1, -2, -3, -4, -6, -7, -8, -9, -10, -11, -12, -13, -14, -15, -17, -18, -19};
  return std::find(std::begin(kCodes), std::end(kCodes), code) != std::end(kCodes);
}

// Expectations beside an exact code; no call returns these numbers.
constexpr int kAnyCode = 1000;    // a documented negative code
constexpr int kAnyResult = 1001;  // an index, a count or a documented code
constexpr int kAnyIndex = 1002;   // an index or a count
void expectCode(int result, int expected) {
  if (expected == kAnyCode || expected == kAnyResult) {
    EXPECT_TRUE(isCode(result) || (expected == kAnyResult && result >= 0)) << result;
  } else if (expected == kAnyIndex) {
    EXPECT_GE(result, 0);
  } else {
    EXPECT_EQ(result, expected);
  }
}
// The results of a list of calls, made in order; a failure names the call's place in the list.
void expectAll(int expected, std::initializer_list<int> answers) {
  int place = 0;
  for (int result : answers) {
    SCOPED_TRACE("call " + std::to_string(place++) + " of the list");
    expectCode(result, expected);
  }
}

const int kBadIndices[] = {-1, INT_MIN, 2, INT_MAX};  // every object below has two of each thing
const int kSizes[] = {INT_MIN, -1, 0, 1, INT_MAX};
constexpr int kPoints = 10;  // points of each recorded sample

// One pose in every form the flat face takes. Slots 0-2 are the position x, 3-6 the quaternion q
// (3-5 are also the Euler angles), 7-22 the sixteen elements of the matrix m.
struct Pose {
  double x[3] = {0.1, 1.4, 0.4};
  double q[4] = {0.0, 0.0, 0.0, 1.0};
  double m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0.1, 1.4, 0.4, 1}};

  Pose moved(int step) const {
    Pose p = *this;
    p.x[0] = p.m[3][0] += 0.04 * step;
    p.x[1] = p.m[3][1] += 0.01 * step * step;
    return p;
  }
  Pose poisoned(int slot, double value) const {
    Pose p = *this;
    (slot < 3 ? p.x[slot] : slot < 7 ? p.q[slot - 3] : p.m[(slot - 7) / 4][(slot - 7) % 4]) = value;
    return p;
  }
};
constexpr int kSlots = 23;

// Room for the results of an identification; room() also resets the count of entries.
struct Results {
  double p[8], s[8], position[3], scale, directions[3][3], probability, similarity;
  int count;
} out;
int* room() {
  out.count = 8;
  return &out.count;
}
#define STROKE_INFO out.position, &out.scale, out.directions[0], out.directions[1], out.directions[2]

// A call that takes a pose, the slots it reads, and its result for a non-finite value among them:
// positions and quaternions are checked, matrices are not.
struct PoseCall {
  const char* name;
  int firstSlot, endSlot;
  int onNonFinite;
  int recordAs;  // the gesture of the stroke around the call, -1 to identify
  int (*call)(void*, const Pose&);
};
#define AT(call) [](void* h, const Pose& p) { return call; }

const std::vector<PoseCall> kRecognizerCalls = {
    {"startStroke", 0, 7, -18, -1, AT(GestureRecognition_startStroke(h, p.x, p.q, -1))},
    {"startStrokeM", 7, 23, 0, -1, AT(GestureRecognition_startStrokeM(h, p.m, -1))},
    {"startStrokeM recording", 7, 23, 0, 0, AT(GestureRecognition_startStrokeM(h, p.m, 0))},
    {"updateHeadPositionQ", 0, 7, 0, -1, AT(GestureRecognition_updateHeadPositionQ(h, p.x, p.q))},
    {"updateHeadPositionM", 7, 23, 0, -1, AT(GestureRecognition_updateHeadPositionM(h, p.m))},
    {"contdStroke", 0, 3, -18, -1, AT(GestureRecognition_contdStroke(h, p.x))},
    {"contdStrokeQ", 0, 7, -18, -1, AT(GestureRecognition_contdStrokeQ(h, p.x, p.q))},
    {"contdStrokeE", 0, 6, -18, -1, AT(GestureRecognition_contdStrokeE(h, p.x, p.q))},
    {"contdStrokeM", 7, 23, 0, -1, AT(GestureRecognition_contdStrokeM(h, p.m))},
    {"contdRecord", 0, 7, -18, 0, AT(GestureRecognition_contdRecord(h, p.x, p.q))},
    {"contdRecordM", 7, 23, kAnyResult, 0, AT(GestureRecognition_contdRecordM(h, p.m))},
    {"contdIdentify", 0, 7, -18, -1, AT(GestureRecognition_contdIdentify(h, p.x, p.q, nullptr))},
    {"contdIdentifyM", 7, 23, kAnyResult, -1, AT(GestureRecognition_contdIdentifyM(h, p.m, &out.similarity))},
    {"contdIdentifyAndGetStroke", 0, 7, -18, -1,
     AT(GestureRecognition_contdIdentifyAndGetStroke(h, p.x, p.q, &out.similarity, STROKE_INFO))},
    {"contdIdentifyAndGetAll", 0, 7, -18, -1,
     AT(GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(h, p.x, p.q, out.p, out.s, room()))},
    {"contdIdentifyAndGetAllM", 7, 23, kAnyResult, -1,
     AT(GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(h, p.m, out.p, out.s, room()))},
    {"contdIdentifyAndGetStrokeAndGetAll", 0, 7, -18, -1,
     AT(GestureRecognition_contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(h, p.x, p.q, out.p, out.s,
                                                                                           room(), STROKE_INFO))}};
const std::vector<PoseCall> kCombinationCalls = {
    {"startStroke", 0, 7, -18, -1, AT(GestureCombinations_startStroke(h, 0, p.x, p.q, -1))},
    {"startStrokeM recording", 7, 23, 0, 0, AT(GestureCombinations_startStrokeM(h, 0, p.m, 0))},
    {"updateHeadPositionQ", 0, 7, 0, -1, AT(GestureCombinations_updateHeadPositionQ(h, p.x, p.q))},
    {"updateHeadPositionM", 7, 23, 0, -1, AT(GestureCombinations_updateHeadPositionM(h, p.m))},
    {"contdStroke", 0, 3, -18, -1, AT(GestureCombinations_contdStroke(h, 0, p.x))},
    {"contdStrokeQ", 0, 7, -18, -1, AT(GestureCombinations_contdStrokeQ(h, 0, p.x, p.q))},
    {"contdStrokeE", 0, 6, -18, -1, AT(GestureCombinations_contdStrokeE(h, 0, p.x, p.q))},
    {"contdStrokeM", 7, 23, 0, -1, AT(GestureCombinations_contdStrokeM(h, 0, p.m))},
    {"contdRecord", 0, 7, -18, 0, AT(GestureCombinations_contdRecord(h, p.x, p.q))},
    {"contdRecordM", 7, 23, kAnyResult, 0, AT(GestureCombinations_contdRecordM(h, p.m))},
    {"contdRecordPart", 0, 7, -18, 0, AT(GestureCombinations_contdRecordPart(h, 0, p.x, p.q))},
    {"contdRecordPartM", 7, 23, kAnyResult, 0, AT(GestureCombinations_contdRecordPartM(h, 0, p.m))},
    {"contdIdentify", 0, 7, -18, -1, AT(GestureCombinations_contdIdentify(h, p.x, p.q, &out.similarity, out.p, out.s))},
    {"contdIdentifyM", 7, 23, kAnyResult, -1, AT(GestureCombinations_contdIdentifyM(h, p.m, nullptr, nullptr, nullptr))}};

// How a stroke runs on one object type.
struct StrokeFace {
  int (*start)(void*, const Pose&, int);
  int (*add)(void*, const Pose&);
  std::vector<int (*)(void*)> ends;  // taken in turn

  void record(void* handle, int gesture) const {
    for (int s = 0; s < 2; ++s) {
      ASSERT_EQ(start(handle, Pose(), gesture), 0);
      for (int i = 0; i < kPoints; ++i) ASSERT_EQ(add(handle, Pose().moved(i + s)), 0);
      ASSERT_GE(ends[0](handle), 0);
    }
  }
};

const StrokeFace kRecognizer = {
    [](void* h, const Pose& p, int g) { return GestureRecognition_startStroke(h, p.x, p.q, g); },
    [](void* h, const Pose& p) { return GestureRecognition_contdStrokeQ(h, p.x, p.q); },
    {[](void* h) { return GestureRecognition_endStroke(h, nullptr, nullptr, nullptr, nullptr, nullptr); },
     [](void* h) { return GestureRecognition_endStrokeAndGetSimilarity(h, &out.similarity, STROKE_INFO); },
     [](void* h) {
       return GestureRecognition_endStrokeAndGetAllProbabilities(h, out.p, room(), nullptr, nullptr, nullptr,
                                                                 nullptr, nullptr);
     },
     [](void* h) {
       return GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(h, out.p, out.s, room(), STROKE_INFO);
     }}};

const StrokeFace kCombination = {
    [](void* h, const Pose& p, int g) { return GestureCombinations_startStroke(h, 0, p.x, p.q, g); },
    [](void* h, const Pose& p) { return GestureCombinations_contdStrokeQ(h, 0, p.x, p.q); },
    {[](void* h) { return GestureCombinations_endStroke(h, 0, nullptr, nullptr, nullptr, nullptr, nullptr); },
     [](void* h) {
       const int ended = GestureCombinations_endStroke(h, 0, STROKE_INFO);
       return ended < 0 ? ended
                        : GestureCombinations_identifyGestureCombination(h, &out.probability, &out.similarity, out.p,
                                                                         out.s);
     }}};

// Training for no time at all leaves a network of random weights, and the samples' means.
void trainForNoTime(void* h, void (*setTime)(void*, int), int (*start)(void*), int (*isTraining)(void*)) {
  setTime(h, 0);
  EXPECT_EQ(start(h), 0);
  EXPECT_TRUE(waitUntil([&] { return isTraining(h) == 0; }));
}

// Two gestures of two samples each, identified by comparison with samples, by a network or by shape.
void* recognizer(bool enhanced, bool trained) {
  void* gro = GestureRecognition_create();
  for (int g = 0; g < 2; ++g) {
    EXPECT_EQ(GestureRecognition_createGesture(gro, "g", nullptr), g);
    kRecognizer.record(gro, g);
  }
  EXPECT_EQ(GestureRecognition_setEnhancedRecognition(gro, enhanced ? 1 : 0), 0);
  if (trained) {
    trainForNoTime(gro, GestureRecognition_setMaxTrainingTime, GestureRecognition_startTraining,
                   GestureRecognition_isTraining);
  }
  return gro;
}

// One gesture of two samples on part 0, wanted by the one combination.
void* combination(bool enhanced, bool trained) {
  void* gco = GestureCombinations_create(2);
  for (int part = 0; part < 2; ++part) EXPECT_EQ(GestureCombinations_createGesture(gco, part, "raise", nullptr), 0);
  EXPECT_EQ(GestureCombinations_createGestureCombination(gco, "left raised"), 0);
  EXPECT_EQ(GestureCombinations_setCombinationPartGesture(gco, 0, 0, 0), 0);
  kCombination.record(gco, 0);
  EXPECT_EQ(GestureCombinations_setEnhancedRecognition(gco, enhanced ? 1 : 0), 0);
  if (trained) {
    trainForNoTime(gco, GestureCombinations_setMaxTrainingTime, GestureCombinations_startTraining,
                   GestureCombinations_isTraining);
  }
  return gco;
}

// For each non-finite value in each slot: a stroke of three good points, the call, and an end of
// the stroke, which takes whatever the call let in to identification or into a sample.
void drivePoses(void* handle, const StrokeFace& face, const std::vector<PoseCall>& calls) {
  size_t round = 0;
  const double infinity = std::numeric_limits<double>::infinity();
  for (double bad : {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity}) {
    for (int slot = 0; slot < kSlots; ++slot) {
      for (const PoseCall& c : calls) {
        SCOPED_TRACE(std::string(c.name) + ", slot " + std::to_string(slot) + ", " + std::to_string(bad));
        const Pose good;
        ASSERT_EQ(face.start(handle, good, c.recordAs), 0);
        for (int i = 1; i <= 3; ++i) ASSERT_EQ(face.add(handle, good.moved(i)), 0);
        const int result = c.call(handle, good.poisoned(slot, bad));
        const bool read = slot >= c.firstSlot && slot < c.endSlot;
        expectCode(result, read ? c.onNonFinite : kAnyResult);
        if (!read) {
          EXPECT_NE(result, ReturnCode_InvalidParameter);
        }
        expectCode(face.ends[round++ % face.ends.size()](handle), kAnyResult);
      }
    }
  }
}

// Both object types by every route of identification; at the end a save and a load of the sets that
// the unchecked matrix forms have filled with non-finite samples.
TEST(HostileValues, NonFiniteValuesInEveryPoseArgument) {
  const std::string path = scratchPath("non_finite.zip");
  for (const char* mode : {"samples", "network", "enhanced"}) {
    SCOPED_TRACE(std::string("identified by ") + mode);
    const bool enhanced = mode == std::string("enhanced"), trained = mode == std::string("network");
    void* gro = recognizer(enhanced, trained);
    drivePoses(gro, kRecognizer, kRecognizerCalls);
    EXPECT_EQ(GestureRecognition_saveToFile(gro, path.c_str()), 0);
    expectCode(GestureRecognition_loadFromFile(gro, path.c_str(), nullptr), kAnyResult);
    GestureRecognition_delete(gro);

    void* gco = combination(enhanced, trained);
    drivePoses(gco, kCombination, kCombinationCalls);
    EXPECT_EQ(GestureCombinations_saveToFile(gco, path.c_str()), 0);
    expectCode(GestureCombinations_loadFromFile(gco, path.c_str(), nullptr), kAnyResult);
    GestureCombinations_delete(gco);
  }
  std::remove(path.c_str());
}

// Two gestures of two samples each, trained for no time at all, which still leaves their means.
TEST(HostileValues, BadIndicesCountsAndNullPointersOnARecogniser) {
  void* gro = recognizer(false, true);
  void* other = GestureRecognition_create();
  ASSERT_EQ(GestureRecognition_createGesture(other, "g", nullptr), 0);
  const int meanLength = GestureRecognition_getGestureMeanLength(gro, 0);
  const Pose pose;
  const double *x = pose.x, *q = pose.q;
  char name[16];
  double hands[64][3], turns[64][4], v[8];
  for (int i : kBadIndices) {
    SCOPED_TRACE(i);
    expectAll(
        -2, {GestureRecognition_deleteGesture(gro, i), GestureRecognition_deleteGestureSample(gro, 0, i),
             GestureRecognition_getGestureNameLength(gro, i), GestureRecognition_setGestureName(gro, i, "x"),
             GestureRecognition_getGestureSampleType(gro, 0, i), GestureRecognition_setGestureSampleType(gro, i, 0, 0),
             GestureRecognition_importGestureSamples(gro, other, i, 0),
             GestureRecognition_importGestureSamples(gro, other, 0, i)});
    expectAll(
        0, {GestureRecognition_getGestureName(gro, i) != nullptr, GestureRecognition_copyGestureName(gro, i, name, 16),
            GestureRecognition_getGestureNumberOfSamples(gro, i),
            GestureRecognition_getGestureSampleStroke(gro, 0, i, 1, 64, hands, turns, hands, turns),
            GestureRecognition_getGestureMeanStroke(gro, i, hands, turns, 64, v, v, v)});
    expectAll(-18, {GestureRecognition_setGestureSampleType(gro, 0, 0, i),
                    GestureRecognition_setUpdateHeadPositionPolicy(gro, i)});
    expectAll(i < 0 ? -18 : -1, {GestureRecognition_getTrainingParameter(gro, i)});
    expectAll(i < 0 ? -18 : 0, {GestureRecognition_setTrainingParameter(gro, i, 7)});
    expectAll(i < 0 ? 0 : -2,
              {GestureRecognition_startStroke(gro, x, q, i), GestureRecognition_startStrokeM(gro, pose.m, i)});
    // Settings are stored as they come, and a stroke that reads them still answers.
    GestureRecognition_setRotationalFrameOfReferenceRotationOrder(gro, i);
    expectAll(
        0, {GestureRecognition_setContdIdentificationPeriod(gro, i),
            GestureRecognition_setContdIdentificationSmoothing(gro, i), GestureRecognition_startStroke(gro, x, q, -1),
            GestureRecognition_contdStrokeE(gro, pose.moved(1).x, q),
            GestureRecognition_contdStrokeE(gro, pose.moved(2).x, q)});
    expectAll(kAnyResult, {GestureRecognition_contdIdentify(gro, x, q, v), GestureRecognition_pruneStroke(gro, i, i),
                           GestureRecognition_endStroke(gro, v, v, v, v + 3, v + 5)});
  }
  GestureRecognition_setRotationalFrameOfReferenceRotationOrder(gro, 2);
  GestureRecognition_setContdIdentificationPeriod(gro, 1000);

  // Capacities: a short one is honoured, a negative one comes back as it went in, and a huge one
  // writes no more than there is.
  void* metadata = GestureRecognition_createDefaultMetadata();
  ASSERT_EQ(GestureRecognition_setDefaultMetadataData(metadata, "bytes", 5), 0);
  const int processed = GestureRecognition_getGestureSampleLength(gro, 0, 0, 1);
  for (int size : kSizes) {
    SCOPED_TRACE(size);
    EXPECT_EQ(GestureRecognition_getGestureSampleStroke(gro, 0, 0, 0, size, hands, turns, hands, turns),
              std::min(kPoints, size));
    EXPECT_EQ(GestureRecognition_getGestureSampleStroke(gro, 0, 0, 1, size, hands, turns, hands, turns),
              std::min(processed, size));
    EXPECT_EQ(GestureRecognition_getGestureMeanStroke(gro, 1, hands, turns, size, v, v, v), std::min(meanLength, size));
    EXPECT_EQ(GestureRecognition_copyGestureName(gro, 0, name, size), std::min(1, size));
    EXPECT_EQ(GestureRecognition_copyVersionString(name, size),
              std::min(GestureRecognition_getVersionStringLength(), size));
    EXPECT_EQ(GestureRecognition_getDefaultMetadataData(metadata, name, size), std::max(0, std::min(5, size)));
    EXPECT_TRUE(isCode(GestureRecognition_loadFromBuffer(other, name, std::min(size, 0), nullptr)));
    ASSERT_EQ(GestureRecognition_startStroke(gro, x, q, -1), 0);
    for (int k = 1; k <= 3; ++k) ASSERT_EQ(GestureRecognition_contdStroke(gro, pose.moved(k).x), 0);
    int counts[2] = {size, size};  // of the running and of the ended stroke
    expectAll(size < 1 ? -18 : kAnyIndex,
              {GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(gro, x, q, v, v, &counts[0]),
               GestureRecognition_endStrokeAndGetAllProbabilities(gro, v, &counts[1], nullptr, nullptr, nullptr,
                                                                  nullptr, nullptr)});
    for (int count : counts) EXPECT_EQ(count, std::max(0, std::min(2, size)));
  }
  GestureRecognition_deleteDefaultMetadata(metadata);

  // Null pointers: -18 where the call needs them, nothing written where they may be left out.
  ASSERT_EQ(GestureRecognition_startStroke(gro, x, q, 0), 0);
  for (int k = 1; k <= 3; ++k) ASSERT_EQ(GestureRecognition_contdStroke(gro, pose.moved(k).x), 0);
  expectAll(-18,
            {GestureRecognition_startStroke(gro, nullptr, q, -1), GestureRecognition_startStrokeM(gro, nullptr, -1),
             GestureRecognition_updateHeadPositionM(gro, nullptr), GestureRecognition_contdStroke(gro, nullptr),
             GestureRecognition_contdStrokeQ(gro, x, nullptr), GestureRecognition_contdStrokeM(gro, nullptr),
             GestureRecognition_contdRecordM(gro, nullptr), GestureRecognition_contdIdentify(gro, x, nullptr, nullptr),
             GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(gro, x, q, v, v, nullptr),
             GestureRecognition_endStrokeAndGetAllProbabilities(gro, v, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                                nullptr)});
  EXPECT_EQ(GestureRecognition_isStrokeStarted(gro), 1);  // every refusal above leaves the stroke going
  EXPECT_EQ(GestureRecognition_endStrokeAndGetSimilarity(gro, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            -18);
  EXPECT_EQ(GestureRecognition_isStrokeStarted(gro), 0);  // this one ends it first
  expectAll(
      -18,
      {GestureRecognition_createGesture(gro, nullptr, nullptr), GestureRecognition_setGestureName(gro, 0, nullptr),
       GestureRecognition_saveToStream(gro, nullptr), GestureRecognition_loadFromStream(gro, nullptr, nullptr),
       GestureRecognition_importFromStream(gro, nullptr, nullptr),
       GestureRecognition_loadFromBuffer(gro, nullptr, 9, nullptr),
       GestureRecognition_importFromBuffer(gro, nullptr, 9, nullptr),
       GestureRecognition_loadFromBufferAsync(gro, nullptr, 9, nullptr),
       GestureRecognition_importGestureSamples(gro, nullptr, 0, 0), GestureRecognition_importGestures(gro, nullptr),
       GestureRecognition_setDefaultMetadataData(nullptr, "x", 1), GestureRecognition_saveToFile(nullptr, name)});
  expectAll(-3, {GestureRecognition_saveToFileAsync(gro, nullptr),
                 GestureRecognition_loadFromFileAsync(gro, nullptr, nullptr)});
  expectAll(kAnyCode,
            {GestureRecognition_saveToFile(gro, nullptr), GestureRecognition_loadFromFile(gro, nullptr, nullptr),
             GestureRecognition_importFromFile(gro, nullptr, nullptr)});
  expectAll(0, {GestureRecognition_setGestureMetadata(gro, 0, nullptr),
                GestureRecognition_getDefaultMetadataSize(nullptr), GestureRecognition_numberOfGestures(nullptr)});
  EXPECT_EQ(GestureRecognition_numberOfGestures(gro), 2);
  EXPECT_EQ(GestureRecognition_copyGestureName(gro, 0, nullptr, 16), 1);
  EXPECT_EQ(GestureRecognition_getGestureSampleStroke(gro, 0, 0, 0, 64, nullptr, nullptr, nullptr, nullptr), kPoints);
  EXPECT_EQ(GestureRecognition_getGestureMeanStroke(gro, 0, nullptr, nullptr, 64, nullptr, nullptr, nullptr),
            meanLength);
  GestureRecognition_delete(other);
  GestureRecognition_delete(gro);
}

// Two parts, two gestures in part 0 and two combinations: bad part, gesture and combination
// indices in each forwarding family, capacities, null pointers, and objects without parts.
TEST(HostileValues, BadIndicesCountsAndNullPointersOnACombination) {
  void* gco = GestureCombinations_create(2);
  for (int g = 0; g < 2; ++g) ASSERT_EQ(GestureCombinations_createGesture(gco, 0, "g", nullptr), g);
  for (int c = 0; c < 2; ++c) ASSERT_EQ(GestureCombinations_createGestureCombination(gco, "c"), c);
  const Pose pose;
  const double *x = pose.x, *q = pose.q;
  const std::string path = scratchPath("part.zip");
  char name[16];
  double hands[64][3], turns[64][4], v[8];
  for (int i : kBadIndices) {
    SCOPED_TRACE(i);
    int count = 8;
    expectAll(
        -2, {GestureCombinations_startStroke(gco, i, x, q, -1), GestureCombinations_contdStrokeM(gco, i, pose.m),
             GestureCombinations_endStroke(gco, i, v, v, v, v, v), GestureCombinations_pruneStroke(gco, i, 1, 1),
             GestureCombinations_numberOfGestures(gco, i), GestureCombinations_copyGestureName(gco, i, 0, name, 16),
             GestureCombinations_setContdIdentificationPeriod(gco, i, 5),
             GestureCombinations_loadGestureFromBuffer(gco, i, name, 4, nullptr),
             GestureCombinations_saveGestureToFile(gco, i, path.c_str()),
             GestureCombinations_createGesture(gco, i, "x", nullptr),
             GestureCombinations_copyGesture(gco, i, 0, 1, -1, 0), GestureCombinations_copyGesture(gco, 0, 0, i, -1, 0),
             GestureCombinations_getPartProbabilitiesAndSimilarities(gco, i, v, v, &count),
             static_cast<int>(GestureCombinations_gestureRecognitionScore(gco, i)),
             // gestures and samples of part 0, and combinations
             GestureCombinations_deleteGesture(gco, 0, i), GestureCombinations_deleteGestureSample(gco, 0, 0, i),
             GestureCombinations_getGestureSampleType(gco, 0, i, 0),
             GestureCombinations_copyGesture(gco, 0, i, 1, -1, 0), GestureCombinations_deleteGestureCombination(gco, i),
             GestureCombinations_setCombinationPartGesture(gco, 0, i, 0),
             GestureCombinations_getCombinationPartGesture(gco, i, 0),
             GestureCombinations_setGestureCombinationName(gco, i, "x")});
    EXPECT_EQ(count, 0);
    expectAll(-18, {GestureCombinations_contdIdentifyGetLastStrokeInfo(gco, i, v, v, v, v, v),
                    GestureCombinations_contdRecordPart(gco, i, x, q), GestureCombinations_setPartEnabled(gco, i, 1),
                    GestureCombinations_copyGesture(gco, 0, 0, 1, 0, i == 2 ? 3 : i)});  // as a mirror axis
    expectAll(0, {GestureCombinations_isStrokeStarted(gco, i), GestureCombinations_getPartEnabled(gco, i),
                  GestureCombinations_getGestureName(gco, i, 0) != nullptr,
                  GestureCombinations_getGestureSampleStroke(gco, i, 0, 0, 0, 64, hands, turns, hands, turns),
                  GestureCombinations_getGestureMeanStroke(gco, i, 0, hands, turns, 64, v, v, v),
                  GestureCombinations_getGestureCombinationName(gco, i) != nullptr,
                  GestureCombinations_copyGestureCombinationName(gco, i, name, 16)});
    expectAll(i == -1 ? 0 : -2, {GestureCombinations_setCombinationPartGesture(gco, 0, 0, i)});  // -1: stay idle
    expectAll(i < 0 ? kAnyIndex : -2, {GestureCombinations_copyGesture(gco, 0, 0, 1, i, 0)});    // < 0: a new gesture
    expectAll(i < 0 ? -18 : -1, {GestureCombinations_getTrainingParameter(gco, i)});
    expectAll(i < 0 ? -18 : 0, {GestureCombinations_setTrainingParameter(gco, i, 7)});
  }
  for (int size : kSizes) {
    SCOPED_TRACE(size);
    int count = size;
    EXPECT_EQ(GestureCombinations_getPartProbabilitiesAndSimilarities(gco, 0, v, v, &count), size < 1 ? -18 : -13);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(GestureCombinations_copyGestureName(gco, 0, 0, name, size), std::min(1, size));
    EXPECT_EQ(GestureCombinations_copyGestureCombinationName(gco, 0, name, size), std::min(1, size));
    EXPECT_TRUE(isCode(GestureCombinations_loadGestureFromBuffer(gco, 1, name, std::min(size, 0), nullptr)));
  }

  ASSERT_EQ(GestureCombinations_startStroke(gco, 0, x, q, 0), 0);
  for (int k = 1; k <= 3; ++k) ASSERT_EQ(GestureCombinations_contdStroke(gco, 0, pose.moved(k).x), 0);
  expectAll(-18, {GestureCombinations_startStroke(gco, 0, nullptr, q, -1),
                  GestureCombinations_startStrokeM(gco, 0, nullptr, -1),
                  GestureCombinations_contdStroke(gco, 0, nullptr),
                  GestureCombinations_contdStrokeM(gco, 0, nullptr),
                  GestureCombinations_contdIdentify(gco, nullptr, q, nullptr, nullptr, nullptr),
                  GestureCombinations_contdIdentifyM(gco, nullptr, nullptr, nullptr, nullptr),
                  GestureCombinations_contdRecord(gco, x, nullptr),
                  GestureCombinations_contdRecordPartM(gco, 0, nullptr),
                  GestureCombinations_getPartProbabilitiesAndSimilarities(gco, 0, v, v, nullptr),
                  GestureCombinations_createGesture(gco, 0, nullptr, nullptr),
                  GestureCombinations_createGestureCombination(gco, nullptr),
                  GestureCombinations_setGestureCombinationName(gco, 0, nullptr),
                  GestureCombinations_saveToFile(gco, nullptr),
                  GestureCombinations_loadFromFile(gco, nullptr, nullptr),
                  GestureCombinations_importFromFile(gco, nullptr, nullptr),
                  GestureCombinations_loadFromBuffer(gco, nullptr, 9, nullptr),
                  GestureCombinations_loadFromStream(gco, nullptr, nullptr),
                  GestureCombinations_importFromStream(gco, nullptr, nullptr),
                  GestureCombinations_loadFromBufferAsync(gco, nullptr, 9, nullptr),
                  GestureCombinations_startStroke(nullptr, 0, x, q, -1)});
  EXPECT_EQ(GestureCombinations_isStrokeStarted(gco, 0), 1);
  expectAll(0, {GestureCombinations_updateHeadPositionQ(gco, nullptr, q),
                GestureCombinations_updateHeadPositionM(gco, nullptr),
                GestureCombinations_endStroke(gco, 0, nullptr, nullptr, nullptr, nullptr, nullptr),
                GestureCombinations_numberOfParts(nullptr)});
  EXPECT_EQ(GestureCombinations_numberOfGestures(gco, 0), 2);
  EXPECT_EQ(GestureCombinations_numberOfGestureCombinations(gco), 2);
  expectCode(GestureCombinations_identifyGestureCombination(gco, nullptr, nullptr, nullptr, nullptr), kAnyResult);
  expectAll(-3, {GestureCombinations_saveToFileAsync(gco, nullptr),
                 GestureCombinations_loadFromFileAsync(gco, nullptr, nullptr)});
  GestureCombinations_delete(nullptr);
  GestureCombinations_delete(gco);
  for (int parts : {0, -1, INT_MIN}) {
    void* empty = GestureCombinations_create(parts);
    ASSERT_NE(empty, nullptr);
    expectAll(0, {GestureCombinations_numberOfParts(empty), GestureCombinations_createGestureCombination(empty, "c"),
                  GestureCombinations_updateHeadPositionQ(empty, x, q), GestureCombinations_isStrokeStarted(empty, 0)});
    expectAll(-2, {GestureCombinations_startStroke(empty, 0, x, q, -1),
                   GestureCombinations_setCombinationPartGesture(empty, 0, 0, 0)});
    expectAll(-18, {GestureCombinations_setPartEnabled(empty, 0, 1), GestureCombinations_contdRecordPart(empty, 0, x, q)});
    EXPECT_EQ(GestureCombinations_startTraining(empty), -9);
    EXPECT_EQ(GestureCombinations_identifyGestureCombination(empty, v, v, v, v), -1);  // no part can fit
    GestureCombinations_delete(empty);
  }
}

// ---- Paths ----

struct JobEnd {
  std::atomic<int> calls{0}, result{1};
};
void noteJobEnd(int result, void* metadata) {
  static_cast<JobEnd*>(metadata)->result = result;
  static_cast<JobEnd*>(metadata)->calls++;
}

// A file function; whether it saves and whether it runs in the background is in its name.
struct FileCall {
  std::string name;
  bool combination;
  std::function<int(void*, const char*)> call;
  bool saves() const { return name.rfind("save", 0) == 0; }
  bool background() const { return name.find("Async") != std::string::npos; }
};
const FileCall kFileCalls[] = {
    {"loadFromFile", false, [](void* h, const char* p) { return GestureRecognition_loadFromFile(h, p, nullptr); }},
    {"importFromFile", false,
     [](void* h, const char* p) { return GestureRecognition_importFromFile(h, p, nullptr); }},
    {"loadFromFileAsync", false,
     [](void* h, const char* p) { return GestureRecognition_loadFromFileAsync(h, p, nullptr); }},
    {"saveToFile", false, GestureRecognition_saveToFile},
    {"saveToFileAsync", false, GestureRecognition_saveToFileAsync},
    {"loadFromFile", true, [](void* h, const char* p) { return GestureCombinations_loadFromFile(h, p, nullptr); }},
    {"importFromFile", true, [](void* h, const char* p) { return GestureCombinations_importFromFile(h, p, nullptr); }},
    {"loadGestureFromFile", true,
     [](void* h, const char* p) { return GestureCombinations_loadGestureFromFile(h, 0, p, nullptr); }},
    {"loadFromFileAsync", true,
     [](void* h, const char* p) { return GestureCombinations_loadFromFileAsync(h, p, nullptr); }},
    {"saveToFile", true, GestureCombinations_saveToFile},
    {"saveGestureToFile", true, [](void* h, const char* p) { return GestureCombinations_saveGestureToFile(h, 0, p); }},
    {"saveToFileAsync", true, GestureCombinations_saveToFileAsync}};

// An object with one gesture whose background jobs report their end.
#define REPORT_ENDS(P)                                                                                              \
  for (auto set : {P##_setSavingFinishCallbackFunction, P##_setLoadingFinishCallbackFunction}) set(h, &noteJobEnd); \
  for (auto set : {P##_setSavingFinishCallbackMetadata, P##_setLoadingFinishCallbackMetadata}) set(h, end)
void* createReporting(bool combination, JobEnd* end) {
  void* h = combination ? GestureCombinations_create(2) : GestureRecognition_create();
  if (combination) {
    GestureCombinations_createGesture(h, 0, "g", nullptr);
    REPORT_ENDS(GestureCombinations);
  } else {
    GestureRecognition_createGesture(h, "g", nullptr);
    REPORT_ENDS(GestureRecognition);
  }
  return h;
}
#undef REPORT_ENDS

// Every file function of both object types, each on a new object; a background job must bring the
// code of its blocking form to its finish callback. A folder given as a path must survive.
TEST(HostileValues, UnusablePathsInEveryFileFunction) {
  const std::string folder = scratchPath("folder"), unreadable = scratchPath("unreadable.zip");
  ASSERT_TRUE(std::filesystem::create_directory(folder));
  std::FILE* file = std::fopen(unreadable.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  std::fputs("not a gesture file\n", file);
  std::fclose(file);
  std::error_code ignored;
  std::filesystem::permissions(unreadable, std::filesystem::perms::none, ignored);
  // A privileged user reads it anyway, and so does everyone on Windows, where no permission hides it.
  const bool readable = std::ifstream(unreadable, std::ios::binary).is_open();
  const std::string stem = scratchPath("long_");
  const struct {
    const char* name;
    std::string path;
    int load, save;
    bool refusedAtStart;  // a background job does not even start
  } cases[] = {{"empty", "", -3, -3, true},
               {"2048-byte", stem + std::string(2048 - stem.size(), 'x'), -3, -3, false},
               {"2049-byte", stem + std::string(2049 - stem.size(), 'x'), -3, -3, true},
               {"unreadable", unreadable, readable ? -4 : -3, kAnyResult, false},
               {"missing folder's", scratchPath("missing/set.zip"), -3, -3, false},
               {"folder", folder, kAnyCode, -11, false}};
  for (const auto& c : cases) {
    for (bool saves : {false, true}) {  // loads first: a save may replace the file a load reads
      for (const FileCall& call : kFileCalls) {
        if (call.saves() != saves) continue;
        SCOPED_TRACE(std::string(c.name) + " path, " + (call.combination ? "combination " : "recogniser ") + call.name);
        JobEnd end;
        void* handle = createReporting(call.combination, &end);
        const int result = call.call(handle, c.path.c_str());
        if (!call.background()) {
          expectCode(result, saves ? c.save : c.load);
        } else if (c.refusedAtStart) {
          EXPECT_EQ(result, -3);
        } else {
          ASSERT_EQ(result, 0);
          ASSERT_TRUE(waitUntil([&] { return end.calls > 0; }));
          expectCode(end.result, saves ? c.save : c.load);
          // A combination save that failed keeps its state, as its state machine is meant to.
          if (!call.combination || !saves || end.result >= 0 || end.result == -11) {
            EXPECT_TRUE(waitUntil([&] {
              return call.combination
                         ? GestureCombinations_isSaving(handle) + GestureCombinations_isLoading(handle) == 0
                         : GestureRecognition_isSaving(handle) + GestureRecognition_isLoading(handle) == 0;
            }));
          }
        }
        EXPECT_TRUE(std::filesystem::is_directory(folder)) << "the folder must survive";
        (call.combination ? GestureCombinations_delete : GestureRecognition_delete)(handle);
      }
    }
  }
  std::filesystem::permissions(unreadable, std::filesystem::perms::owner_all, ignored);
  std::remove(unreadable.c_str());
  std::filesystem::remove(folder);
}

}  // namespace
