#include "features/shape_matching.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include "features/feature_extraction.h"

namespace zando {

namespace {

constexpr int kUseInitialHead = 1;

void headSettingsOf(const ModelParameters& parameters, int settings[5]) {
  settings[0] = parameters.updateHeadPositionPolicy;
  settings[1] = parameters.rotationFrameX;
  settings[2] = parameters.rotationFrameY;
  settings[3] = parameters.rotationFrameZ;
  settings[4] = parameters.rotationOrder;
}

// A value as a saved file keeps it (ten significant digits) and a load gives it back.
double asStored(double value) {
  if (!std::isfinite(value)) return value;
  char text[48];
  const auto written = std::to_chars(text, text + sizeof(text), value, std::chars_format::scientific, 9);
  double stored = 0.0;
  const auto read = std::from_chars(text, written.ptr, stored, std::chars_format::general);
  return read.ec == std::errc() ? stored : 0.0;
}

StrokePoint poseAsStored(const StrokePoint& point) {
  StrokePoint stored(Unstamped{});
  stored.position = Vector3(asStored(point.position.x), asStored(point.position.y), asStored(point.position.z));
  stored.rotation = Quaternion(asStored(point.rotation.x), asStored(point.rotation.y), asStored(point.rotation.z),
                               asStored(point.rotation.w));
  return stored;
}

// Hand positions in the head's frame: the head of the first point for the initial policy, each
// point's own head otherwise. Heads are paired with points as a saved file pairs them (a stroke
// whose heads ran out repeats the last, one without any uses its start), and a stored sample is
// read at the precision of a file: a set identifies alike before saving and after loading.
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

// The box of the values a band reaches around each place, over the first `count` places.
void envelope(const ShapeRow& values, int count, ShapeRow& low, ShapeRow& high) {
  low.setZero();
  high.setZero();
  for (int i = 0; i < count; ++i) {
    const int from = std::max(0, i - kShapeBand);
    const int to = std::min(count - 1, i + kShapeBand);
    low(i) = values.segment(from, to - from + 1).minCoeff();
    high(i) = values.segment(from, to - from + 1).maxCoeff();
  }
}

// Distances of the query's values to the boxes, place by place.
ShapeRow distancesToBoxes(const ShapeRow& x, const ShapeRow& y, const ShapeRow& z, const ShapeRow& lowX,
                          const ShapeRow& lowY, const ShapeRow& lowZ, const ShapeRow& highX, const ShapeRow& highY,
                          const ShapeRow& highZ) {
  const ShapeRow ex = (lowX - x).max(x - highX).max(0.0f);
  const ShapeRow ey = (lowY - y).max(y - highY).max(0.0f);
  const ShapeRow ez = (lowZ - z).max(z - highZ).max(0.0f);
  return (ex * ex + ey * ey + ez * ez).sqrt();
}

}  // namespace

void makeStrokeShape(const Stroke& stroke, const ModelParameters& parameters, bool stored, StrokeShape& shape) {
  headSettingsOf(parameters, shape.headSettings);
  thread_local std::vector<Eigen::Vector3d> path;
  if (stroke.handPoints.size() < 2) {
    path.assign(1, Eigen::Vector3d::Zero());
  } else {
    headRelativePath(stroke, parameters, stored, path);
  }
  std::array<Eigen::Vector3d, kShapePoints> points;
  resampleByLength(path, points);

  // Centred on the mean point and scaled to a unit mean radius; the orientation is kept, since it
  // tells apart shapes that are turned copies of one another.
  Eigen::Vector3d centre = Eigen::Vector3d::Zero();
  for (const Eigen::Vector3d& p : points) centre += p;
  centre /= kShapePoints;
  double radius = 0.0;
  for (const Eigen::Vector3d& p : points) radius += (p - centre).squaredNorm();
  radius = std::sqrt(radius / kShapePoints);
  const double scale = radius > 0.0 ? 1.0 / radius : 1.0;
  for (int i = 0; i < kShapePoints; ++i) {
    const Eigen::Vector3d p = (points[static_cast<size_t>(i)] - centre) * scale;
    shape.x(i) = static_cast<float>(p.x());
    shape.y(i) = static_cast<float>(p.y());
    shape.z(i) = static_cast<float>(p.z());
  }
  shape.dx.setZero();
  shape.dy.setZero();
  shape.dz.setZero();
  for (int i = 0; i + 1 < kShapePoints; ++i) {
    const Eigen::Vector3d step = points[static_cast<size_t>(i) + 1] - points[static_cast<size_t>(i)];
    const double length = step.norm();
    if (length <= 0.0) continue;
    shape.dx(i) = static_cast<float>(step.x() / length);
    shape.dy(i) = static_cast<float>(step.y() / length);
    shape.dz(i) = static_cast<float>(step.z() / length);
  }
  envelope(shape.x, kShapePoints, shape.lowX, shape.highX);
  envelope(shape.y, kShapePoints, shape.lowY, shape.highY);
  envelope(shape.z, kShapePoints, shape.lowZ, shape.highZ);
  envelope(shape.dx, kShapePoints - 1, shape.lowDx, shape.highDx);
  envelope(shape.dy, kShapePoints - 1, shape.lowDy, shape.highDy);
  envelope(shape.dz, kShapePoints - 1, shape.lowDz, shape.highDz);
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

namespace {

// Every point of `path` is matched at least once, to a point of the band around its own place on
// `other`; its cost is at least the distance to the box of those points. Only places whose band
// stops short of the last point, which has no direction, count their direction. Place by place.
ShapeRow placeBounds(const StrokeShape& path, const StrokeShape& other) {
  constexpr int kDirected = kShapePoints - 1 - kShapeBand;
  ShapeRow bounds = distancesToBoxes(path.x, path.y, path.z, other.lowX, other.lowY, other.lowZ, other.highX,
                                     other.highY, other.highZ);
  const ShapeRow directions = distancesToBoxes(path.dx, path.dy, path.dz, other.lowDx, other.lowDy, other.lowDz,
                                               other.highDx, other.highDy, other.highDz);
  bounds.head<kDirected>() += static_cast<float>(kShapeDirectionWeight) * directions.head<kDirected>();
  return bounds;
}

float boundFrom(const StrokeShape& path, const StrokeShape& other) { return placeBounds(path, other).sum(); }

}  // namespace

// The matching covers both paths, so the bound holds from either side; the larger one is kept.
double shapeLowerBound(const StrokeShape& query, const StrokeShape& stored) {
  return static_cast<double>(std::max(boundFrom(query, stored), boundFrom(stored, query)));
}

double shapeDistance(const StrokeShape& query, const StrokeShape& stored, double abandonAbove) {
  constexpr float kUnreached = std::numeric_limits<float>::infinity();
  constexpr int kWidth = kShapePoints + 1;
  constexpr int kBandWidth = 2 * kShapeBand + 1;
  const float weight = static_cast<float>(kShapeDirectionWeight);
  const float limit = static_cast<float>(std::min(abandonAbove, static_cast<double>(kUnreached)));
  // Two rows of the cumulative table, shifted by one: column 0 stands before the first point.
  // Cells outside the band stay unreached.
  std::array<float, kWidth> above;
  std::array<float, kWidth> row;
  above.fill(kUnreached);
  above[0] = 0.0f;
  // What the rows after each row must add at least: with it, a matching that cannot end below the
  // bound is given up rows before its own sum gets there.
  const ShapeRow bounds = placeBounds(query, stored);
  std::array<float, kWidth> rest;
  rest[kShapePoints] = 0.0f;
  for (int i = kShapePoints - 1; i >= 0; --i) rest[static_cast<size_t>(i)] = rest[static_cast<size_t>(i) + 1] + bounds(i);
  Eigen::Array<float, kBandWidth, 1> cost;
  for (int i = 0; i < kShapePoints; ++i) {
    const int from = std::max(0, i - kShapeBand);
    const int to = std::min(kShapePoints - 1, i + kShapeBand);
    const int count = to - from + 1;
    // The pair costs of the row at once: position distance, plus the weighted direction distance
    // where both points have a direction.
    auto span = cost.head(count);
    span = ((stored.x.segment(from, count) - query.x(i)).square() +
            (stored.y.segment(from, count) - query.y(i)).square() +
            (stored.z.segment(from, count) - query.z(i)).square())
               .sqrt();
    if (i < kShapePoints - 1) {
      const int directed = std::min(count, kShapePoints - 1 - from);
      span.head(directed) += weight * ((stored.dx.segment(from, directed) - query.dx(i)).square() +
                                       (stored.dy.segment(from, directed) - query.dy(i)).square() +
                                       (stored.dz.segment(from, directed) - query.dz(i)).square())
                                          .sqrt();
    }
    row.fill(kUnreached);
    float rowBest = kUnreached;
    for (int k = 0; k < count; ++k) {
      const size_t j = static_cast<size_t>(from + k) + 1;
      const float total = std::min({above[j], row[j - 1], above[j - 1]}) + cost(k);
      row[j] = total;
      rowBest = std::min(rowBest, total);
    }
    // Costs are never negative: once a whole row and what must follow is past the bound, so is the
    // end.
    if (rowBest + rest[static_cast<size_t>(i) + 1] > limit) return std::numeric_limits<double>::infinity();
    above = row;
  }
  return static_cast<double>(above[kShapePoints]);
}

}  // namespace zando
