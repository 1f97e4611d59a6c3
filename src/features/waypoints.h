// Picking a fixed number of waypoints, each with the head pose that belongs to it, out of a stroke
// of any length: the first step of feature extraction.
#ifndef ZANDO_FEATURES_WAYPOINTS_H
#define ZANDO_FEATURES_WAYPOINTS_H

#include <vector>

#include "spatial/spatial.h"

namespace zando {

// A stroke of exactly n points and n head records, walked at equal arc-length steps along the
// given stroke (which has fewer than n points); the last slot is the given stroke's last point.
// Keeps headStart, headLatest and sampleType. Expects at least two points.
Stroke resampleToWaypointCount(const Stroke& stroke, int n);
// The same into a caller-owned stroke, whose arrays are reused.
void resampleToWaypointCount(const Stroke& stroke, int n, Stroke& resampled);

// The selection methods. Each fills waypoints[0..n-1] and waypointHeads[0..n-1] from a stroke of
// at least two points; none fails.
// Equal arc length, then 100 rounds of annealing on the chord error (random; needs n >= 3 to
// anneal, and simply keeps the equal-arc-length choice below that).
void selectWaypointsByChordError(const Stroke& stroke, int n, StrokePoint* waypoints, StrokePoint* waypointHeads);
// Equal accumulated turning; the default.
void selectWaypointsByTurning(const Stroke& stroke, int n, StrokePoint* waypoints, StrokePoint* waypointHeads);
// Equal arc length with interpolation between points; the last waypoint need not be the last point.
void selectWaypointsByArcLength(const Stroke& stroke, int n, StrokePoint* waypoints, StrokePoint* waypointHeads);
// Dispatch by featureSelector: 0 chord error, 1 turning, anything else arc length.
void selectWaypoints(const Stroke& stroke, int featureSelector, int n, StrokePoint* waypoints,
                     StrokePoint* waypointHeads);

// costs[j] = summed distance of the points strictly between handPoints[idx[j]] and
// handPoints[idx[j + 1]] from the chord that joins those two.
void intervalChordError(const std::vector<StrokePoint>& handPoints, const int* idx, double* costs, int j);

}  // namespace zando

#endif  // ZANDO_FEATURES_WAYPOINTS_H
