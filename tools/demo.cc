// The first program to run: plays a user in VR who defines five gestures, records samples of
// each at 90 frames a second, trains in the background, then performs fresh strokes and sees
// what the library makes of them. Everything goes through the flat C functions a host uses.
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <zando/zando.h>

#include "demo_motion.h"
#include "demo_continuous.h"
#include "demo_two_hands.h"

namespace {

using demo::kFramesPerSecond;
constexpr int kGestures = 5;
constexpr int kSamplesPerGesture = 18;
constexpr int kTrialsPerGesture = 20;
const char* const kNames[kGestures] = {"circle", "swipe right", "zigzag down", "triangle", "push"};

// One performance, fed to the recogniser frame by frame as a tracker would deliver it.
void perform(void* gro, int gesture, int recordAs, std::mt19937& rng) {
  const demo::HeadPose head = demo::randomHead(rng);
  const std::vector<demo::HandPose> hand = demo::handPath(gesture, head, rng, false);
  GestureRecognition_startStroke(gro, head.position, head.rotation, recordAs);
  for (const demo::HandPose& frame : hand) {
    GestureRecognition_updateHeadPositionQ(gro, head.position, head.rotation);
    GestureRecognition_contdStrokeQ(gro, frame.position, frame.rotation);
  }
}

std::atomic<double> bestScore{0.0};

void onTrainingUpdate(double score, void*) {
  if (score > bestScore.load()) bestScore.store(score);
}


struct Evaluation {
  int confusion[kGestures][kGestures] = {};
  int correct = 0;
  int total = 0;
  double similaritySum = 0.0;
  double microseconds = 0.0;
};

Evaluation evaluate(void* gro, unsigned seed) {
  Evaluation e;
  std::mt19937 rng(seed);
  for (int trial = 0; trial < kTrialsPerGesture; ++trial) {
    for (int g = 0; g < kGestures; ++g) {
      perform(gro, g, -1, rng);
      double similarity = 0.0;
      const auto begin = std::chrono::steady_clock::now();
      const int id = GestureRecognition_endStrokeAndGetSimilarity(gro, &similarity, nullptr, nullptr, nullptr,
                                                                  nullptr, nullptr);
      e.microseconds += std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
      ++e.total;
      if (id >= 0 && id < kGestures) {
        ++e.confusion[g][id];
        if (id == g) {
          ++e.correct;
          e.similaritySum += similarity;
        }
      }
    }
  }
  return e;
}

void report(const Evaluation& e) {
  std::printf("  accuracy %d/%d = %.1f%%, %.0f us per identification\n", e.correct, e.total,
              100.0 * e.correct / e.total, e.microseconds / e.total);
  // Similarity is measured against per-gesture statistics, which training computes.
  const double similarity = e.correct > 0 ? e.similaritySum / e.correct : -1.0;
  if (similarity >= 0.0) {
    std::printf("  mean similarity of the correct answers %.3f\n", similarity);
  } else {
    std::printf("  similarity not available yet: gesture statistics come with training\n");
  }
  std::printf("  confusion (rows: performed, columns: identified)\n  %-12s", "");
  for (int g = 0; g < kGestures; ++g) std::printf("%8.7s", kNames[g]);
  std::printf("\n");
  for (int g = 0; g < kGestures; ++g) {
    std::printf("  %-12s", kNames[g]);
    for (int h = 0; h < kGestures; ++h) std::printf("%8d", e.confusion[g][h]);
    std::printf("\n");
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int trainingSeconds = argc > 1 ? std::atoi(argv[1]) : 20;
  std::printf("%s gesture recognition demo\n\n", GestureRecognition_getVersionString());
  void* gro = GestureRecognition_create();
  std::mt19937 rng(2024);

  std::printf("1. Recording %d samples of each gesture at %d Hz\n", kSamplesPerGesture, kFramesPerSecond);
  for (int g = 0; g < kGestures; ++g) {
    const int index = GestureRecognition_createGesture(gro, kNames[g], nullptr);
    for (int s = 0; s < kSamplesPerGesture; ++s) {
      perform(gro, g, index, rng);
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
    std::printf("  %-12s %d samples\n", kNames[g], GestureRecognition_getGestureNumberOfSamples(gro, index));
  }

  std::printf("\n2. Before training, strokes are compared with the stored samples\n");
  report(evaluate(gro, 99));

  std::printf("\n3. Training in the background (at most %d s)\n", trainingSeconds);
  std::atomic<bool> done{false};
  GestureRecognition_setMaxTrainingTime(gro, trainingSeconds);
  GestureRecognition_setTrainingUpdateCallback(gro, &onTrainingUpdate);
  GestureRecognition_setTrainingFinishCallback(gro, &demo::markDone);
  GestureRecognition_setTrainingFinishCallbackMetadata(gro, &done);
  const auto trainingStart = std::chrono::steady_clock::now();
  const int started = GestureRecognition_startTraining(gro);
  if (started != 0) {
    std::printf("  training could not start (%d)\n", started);
  } else {
    while (!done.load()) {
      const double elapsed =
          std::chrono::duration<double>(std::chrono::steady_clock::now() - trainingStart).count();
      demo::progressBar(elapsed, trainingSeconds, bestScore.load(), "best score");
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - trainingStart).count();
    demo::progressBar(elapsed, trainingSeconds, GestureRecognition_recognitionScore(gro), "best score");
    std::printf("\n  finished: recognition score %.1f%% on held-back samples\n",
                100.0 * GestureRecognition_recognitionScore(gro));
  }

  std::printf("\n4. Fresh performances, identified by the trained network\n");
  const Evaluation trained = evaluate(gro, 7);
  report(trained);

  std::printf("\n5. Saving the trained set and loading it into a new recogniser\n");
  const char* path = "zando_demo_gestures.dat";
  const int saved = GestureRecognition_saveToFile(gro, path);
  void* reloaded = GestureRecognition_create();
  const int loaded = saved == 0 ? GestureRecognition_loadFromFile(reloaded, path, nullptr) : saved;
  if (saved != 0 || loaded != 0) {
    std::printf("  save answered %d, load answered %d\n", saved, loaded);
  } else {
    std::printf("  saved to %s and loaded: %d gestures, score %.1f%%, no retraining\n", path,
                GestureRecognition_numberOfGestures(reloaded), 100.0 * GestureRecognition_recognitionScore(reloaded));
    const Evaluation again = evaluate(reloaded, 7);
    report(again);
    std::printf("  identical answers after the reload: %s\n",
                std::memcmp(again.confusion, trained.confusion, sizeof(again.confusion)) == 0 ? "yes" : "no");
    std::remove(path);
  }
  GestureRecognition_delete(reloaded);
  GestureRecognition_delete(gro);

  runTwoHandedDemo(trainingSeconds / 2);
  runContinuousDemo(trainingSeconds / 2);
  return 0;
}
