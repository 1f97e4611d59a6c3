// Continuous identification and recording over the sliding window of a running stroke, the
// smoothing of results, and the mean stroke and self test that read the trained statistics.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "features/feature_extraction.h"
#include "recognizer_fixture.h"

namespace zando {
namespace {

using testing_support::kFacing;
using testing_support::kHead;
using testing_support::performShape;

class ContinuousTest : public testing_support::RecognizerTest {
 protected:
  // A running stroke of `count` points whose time stamps lie up to `ageMs` in the past, oldest first.
  void runningStroke(int count, int ageMs, int recordAs = -1) {
    ASSERT_EQ(r->startStroke(kHead, kFacing, recordAs), 0);
    for (int i = 0; i < count; ++i) {
      const double p[3] = {0.01 * i, 1.5 + 0.1 * std::sin(0.3 * i), 0.4};
      ASSERT_EQ(r->contdStroke(p), 0);
      r->currentStroke.handPoints.back().timestamp -= ageMs * (count - i) / count;
    }
  }

  std::mt19937 rng{3};
};

TEST_F(ContinuousTest, SmoothingSumsSimilaritiesPerGesture) {
  struct Case {
    int smoothing;
    std::vector<std::pair<int, double>> history;
    int gesture;
    double similarity;
    int expectedGesture;
    double expectedSimilarity;
    size_t expectedHistory;
  };
  const Case cases[] = {
      // A stable result reports its mean similarity.
      {1, {{2, 0.8}}, 2, 0.6, 2, 0.7, 2},
      // The summed similarity wins, not the count of votes; the rest counts against the winner.
      {2, {{2, 0.5}, {3, 0.9}}, 2, 0.5, 2, (1.0 - 0.9) / 3, 3},
      // Equal sums: the lowest id wins, whichever came first.
      {2, {{3, 0.5}}, 1, 0.5, 1, 0.0, 2},
      // A failure code enters as a negative id; with nothing positive the result is -1, and
      // every entry counts on the minus side.
      {3, {}, ReturnCode_NoGestures, -1.0, -1, 1.0, 1},
      // All similarities -1 (no statistics): no id wins over two results either.
      {3, {{1, -1.0}}, 1, -1.0, -1, 1.0, 2},
      // The surplus of a smaller setting is dropped before the new result goes in.
      {1, {{0, 0.9}, {0, 0.9}, {0, 0.9}}, 1, 0.6, 0, (0.9 - 0.6) / 2, 2},
      // Smoothing 0 passes the raw result and leaves the history alone.
      {0, {{2, 0.5}, {3, 0.9}}, ReturnCode_ModelMismatch, 0.25, ReturnCode_ModelMismatch, 0.25, 2},
  };
  for (const Case& c : cases) {
    r->contdIdentificationSmoothing = c.smoothing;
    r->contdHistory = c.history;
    int gesture = c.gesture;
    double similarity = c.similarity;
    r->smoothContdResult(gesture, similarity);
    EXPECT_EQ(gesture, c.expectedGesture);
    EXPECT_DOUBLE_EQ(similarity, c.expectedSimilarity);
    EXPECT_EQ(r->contdHistory.size(), c.expectedHistory);
  }
}

TEST_F(ContinuousTest, WindowIsPrunedAndTheStrokeStaysOpen) {
  EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), ReturnCode_NoStrokeStarted);
  runningStroke(30, 3000);
  for (size_t i = 0; i < 30; ++i) r->currentStroke.headPoints[i].position.x = static_cast<double>(i);
  r->contdIdentificationSmoothing = 0;
  // No gestures: -9, but the window was cut to the last second and marked continuous.
  EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), ReturnCode_NoGestures);
  EXPECT_TRUE(r->isStrokeStarted());
  EXPECT_EQ(r->currentStroke.sampleType, SampleType_Continuous);
  EXPECT_LT(r->currentStroke.handPoints.size(), 30u);
  EXPECT_GE(r->currentStroke.handPoints.size(), 9u);
  // The window is read against the head pose of its own first point.
  EXPECT_GT(r->currentStroke.headStart.position.x, 0.0);
  EXPECT_EQ(r->currentStroke.headStart.position.x, r->currentStroke.headPoints.front().position.x);

  r->loadingState = kJobRunning;
  EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), ReturnCode_LoadingInProgress);
  r->loadingState = kJobIdle;
  EXPECT_TRUE(r->isStrokeStarted());

  // An old window loses all its points: -7 until new points come.
  for (auto& point : r->currentStroke.handPoints) point.timestamp -= 5000;
  EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), ReturnCode_StrokeTooShort);
  EXPECT_TRUE(r->currentStroke.handPoints.empty());
  double p[2], s[2];
  int n = 2;
  EXPECT_EQ(r->contdIdentifyAndGetAllProbabilitiesAndSimilarities(kHead, kFacing, p, s, &n),
            ReturnCode_StrokeTooShort);
  EXPECT_EQ(n, 0);
}

