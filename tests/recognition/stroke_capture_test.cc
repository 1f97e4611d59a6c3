// The capture cycle as a host drives it: start, extend, prune, cancel, end, and every refusal in
// its order with its code.
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <thread>

#include "recognizer_fixture.h"

namespace zando {
namespace {

using testing_support::endStroke, testing_support::endWithProbabilities, testing_support::endWithSimilarities,
    testing_support::endWithSimilarity;

const double kHeadP[3] = {0.1, 1.7, -0.2};
const double kHeadQ[4] = {0.0, 0.0, 0.0, 1.0};
const double kNaN = std::numeric_limits<double>::quiet_NaN();

class StrokeCaptureTest : public testing_support::RecognizerTest {
 protected:
  // Starts a stroke for `recordAs` and adds `count` points along x, 0.01 apart.
  void stroke(int recordAs, int count) {
    ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, recordAs), 0);
    for (int i = 0; i < count; ++i) {
      const double p[3] = {0.01 * i, 1.5, 0.3};
      ASSERT_EQ(r->contdStroke(p), 0);
    }
  }
  size_t handCount() const { return r->currentStroke.handPoints.size(); }
  int samples(int gesture = 0) const { return r->getGestureNumberOfSamples(gesture); }
};

TEST_F(StrokeCaptureTest, RecordingStoresADeepCopyOfEveryPoseForm) {
  ASSERT_EQ(r->createGesture("circle", nullptr), 0);
  const double p[3] = {0.2, 1.1, 0.4}, euler[3] = {0.3, -0.6, 1.1};
  const double q[4] = {0.0, 0.0, 0.3826834323650898, 0.9238795325112867};
  const Quaternion q0 = quaternionFromEuler(euler, 0);
  ASSERT_NE(q0.w, quaternionFromEuler(euler, 2).w);
  double matrix[4][4];
  matrixFromPose(Vector3(p), q0, &matrix[0][0]);
  stroke(0, 2);
  r->trainingState = kJobRunning;  // head updates have no guard
  ASSERT_EQ(r->updateHeadPositionM(matrix), 0);
  r->trainingState = kJobIdle;
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  r->rotationalFrameOfReferenceRotationOrder = 0;  // applies at capture
  ASSERT_EQ(r->contdStrokeE(p, euler), 0);
  ASSERT_EQ(r->contdStrokeM(matrix), 0);
  const double headP[3] = {0.5, 1.6, 0.0};
  ASSERT_EQ(r->updateHeadPositionQ(headP, kHeadQ), 0);
  ASSERT_EQ(r->contdStrokeQ(p, q), 0);
  const Stroke& s = r->currentStroke;
  ASSERT_EQ(s.headPoints.size(), 5u);
  // Head records copy the latest head pose with its stamp; only hand points carry the capture
  // time, and the start pose never moves.
  EXPECT_DOUBLE_EQ(s.headPoints[1].position.y, 1.7);
  EXPECT_DOUBLE_EQ(s.headPoints[2].position.y, 1.1);
  EXPECT_DOUBLE_EQ(s.headPoints[4].position.y, 1.6);
  EXPECT_EQ(s.headPoints[2].timestamp, s.headStart.timestamp);
  EXPECT_GE(s.handPoints[2].timestamp - s.handPoints[1].timestamp, 15);
  EXPECT_DOUBLE_EQ(s.headStart.position.y, 1.7);

  const size_t capacity = s.handPoints.capacity();
  EXPECT_EQ(endStroke(*r), 0);
  EXPECT_EQ(handCount(), 0u);
  EXPECT_EQ(s.handPoints.capacity(), capacity);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);  // a new start keeps the capacity too
  EXPECT_EQ(s.handPoints.capacity(), capacity);
  ASSERT_EQ(samples(), 1);
  const std::vector<StrokePoint>& stored = r->gestureModel.gestures[0]->gestureSamples[0]->handPoints;
  ASSERT_EQ(stored.size(), 5u);
  EXPECT_EQ(stored[0].rotation.w, 1.0);  // a bare position
  EXPECT_DOUBLE_EQ(stored[2].rotation.w, q0.w);
  EXPECT_NEAR(stored[3].rotation.x * stored[3].rotation.w, q0.x * q0.w, 1e-12);  // either sign
  EXPECT_DOUBLE_EQ(stored[4].rotation.z, q[2]);
}

