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

// Points evenly spaced along the path's length, so that neither the speed of the hand nor its
// pauses change the shape.
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

template <size_t N>
void envelope(const std::array<Eigen::Vector3d, N>& values, std::array<Eigen::Vector3d, N>& low,
              std::array<Eigen::Vector3d, N>& high) {
  const int count = static_cast<int>(N);
  for (int i = 0; i < count; ++i) {
    const int from = std::max(0, i - kShapeBand);
    const int to = std::min(count - 1, i + kShapeBand);
    Eigen::Vector3d lo = values[static_cast<size_t>(from)];
    Eigen::Vector3d hi = lo;
    for (int j = from + 1; j <= to; ++j) {
      lo = lo.cwiseMin(values[static_cast<size_t>(j)]);
      hi = hi.cwiseMax(values[static_cast<size_t>(j)]);
    }
    low[static_cast<size_t>(i)] = lo;
    high[static_cast<size_t>(i)] = hi;
  }
}

double distanceToBox(const Eigen::Vector3d& v, const Eigen::Vector3d& low, const Eigen::Vector3d& high) {
  return (low - v).cwiseMax(v - high).cwiseMax(0.0).norm();
}

double pairCost(const StrokeShape& a, const StrokeShape& b, int i, int j) {
  double cost = (a.points[static_cast<size_t>(i)] - b.points[static_cast<size_t>(j)]).norm();
  // The last point has no direction; pairs with it are compared by position alone.
  if (i < kShapePoints - 1 && j < kShapePoints - 1) {
    cost += kShapeDirectionWeight *
            (a.directions[static_cast<size_t>(i)] - b.directions[static_cast<size_t>(j)]).norm();
  }
  return cost;
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
  resampleByLength(path, shape.points);

  // Centred on the mean point and scaled to a unit mean radius; the orientation is kept, since it
  // tells apart shapes that are turned copies of one another.
  Eigen::Vector3d centre = Eigen::Vector3d::Zero();
  for (const Eigen::Vector3d& p : shape.points) centre += p;
  centre /= kShapePoints;
  double radius = 0.0;
  for (const Eigen::Vector3d& p : shape.points) radius += (p - centre).squaredNorm();
  radius = std::sqrt(radius / kShapePoints);
  const double scale = radius > 0.0 ? 1.0 / radius : 1.0;
  for (Eigen::Vector3d& p : shape.points) p = (p - centre) * scale;

  for (size_t i = 0; i + 1 < kShapePoints; ++i) {
    const Eigen::Vector3d step = shape.points[i + 1] - shape.points[i];
    const double length = step.norm();
    shape.directions[i] = length > 0.0 ? Eigen::Vector3d(step / length) : Eigen::Vector3d::Zero();
  }
  envelope(shape.points, shape.pointLow, shape.pointHigh);
  envelope(shape.directions, shape.directionLow, shape.directionHigh);
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

double shapeLowerBound(const StrokeShape& query, const StrokeShape& stored) {
  // Every point of the query is matched at least once, to a point of the band around its own
  // place; its cost is at least the distance to the box of those points. Where the band reaches
  // the stored path's last point the direction may cost nothing.
  double bound = 0.0;
  for (int i = 0; i < kShapePoints; ++i) {
    const size_t k = static_cast<size_t>(i);
    bound += distanceToBox(query.points[k], stored.pointLow[k], stored.pointHigh[k]);
    if (i + kShapeBand < kShapePoints - 1) {
      bound += kShapeDirectionWeight * distanceToBox(query.directions[k], stored.directionLow[k],
                                                     stored.directionHigh[k]);
    }
  }
  return bound;
}

double shapeDistance(const StrokeShape& query, const StrokeShape& stored, double abandonAbove) {
  constexpr double kUnreached = std::numeric_limits<double>::infinity();
  constexpr int kWidth = kShapePoints + 1;
  // Two rows of the cumulative table; column 0 and cells outside the band stay unreached.
  std::array<double, kWidth> above;
  std::array<double, kWidth> row;
  above.fill(kUnreached);
  above[0] = 0.0;
  for (int i = 1; i <= kShapePoints; ++i) {
    row.fill(kUnreached);
    double rowBest = kUnreached;
    const int from = std::max(1, i - kShapeBand);
    const int to = std::min(kShapePoints, i + kShapeBand);
    for (int j = from; j <= to; ++j) {
      const double reach = std::min({above[static_cast<size_t>(j)], row[static_cast<size_t>(j - 1)],
                                     above[static_cast<size_t>(j - 1)]});
      const double total = reach + pairCost(query, stored, i - 1, j - 1);
      row[static_cast<size_t>(j)] = total;
      rowBest = std::min(rowBest, total);
    }
    // Costs are never negative: once a whole row is past the bound, so is the end.
    if (rowBest > abandonAbove) return kUnreached;
    above = row;
  }
  return above[kShapePoints];
}

}  // namespace zando
