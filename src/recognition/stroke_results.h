// Small pieces shared by the end of a stroke and continuous identification: the finite test of
// pose values, the choice among probabilities, and handing results to the caller's pointers.
#ifndef ZANDO_RECOGNITION_STROKE_RESULTS_H
#define ZANDO_RECOGNITION_STROKE_RESULTS_H

#include <cfloat>
#include <cmath>

#include "zando/zando.h"

namespace zando {

// Values are tested one by one in argument order; NaN and both infinities are refused, zero,
// subnormal and normal values pass.
inline bool allFinite(const double* values, int count) {
  for (int i = 0; i < count; ++i) {
    if (!std::isfinite(values[i])) return false;
  }
  return true;
}

// Rescales tanh-mode values to 0.5 + 0.5 p in place and returns the index of the largest. The
// walk runs downward with a strict comparison, so of equal values the highest index wins; with
// nothing comparable (all NaN, say) the answer stays -9.
inline int pickMostProbable(double* probabilities, int count, bool tanhMode) {
  int result = ReturnCode_NoGestures;
  double best = -DBL_MAX;
  for (int i = count - 1; i >= 0; --i) {
    if (tanhMode) probabilities[i] = 0.5 + 0.5 * probabilities[i];
    if (best < probabilities[i]) {
      best = probabilities[i];
      result = i;
    }
  }
  return result;
}

// Where, how large and how turned a stroke was, as the extraction left it (four doubles for each
// point and axis), to the caller's three-double outputs that are not null.
struct StrokeResults {
  double position[4] = {0, 0, 0, 1};
  double scale = 0.0;
  double axes[3][4] = {{0, 0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 1}};

  void setUnitAxes() {
    for (int k = 0; k < 3; ++k) axes[k][k] = 1.0;
  }

  void writeTo(double pos[3], double* scaleOut, double dir0[3], double dir1[3], double dir2[3]) const {
    copy(pos, position);
    if (scaleOut != nullptr) *scaleOut = scale;
    copy(dir0, axes[0]);
    copy(dir1, axes[1]);
    copy(dir2, axes[2]);
  }

 private:
  static void copy(double* target, const double* source) {
    if (target == nullptr) return;
    target[0] = source[0];
    target[1] = source[1];
    target[2] = source[2];
  }
};

}  // namespace zando

#endif  // ZANDO_RECOGNITION_STROKE_RESULTS_H
