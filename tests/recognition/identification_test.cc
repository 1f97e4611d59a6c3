// Identification at the end of a stroke, on both routes: by comparison with stored samples while
// no network is usable, and through the network, with the tie rules and codes a host sees.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "features/feature_extraction.h"
#include "recognizer_fixture.h"

namespace zando {
namespace {

using testing_support::endStroke, testing_support::endWithProbabilities, testing_support::endWithSimilarities,
    testing_support::endWithSimilarity, testing_support::performShape;

class IdentificationTest : public testing_support::RecognizerTest {
 protected:
  void recordSet(int gestures, int samples) { testing_support::recordSet(*r, gestures, samples, rng); }

  // A network whose outputs are exactly `outputs`, whatever the input: all weights zero but the
  // biases of the last layer, which the logistic function turns back into the outputs.
  void installConstantNetwork(const std::vector<double>& outputs) {
    GestureModel& m = r->gestureModel;
    const Eigen::Index f = featureCount(m.parameters), g = static_cast<Eigen::Index>(outputs.size());
    m.weights = {Matrix::Zero(f + 1, 4), Matrix::Zero(5, g)};
    for (Eigen::Index i = 0; i < g; ++i) m.weights[1](0, i) = std::log(outputs[i] / (1.0 - outputs[i]));
    m.layerBuffers = {Matrix::Zero(1, f + 1), Matrix::Zero(1, 5), Matrix::Zero(1, g)};
    m.parameters.transferMode = 0;
    m.networkInvalid = false;
  }

  // Performs `shape` for identification and keeps the stroke as the probe ...
  void perform(int shape) {
    performShape(*r, shape, -1, rng);
    probe = r->currentStroke;
  }
  // ... which every end form then meets as if it had just been captured.
  GestureRecognition& replay() {
    r->currentStroke = probe;
    r->strokeStarted = true;
    return *r;
  }

