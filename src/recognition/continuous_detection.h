// Detection of performed gestures in a running motion: every stored sample (up to a few a
// gesture) is matched against the motion step by step, a match that beats its gesture's threshold
// becomes a candidate, and a candidate is reported once nothing better has come for a moment,
// if the hand slowed where it began as the gesture's samples do when they begin, and the stretch
// turns as evenly (or at corners) as they do, closes (or stays open) as they do and was made in
// one go.
// The thresholds are learned from the samples themselves: how well a gesture's samples match one
// another against how well other gestures' samples and motions spliced from them match it.
#ifndef ZANDO_RECOGNITION_CONTINUOUS_DETECTION_H
#define ZANDO_RECOGNITION_CONTINUOUS_DETECTION_H

#include <cstdint>
#include <limits>
#include <vector>

#include <Eigen/Geometry>

#include "features/model_parameters.h"
#include "features/shape_matching.h"
#include "features/stream_matching.h"
#include "model/gesture_model.h"

namespace zando {

// One performed gesture found in the motion; times in seconds of the detector's clock.
struct Detection {
  int gesture = -1;
  double confidence = 0.0;
  double start = 0.0;
  double end = 0.0;
};

// Appends the typical path length of each enabled gesture with samples, and gives what the
// moving gestures among such lengths measure: a reference for several sets (one per hand) alike.
void appendGestureLengths(const GestureModel& model, const ModelParameters& parameters, std::vector<double>& out);
double movingGestureLength(const std::vector<double>& lengths);

class ContinuousDetector {
 public:
  // Learns the stored samples' paths and thresholds again if the samples, their enabled flags or
  // the head settings changed since the last call. False when no enabled gesture has a usable
  // sample.
  // `referenceLength`: what the moving gestures of the set measure, against which a gesture is
  // told to be made without moving; 0 to take it from this set's own samples.
  bool prepare(const GestureModel& model, const ModelParameters& parameters, double referenceLength = 0.0);
  // Forgets the motion so far (a new stroke).
  void restart();
  // Takes the next pose of the hand, with the head's at the time, at `time` seconds.
  void addPose(const StrokePoint& hand, const StrokePoint& head, const ModelParameters& parameters, double time);
  // Takes the next point of the motion, in the head's frame, at `time` seconds.
  void addPoint(const Eigen::Vector3d& position, double time);
  // The gesture completed by now, if one is confirmed: reported once.
  bool poll(double now, Detection& detection);

  // True for a gesture whose samples hardly move: it is never detected.
  bool isStill(int gesture) const {
    return gesture >= 0 && static_cast<size_t>(gesture) < still_.size() && still_[static_cast<size_t>(gesture)];
  }

  // Multiplies every threshold: 1 leaves them as learned.
  double thresholdScale = 1.0;
  // True while overlapping matches wait to be reported or dropped.
  bool pending() const { return pending_ || !ready_.empty(); }
  // True once any point went in since the last restart.
  bool hasMotion() const { return motionStarted_; }

 private:
  struct StoredPath {
    DirectionPath path;
    StrokeShape shape;  // the whole sample's shape, which a found match is checked against
    int gesture = 0;
  };
  // A stored path matched at one step length and tilt (see kVariants).
  struct Matcher {
    DirectionPath path;  // with the scale's step length
    int stored = 0;      // index into paths_
    int gesture = 0;
    int scale = 0;       // index into scales_
    bool primary = true;  // the stored path as it is, at its own length
    double tilt = 0.0;    // how far it is tipped about the head's across (x) axis, in radians
  };
  // The motion cut at one step length, shared by the stored paths whose own step is close to it.
  struct Scale {
    StepCutter cutter;
    std::vector<int> matchers;
    double lastStep = -1e300;  // when the motion last completed a step at this length
  };

  void learn(const GestureModel& model, const ModelParameters& parameters);
  // The shape distance of a stretch of motion (its path shape) to the nearest sample of one
  // gesture, leaving out the stored path `skip`.
  float shapeDistance(const StrokeShape& query, int gesture, size_t skip) const;
  void consider(int matcher, float cost, double start, double end);
  // Picks the gesture of the overlapping candidates whose matched stretch also has the shape of
  // its samples, reports it and forgets every match that began inside it.
  void confirmCandidates();
  // True while some stored path's match, begun with the candidates, is still on course: the
  // candidates may be the first part of a longer gesture.
  bool longerMatchUnderway(double now) const;

  std::vector<uintptr_t> fingerprint_;
  std::vector<StoredPath> paths_;
  std::vector<Matcher> matchers_;
  std::vector<Scale> scales_;
  std::vector<WarpingColumn> columns_;  // one per matcher
  std::vector<double> thresholds_;  // per gesture; 0 for gestures that are never detected
  std::vector<double> shapeThresholds_;
  std::vector<bool> still_;
  // Per gesture: how slow its samples begin (the slowest moment of their start against their
  // mean speed), which says how slow a performance of it must begin.
  std::vector<double> startSlowness_;
  // Per gesture: the longest its samples rest once begun, which says how long a performance of it
  // may rest.
  std::vector<double> samplesRest_;
  struct Bounds {
    double lowest = 0.0;
    double highest = std::numeric_limits<double>::infinity();
    bool holds(double value) const { return !(value < lowest || value > highest); }
  };
  // Per gesture: the sharpness a performance may have (how much of its turning is done at
  // corners), from its samples' with some reach.
  std::vector<Bounds> sharpness_;
  // Per gesture: how far apart its ends may lie against its size (see closureGap), from its
  // samples' with some reach.
  std::vector<Bounds> closure_;
  double referenceLength_ = 0.0;
  // The filtered motion, as long back as the slowest match may reach.
  std::vector<TimedPoint> history_;
  double historySeconds_ = 0.0;

  MotionFilter filter_;
  Eigen::Vector3d lastPosition_ = Eigen::Vector3d::Zero();
  double longestPath_ = 0.0;
  bool headStarted_ = false;
  Eigen::Vector3d steadyHeadPosition_ = Eigen::Vector3d::Zero();
  Eigen::Quaterniond steadyHeadRotation_ = Eigen::Quaterniond::Identity();
  double headTime_ = 0.0;
  bool motionStarted_ = false;
  // Overlapping matches not yet reported: the best of each gesture (by its cost against the
  // threshold), and the latest end among them. Reported as one gesture, or none.
  struct Candidate {
    bool present = false;
    double ratio = 0.0;
    double start = 0.0;
    double end = 0.0;
    double tilt = 0.0;
  };
  std::vector<Candidate> candidates_;
  bool pending_ = false;
  double clusterEnd_ = 0.0;
  // The slowest pace among them: the time each took over one step of its stored path.
  double clusterStepSeconds_ = 0.0;
  // Where the last report ended: no match that began before it is taken.
  double reportedUntil_ = -1e300;
  std::vector<Detection> ready_;  // confirmed, not yet reported; rarely more than one
};

}  // namespace zando

#endif  // ZANDO_RECOGNITION_CONTINUOUS_DETECTION_H
