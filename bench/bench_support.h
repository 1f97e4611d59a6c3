// Set-ups shared by the benchmarks.
#ifndef ZANDO_BENCH_BENCH_SUPPORT_H
#define ZANDO_BENCH_BENCH_SUPPORT_H

#include "model/gesture_model.h"
#include "model/neural_network.h"

namespace zando_bench {

// Random weights of the shape a first training builds (120 features, two hidden layers of 144,
// tanh) on the frequency path a trained model uses, for a model with `gestures` gestures.
inline void installFirstTrainingNetwork(zando::GestureModel& model, int gestures) {
  model.parameters.featureSelector = 3;
  model.parameters.featureFlagA = 0;
  model.parameters.transferMode = 1;
  const zando::NeuralNetwork network(model.parameters, 2, 144, gestures);
  model.weights = network.weights;
  model.layerBuffers = {zando::Matrix::Zero(1, 121), zando::Matrix::Zero(1, 145), zando::Matrix::Zero(1, 145),
                        zando::Matrix::Zero(1, gestures)};
  model.networkInvalid = false;
}

}  // namespace zando_bench

#endif  // ZANDO_BENCH_BENCH_SUPPORT_H
