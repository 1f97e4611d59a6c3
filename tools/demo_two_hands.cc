// The demo's second act: both hands as one object. The right hand's gestures are recorded, the
// left hand learns them as mirrored copies, combinations say what both hands do together, both
// parts train at once, and combined performances are identified, saved and reloaded.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <zando/zando.h>

#include "demo_motion.h"
#include "demo_two_hands.h"

namespace {

constexpr int kLeft = 0;
constexpr int kRight = 1;
constexpr int kHandGestures = 3;
constexpr int kSamples = 15;
constexpr int kTrials = 12;
const int kShapes[kHandGestures] = {0, 1, 4};
const char* const kHandNames[kHandGestures] = {"circle", "swipe out", "push"};

// What each hand does in a combination; -1: that hand stays still.
struct Combination {
  const char* name;
  int left;
  int right;
};
const Combination kCombinations[] = {
    {"both hands circle", 0, 0},
    {"right hand swipes, left rests", -1, 1},
    {"left pushes, right circles", 2, 0},
    {"both hands push", 2, 2},
};
constexpr int kCombinationCount = sizeof(kCombinations) / sizeof(kCombinations[0]);

// Both hands at once, frame by frame, with the head pose of the same moment.
void performTogether(void* gco, int left, int right, std::mt19937& rng) {
  const demo::HeadPose head = demo::randomHead(rng);
  std::vector<demo::HandPose> paths[2];
  if (left >= 0) paths[kLeft] = demo::handPath(kShapes[left], head, rng, true);
  if (right >= 0) paths[kRight] = demo::handPath(kShapes[right], head, rng, false);
  for (int part : {kLeft, kRight}) {
    if (!paths[part].empty()) GestureCombinations_startStroke(gco, part, head.position, head.rotation, -1);
  }
  const size_t frames = std::max(paths[kLeft].size(), paths[kRight].size());
  for (size_t frame = 0; frame < frames; ++frame) {
    GestureCombinations_updateHeadPositionQ(gco, head.position, head.rotation);
    for (int part : {kLeft, kRight}) {
      if (frame < paths[part].size()) {
        GestureCombinations_contdStrokeQ(gco, part, paths[part][frame].position, paths[part][frame].rotation);
      }
    }
  }
  for (int part : {kLeft, kRight}) {
    if (!paths[part].empty()) GestureCombinations_endStroke(gco, part, nullptr, nullptr, nullptr, nullptr, nullptr);
  }
}

struct Outcome {
  int answers[kCombinationCount][kTrials];
  int correct = 0;
  double microseconds = 0.0;
};

Outcome identifyAll(void* gco, unsigned seed) {
  Outcome outcome;
  std::mt19937 rng(seed);
  for (int trial = 0; trial < kTrials; ++trial) {
    for (int k = 0; k < kCombinationCount; ++k) {
      performTogether(gco, kCombinations[k].left, kCombinations[k].right, rng);
      double probability = 0.0;
      const auto begin = std::chrono::steady_clock::now();
      const int answer = GestureCombinations_identifyGestureCombination(gco, &probability, nullptr, nullptr, nullptr);
      outcome.microseconds += std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
      outcome.answers[k][trial] = answer;
      outcome.correct += answer == k;
    }
  }
  return outcome;
}

void report(const Outcome& outcome) {
  const int total = kTrials * kCombinationCount;
  std::printf("  %d/%d combinations named correctly (%.1f%%), %.2f us per combination step\n", outcome.correct,
              total, 100.0 * outcome.correct / total, outcome.microseconds / total);
  for (int k = 0; k < kCombinationCount; ++k) {
    int hits = 0;
    for (int trial = 0; trial < kTrials; ++trial) hits += outcome.answers[k][trial] == k;
    std::printf("    %-32s %2d/%d\n", kCombinations[k].name, hits, kTrials);
  }
}

std::atomic<double> meanBest{0.0};
void onUpdate(double performance, void*) { meanBest.store(performance); }

}  // namespace

