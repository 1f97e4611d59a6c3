#include "model/neural_network.h"

#include "spatial/random.h"

namespace zando {

NeuralNetwork::NeuralNetwork(const ModelParameters& parameters_, int hiddenLayers, int hiddenNodes, int outputs)
    : parameters(parameters_) {
  const int inputs = featureCount(parameters);
  const int layers = hiddenLayers < 0 ? 0 : hiddenLayers;
  weights.reserve(static_cast<size_t>(layers) + 1);
  for (int k = 0; k <= layers; ++k) {
    const int rows = (k == 0 ? inputs : hiddenNodes) + 1;
    const int cols = k == layers ? outputs : hiddenNodes;
    weights.emplace_back(rows, cols);
    // Drawn in construction order, so that one seed always gives the same network.
    randomizeWeights(weights.back());
  }
}

void randomizeWeights(Matrix& matrix) {
  seedRandomIfNeeded();
  if (matrix.rows() == 0) return;
  matrix.row(0).setZero();
  for (Eigen::Index row = matrix.rows() - 1; row >= 1; --row) {
    for (Eigen::Index col = matrix.cols() - 1; col >= 0; --col) {
      const int r = randomInt();
      // Never near zero, so that no unit starts dead; the sign reuses the draw's lowest bit.
      const double magnitude = 0.1 + (r / 32767.0) * 0.8;
      matrix(row, col) = (r & 1) ? magnitude : -magnitude;
    }
  }
}

namespace {

// Applies the activation to columns [firstColumn, cols) of every row. The mode is tested once per
// block rather than once per value.
void applyTransfer(Matrix& layer, Eigen::Index firstColumn, int transferMode, double transferSlope) {
  const Eigen::Index rows = layer.rows();
  const Eigen::Index cols = layer.cols();
  // Column-major storage: the columns to transform are one contiguous run.
  double* values = layer.data() + firstColumn * rows;
  const Eigen::Index count = (cols - firstColumn) * rows;
  if (count <= 0) return;
  if (transferMode == 1) {
    for (Eigen::Index i = 0; i < count; ++i) values[i] = transferFunction(values[i], 1, transferSlope);
  } else {
    for (Eigen::Index i = 0; i < count; ++i) values[i] = 1.0 / (1.0 + std::exp(-values[i]));
  }
}

}  // namespace

void forward(const std::vector<Matrix>& weights, std::vector<Matrix>& layerBuffers, int transferMode,
             double transferSlope) {
  const size_t layers = weights.size();
  if (layers == 0 || layerBuffers.size() < layers + 1) return;
  const Eigen::Index rows = layerBuffers[0].rows();
  for (size_t k = 0; k + 1 < layers; ++k) {
    const Matrix& w = weights[k];
    Matrix& next = layerBuffers[k + 1];
    if (layerBuffers[k].cols() != w.rows()) return;  // a misfit would read outside the weights
    if (next.rows() != rows || next.cols() != w.cols() + 1) next.resize(rows, w.cols() + 1);
    // Written straight into the buffer's columns after the bias column: no temporary matrix.
    next.rightCols(w.cols()).noalias() = layerBuffers[k] * w;
    applyTransfer(next, 1, transferMode, transferSlope);
    next.col(0).setOnes();
  }
  const Matrix& w = weights[layers - 1];
  Matrix& output = layerBuffers[layers];
  if (layerBuffers[layers - 1].cols() != w.rows()) return;
  if (output.rows() != rows || output.cols() != w.cols()) output.resize(rows, w.cols());
  output.noalias() = layerBuffers[layers - 1] * w;
  applyTransfer(output, 0, transferMode, transferSlope);
}

}  // namespace zando
