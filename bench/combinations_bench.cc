// Two hands as one object. The combination step (identifyGestureCombination after both parts'
// strokes ended, 10 combinations) against the two parts' own end-of-stroke identification; and
// training both parts with a thread limit of 1 and of 2, timed to the finish callback.
#include <benchmark/benchmark.h>

#include <atomic>
#include <ctime>
#include <chrono>
#include <cmath>
#include <random>
#include <thread>

#include "combinations/gesture_combinations.h"
#include "bench_support.h"

namespace {

constexpr int kPartGestures = 10;
constexpr int kCombinations = 10;
const double kHead[3] = {0.0, 1.7, 0.0};
const double kFacing[4] = {0.0, 0.0, 0.0, 1.0};

// Gesture g of a part: a closed curve with its own pair of frequencies.
void performCurve(zando::GestureCombinations& c, int part, int g, int recordAs, std::mt19937& rng, int points = 90) {
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  const double size = 0.2 * (1.0 + 0.1 * u(rng));
  c.startStroke(part, kHead, kFacing, recordAs);
  for (int i = 0; i < points; ++i) {
    const double t = 6.283185307 * i / (points - 1);
    const double hand[3] = {size * std::sin((1 + g % 4) * t) + 0.003 * u(rng),
                            1.5 + size * std::cos((1 + g / 4) * t) + 0.003 * u(rng), 0.4 + 0.05 * (g % 3) * t / 6.3};
    const double rotation[4] = {0.0, std::sin(0.2 * t), 0.0, std::cos(0.2 * t)};
    c.contdStrokeQ(part, hand, rotation);
  }
}

// Two parts whose networks have the shape of a first training, and ten combinations.
zando::GestureCombinations* trainedLookingPair() {
  auto* c = zando::GestureCombinations::createZeroFilled(2);
  for (int part = 0; part < 2; ++part) {
    for (int g = 0; g < kPartGestures; ++g) c->createGesture(part, "gesture", nullptr);
    zando_bench::installFirstTrainingNetwork(c->parts[static_cast<size_t>(part)]->gestureModel, kPartGestures);
  }
  for (int k = 0; k < kCombinations; ++k) {
    c->createGestureCombination("combination");
    c->setCombinationPartGesture(k, 0, k % kPartGestures);
    c->setCombinationPartGesture(k, 1, (3 * k + 1) % kPartGestures);
  }
  return c;
}

void BM_TwoPartStrokeEnds(benchmark::State& state) {
  zando::GestureCombinations* c = trainedLookingPair();
  std::mt19937 rng(1);
  for (auto _ : state) {
    performCurve(*c, 0, 1, -1, rng);
    performCurve(*c, 1, 2, -1, rng);
    const auto begin = std::chrono::steady_clock::now();
    const int ended = c->endStroke(0, nullptr, nullptr, nullptr, nullptr, nullptr) |
                      c->endStroke(1, nullptr, nullptr, nullptr, nullptr, nullptr);
    const auto end = std::chrono::steady_clock::now();
    if (ended != 0) state.SkipWithError("a stroke did not end");
    state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
  }
  delete c;
}
BENCHMARK(BM_TwoPartStrokeEnds)->UseManualTime()->Unit(benchmark::kMicrosecond);

void BM_CombinationStep(benchmark::State& state) {
  zando::GestureCombinations* c = trainedLookingPair();
  std::mt19937 rng(1);
  performCurve(*c, 0, 1, -1, rng);
  performCurve(*c, 1, 2, -1, rng);
  c->endStroke(0, nullptr, nullptr, nullptr, nullptr, nullptr);
  c->endStroke(1, nullptr, nullptr, nullptr, nullptr, nullptr);
  double probability = 0.0, similarity = 0.0, partProbabilities[2], partSimilarities[2];
  for (auto _ : state) {
    // Both parts' results are fresh again, as after two strokes.
    c->partResultCount[0] = c->partResultCount[1] = kPartGestures;
    const int found = c->identifyGestureCombination(&probability, &similarity, partProbabilities, partSimilarities);
    benchmark::DoNotOptimize(found);
  }
  delete c;
}
BENCHMARK(BM_CombinationStep)->Unit(benchmark::kMicrosecond);

void onFinish(double, void* done) { static_cast<std::atomic<bool>*>(done)->store(true); }

// Two parts that each learn `gestures` curves from `samples` samples, trained with the thread
// limit of the benchmark's argument; returns the wall seconds to the finish callback and the
// processor seconds all threads used meanwhile.
void trainPair(benchmark::State& state, int gestures, int samples, int curveStep, int seconds, double* wall,
               double* cpu) {
  auto* c = zando::GestureCombinations::createZeroFilled(2);
  std::mt19937 rng(5);
  for (int part = 0; part < 2; ++part) {
    for (int g = 0; g < gestures; ++g) {
      c->createGesture(part, "curve", nullptr);
      for (int s = 0; s < samples; ++s) {
        performCurve(*c, part, g * curveStep / 2, g, rng, 60);
        c->endStroke(part, nullptr, nullptr, nullptr, nullptr, nullptr);
      }
    }
  }
  const int k = c->createGestureCombination("both");
  c->setCombinationPartGesture(k, 0, 1);
  c->setCombinationPartGesture(k, 1, 2);
  c->setMaxTrainingTime(seconds);
  c->setMaxTrainingThreads(static_cast<int>(state.range(0)));
  std::atomic<bool> done{false};
  c->trainingFinishCallback = &onFinish;
  c->trainingFinishCallbackMetadata = &done;
  const std::clock_t cpuBegin = std::clock();
  const auto begin = std::chrono::steady_clock::now();
  c->startTraining();
  while (!done.load()) std::this_thread::sleep_for(std::chrono::microseconds(200));
  *wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  *cpu = static_cast<double>(std::clock() - cpuBegin) / CLOCKS_PER_SEC;
  delete c;
}

// A fixed amount of work: four clearly different curves, learnt perfectly by the first candidate
// network most of the time, which ends a part's run. The median of the repetitions leaves out
// the odd run whose candidate falls short and trains to the 3 s limit.
void BM_CombinationTrainingToFinish(benchmark::State& state) {
  for (auto _ : state) {
    double wall = 0.0, cpu = 0.0;
    trainPair(state, 4, 20, 10, 3, &wall, &cpu);
    state.SetIterationTime(wall);
  }
}
BENCHMARK(BM_CombinationTrainingToFinish)
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(9)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);

// Training to the time limit (every curve has a twin, so no candidate is perfect): both thread
// limits take the same wall time, as a part's limit runs on the wall clock; busy_cores shows how
// many parts computed at once.
void BM_CombinationTrainingToTimeLimit(benchmark::State& state) {
  double wall = 0.0, cpu = 0.0;
  for (auto _ : state) {
    trainPair(state, 8, 12, 1, 2, &wall, &cpu);
    state.SetIterationTime(wall);
  }
  state.counters["busy_cores"] = cpu / wall;
}
BENCHMARK(BM_CombinationTrainingToTimeLimit)->Arg(1)->Arg(2)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
