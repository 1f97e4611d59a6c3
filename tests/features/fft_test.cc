#include "features/fft.h"

#include <complex>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace zando {
namespace {

const double kPi = 3.14159265358979323846;

TEST(Fft, MatchesTheDirectTransformOnRandomInput) {
  std::mt19937 engine(42);
  std::uniform_real_distribution<double> value(-3.0, 3.0);
  for (int n : {1, 2, 8, 32, 256}) {
    std::vector<double> real(n), imag(n);
    for (int j = 0; j < n; ++j) real[j] = value(engine), imag[j] = value(engine);
    std::vector<std::complex<double>> expected(n);
    for (int k = 0; k < n; ++k) {
      for (int j = 0; j < n; ++j) {
        expected[k] += std::complex<double>(real[j], imag[j]) * std::polar(1.0, -2 * kPi * ((j * k) % n) / n);
      }
    }
    ASSERT_EQ(fft(real.data(), imag.data(), n), nullptr);
    for (int k = 0; k < n; ++k) {
      EXPECT_NEAR(real[k], expected[k].real(), 1e-10 * n) << n << " " << k;
      EXPECT_NEAR(imag[k], expected[k].imag(), 1e-10 * n) << n << " " << k;
    }
  }
  std::vector<double> real(12, 1.5), imag(12, 0.0);
  EXPECT_STREQ(fft(real.data(), imag.data(), 12), "Unsupported dimensionality: one of dimensions is not a power of 2");
  EXPECT_EQ(real[0], 1.5);
}

}  // namespace
}  // namespace zando