TEST_F(ContinuousTest, IdentifiesTheRunningMotionByItsSamples) {
  testing_support::recordSet(*r, 3, 3, rng);
  // Windows are read as continuous samples, which start at their own extreme point; the stored
  // samples are marked the same way, as continuous recording would have made them.
  for (int g = 0; g < 3; ++g) {
    for (int s = 0; s < 3; ++s) ASSERT_EQ(r->setGestureSampleType(g, s, SampleType_Continuous), 0);
  }
  r->contdIdentificationSmoothing = 0;
  for (int shape = 0; shape < 3; ++shape) {
    performShape(*r, shape, -1, rng);
    double pos[3] = {0, 0, 0}, p[3], s[3];
    EXPECT_EQ(r->contdIdentifyAndGetStroke(kHead, kFacing, nullptr, pos, nullptr, nullptr, nullptr, nullptr), shape);
    EXPECT_NEAR(pos[1], 1.4, 0.15);
    int n = 3;
    EXPECT_EQ(r->contdIdentifyAndGetAllProbabilitiesAndSimilarities(kHead, kFacing, p, s, &n), shape);
    EXPECT_EQ(n, 3);
  }
}

TEST_F(ContinuousTest, RecordingStoresWindowsAsContinuousSamples) {
  ASSERT_EQ(r->createGesture("wave", nullptr), 0);
  EXPECT_EQ(r->contdRecord(kHead, kFacing), ReturnCode_NoStrokeStarted);
  runningStroke(20, 900, -1);
  EXPECT_EQ(r->contdRecord(kHead, kFacing), ReturnCode_TrainingInProgress);  // no recording target
  runningStroke(20, 950, 0);
  EXPECT_EQ(r->contdRecord(kHead, kFacing), 0);
  ASSERT_EQ(r->getGestureNumberOfSamples(0), 1);
  EXPECT_EQ(r->getGestureSampleType(0, 0), SampleType_Continuous);

  // Identification calls with a target store every tenth call once the window is 90% full.
  for (int call = 1; call <= 9; ++call) EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), 0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 1);
  EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), 0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 2);
  EXPECT_EQ(r->contdRecordCountdown, 10);

  // A window shorter than 90% of the period stores nothing and does not count down.
  runningStroke(20, 700, 0);
  EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), 0);
  EXPECT_EQ(r->contdRecordCountdown, 10);
  r->savingState = kJobRunning;
  EXPECT_EQ(r->contdIdentify(kHead, kFacing, nullptr), ReturnCode_SavingInProgress);
  EXPECT_EQ(r->contdRecord(kHead, kFacing), ReturnCode_SavingInProgress);
  r->savingState = kJobIdle;
}

TEST_F(ContinuousTest, MeanStrokeReadsTheStatisticsRow) {
  EXPECT_EQ(r->getGestureMeanLength(5), 16);
  ASSERT_EQ(r->createGesture("g", nullptr), 0);
  double positions[20][3], rotations[20][4], strokeP[3] = {0, 0, 0}, strokeQ[4] = {0, 0, 0, 0}, scale = 0;
  EXPECT_EQ(r->getGestureMeanStroke(0, positions, rotations, 20, strokeP, strokeQ, &scale), 0);

  GestureModel& m = r->gestureModel;
  std::vector<double> mean(120);
  for (size_t i = 0; i < mean.size(); ++i) mean[i] = 0.01 * static_cast<double>(i);
  mean[112] = mean[113] = mean[114] = mean[115] = 0.5;  // header quaternion
  mean[116] = 1.0;                                      // centroid x
  mean[119] = 0.3;                                      // radius
  m.gestureMeans = {mean};
  m.parameters.featureScaleA = 0.5;
  m.parameters.featureScaleB = 2.0;
  EXPECT_EQ(r->getGestureMeanStroke(0, positions, rotations, 20, strokeP, strokeQ, &scale), 16);
  EXPECT_DOUBLE_EQ(positions[3][1], mean[22]);
  EXPECT_DOUBLE_EQ(rotations[3][0], mean[24]);
  EXPECT_DOUBLE_EQ(strokeQ[3], 0.5);
  EXPECT_DOUBLE_EQ(strokeP[0], 2.0);
  EXPECT_DOUBLE_EQ(scale, 0.15);
  // A buffer of 0 rows still gives the stroke's values; null position still reads the scale.
  scale = 0;
  EXPECT_EQ(r->getGestureMeanStroke(0, positions, rotations, 0, nullptr, nullptr, &scale), 0);
  EXPECT_DOUBLE_EQ(scale, 0.15);
  // Without rotations per waypoint, rows are positions at a stride of 3 with identity rotations.
  m.parameters.waypointFeatureMode = 0;
  m.gestureMeans = {std::vector<double>(static_cast<size_t>(featureCount(m.parameters)), 0.25)};
  EXPECT_EQ(r->getGestureMeanStroke(0, positions, rotations, 4, nullptr, nullptr, nullptr), 4);
  EXPECT_EQ(rotations[2][3], 1.0);
  // A change of feature settings since training ends all means.
  m.parameters.waypointCount = 8;
  EXPECT_EQ(r->getGestureMeanStroke(0, positions, rotations, 4, nullptr, nullptr, nullptr), 0);
}

TEST_F(ContinuousTest, SelfTestPassesReplayButFindsTheSharedHeldBackSamples) {
  testing_support::recordSet(*r, 2, 3, rng);
  // Replay of a set whose stored score disagrees with its hit rate fails at once.
  r->gestureModel.recognitionScore = 0.5;
  EXPECT_EQ(r->selfTest(), ReturnCode_Failed);
  // With a fitting score the replay passes; the split then meets the held-back samples twice.
  r->gestureModel.recognitionScore = r->recognitionScore(true);
  EXPECT_EQ(r->selfTest(), ReturnCode_Failed);
  EXPECT_FALSE(r->isStrokeStarted());
  EXPECT_EQ(r->getGestureNumberOfSamples(1), 3);
}

}  // namespace
}  // namespace zando
