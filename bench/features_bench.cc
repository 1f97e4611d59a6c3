// Feature extraction of one realistic stroke, on the main path that an untrained model uses and on
// the frequency path that a trained model uses. It runs for every identification and, in
// continuous mode, every frame.
#include <benchmark/benchmark.h>

#include <cmath>

#include "features/feature_extraction.h"
#include "features/model_parameters.h"
#include "spatial/spatial.h"

namespace {

// A 1.5-second loop of 90 tracked frames in front of the user: a tilted figure of eight whose hand
// turns as it goes, while the head drifts and turns a little.
zando::Stroke figureEightStroke() {
  zando::Stroke stroke;
  const int count = 90;
  for (int i = 0; i < count; ++i) {
    const double t = 6.283185307179586 * i / (count - 1);
    const zando::Vector3 hand(0.25 * std::sin(t), 1.4 + 0.15 * std::sin(2.0 * t), 0.45 + 0.05 * std::cos(t));
    const zando::Quaternion handRotation = zando::quaternionFromEuler(0.3 * std::sin(t), 0.8 * t / 6.28, 0.2, 2);
    const zando::Vector3 head(0.02 * t, 1.7, -0.01 * t);
    const zando::Quaternion headRotation = zando::quaternionFromEuler(0.05 * std::sin(t), 0.1 * t / 6.28, 0.0, 2);
    stroke.handPoints.emplace_back(hand, handRotation);
    stroke.headPoints.emplace_back(head, headRotation);
  }
  stroke.headStart = stroke.headPoints.front();
  stroke.headLatest = stroke.headPoints.back();
  return stroke;
}

void runExtraction(benchmark::State& state, const zando::ModelParameters& parameters) {
  const zando::Stroke stroke = figureEightStroke();
  double pos[4];
  double scale;
  double dir0[4], dir1[4], dir2[4];
  for (auto _ : state) {
    std::vector<double> features = zando::extractFeatures(stroke, parameters, pos, &scale, dir0, dir1, dir2);
    benchmark::DoNotOptimize(features.data());
    benchmark::ClobberMemory();
  }
}

// A freshly constructed model: turning selection, principal axes.
void BM_ExtractFeaturesMainPath(benchmark::State& state) {
  const zando::ModelParameters parameters;
  runExtraction(state, parameters);
}
BENCHMARK(BM_ExtractFeaturesMainPath);

// As training leaves a model: the frequency path with weighted directions.
void BM_ExtractFeaturesFrequencyPath(benchmark::State& state) {
  zando::ModelParameters parameters;
  parameters.featureSelector = 3;
  parameters.featureFlagA = 0;
  runExtraction(state, parameters);
}
BENCHMARK(BM_ExtractFeaturesFrequencyPath);

// The frequency path with principal axes, which the training search may choose.
void BM_ExtractFeaturesFrequencyPathPrincipalAxes(benchmark::State& state) {
  zando::ModelParameters parameters;
  parameters.featureSelector = 3;
  runExtraction(state, parameters);
}
BENCHMARK(BM_ExtractFeaturesFrequencyPathPrincipalAxes);

// Continuous identification with each waypoint read against its own head pose.
void BM_ExtractFeaturesMainPathUseLatest(benchmark::State& state) {
  zando::ModelParameters parameters;
  parameters.updateHeadPositionPolicy = 0;
  runExtraction(state, parameters);
}
BENCHMARK(BM_ExtractFeaturesMainPathUseLatest);

}  // namespace
