// Writing and reading the database text of a well-filled gesture set (20 gestures of 50 samples
// of 100 points, a network of 120 features, two hidden layers of 144 and 20 outputs) in memory.
// The byte rate is that of the text. The file benchmarks go the whole way through the archive.
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>

#include "model/gesture_model.h"
#include "persistence/database_format.h"
#include "recognition/gesture_recognition.h"

namespace {

constexpr int kGestures = 20;
constexpr int kSamples = 50;
constexpr int kPoints = 100;

void fillModel(zando::GestureModel& model) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> value(-1.0, 1.0);
  const int widths[4] = {zando::featureCount(model.parameters), 144, 144, kGestures};
  for (int k = 0; k < 3; ++k) {
    zando::Matrix w(widths[k] + 1, widths[k + 1]);
    for (Eigen::Index i = 0; i < w.size(); ++i) w.data()[i] = value(random);
    model.weights.push_back(w);
  }
  for (int g = 0; g < kGestures; ++g) {
    auto* gesture = new zando::Gesture("gesture " + std::to_string(g), nullptr);
    for (int s = 0; s < kSamples; ++s) {
      auto* stroke = new zando::Stroke();
      for (int p = 0; p < kPoints; ++p) {
        const zando::Vector3 hand(value(random), 1.0 + value(random), value(random));
        const zando::Vector3 head(0.01 * value(random), 1.7, 0.01 * value(random));
        const zando::Quaternion q(0.1 * value(random), 0.2 * value(random), 0.1 * value(random), 0.97);
        stroke->handPoints.emplace_back(hand, q);
        stroke->headPoints.emplace_back(head, q);
      }
      gesture->gestureSamples.push_back(stroke);
    }
    model.gestures.push_back(gesture);
    std::vector<double> row(static_cast<size_t>(widths[0]));
    for (double& x : row) x = value(random);
    model.gestureMeans.push_back(row);
    model.gestureDeviations.push_back(row);
  }
  model.networkInvalid = false;
}

std::string writeText(zando::GestureModel& model) {
  std::ostringstream stream;
  zando::writeGestureDatabase(model, stream, nullptr);
  return stream.str();
}

void BM_WriteDatabase(benchmark::State& state) {
  zando::GestureModel model;
  fillModel(model);
  size_t bytes = 0;
  for (auto _ : state) {
    const std::string text = writeText(model);
    bytes = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
  state.counters["text_MB"] = static_cast<double>(bytes) / 1e6;
}
BENCHMARK(BM_WriteDatabase)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_ReadDatabase(benchmark::State& state) {
  zando::GestureModel source;
  fillModel(source);
  const std::string text = writeText(source);
  for (auto _ : state) {
    zando::GestureModel model;
    std::istringstream stream(text);
    if (zando::readGestureDatabase(model, stream, nullptr, nullptr) != 0) state.SkipWithError("load failed");
    benchmark::DoNotOptimize(model.gestures.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
  state.counters["text_MB"] = static_cast<double>(text.size()) / 1e6;
}
BENCHMARK(BM_ReadDatabase)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace

namespace {

// The whole way of a file: the text in memory, then the deflated archive on disk, and back.
zando::GestureRecognition* filledRecognizer() {
  zando::GestureRecognition* recognizer = zando::GestureRecognition::createZeroFilled();
  fillModel(recognizer->gestureModel);
  recognizer->gestureModel.layerBuffers = {zando::Matrix(1, 121), zando::Matrix(1, 145), zando::Matrix(1, 145),
                                           zando::Matrix(1, kGestures)};
  return recognizer;
}

const char* benchFile() {
  static const std::string path = "/tmp/zando_bench_" + std::to_string(::getpid()) + ".dat";
  return path.c_str();
}

void BM_SaveToFile(benchmark::State& state) {
  std::unique_ptr<zando::GestureRecognition> recognizer(filledRecognizer());
  for (auto _ : state) {
    if (recognizer->saveToFile(benchFile()) != 0) state.SkipWithError("save failed");
  }
  std::ifstream file(benchFile(), std::ios::binary | std::ios::ate);
  state.counters["archive_MB"] = static_cast<double>(file.tellg()) / 1e6;
}
BENCHMARK(BM_SaveToFile)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_LoadFromFile(benchmark::State& state) {
  {
    std::unique_ptr<zando::GestureRecognition> source(filledRecognizer());
    source->saveToFile(benchFile());
  }
  for (auto _ : state) {
    std::unique_ptr<zando::GestureRecognition> recognizer(zando::GestureRecognition::createZeroFilled());
    if (recognizer->loadFromFile(benchFile(), nullptr) != 0) state.SkipWithError("load failed");
  }
  std::remove(benchFile());
}
BENCHMARK(BM_LoadFromFile)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace
