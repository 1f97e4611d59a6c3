#include "features/stream_matching.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zando {

namespace {

// Time constant of the jitter filter: a tenth of the shortest gestures' duration, long against
// a tracker's frame-to-frame noise.
constexpr double kFilterSeconds = 0.07;
// Extra cost of staying on a direction of the path, or of taking a direction twice.
constexpr float kStayCost = 0.15f;
// How far a path may turn within one piece, in radians.
constexpr double kTurnPerStep = 0.3;
constexpr float kUnreached = std::numeric_limits<float>::infinity();

}  // namespace

Eigen::Vector3d MotionFilter::add(const Eigen::Vector3d& position, double time) {
  if (!started_) {
    started_ = true;
    value_ = position;
    time_ = time;
    return value_;
  }
  const double elapsed = std::max(0.0, time - time_);
  time_ = time;
  const double weight = 1.0 - std::exp(-elapsed / kFilterSeconds);
  value_ += weight * (position - value_);
  return value_;
}

double pathLength(const std::vector<TimedPoint>& motion) {
  double length = 0.0;
  for (size_t i = 1; i < motion.size(); ++i) length += (motion[i].position - motion[i - 1].position).norm();
  return length;
}

namespace {

// count + 1 points evenly spaced along a motion of the given length.
void resampleAlong(const std::vector<TimedPoint>& motion, double length, int count, Eigen::Vector3d* points) {
  const double step = length / count;
  points[0] = motion.front().position;
  int placed = 1;
  double walked = 0.0;
  Eigen::Vector3d previous = motion.front().position;
  for (size_t i = 1; i < motion.size() && placed <= count;) {
    const Eigen::Vector3d gap = motion[i].position - previous;
    const double gapLength = gap.norm();
    if (gapLength > 0.0 && walked + gapLength >= step) {
      previous += (step - walked) / gapLength * gap;
      points[placed++] = previous;
      walked = 0.0;
    } else {
      walked += gapLength;
      previous = motion[i].position;
      ++i;
    }
  }
  // Rounding may leave the last places short of the end.
  for (; placed <= count; ++placed) points[placed] = motion.back().position;
}

// How much the path turns in all, in radians, seen at kMaxStreamSteps pieces.
double turning(const Eigen::Vector3d* points, int count) {
  double total = 0.0;
  for (int j = 1; j < count; ++j) {
    const Eigen::Vector3d a = points[j] - points[j - 1];
    const Eigen::Vector3d b = points[j + 1] - points[j];
    const double norms = a.norm() * b.norm();
    if (norms > 0.0) total += std::acos(std::clamp(a.dot(b) / norms, -1.0, 1.0));
  }
  return total;
}

}  // namespace

bool makeDirectionPath(const std::vector<TimedPoint>& motion, DirectionPath& path) {
  path = DirectionPath();
  if (motion.size() < 2) return false;
  const double length = pathLength(motion);
  if (!(length > 0.0) || !std::isfinite(length)) return false;
  path.duration = std::max(0.0, motion.back().time - motion.front().time);

  // A path that turns much (a coil, a zigzag) needs more pieces to keep its shape than a circle.
  Eigen::Vector3d points[kMaxStreamSteps + 1];
  resampleAlong(motion, length, kMaxStreamSteps, points);
  const long wanted = std::lround(turning(points, kMaxStreamSteps) / kTurnPerStep);
  path.steps = static_cast<int>(std::clamp<long>(wanted, kMinStreamSteps, kMaxStreamSteps));
  path.stepLength = length / path.steps;
  resampleAlong(motion, length, path.steps, points);
  for (int j = 0; j < path.steps; ++j) {
    Eigen::Vector3d direction = points[j + 1] - points[j];
    const double norm = direction.norm();
    // Rounding can leave the last piece empty: it keeps the direction before it.
    if (norm > 0.0) {
      direction /= norm;
    } else if (j > 0) {
      direction = Eigen::Vector3d(path.x[j - 1], path.y[j - 1], path.z[j - 1]);
    }
    path.x[j] = static_cast<float>(direction.x());
    path.y[j] = static_cast<float>(direction.y());
    path.z[j] = static_cast<float>(direction.z());
  }
  return true;
}

void WarpingColumn::clear() {
  std::fill(cost, cost + kMaxStreamSteps, kUnreached);
  std::fill(start, start + kMaxStreamSteps, 0.0);
}

void WarpingColumn::forgetBefore(double time) {
  for (int j = 0; j < kMaxStreamSteps; ++j) {
    if (start[j] < time) cost[j] = kUnreached;
  }
}

float WarpingColumn::advance(const DirectionPath& path, const Eigen::Vector3d& direction, double stepStart,
                             double* matchStart) {
  const float ux = static_cast<float>(direction.x());
  const float uy = static_cast<float>(direction.y());
  const float uz = static_cast<float>(direction.z());
  const int steps = path.steps;
  // What this step costs against each direction, and the cheaper of the two ways in from the
  // previous step (from the previous direction, or lingering on this one), for all directions
  // at once; then, in order, the way in from the previous direction with this same step.
  float here[kMaxStreamSteps] = {};
  float best[kMaxStreamSteps] = {};
  double bestStart[kMaxStreamSteps] = {};
  for (int j = 0; j < steps; ++j) here[j] = 1.0f - (ux * path.x[j] + uy * path.y[j] + uz * path.z[j]);
  for (int j = 1; j < steps; ++j) {
    const float diagonal = cost[j - 1];
    const float linger = cost[j] + kStayCost;
    const bool fromDiagonal = diagonal <= linger;
    best[j] = fromDiagonal ? diagonal : linger;
    bestStart[j] = fromDiagonal ? start[j - 1] : start[j];
  }
  // The first direction may begin a match at every step: the open begin.
  cost[0] = here[0];
  start[0] = stepStart;
  for (int j = 1; j < steps; ++j) {
    const float skip = cost[j - 1] + kStayCost;
    if (skip < best[j]) {
      cost[j] = skip + here[j];
      start[j] = start[j - 1];
    } else {
      cost[j] = best[j] + here[j];
      start[j] = bestStart[j];
    }
  }
  *matchStart = start[steps - 1];
  return cost[steps - 1] / static_cast<float>(steps);
}

StretchMatch bestStretch(const DirectionPath& path, const std::vector<TimedPoint>& motion) {
  StepCutter cutter(path.stepLength);
  WarpingColumn column;
  StretchMatch best{kUnreached, 0.0, 0.0};
  for (const TimedPoint& point : motion) {
    cutter.add(point.position, point.time, [&](const Eigen::Vector3d& direction, double begin, double end) {
      double matchStart = 0.0;
      const float cost = column.advance(path, direction, begin, &matchStart);
      if (cost < best.cost) best = {cost, matchStart, end};
    });
  }
  return best;
}

}  // namespace zando
