#include "model/neural_network.h"

#include <cmath>

#include <gtest/gtest.h>

namespace zando {
namespace {

// Zero biases; other weights of magnitude 0.1 to 0.9, about as many positive as negative.
TEST(NeuralNetworkTest, ShapesAndInitialWeights) {
  const ModelParameters parameters;  // F = 120
  const NeuralNetwork network(parameters, 2, 144, 20);
  const int shapes[3][2] = {{121, 144}, {145, 144}, {145, 20}};
  ASSERT_EQ(network.weights.size(), 3u);
  int positive = 0, total = 0;
  for (int k = 0; k < 3; ++k) {
    const Matrix& w = network.weights[k];
    EXPECT_EQ(w.rows(), shapes[k][0]);
    EXPECT_EQ(w.cols(), shapes[k][1]);
    EXPECT_TRUE(w.row(0).isZero(0.0));
    const Eigen::ArrayXXd magnitudes = w.bottomRows(w.rows() - 1).array().abs();
    EXPECT_GE(magnitudes.minCoeff(), 0.1);
    EXPECT_LE(magnitudes.maxCoeff(), 0.9);
    positive += static_cast<int>((w.bottomRows(w.rows() - 1).array() > 0).count());
    total += static_cast<int>(magnitudes.size());
  }
  EXPECT_GT(positive, total / 3);
  EXPECT_LT(positive, total * 2 / 3);
}

// Two inputs, two hidden nodes, two outputs, two rows: the hidden layer's bias column, no bias
// column on the output (whose misshaped buffer is resized), and every mode but 1 is logistic.
TEST(NeuralNetworkTest, ForwardMatchesHandComputation) {
  std::vector<Matrix> weights(2, Matrix(3, 2));
  weights[0] << 0.1, -0.2, 0.5, 0.3, -0.4, 0.7;
  weights[1] << -0.3, 0.2, 0.6, -0.5, 0.8, 0.4;
  const double inputs[2][2] = {{0.25, -1.5}, {2.0, 0.75}};
  const double slope = 0.33333;
  for (int mode : {1, 0, 2, -1}) {
    auto f = [&](double x) { return mode == 1 ? std::tanh(x * slope) : 1.0 / (1.0 + std::exp(-x)); };
    std::vector<Matrix> layers = {Matrix(2, 3), Matrix(2, 3), Matrix(1, 7)};
    for (int r = 0; r < 2; ++r) layers[0].row(r) << 1.0, inputs[r][0], inputs[r][1];
    forward(weights, layers, mode, slope);
    ASSERT_EQ(layers[2].rows(), 2);
    ASSERT_EQ(layers[2].cols(), 2);
    for (int r = 0; r < 2; ++r) {
      const double x0 = inputs[r][0], x1 = inputs[r][1];
      const double h0 = f(0.1 + 0.5 * x0 - 0.4 * x1), h1 = f(-0.2 + 0.3 * x0 + 0.7 * x1);
      EXPECT_EQ(layers[1](r, 0), 1.0);
      EXPECT_NEAR(layers[1](r, 1), h0, 1e-15);
      EXPECT_NEAR(layers[1](r, 2), h1, 1e-15);
      EXPECT_NEAR(layers[2](r, 0), f(-0.3 + 0.6 * h0 + 0.8 * h1), 1e-15) << mode;
      EXPECT_NEAR(layers[2](r, 1), f(0.2 - 0.5 * h0 + 0.4 * h1), 1e-15) << mode;
    }
  }
}

TEST(NeuralNetworkTest, TanhIsClampedBelowOneAndLogisticIsNot) {
  ASSERT_LT(kTransferLimit, 1.0);
  EXPECT_EQ(transferFunction(1e9, 1, 0.33333), kTransferLimit);
  EXPECT_EQ(transferFunction(std::nan(""), 1, 0.33333), -kTransferLimit);
  EXPECT_EQ(transferFunction(1000.0, 0, 0.33333), 1.0);
  EXPECT_EQ(transferFunction(-1000.0, 0, 0.33333), 0.0);
  std::vector<Matrix> weights = {Matrix::Constant(2, 2, 1e6), Matrix::Constant(3, 2, -1e6)};
  std::vector<Matrix> layers = {Matrix(1, 2), Matrix(1, 3), Matrix(1, 2)};
  layers[0] << 1.0, 1e6;
  forward(weights, layers, 1, 0.33333);
  EXPECT_EQ(layers[1](0, 1), kTransferLimit);
  EXPECT_EQ(layers[2](0, 0), -kTransferLimit);
}

}  // namespace
}  // namespace zando
