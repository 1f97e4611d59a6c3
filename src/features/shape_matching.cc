#include "features/shape_matching.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <vector>

#include "features/feature_extraction.h"
#include "spatial/float_text.h"
#include "spatial/thread_scratch.h"

namespace zando {

void headSettingsOf(const ModelParameters& parameters, int settings[5]) {
  settings[0] = parameters.updateHeadPositionPolicy;
  settings[1] = parameters.rotationFrameX;
  settings[2] = parameters.rotationFrameY;
  settings[3] = parameters.rotationFrameZ;
  settings[4] = parameters.rotationOrder;
}

namespace {

constexpr int kUseInitialHead = 1;

// A value as a saved file keeps it (ten significant digits) and a load gives it back.
double asStored(double value) {
  if (!std::isfinite(value)) return value;
  char text[48];
  char* const written = writeScientific(text, text + sizeof(text), value, 9);
  double stored = 0.0;
  const auto read = readFloat(text, written, stored);
  return read.ec == std::errc() ? stored : 0.0;
}

StrokePoint poseAsStored(const StrokePoint& point) {
  StrokePoint stored(Unstamped{});
  stored.position = Vector3(asStored(point.position.x), asStored(point.position.y), asStored(point.position.z));
  stored.rotation = Quaternion(asStored(point.rotation.x), asStored(point.rotation.y), asStored(point.rotation.z),
                               asStored(point.rotation.w));
  return stored;
}

}  // namespace

void headRelativePath(const Stroke& stroke, const ModelParameters& parameters, bool stored,
                      std::vector<Eigen::Vector3d>& path) {
  const std::vector<StrokePoint>& hand = stroke.handPoints;
  const std::vector<StrokePoint>& head = stroke.headPoints;
  const auto headOf = [&](size_t i) -> const StrokePoint& {
    return head.empty() ? stroke.headStart : head[std::min(i, head.size() - 1)];
  };
  const auto exact = [stored](const StrokePoint& point) { return stored ? poseAsStored(point) : point; };
  const bool everyHead = parameters.updateHeadPositionPolicy != kUseInitialHead;
  Eigen::Matrix4d frame = inverseHeadFrame(exact(headOf(0)), parameters);
  path.resize(hand.size());
  for (size_t i = 0; i < hand.size(); ++i) {
    if (everyHead && i > 0) frame = inverseHeadFrame(exact(headOf(i)), parameters);
    const Vector3& p = stored ? poseAsStored(hand[i]).position : hand[i].position;
    path[i] = frame.topLeftCorner<3, 3>() * Eigen::Vector3d(p.x, p.y, p.z) + frame.topRightCorner<3, 1>();
  }
}

namespace {

// Points evenly spaced along the path, so that neither the speed of the hand nor its pauses
// change the shape.
void resampleByLength(const std::vector<Eigen::Vector3d>& path, std::array<Eigen::Vector3d, kShapePoints>& out) {
  double length = 0.0;
  for (size_t i = 1; i < path.size(); ++i) length += (path[i] - path[i - 1]).norm();
  const double step = length / (kShapePoints - 1);
  out[0] = path.front();
  int placed = 1;
  double walked = 0.0;
  Eigen::Vector3d previous = path.front();
  for (size_t i = 1; i < path.size() && placed < kShapePoints && step > 0.0;) {
    const double gap = (path[i] - previous).norm();
    if (gap > 0.0 && walked + gap >= step) {
      previous += (step - walked) / gap * (path[i] - previous);
      out[static_cast<size_t>(placed++)] = previous;
      walked = 0.0;
    } else {
      walked += gap;
      previous = path[i];
      ++i;
    }
  }
  // Rounding may leave the last places short of the end.
  for (; placed < kShapePoints; ++placed) out[static_cast<size_t>(placed)] = path.back();
}

// Points either side that a point of the path is averaged with, as a share of the path's points.
constexpr size_t kSmoothingShare = 30;

// The path averaged over a few neighbours of each point (fewer near the ends, which stay where they
// are): a tracker's jitter lengthens a path and bends its evenly spaced points, and the average
// takes it out while keeping the shape. Paths too short to smooth are returned as they are.
const std::vector<Eigen::Vector3d>& smoothed(const std::vector<Eigen::Vector3d>& path, std::vector<Eigen::Vector3d>& out) {
  const size_t reach = path.size() / kSmoothingShare;
  if (reach == 0) return path;
  out.resize(path.size());
  for (size_t i = 0; i < path.size(); ++i) {
    const size_t near = std::min({reach, i, path.size() - 1 - i});
    Eigen::Vector3d sum = Eigen::Vector3d::Zero();
    for (size_t k = i - near; k <= i + near; ++k) sum += path[k];
    out[i] = sum / static_cast<double>(2 * near + 1);
  }
  return out;
}

// A path counts as closed when its ends are closer than this share of its mean radius.
constexpr float kClosedGap = 0.8f;

// The unit direction from each point to the next, zero where two points coincide and after the
// last point.
void setDirections(WarpingQuery& out) {
  for (int i = 0; i < kShapePoints; ++i) out.dx[i] = out.dy[i] = out.dz[i] = 0.0f;
  for (int i = 0; i + 1 < kShapePoints; ++i) {
    const Eigen::Vector3d step(static_cast<double>(out.x[i + 1]) - out.x[i], static_cast<double>(out.y[i + 1]) - out.y[i],
                               static_cast<double>(out.z[i + 1]) - out.z[i]);
    const double length = step.norm();
    if (length <= 0.0) continue;
    out.dx[i] = static_cast<float>(step.x() / length);
    out.dy[i] = static_cast<float>(step.y() / length);
    out.dz[i] = static_cast<float>(step.z() / length);
  }
}

// The box of the values a band reaches around each place, over the first `count` places (the
// places after them get an empty box at zero).
void envelope(const float* values, int count, float* low, float* high) {
  for (int i = 0; i < kShapePoints; ++i) {
    low[i] = high[i] = 0.0f;
    if (i >= count) continue;
    const int from = std::max(0, i - kShapeBand);
    const int to = std::min(count - 1, i + kShapeBand);
    low[i] = *std::min_element(values + from, values + to + 1);
    high[i] = *std::max_element(values + from, values + to + 1);
  }
}

}  // namespace

void makeStrokeShape(const Stroke& stroke, const ModelParameters& parameters, bool stored, StrokeShape& shape) {
  headSettingsOf(parameters, shape.headSettings);
  std::vector<Eigen::Vector3d>& path = threadScratch<std::vector<Eigen::Vector3d>, struct PathPlace>();
  if (stroke.handPoints.size() < 2) {
    path.assign(1, Eigen::Vector3d::Zero());
  } else {
    headRelativePath(stroke, parameters, stored, path);
  }
  makePathShape(path, stored, shape);
}

void makePathShape(const std::vector<Eigen::Vector3d>& path, bool stored, StrokeShape& shape) {
  std::array<Eigen::Vector3d, kShapePoints> points;
  resampleByLength(smoothed(path, threadScratch<std::vector<Eigen::Vector3d>, struct SmoothedPlace>()), points);

  // Centred on the mean point and scaled to a unit mean radius; the orientation is kept, since it
  // tells apart shapes that are turned copies of one another.
  Eigen::Vector3d centre = Eigen::Vector3d::Zero();
  for (const Eigen::Vector3d& p : points) centre += p;
  centre /= kShapePoints;
  double radius = 0.0;
  for (const Eigen::Vector3d& p : points) radius += (p - centre).squaredNorm();
  radius = std::sqrt(radius / kShapePoints);
  const double scale = radius > 0.0 ? 1.0 / radius : 1.0;
  WarpingQuery& out = shape.path;
  for (int i = 0; i < kShapePoints; ++i) {
    const Eigen::Vector3d p = (points[static_cast<size_t>(i)] - centre) * scale;
    out.x[i] = static_cast<float>(p.x());
    out.y[i] = static_cast<float>(p.y());
    out.z[i] = static_cast<float>(p.z());
    out.dx[i] = out.dy[i] = out.dz[i] = 0.0f;
  }
  for (int i = 0; i + 1 < kShapePoints; ++i) {
    const Eigen::Vector3d step = points[static_cast<size_t>(i) + 1] - points[static_cast<size_t>(i)];
    const double length = step.norm();
    if (length <= 0.0) continue;
    out.dx[i] = static_cast<float>(step.x() / length);
    out.dy[i] = static_cast<float>(step.y() / length);
    out.dz[i] = static_cast<float>(step.z() / length);
  }
  const float gapX = out.x[kShapePoints - 1] - out.x[0], gapY = out.y[kShapePoints - 1] - out.y[0],
              gapZ = out.z[kShapePoints - 1] - out.z[0];
  shape.closed = radius > 0.0 && std::sqrt(gapX * gapX + gapY * gapY + gapZ * gapZ) < kClosedGap;
  shape.sharpness = turnSharpness(out);
  if (!stored) return;
  WarpingEnvelope& box = shape.envelope;
  envelope(out.x, kShapePoints, box.lowX, box.highX);
  envelope(out.y, kShapePoints, box.lowY, box.highY);
  envelope(out.z, kShapePoints, box.lowZ, box.highZ);
  envelope(out.dx, kShapePoints - 1, box.lowDx, box.highDx);
  envelope(out.dy, kShapePoints - 1, box.lowDy, box.highDy);
  envelope(out.dz, kShapePoints - 1, box.lowDz, box.highDz);
}

double turnSharpness(const WarpingQuery& path) {
  constexpr double kQuarterTurn = 1.5707963267948966;
  std::array<double, kShapePoints> turns{};
  int count = 0;
  double total = 0.0;
  // Each place's turn between the chords to the places two either side: a fast motion's few
  // points make its path a polygon at a finer scale, which would turn at the points only.
  for (int i = 2; i + 2 < kShapePoints; ++i) {
    const Eigen::Vector3f in(path.x[i] - path.x[i - 2], path.y[i] - path.y[i - 2], path.z[i] - path.z[i - 2]);
    const Eigen::Vector3f out(path.x[i + 2] - path.x[i], path.y[i + 2] - path.y[i], path.z[i + 2] - path.z[i]);
    if (in.squaredNorm() == 0.0f || out.squaredNorm() == 0.0f) continue;
    const double turn = std::atan2(static_cast<double>(in.cross(out).norm()), static_cast<double>(in.dot(out)));
    turns[static_cast<size_t>(count++)] = turn;
    total += turn;
  }
  // Hardly any turning: nothing to tell.
  if (!(total > kQuarterTurn) || count < 4) return std::numeric_limits<double>::quiet_NaN();
  const auto quarter = turns.begin() + count / 4;
  std::nth_element(turns.begin(), quarter, turns.begin() + count, std::greater<double>());
  return 4.0 * std::accumulate(turns.begin(), quarter, 0.0) / total;
}

void startAt(const WarpingQuery& path, int first, WarpingQuery& out) {
  // The last point is about the first: the loop is the points before it, and the new path ends
  // where it begins, as the old one did.
  constexpr int kLoop = kShapePoints - 1;
  for (int i = 0; i < kShapePoints; ++i) {
    const int from = (first + i) % kLoop;
    out.x[i] = path.x[from];
    out.y[i] = path.y[from];
    out.z[i] = path.z[from];
  }
  setDirections(out);
}

void reversedPath(const WarpingQuery& path, WarpingQuery& out) {
  for (int i = 0; i < kShapePoints; ++i) {
    out.x[i] = path.x[kShapePoints - 1 - i];
    out.y[i] = path.y[kShapePoints - 1 - i];
    out.z[i] = path.z[kShapePoints - 1 - i];
  }
  setDirections(out);
}

const StrokeShape& storedShape(const Stroke& sample, const ModelParameters& parameters) {
  int settings[5];
  headSettingsOf(parameters, settings);
  if (sample.shape == nullptr || !std::equal(settings, settings + 5, sample.shape->headSettings)) {
    auto shape = std::make_shared<StrokeShape>();
    makeStrokeShape(sample, parameters, true, *shape);
    sample.shape = std::move(shape);
  }
  return *sample.shape;
}

}  // namespace zando
