// The demo's continuous act: one stream of tracked motion, the gestures following one another
// with pauses and without any start or end marker, identified frame by frame over a sliding
// window. The stream plays four times faster than life, with the window shortened to match, so
// that every frame holds the points a real second would.
#include <algorithm>
#include <atomic>
#include <chrono>
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
constexpr int kSpeedUp = 4;
constexpr double kPauseSeconds = 0.7;
constexpr double kFoundSimilarity = 0.55;
constexpr size_t kStableFrames = 6;
const char* const kNames[kGestures] = {"circle", "swipe right", "zigzag down", "triangle", "push"};

struct Frame {
  demo::HandPose hand;
  int performance;  // index of the performed gesture, or -1 during a pause
};

// The stream: a pause, then gestures in random order, each followed by a pause in which the hand
// rests where the gesture ended, with a little tremor.
std::vector<Frame> makeStream(const demo::HeadPose& head, const std::vector<int>& order, std::mt19937& rng) {
  std::normal_distribution<double> tremor(0.0, 0.001);
  std::vector<Frame> stream;
  const auto rest = [&](demo::HandPose at) {
    const int frames = static_cast<int>(kPauseSeconds * demo::kFramesPerSecond);
    for (int f = 0; f < frames; ++f) {
      Frame frame{at, -1};
      for (double& c : frame.hand.position) c += tremor(rng);
      stream.push_back(frame);
    }
  };
  demo::HandPose start{};
  start.position[0] = head.position[0] + 0.15;
  start.position[1] = head.position[1] - 0.2;
  start.position[2] = head.position[2] + 0.45;
  start.rotation[3] = 1.0;
  rest(start);
  for (size_t k = 0; k < order.size(); ++k) {
    const std::vector<demo::HandPose> path = demo::handPath(order[k], head, rng, false);
    for (const demo::HandPose& pose : path) stream.push_back(Frame{pose, static_cast<int>(k)});
    rest(path.back());
  }
  return stream;
}


}  // namespace

void runContinuousDemo(int trainingSeconds) {
  std::printf("\n10. Continuous identification: no start, no end, one stream of motion\n");
  void* gro = GestureRecognition_create();
  std::mt19937 rng(31);
  // Samples are read the way windows of a running motion are read.
  for (int g = 0; g < kGestures; ++g) {
    GestureRecognition_createGesture(gro, kNames[g], nullptr);
    for (int s = 0; s < kSamples; ++s) {
      const demo::HeadPose head = demo::randomHead(rng);
      GestureRecognition_startStroke(gro, head.position, head.rotation, g);
      for (const demo::HandPose& pose : demo::handPath(g, head, rng, false)) {
        GestureRecognition_updateHeadPositionQ(gro, head.position, head.rotation);
        GestureRecognition_contdStrokeQ(gro, pose.position, pose.rotation);
      }
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
      GestureRecognition_setGestureSampleType(gro, g, s, SampleType_Continuous);
    }
  }
  std::printf("  %d gestures x %d samples recorded as continuous samples; training %d s\n", kGestures, kSamples,
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

  std::vector<int> order;
  for (int k = 0; k < kPerformances; ++k) order.push_back(static_cast<int>(rng() % kGestures));
  const demo::HeadPose head = demo::randomHead(rng);
  const std::vector<Frame> stream = makeStream(head, order, rng);
  GestureRecognition_setContdIdentificationPeriod(gro, 1000 / kSpeedUp);
  GestureRecognition_setContdIdentificationSmoothing(gro, 3);
  std::printf("  streaming %.1f s of motion (%d gestures, %.1f s pauses) at %dx speed, window %d ms\n",
              static_cast<double>(stream.size()) / demo::kFramesPerSecond, kPerformances, kPauseSeconds, kSpeedUp,
              1000 / kSpeedUp);

  // What each frame said, on the stream's own time scale.
  std::vector<int> heard(stream.size(), -1);
  std::vector<double> similarities(stream.size(), -1.0);
  const auto frameTime = std::chrono::microseconds(1000000 / demo::kFramesPerSecond / kSpeedUp);
  auto next = std::chrono::steady_clock::now();
  GestureRecognition_startStroke(gro, head.position, head.rotation, -1);
  double busyMicroseconds = 0.0;
  for (size_t f = 0; f < stream.size(); ++f) {
    GestureRecognition_updateHeadPositionQ(gro, head.position, head.rotation);
    GestureRecognition_contdStrokeQ(gro, stream[f].hand.position, stream[f].hand.rotation);
    const auto begin = std::chrono::steady_clock::now();
    double similarity = -1.0;
    heard[f] = GestureRecognition_contdIdentify(gro, head.position, head.rotation, &similarity);
    busyMicroseconds += std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
    similarities[f] = similarity;
    next += frameTime;
    std::this_thread::sleep_until(next);
  }
  GestureRecognition_cancelStroke(gro);

  // Events: the same confident answer for a run of frames. Single frames come and go as the
  // window slides over pauses and the joins between gestures.
  struct Event {
    int gesture;
    size_t first, last;
    double similarity;
  };
  std::vector<Event> events;
  for (size_t f = 0; f < stream.size();) {
    const int confident = similarities[f] >= kFoundSimilarity ? heard[f] : -1;
    size_t end = f;
    double best = 0.0;
    while (end < stream.size() && similarities[end] >= kFoundSimilarity && heard[end] == confident) {
      best = std::max(best, similarities[end]);
      ++end;
    }
    if (confident >= 0 && end - f >= kStableFrames) events.push_back(Event{confident, f, end - 1, best});
    f = std::max(end, f + 1);
  }
  std::printf("  time    performing       recognised (best smoothed similarity)\n");
  for (const Event& event : events) {
    const int performing = stream[event.first].performance;
    std::printf("  %5.2fs  %-15s  %s (%.2f)\n", static_cast<double>(event.first) / demo::kFramesPerSecond,
                performing >= 0 ? kNames[order[static_cast<size_t>(performing)]] : "(pause)", kNames[event.gesture],
                event.similarity);
  }
  // A performance is found when an event names its gesture from its last third until shortly into
  // the pause after it.
  int found = 0;
  std::vector<bool> matched(events.size(), false);
  for (size_t k = 0; k < order.size(); ++k) {
    size_t first = stream.size(), last = 0;
    for (size_t f = 0; f < stream.size(); ++f) {
      if (stream[f].performance == static_cast<int>(k)) {
        first = std::min(first, f);
        last = f;
      }
    }
    const size_t from = last - (last - first) / 3;
    const size_t to = last + static_cast<size_t>(0.4 * demo::kFramesPerSecond);
    bool hit = false;
    for (size_t e = 0; e < events.size(); ++e) {
      if (events[e].gesture == order[k] && events[e].last >= from && events[e].first <= to) {
        hit = true;
        matched[e] = true;
      }
    }
    found += hit;
  }
  const long others = std::count(matched.begin(), matched.end(), false);
  std::printf("  %d of %d performed gestures found, %ld other confident answers on the way; %.0f us per\n"
              "  contdIdentify on average\n",
              found, kPerformances, others, busyMicroseconds / static_cast<double>(stream.size()));
  GestureRecognition_delete(gro);
}
