// The gesture store as a host uses it: gestures and samples in, names and strokes back out, and
// a trained network that stays usable as gestures come and go.
#include <gtest/gtest.h>

#include <random>

#include "features/feature_extraction.h"
#include "recognizer_fixture.h"

namespace zando {
namespace {

using testing_support::endStroke, testing_support::endWithProbabilities, testing_support::performShape,
    testing_support::recordShape;

class GestureStoreTest : public testing_support::RecognizerTest {
 protected:
  std::mt19937 rng{7};
};

TEST_F(GestureStoreTest, NamesAreCopiedAndReadBackBounded) {
  std::string name = "circle";
  EXPECT_EQ(r->createGesture(name.c_str(), nullptr), 0);
  name[0] = 'X';                                      // the store keeps its own copy
  EXPECT_EQ(r->createGesture("circle", nullptr), 1);  // names may repeat
  EXPECT_STREQ(r->getGestureName(0), "circle");
  char buffer[4];
  EXPECT_EQ(r->copyGestureName(0, buffer, 4), 4);
  EXPECT_STREQ(buffer, "cir");
}

TEST_F(GestureStoreTest, SamplesAreReadBackRawAndProcessed) {
  ASSERT_EQ(r->createGesture("circle", nullptr), 0);
  for (int i = 0; i < 2; ++i) ASSERT_EQ(recordShape(*r, 0, 0, rng), 0);
  EXPECT_EQ(r->getGestureSampleLength(0, 1, false), 60);

  double hand[60][3], handQ[60][4], head[60][3], headQ[60][4];
  Stroke& stored = *r->gestureModel.gestures[0]->gestureSamples[0];
  for (size_t i = 0; i < stored.headPoints.size(); ++i) stored.headPoints[i].position.y = static_cast<double>(i);
  EXPECT_EQ(r->getGestureSampleStroke(0, 0, false, 60, hand, handQ, head, headQ), 60);
  EXPECT_EQ(hand[59][0], stored.handPoints[59].position.x);
  EXPECT_EQ(head[10][1], 10.0);

  // Processed rows are the waypoint blocks of the feature vector; head rows come from
  // round(count * i / n) of the sample's head records.
  const std::vector<double> features = extractFeatures(stored, r->gestureModel.parameters);
  EXPECT_EQ(r->getGestureSampleStroke(0, 0, true, 60, hand, handQ, head, headQ), 16);
  for (size_t i = 0; i < 16; ++i) {
    EXPECT_EQ(hand[i][1], features[7 * i + 1]);
    EXPECT_EQ(handQ[i][2], features[7 * i + 5]);
  }
  EXPECT_EQ(head[15][1], 56.0);
  // Mode 4 blocks are 9 wide but read at a stride of 3, like positions only.
  r->gestureModel.parameters.waypointFeatureMode = 4;
  const std::vector<double> wide = extractFeatures(stored, r->gestureModel.parameters);
  EXPECT_EQ(r->getGestureSampleStroke(0, 0, true, 4, hand, handQ, nullptr, nullptr), 4);
  EXPECT_EQ(hand[2][0], wide[6]);
  EXPECT_EQ(handQ[2][3], 1.0);
}

TEST_F(GestureStoreTest, SampleTypesDeletionAndBusyGuards) {
  ASSERT_EQ(r->createGesture("a", nullptr), 0);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(recordShape(*r, i, 0, rng), 0);
  EXPECT_EQ(r->setGestureSampleType(0, 0, 2), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->setGestureSampleType(99, 0, 2), ReturnCode_InvalidIndex);
  EXPECT_EQ(r->setGestureSampleType(0, 1, 1), 0);
  EXPECT_EQ(r->getGestureSampleType(0, 1), 1);
  const Stroke* third = r->gestureModel.gestures[0]->gestureSamples[2];
  EXPECT_EQ(r->deleteGestureSample(0, 1), 0);
  EXPECT_EQ(r->gestureModel.gestures[0]->gestureSamples[1], third);

  // Mutations refuse in the order training, loading, saving, before the index; renames, flags
  // and reads have no guard and reach the live record.
  r->savingState = kJobRunning;
  EXPECT_EQ(r->createGesture("b", nullptr), ReturnCode_SavingInProgress);
  EXPECT_EQ(r->deleteAllGestures(), ReturnCode_SavingInProgress);
  EXPECT_EQ(r->deleteGesture(7), ReturnCode_SavingInProgress);
  r->loadingState = kJobRunning;
  EXPECT_EQ(r->deleteGestureSample(0, 0), ReturnCode_LoadingInProgress);
  r->trainingState = kJobRunning;
  EXPECT_EQ(r->deleteAllGestureSamples(0), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->setGestureName(0, "renamed"), 0);
  EXPECT_STREQ(r->getGestureName(0), "renamed");
  EXPECT_EQ(r->setGestureEnabled(0, false), 0);
  EXPECT_FALSE(r->getGestureEnabled(0));
  EXPECT_EQ(r->numberOfGestures(), 1);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 2);
  r->savingState = r->trainingState = r->loadingState = kJobIdle;
  EXPECT_EQ(r->deleteAllGestureSamples(1), ReturnCode_InvalidIndex);
  EXPECT_EQ(r->deleteAllGestureSamples(0), 0);
  EXPECT_EQ(r->getGestureNumberOfSamples(0), 0);
}

TEST_F(GestureStoreTest, TrainedNetworkFollowsTheGestureCount) {
  // Without a network, deleting only moves the pointers.
  ASSERT_EQ(r->createGesture("x", nullptr), 0);
  EXPECT_EQ(r->deleteGesture(0), 0);
  for (int g = 0; g < 3; ++g) {
    ASSERT_EQ(r->createGesture("g", nullptr), g);
    ASSERT_EQ(recordShape(*r, g, g, rng), g);
  }
  // A network of the trained shape: F inputs, one hidden layer of 8, one output per gesture.
  GestureModel& m = r->gestureModel;
  const Eigen::Index f = featureCount(m.parameters);
  m.weights = {Matrix::Random(f + 1, 8), Matrix::Random(9, 3)};
  m.layerBuffers = {Matrix::Zero(1, f + 1), Matrix::Zero(1, 9), Matrix::Zero(1, 3)};
  m.networkInvalid = false;
  m.recognitionScore = 0.75;
  const Matrix before = m.weights.back();

  // A new gesture gets a zero column, and identification keeps running with four outputs.
  ASSERT_EQ(r->createGesture("new", nullptr), 3);
  ASSERT_EQ(m.weights.back().cols(), 4);
  EXPECT_TRUE(m.weights.back().leftCols(3) == before);
  EXPECT_TRUE(m.weights.back().col(3).isZero());
  performShape(*r, 1, -1, rng);
  double p[4];
  int n = 4;
  EXPECT_GE(endWithProbabilities(*r, p, &n), 0);
  EXPECT_EQ(n, 4);

  // Deleting gesture 1 removes its column: the old third output now reports as index 1.
  ASSERT_EQ(r->deleteGesture(1), 0);
  ASSERT_EQ(m.weights.back().cols(), 3);
  EXPECT_TRUE(m.weights.back().col(0) == before.col(0));
  EXPECT_TRUE(m.weights.back().col(1) == before.col(2));
  EXPECT_TRUE(m.weights.back().col(2).isZero());
  // Score and validity are left alone; the stored score is what a host reads.
  EXPECT_EQ(r->recognitionScore(false), 0.75);
  EXPECT_FALSE(m.networkInvalid);
  performShape(*r, 2, -1, rng);
  EXPECT_GE(endStroke(*r), 0);

  // Delete all: the network keeps its old width and no longer fits.
  ASSERT_EQ(r->deleteAllGestures(), 0);
  ASSERT_EQ(r->createGesture("solo", nullptr), 0);
  performShape(*r, 2, -1, rng);
  EXPECT_EQ(endStroke(*r), ReturnCode_ModelMismatch);
}

TEST_F(GestureStoreTest, RecomputedScoreCountsHitsWithoutChangingTheStoredOne) {
  EXPECT_TRUE(std::isnan(r->recognitionScore(true)));
  for (int g = 0; g < 3; ++g) ASSERT_EQ(r->createGesture("g", nullptr), g);
  EXPECT_TRUE(std::isnan(r->recognitionScore(true)));
  for (int g = 0; g < 3; ++g) {
    for (int s = 0; s < 3; ++s) ASSERT_EQ(recordShape(*r, g, g, rng), g);
  }
  // Without a network every sample is compared with the first three of each gesture, itself
  // among them: all hits.
  EXPECT_EQ(r->recognitionScore(true), 1.0);
  EXPECT_EQ(r->recognitionScore(false), 0.0);
}

}  // namespace
}  // namespace zando
