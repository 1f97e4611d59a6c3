// The classifier: a small fully connected feed-forward network with one input per feature, equally
// wide hidden layers and one output per gesture. One forward routine serves a single stroke (one
// row) and whole training sets (one row per sample).
#ifndef ZANDO_MODEL_NEURAL_NETWORK_H
#define ZANDO_MODEL_NEURAL_NETWORK_H

#include <cmath>
#include <limits>
#include <vector>

#include <Eigen/Core>

#include "features/model_parameters.h"
#include "model/gesture_model.h"

namespace zando {

// One candidate of the training search. Copies are deep; assigning only `weights` leaves the
// target's figures as they were.
struct NeuralNetwork {
  ModelParameters parameters;  // the settings the network was built for
  std::vector<Matrix> weights;  // W[0] .. W[h]; row 0 of each holds the biases
  double trainingCost = std::numeric_limits<double>::max();
  double validationCost = std::numeric_limits<double>::max();
  double recognitionScore = 0.0;

  NeuralNetwork() = default;
  // Builds W[0] ((F + 1) x hiddenNodes), W[1] .. W[h - 1] ((hiddenNodes + 1) x hiddenNodes) and
  // W[h] ((hiddenNodes + 1) x outputs), F = featureCount(parameters), each randomised as soon as it
  // has its size. With hiddenLayers 0 the single matrix is (F + 1) x outputs.
  NeuralNetwork(const ModelParameters& parameters, int hiddenLayers, int hiddenNodes, int outputs);
};

// Zero biases (row 0); every other entry of magnitude 0.1 to 0.9 from the 15-bit generator, drawn
// from the last row up to row 1 and, within a row, from the last column down to column 0.
void randomizeWeights(Matrix& matrix);

// Upper bound of the hyperbolic tangent's output; keeps the cost's logarithms finite.
constexpr double kTransferLimit = 0.9999999999999999;

// The activation of every layer, output layer included (there is no softmax). transferMode 1:
// tanh(x * transferSlope) clamped to +-kTransferLimit, NaN to the lower bound; any other mode the
// logistic function without slope or clamp.
inline double transferFunction(double x, int transferMode, double transferSlope) {
  if (transferMode == 1) {
    const double y = std::tanh(x * transferSlope);
    if (!(y > -kTransferLimit)) return -kTransferLimit;
    if (y > kTransferLimit) return kTransferLimit;
    return y;
  }
  return 1.0 / (1.0 + std::exp(-x));
}

// Forward pass. In: weights W[0] .. W[L - 1], layerBuffers A[0] .. A[L] with A[0]'s column 0 set to
// 1.0 and its columns 1 .. F holding one feature vector per row. Out: A[1] .. A[L]; column 0 of
// every hidden layer is 1.0, A[L] has one column per output. The row count comes from A[0]. A[L]
// is resized when its shape differs, as is a hidden buffer of the wrong shape. Reports nothing:
// callers check that the weights fit the buffers.
void forward(const std::vector<Matrix>& weights, std::vector<Matrix>& layerBuffers, int transferMode,
             double transferSlope);

}  // namespace zando

#endif  // ZANDO_MODEL_NEURAL_NETWORK_H
