// The demo's continuous act: one running motion without any start or end marker, the gestures
// following one another at their own speeds and sizes, joined by moves of the hand and idle
// stretches. Every frame the recogniser is asked whether a gesture has just been completed. The
// motion is replayed on the host's clock, at the tracker's frame times, so it runs as fast as the
// computing allows and always gives the same reports.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

#include <zando/zando.h>

#include "demo_continuous.h"
#include "demo_motion.h"

namespace {

constexpr int kGestures = 5;
constexpr int kSamples = 15;
constexpr int kPerformances = 12;
constexpr double kFrameSeconds = 1.0 / demo::kFramesPerSecond;
constexpr double kLateSeconds = 0.5;  // a report may come this long after its gesture ended
const char* const kNames[kGestures] = {"circle", "swipe right", "zigzag down", "triangle", "push"};

struct Performance {
  int gesture;
  double start, end;  // seconds from the start of the motion
};

// The motion: an idle stretch, then gestures in random order, each reached by a smooth move from
// where the hand is and followed by an idle stretch of slow drift and tremor; now and then the
// hand moves elsewhere and idles again without performing anything.
std::vector<demo::HandPose> makeMotion(const demo::HeadPose& head, const std::vector<int>& order, std::mt19937& rng,
                                       std::vector<Performance>& performances) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::normal_distribution<double> tremor(0.0, 0.001);
  std::vector<demo::HandPose> motion;
  demo::HandPose at{{head.position[0] + 0.1, head.position[1] - 0.35, head.position[2] + 0.3}, {0.0, 0.0, 0.0, 1.0}};
  const auto idle = [&](double seconds) {
    const double drift[3] = {0.008 * (unit(rng) - 0.5), 0.008 * (unit(rng) - 0.5), 0.008 * (unit(rng) - 0.5)};
    const int frames = static_cast<int>(seconds * demo::kFramesPerSecond);
    for (int f = 1; f <= frames; ++f) {
      demo::HandPose pose = at;
      for (int c = 0; c < 3; ++c) pose.position[c] += drift[c] * f / frames + tremor(rng);
      motion.push_back(pose);
    }
    for (int c = 0; c < 3; ++c) at.position[c] += drift[c];
  };
  const auto move = [&](const double (&to)[3], double seconds) {
    const int frames = static_cast<int>(seconds * demo::kFramesPerSecond);
    for (int f = 1; f <= frames; ++f) {
      const double s = static_cast<double>(f) / frames, eased = s * s * s * (10.0 - 15.0 * s + 6.0 * s * s);
      demo::HandPose pose = at;
      for (int c = 0; c < 3; ++c) pose.position[c] += (to[c] - at.position[c]) * eased;
      pose.position[1] += 0.03 * std::sin(demo::kPi * eased);
      motion.push_back(pose);
    }
    std::copy(to, to + 3, at.position);
  };
  idle(1.5);
  for (int gesture : order) {
    const std::vector<demo::HandPose> path = demo::handPath(gesture, head, rng, false);
    move(path.front().position, 0.4 + 0.4 * unit(rng));
    performances.push_back({gesture, static_cast<double>(motion.size()) * kFrameSeconds, 0.0});
    motion.insert(motion.end(), path.begin(), path.end());
    performances.back().end = static_cast<double>(motion.size() - 1) * kFrameSeconds;
    at = path.back();
    idle(0.5 + 1.5 * unit(rng));
    if (unit(rng) < 0.3) {
      const double elsewhere[3] = {head.position[0] + 0.3 * (unit(rng) - 0.5), head.position[1] - 0.3 - 0.2 * unit(rng),
                                   head.position[2] + 0.3 + 0.2 * unit(rng)};
      move(elsewhere, 0.6 + 0.4 * unit(rng));
      idle(1.0);
    }
  }
  return motion;
}

}  // namespace

