// Matching a running motion against stored paths while it arrives. The motion is cut into steps
// of equal length, each a unit direction; a stored path is a fixed number of such directions. An
// open-begin warping then finds, at every step, the cheapest match of a whole stored path that
// ends at that step, wherever it began, by updating one column of costs per step.
#ifndef ZANDO_FEATURES_STREAM_MATCHING_H
#define ZANDO_FEATURES_STREAM_MATCHING_H

#include <vector>

#include <Eigen/Core>

namespace zando {

// Directions a stored path is cut into: the fewer, the more it turns.
constexpr int kMinStreamSteps = 20;
constexpr int kMaxStreamSteps = 40;

// A stored path: `steps` unit directions of equal arc length, the length of one step in the
// path's own units and the time the motion took.
struct DirectionPath {
  int steps = kMinStreamSteps;
  float x[kMaxStreamSteps] = {};
  float y[kMaxStreamSteps] = {};
  float z[kMaxStreamSteps] = {};
  double stepLength = 0.0;
  double duration = 0.0;
};

// A point of a motion and the time it was taken, in seconds.
struct TimedPoint {
  Eigen::Vector3d position;
  double time;
};

// Steadies tracker jitter before a motion is cut: an exponential average with a time constant,
// so that it acts alike at any frame rate.
class MotionFilter {
 public:
  void reset() { started_ = false; }
  Eigen::Vector3d add(const Eigen::Vector3d& position, double time);

 private:
  bool started_ = false;
  Eigen::Vector3d value_ = Eigen::Vector3d::Zero();
  double time_ = 0.0;
};

// The length of a motion's path.
double pathLength(const std::vector<TimedPoint>& motion);

// The stored path of a motion (filtered as a running motion is): its length cut into
// equal pieces, enough to follow its turns. False when the motion has no length.
bool makeDirectionPath(const std::vector<TimedPoint>& motion, DirectionPath& path);

// Cuts a running motion into steps of one length, measured from the last cut rather than along
// the path: jitter within a step never cuts, and a fast frame cuts several times.
class StepCutter {
 public:
  explicit StepCutter(double step = 1.0) : step_(step) {}
  double step() const { return step_; }
  void reset() { started_ = false; }
  // Calls onStep(direction, startTime, endTime) for every step the point completes.
  template <typename F>
  void add(const Eigen::Vector3d& position, double time, F&& onStep) {
    if (!started_) {
      started_ = true;
      cut_ = position;
      cutTime_ = time;
      return;
    }
    // A jump over more than a good part of any gesture is the tracker losing the hand, not
    // motion: the cutting starts again where the hand is.
    if ((position - cut_).norm() > step_ * kMaxStepsPerPoint) {
      cut_ = position;
      cutTime_ = time;
      return;
    }
    for (;;) {
      const Eigen::Vector3d away = position - cut_;
      const double distance = away.norm();
      if (!(distance >= step_)) break;
      const Eigen::Vector3d direction = away / distance;
      cut_ += direction * step_;
      onStep(direction, cutTime_, time);
      cutTime_ = time;
    }
  }

 private:
  static constexpr int kMaxStepsPerPoint = 12;
  double step_;
  bool started_ = false;
  Eigen::Vector3d cut_ = Eigen::Vector3d::Zero();
  double cutTime_ = 0.0;
};

// The open-begin warping of one stored path against a running motion. Each cell holds the
// cheapest cost of matching the path's first directions with steps of the motion ending now, and
// when that match began. A step of the motion against a direction costs 1 - cos of their angle;
// staying on a direction or skipping a step of the motion costs a little more, so that a motion
// of other proportions than the path pays for them.
struct WarpingColumn {
  float cost[kMaxStreamSteps];
  double start[kMaxStreamSteps];
  WarpingColumn() { clear(); }
  void clear();
  // Forgets every match that began before `time`.
  void forgetBefore(double time);
  // Takes one step of the motion. Returns the cost of the whole path ending with this step,
  // divided by the number of directions; *matchStart is when that match began.
  float advance(const DirectionPath& path, const Eigen::Vector3d& direction, double stepStart, double* matchStart);
};

// The cheapest match of the whole path against any stretch of a finished motion, cut with the
// path's own step length: what the running matching would have found at its best moment, and
// when that stretch began and ended.
struct StretchMatch {
  float cost;
  double start;
  double end;
};
StretchMatch bestStretch(const DirectionPath& path, const std::vector<TimedPoint>& motion);

}  // namespace zando

#endif  // ZANDO_FEATURES_STREAM_MATCHING_H
