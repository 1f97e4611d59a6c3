// Synthetic VR motion for the demo: a user standing somewhere, looking roughly ahead, performing
// gestures at their own size and speed with a little tremor, tracked at 90 frames a second.
#ifndef ZANDO_TOOLS_DEMO_MOTION_H
#define ZANDO_TOOLS_DEMO_MOTION_H

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace demo {

constexpr double kPi = 3.14159265358979323846;
constexpr int kFramesPerSecond = 90;

struct HeadPose {
  double position[3];
  double rotation[4];
  double yaw;
};

struct HandPose {
  double position[3];
  double rotation[4];
};

// The path of gesture 0 to 4 (circle, swipe right, zigzag down, triangle, push) at phase t in
// [0, 1], in metres, relative to where the hand starts.
inline void shapePoint(int gesture, double t, double out[3]) {
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

inline HeadPose randomHead(std::mt19937& rng) {
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  HeadPose head;
  head.yaw = 0.2 * u(rng);
  head.position[0] = 0.3 * u(rng);
  head.position[1] = 1.65 + 0.1 * u(rng);
  head.position[2] = 0.3 * u(rng);
  head.rotation[0] = 0.0;
  head.rotation[1] = std::sin(head.yaw / 2);
  head.rotation[2] = 0.0;
  head.rotation[3] = std::cos(head.yaw / 2);
  return head;
}

// The frames of one performance. The left hand works on the left side and does the mirror image
// of what the right hand does: a "swipe right" of the left hand moves to the left.
inline std::vector<HandPose> handPath(int gesture, const HeadPose& head, std::mt19937& rng, bool leftHand) {
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::normal_distribution<double> tremor(0.0, 0.002);
  const double side = leftHand ? -1.0 : 1.0;
  const double size = 1.0 + 0.2 * u(rng);
  const double seconds = 1.0 + 0.25 * u(rng);
  const double start[3] = {side * (0.15 + 0.05 * u(rng)), -0.2 + 0.05 * u(rng), 0.45 + 0.05 * u(rng)};
  const int frames = static_cast<int>(seconds * kFramesPerSecond);
  std::vector<HandPose> path(static_cast<size_t>(frames));
  for (int frame = 0; frame < frames; ++frame) {
    const double t = static_cast<double>(frame) / (frames - 1);
    double local[3];
    shapePoint(gesture, t, local);
    // Hand offset in the head's frame (x right, y up, z forward), turned by the head's yaw.
    const double x = start[0] + side * size * local[0] + tremor(rng);
    const double y = start[1] + size * local[1] + tremor(rng);
    const double z = start[2] + size * local[2] + tremor(rng);
    HandPose& pose = path[static_cast<size_t>(frame)];
    pose.position[0] = head.position[0] + std::cos(head.yaw) * x + std::sin(head.yaw) * z;
    pose.position[1] = head.position[1] + y;
    pose.position[2] = head.position[2] - std::sin(head.yaw) * x + std::cos(head.yaw) * z;
    const double roll = side * 0.4 * (t - 0.5);
    pose.rotation[0] = 0.0;
    pose.rotation[1] = 0.0;
    pose.rotation[2] = std::sin(roll / 2);
    pose.rotation[3] = std::cos(roll / 2);
  }
  return path;
}

// A finish callback that sets the std::atomic<bool> it is handed.
inline void markDone(double, void* done) { static_cast<std::atomic<bool>*>(done)->store(true); }

// A progress bar of the time spent against the limit, with the figure the training reports.
inline void progressBar(double seconds, double limit, double score, const char* label) {
  const int width = 30;
  const int filled = static_cast<int>(width * std::min(1.0, seconds / limit));
  std::printf("\r  training [%s%s] %4.1f s  %s %5.1f%%", std::string(filled, '#').c_str(),
              std::string(width - filled, '.').c_str(), seconds, label, 100.0 * score);
  std::fflush(stdout);
}

}  // namespace demo

#endif  // ZANDO_TOOLS_DEMO_MOTION_H
