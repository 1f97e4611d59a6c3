// One iteration of gradient descent as training does it (forward passes over the training and
// the validation set, costs, back-propagation, update) for 20 gestures of 20 samples, 120
// features and two hidden layers of 144, tanh; against the same work written directly with
// Eigen into preallocated buffers, and against its matrix products alone.
#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>
#include <Eigen/Core>

#include "features/model_parameters.h"
#include "model/network_training.h"
#include "model/neural_network.h"
#include "model/training_data.h"
#include "spatial/random.h"

namespace {

using zando::Matrix;

constexpr int kGestures = 20;
constexpr int kSamplesPerGesture = 20;
constexpr int kHiddenLayers = 2;
constexpr int kHiddenNodes = 144;
constexpr double kLambda = 0.06;
// Small enough that the weights, and with them the cost of tanh, stay as they are over millions
// of iterations.
constexpr double kLearningRate = 1e-9;

zando::ModelParameters firstTrainingParameters() {
  zando::ModelParameters parameters;
  parameters.transferMode = 1;
  return parameters;
}

void fillSet(zando::SampleSet& set, int perGesture, int features) {
  set.count = kGestures * perGesture;
  set.inputs.resize(set.count, features + 1);
  set.targets.setConstant(set.count, kGestures, -1.0);
  for (int r = 0; r < set.count; ++r) {
    set.inputs(r, 0) = 1.0;
    for (int c = 1; c <= features; ++c) set.inputs(r, c) = zando::randomInt() / 32767.0 - 0.5;
    set.targets(r, r % kGestures) = 1.0;
  }
}

// The sets of 20 x 20 samples after the split: 12 training and 8 held-back rows per gesture.
struct Problem {
  zando::ModelParameters parameters = firstTrainingParameters();
  zando::TrainingData data;
  std::vector<Matrix> weights;

