#include "recognition/continuous_detection.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>

#include <Eigen/Geometry>

#include "features/feature_extraction.h"
#include "features/shape_matching.h"
#include "spatial/thread_scratch.h"

namespace zando {

namespace {

// Stored samples a gesture is matched with at most; more cost time every frame and add little.
constexpr int kMaxPathsPerGesture = 12;
// Of those, the samples matched against the running motion, which costs time every frame: the
// most unlike one another (see spreadSamples).
constexpr size_t kMatchedPerGesture = 6;
// A gesture whose samples travel less than this share of the typical gesture's path is made by
// resting the hand.
constexpr double kStillFraction = 0.2;
// Stored paths whose step lengths differ by less than this factor share one cutting of the motion.
constexpr double kScaleRatio = 1.15;
// Every stored path is matched as it is, and also a little smaller and larger (in powers of that
// factor, since other people make a gesture smaller or larger) and tipped a little forward and
// back about the head's across axis (as people hold a drawing's plane differently: measured for
// new users, this finds far more than turning it about the axis the head looks along). The first
// is the path as it is.
struct Variant {
  int scaleOffset;
  double tilt;  // radians, about the head's x axis
};
constexpr Variant kVariants[] = {{0, 0.0}, {-2, 0.0}, {2, 0.0}, {0, -0.26}, {0, 0.26}};
// A performance may take this many times more or less time than the sample it matches.
constexpr double kSpeedTolerance = 5.0;
// The frame rate a sample without times of its own is taken to have been recorded at.
constexpr double kUntimedFrameRate = 60.0;
// The motion kept for the shape check, at most: the slowest match of the longest sample.
constexpr double kMaxHistorySeconds = 60.0;
// A move between two frames over this share of the longest sample's path is a jump of the tracker.
constexpr double kJumpShare = 0.5;
// The time a match may overlap another's ends and still be held by it; and how long the motion
// must have gone on without a step of a longer match for that match to count as stopped.
constexpr double kConfirmSeconds = 0.2;
// How long candidates must stay the best before they are reported: the motion has moved on from
// the gesture's end and no better match of it came. This many steps at the pace the candidates
// were performed (the hand slows at the end of a slow performance, and its last steps come far
// apart), within kReportAfterSeconds and kConfirmSeconds. The step that ends a match comes only
// once the hand has moved on by a step's length, which already takes a moment.
constexpr double kReportAfterSteps = 2.0;
constexpr double kReportAfterSeconds = 0.1;
// Time constant of the steadied head pose that the motion is read against.
constexpr double kHeadSeconds = 0.5;
// A longer gesture counts as under way while its match so far costs less than this share of its
// threshold: only a match well on course may hold a shorter gesture back, since a held gesture
// that was the one performed is reported late.
constexpr double kUnderwayReach = 0.8;
// Nor beyond this many times the share of its threshold that the best candidate reached: a longer
// gesture must follow the motion about as well as the shorter one did, not merely stay within
// its bound while the hand moves on to something else. But always to kUnderwayLeast: a shorter
// gesture matched nearly perfectly must still leave a longer one a chance.
constexpr double kUnderwayAgainstBest = 2.0;
constexpr double kUnderwayLeast = 0.25;
// A match goes on while the motion goes on: while its scale made a step within kConfirmSeconds,
// or within this many step times if that is longer (the hand slows at the turns of a long
// gesture). A step time is the stored sample's, or the match's so far (the time it took over the
// sample's steps it covered) where that is shorter: a player who performs faster than the
// sample was recorded stops for less long within it.
constexpr double kUnderwaySteps = 3.0;
// Nor once the hand has come to rest: gone slower than kStoppedSpeed times the candidates' mean
// speed for kStoppedSeconds, or for as long as the longer gesture's samples rest (kRestReach
// times that, see below) if that is longer. A hand at rest tells at once what the lapse of step
// times tells only later.
constexpr double kStoppedSpeed = 0.15;
constexpr double kStoppedSeconds = 0.15;
// Synthetic variations of each sample, looser than the sample itself, that the thresholds must
// accept, and motions spliced from the ends of two samples, which they must reject.
constexpr int kVariationsPerSample = 4;
constexpr int kMinSplices = 12;
constexpr int kMaxSplices = 80;
// Samples of each other gesture that a gesture's thresholds must reject.
constexpr int kRejectedPerGesture = 4;
constexpr size_t kRejectedGestures = 32;
// A threshold lies at most this far beyond the worst performance it must accept: motions that
// are not among the samples (gestures never recorded) are often closer to a gesture than the
// other recorded gestures are.
constexpr double kThresholdReach = 1.3;
constexpr double kSingleSampleReach = 2.0;

// A gesture begins where the hand slows or rests between the move that brings it there and the
// gesture itself, as its samples begin slowly: a match whose start the hand swept through at
// speed is the middle of a longer motion (a circle inside a figure that is not among the
// samples). The hand's slowest moment near the start, against the match's mean speed, may be at
// most this many times the samples' own, and at least kStartSlowness.
constexpr double kStartSlownessFactor = 3.0;
constexpr double kStartSlowness = 0.6;
// The moments of that measure: the speed over this span, from the start to this share of the
// match (at most kStartSeconds).
constexpr double kSpeedSpan = 0.1;
constexpr double kStartShare = 0.25;
constexpr double kStartSeconds = 0.3;
// A match that does not begin so may begin partway along a straight stroke (see strokeStart):
// one whose path runs at least kLeadStraightness of its length straight, within kLeadAlignment
// (a cosine) of the match's first kLeadShare, and began at most kLeadSeconds earlier. Or it may
// begin a little after the hand began the gesture (the running match cannot tell a gesture's
// first, slow steps from the rest before them): the hand's latest slow moment within
// kReachBackShare of the match's time before it is the start, and the whole stretch from there
// must have the gesture's shape. A figure inside a longer one is read with what the hand did
// before it, and fails.
constexpr double kLeadStraightness = 0.97;
constexpr double kLeadAlignment = 0.95;
constexpr double kLeadShare = 0.15;
constexpr double kLeadSeconds = 1.0;
constexpr double kReachBackShare = 0.25;

// A gesture is performed in one go: once the hand has begun it, it rests (goes slower than
// kRestSpeed times the match's mean speed) for at most kRestSeconds, or kRestShare of the match's
// time, or kRestReach times the longest its samples rest, whichever is longest. A match over a
// longer rest joins the end of one motion to the start of the next.
constexpr double kRestSpeed = 0.25;
constexpr double kRestSeconds = 0.3;
constexpr double kRestShare = 0.25;
constexpr double kRestReach = 1.5;

// The running match may end short of where the hand ended the figure: a stretch whose shape does
// not pass is also read to kShapeReadOnSeconds further on (as far as the motion has come), at
// kShapeReadOnSteps ends spread over that.
constexpr double kShapeReadOnSeconds = 0.2;
constexpr int kShapeReadOnSteps = 3;

// A match passes when its running cost and its whole shape's distance, each against its own
// threshold, have a geometric mean below kPassing: a shape a little outside its bound may be made
// up for by a close running match and the other way round, though the running cost never goes
// beyond its threshold (only a match within it is a candidate) and the shape distance at most to
// kShapeReach times its threshold.
constexpr double kPassing = 0.9;
constexpr double kShapeReach = 1.5;

// How far a match's sharpness (see turnSharpness) may lie outside that of its gesture's samples,
// as a factor; with a single sample, which says less about how people draw it, a wider one.
constexpr double kSharpnessReach = 1.3;
constexpr double kSingleSampleSharpnessReach = 1.5;
constexpr double kUnbounded = std::numeric_limits<double>::infinity();

// How far a match's ends may lie apart (see closureGap) beyond its gesture's samples': their
// range widened by a factor and a margin, both for how differently people close a figure, and a
// gap every figure may have. A loop inside a longer figure (the bowl of a "6" read as an "O")
// lies open where the gesture's samples close; a figure whose samples end far from where they
// began, read in a closed loop, is closed where they are open. The fewer the samples, the less
// their range tells of how far other performances go: for n samples the factor is
// 1 + kClosureReach / sqrt(n) and the margin kClosureMargin / sqrt(n) (1.5 and 0.075 for four).
constexpr double kClosureReach = 1.0;
constexpr double kClosureMargin = 0.15;
constexpr double kClosureAllowed = 0.3;

using Motion = std::vector<TimedPoint>;

// How far apart a path's ends lie, against its size (the diagonal of the box around it): near
// 0 for a figure that closes, up to 1. Not a number for a path without extent.
double closureGap(const std::vector<Eigen::Vector3d>& path) {
  if (path.size() < 2) return std::numeric_limits<double>::quiet_NaN();
  Eigen::Vector3d lowest = path.front(), highest = path.front();
  for (const Eigen::Vector3d& point : path) {
    lowest = lowest.cwiseMin(point);
    highest = highest.cwiseMax(point);
  }
  const double size = (highest - lowest).norm();
  return size > 0.0 ? (path.back() - path.front()).norm() / size : std::numeric_limits<double>::quiet_NaN();
}

// Speeds of a motion over spans of kSpeedSpan seconds. Distances are taken straight from a
// span's first point to its last, so that tracker jitter does not add to them.
class SpanSpeeds {
 public:
  explicit SpanSpeeds(const Motion& motion) : motion_(motion) {}
  // The index of the first point at or after `time`, at most the last point's.
  size_t at(double time) const {
    const auto found = std::lower_bound(motion_.begin(), motion_.end(), time,
                                        [](const TimedPoint& point, double t) { return point.time < t; });
    return std::min(static_cast<size_t>(found - motion_.begin()), motion_.size() - 1);
  }
  // The first point at least a span after point `i`, and not past `limit`.
  size_t spanEnd(size_t i, size_t limit) const {
    size_t k = i;
    while (k < limit && !isSpan(i, k)) ++k;
    return k;
  }
  // (Frame times are not exact: a span a hair short of kSpeedSpan is one.)
  bool isSpan(size_t i, size_t k) const { return motion_[k].time - motion_[i].time >= 0.99 * kSpeedSpan; }
  double speed(size_t i, size_t k) const {
    return (motion_[k].position - motion_[i].position).norm() / (motion_[k].time - motion_[i].time);
  }
  // The mean over the spans one after another from `start` to `end` seconds; 0 when there are none.
  double mean(double start, double end) const {
    const size_t ended = at(end);
    double covered = 0.0, spans = 0.0;
    for (size_t i = at(start), k = spanEnd(i, ended); k > i && isSpan(i, k); i = k, k = spanEnd(i, ended)) {
      covered += speed(i, k);
      spans += 1.0;
    }
    return spans > 0.0 ? covered / spans : 0.0;
  }

