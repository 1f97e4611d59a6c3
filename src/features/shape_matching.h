// Shape matching for the enhanced recognition mode: a stroke as a path of a fixed number of points,
// evenly spaced along its length, relative to the head, centred and scaled but not turned, and a
// warping distance between two such paths.
#ifndef ZANDO_FEATURES_SHAPE_MATCHING_H
#define ZANDO_FEATURES_SHAPE_MATCHING_H

#include <array>
#include <limits>

#include <Eigen/Core>

#include "features/model_parameters.h"
#include "spatial/spatial.h"

namespace zando {

constexpr int kShapePoints = 32;
// How far the warping may move a point along the other path: a quarter of the path.
constexpr int kShapeBand = kShapePoints / 4;
// Weight of the difference in direction of travel against the difference in position.
constexpr double kShapeDirectionWeight = 0.6;

// Values of one coordinate along a path. Single precision: the distances decide between shapes,
// and four values go through each vector instruction.
using ShapeRow = Eigen::Array<float, kShapePoints, 1>;

struct StrokeShape {
  // The head settings the shape was made with: a stored shape is made anew when they change.
  int headSettings[5] = {0, 0, 0, 0, 0};
  // The points, coordinate by coordinate.
  ShapeRow x, y, z;
  // Unit direction from each point to the next (zero where two points coincide, and after the
  // last point).
  ShapeRow dx, dy, dz;
  // Per point, the box around the points of the other path that the band lets it meet: a lower
  // bound of the distance that costs one pass instead of the warping.
  ShapeRow lowX, lowY, lowZ, highX, highY, highZ;
  ShapeRow lowDx, lowDy, lowDz, highDx, highDy, highDz;
};

// The shape of a stroke of at least two points (fewer give a shape at the origin). `stored`: the
// stroke is a stored sample, read at the precision its saved file keeps.
void makeStrokeShape(const Stroke& stroke, const ModelParameters& parameters, bool stored, StrokeShape& shape);

// The shape of a stored sample, made on first use and kept with it.
const StrokeShape& storedShape(const Stroke& sample, const ModelParameters& parameters);

// A lower bound of shapeDistance(query, stored).
double shapeLowerBound(const StrokeShape& query, const StrokeShape& stored);

// The warping distance: the cheapest monotone matching of the two paths within the band, each
// pair costing the distance of the points plus the weighted distance of the directions. Stops
// early and returns infinity once the result must exceed `abandonAbove`.
double shapeDistance(const StrokeShape& query, const StrokeShape& stored,
                     double abandonAbove = std::numeric_limits<double>::infinity());

}  // namespace zando

#endif  // ZANDO_FEATURES_SHAPE_MATCHING_H
