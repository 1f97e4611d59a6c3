// The enhanced recognition mode: identification by shape against every stored sample, 20 gestures
// of 10 samples each, at the end of a stroke and continuously in a 90 Hz frame loop.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <random>

#include "bench_support.h"
#include "zando/zando.h"

namespace {

constexpr int kGestures = 20;
constexpr int kSamples = 10;
using zando_bench::CallTimes;
using zando_bench::Clock;
using zando_bench::kFacing;
using zando_bench::kHead;

// Twenty different closed and open curves, performed with variation in size, place and noise.
void drawGesture(void* gro, int gesture, std::mt19937& rng, int points = 90) {
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  const double size = 0.2 * (1.0 + 0.15 * jitter(rng));
  const double cx = 0.05 * jitter(rng), cy = 1.4 + 0.05 * jitter(rng);
  const double a = 1 + gesture % 5, b = 1 + gesture / 5;
  for (int i = 0; i < points; ++i) {
    const double t = 6.283 * i / (points - 1);
    const double p[3] = {cx + size * std::sin(a * t) + 0.003 * jitter(rng),
                         cy + size * std::cos(b * t) + 0.003 * jitter(rng), 0.45 + 0.05 * std::sin(t)};
    GestureRecognition_contdStrokeQ(gro, p, kFacing);
  }
}

void* enhancedSet(int gestures = kGestures, int samples = kSamples) {
  std::mt19937 rng(1);
  void* gro = GestureRecognition_create();
  GestureRecognition_setEnhancedRecognition(gro, 1);
  for (int g = 0; g < gestures; ++g) {
    GestureRecognition_createGesture(gro, "gesture", nullptr);
    for (int s = 0; s < samples; ++s) {
      GestureRecognition_startStroke(gro, kHead, kFacing, g);
      drawGesture(gro, g, rng);
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
  }
  return gro;
}

// state.range(0) gestures of state.range(1) samples each: the common set, and a pre-trained set
// shipped to every user (many samples from many people).
void BM_EnhancedEndStroke(benchmark::State& state) {
  const int gestures = static_cast<int>(state.range(0));
  void* gro = enhancedSet(gestures, static_cast<int>(state.range(1)));
  std::mt19937 rng(2);
  int gesture = 0, correct = 0, total = 0;
  for (auto _ : state) {
    GestureRecognition_startStroke(gro, kHead, kFacing, -1);
    drawGesture(gro, gesture, rng);
    const auto begin = Clock::now();
    const int identified = GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    const auto end = Clock::now();
    correct += identified == gesture ? 1 : 0;
    ++total;
    gesture = (gesture + 1) % gestures;
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
  }
  state.counters["correct_share"] = total > 0 ? static_cast<double>(correct) / total : 0.0;
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_EnhancedEndStroke)->Args({kGestures, kSamples})->Args({10, 90})->UseManualTime()->Unit(benchmark::kMicrosecond);

// A running motion of one gesture after another, a point and a call every 11 ms (busy-waiting, as
// in the plain mode's frame loop); the median of the calls.
void BM_EnhancedContdIdentify(benchmark::State& state) {
  void* gro = enhancedSet();
  std::mt19937 rng(3);
  CallTimes calls;
  GestureRecognition_startStroke(gro, kHead, kFacing, -1);
  int frame = 0;
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  for (auto _ : state) {
    const double t = 0.07 * frame++;
    const double p[3] = {0.2 * std::sin(3 * t) + 0.003 * jitter(rng), 1.4 + 0.2 * std::cos(2 * t), 0.45};
    GestureRecognition_contdStrokeQ(gro, p, kFacing);
    zando_bench::waitForNextFrame();
    double similarity = 0.0;
    const auto begin = Clock::now();
    benchmark::DoNotOptimize(GestureRecognition_contdIdentify(gro, kHead, kFacing, &similarity));
    const auto end = Clock::now();
    // The first second fills the window; the calls after it are the ones a running host sees.
    if (frame > 92) calls.add(zando_bench::microseconds(begin, end));
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
  }
  calls.report(state);
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_EnhancedContdIdentify)->UseManualTime()->Iterations(250)->Unit(benchmark::kMicrosecond);

}  // namespace
