// Identification at the end of a stroke, on both routes: by comparison with stored samples while
// no network is usable, and through the network, with the tie rules and codes a host sees.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "features/feature_extraction.h"
#include "features/similarity.h"
#include "recognizer_fixture.h"

namespace zando {
namespace {

using testing_support::performShape;
using testing_support::recordShape;

class IdentificationTest : public ::testing::Test {
 protected:
  void SetUp() override { r = GestureRecognition::createZeroFilled(); }
  void TearDown() override { delete r; }

  void recordSet(int gestures, int samples) {
    for (int g = 0; g < gestures; ++g) {
      ASSERT_EQ(r->createGesture("g", nullptr), g);
      for (int s = 0; s < samples; ++s) ASSERT_EQ(recordShape(*r, g, g, rng), g);
    }
  }

  // A network whose last layer makes the outputs exactly `outputs`, whatever the input: all
  // weights zero but the biases of the last layer (logistic mode inverts them back).
  void installConstantNetwork(const std::vector<double>& outputs) {
    GestureModel& m = r->gestureModel;
    const Eigen::Index f = featureCount(m.parameters);
    const Eigen::Index g = static_cast<Eigen::Index>(outputs.size());
    m.weights = {Matrix::Zero(f + 1, 4), Matrix::Zero(5, g)};
    for (Eigen::Index i = 0; i < g; ++i) {
      const double y = outputs[static_cast<size_t>(i)];
      m.weights[1](0, i) = std::isnan(y) ? y : std::log(y / (1.0 - y));
    }
    m.layerBuffers = {Matrix::Zero(1, f + 1), Matrix::Zero(1, 5), Matrix::Zero(1, g)};
    m.parameters.transferMode = 0;
    m.networkInvalid = false;
  }

  GestureRecognition* r = nullptr;
  std::mt19937 rng{11};
};

TEST_F(IdentificationTest, NothingToChooseFromGivesMinusNine) {
  double p[2];
  double s[2];
  int n = 2;
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), ReturnCode_NoGestures);
  performShape(*r, 0, -1, rng);
  double similarity = 3.0;
  EXPECT_EQ(r->endStrokeAndGetSimilarity(&similarity, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_NoGestures);
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_NoGestures);
  EXPECT_EQ(n, 0);
  performShape(*r, 0, -1, rng);
  n = 2;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilitiesAndSimilarities(p, s, &n, nullptr, nullptr, nullptr, nullptr,
                                                              nullptr),
            ReturnCode_NoGestures);
}

TEST_F(IdentificationTest, UntrainedSetIdentifiesByComparisonWithSamples) {
  recordSet(4, 3);
  ASSERT_TRUE(r->gestureModel.networkInvalid);
  int hits = 0;
  for (int trial = 0; trial < 20; ++trial) {
    const int shape = trial % 4;
    performShape(*r, shape, -1, rng);
    double pos[3] = {0, 0, 0};
    double scale = 0;
    double dir0[3] = {0, 0, 0};
    if (r->endStroke(pos, &scale, dir0, nullptr, nullptr) == shape) ++hits;
    // Where the gesture happened comes back in world space: in front of the head, about its size.
    EXPECT_NEAR(pos[1], 1.4, 0.15);
    EXPECT_NEAR(pos[2], 0.45, 0.1);
    EXPECT_GT(scale, 0.05);
    EXPECT_NEAR(dir0[0] * dir0[0] + dir0[1] * dir0[1] + dir0[2] * dir0[2], 1.0, 1e-9);
  }
  EXPECT_GE(hits, 18);
}

