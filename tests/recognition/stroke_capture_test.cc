// The capture cycle as a host drives it: start, extend, prune, cancel, end, and every refusal in
// its order with its code.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

#include "recognition/gesture_recognition.h"

namespace zando {
namespace {

const double kHeadP[3] = {0.1, 1.7, -0.2};
const double kHeadQ[4] = {0.0, 0.0, 0.0, 1.0};
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

class StrokeCaptureTest : public ::testing::Test {
 protected:
  void SetUp() override { r = GestureRecognition::createZeroFilled(); }
  void TearDown() override {
    r->trainingState = kJobIdle;
    r->loadingState = kJobIdle;
    r->savingState = kJobIdle;
    delete r;
  }

  void addPoints(int count) {
    for (int i = 0; i < count; ++i) {
      const double p[3] = {0.01 * i, 1.5, 0.3};
      ASSERT_EQ(r->contdStroke(p), 0);
    }
  }

  size_t handCount() const { return r->currentStroke.handPoints.size(); }

  GestureRecognition* r = nullptr;
};

TEST_F(StrokeCaptureTest, RecordingCycleStoresADeepCopyAndKeepsCapacity) {
  ASSERT_EQ(r->createGesture("circle", nullptr), 0);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  EXPECT_TRUE(r->isStrokeStarted());
  EXPECT_EQ(r->currentStroke.sampleType, 0);
  addPoints(5);
  const double headP2[3] = {0.5, 1.6, 0.0};
  const double headQ2[4] = {0.0, 0.7071067811865476, 0.0, 0.7071067811865476};
  ASSERT_EQ(r->updateHeadPositionQ(headP2, headQ2), 0);
  const double q[4] = {0.0, 0.0, 0.3826834323650898, 0.9238795325112867};
  const double p[3] = {1.0, 2.0, 3.0};
  ASSERT_EQ(r->contdStrokeQ(p, q), 0);
  ASSERT_EQ(handCount(), 6u);
  ASSERT_EQ(r->currentStroke.headPoints.size(), 6u);
  // Head records are copies of the latest head pose at each point; the start pose never moves.
  EXPECT_DOUBLE_EQ(r->currentStroke.headPoints[4].position.x, 0.1);
  EXPECT_DOUBLE_EQ(r->currentStroke.headPoints[5].position.x, 0.5);
  EXPECT_DOUBLE_EQ(r->currentStroke.headPoints[5].rotation.y, 0.7071067811865476);
  EXPECT_DOUBLE_EQ(r->currentStroke.headStart.position.x, 0.1);
  // The head copy keeps the start's time stamp, not the capture time of the point.
  EXPECT_EQ(r->currentStroke.headPoints[5].timestamp, r->currentStroke.headStart.timestamp);

  const size_t capacity = r->currentStroke.handPoints.capacity();
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_FALSE(r->isStrokeStarted());
  EXPECT_EQ(handCount(), 0u);
  EXPECT_EQ(r->currentStroke.handPoints.capacity(), capacity);

  ASSERT_EQ(r->getGestureNumberOfSamples(0), 1);
  const Stroke* stored = r->gestureModel.gestures[0]->gestureSamples[0];
  ASSERT_EQ(stored->handPoints.size(), 6u);
  EXPECT_DOUBLE_EQ(stored->handPoints[5].position.z, 3.0);
  EXPECT_DOUBLE_EQ(stored->handPoints[5].rotation.z, 0.3826834323650898);
  EXPECT_DOUBLE_EQ(stored->headLatest.position.x, 0.5);
}

TEST_F(StrokeCaptureTest, PoseFormsBuildTheSameHandPoint) {
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  const double p[3] = {0.2, 1.1, 0.4};
  const double euler[3] = {0.3, -0.6, 1.1};
  ASSERT_EQ(r->contdStrokeE(p, euler), 0);
  const Quaternion fromEuler = quaternionFromEuler(euler, r->rotationalFrameOfReferenceRotationOrder);
  const StrokePoint& e = r->currentStroke.handPoints.back();
  EXPECT_DOUBLE_EQ(e.rotation.w, fromEuler.w);
  EXPECT_DOUBLE_EQ(e.rotation.y, fromEuler.y);

  double m[16];
  matrixFromPose(Vector3(p), fromEuler, m);
  double matrix[4][4];
  for (int i = 0; i < 16; ++i) matrix[i / 4][i % 4] = m[i];
  ASSERT_EQ(r->contdStrokeM(matrix), 0);
  const StrokePoint& fromMatrix = r->currentStroke.handPoints.back();
  EXPECT_NEAR(fromMatrix.position.y, 1.1, 1e-15);
  EXPECT_NEAR(std::fabs(fromMatrix.rotation.w), std::fabs(fromEuler.w), 1e-12);
  EXPECT_NEAR(fromMatrix.rotation.x * fromMatrix.rotation.w, fromEuler.x * fromEuler.w, 1e-12);

  ASSERT_EQ(r->contdStroke(p), 0);
  const StrokePoint& plain = r->currentStroke.handPoints.back();
  EXPECT_EQ(plain.rotation.w, 1.0);
  EXPECT_EQ(plain.rotation.x, 0.0);
  EXPECT_EQ(plain.position.w, 1.0);

  // The Euler order of the object applies at capture.
  r->rotationalFrameOfReferenceRotationOrder = 0;
  ASSERT_EQ(r->contdStrokeE(p, euler), 0);
  EXPECT_DOUBLE_EQ(r->currentStroke.handPoints.back().rotation.w, quaternionFromEuler(euler, 0).w);
  EXPECT_NE(r->currentStroke.handPoints.back().rotation.w, fromEuler.w);
}

TEST_F(StrokeCaptureTest, NonFiniteValuesAreRefusedAndLeaveTheStrokeOpen) {
  const double p[3] = {0, 0, 0};
  EXPECT_EQ(r->contdStroke(p), ReturnCode_NoStrokeStarted);
  const double nanHead[3] = {0.0, kNaN, 0.0};
  EXPECT_EQ(r->startStroke(nanHead, kHeadQ, -1), ReturnCode_InvalidParameter);
  const double infRotation[4] = {0, 0, 0, kInf};
  EXPECT_EQ(r->startStroke(kHeadP, infRotation, -1), ReturnCode_InvalidParameter);
  EXPECT_FALSE(r->isStrokeStarted());

  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  addPoints(3);
  const double bad[3] = {1.0, -kInf, 0.0};
  EXPECT_EQ(r->contdStroke(bad), ReturnCode_InvalidParameter);
  const double badQ[4] = {0, 0, kNaN, 1};
  EXPECT_EQ(r->contdStrokeQ(p, badQ), ReturnCode_InvalidParameter);
  const double badE[3] = {0, kNaN, 0};
  EXPECT_EQ(r->contdStrokeE(p, badE), ReturnCode_InvalidParameter);
  EXPECT_EQ(handCount(), 3u);
  EXPECT_TRUE(r->isStrokeStarted());
  // Subnormal and zero values pass.
  const double tiny[3] = {std::numeric_limits<double>::denorm_min(), 0.0, -0.0};
  EXPECT_EQ(r->contdStroke(tiny), 0);
  // Matrices are not checked: a NaN matrix starts a stroke and adds a point.
  double nanMatrix[4][4] = {{kNaN, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  EXPECT_EQ(r->contdStrokeM(nanMatrix), 0);
  EXPECT_EQ(r->startStrokeM(nanMatrix, -1), 0);
  EXPECT_TRUE(std::isnan(r->currentStroke.headStart.rotation.w) || std::isnan(r->currentStroke.headStart.rotation.x));
  // Null pose pointers are refused rather than read.
  EXPECT_EQ(r->contdStroke(nullptr), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->contdStrokeQ(p, nullptr), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->startStroke(nullptr, kHeadQ, -1), ReturnCode_InvalidParameter);
}

TEST_F(StrokeCaptureTest, EndOfStrokeRefusalsEndTheStrokeAnyway) {
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  addPoints(1);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), ReturnCode_StrokeTooShort);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), ReturnCode_NoStrokeStarted);
  // The points stay, unreachable, until the next start clears them.
  EXPECT_EQ(handCount(), 1u);

  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  EXPECT_EQ(handCount(), 0u);
  addPoints(4);
  r->trainingState = kJobRunning;
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), ReturnCode_TrainingInProgress);
  EXPECT_FALSE(r->isStrokeStarted());
  r->trainingState = kJobIdle;
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), ReturnCode_NoStrokeStarted);

  // With nothing to choose from, identification answers -9 and still writes the outputs: the
  // stroke's centre in world space and a unit direction.
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  addPoints(4);
  double pos[3] = {9, 9, 9};
  double dir0[3] = {9, 9, 9};
  EXPECT_EQ(r->endStroke(pos, nullptr, dir0, nullptr, nullptr), ReturnCode_NoGestures);
  EXPECT_NEAR(pos[0], 0.015, 1e-12);
  EXPECT_NEAR(pos[1], 1.5, 1e-12);
  EXPECT_NEAR(dir0[0] * dir0[0] + dir0[1] * dir0[1] + dir0[2] * dir0[2], 1.0, 1e-12);
}

