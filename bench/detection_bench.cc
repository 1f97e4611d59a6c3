// Continuous detection as a host runs it: one frame every 11 ms (90 Hz), the frame's time, a
// tracked point and one contdDetect per frame, 20 gestures of 10 samples each, in the plain mode
// (after a short training) and in the enhanced mode (right after recording). The motion is what a
// user does in between as well: the hand rests with a little tremor, rises to where a gesture
// begins, performs it at its own speed and drops back to rest, so that frames of motion and frames
// of rest are both measured. An end of stroke of a sample's length on the same set, timed in the
// same frame loop, is the reference.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <random>
#include <thread>
#include <vector>

#include "bench_support.h"
#include "zando/zando.h"

namespace {

constexpr int kGestures = 20;
constexpr int kSamples = 10;
constexpr int kSamplePoints = 90;  // one second at the frame rate
constexpr int kMeasuredFrames = 900;
constexpr int kWarmUpFrames = 92;
constexpr double kFrameSeconds = 1.0 / 90.0;
using zando_bench::CallTimes;
using zando_bench::Clock;
using zando_bench::kFacing;
using zando_bench::kHead;
using zando_bench::microseconds;
using zando_bench::waitForNextFrame;
using Point = std::array<double, 3>;

// Twenty different curves (those of the enhanced mode's benchmark), performed with variation in
// size, place and noise, in `points` frames.
std::vector<Point> gesturePath(int gesture, std::mt19937& rng, int points) {
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  const double size = 0.2 * (1.0 + 0.15 * jitter(rng));
  const double cx = 0.05 * jitter(rng), cy = 1.4 + 0.05 * jitter(rng);
  const double a = 1 + gesture % 5, b = 1 + gesture / 5;
  std::vector<Point> path;
  for (int i = 0; i < points; ++i) {
    const double t = 6.283 * i / (points - 1);
    path.push_back({cx + size * std::sin(a * t) + 0.003 * jitter(rng), cy + size * std::cos(b * t) + 0.003 * jitter(rng),
                    0.45 + 0.05 * std::sin(t)});
  }
  return path;
}

// A set of 20 x 10 samples recorded on the host's clock at the frame rate, so that a sample lasts
// as long as its performance did. The plain mode trains briefly, as a host would before detecting.
void* detectionSet(bool enhanced, double& hostTime) {
  std::mt19937 rng(1);
  void* gro = GestureRecognition_create();
  GestureRecognition_setEnhancedRecognition(gro, enhanced ? 1 : 0);
  for (int g = 0; g < kGestures; ++g) {
    GestureRecognition_createGesture(gro, "gesture", nullptr);
    for (int s = 0; s < kSamples; ++s) {
      GestureRecognition_setHostTime(gro, hostTime);
      GestureRecognition_startStroke(gro, kHead, kFacing, g);
      for (const Point& p : gesturePath(g, rng, kSamplePoints)) {
        hostTime += kFrameSeconds;
        GestureRecognition_setHostTime(gro, hostTime);
        GestureRecognition_contdStrokeQ(gro, p.data(), kFacing);
      }
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
      hostTime += 1.0;
    }
  }
  if (!enhanced) {
    GestureRecognition_setMaxTrainingTime(gro, 2);
    if (GestureRecognition_startTraining(gro) == 0) {
      while (GestureRecognition_isTraining(gro) != 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  return gro;
}

struct Frame {
  Point hand;
  bool moving;       // during a gesture or the moves to and from rest
  int performed;     // the gesture last begun, or -1 before the first
  bool gestureEnds;  // the last point of a performance
};

// Rest, rise, gesture, drop, rest, ...: gestures in random order, each at 0.8 to 1.25 times the
// samples' speed, rests of 0.5 to 1 s, moves of a third of a second between rest and gesture.
std::vector<Frame> motion(int frames, std::mt19937& rng) {
  std::normal_distribution<double> tremor(0.0, 0.001);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<Frame> stream;
  Point rest = {0.05, 1.1, 0.35};
  int performed = -1;
  const auto moveTo = [&](const Point& to) {
    const Point from = stream.empty() ? rest : stream.back().hand;
    const int steps = 30;
    for (int i = 1; i <= steps; ++i) {
      const double s = 0.5 - 0.5 * std::cos(3.14159265358979 * i / steps);
      stream.push_back({{from[0] + s * (to[0] - from[0]), from[1] + s * (to[1] - from[1]), from[2] + s * (to[2] - from[2])},
                        true, performed, false});
    }
  };
  while (static_cast<int>(stream.size()) < frames) {
    const int pause = static_cast<int>((0.5 + 0.5 * unit(rng)) / kFrameSeconds);
    for (int i = 0; i < pause; ++i) {
      stream.push_back({{rest[0] + tremor(rng), rest[1] + tremor(rng), rest[2] + tremor(rng)}, false, performed, false});
    }
    const int gesture = static_cast<int>(rng() % kGestures);
    const int points = static_cast<int>(kSamplePoints * (0.8 + 0.45 * unit(rng)));
    const std::vector<Point> path = gesturePath(gesture, rng, points);
    moveTo(path.front());
    performed = gesture;
    for (const Point& p : path) stream.push_back({p, true, performed, false});
    stream.back().gestureEnds = true;
    rest = {0.05 + 0.05 * (unit(rng) - 0.5), 1.1 + 0.05 * (unit(rng) - 0.5), 0.35};
    moveTo(rest);
  }
  return stream;
}

// Argument: 1 for the enhanced mode, 0 for the plain mode. The first second fills the motion and
// is not measured (nor is the very first call, which may learn the thresholds: its time is kept
// apart). Every measured frame counts in the median; the frames of motion and of rest are also
// reported apart, with the number of performances, of detections and of right detections.
void BM_ContdDetect(benchmark::State& state) {
  const bool enhanced = state.range(0) != 0;
  double hostTime = 10.0;
  void* gro = detectionSet(enhanced, hostTime);
  std::mt19937 rng(3);
  const std::vector<Frame> stream = motion(kWarmUpFrames + kMeasuredFrames, rng);
  CallTimes all, moving, resting;
  int frame = 0, detections = 0, rightly = 0, performances = 0;
  double firstCall = 0.0;
  GestureRecognition_setHostTime(gro, hostTime);
  GestureRecognition_startStroke(gro, kHead, kFacing, -1);
  // Performances whose end leaves the detector time to confirm them before the stream ends.
  for (size_t f = 0; f + 30 < static_cast<size_t>(kWarmUpFrames + kMeasuredFrames); ++f) {
    performances += stream[f].gestureEnds ? 1 : 0;
  }
  const auto play = [&](bool measured) {
    const Frame& now = stream[static_cast<size_t>(frame)];
    hostTime += kFrameSeconds;
    GestureRecognition_setHostTime(gro, hostTime);
    GestureRecognition_contdStrokeQ(gro, now.hand.data(), kFacing);
    waitForNextFrame();
    int gesture = -1;
    double confidence = 0.0;
    const auto begin = Clock::now();
    const int found = GestureRecognition_contdDetect(gro, kHead, kFacing, &gesture, &confidence);
    const auto end = Clock::now();
    if (found < 0) state.SkipWithError("continuous detection refused the frame");
    if (found == 1) {
      ++detections;
      rightly += gesture == now.performed ? 1 : 0;
    }
    const double us = microseconds(begin, end);
    if (frame == 0) firstCall = us;
    ++frame;
    if (!measured) return us;
    all.add(us);
    (now.moving ? moving : resting).add(us);
    return us;
  };
  while (frame < kWarmUpFrames) play(false);
  for (auto _ : state) state.SetIterationTime(play(true) * 1e-6);
  all.report(state);
  state.counters["moving_median_us"] = moving.at(0.5);
  state.counters["resting_median_us"] = resting.at(0.5);
  state.counters["first_call_us"] = firstCall;
  state.counters["performances"] = performances;
  state.counters["detections"] = detections;
  state.counters["right_detections"] = rightly;
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_ContdDetect)->Arg(0)->Arg(1)->UseManualTime()->Iterations(kMeasuredFrames)->Unit(benchmark::kMicrosecond);

// The reference: endStroke of a stroke of a sample's length on the same set, one a frame.
void BM_ContdDetectEndStrokeReference(benchmark::State& state) {
  const bool enhanced = state.range(0) != 0;
  double hostTime = 10.0;
  void* gro = detectionSet(enhanced, hostTime);
  std::mt19937 rng(4);
  CallTimes calls;
  int gesture = 0;
  for (auto _ : state) {
    GestureRecognition_setHostTime(gro, hostTime);
    GestureRecognition_startStroke(gro, kHead, kFacing, -1);
    for (const Point& p : gesturePath(gesture, rng, kSamplePoints)) {
      hostTime += kFrameSeconds;
      GestureRecognition_setHostTime(gro, hostTime);
      GestureRecognition_contdStrokeQ(gro, p.data(), kFacing);
    }
    gesture = (gesture + 1) % kGestures;
    waitForNextFrame();
    const auto begin = Clock::now();
    const int identified = GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    const auto end = Clock::now();
    if (identified < 0) state.SkipWithError("identification failed");
    calls.add(microseconds(begin, end));
    state.SetIterationTime(microseconds(begin, end) * 1e-6);
  }
  calls.report(state);
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_ContdDetectEndStrokeReference)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(150)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
