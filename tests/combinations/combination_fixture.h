// A two-handed host for the combination tests: performances of the recogniser tests' shapes on
// one part (optionally mirrored left to right), and a set with a few gestures per hand.
#ifndef ZANDO_TESTS_COMBINATIONS_COMBINATION_FIXTURE_H
#define ZANDO_TESTS_COMBINATIONS_COMBINATION_FIXTURE_H

#include <memory>
#include <random>

#include "../recognition/recognizer_fixture.h"
#include "combinations/gesture_combinations.h"

namespace zando {
namespace combination_testing {

using testing_support::kHead;
using testing_support::kFacing;

using Combinations = std::unique_ptr<GestureCombinations>;

inline Combinations makeCombinations(int parts) { return Combinations(GestureCombinations::createZeroFilled(parts)); }

// A performance of a recogniser test shape on one part; mirrored, x runs the other way.
inline void performOnPart(IGestureCombinations& c, int part, int shape, int recordAs, std::mt19937& rng,
                          bool mirrored = false) {
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  const double size = 0.25 * (1.0 + 0.15 * jitter(rng));
  const double cx = 0.2 + 0.05 * jitter(rng), cy = 1.4 + 0.05 * jitter(rng), cz = 0.45 + 0.05 * jitter(rng);
  c.startStroke(part, kHead, kFacing, recordAs);
  const int points = 50;
  for (int i = 0; i < points; ++i) {
    const double t = static_cast<double>(i) / (points - 1);
    double x = 0, y = 0;
    testing_support::shapeOffset(shape, t, x, y);
    const double px = cx + size * x + 0.003 * jitter(rng);
    const double p[3] = {mirrored ? -px : px, cy + size * y + 0.003 * jitter(rng), cz + 0.003 * jitter(rng)};
    c.contdStrokeQ(part, p, kFacing);
  }
}

inline int recordOnPart(IGestureCombinations& c, int part, int shape, int gesture, std::mt19937& rng) {
  performOnPart(c, part, shape, gesture, rng);
  return c.endStroke(part, nullptr, nullptr, nullptr, nullptr, nullptr);
}

// Both hands know "circle", "swipe" and "zigzag" (shapes 0, 1, 2), each with `samples` samples.
inline void recordTwoHands(IGestureCombinations& c, int samples, std::mt19937& rng) {
  const char* names[3] = {"circle", "swipe", "zigzag"};
  for (int part = 0; part < 2; ++part) {
    for (int g = 0; g < 3; ++g) {
      c.createGesture(part, names[g], nullptr);
      for (int s = 0; s < samples; ++s) recordOnPart(c, part, g, g, rng);
    }
  }
}

// A fresh result for a part, as a finished stroke leaves it.
inline void setPartResult(GestureCombinations& c, int part, std::vector<double> probabilities,
                          std::vector<double> similarities) {
  c.partProbabilities[part] = probabilities;
  c.partSimilarities[part] = similarities;
  c.partResultCount[part] = static_cast<int>(probabilities.size());
}

}  // namespace combination_testing
}  // namespace zando

#endif  // ZANDO_TESTS_COMBINATIONS_COMBINATION_FIXTURE_H