 private:
  const Motion& motion_;
};

// The slowest the motion went from `from` to `to` seconds: the least speed over a span within,
// against the mean speed from `start` to `end` (a match). Not a number when that cannot be told.
double slowestBetween(const Motion& motion, double from, double to, double start, double end) {
  constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
  if (motion.empty() || !(end > start)) return kUnknown;
  const SpanSpeeds speeds(motion);
  const double mean = speeds.mean(start, end);
  if (!(mean > 0.0)) return kUnknown;
  double slowest = kUnknown;
  const size_t reach = speeds.at(to);
  for (size_t i = speeds.at(from); i < reach; ++i) {
    const size_t k = speeds.spanEnd(i, reach);
    if (!speeds.isSpan(i, k)) break;  // the motion ends within the span
    const double ratio = speeds.speed(i, k) / mean;
    if (!(ratio >= slowest)) slowest = ratio;
  }
  return slowest;
}

// The longest the hand rested from `start` to `end` seconds once it had begun to move: the time
// over which the spans starting in it went slower than kRestSpeed times the mean speed. A rest
// still going on at `end` counts only if `toTheEnd` (a stored sample may end with the hand
// resting before the stroke was ended; a match taken from the running motion may not).
double longestRest(const Motion& motion, double start, double end, bool toTheEnd) {
  if (motion.empty() || !(end > start)) return 0.0;
  const SpanSpeeds speeds(motion);
  const double mean = speeds.mean(start, end);
  if (!(mean > 0.0)) return 0.0;
  const size_t ended = speeds.at(end);
  double resting = 0.0, longest = 0.0;
  bool moved = false;
  for (size_t i = speeds.at(start); i < ended; ++i) {
    const size_t k = speeds.spanEnd(i, ended);
    if (!speeds.isSpan(i, k)) break;
    if (speeds.speed(i, k) >= kRestSpeed * mean) {
      if (moved) longest = std::max(longest, resting);
      moved = true;
      resting = 0.0;
    } else if (moved) {
      resting += motion[i + 1].time - motion[i].time;
    }
  }
  return toTheEnd ? std::max(longest, resting) : longest;
}

// How long the motion has gone slower than `speed` up to its last point, looking back at most
// `limit` seconds.
double restingFor(const Motion& motion, double speed, double limit) {
  if (motion.empty()) return 0.0;
  const SpanSpeeds speeds(motion);
  const double now = motion.back().time;
  double since = now;
  for (size_t i = motion.size() - 1; i-- > 0 && motion[i].time >= now - limit;) {
    const size_t k = speeds.spanEnd(i, motion.size() - 1);
    if (!speeds.isSpan(i, k)) continue;  // the last moments: no whole span yet
    if (speeds.speed(i, k) >= speed) break;
    since = motion[i].time;
  }
  return now - since;
}

// The slowest the motion went at the start of a match (see kStartSlowness); not a number when
// that cannot be told, which no limit refuses.
double startSlowness(const Motion& motion, double start, double end) {
  return slowestBetween(motion, start, start + std::min(kStartSeconds, kStartShare * (end - start)), start, end);
}

// The latest moment from `earliest` to `start` seconds at which the motion went no faster than
// `allowed` times the mean speed of the match from `start` to `end`; not a number if none did.
double latestSlowBefore(const Motion& motion, double earliest, double start, double end, double allowed) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  if (motion.empty()) return kNone;
  const SpanSpeeds speeds(motion);
  const double mean = speeds.mean(start, end);
  if (!(mean > 0.0)) return kNone;
  for (size_t i = speeds.at(start); i-- > 0 && motion[i].time >= earliest;) {
    const size_t k = speeds.spanEnd(i, motion.size() - 1);
    if (speeds.isSpan(i, k) && speeds.speed(i, k) <= allowed * mean) return motion[i].time;
  }
  return kNone;
}

// Where the straight stroke that a match from `start` to `end` begins with began, at most
// kLeadSeconds (and the match's own time) before `start`: a gesture that begins with a straight
// stroke, drawn longer than its samples, is matched from partway along it. The stroke is the
// motion before `start` that runs straight on in the direction of the match's first
// kLeadShare; `start` itself if there is none.
double strokeStart(const Motion& motion, double start, double end) {
  if (motion.empty()) return start;
  const SpanSpeeds speeds(motion);
  const size_t first = speeds.at(start);
  const Eigen::Vector3d heading = motion[speeds.at(start + kLeadShare * (end - start))].position - motion[first].position;
  if (!(heading.norm() > 0.0)) return start;
  const Eigen::Vector3d direction = heading.normalized();
  const double earliest = start - std::min(kLeadSeconds, end - start);
  double walked = 0.0, begun = start;
  for (size_t i = first; i-- > 0 && motion[i].time >= earliest;) {
    walked += (motion[i + 1].position - motion[i].position).norm();
    const Eigen::Vector3d chord = motion[first].position - motion[i].position;
    if (chord.norm() < kLeadStraightness * walked || chord.dot(direction) < kLeadAlignment * chord.norm()) break;
    begun = motion[i].time;
  }
  return begun;
}

Eigen::Matrix3d tiltRotation(double tilt) { return Eigen::AngleAxisd(tilt, Eigen::Vector3d::UnitX()).toRotationMatrix(); }

void tiltPath(DirectionPath& path, double tilt) {
  if (tilt == 0.0) return;
  const Eigen::Matrix3d turn = tiltRotation(tilt);
  for (int j = 0; j < path.steps; ++j) {
    const Eigen::Vector3d direction = turn * Eigen::Vector3d(path.x[j], path.y[j], path.z[j]);
    path.x[j] = static_cast<float>(direction.x());
    path.y[j] = static_cast<float>(direction.y());
    path.z[j] = static_cast<float>(direction.z());
  }
}

// The points of a motion from `start` to `end`, turned back by the tilt its match was made at.
void stretchOf(const std::vector<TimedPoint>& motion, double start, double end, double tilt,
               std::vector<Eigen::Vector3d>& out) {
  out.clear();
  const Eigen::Matrix3d untilt = tiltRotation(-tilt);
  for (const TimedPoint& point : motion) {
    if (point.time >= start && point.time <= end) out.push_back(untilt * point.position);
  }
}

// The length of a gesture's samples: the median of their paths'.
double typicalLength(const std::vector<Motion>& motions) {
  std::vector<double> lengths;
  for (const Motion& motion : motions) lengths.push_back(pathLength(motion));
  std::nth_element(lengths.begin(), lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2), lengths.end());
  return lengths.empty() ? 0.0 : lengths[lengths.size() / 2];
}