TEST_F(StrokeCaptureTest, SimilarityAndProbabilityFormsCheckTheirPointers) {
  double similarity = 5.0;
  ASSERT_EQ(r->createGesture("g", nullptr), 0);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(3);
  // A null similarity is refused after the flag fell: the stroke is over.
  EXPECT_EQ(r->endStrokeAndGetSimilarity(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_InvalidParameter);
  EXPECT_FALSE(r->isStrokeStarted());

  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(1);
  EXPECT_EQ(r->endStrokeAndGetSimilarity(&similarity, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_StrokeTooShort);
  EXPECT_EQ(similarity, 0.0);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(3);
  EXPECT_EQ(r->endStrokeAndGetSimilarity(&similarity, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(similarity, 1.0);

  double p[4] = {7, 7, 7, 7};
  double s[4] = {7, 7, 7, 7};
  int n = 4;
  // Argument checks come before the stroke test, and they leave a started stroke alone.
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(3);
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_InvalidParameter);
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(nullptr, &n, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_InvalidParameter);
  EXPECT_EQ(n, 0);
  n = 0;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_InvalidParameter);
  n = 4;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilitiesAndSimilarities(p, nullptr, &n, nullptr, nullptr, nullptr, nullptr,
                                                              nullptr),
            ReturnCode_InvalidParameter);
  EXPECT_EQ(n, 0);
  EXPECT_TRUE(r->isStrokeStarted());
  // While recording, the probability form returns the gesture with an empty result.
  n = 4;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(p[0], 7.0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 2);

  // Mismatched hand and head counts are told only by the form with similarities.
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(3);
  r->currentStroke.headPoints.pop_back();
  n = 4;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilitiesAndSimilarities(p, s, &n, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_PointCountMismatch);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 2);
}