TEST_F(StrokeCaptureTest, GestureDeletedDuringRecordingStoresNothing) {
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  ASSERT_EQ(r->createGesture("b", nullptr), 1);
  stroke(1, 3);
  ASSERT_EQ(r->deleteGesture(1), 0);
  EXPECT_EQ(endStroke(*r), 1);
  EXPECT_EQ(samples(), 0);
  // Deleting an earlier gesture moves another one to the recorded index, which gets the sample.
  ASSERT_EQ(r->createGesture("c", nullptr), 1);
  stroke(1, 3);
  ASSERT_EQ(r->createGesture("d", nullptr), 2);
  ASSERT_EQ(r->deleteGesture(0), 0);
  EXPECT_EQ(endStroke(*r), 1);
  EXPECT_STREQ(r->getGestureName(1), "d");
  EXPECT_EQ(samples(1), 1);
}

TEST_F(StrokeCaptureTest, RefusedPosesAndStartsLeaveTheStrokeAsItWas) {
  const double p[3] = {0, 0, 0};
  const double nan3[3] = {0.0, kNaN, 0.0};
  EXPECT_EQ(r->contdStroke(p), ReturnCode_NoStrokeStarted);
  EXPECT_EQ(r->startStroke(nan3, kHeadQ, -1), ReturnCode_InvalidParameter);
  EXPECT_FALSE(r->isStrokeStarted());

  // A lost tracker skips a frame; the stroke goes on.
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  stroke(-1, 3);
  EXPECT_EQ(r->contdStroke(nan3), ReturnCode_InvalidParameter);
  // A start for a gesture past the end keeps the running stroke and its target.
  double nanMatrix[4][4] = {{kNaN, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, 1), ReturnCode_InvalidIndex);
  EXPECT_EQ(handCount(), 3u);
  EXPECT_TRUE(r->isStrokeStarted());
  EXPECT_EQ(r->recordingGestureId, -1);

  // Zeros and subnormals pass; matrices are not checked at all.
  const double tiny[3] = {std::numeric_limits<double>::denorm_min(), 0.0, -0.0};
  EXPECT_EQ(r->contdStroke(tiny), 0);
  EXPECT_EQ(r->contdStrokeM(nanMatrix), 0);
  EXPECT_EQ(handCount(), 5u);
  // Another start drops what was captured.
  EXPECT_EQ(r->startStrokeM(nanMatrix, 0), 0);
  EXPECT_EQ(handCount(), 0u);
  EXPECT_EQ(r->recordingGestureId, 0);
}

TEST_F(StrokeCaptureTest, EndFamilyRefusalsEndTheStrokeAnyway) {
  ASSERT_EQ(r->createGesture("g", nullptr), 0);
  double similarity = 5.0;
  stroke(0, 1);
  EXPECT_EQ(endWithSimilarity(*r, &similarity), ReturnCode_StrokeTooShort);
  EXPECT_EQ(similarity, 0.0);
  EXPECT_EQ(endStroke(*r), ReturnCode_NoStrokeStarted);
  EXPECT_EQ(handCount(), 1u);  // unreachable until the next start clears it
  // The flag falls before the busy guards and before the similarity pointer is looked at.
  stroke(-1, 4);
  r->trainingState = kJobRunning;
  EXPECT_EQ(endStroke(*r), ReturnCode_TrainingInProgress);
  r->trainingState = kJobIdle;
  EXPECT_EQ(endStroke(*r), ReturnCode_NoStrokeStarted);
  stroke(0, 3);
  EXPECT_EQ(endWithSimilarity(*r, nullptr), ReturnCode_InvalidParameter);
  EXPECT_FALSE(r->isStrokeStarted());
  stroke(0, 3);
  EXPECT_EQ(endWithSimilarity(*r, &similarity), 0);
  EXPECT_EQ(similarity, 1.0);

  // The probability forms test their arguments first, and leave a running stroke alone.
  double p[4] = {7, 7, 7, 7}, s[4];
  int n = 4;
  EXPECT_EQ(endWithProbabilities(*r, p, &n), ReturnCode_NoStrokeStarted);
  EXPECT_EQ(n, 0);
  n = 4;
  stroke(0, 3);
  EXPECT_EQ(endWithProbabilities(*r, nullptr, &n), ReturnCode_InvalidParameter);
  EXPECT_EQ(n, 0);
  n = 4;
  EXPECT_EQ(endWithSimilarities(*r, p, nullptr, &n), ReturnCode_InvalidParameter);
  EXPECT_EQ(n, 0);
  EXPECT_TRUE(r->isStrokeStarted());
  // While recording they store the sample and write no entry.
  n = 4;
  EXPECT_EQ(endWithProbabilities(*r, p, &n), 0);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(p[0], 7.0);
  EXPECT_EQ(samples(), 2);

  // Mismatched hand and head counts are told only by the form with similarities.
  for (int form = 0; form < 2; ++form) {
    stroke(0, 3);
    r->currentStroke.headPoints.pop_back();
    n = 4;
    EXPECT_EQ(form == 0 ? endWithSimilarities(*r, p, s, &n) : endWithProbabilities(*r, p, &n),
              form == 0 ? ReturnCode_PointCountMismatch : 0);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(samples(), 2 + form);
  }
}

