// The warping distance of one query path to several stored paths at once, lane by lane, in the
// widest vector instructions the processor has. Plain arrays only: the wide version is compiled
// for newer processors than the rest of the library, and must share no inline code with it.
#ifndef ZANDO_FEATURES_SHAPE_WARPING_H
#define ZANDO_FEATURES_SHAPE_WARPING_H

// On x86-64 the build compiles a version in 256-bit instructions (see CMakeLists.txt).
#if defined(__x86_64__)
#define ZANDO_WIDE_WARPING 1
#endif

namespace zando {

constexpr int kShapePoints = 32;
// How far the warping may move a point along the other path: a quarter of the path.
constexpr int kShapeBand = kShapePoints / 4;
// Weight of the difference in direction of travel against the difference in position.
constexpr float kShapeDirectionWeight = 1.0f;
// How many stored paths one pass compares with the query.
constexpr int kShapeLanes = 8;

// The query: its points and the unit direction from each point to the next, coordinate by
// coordinate.
struct WarpingQuery {
  alignas(32) float x[kShapePoints];
  alignas(32) float y[kShapePoints];
  alignas(32) float z[kShapePoints];
  alignas(32) float dx[kShapePoints];
  alignas(32) float dy[kShapePoints];
  alignas(32) float dz[kShapePoints];
};

// Per place of a stored path, the box around the points and the directions of the other path
// that the band lets it meet (directions over the places that have one).
struct WarpingEnvelope {
  alignas(32) float lowX[kShapePoints];
  alignas(32) float lowY[kShapePoints];
  alignas(32) float lowZ[kShapePoints];
  alignas(32) float highX[kShapePoints];
  alignas(32) float highY[kShapePoints];
  alignas(32) float highZ[kShapePoints];
  alignas(32) float lowDx[kShapePoints];
  alignas(32) float lowDy[kShapePoints];
  alignas(32) float lowDz[kShapePoints];
  alignas(32) float highDx[kShapePoints];
  alignas(32) float highDy[kShapePoints];
  alignas(32) float highDz[kShapePoints];
};

// A value per place of a path.
struct PlaceValues {
  alignas(32) float value[kShapePoints];
};

// One stored path to compare with the query. `bounds`: placeBounds of the query against it. Past
// `limit` its distance no longer matters: the comparison may be given up, giving infinity.
struct WarpingLane {
  const WarpingQuery* path;
  const PlaceValues* bounds;
  float limit;
};

// Per place of the query, what any matching with the stored path costs there at least: every point
// is matched at least once, to a point of the band around its own place, so it costs at least the
// distance to the box of those points (and the weighted distance of its direction to theirs, at
// places whose band stops short of the last point, which has no direction). Returns their sum, a
// lower bound of the warping distance. With a `limit`, the work stops once the sum passes it:
// then the sum so far is returned (above the limit), and only the first places are written.
constexpr float kNoLimit = __builtin_huge_valf();
float placeBounds(const WarpingQuery& query, const WarpingEnvelope& stored, PlaceValues& bounds,
                  float limit = kNoLimit);

// The warping distances of the query to up to kShapeLanes stored paths, in one pass: for each, the
// cheapest monotone matching of the two paths within the band, each pair costing the distance of
// the points plus the weighted distance of the directions (only where both points have one: the
// last has none).
void warpPaths(const WarpingQuery& query, const WarpingLane* lanes, int count, float* distances);

// The same in instructions every processor of the architecture has.
float placeBoundsNarrow(const WarpingQuery& query, const WarpingEnvelope& stored, PlaceValues& bounds,
                        float limit = kNoLimit);
void warpPathsNarrow(const WarpingQuery& query, const WarpingLane* lanes, int count, float* distances);

#if defined(ZANDO_WIDE_WARPING)
// The same in 256-bit instructions, for processors that have them; the functions above choose.
float placeBoundsWide(const WarpingQuery& query, const WarpingEnvelope& stored, PlaceValues& bounds,
                      float limit = kNoLimit);
void warpPathsWide(const WarpingQuery& query, const WarpingLane* lanes, int count, float* distances);
#endif

}  // namespace zando

#endif  // ZANDO_FEATURES_SHAPE_WARPING_H