  Problem() {
    zando::seedRandom(11);
    const int features = zando::featureCount(parameters);
    int training, middle, last;
    zando::sampleShares(kSamplesPerGesture, &training, &middle, &last);
    fillSet(data.training, training, features);
    fillSet(data.validation, middle + last, features);
    data.scoring = data.validation;
    weights = zando::NeuralNetwork(parameters, kHiddenLayers, kHiddenNodes, kGestures).weights;
  }
};

void BM_TrainingIteration(benchmark::State& state) {
  Problem p;
  zando::GradientDescent descent(p.weights, p.data, p.parameters.transferMode, p.parameters.transferSlope);
  for (auto _ : state) {
    double cost, validationCost;
    descent.evaluate(p.weights, kLambda, &cost, &validationCost);
    descent.descend(p.weights, kLambda, kLearningRate);
    benchmark::DoNotOptimize(cost);
    benchmark::DoNotOptimize(validationCost);
    benchmark::ClobberMemory();
  }
  state.counters["iterations/s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                      benchmark::Counter::kIsRate);
}
BENCHMARK(BM_TrainingIteration)->Unit(benchmark::kMicrosecond);

// Preallocated buffers of a direct implementation; hidden layers carry their bias column.
struct Buffers {
  std::vector<Matrix> a, v, delta, gradient;

  explicit Buffers(const Problem& p) {
    for (const Matrix* inputs : {&p.data.training.inputs, &p.data.validation.inputs}) {
      std::vector<Matrix>& layers = inputs == &p.data.training.inputs ? a : v;
      layers.push_back(*inputs);
      for (int k = 0; k < kHiddenLayers; ++k) layers.emplace_back(inputs->rows(), kHiddenNodes + 1);
      layers.emplace_back(inputs->rows(), kGestures);
      for (int k = 1; k <= kHiddenLayers; ++k) layers[k].col(0).setOnes();
    }
    const Eigen::Index rows = p.data.training.inputs.rows();
    delta.resize(kHiddenLayers + 2);
    for (int k = 1; k <= kHiddenLayers; ++k) delta[k].resize(rows, kHiddenNodes);
    delta[kHiddenLayers + 1].resize(rows, kGestures);
    for (const Matrix& w : p.weights) gradient.emplace_back(w.rows(), w.cols());
  }
};

void forwardProducts(const std::vector<Matrix>& w, std::vector<Matrix>& layers) {
  layers[1].rightCols(kHiddenNodes).noalias() = layers[0] * w[0];
  layers[2].rightCols(kHiddenNodes).noalias() = layers[1] * w[1];
  layers[3].noalias() = layers[2] * w[2];
}

void backwardProducts(const std::vector<Matrix>& w, Buffers& b) {
  b.delta[2].noalias() = b.delta[3] * w[2].bottomRows(kHiddenNodes).transpose();
  b.delta[1].noalias() = b.delta[2] * w[1].bottomRows(kHiddenNodes).transpose();
  for (int k = 0; k <= kHiddenLayers; ++k) b.gradient[k].noalias() = b.a[k].transpose() * b.delta[k + 1];
}

template <typename Block>
void applyTanh(Block values, double slope) {
  for (Eigen::Index c = 0; c < values.cols(); ++c) {
    for (Eigen::Index r = 0; r < values.rows(); ++r) values(r, c) = zando::transferFunction(values(r, c), 1, slope);
  }
}

double tanhCost(const Matrix& o, const Matrix& t) {
  double sum = 0.0;
  for (Eigen::Index i = 0; i < o.size(); ++i) {
    sum += t.data()[i] > 0 ? std::log(0.5 * (o.data()[i] + 1)) : std::log(0.5 * (1 - o.data()[i]));
  }
  return -sum / static_cast<double>(o.rows());
}

void BM_TrainingIterationReference(benchmark::State& state) {
  Problem p;
  Buffers b(p);
  std::vector<Matrix>& w = p.weights;
  const double slope = p.parameters.transferSlope;
  for (auto _ : state) {
    for (std::vector<Matrix>* layers : {&b.a, &b.v}) {
      forwardProducts(w, *layers);
      applyTanh((*layers)[1].rightCols(kHiddenNodes), slope);
      applyTanh((*layers)[2].rightCols(kHiddenNodes), slope);
      applyTanh((*layers)[3].leftCols(kGestures), slope);
    }
    double decay = 0.0;
    for (const Matrix& m : w) decay += m.bottomRows(m.rows() - 1).squaredNorm();
    double cost = tanhCost(b.a[3], p.data.training.targets) + decay * kLambda / (2.0 * p.data.training.count);
    double validationCost = tanhCost(b.v[3], p.data.validation.targets);
    b.delta[3] = b.a[3] - p.data.training.targets;
    b.delta[2].noalias() = b.delta[3] * w[2].bottomRows(kHiddenNodes).transpose();
    b.delta[2].array() *= (1.0 - b.a[2].rightCols(kHiddenNodes).array().square()) * slope;
    b.delta[1].noalias() = b.delta[2] * w[1].bottomRows(kHiddenNodes).transpose();
    b.delta[1].array() *= (1.0 - b.a[1].rightCols(kHiddenNodes).array().square()) * slope;
    for (int k = 0; k <= kHiddenLayers; ++k) {
      b.gradient[k].noalias() = b.a[k].transpose() * b.delta[k + 1];
      b.gradient[k].bottomRows(w[k].rows() - 1) += kLambda * w[k].bottomRows(w[k].rows() - 1);
      w[k].noalias() -= kLearningRate * b.gradient[k];
    }
    benchmark::DoNotOptimize(cost);
    benchmark::DoNotOptimize(validationCost);
    benchmark::ClobberMemory();
  }
  state.counters["iterations/s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                      benchmark::Counter::kIsRate);
}
BENCHMARK(BM_TrainingIterationReference)->Unit(benchmark::kMicrosecond);

// The matrix products of one iteration and nothing else: the floor no implementation goes below.
void BM_TrainingIterationProductsOnly(benchmark::State& state) {
  Problem p;
  Buffers b(p);
  b.delta[3].setConstant(0.01);
  for (auto _ : state) {
    forwardProducts(p.weights, b.a);
    forwardProducts(p.weights, b.v);
    backwardProducts(p.weights, b);
    benchmark::DoNotOptimize(b.gradient[0].data());
    benchmark::ClobberMemory();
  }
  state.counters["iterations/s"] = benchmark::Counter(static_cast<double>(state.iterations()),
                                                      benchmark::Counter::kIsRate);
}
BENCHMARK(BM_TrainingIterationProductsOnly)->Unit(benchmark::kMicrosecond);

}  // namespace
