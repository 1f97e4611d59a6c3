#include "features/waypoints.h"

#include <algorithm>
#include <cmath>

#include "spatial/random.h"
#include "spatial/thread_scratch.h"

namespace zando {

namespace {

double distance(const Vector3& a, const Vector3& b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double dz = b.z - a.z;
  return std::sqrt(dx * dx + dy * dy + dz * dz);
}

double pathLength(const std::vector<StrokePoint>& points) {
  double total = 0.0;
  for (size_t k = 1; k < points.size(); ++k) total += distance(points[k - 1].position, points[k].position);
  return total;
}

// The head record of point i. Head records normally run in step with the points; a short list
// lends its last entry and an empty one the pose given at the start, so that no method ever reads
// past the list.
const StrokePoint& headRecord(const Stroke& stroke, size_t i) {
  if (stroke.headPoints.empty()) return stroke.headStart;
  return i < stroke.headPoints.size() ? stroke.headPoints[i] : stroke.headPoints.back();
}

const StrokePoint& lastHeadRecord(const Stroke& stroke) {
  return stroke.headPoints.empty() ? stroke.headStart : stroke.headPoints.back();
}

// Linear position, spherical rotation, as interpolatePoint, but with a time stamp read once by the
// caller instead of once per record.
void interpolateInto(const StrokePoint& a, const StrokePoint& b, double t, int64_t timestamp, StrokePoint& out) {
  out.position = Vector3((1.0 - t) * a.position.x + t * b.position.x, (1.0 - t) * a.position.y + t * b.position.y,
                         (1.0 - t) * a.position.z + t * b.position.z);
  out.rotation = slerpShortest(a.rotation, b.rotation, t);
  out.timestamp = timestamp;
}

void copyOut(const Stroke& stroke, const int* idx, int n, StrokePoint* waypoints, StrokePoint* waypointHeads) {
  for (int i = 0; i < n; ++i) {
    waypoints[i] = stroke.handPoints[idx[i]];
    waypointHeads[i] = headRecord(stroke, static_cast<size_t>(idx[i]));
  }
}

// A stroke without points gives default records; one with a single point gives that point. The
// callers never pass such strokes, but the methods stay safe if they do.
bool fillDegenerate(const Stroke& stroke, int n, StrokePoint* waypoints, StrokePoint* waypointHeads) {
  const size_t count = stroke.handPoints.size();
  if (count >= 2) return false;
  for (int i = 0; i < n; ++i) {
    waypoints[i] = count == 0 ? StrokePoint(Unstamped{}) : stroke.handPoints[0];
    waypointHeads[i] = headRecord(stroke, 0);
  }
  return true;
}

// Index scratch of the selection methods; reused between calls of one thread.
struct SelectionScratch {
  std::vector<int> idx;
  std::vector<double> values;
};

SelectionScratch& selectionScratch() {
  return threadScratch<SelectionScratch, struct SelectionPlace>();
}

}  // namespace

void resampleToWaypointCount(const Stroke& stroke, int n, Stroke& resampled) {
  resampled.startTime = stroke.startTime;
  resampled.headStart = stroke.headStart;
  resampled.headLatest = stroke.headLatest;
  resampled.sampleType = stroke.sampleType;
  const int slots = std::max(n, 0);
  resampled.handPoints.resize(slots, StrokePoint(Unstamped{}));
  resampled.headPoints.resize(slots, StrokePoint(Unstamped{}));
  if (slots == 0) return;
  StrokePoint* hand = resampled.handPoints.data();
  StrokePoint* head = resampled.headPoints.data();
  if (fillDegenerate(stroke, slots, hand, head)) return;

  const std::vector<StrokePoint>& points = stroke.handPoints;
  const size_t count = points.size();
  const size_t headCount = stroke.headPoints.size();
  const double step = pathLength(points) / (n - 1);
  const int64_t now = nowMilliseconds();

  hand[0] = points[0];
  head[0] = headRecord(stroke, 0);
  size_t a = 0;      // the current pair is points a, a + 1
  size_t headA = 0;  // and head records headA, headA + 1
  double covered = 0.0;
  double seg = std::max(0.0001, distance(points[0].position, points[1].position));
  for (int i = 1; i < n; ++i) {
    const double target = i * step;
    double f = (target - covered) / seg;
    while (f > 1.0) {
      // At the last pair f stays above 1 and the slot is extrapolated beyond the last point.
      if (a + 2 >= count) break;
      covered += seg;
      ++a;
      seg = std::max(0.0001, distance(points[a].position, points[a + 1].position));
      f = (target - covered) / seg;
      if (headA + 2 < headCount) ++headA;
    }
    interpolateInto(points[a], points[a + 1], f, now, hand[i]);
    interpolateInto(headRecord(stroke, headA), headRecord(stroke, headA + 1), f, now, head[i]);
  }
  // Rounding can leave the walk short of the end; the last slot is always the last point.
  hand[n - 1] = points.back();
  head[n - 1] = lastHeadRecord(stroke);
}

Stroke resampleToWaypointCount(const Stroke& stroke, int n) {
  Stroke resampled;
  resampleToWaypointCount(stroke, n, resampled);
  return resampled;
}

void intervalChordError(const std::vector<StrokePoint>& handPoints, const int* idx, double* costs, int j) {
  const int a = idx[j];
  const int b = idx[j + 1];
  const Vector3& origin = handPoints[a].position;
  const Vector3& end = handPoints[b].position;
  const double vx = end.x - origin.x;
  const double vy = end.y - origin.y;
  const double vz = end.z - origin.z;
  const double chord = std::sqrt(vx * vx + vy * vy + vz * vz);
  double ux = 1.0, uy = 0.0, uz = 0.0;
  if (chord != 0.0) {
    ux = vx / chord;
    uy = vy / chord;
    uz = vz / chord;
  }
  double sum = 0.0;
  for (int k = a + 1; k < b; ++k) {
    const Vector3& p = handPoints[k].position;
    const double dx = p.x - origin.x;
    const double dy = p.y - origin.y;
    const double dz = p.z - origin.z;
    const double along = dx * ux + dy * uy + dz * uz;
    const double px = dx - ux * along;
    const double py = dy - uy * along;
    const double pz = dz - uz * along;
    sum += std::sqrt(px * px + py * py + pz * pz);
  }
  costs[j] = sum;
}

void selectWaypointsByChordError(const Stroke& stroke, int n, StrokePoint* waypoints, StrokePoint* waypointHeads) {
  if (n < 1 || fillDegenerate(stroke, n, waypoints, waypointHeads)) return;
  const std::vector<StrokePoint>& points = stroke.handPoints;
  const int count = static_cast<int>(points.size());
  SelectionScratch& scratch = selectionScratch();
  std::vector<int>& idx = scratch.idx;
  std::vector<double>& costs = scratch.values;

  // Equal arc length first. One point takes at most one waypoint, so after long segments the
  // trailing entries keep the last point.
  idx.assign(n, count - 1);
  idx[0] = 0;
  const double step = pathLength(points) / (n - 1);
  double acc = 0.0;
  int j = 1;
  for (int k = 1; k < count && j < n; ++k) {
    acc += distance(points[k - 1].position, points[k].position);
    if (acc > step) {
      acc -= step;
      idx[j++] = k;
    }
  }
  idx[n - 1] = count - 1;

  costs.assign(n > 1 ? n - 1 : 0, 0.0);
  double total = 0.0;
  for (int interval = 0; interval + 1 < n; ++interval) {
    intervalChordError(points, idx.data(), costs.data(), interval);
    total += costs[interval];
  }

  seedRandomIfNeeded();
  // Annealing moves interior waypoints only; with fewer than three there is none to move.
  if (n >= 3) {
    for (int round = 0; round < 100; ++round) {
      // The order of the draws is fixed: interior choice, shift, and acceptance only when uphill.
      const int i = randomInt() % (n - 2) + 1;
      const double shift = randomInt() / 32767.0 - 0.5;
      const int old = idx[i];
      int moved;
      if (shift > 0) {
        moved = old + static_cast<int>(std::floor((idx[i + 1] - idx[i]) * shift));
        if (moved > idx[i + 1]) moved = idx[i + 1];
      } else {
        moved = old - static_cast<int>(std::floor((idx[i] - idx[i - 1]) * (-shift)));
        if (moved < idx[i - 1]) moved = idx[i - 1];
      }
      const double oldBefore = costs[i - 1];
      const double oldAfter = costs[i];
      idx[i] = moved;
      intervalChordError(points, idx.data(), costs.data(), i - 1);
      intervalChordError(points, idx.data(), costs.data(), i);
      const double delta = (costs[i - 1] + costs[i]) - (oldBefore + oldAfter);
      if (delta > 0) {
        // The temperature falls linearly from 1 to 0.01; an uphill step is measured against the
        // current mean interval cost.
        const double u = randomInt() / 32767.0;
        if (u > std::exp(-(delta / (total / (n - 1))) / (1 - round / 100.0))) {
          idx[i] = old;
          costs[i - 1] = oldBefore;
          costs[i] = oldAfter;
          continue;
        }
      }
      total += delta;
    }
  }
  copyOut(stroke, idx.data(), n, waypoints, waypointHeads);
}

void selectWaypointsByTurning(const Stroke& stroke, int n, StrokePoint* waypoints, StrokePoint* waypointHeads) {
  if (n < 1 || fillDegenerate(stroke, n, waypoints, waypointHeads)) return;
  const std::vector<StrokePoint>& points = stroke.handPoints;
  const int count = static_cast<int>(points.size());
  SelectionScratch& scratch = selectionScratch();
  std::vector<int>& idx = scratch.idx;
  std::vector<double>& turning = scratch.values;

  // A straight continuation weighs 0, a reversal the length of both segments. Repeated points are
  // not guarded: their NaN makes every comparison below fail, and the halving fill takes over.
  turning.assign(count, 0.0);
  double sum = 0.0;
  for (int k = 1; k + 1 < count; ++k) {
    const Vector3& prev = points[k - 1].position;
    const Vector3& here = points[k].position;
    const Vector3& next = points[k + 1].position;
    const double ax = here.x - prev.x, ay = here.y - prev.y, az = here.z - prev.z;
    const double bx = next.x - here.x, by = next.y - here.y, bz = next.z - here.z;
    const double la = std::sqrt(ax * ax + ay * ay + az * az);
    const double lb = std::sqrt(bx * bx + by * by + bz * bz);
    const double cosine = (ax / la) * (bx / lb) + (ay / la) * (by / lb) + (az / la) * (bz / lb);
    turning[k] = (1 - (cosine + 1) * 0.5) * (la + lb);
    sum += turning[k];
  }

  idx.assign(n, 0);
  const double threshold = sum / (n - 1);
  int j = 1;
  if (count > 2) {
    double acc = 0.0;
    for (int k = 1; k < count - 1 && j < n; ++k) {
      acc += turning[k];
      if (acc >= threshold) {
        idx[j++] = k;
        acc -= threshold;
      }
    }
  }
  // Entries still open each halve the distance to the end of the stroke.
  for (int m = j; m <= n - 2; ++m) idx[m] = (idx[m - 1] + count - 1) / 2;
  idx[n - 1] = count - 1;
  copyOut(stroke, idx.data(), n, waypoints, waypointHeads);
}

void selectWaypointsByArcLength(const Stroke& stroke, int n, StrokePoint* waypoints, StrokePoint* waypointHeads) {
  if (n < 1 || fillDegenerate(stroke, n, waypoints, waypointHeads)) return;
  const std::vector<StrokePoint>& points = stroke.handPoints;
  const size_t count = points.size();
  const size_t headCount = stroke.headPoints.size();
  const double step = pathLength(points) / (n - 1);
  const int64_t now = nowMilliseconds();

  waypoints[0] = points[0];
  waypointHeads[0] = headRecord(stroke, 0);
  size_t a = 0;      // the current segment runs from point a to a + 1
  size_t headA = 0;  // and its head records from headA to headA + 1
  double seg = distance(points[0].position, points[1].position);
  double c = 0.0;
  int i = 1;
  while (i < n) {
    const double t = c + step;
    if (seg <= t) {
      if (a + 2 >= count) {
        for (; i < n; ++i) {
          waypoints[i] = points[a + 1];
          waypointHeads[i] = headRecord(stroke, headA + 1);
        }
        return;
      }
      c -= seg;
      ++a;
      seg = std::max(1e-05, distance(points[a].position, points[a + 1].position));
      if (headA + 2 < headCount) ++headA;
    } else {
      const double f = t / seg;
      interpolateInto(points[a], points[a + 1], f, now, waypoints[i]);
      interpolateInto(headRecord(stroke, headA), headRecord(stroke, headA + 1), f, now, waypointHeads[i]);
      c = t;
      ++i;
    }
  }
}

void selectWaypoints(const Stroke& stroke, int featureSelector, int n, StrokePoint* waypoints,
                     StrokePoint* waypointHeads) {
  switch (featureSelector) {
    case 0: selectWaypointsByChordError(stroke, n, waypoints, waypointHeads); break;
    case 1: selectWaypointsByTurning(stroke, n, waypoints, waypointHeads); break;
    default: selectWaypointsByArcLength(stroke, n, waypoints, waypointHeads); break;
  }
}

}  // namespace zando
