// Identification of a finished 90-point stroke through the flat function, with 20 gestures and a
// network of the shape a first training builds (120 features, two hidden layers of 144, random
// weights), on the frequency path a trained model uses. Only the end of the stroke is timed.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>

#include "recognition/gesture_recognition.h"
#include "bench_support.h"

namespace {

constexpr int kGestures = 20;

void* trainedLookingRecognizer() {
  void* gro = GestureRecognition_create();
  auto* recognizer = static_cast<zando::GestureRecognition*>(static_cast<IGestureRecognition*>(gro));
  for (int g = 0; g < kGestures; ++g) GestureRecognition_createGesture(gro, "gesture", nullptr);
  zando_bench::installFirstTrainingNetwork(recognizer->gestureModel, kGestures);
  return gro;
}

void captureStroke(void* gro) {
  const double head[3] = {0.0, 1.7, 0.0};
  const double facing[4] = {0.0, 0.0, 0.0, 1.0};
  GestureRecognition_startStroke(gro, head, facing, -1);
  for (int i = 0; i < 90; ++i) {
    const double t = i / 89.0;
    const double hand[3] = {0.2 * std::sin(6.283 * t), 1.5 + 0.2 * std::cos(6.283 * t), 0.4 + 0.05 * t};
    const double rotation[4] = {0.0, std::sin(0.2 * t), 0.0, std::cos(0.2 * t)};
    GestureRecognition_contdStrokeQ(gro, hand, rotation);
  }
}

void BM_EndStrokeIdentification(benchmark::State& state) {
  void* gro = trainedLookingRecognizer();
  for (auto _ : state) {
    captureStroke(gro);
    double similarity = 0.0;
    double pos[3];
    const auto begin = std::chrono::steady_clock::now();
    const int id = GestureRecognition_endStroke(gro, pos, nullptr, nullptr, nullptr, nullptr);
    const auto end = std::chrono::steady_clock::now();
    if (id < 0) state.SkipWithError("identification failed");
    benchmark::DoNotOptimize(similarity);
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
  }
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_EndStrokeIdentification)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