TEST_F(StrokeCaptureTest, PruneKeepsOldestByCountAndNewestByAge) {
  EXPECT_EQ(r->pruneStroke(-1, -1), ReturnCode_NoStrokeStarted);
  stroke(-1, 10);
  EXPECT_EQ(r->pruneStroke(-1, -1), 10);
  EXPECT_EQ(r->pruneStroke(6, -1), 6);
  EXPECT_DOUBLE_EQ(r->currentStroke.handPoints.back().position.x, 0.05);
  EXPECT_EQ(r->currentStroke.headPoints.size(), 6u);
  auto age = [&](int count) {
    for (int i = 0; i < count; ++i) r->currentStroke.handPoints[static_cast<size_t>(i)].timestamp -= 10000;
  };
  age(4);
  EXPECT_EQ(r->pruneStroke(-1, 5000), 2);
  EXPECT_DOUBLE_EQ(r->currentStroke.handPoints.front().position.x, 0.04);
  EXPECT_EQ(r->currentStroke.headPoints.size(), 2u);
  EXPECT_EQ(r->pruneStroke(-1, 60000), 2);
  // The head list loses the same count only if it is longer than the found index.
  const StrokePoint newest = r->currentStroke.handPoints.back();
  r->currentStroke.handPoints.insert(r->currentStroke.handPoints.begin(), 3, newest);
  age(3);
  EXPECT_EQ(r->pruneStroke(-1, 1000), 2);
  EXPECT_EQ(r->currentStroke.headPoints.size(), 2u);
  EXPECT_EQ(r->pruneStroke(0, -1), 0);
  EXPECT_TRUE(r->isStrokeStarted());
}

TEST_F(StrokeCaptureTest, BusyGuardsRefuseInTheirOrder) {
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  EXPECT_EQ(r->cancelStroke(), 0);  // needs no stroke
  EXPECT_EQ(r->getUpdateHeadPositionPolicy(), UpdateHeadPositionPolicy_UseInitial);
  const double p[3] = {0, 0, 0};
  const double nan[3] = {kNaN, 0, 0};
  // Training is tested before loading everywhere in the cycle, and the busy guards before the
  // finite test; the policy setter looks at training and saving but not at loading.
  for (int training : {1, 0}) {
    const int code = training ? ReturnCode_TrainingInProgress : ReturnCode_LoadingInProgress;
    r->trainingState = training ? kJobRunning : kJobIdle;
    r->loadingState = kJobRunning;
    EXPECT_EQ(r->startStroke(nan, kHeadQ, -1), code);
    EXPECT_EQ(r->contdStroke(p), code);
    EXPECT_EQ(r->pruneStroke(1, 1), code);
    EXPECT_EQ(r->cancelStroke(), code);
    EXPECT_EQ(r->setUpdateHeadPositionPolicy(0), training ? code : 0);
  }
  r->loadingState = kJobIdle;
  EXPECT_EQ(r->getUpdateHeadPositionPolicy(), UpdateHeadPositionPolicy_UseLatest);

  // A save blocks recording only, at the start and at the end.
  r->savingState = kJobRunning;
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, 0), ReturnCode_SavingInProgress);
  EXPECT_EQ(r->setUpdateHeadPositionPolicy(0), ReturnCode_SavingInProgress);
  stroke(-1, 1);
  r->savingState = kJobIdle;
  stroke(0, 3);
  r->contdHistory.push_back({0, 0.5});
  EXPECT_EQ(r->cancelStroke(), 0);  // ends the stroke and the history
  EXPECT_TRUE(!r->isStrokeStarted() && r->contdHistory.empty());
  stroke(0, 3);
  r->savingState = kJobStopRequested;
  double similarity = 3.0;
  EXPECT_EQ(endWithSimilarity(*r, &similarity), ReturnCode_SavingInProgress);
  EXPECT_EQ(similarity, 0.0);
  EXPECT_EQ(samples(), 0);

  // Finished jobs block nothing; requested and stop-requested ones count as busy.
  r->savingState = r->loadingState = r->trainingState = kJobFinished;
  EXPECT_FALSE(r->isLoading());
  stroke(0, 2);
  EXPECT_EQ(endStroke(*r), 0);
  EXPECT_EQ(samples(), 1);
  r->trainingState = kJobRequested;
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, -1), ReturnCode_TrainingInProgress);
}

}  // namespace
}  // namespace zando