// What a set's moving gestures measure: the upper quartile, since many of a hand's gestures may
// be made by the other hand while this one rests.
double upperQuartile(std::vector<double> values) {
  if (values.empty()) return 0.0;
  const size_t at = values.size() * 3 / 4;
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(at), values.end());
  return values[at];
}

std::vector<Eigen::Vector3d> positionsOf(const Motion& motion) {
  std::vector<Eigen::Vector3d> positions;
  positions.reserve(motion.size());
  for (const TimedPoint& point : motion) positions.push_back(point.position);
  return positions;
}

// The stored sample in the head's frame, filtered as the running motion will be, with times in
// seconds from its first point.
Motion sampleMotion(const Stroke& sample, const ModelParameters& parameters) {
  std::vector<Eigen::Vector3d> path;
  headRelativePath(sample, parameters, true, path);
  Motion motion;
  motion.reserve(path.size());
  MotionFilter filter;
  // Times may be anything: taken apart as doubles, and never back. Files keep no times, so a
  // loaded sample's points all carry the moment of loading (as do points fed faster than the
  // clock ticks): such a sample is taken as recorded at a common frame rate.
  const size_t count = std::min(path.size(), sample.handPoints.size());
  const double first = count == 0 ? 0.0 : static_cast<double>(sample.handPoints.front().timestamp);
  const double span = count == 0 ? 0.0 : static_cast<double>(sample.handPoints[count - 1].timestamp) - first;
  const bool timed = span >= static_cast<double>(count) - 1.0;  // at least a millisecond a point
  double latest = 0.0;
  for (size_t i = 0; i < count; ++i) {
    if (!path[i].allFinite()) continue;
    const double time = timed ? (static_cast<double>(sample.handPoints[i].timestamp) - first) / 1000.0
                              : static_cast<double>(i) / kUntimedFrameRate;
    if (std::isfinite(time)) latest = std::max(latest, time);
    motion.push_back({filter.add(path[i], latest), latest});
  }
  // A path out of all proportion (a file's, never a tracker's) is left out whole.
  if (!std::isfinite(pathLength(motion))) motion.clear();
  return motion;
}

// The motions of the samples of an enabled gesture, up to kMaxPathsPerGesture of them spread
// over all its samples; none for a disabled gesture.
std::vector<Motion> gestureMotions(const Gesture& gesture, const ModelParameters& parameters) {
  std::vector<Motion> motions;
  if (!gesture.gestureEnabled) return motions;
  const size_t count = gesture.gestureSamples.size();
  const size_t used = std::min<size_t>(count, kMaxPathsPerGesture);
  for (size_t k = 0; k < used; ++k) {
    Motion motion = sampleMotion(*gesture.gestureSamples[k * count / used], parameters);
    if (motion.size() >= 3) motions.push_back(std::move(motion));
  }
  return motions;
}

// A sample performed differently: stretched or squeezed along each axis, turned a little about
// its centre and shaken slightly, as another performance of the same gesture may be.
Motion varied(const Motion& motion, std::mt19937& random) {
  std::uniform_real_distribution<double> stretch(0.8, 1.25);
  std::uniform_real_distribution<double> angle(-0.2, 0.2);
  std::normal_distribution<double> axis(0.0, 1.0);
  Eigen::Vector3d centre = Eigen::Vector3d::Zero();
  for (const TimedPoint& point : motion) centre += point.position;
  centre /= static_cast<double>(motion.size());
  Eigen::Vector3d turnAxis(axis(random), axis(random), axis(random));
  if (turnAxis.norm() == 0.0) turnAxis = Eigen::Vector3d::UnitY();
  const Eigen::Matrix3d turn = Eigen::AngleAxisd(angle(random), turnAxis.normalized()).toRotationMatrix();
  const Eigen::Vector3d factors(stretch(random), stretch(random), stretch(random));
  Motion out = motion;
  for (TimedPoint& point : out) point.position = centre + turn * (factors.asDiagonal() * (point.position - centre));
  return out;
}

