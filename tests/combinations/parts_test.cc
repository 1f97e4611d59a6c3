// The combination object as a host drives its parts: the results of bad indices and missing
// parts in each forwarding family, guards, the frame handed to a part, gesture deletion keeping
// combinations consistent, and copies of a gesture into the other hand, mirrored.
#include <gtest/gtest.h>

#include "combination_fixture.h"
#include "zando/zando.h"

namespace zando {
namespace {

using namespace combination_testing;

// (Bad part, gesture and combination indices and mirror axes, capacities and objects without
// parts are in the flat face's hostile-values test.)
TEST(CombinationPartsTest, AMissingPartGivesEachFamilysResult) {
  // A missing part (a failed allocation) gives -14 in the forwarding families, 0 in the readers.
  const double p[3] = {0, 0, 0}, q[4] = {0, 0, 0, 1};
  Combinations c = makeCombinations(2);
  c->parts[1].reset();
  EXPECT_EQ(c->startStroke(1, p, q, -1), -14);
  EXPECT_EQ(c->createGesture(1, "x", nullptr), -14);
  EXPECT_EQ(c->getGestureName(1, 0), nullptr);
  EXPECT_EQ(c->gestureRecognitionScore(1), -14.0);
  EXPECT_EQ(c->contdRecordPart(1, p, q), -14);
  c->createGestureCombination("both");
  EXPECT_EQ(c->identifyGestureCombination(nullptr, nullptr, nullptr, nullptr), -14);
  EXPECT_EQ(c->updateHeadPositionQ(p, q), 0);  // missing parts are skipped
}

TEST(CombinationPartsTest, FlatFaceKeepsItsOddities) {
  void* c = GestureCombinations_create(2);
  GestureCombinations_setMaxTrainingTime(c, 7);
  GestureCombinations_setMaxTrainingThreads(c, 1);
  // The flat reader of the thread limit answers the training time.
  EXPECT_EQ(GestureCombinations_getMaxTrainingThreads(c), 7);
  EXPECT_EQ(static_cast<IGestureCombinations*>(c)->getMaxTrainingThreads(), 1);
  EXPECT_EQ(static_cast<GestureCombinations*>(c)->parts[1]->maxTrainingTime, 7);
  EXPECT_EQ(GestureCombinations_setTrainingParameter(c, 3, 12), 0);
  EXPECT_EQ(GestureCombinations_getTrainingParameter(c, 3), 12);
  EXPECT_EQ(static_cast<GestureCombinations*>(c)->parts[0]->getTrainingParameter(3), 12);
  GestureCombinations_delete(c);
}

TEST(CombinationPartsTest, StrokesReachThePartInTheOwnersFrame) {
  Combinations c = makeCombinations(2);
  std::mt19937 rng(3);
  ASSERT_EQ(c->createGesture(1, "wave", nullptr), 0);
  c->rotationalFrameOfReferenceY = 1;
  c->rotationalFrameOfReferenceRotationOrder = 5;
  performOnPart(*c, 1, 0, 0, rng);
  EXPECT_TRUE(c->isStrokeStarted(1));
  EXPECT_FALSE(c->isStrokeStarted(0));
  EXPECT_EQ(c->parts[1]->rotationalFrameOfReferenceY, 1);
  EXPECT_EQ(c->parts[1]->rotationalFrameOfReferenceRotationOrder, 5);
  EXPECT_EQ(c->parts[0]->rotationalFrameOfReferenceY, 0);
  EXPECT_EQ(c->endStroke(1, nullptr, nullptr, nullptr, nullptr, nullptr), 0);  // not the gesture index
  EXPECT_EQ(c->getGestureNumberOfSamples(1, 0), 1);
  EXPECT_EQ(c->partResultCount[1], 0);  // a recording leaves no result to combine

  // Guards of the store come before the index; the stroke start checks index and part first.
  c->savingState = kJobRunning;
  EXPECT_EQ(c->createGesture(9, "x", nullptr), -17);
  EXPECT_EQ(c->startStroke(9, kHead, kFacing, 0), -2);
  EXPECT_EQ(c->startStroke(1, kHead, kFacing, 0), -17);
  EXPECT_EQ(c->startStroke(1, kHead, kFacing, -1), 0);
  c->loadingState = kJobRunning;
  EXPECT_EQ(c->startStroke(1, kHead, kFacing, -1), -15);
  EXPECT_EQ(c->contdRecord(kHead, kFacing), -15);
  c->savingState = c->loadingState = kJobIdle;
}

TEST(CombinationPartsTest, DeletingGesturesKeepsCombinationsConsistent) {
  Combinations c = makeCombinations(2);
  for (int g = 0; g < 4; ++g) c->createGesture(0, "g", nullptr);
  c->createGesture(1, "h", nullptr);
  for (int g : {1, 2, 3}) {
    const int k = c->createGestureCombination("k");
    ASSERT_EQ(c->setCombinationPartGesture(k, 0, g), 0);
    ASSERT_EQ(c->setCombinationPartGesture(k, 1, 0), 0);
  }

  ASSERT_EQ(c->deleteGesture(0, 2), 0);
  EXPECT_EQ(c->getCombinationPartGesture(0, 0), 1);
  EXPECT_EQ(c->getCombinationPartGesture(1, 0), -1);
  EXPECT_EQ(c->getCombinationPartGesture(2, 0), 2);
  EXPECT_EQ(c->getCombinationPartGesture(2, 1), 0);  // the other part is untouched
  ASSERT_EQ(c->deleteAllGestures(1), 0);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(c->getCombinationPartGesture(k, 1), -1);

  ASSERT_EQ(c->deleteGestureCombination(0), 0);
  EXPECT_EQ(c->numberOfGestureCombinations(), 2);
  EXPECT_EQ(c->getCombinationPartGesture(1, 0), 2);  // later records moved down
}

TEST(CombinationPartsTest, CopyRefusalsAndEmptyGestures) {
  Combinations c = makeCombinations(2);
  c->createGesture(0, "empty", nullptr);
  c->createGesture(1, "target", nullptr);
  EXPECT_EQ(c->copyGesture(0, 0, 1, 0, 0), 0);  // nothing to copy, whatever the target
  EXPECT_EQ(c->copyGesture(0, 0, 1, -1, 0), 0);
  EXPECT_STREQ(c->getGestureName(1, 1), "empty");
  c->trainingMask = 1;
  EXPECT_EQ(c->copyGesture(0, 0, 1, 0, 0), -8);
  c->trainingMask = 0;
}

// A right-hand gesture becomes a left-hand one: the copy is the reflection of every pose, and the
// other part then recognises the mirrored motion.
TEST(CombinationPartsTest, MirroredCopiesAreRecognisedByTheOtherHand) {
  Combinations c = makeCombinations(2);
  std::mt19937 rng(17);
  for (int g = 0; g < 2; ++g) {
    c->createGesture(0, g == 0 ? "swipe" : "vee", nullptr);
    for (int s = 0; s < 4; ++s) ASSERT_EQ(recordOnPart(*c, 0, g == 0 ? 1 : 3, g, rng), 0);
  }
  const double head[3] = {0.3, 1.6, -0.2};
  const double turned[4] = {0.0, std::sin(0.2), 0.0, std::cos(0.2)};
  c->startStroke(0, head, turned, 0);
  const double a[3] = {0.5, 1.2, 0.4}, b[3] = {0.7, 1.3, 0.5};
  const double tilt[4] = {0.1, 0.2, 0.3, std::sqrt(1 - 0.14)};
  c->contdStrokeQ(0, a, tilt);
  c->contdStrokeQ(0, b, tilt);
  c->endStroke(0, nullptr, nullptr, nullptr, nullptr, nullptr);

  ASSERT_EQ(c->copyGesture(0, 0, 1, -1, 1), 0);
  ASSERT_EQ(c->copyGesture(0, 1, 1, -1, 1), 1);
  EXPECT_EQ(c->getGestureNumberOfSamples(1, 0), 5);
  EXPECT_STREQ(c->getGestureName(1, 1), "vee");

  // The short sample: positions and rotations reflected through the plane x = 0.
  const Stroke& copy = *c->parts[1]->gestureModel.gestures[0]->gestureSamples[4];
  ASSERT_EQ(copy.handPoints.size(), 2u);
  EXPECT_NEAR(copy.handPoints[1].position.x, -0.7, 1e-12);
  EXPECT_NEAR(copy.handPoints[1].position.y, 1.3, 1e-12);
  EXPECT_NEAR(copy.headStart.position.x, -0.3, 1e-12);
  const Eigen::Quaterniond original = Quaternion(tilt).eigen(), mirrored = copy.handPoints[0].rotation.eigen();
  EXPECT_NEAR(std::fabs(mirrored.dot(Eigen::Quaterniond(original.w(), original.x(), -original.y(), -original.z()))),
              1.0, 1e-9);

  // An unmirrored copy replays the poses as they were.
  ASSERT_EQ(c->copyGesture(0, 0, 1, 0, 0), 0);
  EXPECT_NEAR(c->parts[1]->gestureModel.gestures[0]->gestureSamples[9]->handPoints[1].position.x, 0.7, 1e-12);

  int correct = 0;
  for (int trial = 0; trial < 6; ++trial) {
    const int g = trial % 2;
    performOnPart(*c, 1, g == 0 ? 1 : 3, -1, rng, true);
    correct += c->parts[1]->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr) == g;
  }
  EXPECT_GE(correct, 5);
}

}  // namespace
}  // namespace zando