void runContinuousDemo(int trainingSeconds) {
  std::printf("\n10. Continuous detection: no start, no end, one running motion\n");
  void* gro = GestureRecognition_create();
  std::mt19937 rng(31);
  // The host's clock, a frame at a time: the samples' durations are the frames' times.
  double clock = 0.0;
  for (int g = 0; g < kGestures; ++g) {
    GestureRecognition_createGesture(gro, kNames[g], nullptr);
    for (int s = 0; s < kSamples; ++s) {
      const demo::HeadPose head = demo::randomHead(rng);
      GestureRecognition_setHostTime(gro, clock);
      GestureRecognition_startStroke(gro, head.position, head.rotation, g);
      for (const demo::HandPose& pose : demo::handPath(g, head, rng, false)) {
        GestureRecognition_setHostTime(gro, clock += kFrameSeconds);
        GestureRecognition_updateHeadPositionQ(gro, head.position, head.rotation);
        GestureRecognition_contdStrokeQ(gro, pose.position, pose.rotation);
      }
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
      clock += 1.0;
    }
  }
  std::printf("  %d gestures x %d samples recorded at the host's frame times; training %d s\n", kGestures, kSamples,
              trainingSeconds);
  std::atomic<bool> done{false};
  GestureRecognition_setMaxTrainingTime(gro, trainingSeconds);
  GestureRecognition_setTrainingFinishCallback(gro, &demo::markDone);
  GestureRecognition_setTrainingFinishCallbackMetadata(gro, &done);
  GestureRecognition_setTrainingUpdateCallback(gro, nullptr);
  if (GestureRecognition_startTraining(gro) != 0) {
    std::printf("  training could not start\n");
    GestureRecognition_delete(gro);
    return;
  }
  while (!done.load()) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  std::printf("  trained: score %.1f%%\n", 100.0 * GestureRecognition_recognitionScore(gro));

  // Every gesture at least twice, in random order.
  std::vector<int> order;
  for (int k = 0; k < kPerformances; ++k) {
    order.push_back(k < 2 * kGestures ? k % kGestures : static_cast<int>(rng() % kGestures));
  }
  std::shuffle(order.begin(), order.end(), rng);
  const demo::HeadPose head = demo::randomHead(rng);
  std::vector<Performance> performances;
  const std::vector<demo::HandPose> motion = makeMotion(head, order, rng, performances);
  std::printf("  replaying %.1f s of motion (%d gestures, moves and idle stretches) on the host's clock\n",
              static_cast<double>(motion.size()) * kFrameSeconds, kPerformances);

  // Each report is matched as it comes: it is right when it names a gesture being performed, or
  // one that ended less than kLateSeconds before, that no earlier report found.
  std::vector<bool> found(performances.size(), false);
  std::vector<double> delays;
  int reports = 0;
  double busyMicroseconds = 0.0;
  std::printf("  time    detected (confidence)\n");
  const double origin = clock + 1.0;
  GestureRecognition_setHostTime(gro, origin);
  GestureRecognition_startStroke(gro, head.position, head.rotation, -1);
  for (size_t f = 0; f < motion.size(); ++f) {
    const double time = static_cast<double>(f) * kFrameSeconds;
    GestureRecognition_setHostTime(gro, origin + time);
    GestureRecognition_contdStrokeQ(gro, motion[f].position, motion[f].rotation);
    int gesture = -1;
    double confidence = 0.0;
    const auto begin = std::chrono::steady_clock::now();
    const int detected = GestureRecognition_contdDetect(gro, head.position, head.rotation, &gesture, &confidence);
    busyMicroseconds += std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
    if (detected != 1) continue;
    ++reports;
    size_t k = 0;
    while (k < performances.size() && (found[k] || performances[k].gesture != gesture ||
                                       performances[k].start > time || time >= performances[k].end + kLateSeconds)) {
      ++k;
    }
    std::printf("  %5.2fs  %-12s (%.2f)  ", time, kNames[gesture], confidence);
    if (k < performances.size()) {
      found[k] = true;
      delays.push_back(time - performances[k].end);
      std::printf("right, %.2f s %s its end\n", std::fabs(delays.back()), delays.back() < 0.0 ? "before" : "after");
    } else {
      std::printf("false alarm\n");
    }
  }
  GestureRecognition_cancelStroke(gro);
  GestureRecognition_setHostTime(gro, -1.0);

  const int right = static_cast<int>(delays.size());
  std::sort(delays.begin(), delays.end());
  const double median = delays.empty() ? 0.0 : 0.5 * (delays[(delays.size() - 1) / 2] + delays[delays.size() / 2]);
  std::printf("  precision %d/%d = %.1f%%, recall %d/%d = %.1f%%, %d false alarms; median delay %.2f s from a\n"
              "  gesture's end to its report; %.0f us per contdDetect on average\n",
              right, reports, reports > 0 ? 100.0 * right / reports : 0.0, right, kPerformances,
              100.0 * right / kPerformances, reports - right, median,
              busyMicroseconds / static_cast<double>(motion.size()));
  GestureRecognition_delete(gro);
}