// The second half of one motion followed by the first half of another, moved to join it: what
// the end of one gesture and the start of the next look like in a running motion.
Motion spliced(const Motion& first, const Motion& second) {
  Motion out(first.begin() + static_cast<std::ptrdiff_t>(first.size() / 2), first.end());
  const size_t half = std::max<size_t>(2, second.size() / 2);
  const Eigen::Vector3d shift = out.back().position - second.front().position;
  const double timeShift = out.back().time - second.front().time + 0.03;
  for (size_t i = 0; i < half && i < second.size(); ++i) {
    out.push_back({second[i].position + shift, second[i].time + timeShift});
  }
  return out;
}

// Which of a gesture's samples (by their shapes; only `usable` ones) are matched against the
// running motion: at most `wanted`, as unlike one another as can be, since other people make a
// gesture the way one sample or another does and near copies of one way find nothing more. The
// most typical sample (the least distant from all others) comes first, then each time the one
// farthest from those taken.
std::vector<bool> spreadSamples(const std::vector<const StrokeShape*>& shapes, const std::vector<bool>& usable,
                                size_t wanted) {
  std::vector<size_t> candidates;
  for (size_t k = 0; k < shapes.size(); ++k) {
    if (usable[k]) candidates.push_back(k);
  }
  if (candidates.size() <= wanted) return usable;
  const auto count = static_cast<Eigen::Index>(candidates.size());
  Eigen::MatrixXd distance = Eigen::MatrixXd::Zero(count, count);
  for (Eigen::Index a = 0; a < count; ++a) {
    for (Eigen::Index b = a + 1; b < count; ++b) {
      const StrokeShape* other = shapes[candidates[static_cast<size_t>(b)]];
      const float d = nearestStoredShape(shapes[candidates[static_cast<size_t>(a)]]->path, 1, [&](size_t) { return other; });
      // A distance that cannot be told counts as none: such a pair says nothing.
      distance(a, b) = distance(b, a) = std::isnan(d) ? 0.0 : static_cast<double>(d);
    }
  }
  std::vector<bool> taken(shapes.size(), false);
  std::vector<bool> chosen(candidates.size(), false);
  Eigen::Index next = 0;
  distance.rowwise().sum().minCoeff(&next);
  Eigen::VectorXd nearestTaken = Eigen::VectorXd::Constant(count, std::numeric_limits<double>::infinity());
  for (size_t n = 0; n < wanted; ++n) {
    chosen[static_cast<size_t>(next)] = true;
    taken[candidates[static_cast<size_t>(next)]] = true;
    nearestTaken = nearestTaken.cwiseMin(distance.col(next));
    next = -1;
    for (Eigen::Index k = 0; k < count; ++k) {
      if (!chosen[static_cast<size_t>(k)] && (next < 0 || nearestTaken(k) > nearestTaken(next))) next = k;
    }
  }
  return taken;
}

// The threshold that best separates what must be found from what must not (the largest F1
// score), placed halfway between the last score it accepts and the next one, within reach.
double chooseThreshold(std::vector<float> accepted, std::vector<float> rejected, double reach) {
  if (accepted.empty()) return 0.0;
  std::vector<std::pair<float, bool>> all;
  for (float score : accepted) all.emplace_back(score, true);
  for (float score : rejected) all.emplace_back(score, false);
  std::sort(all.begin(), all.end());
  const double total = static_cast<double>(accepted.size());
  double truePositives = 0.0, falsePositives = 0.0, bestF1 = -1.0;
  size_t best = 0;
  bool found = false;
  for (size_t i = 0; i < all.size(); ++i) {
    (all[i].second ? truePositives : falsePositives) += 1.0;
    // A threshold that lets through more to reject than to accept is never taken: samples of a
    // gesture made in two ways (a circle drawn either way round) would otherwise open it to all.
    if (truePositives < falsePositives) continue;
    const double f1 = 2.0 * truePositives / (truePositives + falsePositives + total);
    if (f1 > bestF1) {
      bestF1 = f1;
      best = i;
      found = true;
    }
  }
  if (!found) {
    // Nothing to accept comes closer than what must be rejected: only what comes closer still.
    return rejected.empty() ? 0.0 : 0.9 * static_cast<double>(*std::min_element(rejected.begin(), rejected.end()));
  }
  const double last = all[best].first;
  if (!std::isfinite(last)) return 0.0;
  if (best + 1 < all.size() && std::isfinite(all[best + 1].first)) {
    return std::min(0.5 * (last + all[best + 1].first), last * reach);
  }
  return last * reach;
}

}  // namespace

void appendGestureLengths(const GestureModel& model, const ModelParameters& parameters, std::vector<double>& out) {
  for (const Gesture* gesture : model.gestures) {
    const std::vector<Motion> motions = gestureMotions(*gesture, parameters);
    if (!motions.empty()) out.push_back(typicalLength(motions));
  }
}

double movingGestureLength(const std::vector<double>& lengths) { return upperQuartile(lengths); }

bool ContinuousDetector::prepare(const GestureModel& model, const ModelParameters& parameters,
                                 double referenceLength) {
  std::vector<uintptr_t>& current = threadScratch<std::vector<uintptr_t>, struct SampleFingerprintPlace>();
  sampleFingerprint(model, parameters, current);
  uintptr_t lengthBits = 0;
  std::memcpy(&lengthBits, &referenceLength, std::min(sizeof(lengthBits), sizeof(referenceLength)));
  current.push_back(lengthBits);
  referenceLength_ = referenceLength;
  if (current != fingerprint_) {
    fingerprint_ = current;
    learn(model, parameters);
    restart();
  }
  return !paths_.empty();
}

