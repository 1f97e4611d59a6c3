// Set-ups shared by the benchmarks.
#ifndef ZANDO_BENCH_BENCH_SUPPORT_H
#define ZANDO_BENCH_BENCH_SUPPORT_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include "model/gesture_model.h"
#include "model/neural_network.h"

namespace zando_bench {

// Random weights of the shape a first training builds (120 features, two hidden layers of 144,
// tanh) on the frequency path a trained model uses, for a model with `gestures` gestures.
inline void installFirstTrainingNetwork(zando::GestureModel& model, int gestures) {
  model.parameters.featureSelector = 3;
  model.parameters.featureFlagA = 0;
  model.parameters.transferMode = 1;
  const zando::NeuralNetwork network(model.parameters, 2, 144, gestures);
  model.weights = network.weights;
  model.layerBuffers = {zando::Matrix::Zero(1, 121), zando::Matrix::Zero(1, 145), zando::Matrix::Zero(1, 145),
                        zando::Matrix::Zero(1, gestures)};
  model.networkInvalid = false;
}

// ---- Frame loops: a host's 90 Hz update, one call a frame ----

const double kHead[3] = {0.0, 1.7, 0.0};
const double kFacing[4] = {0.0, 0.0, 0.0, 1.0};

using Clock = std::chrono::steady_clock;

inline double microseconds(Clock::time_point begin, Clock::time_point end) {
  return std::chrono::duration<double, std::micro>(end - begin).count();
}

// Busy-waits one frame (11 ms), as a host that keeps its core does; sleeping instead lets the
// processor idle, and the first few hundred milliseconds of calls after that run far slower.
inline void waitForNextFrame() {
  const auto until = Clock::now() + std::chrono::milliseconds(11);
  while (Clock::now() < until) {
  }
}

// The times of a run's calls. A frame-loop call is one call in 11 ms, so a single preemption moves
// the mean of a run by several microseconds: runs report the median and the 95th percentile.
class CallTimes {
 public:
  void add(double us) { times_.push_back(us); }
  double at(double share) {
    if (times_.empty()) return 0.0;
    std::sort(times_.begin(), times_.end());
    return times_[std::min(times_.size() - 1, static_cast<size_t>(share * static_cast<double>(times_.size())))];
  }
  void report(benchmark::State& state) {
    state.counters["median_us"] = at(0.5);
    state.counters["p95_us"] = at(0.95);
  }

 private:
  std::vector<double> times_;
};

}  // namespace zando_bench

#endif  // ZANDO_BENCH_BENCH_SUPPORT_H
