// Shape matching for the enhanced recognition mode: a stroke as a path of a fixed number of points,
// evenly spaced along its length, relative to the head, centred and scaled but not turned, and a
// warping distance between two such paths.
#ifndef ZANDO_FEATURES_SHAPE_MATCHING_H
#define ZANDO_FEATURES_SHAPE_MATCHING_H

#include <limits>
#include <vector>

#include <Eigen/Core>

#include "features/model_parameters.h"
#include "features/shape_warping.h"
#include "spatial/spatial.h"

namespace zando {

struct StrokeShape {
  // The head settings the shape was made with: a stored shape is made anew when they change.
  int headSettings[5] = {0, 0, 0, 0, 0};
  // The points, and the unit direction from each point to the next (zero where two points
  // coincide, and after the last point).
  WarpingQuery path;
  // Made for stored shapes only: what cheap lower bounds of the warping compare a query with.
  WarpingEnvelope envelope;
  // The path ends about where it began (a circle, a square): where along it a performance starts
  // is a matter of habit, and such shapes are also compared from other starting points.
  bool closed = false;
  // See turnSharpness; not a number until made.
  double sharpness = std::numeric_limits<double>::quiet_NaN();
};

// How much of a path's turning is done at its sharpest quarter of places, times four: near 1 for a
// path that turns evenly (a circle), up to 4 for one that runs straight between corners (a
// square), whatever its size, orientation and direction. Not a number for a path that hardly
// turns.
double turnSharpness(const WarpingQuery& path);

// The same closed path begun at its point `first` (and ending there again).
void startAt(const WarpingQuery& path, int first, WarpingQuery& out);
// The same path gone through from its end to its start.
void reversedPath(const WarpingQuery& path, WarpingQuery& out);

// Hand positions in the head's frame: the head of the first point for the initial policy, each
// point's own head otherwise. Heads are paired with points as a saved file pairs them (a stroke
// whose heads ran out repeats the last, one without any uses its start), and a stored sample is
// read at the precision of a file: a set identifies alike before saving and after loading.
void headRelativePath(const Stroke& stroke, const ModelParameters& parameters, bool stored,
                      std::vector<Eigen::Vector3d>& path);

// The shape of a stroke of at least two points (fewer give a shape at the origin). `stored`: the
// stroke is a stored sample, read at the precision its saved file keeps.
void makeStrokeShape(const Stroke& stroke, const ModelParameters& parameters, bool stored, StrokeShape& shape);

// The same for a path of points already in the head's frame (at least one); the envelope only
// for `stored` shapes. The head settings are left as they are.
void makePathShape(const std::vector<Eigen::Vector3d>& path, bool stored, StrokeShape& shape);

// The head settings that a stored shape depends on.
void headSettingsOf(const ModelParameters& parameters, int settings[5]);

// The shape of a stored sample, made on first use and kept with it.
const StrokeShape& storedShape(const Stroke& sample, const ModelParameters& parameters);

// The least warping distance from `path` to the stored shapes `shapeAt(0)` to `shapeAt(count - 1)`
// (null for one to pass over) if less than `limit`, else infinity or at least `limit`.
template <typename ShapeAt>
float nearestStoredShape(const WarpingQuery& path, size_t count, ShapeAt&& shapeAt,
                         float limit = std::numeric_limits<float>::infinity()) {
  PlaceValues bounds[kShapeLanes];
  WarpingLane lanes[kShapeLanes];
  float found[kShapeLanes];
  float nearest = std::numeric_limits<float>::infinity();
  for (size_t next = 0; next < count;) {
    int lanesUsed = 0;
    for (; next < count && lanesUsed < kShapeLanes; ++next) {
      const StrokeShape* shape = shapeAt(next);
      const float within = nearest < limit ? nearest : limit;
      if (shape == nullptr || placeBounds(path, shape->envelope, bounds[lanesUsed], within) > within) continue;
      lanes[lanesUsed] = {&shape->path, &bounds[lanesUsed], within};
      ++lanesUsed;
    }
    if (lanesUsed == 0) break;
    warpPaths(path, lanes, lanesUsed, found);
    for (int l = 0; l < lanesUsed; ++l) nearest = found[l] < nearest ? found[l] : nearest;
  }
  return nearest;
}

}  // namespace zando

#endif  // ZANDO_FEATURES_SHAPE_MATCHING_H
