// Forward pass of one stroke through a network of a first training's shape (120 features, two
// hidden layers of 144, 20 gestures, tanh), against the same products written directly with Eigen
// row vectors into preallocated buffers.
#include <vector>

#include <benchmark/benchmark.h>
#include <Eigen/Core>

#include "features/model_parameters.h"
#include "model/neural_network.h"
#include "spatial/random.h"

namespace {

constexpr int kHiddenLayers = 2;
constexpr int kHiddenNodes = 144;
constexpr int kOutputs = 20;

zando::ModelParameters firstTrainingParameters() {
  zando::ModelParameters parameters;
  parameters.transferMode = 1;
  return parameters;
}

Eigen::RowVectorXd randomFeatures(int count) {
  Eigen::RowVectorXd features(count);
  for (int i = 0; i < count; ++i) features[i] = zando::randomInt() / 32767.0 - 0.5;
  return features;
}

void BM_Forward(benchmark::State& state) {
  zando::seedRandom(7);
  const zando::ModelParameters parameters = firstTrainingParameters();
  const zando::NeuralNetwork network(parameters, kHiddenLayers, kHiddenNodes, kOutputs);
  const int features = zando::featureCount(parameters);
  std::vector<zando::Matrix> layers;
  layers.emplace_back(1, features + 1);
  for (int k = 0; k < kHiddenLayers; ++k) layers.emplace_back(1, kHiddenNodes + 1);
  layers.emplace_back(1, kOutputs);
  layers[0](0, 0) = 1.0;
  layers[0].rightCols(features) = randomFeatures(features);
  for (auto _ : state) {
    zando::forward(network.weights, layers, parameters.transferMode, parameters.transferSlope);
    benchmark::DoNotOptimize(layers.back().data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_Forward);

void applyTanh(Eigen::Ref<Eigen::RowVectorXd> values, double slope) {
  for (Eigen::Index i = 0; i < values.size(); ++i) values[i] = zando::transferFunction(values[i], 1, slope);
}

void BM_ForwardReference(benchmark::State& state) {
  zando::seedRandom(7);
  const zando::ModelParameters parameters = firstTrainingParameters();
  const zando::NeuralNetwork network(parameters, kHiddenLayers, kHiddenNodes, kOutputs);
  const std::vector<zando::Matrix>& w = network.weights;
  const int features = zando::featureCount(parameters);
  const double slope = parameters.transferSlope;
  Eigen::RowVectorXd input(features + 1);
  Eigen::RowVectorXd hidden1(kHiddenNodes + 1);
  Eigen::RowVectorXd hidden2(kHiddenNodes + 1);
  Eigen::RowVectorXd output(kOutputs);
  input[0] = 1.0;
  input.tail(features) = randomFeatures(features);
  hidden1[0] = 1.0;
  hidden2[0] = 1.0;
  for (auto _ : state) {
    hidden1.tail(kHiddenNodes).noalias() = input * w[0];
    applyTanh(hidden1.tail(kHiddenNodes), slope);
    hidden2.tail(kHiddenNodes).noalias() = hidden1 * w[1];
    applyTanh(hidden2.tail(kHiddenNodes), slope);
    output.noalias() = hidden2 * w[2];
    applyTanh(output, slope);
    benchmark::DoNotOptimize(output.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_ForwardReference);

}  // namespace
