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

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kFramesPerSecond = 90;
constexpr int kGestures = 5;
constexpr int kSamplesPerGesture = 18;
constexpr int kTrialsPerGesture = 20;
const char* const kNames[kGestures] = {"circle", "swipe right", "zigzag down", "triangle", "push"};

// The path of a gesture at phase t in [0, 1], in metres, relative to where the hand starts.
void shapePoint(int gesture, double t, double out[3]) {
  out[0] = out[1] = out[2] = 0.0;
  switch (gesture) {
    case 0:
      out[0] = 0.15 * std::sin(2 * kPi * t);
      out[1] = 0.15 * std::cos(2 * kPi * t) - 0.15;
      break;
    case 1:
      out[0] = -0.25 + 0.5 * t;
      out[1] = 0.03 * std::sin(kPi * t);
      break;
    case 2:
      out[0] = 0.08 * std::sin(8 * kPi * t);
      out[1] = 0.2 - 0.4 * t;
      break;
    case 3: {
      const double corners[4][2] = {{0.0, 0.18}, {0.16, -0.1}, {-0.16, -0.1}, {0.0, 0.18}};
      const double s = t * 3.0;
      const int leg = s >= 3.0 ? 2 : static_cast<int>(s);
      const double f = s - leg;
      out[0] = corners[leg][0] + (corners[leg + 1][0] - corners[leg][0]) * f;
      out[1] = corners[leg][1] + (corners[leg + 1][1] - corners[leg][1]) * f;
      break;
    }
    default:
      out[1] = 0.02 * std::sin(kPi * t);
      out[2] = 0.35 * std::sin(0.5 * kPi * t);
      break;
  }
}

// One performance, as a tracker would deliver it: a user standing somewhere, looking roughly
// ahead, performing at their own size and speed with a little tremor.
void perform(void* gro, int gesture, int recordAs, std::mt19937& rng) {
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::normal_distribution<double> tremor(0.0, 0.002);
  const double size = 1.0 + 0.2 * u(rng);
  const double seconds = 1.0 + 0.25 * u(rng);
  const double yaw = 0.2 * u(rng);
  const double head[3] = {0.3 * u(rng), 1.65 + 0.1 * u(rng), 0.3 * u(rng)};
  const double headRotation[4] = {0.0, std::sin(yaw / 2), 0.0, std::cos(yaw / 2)};
  const double start[3] = {0.05 * u(rng), -0.2 + 0.05 * u(rng), 0.45 + 0.05 * u(rng)};
  GestureRecognition_startStroke(gro, head, headRotation, recordAs);
  const int frames = static_cast<int>(seconds * kFramesPerSecond);
  for (int frame = 0; frame < frames; ++frame) {
    const double t = static_cast<double>(frame) / (frames - 1);
    double local[3];
    shapePoint(gesture, t, local);
    // Hand offset in the head's frame (x right, y up, z forward), turned by the head's yaw.
    const double x = start[0] + size * local[0] + tremor(rng);
    const double y = start[1] + size * local[1] + tremor(rng);
    const double z = start[2] + size * local[2] + tremor(rng);
    const double hand[3] = {head[0] + std::cos(yaw) * x + std::sin(yaw) * z, head[1] + y,
                            head[2] - std::sin(yaw) * x + std::cos(yaw) * z};
    const double roll = 0.4 * (t - 0.5);
    const double handRotation[4] = {0.0, 0.0, std::sin(roll / 2), std::cos(roll / 2)};
    GestureRecognition_updateHeadPositionQ(gro, head, headRotation);
    GestureRecognition_contdStrokeQ(gro, hand, handRotation);
  }
}

std::atomic<double> bestScore{0.0};

void onTrainingUpdate(double score, void*) {
  if (score > bestScore.load()) bestScore.store(score);
}

void onTrainingFinish(double, void* done) { static_cast<std::atomic<bool>*>(done)->store(true); }

void progressBar(double seconds, double limit, double score) {
  const int width = 30;
  const int filled = static_cast<int>(width * std::min(1.0, seconds / limit));
  std::printf("\r  training [%s%s] %4.1f s  best score %5.1f%%", std::string(filled, '#').c_str(),
              std::string(width - filled, '.').c_str(), seconds, 100.0 * score);
  std::fflush(stdout);
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
  GestureRecognition_setTrainingFinishCallback(gro, &onTrainingFinish);
  GestureRecognition_setTrainingFinishCallbackMetadata(gro, &done);
  const auto trainingStart = std::chrono::steady_clock::now();
  const int started = GestureRecognition_startTraining(gro);
  if (started != 0) {
    std::printf("  training could not start (%d)\n", started);
  } else {
    while (!done.load()) {
      const double elapsed =
          std::chrono::duration<double>(std::chrono::steady_clock::now() - trainingStart).count();
      progressBar(elapsed, trainingSeconds, bestScore.load());
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - trainingStart).count();
    progressBar(elapsed, trainingSeconds, GestureRecognition_recognitionScore(gro));
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
  return 0;
}