void ContinuousDetector::learn(const GestureModel& model, const ModelParameters& parameters) {
  paths_.clear();
  matchers_.clear();
  scales_.clear();
  thresholds_.assign(model.gestures.size(), 0.0);
  shapeThresholds_.assign(model.gestures.size(), 0.0);
  historySeconds_ = 0.0;
  longestPath_ = 0.0;
  still_.assign(model.gestures.size(), false);
  startSlowness_.assign(model.gestures.size(), 0.0);
  samplesRest_.assign(model.gestures.size(), 0.0);
  sharpness_.assign(model.gestures.size(), Bounds());
  closure_.assign(model.gestures.size(), Bounds());
  std::vector<std::vector<Motion>> recorded(model.gestures.size());
  for (size_t g = 0; g < model.gestures.size(); ++g) recorded[g] = gestureMotions(*model.gestures[g], parameters);
  double reference = referenceLength_;
  if (!(reference > 0.0)) {
    std::vector<double> typical;
    for (const std::vector<Motion>& motions : recorded) {
      if (!motions.empty()) typical.push_back(typicalLength(motions));
    }
    reference = upperQuartile(typical);
  }

  std::vector<Motion> motions;  // one per stored path
  std::map<long, int> scaleOf;
  for (size_t g = 0; g < model.gestures.size(); ++g) {
    if (recorded[g].empty()) continue;
    // A gesture whose samples hardly move, against the set's others (a hand that rests while
    // the other hand or the body performs), is the absence of motion: never detected, and a
    // combination takes it as that part being idle.
    if (typicalLength(recorded[g]) < kStillFraction * reference) {
      still_[g] = true;
      continue;
    }
    const size_t count = recorded[g].size();
    // How slow the gesture's samples begin: the upper quartile over its samples.
    std::vector<double> slowness;
    for (const Motion& motion : recorded[g]) {
      const double measured = startSlowness(motion, motion.front().time, motion.back().time);
      if (std::isfinite(measured)) slowness.push_back(measured);
    }
    startSlowness_[g] = slowness.empty() ? std::numeric_limits<double>::infinity() : upperQuartile(slowness);
    samplesRest_[g] = 0.0;
    for (const Motion& motion : recorded[g]) {
      samplesRest_[g] = std::max(samplesRest_[g], longestRest(motion, motion.front().time, motion.back().time, false));
    }
    const double reach = count > 1 ? kSharpnessReach : kSingleSampleSharpnessReach;
    Bounds& sharpness = sharpness_[g];
    sharpness = {kUnbounded, 0.0};
    // Every sample is checked as a whole shape; a few of them are also matched running.
    std::vector<StoredPath> samples(count);
    std::vector<const StrokeShape*> shapes(count);
    std::vector<bool> usable(count);
    // A sample whose sharpness or closure cannot be told leaves any to its gesture.
    Bounds gaps{kUnbounded, 0.0};
    double gapsKnown = 0.0;
    for (size_t k = 0; k < count; ++k) {
      usable[k] = makeDirectionPath(recorded[g][k], samples[k].path);
      if (!usable[k]) continue;
      const std::vector<Eigen::Vector3d> positions = positionsOf(recorded[g][k]);
      makePathShape(positions, true, samples[k].shape);
      samples[k].gesture = static_cast<int>(g);
      shapes[k] = &samples[k].shape;
      const double gap = closureGap(positions);
      gaps.lowest = std::min(gaps.lowest, std::isfinite(gap) ? gap : 0.0);
      gaps.highest = std::max(gaps.highest, std::isfinite(gap) ? gap : kUnbounded);
      if (std::isfinite(gap)) gapsKnown += 1.0;
    }
    const std::vector<bool> matched = spreadSamples(shapes, usable, kMatchedPerGesture);
    for (size_t k = 0; k < count; ++k) {
      if (!usable[k]) continue;
      Motion& motion = recorded[g][k];
      StoredPath& stored = samples[k];
      const long key = std::lround(std::log(stored.path.stepLength) / std::log(kScaleRatio));
      const double sharp = stored.shape.sharpness;
      sharpness.lowest = std::min(sharpness.lowest, std::isfinite(sharp) ? sharp / reach : 0.0);
      sharpness.highest = std::max(sharpness.highest, std::isfinite(sharp) ? sharp * reach : kUnbounded);
      longestPath_ = std::max(longestPath_, stored.path.stepLength * stored.path.steps);
      historySeconds_ = std::clamp(stored.path.duration * kSpeedTolerance + 1.0, historySeconds_, kMaxHistorySeconds);
      for (const Variant& variant : kVariants) {
        if (!matched[k]) break;
        auto found = scaleOf.find(key + variant.scaleOffset);
        if (found == scaleOf.end()) {
          found = scaleOf.emplace(key + variant.scaleOffset, static_cast<int>(scales_.size())).first;
          scales_.push_back(
              Scale{StepCutter(std::pow(kScaleRatio, static_cast<double>(key + variant.scaleOffset))), {}, -1e300});
        }
        Matcher matcher{stored.path, static_cast<int>(paths_.size()), stored.gesture, found->second,
                        &variant == &kVariants[0], variant.tilt};
        matcher.path.stepLength = scales_[static_cast<size_t>(matcher.scale)].cutter.step();
        tiltPath(matcher.path, variant.tilt);
        scales_[static_cast<size_t>(matcher.scale)].matchers.push_back(static_cast<int>(matchers_.size()));
        matchers_.push_back(matcher);
      }
      paths_.push_back(std::move(stored));
      motions.push_back(std::move(motion));
    }
    const double widening = 1.0 / std::sqrt(std::max(1.0, gapsKnown));
    const double factor = 1.0 + kClosureReach * widening, margin = kClosureMargin * widening;
    closure_[g] = {gaps.lowest / factor - margin, std::max(kClosureAllowed, gaps.highest * factor + margin)};
  }
  columns_.assign(matchers_.size(), WarpingColumn());
  if (paths_.empty()) return;

  // Fixed seed: the same samples always give the same thresholds.
  std::mt19937 random(0x5eed);
  std::vector<std::vector<Motion>> variations(paths_.size());
  for (size_t i = 0; i < paths_.size(); ++i) {
    for (int v = 0; v < kVariationsPerSample; ++v) variations[i].push_back(varied(motions[i], random));
  }
  std::vector<Motion> splices;
  const int spliceCount = std::clamp(static_cast<int>(paths_.size()) * 2, kMinSplices, kMaxSplices);
  std::uniform_int_distribution<size_t> pick(0, paths_.size() - 1);
  for (int s = 0; s < spliceCount; ++s) splices.push_back(spliced(motions[pick(random)], motions[pick(random)]));

  // Each gesture's thresholds from how its paths match motions that must be accepted (the other
  // samples of the gesture, and varied copies) and motions that must not (some samples of every
  // other gesture, and the splices): the cost of the best matching stretch of the motion, and the
  // shape distance of that stretch, as detection will see them.
  const size_t gestureCount = model.gestures.size();
  for (size_t g = 0; g < gestureCount; ++g) {
    std::vector<size_t> own;
    for (size_t i = 0; i < paths_.size(); ++i) {
      if (paths_[i].gesture == static_cast<int>(g)) own.push_back(i);
    }
    if (own.empty()) continue;
    std::vector<float> accepted, rejected, acceptedShape, rejectedShape;
    StrokeShape query;
    // `from`: the stored path the motion came from, left out unless it is the gesture's only one.
    const auto judge = [&](const Motion& motion, size_t from, bool accept) {
      const size_t skip = own.size() == 1 ? paths_.size() : from;
      // The sample that matches best at its own length, then that sample at the other lengths:
      // nearly always the best of all, for a third of the work.
      StretchMatch best{std::numeric_limits<float>::infinity(), 0.0, 0.0};
      int bestStored = -1;
      double bestTilt = 0.0;
      for (const Matcher& matcher : matchers_) {
        if (matcher.gesture != static_cast<int>(g) || static_cast<size_t>(matcher.stored) == skip) continue;
        if (!matcher.primary) continue;
        const StretchMatch match = bestStretch(matcher.path, motion);
        if (match.cost < best.cost) {
          best = match;
          bestStored = matcher.stored;
        }
      }
      for (const Matcher& matcher : matchers_) {
        if (matcher.stored != bestStored || matcher.primary) continue;
        const StretchMatch match = bestStretch(matcher.path, motion);
        if (match.cost < best.cost) {
          best = match;
          bestTilt = matcher.tilt;
        }
      }
      std::vector<Eigen::Vector3d>& stretch = threadScratch<std::vector<Eigen::Vector3d>, struct StretchPlace>();
      stretchOf(motion, best.start, best.end, bestTilt, stretch);
      float shape = std::numeric_limits<float>::infinity();
      if (stretch.size() >= 2) {
        makePathShape(stretch, false, query);
        shape = shapeDistance(query, static_cast<int>(g), skip);
      }
      (accept ? accepted : rejected).push_back(best.cost);
      (accept ? acceptedShape : rejectedShape).push_back(shape);
    };
    for (size_t i : own) {
      if (own.size() > 1) judge(motions[i], i, true);
      for (const Motion& variation : variations[i]) judge(variation, i, true);
    }
    // A few samples of each other gesture, spread over a bounded number of gestures in a large set.
    std::vector<int> taken(gestureCount, 0);
    const size_t stride = std::max<size_t>(1, gestureCount / kRejectedGestures);
    for (size_t i = 0; i < paths_.size(); ++i) {
      const size_t other = static_cast<size_t>(paths_[i].gesture);
      if (other == g || (other + g) % stride != 0) continue;
      if (taken[other]++ < kRejectedPerGesture) judge(motions[i], paths_.size(), false);
    }
    for (const Motion& splice : splices) judge(splice, paths_.size(), false);
    // With a single sample, only its varied copies tell how far a performance may stray, and
    // they stray less than people do.
    const double reach = own.size() > 1 ? kThresholdReach : kSingleSampleReach;
    thresholds_[g] = chooseThreshold(accepted, rejected, reach);
    shapeThresholds_[g] = chooseThreshold(acceptedShape, rejectedShape, reach);
  }
}

