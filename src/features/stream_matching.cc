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

bool makeDirectionPath(const std::vector<TimedPoint>& motion, DirectionPath& path) {
  path = DirectionPath();
  if (motion.size() < 2) return false;
  double length = 0.0;
  for (size_t i = 1; i < motion.size(); ++i) length += (motion[i].position - motion[i - 1].position).norm();
  if (!(length > 0.0) || !std::isfinite(length)) return false;
  path.stepLength = length / kStreamSteps;
  path.duration = std::max(0.0, motion.back().time - motion.front().time);

  // kStreamSteps + 1 points evenly spaced along the path, then the directions between them.
  Eigen::Vector3d points[kStreamSteps + 1];
  points[0] = motion.front().position;
  int placed = 1;
  double walked = 0.0;
  Eigen::Vector3d previous = motion.front().position;
  for (size_t i = 1; i < motion.size() && placed <= kStreamSteps;) {
    const Eigen::Vector3d gap = motion[i].position - previous;
    const double gapLength = gap.norm();
    if (gapLength > 0.0 && walked + gapLength >= path.stepLength) {
      previous += (path.stepLength - walked) / gapLength * gap;
      points[placed++] = previous;
      walked = 0.0;
    } else {
      walked += gapLength;
      previous = motion[i].position;
      ++i;
    }
  }
  for (; placed <= kStreamSteps; ++placed) points[placed] = motion.back().position;
  for (int j = 0; j < kStreamSteps; ++j) {
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
  std::fill(cost, cost + kStreamSteps, kUnreached);
  std::fill(start, start + kStreamSteps, 0.0);
}

void WarpingColumn::forgetBefore(double time) {
  for (int j = 0; j < kStreamSteps; ++j) {
    if (start[j] < time) cost[j] = kUnreached;
  }
}

float WarpingColumn::advance(const DirectionPath& path, const Eigen::Vector3d& direction, double stepStart,
                             double* matchStart) {
  const float ux = static_cast<float>(direction.x());
  const float uy = static_cast<float>(direction.y());
  const float uz = static_cast<float>(direction.z());
  // The first direction may begin a match at every step: the open begin.
  float diagonal = cost[0];
  double diagonalStart = start[0];
  cost[0] = 1.0f - (ux * path.x[0] + uy * path.y[0] + uz * path.z[0]);
  start[0] = stepStart;
  for (int j = 1; j < kStreamSteps; ++j) {
    const float here = 1.0f - (ux * path.x[j] + uy * path.y[j] + uz * path.z[j]);
    // From the previous direction with the previous step, from this direction with the previous
    // step (the motion lingers), or from the previous direction with this step (the path does).
    float best = diagonal;
    double bestStart = diagonalStart;
    if (cost[j] + kStayCost < best) {
      best = cost[j] + kStayCost;
      bestStart = start[j];
    }
    if (cost[j - 1] + kStayCost < best) {
      best = cost[j - 1] + kStayCost;
      bestStart = start[j - 1];
    }
    diagonal = cost[j];
    diagonalStart = start[j];
    cost[j] = best + here;
    start[j] = bestStart;
  }
  *matchStart = start[kStreamSteps - 1];
  return cost[kStreamSteps - 1] / static_cast<float>(kStreamSteps);
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
