#include "features/feature_extraction.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/SVD>

#include "features/fft.h"
#include "features/waypoints.h"
#include "spatial/thread_scratch.h"

namespace zando {

namespace {

constexpr int kUpdateHeadPositionUseLatest = 0;
constexpr int kUpdateHeadPositionUseInitial = 1;

// The waypoints on their way to the vector, one row of doubles each: x, y, z, the rotation's x, y,
// z, w, and an unused value that makes a row exactly one row of the lane-wise transform, so that
// the seven channels are transformed where they stand.
constexpr int kRowWidth = kFftLanes;
static_assert(kRowWidth == 8, "a waypoint row is one row of the lane-wise transform");

class PointRows {
 public:
  explicit PointRows(double* data) : data_(data) {}
  double* operator[](int i) const { return data_ + static_cast<size_t>(i) * kRowWidth; }
  double* data() const { return data_; }

 private:
  double* data_;
};

// Scratch of one thread, kept between calls: a call on the hot path then allocates nothing but the
// vector it returns.
struct Scratch {
  Stroke resampled;
  std::vector<StrokePoint> hand;
  std::vector<StrokePoint> head;
  std::vector<double> points;
  std::vector<double> copy;
  std::vector<double> imag;
};

Scratch& scratch() {
  return threadScratch<Scratch, struct ExtractionPlace>();
}

void prepareRecords(std::vector<StrokePoint>& records, size_t count) {
  if (records.size() < count) records.resize(count, StrokePoint(Unstamped{}));
}

Eigen::Matrix4d poseMatrix(const Vector3& position, const Quaternion& rotation) {
  Eigen::Matrix4d m;
  matrixFromPose(position, rotation, m.data());
  return m;
}

// Every point relative to its head; returns the mean of the relative positions.
Eigen::Vector3d toHeadFrame(const StrokePoint* hand, const StrokePoint* head, int count,
                            const ModelParameters& parameters, PointRows out) {
  Eigen::Matrix4d g = Eigen::Matrix4d::Identity();
  if (parameters.updateHeadPositionPolicy == kUpdateHeadPositionUseInitial) g = inverseHeadFrame(head[0], parameters);
  // Four coordinates, so that the divisions by the count go in pairs.
  Eigen::Vector4d centroid = Eigen::Vector4d::Zero();
  for (int i = 0; i < count; ++i) {
    if (parameters.updateHeadPositionPolicy == kUpdateHeadPositionUseLatest) g = inverseHeadFrame(head[i], parameters);
    const Eigen::Matrix4d a = g * poseMatrix(hand[i].position, hand[i].rotation);
    Quaternion rotation;
    Vector3 position;
    quaternionFromMatrix(a.data(), rotation, position);
    double* v = out[i];
    v[0] = position.x;
    v[1] = position.y;
    v[2] = position.z;
    v[3] = rotation.x;
    v[4] = rotation.y;
    v[5] = rotation.z;
    v[6] = rotation.w;
    v[7] = 0.0;
    centroid += a.col(3) / count;
  }
  return centroid.head<3>();
}

// The radius about the centroid, measured before the points move to their origin (the first
// point, or the centroid). A radius of exactly 0 becomes 0.01, so a motionless stroke still
// divides safely.
double moveToOrigin(PointRows points, int count, const Eigen::Vector3d& centroid, bool fromFirst) {
  double r2 = 0.0;
  for (int i = 0; i < count; ++i) {
    const double dx = points[i][0] - centroid.x();
    const double dy = points[i][1] - centroid.y();
    const double dz = points[i][2] - centroid.z();
    r2 += (dx * dx + dy * dy + dz * dz) / count;
  }
  const double ox = fromFirst ? points[0][0] : centroid.x();
  const double oy = fromFirst ? points[0][1] : centroid.y();
  const double oz = fromFirst ? points[0][2] : centroid.z();
  for (int i = 0; i < count; ++i) {
    points[i][0] -= ox;
    points[i][1] -= oy;
    points[i][2] -= oz;
  }
  double scale = std::sqrt(r2);
  if (scale == 0.0) scale = 0.01;
  return scale;
}

void scalePositions(PointRows points, int count, double factor) {
  for (int i = 0; i < count; ++i) {
    points[i][0] *= factor;
    points[i][1] *= factor;
    points[i][2] *= factor;
  }
}

Eigen::Vector3d positionOf(const double* v) { return Eigen::Vector3d(v[0], v[1], v[2]); }

// Rows of the frame are the principal axes of the moment matrix about the origin, weighted toward
// the start of the stroke. A decomposition leaves each axis' sign open; S, from the first point
// toward the weighted mass, fixes it. The rows flip independently, so the frame may be a
// reflection, and is kept so.
Eigen::Matrix3d principalAxes(PointRows points, int count, double inv) {
  double totalWeight = 0.0;
  Eigen::Vector3d s = Eigen::Vector3d::Zero();
  Eigen::Matrix3d moment = Eigen::Matrix3d::Zero();
  for (int i = 0; i < count; ++i) {
    points[i][0] *= inv;
    points[i][1] *= inv;
    points[i][2] *= inv;
    const double w = static_cast<double>(count - i) / count;
    s += (positionOf(points[i]) - positionOf(points[0])) * w;
    const Eigen::Vector3d a = positionOf(points[i]) * w;
    moment += a * a.transpose();
    totalWeight += w;
  }
  s /= totalWeight;
  moment /= totalWeight;

  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(moment, Eigen::ComputeFullU);
  Eigen::Matrix3d frame = svd.matrixU().transpose();
  for (int k = 0; k < 3; ++k) {
    const double squared = frame.row(k).squaredNorm();
    if (squared > 0) frame.row(k) /= std::sqrt(squared);
    if (s.dot(frame.row(k)) < 0) frame.row(k) = -frame.row(k);
  }
  return frame;
}

// Rows from the weighted mean direction of the stroke and the weighted mean of what is left
// across it. The tanh terms are soft switches: a stroke whose mean offset is long against its
// radius keeps its own direction, a degenerate one slides continuously to the fixed axes, so that
// nearly equal strokes get nearly equal frames.
Eigen::Matrix3d weightedDirections(PointRows points, int count, double inv) {
  const double eps = 1e-05;
  scalePositions(points, count, inv);
  const Eigen::Vector3d first = count > 0 ? positionOf(points[0]) : Eigen::Vector3d::Zero();

  Eigen::Vector3d d0(1.0, 0.0, 0.0);
  {
    Eigen::Vector3d m = Eigen::Vector3d::Zero();
    double total = 0.0;
    for (int i = 1; i < count; ++i) {
      const int k = count - i;
      const Eigen::Vector3d p = positionOf(points[i]);
      const double u = k * (p - first).norm();
      m += p * u;
      total += u;
    }
    if (count >= 2 && total != 0.0) {
      m = m / total - first;
      const double len = std::max(eps, m.norm());
      m = m / len;
      const double t = 0.5 + std::tanh(len * 40 - 4) * 0.5;
      d0 = m * t + Eigen::Vector3d(1.0, 0.0, 0.0) * (1 - t);
      d0 = d0 / std::max(eps, d0.norm());
    }
  }

  Eigen::Vector3d d1(0.0, 1.0, 0.0);
  {
    Eigen::Vector3d m = Eigen::Vector3d::Zero();
    double total = 0.0;
    for (int i = 1; i < count; ++i) {
      const int k = count - i;
      Eigen::Vector3d v = positionOf(points[i]) - first;
      v = v - d0 * v.dot(d0);
      const double u = k * v.norm();
      m += v * u;
      total += u;
    }
    if (count >= 2 && total != 0.0) {
      m = m / total;
      const double len = std::max(eps, m.norm());
      m = m / len;
      const double t = 0.5 + std::tanh(len * 100 - 3) * 0.5;
      if (t >= 0.99) {
        d1 = m;
      } else {
        d1 = m * t + Eigen::Vector3d(0.0, 1.0, 0.0) * (1 - t);
        d1 = d1 - d0 * d1.dot(d0);
        d1 = d1 / std::max(eps, d1.norm());
      }
    }
  }

  Eigen::Matrix3d frame;
  frame.row(0) = d0;
  frame.row(1) = d1;
  frame.row(2) = d0.cross(d1);
  return frame;
}

// Centroid, radius, frame and rotation into the frame: the steps both paths share once the points
// are relative to the head. Returns the radius.
double normalise(PointRows points, int count, const Eigen::Vector3d& centroid, bool fromFirst,
                 const ModelParameters& parameters, Eigen::Matrix3d& frame) {
  const double scale = moveToOrigin(points, count, centroid, fromFirst);
  const double inv = 1.0 / scale;
  frame = parameters.featureFlagA != 0 ? principalAxes(points, count, inv) : weightedDirections(points, count, inv);
  if (parameters.featureFlagC) {
    for (int i = 0; i < count; ++i) {
      const Eigen::Vector3d p = frame * positionOf(points[i]);
      points[i][0] = p.x();
      points[i][1] = p.y();
      points[i][2] = p.z();
    }
  }
  return scale;
}

// A window cut from a running motion has no meaningful first point: the ring of waypoints is read
// backward from the one with the highest score, so that the start does not depend on where the
// window began. Centroid, radius and frame are already fixed and stay.
void reorderContinuous(PointRows points, int count, std::vector<double>& copy) {
  copy.resize(static_cast<size_t>(count) * kRowWidth);
  const PointRows copies(copy.data());
  double best = std::numeric_limits<double>::lowest();
  int start = 0;
  for (int i = 0; i < count; ++i) {
    const double* v = points[i];
    const double score = v[6] * v[6] - v[0] - v[1] - v[2];
    if (score > best) {
      best = score;
      start = i;
    }
    std::copy(v, v + kRowWidth, copies[i]);
  }
  const auto take = [&](int to, int from) { std::copy(copies[from], copies[from] + kRowWidth, points[to]); };
  for (int i = 0; i <= start; ++i) take(i, start - i);
  for (int i = start + 1; i < count; ++i) take(i, count - 1 - (i - start - 1));
}

Quaternion frameQuaternion(const Eigen::Matrix3d& frame) {
  // The rotation whose columns are the axes; a reflection is converted as it stands.
  const Eigen::Matrix3d columns = frame.transpose();
  return Quaternion(Eigen::Quaterniond(columns));
}

// Waypoint blocks, then the frame's orientation, the scaled centroid and the scaled radius. The
// vector arrives zeroed: waypointFeatureMode 4 has no writer of its own, places the positions with
// a stride of 3 and leaves the rest of its wider blocks at zero.
void writeVector(PointRows points, int n, const Eigen::Matrix3d& frame, const Eigen::Vector3d& centroid,
                 double scale, const ModelParameters& parameters, double* out) {
  const int mode = parameters.waypointFeatureMode;
  const int stride = (mode == 1 || mode == 2) ? waypointFeatureWidth(mode) : 3;
  for (int i = 0; i < n; ++i) {
    const double* v = points[i];
    double* block = out + i * stride;
    block[0] = v[0];
    block[1] = v[1];
    block[2] = v[2];
    if (mode == 1) {
      eulerFromQuaternion(Quaternion(v[3], v[4], v[5], v[6]), parameters.rotationOrder, block + 3);
    } else if (mode == 2) {
      block[3] = v[3];
      block[4] = v[4];
      block[5] = v[5];
      block[6] = v[6];
    }
  }

  double* header = out + n * waypointFeatureWidth(mode);
  switch (parameters.headerFeatureMode) {
    case 1:
      eulerFromQuaternion(frameQuaternion(frame), parameters.rotationOrder, header);
      header += 3;
      break;
    case 2:
      frameQuaternion(frame).copyTo(header);
      header += 4;
      break;
    case 4:
      for (int k = 0; k < 3; ++k) header[k] = frame(0, k);
      for (int k = 0; k < 3; ++k) header[3 + k] = frame(1, k);
      header += 6;
      break;
    default:
      break;
  }
  header[0] = centroid.x() * parameters.featureScaleA;
  header[1] = centroid.y() * parameters.featureScaleA;
  header[2] = centroid.z() * parameters.featureScaleA;
  header[3] = scale * parameters.featureScaleB;
}

// Where, how large and how turned the stroke was, carried back to the world by a head pose that is
// not filtered: the host places its effects in the world, not in the reduced frame.
void writeOutputs(const StrokePoint& reference, const Eigen::Vector3d& centroid, double radius,
                  const Eigen::Matrix3d& frame, double pos[4], double* scale, double dir0[4], double dir1[4],
                  double dir2[4]) {
  const Eigen::Matrix4d m = poseMatrix(reference.position, reference.rotation);
  if (pos != nullptr) {
    const Eigen::Vector4d world = m * Eigen::Vector4d(centroid.x(), centroid.y(), centroid.z(), 1.0);
    pos[0] = world.x();
    pos[1] = world.y();
    pos[2] = world.z();
    pos[3] = 1.0;
  }
  if (scale != nullptr) *scale = radius;
  double* directions[3] = {dir0, dir1, dir2};
  for (int k = 0; k < 3; ++k) {
    if (directions[k] == nullptr) continue;
    Eigen::Vector3d d = m.topLeftCorner<3, 3>() * frame.row(k).transpose();
    const double squared = d.squaredNorm();
    if (squared > 0) d /= std::sqrt(squared);
    directions[k][0] = d.x();
    directions[k][1] = d.y();
    directions[k][2] = d.z();
    directions[k][3] = 1.0;
  }
}

void extractMain(const Stroke& stroke, const ModelParameters& parameters, std::vector<double>& out, double pos[4],
                 double* scale, double dir0[4], double dir1[4], double dir2[4]) {
  const int n = parameters.waypointCount;
  Scratch& s = scratch();
  const Stroke* source = &stroke;
  if (static_cast<int>(stroke.handPoints.size()) < n) {
    resampleToWaypointCount(stroke, n, s.resampled);
    source = &s.resampled;
  }
  prepareRecords(s.hand, n);
  prepareRecords(s.head, n);
  selectWaypoints(*source, parameters.featureSelector, n, s.hand.data(), s.head.data());

  s.points.resize(static_cast<size_t>(n) * kRowWidth);
  const PointRows points(s.points.data());
  const Eigen::Vector3d centroid = toHeadFrame(s.hand.data(), s.head.data(), n, parameters, points);
  Eigen::Matrix3d frame;
  const double radius = normalise(points, n, centroid, parameters.featureFlagB != 0, parameters, frame);
  if (stroke.sampleType == 1) reorderContinuous(points, n, s.copy);
  writeVector(points, n, frame, centroid, radius, parameters, out.data());

  const StrokePoint& reference = stroke.headPoints.empty() ? stroke.headStart : stroke.headPoints.back();
  writeOutputs(reference, centroid, radius, frame, pos, scale, dir0, dir1, dir2);
}

void interpolatePose(const StrokePoint& a, const StrokePoint& b, double t, StrokePoint& out) {
  out.position = Vector3((1.0 - t) * a.position.x + t * b.position.x, (1.0 - t) * a.position.y + t * b.position.y,
                         (1.0 - t) * a.position.z + t * b.position.z);
  out.rotation = slerpShortest(a.rotation, b.rotation, t);
}

// The stroke spread over a power-of-two number of slots for the transform. Placed points are
// joined by interpolation, but the gap before the last slot keeps default records (origin,
// identity), hand and head alike; trained models have learned with that gap, so it stays. Head
// records past the first are read only when every slot has its own head pose, and are only made
// then (everyHead).
int spreadOverSlots(const Stroke& stroke, bool everyHead, Scratch& s) {
  const std::vector<StrokePoint>& hand = stroke.handPoints;
  const std::vector<StrokePoint>& head = stroke.headPoints;
  const int count = static_cast<int>(hand.size());
  int slots = 2;
  while (slots < count) slots *= 2;
  while (slots % 32 != 0) slots *= 2;

  prepareRecords(s.hand, slots);
  prepareRecords(s.head, slots);
  StrokePoint* slotHand = s.hand.data();
  StrokePoint* slotHead = s.head.data();
  slotHand[0] = hand[0];
  slotHead[0] = head[0];
  int previous = 0;
  for (int j = 1; j <= count - 2; ++j) {
    const int slot = std::min(static_cast<int>(std::round(static_cast<double>(j) * slots / (count - 1))), slots - 1);
    const int gap = slot - previous;
    for (int k = 1; k < gap; ++k) {
      const double t = static_cast<double>(k) / gap;
      interpolatePose(hand[j - 1], hand[j], t, slotHand[previous + k]);
      if (everyHead) interpolatePose(head[j - 1], head[j], t, slotHead[previous + k]);
    }
    slotHand[slot] = hand[j];
    if (everyHead) slotHead[slot] = head[j];
    previous = slot;
  }
  const StrokePoint blank{Unstamped{}};
  for (int k = previous + 1; k < slots - 1; ++k) {
    slotHand[k] = blank;
    if (everyHead) slotHead[k] = blank;
  }
  slotHand[slots - 1] = hand[count - 1];
  if (everyHead) slotHead[slots - 1] = head[count - 1];
  return slots;
}

void extractFrequency(const Stroke& stroke, const ModelParameters& parameters, std::vector<double>& out,
                      double pos[4], double* scale, double dir0[4], double dir1[4], double dir2[4]) {
  // The frequency path reads head records slot by slot and has no fallback for a missing one.
  if (stroke.headPoints.size() != stroke.handPoints.size()) return;
  const int n = parameters.waypointCount;
  Scratch& s = scratch();
  const bool everyHead = parameters.updateHeadPositionPolicy == kUpdateHeadPositionUseLatest;
  const int slots = spreadOverSlots(stroke, everyHead, s);

  s.points.resize(static_cast<size_t>(std::max(slots, n)) * kRowWidth);
  const PointRows points(s.points.data());
  const Eigen::Vector3d centroid = toHeadFrame(s.hand.data(), s.head.data(), slots, parameters, points);
  Eigen::Matrix3d frame;
  const double radius = normalise(points, slots, centroid, false, parameters, frame);

  s.imag.assign(static_cast<size_t>(slots) * kFftLanes, 0.0);
  fftLanes(points.data(), s.imag.data(), slots, (n + 1) / 2);

  // Waypoint k holds, for every channel, the real part of coefficient k / 2 when k is even and the
  // imaginary part when k is odd, divided by the slot count; coefficients run out at the slot count.
  // Written back to front, so that no coefficient is overwritten before it is read.
  const double* imag = s.imag.data();
  for (int k = n - 1; k >= 0; --k) {
    const int coefficient = k / 2;
    double* v = points[k];
    for (int channel = 0; channel < 7; ++channel) {
      double value = 0.0;
      if (coefficient < slots) {
        const size_t at = static_cast<size_t>(coefficient) * kFftLanes + channel;
        value = (k % 2 == 0 ? points[coefficient][channel] : imag[at]) / slots;
      }
      v[channel] = value;
    }
  }
  writeVector(points, n, frame, centroid, radius, parameters, out.data());
  writeOutputs(stroke.headStart, centroid, radius, frame, pos, scale, dir0, dir1, dir2);
}

}  // namespace

// The position is never filtered.
Eigen::Matrix4d inverseHeadFrame(const StrokePoint& head, const ModelParameters& parameters) {
  const Quaternion rotation = reduceHeadRotation(head.rotation, parameters.rotationFrameX, parameters.rotationFrameY,
                                                 parameters.rotationFrameZ, parameters.rotationOrder);
  return poseMatrix(head.position, rotation).inverse();
}

std::vector<double> extractFeatures(const Stroke& stroke, const ModelParameters& parameters, double pos[4],
                                    double* scale, double dir0[4], double dir1[4], double dir2[4]) {
  std::vector<double> features(static_cast<size_t>(std::max(featureCount(parameters), 0)), 0.0);
  // Too short a stroke, or no waypoints at all: zeros, and the outputs stay as they were.
  if (stroke.handPoints.size() < 2 || parameters.waypointCount < 1) return features;
  if (parameters.featureSelector == 3) {
    extractFrequency(stroke, parameters, features, pos, scale, dir0, dir1, dir2);
  } else {
    extractMain(stroke, parameters, features, pos, scale, dir0, dir1, dir2);
  }
  return features;
}

}  // namespace zando