float ContinuousDetector::shapeDistance(const StrokeShape& query, int gesture, size_t skip) const {
  return nearestStoredShape(query.path, paths_.size(), [&](size_t i) -> const StrokeShape* {
    return paths_[i].gesture == gesture && i != skip ? &paths_[i].shape : nullptr;
  });
}

void ContinuousDetector::restart() {
  filter_.reset();
  headStarted_ = false;
  for (Scale& scale : scales_) {
    scale.cutter.reset();
    scale.lastStep = -std::numeric_limits<double>::infinity();
  }
  for (WarpingColumn& column : columns_) column.clear();
  history_.clear();
  motionStarted_ = false;
  pending_ = false;
  candidates_.assign(thresholds_.size(), Candidate());
  ready_.clear();
  reportedUntil_ = -std::numeric_limits<double>::infinity();
}

void ContinuousDetector::addPose(const StrokePoint& hand, const StrokePoint& head, const ModelParameters& parameters,
                                 double time) {
  // The head's pose steadied over a good part of a gesture: a sample is read against the head of
  // its start, and a head that follows the hand must not bend the motion.
  const Eigen::Vector3d headPosition(head.position.x, head.position.y, head.position.z);
  Eigen::Quaterniond headRotation = head.rotation.eigen();
  if (headRotation.norm() > 0.0) headRotation.normalize();
  if (!headStarted_) {
    headStarted_ = true;
    steadyHeadPosition_ = headPosition;
    steadyHeadRotation_ = headRotation;
  } else {
    const double weight = 1.0 - std::exp(-std::max(0.0, time - headTime_) / kHeadSeconds);
    steadyHeadPosition_ += weight * (headPosition - steadyHeadPosition_);
    if (steadyHeadRotation_.dot(headRotation) < 0.0) headRotation.coeffs() = -headRotation.coeffs();
    steadyHeadRotation_.coeffs() += weight * (headRotation.coeffs() - steadyHeadRotation_.coeffs());
    if (steadyHeadRotation_.norm() > 0.0) steadyHeadRotation_.normalize();
  }
  headTime_ = time;
  StrokePoint steadyHead(Unstamped{});
  steadyHead.position = Vector3(steadyHeadPosition_.x(), steadyHeadPosition_.y(), steadyHeadPosition_.z());
  steadyHead.rotation = Quaternion(steadyHeadRotation_);
  const Eigen::Matrix4d frame = inverseHeadFrame(steadyHead, parameters);
  const Eigen::Vector3d position(hand.position.x, hand.position.y, hand.position.z);
  addPoint(frame.topLeftCorner<3, 3>() * position + frame.topRightCorner<3, 1>(), time);
}

void ContinuousDetector::addPoint(const Eigen::Vector3d& position, double time) {
  // A jump over half the longest sample from one frame to the next is the tracker losing and
  // finding the hand: no motion goes through it, and no match spans it.
  if (motionStarted_ && (position - lastPosition_).norm() > kJumpShare * longestPath_) {
    filter_.reset();
    for (Scale& scale : scales_) scale.cutter.reset();
    for (WarpingColumn& column : columns_) column.clear();
  }
  lastPosition_ = position;
  motionStarted_ = true;
  const Eigen::Vector3d steady = filter_.add(position, time);
  history_.push_back({steady, time});
  // Trimmed in chunks, so that the front is not moved every frame.
  if (history_.size() > 64 && history_.front().time < time - 2.0 * historySeconds_) {
    const auto keep = std::lower_bound(history_.begin(), history_.end(), time - historySeconds_,
                                       [](const TimedPoint& point, double t) { return point.time < t; });
    history_.erase(history_.begin(), keep);
  }
  for (Scale& scale : scales_) {
    scale.cutter.add(steady, time, [&](const Eigen::Vector3d& direction, double begin, double end) {
      scale.lastStep = end;
      for (int index : scale.matchers) {
        double start = 0.0;
        const float cost = columns_[static_cast<size_t>(index)].advance(matchers_[static_cast<size_t>(index)].path,
                                                                       direction, begin, &start);
        consider(index, cost, start, end);
      }
    });
  }
}

void ContinuousDetector::consider(int index, float cost, double start, double end) {
  const Matcher& stored = matchers_[static_cast<size_t>(index)];
  const double threshold = thresholds_[static_cast<size_t>(stored.gesture)] * thresholdScale;
  if (!(cost < threshold) || start < reportedUntil_) return;
  const double duration = end - start;
  const double expected = stored.path.duration;
  if (expected > 0.0 && (duration * kSpeedTolerance < expected || duration > expected * kSpeedTolerance)) return;
  // A match that begins after every candidate has ended: they were a gesture of their own.
  if (pending_ && start >= clusterEnd_) confirmCandidates();
  Candidate& candidate = candidates_[static_cast<size_t>(stored.gesture)];
  const double ratio = cost / threshold;
  if (candidate.present && ratio >= candidate.ratio) return;
  candidate = {true, ratio, start, end, stored.tilt};
  const double stepSeconds = duration / stored.path.steps;
  clusterStepSeconds_ = pending_ ? std::max(clusterStepSeconds_, stepSeconds) : stepSeconds;
  clusterEnd_ = pending_ ? std::max(clusterEnd_, end) : end;
  pending_ = true;
}

