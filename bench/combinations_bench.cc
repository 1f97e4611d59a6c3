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

// Each part stops itself after a fixed number of training steps, so that both thread limits do
// the same work; the steps then pass on to the object's own forwarder.
struct StepBudget {
  zando::GestureCombinations* owner = nullptr;
  int part = 0;
  int left = 0;
};

void budgetedUpdate(double performance, void* context) {
  auto* budget = static_cast<StepBudget*>(context);
  if (--budget->left == 0) {
    int running = zando::kJobRunning;
    budget->owner->parts[static_cast<size_t>(budget->part)]->trainingState.compare_exchange_strong(
        running, zando::kJobStopRequested);
  }
  zando::GestureCombinations::trainingUpdateForwarder(performance,
                                                      &budget->owner->partContext[static_cast<size_t>(budget->part)]);
}

// Two parts that each learn eight curves, every one with a twin so that no candidate is perfect
// and ends a run early, trained with the thread limit of the benchmark's argument. With a step
// budget the parts stop after that many steps; without one they train to the time limit.
// Returns the wall seconds to the finish callback and the processor seconds of all threads.
void trainPair(benchmark::State& state, int stepBudget, int seconds, double* wall, double* cpu) {
  auto* c = zando::GestureCombinations::createZeroFilled(2);
  std::mt19937 rng(5);
  for (int part = 0; part < 2; ++part) {
    for (int g = 0; g < 8; ++g) {
      c->createGesture(part, "curve", nullptr);
      for (int s = 0; s < 12; ++s) {
        performCurve(*c, part, g / 2, g, rng, 60);
        c->endStroke(part, nullptr, nullptr, nullptr, nullptr, nullptr);
      }
    }
  }
  const int k = c->createGestureCombination("both");
  c->setCombinationPartGesture(k, 0, 1);
  c->setCombinationPartGesture(k, 1, 2);
  c->setMaxTrainingTime(seconds);
  c->setMaxTrainingThreads(static_cast<int>(state.range(0)));
  StepBudget budgets[2];
  for (int part = 0; part < 2 && stepBudget > 0; ++part) {
    budgets[part] = StepBudget{c, part, stepBudget};
    c->parts[static_cast<size_t>(part)]->trainingUpdateCallback = &budgetedUpdate;
    c->parts[static_cast<size_t>(part)]->trainingUpdateCallbackMetadata = &budgets[part];
  }
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

// The same work, 6 training steps of each part: the wall time to the finish callback.
void BM_CombinationTrainingToFinish(benchmark::State& state) {
  for (auto _ : state) {
    double wall = 0.0, cpu = 0.0;
    trainPair(state, 6, 60, &wall, &cpu);
    state.SetIterationTime(wall);
  }
}
BENCHMARK(BM_CombinationTrainingToFinish)
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true)
    ->Unit(benchmark::kMillisecond);

// Training to the time limit takes the same wall time with either limit, as a part's limit runs
// on the wall clock; busy_cores shows how many parts computed at once.
void BM_CombinationTrainingToTimeLimit(benchmark::State& state) {
  double wall = 0.0, cpu = 0.0;
  for (auto _ : state) {
    trainPair(state, 0, 2, &wall, &cpu);
    state.SetIterationTime(wall);
  }
  state.counters["busy_cores"] = cpu / wall;
}
BENCHMARK(BM_CombinationTrainingToTimeLimit)->Arg(1)->Arg(2)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
