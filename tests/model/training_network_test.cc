// Training of one network: the costs by hand, the step-size schedule's decisions, the
// gradient against finite differences, and how a call ends.
#include "model/network_training.h"

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "model/training_fixtures.h"

namespace zando {
namespace {

using testing_shapes::FakeHost;
constexpr double kMax = std::numeric_limits<double>::max();

Matrix rows(std::initializer_list<std::initializer_list<double>> values) {
  Matrix m(static_cast<Eigen::Index>(values.size()), static_cast<Eigen::Index>(values.begin()->size()));
  Eigen::Index r = 0;
  for (const auto& row : values) m.row(r++) = Eigen::RowVectorXd::Map(row.begin(), static_cast<Eigen::Index>(row.size()));
  return m;
}

TEST(NetworkTrainingTest, CostsByHand) {
  // Divided by rows, not entries; tanh targets split at 0, logistic ones at 0.5.
  EXPECT_NEAR(crossEntropyCost(rows({{0.5, -0.5}, {0.0, 0.2}}), rows({{1, -1}, {0, 1}}), 1),
              -(2 * std::log(0.75) + std::log(0.5) + std::log(0.6)) / 2.0, 1e-15);
  for (int mode : {0, 2}) {
    EXPECT_NEAR(crossEntropyCost(rows({{0.8, 0.3, 0.3}}), rows({{1, 0, 0.5}}), mode),
                -(std::log(0.8) + 2 * std::log(0.7)), 1e-15);
  }
  // A non-finite term makes the cost huge but finite.
  EXPECT_EQ(crossEntropyCost(rows({{0.5, 1.0}, {0.5, 0.5}}), rows({{1, 0}, {1, 1}}), 0), DBL_MAX / 2.0);
  EXPECT_EQ(crossEntropyCost(rows({{std::nan("")}}), rows({{1}}), 0), DBL_MAX);
  // Weight decay leaves the biases (row 0) out.
  const std::vector<Matrix> weights = {rows({{9, 9}, {1, 2}}), rows({{9}, {3}})};
  EXPECT_DOUBLE_EQ(regularizationCost(7, weights, 0.5), (1.0 + 4.0 + 9.0) * 0.5 / 14.0);
}

TEST(NetworkTrainingTest, ScheduleDecisions) {
  EXPECT_EQ(StepSchedule(1).learningRate, 0.0009);
  EXPECT_EQ(StepSchedule(2).learningRate, 0.003);
  // Accepted steps multiply the rate by 1.4, 1.54, 1.694; an overshoot by 0.6; then the factors
  // start again at 1.0, 1.1.
  StepSchedule s(1);
  double expected = 0.0009, previous = kMax;
  const double costs[] = {10, 9, 8, 8.0 * 1.01 * 1.0001, 7, 6};
  const double factors[] = {1.4, 1.54, 1.694, 0.6, 1.0, 1.1};
  for (int i = 0; i < 6; ++i) {
    ASSERT_EQ(s.judge(costs[i], previous), i == 3 ? StepSchedule::Rejected : StepSchedule::Accepted) << i;
    s.applyStep();
    expected *= factors[i];
    EXPECT_NEAR(s.learningRate, expected, expected * 1e-12) << i;
    s.advance();
    if (i != 3) previous = costs[i];
  }
  // Exactly one percent worse is still a step forward.
  EXPECT_EQ(StepSchedule(0).judge(1.01 * 100.0, 100.0), StepSchedule::Accepted);
  // Two flat steps in a row converge; one in between that moves starts over.
  StepSchedule flat(1);
  EXPECT_EQ(flat.judge(5.0, 5.00005), StepSchedule::Accepted);
  EXPECT_EQ(flat.judge(4.0, 5.0), StepSchedule::Accepted);
  EXPECT_EQ(flat.judge(4.0, 4.00009), StepSchedule::Accepted);
  EXPECT_EQ(flat.judge(4.00001, 4.0), StepSchedule::Converged);
  // The score is checked after 101 iterations, then every 250; a rise below 0.005 ends it,
  // even at 1.0.
  int iterations = 1;
  while (!s.scoringDue()) ++iterations;
  EXPECT_EQ(iterations, 101);
  EXPECT_FALSE(s.stalled(1.0));
  for (iterations = 1; !s.scoringDue();) ++iterations;
  EXPECT_EQ(iterations, 250);
  EXPECT_TRUE(s.stalled(1.0));
  EXPECT_TRUE(StepSchedule(0).stalled(0.0049));
}

// Three separable clusters in the default 120 features.
TrainingData clusterData(int transferMode, uint32_t seed) {
  std::mt19937 rng(seed);
  std::normal_distribution<double> noise(0.0, 0.3);
  const int features = featureCount(ModelParameters());
  TrainingData data;
  for (SampleSet* set : {&data.training, &data.validation}) {
    set->count = set == &data.training ? 36 : 24;
    set->inputs.resize(set->count, features + 1);
    set->targets.setConstant(set->count, 3, transferMode == 1 ? -1.0 : 0.0);
    for (int r = 0; r < set->count; ++r) {
      set->inputs(r, 0) = 1.0;
      for (int c = 1; c <= features; ++c) set->inputs(r, c) = ((c * 7 + r % 3 * 13) % 5 - 2) * 0.5 + noise(rng);
      set->targets(r, r % 3) = 1.0;
    }
  }
  data.scoring = data.validation;
  return data;
}

// descend() steps along the gradient of the cost times the row count. With the logistic function,
// and with tanh at slope 1, the two agree exactly.
TEST(NetworkTrainingTest, GradientMatchesFiniteDifferences) {
  for (int mode : {0, 1}) {
    TrainingData data = clusterData(mode, 5);
    for (SampleSet* set : {&data.training, &data.validation, &data.scoring}) {
      set->inputs.conservativeResize(Eigen::NoChange, 6);  // five inputs keep the check cheap
    }
    std::mt19937 rng(mode);
    std::uniform_real_distribution<double> uniform(-0.5, 0.5);
    std::vector<Matrix> weights = {Matrix(6, 6), Matrix(7, 6), Matrix(7, 3)};
    for (Matrix& w : weights) w = w.unaryExpr([&](double) { return uniform(rng); });
    const double lambda = 0.3;
    GradientDescent descent(weights, data, mode, 1.0);
    const auto cost = [&](const std::vector<Matrix>& w) {
      double c, v;
      descent.evaluate(w, lambda, &c, &v);
      return c * data.training.count;
    };
    cost(weights);
    std::vector<Matrix> stepped = weights;
    descent.descend(stepped, lambda, 1.0);
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

TEST(NetworkTrainingTest, EndsOnTimeStopOrNonFiniteCost) {
  const TrainingData data = clusterData(1, 2);
  ModelParameters parameters;
  parameters.transferMode = 1;
  NeuralNetwork initial(parameters, 1, 8, 3);
  {
    NeuralNetwork network = initial;
    FakeHost host;
    host.maxTime = 0;  // the start weights, scored
    EXPECT_EQ(trainNetwork(host, network, data, 0.06, 0.0), TrainingResult_Stalled);
    EXPECT_EQ(network.weights, initial.weights);
    EXPECT_EQ(network.trainingCost, kMax);
    EXPECT_DOUBLE_EQ(network.recognitionScore, scoreNetwork(data.scoring, network));
  }
  {
    NeuralNetwork network = initial;
    FakeHost host;
    host.stopAtRead = 6;  // seen after the fifth iteration
    EXPECT_EQ(trainNetwork(host, network, data, 0.06, 0.0), TrainingResult_Aborted);
    EXPECT_EQ(host.reads, 6);
    EXPECT_DOUBLE_EQ(network.recognitionScore, scoreNetwork(data.scoring, network));
    // The figures kept are those of the weights kept.
    GradientDescent check(network.weights, data, 1, parameters.transferSlope);
    double cost, validationCost;
    check.evaluate(network.weights, 0.06, &cost, &validationCost);
    EXPECT_EQ(cost, network.trainingCost);
    EXPECT_EQ(validationCost, network.validationCost);
  }
  {
    NeuralNetwork network = initial;
    network.weights[1](2, 1) = std::nan("");
    network.recognitionScore = 0.42;
    FakeHost host;
    EXPECT_EQ(trainNetwork(host, network, data, 0.06, 0.0), TrainingResult_Aborted);
    EXPECT_EQ(network.recognitionScore, 0.42);  // not scored
  }
}

}  // namespace
}  // namespace zando