namespace {

// True when a match from `start` to `end` holds one from `heldStart` to `heldEnd`: it covers it
// (give or take the confirmation time at either end) and lasts that much longer.
bool holds(double start, double end, double heldStart, double heldEnd) {
  return start <= heldStart + kConfirmSeconds && end >= heldEnd - kConfirmSeconds &&
         end - start > heldEnd - heldStart + kConfirmSeconds;
}

}  // namespace

void ContinuousDetector::confirmCandidates() {
  pending_ = false;
  std::vector<Eigen::Vector3d>& stretch = threadScratch<std::vector<Eigen::Vector3d>, struct ConfirmPlace>();
  StrokeShape& query = threadScratch<StrokeShape, struct ConfirmShapePlace>();
  StrokeShape& bestQuery = threadScratch<StrokeShape, struct ConfirmBestShapePlace>();
  StrokeShape& onwardQuery = threadScratch<StrokeShape, struct ConfirmOnwardShapePlace>();
  Detection best;
  double bestScore = std::numeric_limits<double>::infinity();
  double bestShapeRatio = std::numeric_limits<double>::infinity();
  // The shape distance of a stretch to gesture `h`, against that gesture's threshold.
  const auto shapeRatioTo = [&](const StrokeShape& shape, int h) {
    return shapeDistance(shape, h, paths_.size()) / (shapeThresholds_[static_cast<size_t>(h)] * thresholdScale);
  };
  for (size_t g = 0; g < candidates_.size(); ++g) {
    Candidate& candidate = candidates_[g];
    if (!candidate.present) continue;
    candidate.present = false;
    // Begun where the hand slowed, as the gesture's samples begin; or begun partway along a
    // straight stroke that began so; or where the hand slowed a little before.
    const double slownessAllowed = std::max(kStartSlowness, kStartSlownessFactor * startSlowness_[g]);
    if (startSlowness(history_, candidate.start, candidate.end) > slownessAllowed) {
      const double stroke = strokeStart(history_, candidate.start, candidate.end);
      if (stroke < candidate.start && !(startSlowness(history_, stroke, candidate.end) > slownessAllowed)) {
        candidate.start = stroke;
      } else {
        const double earliest = candidate.start - kReachBackShare * (candidate.end - candidate.start);
        const double slow = latestSlowBefore(history_, earliest, candidate.start, candidate.end, slownessAllowed);
        if (!(slow < candidate.start)) continue;
        candidate.start = slow;
      }
    }
    stretchOf(history_, candidate.start, candidate.end, candidate.tilt, stretch);
    if (stretch.size() < 2) continue;
    makePathShape(stretch, false, query);
    // Turning evenly or at corners, and closing or staying open, as the gesture's samples do.
    if (!sharpness_[g].holds(query.sharpness) || !closure_[g].holds(closureGap(stretch))) continue;
    // In one go.
    const double restAllowed =
        std::max({kRestSeconds, kRestShare * (candidate.end - candidate.start), kRestReach * samplesRest_[g]});
    if (longestRest(history_, candidate.start, candidate.end, true) > restAllowed) continue;
    double shapeRatio = shapeRatioTo(query, static_cast<int>(g));
    const double readOn = std::min(history_.back().time - candidate.end, kShapeReadOnSeconds);
    for (int k = 1; k <= kShapeReadOnSteps && !(shapeRatio < 1.0) && readOn > 0.0; ++k) {
      stretchOf(history_, candidate.start, candidate.end + readOn * k / kShapeReadOnSteps, candidate.tilt, stretch);
      makePathShape(stretch, false, onwardQuery);
      shapeRatio = std::min(shapeRatio, shapeRatioTo(onwardQuery, static_cast<int>(g)));
    }
    // The running match and the whole shape together must pass. Of the gestures that pass, one
    // whose match holds another's is the one performed (a gesture may begin or end with a shorter
    // one), unless its own stretch has more of the shorter one's shape than of its own (the
    // shorter gesture with some motion before or after it); else the one that passes best.
    const double score = std::sqrt(candidate.ratio * shapeRatio) / kPassing;
    if (!(score < 1.0) || !(shapeRatio < kShapeReach)) continue;
    const bool holdsBest = best.gesture >= 0 && holds(candidate.start, candidate.end, best.start, best.end) &&
                           !(shapeRatioTo(query, best.gesture) < shapeRatio);
    const bool heldByBest = best.gesture >= 0 && holds(best.start, best.end, candidate.start, candidate.end) &&
                            !(shapeRatioTo(bestQuery, static_cast<int>(g)) < bestShapeRatio);
    if (heldByBest || (!holdsBest && score >= bestScore)) continue;
    bestScore = score;
    bestShapeRatio = shapeRatio;
    bestQuery = query;
    best = {static_cast<int>(g), std::clamp(1.0 - 0.5 * score, 0.0, 1.0), candidate.start, candidate.end};
  }
  if (best.gesture < 0) return;
  ready_.push_back(best);
  reportedUntil_ = best.end;
  // Nothing that began inside the reported gesture may be reported again.
  for (WarpingColumn& column : columns_) column.forgetBefore(best.end);
}

bool ContinuousDetector::longerMatchUnderway(double now) const {
  double earliest = std::numeric_limits<double>::infinity();
  double bestRatio = std::numeric_limits<double>::infinity();
  for (const Candidate& candidate : candidates_) {
    if (!candidate.present) continue;
    earliest = std::min(earliest, candidate.start);
    bestRatio = std::min(bestRatio, candidate.ratio);
  }
  const double reach = std::min(kUnderwayReach, std::max(kUnderwayLeast, kUnderwayAgainstBest * bestRatio));
  const double longestSampleRest = samplesRest_.empty() ? 0.0 : *std::max_element(samplesRest_.begin(), samplesRest_.end());
  const double rested = restingFor(history_, kStoppedSpeed * SpanSpeeds(history_).mean(earliest, clusterEnd_),
                                   std::max(kStoppedSeconds, kRestReach * longestSampleRest) + kSpeedSpan);
  for (size_t i = 0; i < matchers_.size(); ++i) {
    const Matcher& stored = matchers_[i];
    // A gesture already among the candidates is not the longer one; and a match only goes on
    // while the motion does.
    if (candidates_[static_cast<size_t>(stored.gesture)].present) continue;
    if (rested > std::max(kStoppedSeconds, kRestReach * samplesRest_[static_cast<size_t>(stored.gesture)])) continue;
    const double stepSeconds = stored.path.duration / stored.path.steps;
    const double lastStep = scales_[static_cast<size_t>(stored.scale)].lastStep;
    if (now - lastStep > std::max(kConfirmSeconds, kUnderwaySteps * stepSeconds)) continue;
    const WarpingColumn& column = columns_[i];
    const double threshold = thresholds_[static_cast<size_t>(stored.gesture)] * thresholdScale;
    const int steps = stored.path.steps;
    for (int j = steps / 3; j + 1 < steps; ++j) {
      const double done = static_cast<double>(j + 1) / steps;
      // Where the motion so far went faster than the sample, its own pace says when it stopped.
      const double performedSeconds = (lastStep - column.start[j]) / (j + 1);
      if (now - lastStep > std::max(kConfirmSeconds, kUnderwaySteps * std::min(stepSeconds, performedSeconds))) {
        continue;
      }
      // Begun with the candidates (not long before them), on course so far, and not overdue.
      if (column.start[j] <= earliest + kConfirmSeconds &&
          column.start[j] >= earliest - stored.path.duration * done * 2.0 - kConfirmSeconds &&
          column.cost[j] < threshold * reach * (j + 1) &&
          now - clusterEnd_ < (1.0 - done) * stored.path.duration * 2.0 + kConfirmSeconds) {
        return true;
      }
    }
  }
  return false;
}