TEST_F(StrokeCaptureTest, StartRefusalsKeepThePreviousStroke) {
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  addPoints(3);
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, 1), ReturnCode_InvalidIndex);
  EXPECT_EQ(r->recordingGestureId, -1);
  EXPECT_EQ(handCount(), 3u);
  EXPECT_TRUE(r->isStrokeStarted());
  double matrix[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  EXPECT_EQ(r->startStrokeM(matrix, 1), ReturnCode_InvalidIndex);
  // A second start drops what was captured.
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  EXPECT_EQ(handCount(), 0u);
  EXPECT_EQ(r->recordingGestureId, 0);
}

TEST_F(StrokeCaptureTest, GestureDeletedDuringRecordingStoresNothing) {
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  ASSERT_EQ(r->createGesture("b", nullptr), 1);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 1), 0);
  addPoints(3);
  ASSERT_EQ(r->deleteGesture(1), 0);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 0);

  // Deleting an earlier gesture moves another one to the recorded index, which gets the sample.
  ASSERT_EQ(r->createGesture("c", nullptr), 1);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 1), 0);
  addPoints(3);
  ASSERT_EQ(r->createGesture("d", nullptr), 2);
  ASSERT_EQ(r->deleteGesture(0), 0);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_STREQ(r->getGestureName(1), "d");
  EXPECT_EQ(r->getGestureNumberOfSamples(1), 1);
}

TEST_F(StrokeCaptureTest, PruneKeepsOldestByCountAndNewestByAge) {
  EXPECT_EQ(r->pruneStroke(-1, -1), ReturnCode_NoStrokeStarted);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  addPoints(10);
  EXPECT_EQ(r->pruneStroke(-1, -1), 10);
  EXPECT_EQ(r->pruneStroke(6, -1), 6);
  EXPECT_DOUBLE_EQ(r->currentStroke.handPoints.back().position.x, 0.05);
  EXPECT_EQ(r->currentStroke.headPoints.size(), 6u);

  // Age the first four points; the age limit then drops them and keeps the newest.
  for (int i = 0; i < 4; ++i) r->currentStroke.handPoints[static_cast<size_t>(i)].timestamp -= 10000;
  EXPECT_EQ(r->pruneStroke(-1, 5000), 2);
  EXPECT_DOUBLE_EQ(r->currentStroke.handPoints.front().position.x, 0.04);
  EXPECT_EQ(r->currentStroke.headPoints.size(), 2u);
  // Points younger than the age limit stay.
  EXPECT_EQ(r->pruneStroke(-1, 60000), 2);
  EXPECT_EQ(r->pruneStroke(0, -1), 0);
  EXPECT_EQ(r->pruneStroke(-1, 0), 0);
  EXPECT_TRUE(r->isStrokeStarted());

  // The head list is cut by the same count only if it is longer than the found index.
  addPoints(5);
  r->currentStroke.headPoints.resize(2, StrokePoint(Unstamped{}));
  for (int i = 0; i < 3; ++i) r->currentStroke.handPoints[static_cast<size_t>(i)].timestamp -= 10000;
  EXPECT_EQ(r->pruneStroke(-1, 1000), 2);
  EXPECT_EQ(r->currentStroke.headPoints.size(), 2u);
}

