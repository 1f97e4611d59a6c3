// Synthetic gestures and a stand-in for the recogniser, shared by the training tests.
#ifndef ZANDO_TESTS_MODEL_TRAINING_FIXTURES_H
#define ZANDO_TESTS_MODEL_TRAINING_FIXTURES_H

#include <atomic>
#include <cmath>
#include <ctime>
#include <map>
#include <random>
#include <vector>

#include "model/network_training.h"

namespace zando {
namespace testing_shapes {

// A point of shape 0 to 4 at u in [0, 1], about 0.5 m across: circle, V, Z, figure eight, and a
// corkscrew pushed forward. (The features of a straight swipe hardly depend on its direction.)
inline Eigen::Vector3d shapePoint(int shape, double u) {
  const double turn = 2 * 3.14159265358979323846 * u;
  const int leg = u >= 1.0 ? 2 : static_cast<int>(u * 3.0);
  const double f = u * 3.0 - leg;
  switch (shape) {
    case 0: return {0.25 * std::cos(turn), 0.25 * std::sin(turn), 0.0};
    case 1: return {-0.2 + 0.4 * u, 0.25 * std::fabs(2 * u - 1), 0.0};
    case 2: return {leg == 1 ? 0.2 - 0.4 * f : -0.2 + 0.4 * f, leg == 0 ? 0.2 : leg == 2 ? -0.2 : 0.2 - 0.4 * f, 0.0};
    case 3: return {0.2 * std::sin(turn), 0.15 * std::sin(2 * turn), 0.0};
    default: return {0.12 * std::cos(2 * turn), 0.12 * std::sin(2 * turn), -0.3 * u};
  }
}

// Performances with a real user's variation: size, speed (point count), place and jitter.
class ShapeMaker {
 public:
  explicit ShapeMaker(uint32_t seed) : rng_(seed) {}
  static Eigen::Vector3d head() { return {0.0, 1.7, 0.0}; }

  std::vector<Eigen::Vector3d> perform(int shape) {
    const double size = uniform(0.7, 1.3);
    const int points = static_cast<int>(uniform(25, 60));
    const Eigen::Vector3d origin =
        head() + Eigen::Vector3d(0.1 + uniform(-0.08, 0.08), -0.25 + uniform(-0.08, 0.08), -0.45);
    std::vector<Eigen::Vector3d> path;
    for (int i = 0; i < points; ++i) {
      const Eigen::Vector3d jitter(uniform(-0.008, 0.008), uniform(-0.008, 0.008), uniform(-0.008, 0.008));
      path.push_back(origin + shapePoint(shape, i / (points - 1.0)) * size + jitter);
    }
    return path;
  }

  // A sample as the recogniser stores it, with one head record per hand point.
  Stroke* stroke(int shape) {
    Stroke* s = new Stroke;
    s->headStart = s->headLatest = StrokePoint{Vector3(head()), Quaternion()};
    for (const Eigen::Vector3d& p : perform(shape)) {
      s->handPoints.emplace_back(Vector3(p), Quaternion());
      s->headPoints.push_back(s->headStart);
    }
    return s;
  }

 private:
  double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng_); }
  std::mt19937 rng_;
};

// One gesture per entry of `shapes`, each with `samples` performances.
inline void addGestures(GestureModel& model, ShapeMaker& maker, const std::vector<int>& shapes, int samples) {
  for (int shape : shapes) {
    model.gestures.push_back(new Gesture("g", nullptr));
    for (int i = 0; i < samples; ++i) model.gestures.back()->gestureSamples.push_back(maker.stroke(shape));
  }
}

inline void recordScore(double score, void* scores) { static_cast<std::vector<double>*>(scores)->push_back(score); }

// The recogniser's part in a run, as plain fields; callbacks append to `updates` and `finishes`.
struct FakeHost : TrainingHost {
  GestureModel gestureModel;
  std::atomic<int> state{TrainingState_Running};
  std::map<int, int> parameters;
  int64_t start = static_cast<int64_t>(std::time(nullptr));
  int maxTime = 5;
  bool reportAll = false;
  int stopAtRead = 0;  // the run sees a stop request from this read of the state on (1-based)
  int reads = 0;
  std::vector<double> updates, finishes;
  TrainingCallback updateFunction = &recordScore;

  GestureModel& model() override { return gestureModel; }
  std::atomic<int>& trainingState() override {
    if (++reads == stopAtRead) state = TrainingState_Stopping;
    return state;
  }
  const std::map<int, int>& trainingParameters() override { return parameters; }
  int64_t trainingStartTime() override { return start; }
  int maxTrainingTime() override { return maxTime; }
  bool reportAllUpdates() override { return reportAll; }
  TrainingCallback updateCallback(void** list) override { *list = &updates; return updateFunction; }
  TrainingCallback finishCallback(void** list) override { *list = &finishes; return &recordScore; }
};

}  // namespace testing_shapes
}  // namespace zando

#endif  // ZANDO_TESTS_MODEL_TRAINING_FIXTURES_H
