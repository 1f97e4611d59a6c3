// Training of one network: the costs by hand, the step-size schedule's decisions, the
// gradient against finite differences, and what a stopped call keeps.
#include "model/network_training.h"

#include <cfloat>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "model/training_fixtures.h"

namespace zando {
namespace {

using testing_shapes::FakeHost;

// A matrix of `columns` columns, filled row by row.
Matrix byRows(int columns, std::initializer_list<double> values) {
  return Matrix::Map(values.begin(), columns, static_cast<Eigen::Index>(values.size()) / columns).transpose();
}

TEST(NetworkTrainingTest, CostsByHand) {
  // Divided by rows, not entries; tanh targets split at 0, logistic ones (modes 0 and 2) at 0.5.
  EXPECT_NEAR(crossEntropyCost(byRows(2, {0.5, -0.5, 0.0, 0.2}), byRows(2, {1, -1, 0, 1}), 1),
              -(2 * std::log(0.75) + std::log(0.5) + std::log(0.6)) / 2.0, 1e-15);
  for (int mode : {0, 2}) {
    EXPECT_NEAR(crossEntropyCost(byRows(3, {0.8, 0.3, 0.3}), byRows(3, {1, 0, 0.5}), mode),
                -(std::log(0.8) + 2 * std::log(0.7)), 1e-15);
  }
  // A non-finite term makes the cost huge but finite.
  EXPECT_EQ(crossEntropyCost(byRows(2, {0.5, 1.0, 0.5, 0.5}), byRows(2, {1, 0, 1, 1}), 0), DBL_MAX / 2.0);
  EXPECT_EQ(crossEntropyCost(byRows(1, {std::nan("")}), byRows(1, {1}), 0), DBL_MAX);
  // Weight decay leaves the biases (row 0) out.
  EXPECT_DOUBLE_EQ(regularizationCost(7, {byRows(2, {9, 9, 1, 2}), byRows(1, {9, 3})}, 0.5), (1 + 4 + 9) * 0.5 / 14);
}

TEST(NetworkTrainingTest, ScheduleDecisions) {
  EXPECT_EQ(StepSchedule(2).learningRate, 0.003);
  // Accepted steps multiply the rate by 1.4, 1.54, 1.694; an overshoot by 0.6; then the factors
  // start again at 1.0, 1.1. Exactly one percent worse is still a step forward.
  StepSchedule s(1);
  double expected = 0.0009, previous = DBL_MAX;
  const double costs[] = {10, 9, 8, 8.0 * 1.01 * 1.0001, 7, 1.01 * 7};
  const double factors[] = {1.4, 1.54, 1.694, 0.6, 1.0, 1.1};
  for (int i = 0; i < 6; ++i) {
    ASSERT_EQ(s.judge(costs[i], previous), i == 3 ? StepSchedule::Rejected : StepSchedule::Accepted) << i;
    s.applyStep();
    expected *= factors[i];
    EXPECT_NEAR(s.learningRate, expected, expected * 1e-12) << i;
    s.advance();
    if (i != 3) previous = costs[i];
  }
  // Two flat steps in a row converge; one in between that moves starts over.
  StepSchedule flat(1);
  for (const auto& step : {std::pair(5.0, 5.00005), std::pair(4.0, 5.0), std::pair(4.0, 4.00009)}) {
    EXPECT_EQ(flat.judge(step.first, step.second), StepSchedule::Accepted);
  }
  EXPECT_EQ(flat.judge(4.00001, 4.0), StepSchedule::Converged);
  // The score is checked after 101 iterations, then every 250; a rise below 0.005 ends it, even
  // at 1.0.
  for (int interval : {101, 250}) {
    int iterations = 1;
    while (!s.scoringDue()) ++iterations;
    EXPECT_EQ(iterations, interval);
    EXPECT_EQ(s.stalled(1.0), interval == 250);
  }
  EXPECT_TRUE(StepSchedule(0).stalled(0.0049));
}

// Three separable clusters over `features` inputs, with noise.
TrainingData clusterData(int transferMode, uint32_t seed, int features) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> noise(0.0, 0.3);
  TrainingData data;
  for (SampleSet* set : {&data.training, &data.validation}) {
    set->count = set == &data.training ? 36 : 24;
    set->inputs = Matrix::NullaryExpr(set->count, features + 1, [&](Eigen::Index r, Eigen::Index c) {
      return c == 0 ? 1.0 : ((c * 7 + r % 3 * 13) % 5 - 2) * 0.5 + noise(rng);
    });
    set->targets.setConstant(set->count, 3, transferMode == 1 ? -1.0 : 0.0);
    for (int r = 0; r < set->count; ++r) set->targets(r, r % 3) = 1.0;
  }
  data.scoring = data.validation;
  return data;
}

// descend() steps along the gradient of the cost times the row count. With the logistic function,
// and with tanh at slope 1, the two agree exactly.
TEST(NetworkTrainingTest, GradientMatchesFiniteDifferences) {
  for (int mode : {0, 1}) {
    const TrainingData data = clusterData(mode, 5, 5);
    std::mt19937 rng(mode);
    std::uniform_real_distribution<double> uniform(-0.5, 0.5);
    std::vector<Matrix> weights = {Matrix(6, 6), Matrix(7, 6), Matrix(7, 3)};
    for (Matrix& w : weights) w = w.unaryExpr([&](double) { return uniform(rng); });
    GradientDescent descent(weights, data, mode, 1.0);
    const auto cost = [&](const std::vector<Matrix>& w) {
      double c, v;
      descent.evaluate(w, 0.3, &c, &v);
      return c * data.training.count;
    };
    cost(weights);
    std::vector<Matrix> stepped = weights;
    descent.descend(stepped, 0.3, 1.0);
    for (size_t k = 0; k < weights.size(); ++k) {
      for (Eigen::Index i = 0; i < weights[k].size(); ++i) {
        std::vector<Matrix> up = weights, down = weights;
        up[k].data()[i] += 1e-6;
        down[k].data()[i] -= 1e-6;
        const double numeric = (cost(up) - cost(down)) / 2e-6;
        const double analytic = weights[k].data()[i] - stepped[k].data()[i];
        ASSERT_NEAR(analytic, numeric, 1e-5 * (1.0 + std::fabs(numeric))) << mode << " " << k << " " << i;
      }
    }
  }
}

// Stopped after its fifth iteration, a call keeps the weights with the lowest validation cost,
// their own costs, and their score.
TEST(NetworkTrainingTest, StopKeepsTheBestWeightsWithTheirFigures) {
  const TrainingData data = clusterData(1, 2, featureCount(ModelParameters()));
  ModelParameters parameters;
  parameters.transferMode = 1;
  NeuralNetwork network(parameters, 1, 8, 3);
  FakeHost host;
  host.stopAtRead = 6;
  EXPECT_EQ(trainNetwork(host, network, data, 0.06, 0.0), TrainingResult_Aborted);
  double cost, validationCost;
  GradientDescent(network.weights, data, 1, 0.33333).evaluate(network.weights, 0.06, &cost, &validationCost);
  EXPECT_EQ(cost, network.trainingCost);
  EXPECT_EQ(validationCost, network.validationCost);
  EXPECT_DOUBLE_EQ(network.recognitionScore, scoreNetwork(data.scoring, network));
}

}  // namespace
}  // namespace zando
