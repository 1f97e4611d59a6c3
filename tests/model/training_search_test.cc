// The search as a training thread runs it: its ends, what lands in the model, and that pinned
// settings stay where the application put them.
#include "model/training_search.h"

#include <cfloat>
#include <new>

#include <gtest/gtest.h>

#include "model/training_fixtures.h"

namespace zando {
namespace {

using testing_shapes::FakeHost;
using testing_shapes::ShapeMaker;
using testing_shapes::addGestures;

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

// No gestures: every answer is right. No enabled gesture, or anything thrown inside the run (here
// by a callback, as by a failed allocation): 0.0. Either way no network, and one finish call.
TEST(TrainingSearchTest, RunsWithoutAnythingToTrainEndAtOnce) {
  ShapeMaker maker(1);
  for (int variant = 0; variant < 3; ++variant) {
    FakeHost host;
    host.gestureModel.weights.push_back(Matrix::Ones(2, 2));
    if (variant > 0) addGestures(host.gestureModel, maker, {0, 1}, 6);
    for (Gesture* g : host.gestureModel.gestures) g->gestureEnabled = variant != 1;
    if (variant == 2) host.updateFunction = [](double, void*) { throw std::bad_alloc(); };
    runTraining(host);
    const double score = variant == 0 ? 1.0 : 0.0;
    EXPECT_EQ(host.state.load(), TrainingState_Finished);
    EXPECT_EQ(host.finishes, std::vector<double>{score}) << variant;
    EXPECT_EQ(host.gestureModel.recognitionScore, score);
    EXPECT_TRUE(host.gestureModel.weights.empty()) << variant;
    EXPECT_TRUE(host.gestureModel.networkInvalid);
    EXPECT_TRUE(host.updates.empty());
  }
}

// Three gestures of one shape cannot all be right, so the search moves from candidate to
// candidate until the stop request; the pinned settings must survive every move. Zeros fail the
// start condition and keep the defaults, but pin them all the same. A move shows only when a
// moved candidate wins, so each case runs a few short searches.
TEST(TrainingSearchTest, PinnedSettingsAreNeverMoved) {
  struct Case {
    std::map<int, int> pins;
    int layers, nodes, waypoints, waypointMode;
  };
  const Case cases[] = {{{{1, 20}, {2, 1}, {3, 6}, {4, 0}}, 1, 20, 6, 0},
                        {{{1, 12}, {2, 0}, {3, 0}, {4, 2}}, 2, 12, 16, 2}};
  ShapeMaker maker(4);
  for (const Case& c : cases) {
    for (int run = 0; run < 6; ++run) {
      FakeHost host;
      host.stopAtRead = 1000;  // a few candidates, a few milliseconds
      host.reportAll = true;
      host.parameters = c.pins;
      addGestures(host.gestureModel, maker, {0, 1, 1, 1}, 5);
      runTraining(host);
      const GestureModel& model = host.gestureModel;
      // Several candidates ran (one update each at least), unless a lucky first one scored
      // perfectly and ended the run at once.
      if (model.recognitionScore < 0.9999999999) {
        EXPECT_GT(host.updates.size(), 4u);
      }
      ASSERT_EQ(model.weights.size(), static_cast<size_t>(c.layers + 1));
      EXPECT_EQ(model.weights[0].cols(), c.nodes);
      EXPECT_EQ(model.parameters.waypointCount, c.waypoints);
      EXPECT_EQ(model.parameters.waypointFeatureMode, c.waypointMode);
      expectUsableNetwork(model);
    }
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
  EXPECT_LT(host.gestureModel.validationCost, DBL_MAX);
  ASSERT_EQ(host.updates.size(), 2u);  // the start's 0.0, then the acceptance
  EXPECT_EQ(host.updates.back(), host.gestureModel.recognitionScore);
  expectUsableNetwork(host.gestureModel);
}

}  // namespace
}  // namespace zando
