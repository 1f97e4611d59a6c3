#include "features/fft.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <Eigen/Core>

namespace zando {

const char* const kFftUnsupportedLength = "Unsupported dimensionality: one of dimensions is not a power of 2";

namespace {

bool isPowerOfTwo(int count) { return count > 0 && (count & (count - 1)) == 0; }

// Decimation in time: the bit-reversal permutation first, then butterflies of growing span. The
// twiddle factor of a span is advanced by a recurrence rather than a sine per group, which keeps
// the transform to two sines per stage. All lanes share the factors and take the same operations
// in the same order, so a lane's result does not depend on how many run beside it.
template <int Lanes>
void transform(double* real, double* imag, int count, int wanted) {
  using LaneArray = Eigen::Array<double, Lanes, 1>;
  using LaneMap = Eigen::Map<LaneArray>;
  int target = 0;
  for (int position = 0; position < count; ++position) {
    if (target > position) {
      for (int l = 0; l < Lanes; ++l) {
        std::swap(real[target * Lanes + l], real[position * Lanes + l]);
        std::swap(imag[target * Lanes + l], imag[position * Lanes + l]);
      }
    }
    int mask = count;
    while (target & (mask >>= 1)) target &= ~mask;
    target |= mask;
  }

  const double pi = 3.14159265358979323846;
  for (int span = 1; span < count; span <<= 1) {
    const int jump = span << 1;
    const double delta = -pi / span;
    const double sine = std::sin(delta * 0.5);
    const double multiplierRe = -2.0 * sine * sine;
    const double multiplierIm = std::sin(delta);
    double factorRe = 1.0;
    double factorIm = 0.0;
    // Coefficient r of a block feeds only coefficients r, r + 2 span, ... of the next, so the
    // groups at and above `wanted` can be left out once a block is longer than that.
    const int groups = std::min(span, wanted);
    for (int group = 0; group < groups; ++group) {
      for (int pair = group; pair < count; pair += jump) {
        LaneMap pairRe(real + pair * Lanes);
        LaneMap pairIm(imag + pair * Lanes);
        LaneMap matchRe(real + (pair + span) * Lanes);
        LaneMap matchIm(imag + (pair + span) * Lanes);
        const LaneArray productRe = factorRe * matchRe - factorIm * matchIm;
        const LaneArray productIm = factorRe * matchIm + factorIm * matchRe;
        matchRe = pairRe - productRe;
        matchIm = pairIm - productIm;
        pairRe += productRe;
        pairIm += productIm;
      }
      const double nextRe = multiplierRe * factorRe - multiplierIm * factorIm + factorRe;
      const double nextIm = multiplierRe * factorIm + multiplierIm * factorRe + factorIm;
      factorRe = nextRe;
      factorIm = nextIm;
    }
  }
}

}  // namespace

const char* fft(double* real, double* imag, int count) {
  if (!isPowerOfTwo(count)) return kFftUnsupportedLength;
  transform<1>(real, imag, count, count);
  return nullptr;
}

const char* fftLanes(double* real, double* imag, int count, int wanted) {
  if (!isPowerOfTwo(count)) return kFftUnsupportedLength;
  transform<kFftLanes>(real, imag, count, std::max(1, std::min(wanted, count)));
  return nullptr;
}

}  // namespace zando