  std::mt19937 rng{11};
  Stroke probe;
};

TEST_F(IdentificationTest, NothingToChooseFromGivesMinusNineAndStillTheOutputs) {
  perform(0);
  double pos[3] = {9, 9, 9}, dir0[3] = {9, 9, 9}, p[2], s[2];
  int n = 2;
  // Where the stroke happened is written even without an answer: in world space, unit direction.
  EXPECT_EQ(r->endStroke(pos, nullptr, dir0, nullptr, nullptr), ReturnCode_NoGestures);
  EXPECT_NEAR(pos[1], 1.4, 0.15);
  EXPECT_NEAR(dir0[0] * dir0[0] + dir0[1] * dir0[1] + dir0[2] * dir0[2], 1.0, 1e-9);
  EXPECT_EQ(endWithProbabilities(replay(), p, &n), ReturnCode_NoGestures);
  EXPECT_EQ(n, 0);
  n = 2;
  EXPECT_EQ(endWithSimilarities(replay(), p, s, &n), ReturnCode_NoGestures);
}

TEST_F(IdentificationTest, UntrainedSetIdentifiesByComparisonWithSamples) {
  recordSet(4, 3);
  ASSERT_TRUE(r->gestureModel.networkInvalid);
  int hits = 0;
  for (int trial = 0; trial < 20; ++trial) {
    performShape(*r, trial % 4, -1, rng);
    double pos[3] = {0, 0, 0}, scale = 0;
    if (r->endStroke(pos, &scale, nullptr, nullptr, nullptr) == trial % 4) ++hits;
    // In front of the head, about the size of the performance.
    EXPECT_NEAR(pos[2], 0.45, 0.1);
    EXPECT_GT(scale, 0.05);
  }
  EXPECT_GE(hits, 18);
}

TEST_F(IdentificationTest, SampleRouteProbabilitiesComeFromTheFirstThreeSamples) {
  recordSet(2, 3);
  perform(1);
  double p[2], q[2];
  int n = 2;
  EXPECT_EQ(endWithProbabilities(*r, p, &n), 1);
  ASSERT_EQ(n, 2);
  EXPECT_GT(p[1], p[0]);
  // In tanh mode the values are rescaled by 0.5 + 0.5 p, on this route too.
  r->gestureModel.parameters.transferMode = 1;
  EXPECT_EQ(endWithProbabilities(replay(), q, &n), 1);
  EXPECT_DOUBLE_EQ(q[1], 0.5 + 0.5 * p[1]);
  r->gestureModel.parameters.transferMode = 0;

  // A fourth sample of gesture 0 that is an exact copy of the probe does not help it ...
  std::vector<Stroke*>& samples = r->gestureModel.gestures[0]->gestureSamples;
  samples.push_back(new Stroke(probe));
  EXPECT_EQ(endStroke(replay()), 1);
  // ... as the first it wins, at distance zero, with only 1.0.
  samples.insert(samples.begin(), new Stroke(probe));
  EXPECT_EQ(endWithProbabilities(replay(), p, &n), 0);
  EXPECT_EQ(p[0], 1.0);
}

TEST_F(IdentificationTest, NetworkRouteTieRulesAndCounts) {
  recordSet(3, 1);
  installConstantNetwork({0.25, 0.7, 0.7});
  perform(0);
  // endStroke takes the lowest index of equal outputs, the probability forms the highest.
  EXPECT_EQ(endStroke(*r), 1);
  double p[3];
  int n = 3;
  EXPECT_EQ(endWithProbabilities(replay(), p, &n), 2);
  EXPECT_EQ(n, 3);
  EXPECT_NEAR(p[0], 0.25, 1e-12);
  // A count below the gesture count yields only that many entries, and the answer lies among them.
  n = 1;
  p[1] = -5.0;
  EXPECT_EQ(endWithProbabilities(replay(), p, &n), 0);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(p[1], -5.0);

  // All outputs NaN: the probability forms find nothing, endStroke keeps its starting index 0.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  installConstantNetwork({nan, nan, nan});
  n = 3;
  EXPECT_EQ(endWithProbabilities(replay(), p, &n), ReturnCode_NoGestures);
  EXPECT_EQ(endStroke(replay()), 0);

  // A network built for another feature length, or none at all, does not fit.
  r->gestureModel.parameters.waypointCount = 12;
  EXPECT_EQ(endStroke(replay()), ReturnCode_ModelMismatch);
  r->gestureModel.weights.clear();
  double s[3];
  n = 3;
  EXPECT_EQ(endWithSimilarities(replay(), p, s, &n), ReturnCode_ModelMismatch);
  EXPECT_EQ(n, 0);
}

TEST_F(IdentificationTest, SimilarityIsOneAtTheMeanAndMinusOneWithoutStatistics) {
  recordSet(2, 1);
  perform(1);
  GestureModel& m = r->gestureModel;
  const std::vector<double> x = extractFeatures(probe, m.parameters);
  // Statistics as one sample leaves them: the mean is the vector, every variance 0.
  const std::vector<double> zeros(x.size(), 0.0);
  m.gestureMeans = {zeros, x};
  m.gestureDeviations = {zeros, zeros};
  // Gesture 1's only sample is the probe itself, so both routes name gesture 1.
  *m.gestures[1]->gestureSamples[0] = probe;
  double similarity = -2.0, p[2], s[2];
  EXPECT_EQ(endWithSimilarity(*r, &similarity), 1);
  EXPECT_EQ(similarity, 1.0);
  int n = 2;
  EXPECT_EQ(endWithSimilarities(replay(), p, s, &n), 1);
  EXPECT_EQ(s[1], 1.0);
  EXPECT_TRUE(s[0] >= 0.0 && s[0] < 1.0);
  // Without statistics for a gesture the value is -1, handed on as it is.
  m.gestureMeans.pop_back();
  m.gestureDeviations.pop_back();
  EXPECT_EQ(endWithSimilarities(replay(), p, s, &n), 1);
  EXPECT_EQ(s[1], -1.0);
}

}  // namespace
}  // namespace zando
