// The strokes that set files are checked with across builds: the same points on every system,
// drawn without a random generator. Used by file_exchange and by the web page's native timing.
#ifndef ZANDO_TESTS_EXCHANGE_PROBE_STROKES_H
#define ZANDO_TESTS_EXCHANGE_PROBE_STROKES_H

#include <cmath>

namespace probe_strokes {

constexpr double kPi = 3.14159265358979323846;
constexpr int kGestures = 4;
constexpr int kPoints = 50;

// Variation without a random generator, so that every build draws the same strokes.
inline double wobble(int seed, int k) { return std::sin(12.9898 * seed + 78.233 * k); }

// Point `i` of a performance of gesture 0 (circle), 1 (swipe), 2 (zigzag) or 3 ("V"), varied by
// `seed`.
inline void point(int gesture, int seed, int i, double p[3]) {
  const double size = 0.25 * (1.0 + 0.15 * wobble(seed, 1));
  const double cx = 0.05 * wobble(seed, 2), cy = 1.4 + 0.05 * wobble(seed, 3), cz = 0.45 + 0.05 * wobble(seed, 4);
  const double t = static_cast<double>(i) / (kPoints - 1);
  double x = 0, y = 0;
  switch (gesture) {
    case 0: x = std::cos(2 * kPi * t); y = std::sin(2 * kPi * t); break;
    case 1: x = -1 + 2 * t; y = 0.1 * std::sin(kPi * t); break;
    case 2: x = 0.3 * std::sin(6 * kPi * t); y = 1 - 2 * t; break;
    default: x = -1 + 2 * t; y = std::fabs(x) * 1.5 - 0.75; break;
  }
  p[0] = cx + size * x + 0.003 * wobble(seed, 10 + 3 * i);
  p[1] = cy + size * y + 0.003 * wobble(seed, 11 + 3 * i);
  p[2] = cz + 0.003 * wobble(seed, 12 + 3 * i);
}

}  // namespace probe_strokes

#endif  // ZANDO_TESTS_EXCHANGE_PROBE_STROKES_H
