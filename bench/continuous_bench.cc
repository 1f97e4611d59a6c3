// Continuous identification as a host runs it: one frame every 11 ms (90 Hz), a tracked point and
// one contdIdentify per frame, a 1000 ms window, 20 gestures with a network of the shape a first
// training builds and gesture statistics for the similarity. The same frame loop times endStroke
// on strokes of the window's length, and both are also timed back to back without the wait.
// Between frames the caches lose the weights and the extraction's data, so the frame-loop figures
// are the ones a host sees.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <thread>

#include "bench_support.h"
#include "model/model_statistics.h"
#include "recognition/gesture_recognition.h"

namespace {

constexpr int kGestures = 20;
const double kHead[3] = {0.0, 1.7, 0.0};
const double kFacing[4] = {0.0, 0.0, 0.0, 1.0};

void handAt(int gesture, double t, double p[3]) {
  p[0] = 0.2 * std::sin((1 + gesture % 5) * t);
  p[1] = 1.5 + 0.2 * std::cos((1 + gesture / 5) * t);
  p[2] = 0.4 + 0.02 * t;
}

void* trainedLookingRecognizer() {
  void* gro = GestureRecognition_create();
  for (int g = 0; g < kGestures; ++g) {
    GestureRecognition_createGesture(gro, "gesture", nullptr);
    for (int s = 0; s < 5; ++s) {
      GestureRecognition_startStroke(gro, kHead, kFacing, g);
      for (int i = 0; i < 90; ++i) {
        double p[3];
        handAt(g, 6.283 * i / 89 + 0.01 * s, p);
        GestureRecognition_contdStrokeQ(gro, p, kFacing);
      }
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
  }
  auto* recognizer = static_cast<zando::GestureRecognition*>(static_cast<IGestureRecognition*>(gro));
  zando_bench::installFirstTrainingNetwork(recognizer->gestureModel, kGestures);
  zando::computeGestureMeans(recognizer->gestureModel);
  return gro;
}

void waitForNextFrame(bool frameLoop) {
  if (!frameLoop) return;
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(11);
  while (std::chrono::steady_clock::now() < until) {
  }
}

// Argument: 1 for the frame loop, 0 for calls back to back.
void BM_ContdIdentify(benchmark::State& state) {
  const bool frameLoop = state.range(0) != 0;
  void* gro = trainedLookingRecognizer();
  GestureRecognition_startStroke(gro, kHead, kFacing, -1);
  int frame = 0;
  // The window fills first: 1000 ms of frames.
  for (; frame < 92; ++frame) {
    double p[3];
    handAt(3, 0.07 * frame, p);
    GestureRecognition_contdStrokeQ(gro, p, kFacing);
    std::this_thread::sleep_for(std::chrono::milliseconds(11));
  }
  for (auto _ : state) {
    double p[3];
    handAt(3, 0.07 * frame++, p);
    GestureRecognition_contdStrokeQ(gro, p, kFacing);
    waitForNextFrame(frameLoop);
    double similarity = 0.0;
    const auto begin = std::chrono::steady_clock::now();
    const int gesture = GestureRecognition_contdIdentify(gro, kHead, kFacing, &similarity);
    const auto end = std::chrono::steady_clock::now();
    if (gesture < 0) state.SkipWithError("continuous identification failed");
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
  }
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_ContdIdentify)->Arg(1)->Arg(0)->UseManualTime()->Iterations(150)->Unit(benchmark::kMicrosecond);

void BM_EndStrokeOfTheWindowsLength(benchmark::State& state) {
  const bool frameLoop = state.range(0) != 0;
  void* gro = trainedLookingRecognizer();
  for (auto _ : state) {
    GestureRecognition_startStroke(gro, kHead, kFacing, -1);
    for (int i = 0; i < 91; ++i) {
      double p[3];
      handAt(3, 0.07 * i, p);
      GestureRecognition_contdStrokeQ(gro, p, kFacing);
    }
    waitForNextFrame(frameLoop);
    const auto begin = std::chrono::steady_clock::now();
    const int gesture = GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    const auto end = std::chrono::steady_clock::now();
    if (gesture < 0) state.SkipWithError("identification failed");
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
  }
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_EndStrokeOfTheWindowsLength)->Arg(1)->Arg(0)->UseManualTime()->Iterations(150)->Unit(benchmark::kMicrosecond);

}  // namespace
