// The search as a training thread runs it: its ends, what lands in the model, and that pinned
// settings stay where the application put them.
#include "model/training_search.h"

#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "model/training_fixtures.h"

namespace zando {
namespace {

using testing_shapes::FakeHost;
using testing_shapes::ShapeMaker;
using testing_shapes::addGestures;

constexpr double kMax = std::numeric_limits<double>::max();

void expectFinishedOnce(FakeHost& host, double score) {
  EXPECT_EQ(host.state.load(), TrainingState_Finished);
  EXPECT_EQ(host.finishes, std::vector<double>{score});
  EXPECT_EQ(host.gestureModel.recognitionScore, score);
}

// A winner lands with buffers for one stroke: F + 1, hidden width + 1, one per gesture.
void expectUsableNetwork(const GestureModel& model) {
  const size_t layers = model.weights.size();
  ASSERT_EQ(model.layerBuffers.size(), layers + 1);
  EXPECT_EQ(model.weights[0].rows(), featureCount(model.parameters) + 1);
  for (size_t k = 0; k < layers; ++k) EXPECT_EQ(model.layerBuffers[k].cols(), model.weights[k].rows());
  EXPECT_EQ(model.layerBuffers[layers].cols(), model.gestureCount());
  for (const Matrix& buffer : model.layerBuffers) EXPECT_EQ(buffer.rows(), 1);
  EXPECT_EQ(model.gestureMeans.size(), static_cast<size_t>(model.gestureCount()));
}

TEST(TrainingSearchTest, RunsWithoutAnythingToTrainEndAtOnce) {
  FakeHost empty;  // no gestures: every answer is right
  empty.gestureModel.weights.push_back(Matrix::Ones(2, 2));
  runTraining(empty);
  expectFinishedOnce(empty, 1.0);
  EXPECT_TRUE(empty.updates.empty());
  EXPECT_TRUE(empty.gestureModel.weights.empty());
  EXPECT_TRUE(empty.gestureModel.networkInvalid);

  ShapeMaker maker(1);
  FakeHost disabled;  // no enabled gesture: no training data
  addGestures(disabled.gestureModel, maker, {0, 1}, 6);
  for (Gesture* g : disabled.gestureModel.gestures) g->gestureEnabled = false;
  runTraining(disabled);
  expectFinishedOnce(disabled, 0.0);
  EXPECT_TRUE(disabled.gestureModel.weights.empty());
  EXPECT_TRUE(disabled.gestureModel.networkInvalid);

  // Whatever throws inside the run (here a callback, as a failed allocation would) ends it the
  // same way.
  FakeHost failing;
  addGestures(failing.gestureModel, maker, {0, 1}, 5);
  failing.updateFunction = [](double, void*) { throw std::bad_alloc(); };
  runTraining(failing);
  expectFinishedOnce(failing, 0.0);
  EXPECT_TRUE(failing.gestureModel.weights.empty());
  EXPECT_TRUE(failing.gestureModel.networkInvalid);
}

TEST(TrainingSearchTest, DistinctShapesReachAPerfectScoreWellBeforeTheLimit) {
  ShapeMaker maker(3);
  FakeHost host;
  host.maxTime = 20;
  addGestures(host.gestureModel, maker, {0, 1, 2, 3, 4}, 10);
  const time_t start = std::time(nullptr);
  runTraining(host);
  EXPECT_GE(host.gestureModel.recognitionScore, 0.95);
  EXPECT_LT(std::time(nullptr) - start, 15);
  EXPECT_EQ(host.finishes.size(), 1u);
  EXPECT_FALSE(host.gestureModel.networkInvalid);
  expectUsableNetwork(host.gestureModel);
}

// Three gestures of one shape cannot all be right, so the search tries candidates until the
// limit; the pinned settings survive all of them.
TEST(TrainingSearchTest, PinnedSettingsAreNeverMoved) {
  struct Case {
    std::map<int, int> pins;
    int layers, nodes, waypoints, waypointMode;
  };
  const Case cases[] = {
      {{{0, 100}, {1, 20}, {2, 1}, {3, 6}, {4, 0}, {5, 1}, {6, 2}, {7, 1}, {8, 0}}, 1, 20, 6, 0},
      // Zeros fail the start condition and keep the defaults, but pin them all the same.
      {{{1, 0}, {2, 0}, {3, 0}, {4, 2}}, 2, 144, 16, 2},
  };
  ShapeMaker maker(4);
  for (const Case& c : cases) {
    FakeHost host;
    host.maxTime = 2;
    host.reportAll = true;
    host.parameters = c.pins;
    addGestures(host.gestureModel, maker, {0, 1, 1, 1}, 8);
    runTraining(host);
    const GestureModel& model = host.gestureModel;
    EXPECT_GT(host.updates.size(), 4u);  // at least one per candidate
    ASSERT_EQ(model.weights.size(), static_cast<size_t>(c.layers + 1));
    EXPECT_EQ(model.weights[0].cols(), c.nodes);
    EXPECT_EQ(model.parameters.waypointCount, c.waypoints);
    EXPECT_EQ(model.parameters.waypointFeatureMode, c.waypointMode);
    if (c.pins.count(6) != 0) {
      EXPECT_EQ(model.parameters.featureSelector, 2);
      EXPECT_EQ(model.parameters.featureFlagA, 1);
      EXPECT_EQ(model.parameters.featureFlagB, 0);
    }
    expectUsableNetwork(model);
  }
}

// Stopped in its second iteration, the first candidate is still a full one: scored, accepted,
// and in the model.
TEST(TrainingSearchTest, StopKeepsThePartlyTrainedCandidate) {
  ShapeMaker maker(5);
  FakeHost host;
  host.reportAll = true;
  host.stopAtRead = 4;  // the loop's test, the candidate's start, then one per iteration
  addGestures(host.gestureModel, maker, {0, 1, 2, 3}, 8);
  runTraining(host);
  EXPECT_EQ(host.finishes.size(), 1u);
  EXPECT_LT(host.gestureModel.validationCost, kMax);
  ASSERT_EQ(host.updates.size(), 2u);  // the start's 0.0, then the acceptance
  EXPECT_EQ(host.updates.back(), host.gestureModel.recognitionScore);
  expectUsableNetwork(host.gestureModel);
}

}  // namespace
}  // namespace zando