TEST_F(StrokeCaptureTest, CancelNeedsNoStrokeAndPolicyTakesTwoValues) {
  EXPECT_EQ(r->cancelStroke(), 0);
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(3);
  r->contdHistory.push_back({0, 0.5});
  EXPECT_EQ(r->cancelStroke(), 0);
  EXPECT_FALSE(r->isStrokeStarted());
  EXPECT_EQ(handCount(), 0u);
  EXPECT_TRUE(r->contdHistory.empty());
  EXPECT_EQ(r->recordingGestureId, 0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 0);

  EXPECT_EQ(r->getUpdateHeadPositionPolicy(), UpdateHeadPositionPolicy_UseInitial);
  EXPECT_EQ(r->setUpdateHeadPositionPolicy(2), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->setUpdateHeadPositionPolicy(-1), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->setUpdateHeadPositionPolicy(0), 0);
  EXPECT_EQ(r->gestureModel.parameters.updateHeadPositionPolicy, UpdateHeadPositionPolicy_UseLatest);
}

TEST_F(StrokeCaptureTest, BusyGuardsRefuseInTheirOrder) {
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  const double p[3] = {0, 0, 0};
  // Training is tested before loading everywhere in the cycle.
  r->trainingState = kJobRunning;
  r->loadingState = kJobRunning;
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, -1), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->contdStroke(p), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->pruneStroke(1, 1), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->cancelStroke(), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->setUpdateHeadPositionPolicy(0), ReturnCode_TrainingInProgress);
  EXPECT_FALSE(r->isStrokeStarted());
  r->trainingState = kJobIdle;
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, -1), ReturnCode_LoadingInProgress);
  EXPECT_EQ(r->contdStroke(p), ReturnCode_LoadingInProgress);
  EXPECT_EQ(r->cancelStroke(), ReturnCode_LoadingInProgress);
  // The busy guards come before the finite test.
  const double nan[3] = {kNaN, 0, 0};
  EXPECT_EQ(r->startStroke(nan, kHeadQ, -1), ReturnCode_LoadingInProgress);
  // The policy setter does not look at loading.
  EXPECT_EQ(r->setUpdateHeadPositionPolicy(0), 0);
  r->loadingState = kJobIdle;

  // A save blocks recording only, at the start and at the end.
  r->savingState = kJobRunning;
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, 0), ReturnCode_SavingInProgress);
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  EXPECT_EQ(r->contdStroke(p), 0);
  EXPECT_EQ(r->setUpdateHeadPositionPolicy(1), ReturnCode_SavingInProgress);
  r->savingState = kJobIdle;
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(3);
  r->savingState = kJobStopRequested;
  double similarity = 3.0;
  EXPECT_EQ(r->endStrokeAndGetSimilarity(&similarity, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_SavingInProgress);
  EXPECT_EQ(similarity, 0.0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 0);

  // Finished jobs (state 4) block nothing.
  r->savingState = kJobFinished;
  r->loadingState = kJobFinished;
  r->trainingState = kJobFinished;
  EXPECT_FALSE(r->isLoading());
  EXPECT_EQ(r->startStroke(kHeadP, kHeadQ, 0), 0);
  addPoints(2);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 1);
  // Requested (1) and stop-requested (3) count as busy.
  r->trainingState = kJobRequested;
  EXPECT_TRUE(r->isTraining());
  r->trainingState = kJobStopRequested;
  EXPECT_TRUE(r->isTraining());
}

TEST_F(StrokeCaptureTest, TimeStampsAndHeadUpdates) {
  // Head updates need no stroke and no guard, and keep the time stamp of the latest head pose.
  const double p[3] = {3, 4, 5};
  const double q[4] = {0, 1, 0, 0};
  const int64_t stamp = r->currentStroke.headLatest.timestamp;
  r->trainingState = kJobRunning;
  EXPECT_EQ(r->updateHeadPositionQ(p, q), 0);
  EXPECT_EQ(r->currentStroke.headLatest.position.z, 5.0);
  EXPECT_EQ(r->currentStroke.headLatest.timestamp, stamp);
  double matrix[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {7, 8, 9, 1}};
  EXPECT_EQ(r->updateHeadPositionM(matrix), 0);
  EXPECT_EQ(r->currentStroke.headLatest.position.x, 7.0);
  r->trainingState = kJobIdle;

  // Hand points carry the time of their capture.
  ASSERT_EQ(r->startStroke(kHeadP, kHeadQ, -1), 0);
  const int64_t before = nowMilliseconds();
  addPoints(1);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  addPoints(1);
  const auto& hand = r->currentStroke.handPoints;
  EXPECT_GE(hand[0].timestamp, before);
  EXPECT_GE(hand[1].timestamp - hand[0].timestamp, 15);
  EXPECT_LE(hand[1].timestamp, nowMilliseconds());
}

}  // namespace
}  // namespace zando
