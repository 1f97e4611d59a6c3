// Shared helpers for tests that drive a whole recogniser: synthetic performances of a few
// clearly different shapes, recorded or identified through the stroke cycle.
#ifndef ZANDO_TESTS_RECOGNITION_RECOGNIZER_FIXTURE_H
#define ZANDO_TESTS_RECOGNITION_RECOGNIZER_FIXTURE_H

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "recognition/gesture_recognition.h"

namespace zando {
namespace testing_support {

constexpr double kPi = 3.14159265358979323846;
// The head of every performance: standing, looking ahead.
const double kHead[3] = {0.0, 1.7, 0.0};
const double kFacing[4] = {0.0, 0.0, 0.0, 1.0};

// The unit-sized path of shape 0 (circle), 1 (horizontal swipe), 2 (vertical zigzag), 3 (a "V"),
// 4 (a square, begun and drawn as the circle), 5 (the circle the other way round) or 6 (a "W":
// the "V" and another to its right) at phase t in [0, 1].
inline void shapeOffset(int shape, double t, double& x, double& y) {
  const double side = 8 * t;  // for the square: along its sides from the middle of the right one
  switch (shape) {
    case 0: x = std::cos(2 * kPi * t); y = std::sin(2 * kPi * t); break;
    case 1: x = -1 + 2 * t; y = 0.1 * std::sin(kPi * t); break;
    case 2: x = 0.3 * std::sin(6 * kPi * t); y = 1 - 2 * t; break;
    case 5: x = std::cos(2 * kPi * t); y = -std::sin(2 * kPi * t); break;
    case 6: x = -1 + 4 * t; y = std::fabs(std::fmod(x + 3, 2) - 1) * 1.5 - 0.75; break;
    case 4:
      x = side < 1 || side >= 7 ? 1 : side < 3 ? 2 - side : side < 5 ? -1 : side - 6;
      y = side < 1 ? side : side < 3 ? 1 : side < 5 ? 4 - side : side < 7 ? -1 : side - 8;
      break;
    default: x = -1 + 2 * t; y = std::fabs(x) * 1.5 - 0.75; break;
  }
}

// One performance of shape 0 (circle), 1 (horizontal swipe), 2 (vertical zigzag) or 3 (a "V"),
// with variation in size, position and noise from the generator.
inline void performShape(IGestureRecognition& r, int shape, int recordAs, std::mt19937& rng, int points = 60) {
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  const double size = 0.25 * (1.0 + 0.15 * jitter(rng));
  const double cx = 0.05 * jitter(rng), cy = 1.4 + 0.05 * jitter(rng), cz = 0.45 + 0.05 * jitter(rng);
  r.startStroke(kHead, kFacing, recordAs);
  for (int i = 0; i < points; ++i) {
    const double t = static_cast<double>(i) / (points - 1);
    double x = 0, y = 0;
    shapeOffset(shape, t, x, y);
    const double p[3] = {cx + size * x + 0.003 * jitter(rng), cy + size * y + 0.003 * jitter(rng),
                         cz + 0.003 * jitter(rng)};
    r.contdStrokeQ(p, kFacing);
  }
}

// The end forms with every optional output left out.
inline int endStroke(IGestureRecognition& r) { return r.endStroke(nullptr, nullptr, nullptr, nullptr, nullptr); }
inline int endWithSimilarity(IGestureRecognition& r, double* s) {
  return r.endStrokeAndGetSimilarity(s, nullptr, nullptr, nullptr, nullptr, nullptr);
}
inline int endWithProbabilities(IGestureRecognition& r, double* p, int* n) {
  return r.endStrokeAndGetAllProbabilities(p, n, nullptr, nullptr, nullptr, nullptr, nullptr);
}
inline int endWithSimilarities(IGestureRecognition& r, double* p, double* s, int* n) {
  return r.endStrokeAndGetAllProbabilitiesAndSimilarities(p, s, n, nullptr, nullptr, nullptr, nullptr, nullptr);
}

inline int recordShape(IGestureRecognition& r, int shape, int gesture, std::mt19937& rng) {
  performShape(r, shape, gesture, rng);
  return endStroke(r);
}

// Gestures 0 to `gestures` - 1, each of `samples` performances of the shape of its number.
inline void recordSet(IGestureRecognition& r, int gestures, int samples, std::mt19937& rng) {
  for (int g = 0; g < gestures; ++g) {
    ASSERT_EQ(r.createGesture("g", nullptr), g);
    for (int s = 0; s < samples; ++s) ASSERT_EQ(recordShape(r, g, g, rng), g);
  }
}

// A fresh zero-filled recogniser `r` for each test. Job states that the test set by hand are set
// idle again before it is deleted: no real job of the test's is still running then.
class RecognizerTest : public ::testing::Test {
 protected:
  void TearDown() override {
    r->trainingState = r->loadingState = r->savingState = kJobIdle;
    delete r;
  }

  GestureRecognition* r = GestureRecognition::createZeroFilled();
};

}  // namespace testing_support
}  // namespace zando

#endif  // ZANDO_TESTS_RECOGNITION_RECOGNIZER_FIXTURE_H