bool ContinuousDetector::poll(double now, Detection& detection) {
  const double wait = std::clamp(kReportAfterSteps * clusterStepSeconds_, kReportAfterSeconds, kConfirmSeconds);
  if (ready_.empty() && pending_ && now - clusterEnd_ >= wait && !longerMatchUnderway(now)) {
    confirmCandidates();
  }
  if (ready_.empty()) return false;
  detection = ready_.front();
  ready_.erase(ready_.begin());
  return true;
}

}  // namespace zando

// ---- The recogniser's detection operations ----

#include "features/feature_extraction.h"
#include "recognition/gesture_recognition.h"
#include "recognition/stroke_results.h"

namespace zando {

namespace {

// Seconds past which host times would overflow the clock in milliseconds.
constexpr double kLatestHostSeconds = 9.0e12;

}  // namespace

int GestureRecognition::setHostTime(double seconds) {
  if (!std::isfinite(seconds)) return ReturnCode_InvalidParameter;
  hostTimeMs = seconds < 0.0 ? -1 : std::llround(std::min(seconds, kLatestHostSeconds) * 1000.0);
  return ReturnCode_Success;
}

int GestureRecognition::setDetectionSensitivity(double sensitivity) {
  if (!(sensitivity >= 0.0 && sensitivity <= 1.0)) return ReturnCode_InvalidParameter;
  gestureModel.detectionSensitivity = sensitivity;
  return ReturnCode_Success;
}

double GestureRecognition::getDetectionSensitivity() { return gestureModel.detectionSensitivity; }

int GestureRecognition::contdDetect(const double headPosition[3], const double headRotation[4], int* gesture,
                                    double* confidence) {
  if (gesture == nullptr || confidence == nullptr) {
    if (!strokeStarted) return ReturnCode_NoStrokeStarted;
    if (isTraining()) return ReturnCode_TrainingInProgress;
    if (isLoading()) return ReturnCode_LoadingInProgress;
    return ReturnCode_InvalidParameter;
  }
  Detection found;
  const int result = detectPerformed(headPosition, headRotation, found);
  if (result == 1) {
    *gesture = found.gesture;
    *confidence = found.confidence;
  }
  return result;
}

int GestureRecognition::detectPerformed(const double headPosition[3], const double headRotation[4],
                                        Detection& found) {
  if (!strokeStarted) return ReturnCode_NoStrokeStarted;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (headPosition == nullptr || headRotation == nullptr) return ReturnCode_InvalidParameter;
  if (!allFinite(headPosition, 3) || !allFinite(headRotation, 4)) return ReturnCode_InvalidParameter;
  currentStroke.headLatest = StrokePoint(headPosition, headRotation);
  if (hostTimeMs >= 0) currentStroke.headLatest.timestamp = hostTimeMs;
  return detectInStroke(found);
}

bool GestureRecognition::gestureIsStill(int gesture) const { return detector != nullptr && detector->isStill(gesture); }

bool GestureRecognition::detectionPending() const { return detector != nullptr && detector->pending(); }

int GestureRecognition::contdDetectM(const double headMatrix[4][4], int* gesture, double* confidence) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  const PoseArrays head(headMatrix);
  return contdDetect(head.position, head.rotation, gesture, confidence);
}

int GestureRecognition::detectInStroke(Detection& found) {
  if (detector == nullptr) detector = std::make_unique<ContinuousDetector>();
  copyFrameToModel();
  const ModelParameters& parameters = gestureModel.parameters;
  if (!detector->prepare(gestureModel, parameters, detectionReferenceLength)) return ReturnCode_NoGestures;
  // Sensitivity 0 halves the learned thresholds, 1 doubles them.
  detector->thresholdScale = std::exp2((gestureModel.detectionSensitivity - 0.5) * 2.0);

  const std::vector<StrokePoint>& hand = currentStroke.handPoints;
  const std::vector<StrokePoint>& head = currentStroke.headPoints;
  if (detectorStroke != strokeSerial) {
    detectorStroke = strokeSerial;
    detector->restart();
    detectorFed = false;
  }
  // The points after the last one fed: found from the end, since the stroke may have been cut
  // at its front since then.
  size_t first = 0;
  if (detectorFed) {
    first = hand.size();
    while (first > 0 && hand[first - 1].timestamp >= lastDetectedPoint.timestamp) {
      const StrokePoint& point = hand[first - 1];
      if (point.timestamp == lastDetectedPoint.timestamp && point.position.x == lastDetectedPoint.position.x &&
          point.position.y == lastDetectedPoint.position.y && point.position.z == lastDetectedPoint.position.z) {
        break;
      }
      --first;
    }
  }
  for (size_t i = first; i < hand.size(); ++i) {
    if (!detector->hasMotion()) detectionEpochMs = hand[i].timestamp;
    const StrokePoint& headPose = head.empty() ? currentStroke.headStart : head[std::min(i, head.size() - 1)];
    detector->addPose(hand[i], headPose, parameters, static_cast<double>(hand[i].timestamp - detectionEpochMs) / 1000.0);
  }
  if (!hand.empty()) {
    lastDetectedPoint = hand.back();
    detectorFed = true;
  }

  const int64_t now = clockNow();
  // The detector keeps what it needs of the motion: the stroke only has to hold the window that
  // continuous identification reads, and is cut once it holds twice that.
  const int keepMs = std::max(contdIdentificationPeriod, 1000);
  if (!hand.empty() && hand.front().timestamp < now - 2 * static_cast<int64_t>(keepMs)) pruneStroke(-1, keepMs);

  if (!detector->hasMotion() || !detector->poll(static_cast<double>(now - detectionEpochMs) / 1000.0, found)) {
    return 0;
  }
  // Reported on the clock of the stroke's points, in seconds.
  const double epoch = static_cast<double>(detectionEpochMs) / 1000.0;
  found.start += epoch;
  found.end += epoch;
  return 1;
}

}  // namespace zando
