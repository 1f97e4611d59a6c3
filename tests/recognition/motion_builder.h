// A running hand motion at 60 frames a second for detection tests: performances of the fixture's
// shapes at any speed and size, joined by smooth moves, with idle stretches of drift and tremor
// between them. Two builders given the same durations give frames at the same times.
#ifndef ZANDO_TESTS_RECOGNITION_MOTION_BUILDER_H
#define ZANDO_TESTS_RECOGNITION_MOTION_BUILDER_H

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "recognition/recognizer_fixture.h"

namespace zando {
namespace testing_support {

constexpr double kFrameRate = 60.0;

class MotionBuilder {
 public:
  using Point = std::array<double, 3>;
  explicit MotionBuilder(unsigned seed, Point start = {0.0, 1.4, 0.45}) : rng_(seed), current_(start) {}

  // Small slow drift and tremor around the current place.
  void idle(double seconds) {
    std::normal_distribution<double> noise(0.0, 0.0008);
    std::uniform_real_distribution<double> drift(-0.004, 0.004);
    const Point from = current_;
    const Point by = {drift(rng_), drift(rng_), drift(rng_)};
    const int count = framesFor(seconds);
    for (int i = 1; i <= count; ++i) {
      const double s = static_cast<double>(i) / count;
      current_ = {from[0] + by[0] * s, from[1] + by[1] * s, from[2] + by[2] * s};
      points.push_back({current_[0] + noise(rng_), current_[1] + noise(rng_), current_[2] + noise(rng_)});
    }
  }

  // A smooth move with a slight bend, as a hand travels between gestures.
  void move(const Point& to, double seconds) {
    const Point from = current_;
    const int count = framesFor(seconds);
    for (int i = 1; i <= count; ++i) {
      const double s = static_cast<double>(i) / count;
      const double eased = s * s * s * (10 - 15 * s + 6 * s * s);
      const double bend = 0.03 * std::sin(kPi * eased);
      current_ = {from[0] + (to[0] - from[0]) * eased, from[1] + (to[1] - from[1]) * eased + bend,
                  from[2] + (to[2] - from[2]) * eased};
      points.push_back(current_);
    }
  }

  // A straight move at one speed throughout.
  void glide(const Point& to, double seconds) {
    const Point from = current_;
    const int count = framesFor(seconds);
    for (int i = 1; i <= count; ++i) {
      const double s = static_cast<double>(i) / count;
      current_ = {from[0] + (to[0] - from[0]) * s, from[1] + (to[1] - from[1]) * s, from[2] + (to[2] - from[2]) * s};
      points.push_back(current_);
    }
  }

  // One performance of a fixture shape, begun where the hand is, `size` metres across (the hand
  // is at its first point already); `eased`: beginning and ending at rest, as people do.
  void perform(int shape, double seconds, double size, bool eased = false) {
    double x0 = 0, y0 = 0;
    shapeOffset(shape, 0.0, x0, y0);
    const Point from = current_;
    const int count = framesFor(seconds);
    for (int i = 1; i <= count; ++i) {
      double x = 0, y = 0;
      const double s = static_cast<double>(i) / count;
      shapeOffset(shape, eased ? s * s * s * (10 - 15 * s + 6 * s * s) : s, x, y);
      current_ = {from[0] + 0.5 * size * (x - x0), from[1] + 0.5 * size * (y - y0), from[2]};
      points.push_back(current_);
    }
  }

  // Where a performance of `shape` should begin so that it is centred at `centre`.
  static Point startFor(int shape, double size, const Point& centre) {
    double x0 = 0, y0 = 0;
    shapeOffset(shape, 0.0, x0, y0);
    return {centre[0] + 0.5 * size * x0, centre[1] + 0.5 * size * y0, centre[2]};
  }

  double seconds() const { return static_cast<double>(points.size()) / kFrameRate; }

  std::vector<Point> points;

 private:
  static int framesFor(double seconds) { return std::max(1, static_cast<int>(std::lround(seconds * kFrameRate))); }

  std::mt19937 rng_;
  Point current_;
};

// Records one sample of `shape` taking `seconds`, on the host's clock from `startTime`.
inline void recordTimedSample(IGestureRecognition& r, int shape, int gesture, double seconds, double size,
                              double startTime, unsigned seed, bool eased = false) {
  const MotionBuilder::Point start = MotionBuilder::startFor(shape, size, {0.0, 1.4, 0.45});
  MotionBuilder motion(seed, start);
  motion.points.push_back(start);
  motion.perform(shape, seconds, size, eased);
  r.setHostTime(startTime);
  r.startStroke(kHead, kFacing, gesture);
  for (size_t i = 0; i < motion.points.size(); ++i) {
    r.setHostTime(startTime + static_cast<double>(i) / kFrameRate);
    r.contdStrokeQ(motion.points[i].data(), kFacing);
  }
  endStroke(r);
}

}  // namespace testing_support
}  // namespace zando

#endif  // ZANDO_TESTS_RECOGNITION_MOTION_BUILDER_H