TEST_F(IdentificationTest, SampleRouteProbabilitiesAreInverseDistances) {
  recordSet(2, 2);
  performShape(*r, 1, -1, rng);
  const Stroke probe = r->currentStroke;
  double p[2];
  int n = 2;
  const int id = r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(id, 1);
  ASSERT_EQ(n, 2);
  // Each value is 1/d to the nearest of the compared samples, not limited to 1.
  const ModelParameters& params = r->gestureModel.parameters;
  const std::vector<double> x = extractFeatures(probe, params);
  for (int g = 0; g < 2; ++g) {
    double best = 0;
    for (const Stroke* sample : r->gestureModel.gestures[static_cast<size_t>(g)]->gestureSamples) {
      const double d = strokeDistance(x, extractFeatures(*sample, params), params);
      best = std::max(best, d <= 0 ? 1.0 : 1.0 / d);
    }
    EXPECT_DOUBLE_EQ(p[g], best);
  }
  EXPECT_GT(p[1], p[0]);

  // In tanh mode the values are rescaled by 0.5 + 0.5 p, on this route too.
  r->gestureModel.parameters.transferMode = 1;
  r->currentStroke = probe;
  r->strokeStarted = true;
  double q[2];
  n = 2;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(q, &n, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_DOUBLE_EQ(q[1], 0.5 + 0.5 * p[1]);
}

TEST_F(IdentificationTest, OnlyTheFirstThreeSamplesCount) {
  recordSet(2, 3);
  // A fourth sample of gesture 0 that is an exact copy of the probe does not help it.
  performShape(*r, 1, -1, rng);
  const Stroke probe = r->currentStroke;
  r->gestureModel.gestures[0]->gestureSamples.push_back(new Stroke(probe));
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  // As the first sample, the same copy wins at distance zero.
  r->gestureModel.gestures[0]->gestureSamples.insert(r->gestureModel.gestures[0]->gestureSamples.begin(),
                                                     new Stroke(probe));
  r->currentStroke = probe;
  r->strokeStarted = true;
  double p[2];
  int n = 2;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(p[0], 1.0);  // an exact match gives only 1.0
}

TEST_F(IdentificationTest, NetworkRouteTieRulesAndCounts) {
  recordSet(3, 1);
  installConstantNetwork({0.25, 0.7, 0.7});
  performShape(*r, 0, -1, rng);
  // endStroke takes the lowest index of equal outputs ...
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  // ... the probability forms the highest.
  double p[3];
  int n = 3;
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr), 2);
  EXPECT_EQ(n, 3);
  EXPECT_NEAR(p[0], 0.25, 1e-12);
  // A count below the gesture count yields only that many entries, and the answer lies among them.
  n = 1;
  p[1] = -5.0;
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(n, 1);
  EXPECT_EQ(p[1], -5.0);
}

TEST_F(IdentificationTest, AllNaNOutputsChooseNothing) {
  recordSet(2, 1);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  installConstantNetwork({nan, nan});
  double p[2];
  int n = 2;
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStrokeAndGetAllProbabilities(p, &n, nullptr, nullptr, nullptr, nullptr, nullptr),
            ReturnCode_NoGestures);
  // endStroke starts from index 0 and no NaN beats it.
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

TEST_F(IdentificationTest, NetworkMismatchIsReportedAndTheCountCleared) {
  recordSet(2, 1);
  r->gestureModel.networkInvalid = false;  // claims a network it does not have
  double p[2];
  double s[2];
  int n = 2;
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStrokeAndGetAllProbabilitiesAndSimilarities(p, s, &n, nullptr, nullptr, nullptr, nullptr,
                                                              nullptr),
            ReturnCode_ModelMismatch);
  EXPECT_EQ(n, 0);
  // A network built for another feature length does not fit either.
  installConstantNetwork({0.3, 0.6});
  r->gestureModel.parameters.waypointCount = 12;
  performShape(*r, 0, -1, rng);
  EXPECT_EQ(r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr), ReturnCode_ModelMismatch);
}

TEST_F(IdentificationTest, SimilarityIsOneAtTheMeanAndFiniteWithOneSample) {
  recordSet(2, 1);
  performShape(*r, 1, -1, rng);
  const Stroke probe = r->currentStroke;
  GestureModel& m = r->gestureModel;
  const std::vector<double> x = extractFeatures(probe, m.parameters);
  // Statistics as one sample leaves them: the mean is the vector, every variance 0.
  m.gestureMeans = {std::vector<double>(x.size(), 0.0), x};
  m.gestureDeviations = {std::vector<double>(x.size(), 0.0), std::vector<double>(x.size(), 0.0)};
  // Gesture 1's only sample is the probe itself, so both routes name gesture 1.
  *m.gestures[1]->gestureSamples[0] = probe;
  double similarity = -2.0;
  EXPECT_EQ(r->endStrokeAndGetSimilarity(&similarity, nullptr, nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(similarity, 1.0);
  double p[2], s[2];
  int n = 2;
  r->currentStroke = probe;
  r->strokeStarted = true;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilitiesAndSimilarities(p, s, &n, nullptr, nullptr, nullptr, nullptr,
                                                              nullptr),
            1);
  EXPECT_EQ(s[1], 1.0);
  EXPECT_TRUE(std::isfinite(s[0]));
  EXPECT_GE(s[0], 0.0);
  EXPECT_LT(s[0], 1.0);
  // Without statistics for a gesture the value is -1, handed on as it is.
  m.gestureMeans.pop_back();
  m.gestureDeviations.pop_back();
  r->currentStroke = probe;
  r->strokeStarted = true;
  n = 2;
  EXPECT_EQ(r->endStrokeAndGetAllProbabilitiesAndSimilarities(p, s, &n, nullptr, nullptr, nullptr, nullptr,
                                                              nullptr),
            1);
  EXPECT_EQ(s[1], -1.0);
}

}  // namespace
}  // namespace zando
