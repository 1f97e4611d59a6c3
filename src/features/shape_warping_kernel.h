// The body of the lane-by-lane warping, written once over a set of vector operations `Ops`:
//   V                       kShapeLanes floats;
//   load(p), set(f)         from memory / every lane the same;
//   add, sub, mul, min, max, sqrt   lane by lane, correctly rounded (min(a, b): a < b ? a : b,
//                           max(a, b): a > b ? a : b);
//   greater(a, b), either(m, n)   masks of lanes;
//   laneBits(m)             bit l set for lane l of a mask; store(p, v);
//   pack(lanes, count, packed)   the paths and bounds of the lanes side by side (see below).
// Each file that instantiates it does so with operations of its own, so code compiled for
// different processors never mixes.
#ifndef ZANDO_FEATURES_SHAPE_WARPING_KERNEL_H
#define ZANDO_FEATURES_SHAPE_WARPING_KERNEL_H

#include "features/shape_warping.h"

namespace zando {

// The stored paths side by side: element [place][lane]. `rest[i]`: what the rows from place i on
// must add at least to the lane's matching. A lane whose matching must exceed its `limit` is given
// up.
struct WarpingLanes {
  alignas(32) float x[kShapePoints][kShapeLanes];
  alignas(32) float y[kShapePoints][kShapeLanes];
  alignas(32) float z[kShapePoints][kShapeLanes];
  alignas(32) float dx[kShapePoints][kShapeLanes];
  alignas(32) float dy[kShapePoints][kShapeLanes];
  alignas(32) float dz[kShapePoints][kShapeLanes];
  alignas(32) float rest[kShapePoints + 1][kShapeLanes];
  alignas(32) float limit[kShapeLanes];
};

// The paths, and each place's bound into `rest`, a value at a time. Unused lanes repeat the first.
template <class Ops>
void packOneByOne(const WarpingLane* lanes, int count, WarpingLanes& packed) {
  for (int l = 0; l < kShapeLanes; ++l) {
    const WarpingLane& lane = lanes[l < count ? l : 0];
    for (int i = 0; i < kShapePoints; ++i) {
      packed.x[i][l] = lane.path->x[i];
      packed.y[i][l] = lane.path->y[i];
      packed.z[i][l] = lane.path->z[i];
      packed.dx[i][l] = lane.path->dx[i];
      packed.dy[i][l] = lane.path->dy[i];
      packed.dz[i][l] = lane.path->dz[i];
      packed.rest[i][l] = lane.bounds->value[i];
    }
  }
}

template <class Ops>
void warpLanesWith(const WarpingQuery& query, const WarpingLanes& lanes, float distances[kShapeLanes]) {
  using V = typename Ops::V;
  constexpr int kWidth = kShapePoints + 1;
  constexpr int kAllLanes = (1 << kShapeLanes) - 1;
  const V unreached = Ops::set(__builtin_huge_valf());
  const V weight = Ops::set(kShapeDirectionWeight);
  // Two rows of the cumulative table, shifted by one: column 0 stands before the first point.
  // Cells outside the band stay unreached.
  V first[kWidth], second[kWidth];
  for (int j = 0; j < kWidth; ++j) first[j] = second[j] = unreached;
  V* above = first;
  V* row = second;
  above[0] = Ops::set(0.0f);
  int givenUp = 0;
  for (int i = 0; i < kShapePoints; ++i) {
    const int from = i > kShapeBand ? i - kShapeBand : 0;
    const int to = i + kShapeBand < kShapePoints - 1 ? i + kShapeBand : kShapePoints - 1;
    const V qx = Ops::set(query.x[i]), qy = Ops::set(query.y[i]), qz = Ops::set(query.z[i]);
    const V qdx = Ops::set(query.dx[i]), qdy = Ops::set(query.dy[i]), qdz = Ops::set(query.dz[i]);
    // The buffer last held the row before the one above; only the cell left of the band is read.
    row[from] = unreached;
    V rowBest = unreached;
    for (int s = from; s <= to; ++s) {
      const V ex = Ops::sub(Ops::load(lanes.x[s]), qx);
      const V ey = Ops::sub(Ops::load(lanes.y[s]), qy);
      const V ez = Ops::sub(Ops::load(lanes.z[s]), qz);
      V cost = Ops::sqrt(Ops::add(Ops::add(Ops::mul(ex, ex), Ops::mul(ey, ey)), Ops::mul(ez, ez)));
      if (i < kShapePoints - 1 && s < kShapePoints - 1) {
        const V fx = Ops::sub(Ops::load(lanes.dx[s]), qdx);
        const V fy = Ops::sub(Ops::load(lanes.dy[s]), qdy);
        const V fz = Ops::sub(Ops::load(lanes.dz[s]), qdz);
        cost = Ops::add(cost, Ops::mul(weight, Ops::sqrt(Ops::add(Ops::add(Ops::mul(fx, fx), Ops::mul(fy, fy)),
                                                                  Ops::mul(fz, fz)))));
      }
      const V total = Ops::add(Ops::min(Ops::min(above[s + 1], above[s]), row[s]), cost);
      row[s + 1] = total;
      rowBest = Ops::min(rowBest, total);
    }
    // Costs are never negative: once a whole row and what must follow is past the limit, so is the
    // end.
    givenUp |= Ops::laneBits(Ops::greater(Ops::add(rowBest, Ops::load(lanes.rest[i + 1])), Ops::load(lanes.limit)));
    V* const done = above;
    above = row;
    row = done;
    if (givenUp == kAllLanes) break;
  }
  alignas(32) float ends[kShapeLanes];
  Ops::store(ends, above[kShapePoints]);
  for (int l = 0; l < kShapeLanes; ++l) distances[l] = (givenUp >> l & 1) != 0 ? __builtin_huge_valf() : ends[l];
}

template <class Ops>
void warpPathsWith(const WarpingQuery& query, const WarpingLane* lanes, int count, float* distances) {
  WarpingLanes packed;
  Ops::pack(lanes, count, packed);
  // Unused lanes are given up from the start; each place's bound becomes the sum of the bounds from
  // that place on.
  for (int l = 0; l < kShapeLanes; ++l) packed.limit[l] = l < count ? lanes[l].limit : -__builtin_huge_valf();
  Ops::store(packed.rest[kShapePoints], Ops::set(0.0f));
  for (int i = kShapePoints - 1; i >= 0; --i) {
    Ops::store(packed.rest[i], Ops::add(Ops::load(packed.rest[i + 1]), Ops::load(packed.rest[i])));
  }
  float found[kShapeLanes];
  warpLanesWith<Ops>(query, packed, found);
  for (int l = 0; l < count; ++l) distances[l] = found[l];
}

// The lanes of a vector added up in lane order.
template <class Ops>
float laneSum(typename Ops::V vector) {
  alignas(32) float lanes[kShapeLanes];
  Ops::store(lanes, vector);
  float sum = 0.0f;
  for (const float lane : lanes) sum += lane;
  return sum;
}

template <class Ops>
float placeBoundsWith(const WarpingQuery& query, const WarpingEnvelope& stored, PlaceValues& bounds, float limit) {
  using V = typename Ops::V;
  constexpr int kDirected = kShapePoints - 1 - kShapeBand;
  const V zero = Ops::set(0.0f);
  // The distance of a point to a box, a block of places at a time.
  const auto outside = [zero](const float* value, const float* low, const float* high, int at) {
    const V v = Ops::load(value + at);
    return Ops::max(Ops::max(Ops::sub(Ops::load(low + at), v), Ops::sub(v, Ops::load(high + at))), zero);
  };
  V total = zero;
  for (int at = 0; at < kShapePoints; at += kShapeLanes) {
    const V ex = outside(query.x, stored.lowX, stored.highX, at);
    const V ey = outside(query.y, stored.lowY, stored.highY, at);
    const V ez = outside(query.z, stored.lowZ, stored.highZ, at);
    V bound = Ops::sqrt(Ops::add(Ops::add(Ops::mul(ex, ex), Ops::mul(ey, ey)), Ops::mul(ez, ez)));
    if (at < kDirected) {
      const V fx = outside(query.dx, stored.lowDx, stored.highDx, at);
      const V fy = outside(query.dy, stored.lowDy, stored.highDy, at);
      const V fz = outside(query.dz, stored.lowDz, stored.highDz, at);
      alignas(32) float weights[kShapeLanes];
      for (int l = 0; l < kShapeLanes; ++l) weights[l] = at + l < kDirected ? kShapeDirectionWeight : 0.0f;
      bound = Ops::add(bound, Ops::mul(Ops::load(weights), Ops::sqrt(Ops::add(Ops::add(Ops::mul(fx, fx),
                                                                                       Ops::mul(fy, fy)),
                                                                              Ops::mul(fz, fz)))));
    }
    Ops::store(bounds.value + at, bound);
    total = Ops::add(total, bound);
    // Past the limit the rest cannot matter: what is found so far is returned, and the places
    // after it are left as they were.
    if (limit < __builtin_huge_valf() && at + kShapeLanes < kShapePoints) {
      const float sum = laneSum<Ops>(total);
      if (sum > limit) return sum;
    }
  }
  return laneSum<Ops>(total);
}

}  // namespace zando

#endif  // ZANDO_FEATURES_SHAPE_WARPING_KERNEL_H
