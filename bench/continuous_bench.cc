// Continuous identification as a host runs it: one frame every 11 ms (90 Hz), a tracked point and
// one contdIdentify per frame, a 1000 ms window, 20 gestures with a network of the shape a first
// training builds and gesture statistics for the similarity. The same frame loop times endStroke
// on strokes of the window's length, and both are also timed back to back without the wait.
// Frame-loop runs also report the median of their calls, the figure compared with the target.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <vector>

#include "bench_support.h"
#include "features/feature_extraction.h"
#include "model/model_statistics.h"
#include "model/neural_network.h"
#include "recognition/gesture_recognition.h"

namespace {

constexpr int kGestures = 20;
constexpr int kFrames = 150;
using zando_bench::CallTimes;
using zando_bench::Clock;
using zando_bench::kFacing;
using zando_bench::kHead;
using zando_bench::microseconds;
using zando_bench::waitForNextFrame;

void handAt(int gesture, double t, double p[3]) {
  p[0] = 0.2 * std::sin((1 + gesture % 5) * t);
  p[1] = 1.5 + 0.2 * std::cos((1 + gesture / 5) * t);
  p[2] = 0.4 + 0.02 * t;
}

zando::GestureRecognition* trainedLookingRecognizer() {
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
  return recognizer;
}

// A running stroke whose 1000 ms window is full: 92 frames at the frame rate, waited for as the
// measured frames are.
void fillWindow(void* gro, int& frame) {
  GestureRecognition_startStroke(gro, kHead, kFacing, -1);
  for (; frame < 92; ++frame) {
    double p[3];
    handAt(3, 0.07 * frame, p);
    GestureRecognition_contdStrokeQ(gro, p, kFacing);
    waitForNextFrame();
  }
}

// Argument: 1 for the frame loop, 0 for calls back to back. Back to back no time passes, so no
// new point is added either: the window keeps its length instead of growing with every call.
void BM_ContdIdentify(benchmark::State& state) {
  const bool frameLoop = state.range(0) != 0;
  zando::GestureRecognition* gro = trainedLookingRecognizer();
  int frame = 0;
  fillWindow(gro, frame);
  CallTimes calls;
  for (auto _ : state) {
    if (frameLoop) {
      double p[3];
      handAt(3, 0.07 * frame++, p);
      GestureRecognition_contdStrokeQ(gro, p, kFacing);
      waitForNextFrame();
    }
    double similarity = 0.0;
    const auto begin = Clock::now();
    const int gesture = GestureRecognition_contdIdentify(gro, kHead, kFacing, &similarity);
    const auto end = Clock::now();
    if (gesture < 0) state.SkipWithError("continuous identification failed");
    calls.add(microseconds(begin, end));
    state.SetIterationTime(microseconds(begin, end) * 1e-6);
  }
  calls.report(state);
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_ContdIdentify)->Arg(1)->Arg(0)->UseManualTime()->Iterations(kFrames)->Unit(benchmark::kMicrosecond);

void BM_EndStrokeOfTheWindowsLength(benchmark::State& state) {
  const bool frameLoop = state.range(0) != 0;
  zando::GestureRecognition* gro = trainedLookingRecognizer();
  CallTimes calls;
  for (auto _ : state) {
    GestureRecognition_startStroke(gro, kHead, kFacing, -1);
    for (int i = 0; i < 91; ++i) {
      double p[3];
      handAt(3, 0.07 * i, p);
      GestureRecognition_contdStrokeQ(gro, p, kFacing);
    }
    if (frameLoop) waitForNextFrame();
    const auto begin = Clock::now();
    const int gesture = GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    const auto end = Clock::now();
    if (gesture < 0) state.SkipWithError("identification failed");
    calls.add(microseconds(begin, end));
    state.SetIterationTime(microseconds(begin, end) * 1e-6);
  }
  calls.report(state);
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_EndStrokeOfTheWindowsLength)
    ->Arg(1)
    ->Arg(0)
    ->UseManualTime()
    ->Iterations(kFrames)
    ->Unit(benchmark::kMicrosecond);

// Where a frame's call goes: the stages of contdIdentify taken one by one in the frame loop, each
// reported as the median of its frames.
void BM_ContdIdentifyStages(benchmark::State& state) {
  zando::GestureRecognition* gro = trainedLookingRecognizer();
  zando::GestureModel& model = gro->gestureModel;
  int frame = 0;
  fillWindow(gro, frame);
  CallTimes prune, extraction, network, similarity;
  for (auto _ : state) {
    double p[3];
    handAt(3, 0.07 * frame++, p);
    GestureRecognition_contdStrokeQ(gro, p, kFacing);
    waitForNextFrame();
    const auto begin = Clock::now();
    gro->pruneStroke(-1, gro->contdIdentificationPeriod);
    gro->currentStroke.headStart = gro->currentStroke.headPoints.front();
    gro->currentStroke.sampleType = SampleType_Continuous;
    const auto pruned = Clock::now();
    const std::vector<double> x = zando::extractFeatures(gro->currentStroke, model.parameters);
    const auto extracted = Clock::now();
    zando::Matrix& input = model.layerBuffers.front();
    input(0, 0) = 1.0;
    for (size_t i = 0; i < x.size(); ++i) input(0, static_cast<Eigen::Index>(i) + 1) = x[i];
    zando::forward(model.weights, model.layerBuffers, model.parameters.transferMode, model.parameters.transferSlope);
    const auto networked = Clock::now();
    benchmark::DoNotOptimize(zando::gestureSimilarity(model, x, 3));
    const auto end = Clock::now();
    prune.add(microseconds(begin, pruned));
    extraction.add(microseconds(pruned, extracted));
    network.add(microseconds(extracted, networked));
    similarity.add(microseconds(networked, end));
    state.SetIterationTime(microseconds(begin, end) * 1e-6);
  }
  state.counters["prune_us"] = prune.at(0.5);
  state.counters["extraction_us"] = extraction.at(0.5);
  state.counters["network_us"] = network.at(0.5);
  state.counters["similarity_us"] = similarity.at(0.5);
  GestureRecognition_delete(gro);
}
BENCHMARK(BM_ContdIdentifyStages)->UseManualTime()->Iterations(kFrames)->Unit(benchmark::kMicrosecond);

}  // namespace