void runTwoHandedDemo(int trainingSeconds) {
  std::printf("\n6. Two hands as one object: left hand = part %d, right hand = part %d\n", kLeft, kRight);
  void* gco = GestureCombinations_create(2);
  std::mt19937 rng(77);
  for (int g = 0; g < kHandGestures; ++g) {
    GestureCombinations_createGesture(gco, kRight, kHandNames[g], nullptr);
    for (int s = 0; s < kSamples; ++s) {
      const demo::HeadPose head = demo::randomHead(rng);
      GestureCombinations_startStroke(gco, kRight, head.position, head.rotation, g);
      for (const demo::HandPose& frame : demo::handPath(kShapes[g], head, rng, false)) {
        GestureCombinations_updateHeadPositionQ(gco, head.position, head.rotation);
        GestureCombinations_contdStrokeQ(gco, kRight, frame.position, frame.rotation);
      }
      GestureCombinations_endStroke(gco, kRight, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
    // The left hand learns the mirror image of the right hand's samples.
    const int copied = GestureCombinations_copyGesture(gco, kRight, g, kLeft, -1, 1);
    std::printf("  %-10s right hand %d samples recorded, left hand %d mirrored copies (gesture %d)\n", kHandNames[g],
                GestureCombinations_getGestureNumberOfSamples(gco, kRight, g),
                GestureCombinations_getGestureNumberOfSamples(gco, kLeft, copied), copied);
  }
  for (const Combination& c : kCombinations) {
    const int k = GestureCombinations_createGestureCombination(gco, c.name);
    GestureCombinations_setCombinationPartGesture(gco, k, kLeft, c.left);
    GestureCombinations_setCombinationPartGesture(gco, k, kRight, c.right);
  }
  std::printf("  %d combinations defined\n", GestureCombinations_numberOfGestureCombinations(gco));

  std::printf("\n7. Training both hands together, two at a time (at most %d s)\n", trainingSeconds);
  std::atomic<bool> done{false};
  GestureCombinations_setMaxTrainingTime(gco, trainingSeconds);
  GestureCombinations_setMaxTrainingThreads(gco, 2);
  GestureCombinations_setTrainingUpdateCallback(gco, &onUpdate);
  GestureCombinations_setTrainingFinishCallback(gco, &demo::markDone);
  GestureCombinations_setTrainingFinishCallbackMetadata(gco, &done);
  const auto start = std::chrono::steady_clock::now();
  const int started = GestureCombinations_startTraining(gco);
  if (started != 0) {
    std::printf("  training could not start (%d)\n", started);
    GestureCombinations_delete(gco);
    return;
  }
  while (!done.load()) {
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    demo::progressBar(elapsed, trainingSeconds, meanBest.load(), "mean of both hands");
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  demo::progressBar(elapsed, trainingSeconds, meanBest.load(), "mean of both hands");
  std::printf("\n  finished: left hand %.1f%%, right hand %.1f%%, combinations replayed %.1f%%\n",
              100.0 * GestureCombinations_gestureRecognitionScore(gco, kLeft),
              100.0 * GestureCombinations_gestureRecognitionScore(gco, kRight),
              100.0 * GestureCombinations_recognitionScore(gco));

  std::printf("\n8. Fresh two-handed performances\n");
  const Outcome trained = identifyAll(gco, 5);
  report(trained);

  std::printf("\n9. Saving both hands and the combinations in one file, loading into a new object\n");
  const char* path = "zando_demo_two_hands.dat";
  const int saved = GestureCombinations_saveToFile(gco, path);
  void* reloaded = GestureCombinations_create(1);
  const int loaded = saved == 0 ? GestureCombinations_loadFromFile(reloaded, path, nullptr) : saved;
  if (saved != 0 || loaded != 0) {
    std::printf("  save answered %d, load answered %d\n", saved, loaded);
  } else {
    std::printf("  loaded: %d parts, %d combinations, stored score %.1f%%, no retraining\n",
                GestureCombinations_numberOfParts(reloaded), GestureCombinations_numberOfGestureCombinations(reloaded),
                100.0 * GestureCombinations_recognitionScore(reloaded));
    const Outcome again = identifyAll(reloaded, 5);
    std::printf("  identical answers after the reload: %s\n",
                std::memcmp(again.answers, trained.answers, sizeof(again.answers)) == 0 ? "yes" : "no");
    std::remove(path);
  }
  GestureCombinations_delete(reloaded);
  GestureCombinations_delete(gco);
}
