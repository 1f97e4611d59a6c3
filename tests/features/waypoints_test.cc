#include "features/waypoints.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "spatial/random.h"

namespace zando {
namespace {

// Hand points as given; head record i sits at z = 100 + i, so a selected head tells its number.
Stroke strokeThrough(const std::vector<Vector3>& points) {
  Stroke stroke;
  for (size_t i = 0; i < points.size(); ++i) {
    stroke.handPoints.emplace_back(points[i], Quaternion());
    stroke.headPoints.emplace_back(Vector3(0, 0, 100.0 + i), Quaternion());
  }
  stroke.headStart = StrokePoint(Vector3(0, 0, -1), Quaternion());
  return stroke;
}

// Unit steps along x to point `first`, then `second` steps up y.
Stroke corner(int first, int second) {
  std::vector<Vector3> points;
  for (int k = 0; k <= first; ++k) points.emplace_back(k, 0, 0);
  for (int k = 1; k <= second; ++k) points.emplace_back(first, k, 0);
  return strokeThrough(points);
}

template <typename Method>
std::vector<StrokePoint> select(Method method, const Stroke& stroke, int n, std::vector<StrokePoint>* heads = nullptr) {
  std::vector<StrokePoint> waypoints(n), waypointHeads(n);
  method(stroke, n, waypoints.data(), waypointHeads.data());
  if (heads != nullptr) *heads = waypointHeads;
  return waypoints;
}

// Point numbers of the selected waypoints, found by position.
std::vector<int> indices(const std::vector<StrokePoint>& waypoints, const Stroke& stroke) {
  std::vector<int> result;
  for (const StrokePoint& w : waypoints) {
    int found = -1;
    for (int k = static_cast<int>(stroke.handPoints.size()) - 1; k >= 0; --k) {
      const Vector3& p = stroke.handPoints[k].position;
      if (p.x == w.position.x && p.y == w.position.y && p.z == w.position.z) found = k;
    }
    result.push_back(found);
  }
  return result;
}

TEST(TurningSelection, FollowsTheTurningAndFallsBackToHalving) {
  // Straight, unevenly spaced: no turning, so the zero threshold takes the first points in order.
  std::vector<Vector3> straight;
  for (int k = 0; k < 30; ++k) straight.emplace_back(k + 0.3 * (k % 3), 0, 0);
  const Stroke line = strokeThrough(straight);
  std::vector<StrokePoint> heads;
  EXPECT_EQ(indices(select(selectWaypointsByTurning, line, 8, &heads), line),
            (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 29}));
  EXPECT_EQ(heads[6].position.z, 106.0);
  EXPECT_EQ(heads[7].position.z, 129.0);

  // All turning at point 14 (weight (1 - 0.5) * 2 = 1), well past the middle of the path.
  const Stroke bend = corner(14, 6);
  EXPECT_EQ(indices(select(selectWaypointsByTurning, bend, 3), bend), (std::vector<int>{0, 14, 20}));

  // A repeated point makes the weights NaN: each open entry halves the way to the end.
  std::vector<Vector3> repeated;
  for (int k = 0; k < 20; ++k) repeated.emplace_back(k, (k * k) % 7, 0);
  repeated[6] = repeated[5];
  const Stroke stuck = strokeThrough(repeated);
  EXPECT_EQ(indices(select(selectWaypointsByTurning, stuck, 5), stuck), (std::vector<int>{0, 9, 14, 16, 19}));
}

TEST(ChordError, IntervalCostsAndAnnealingTowardTheCorner) {
  const Stroke stroke = strokeThrough({{0, 0, 0}, {1, 1, 0}, {2, 0, 0}, {3, 0, 2}, {0, 0, 0}});
  double costs[2];
  const int idx[] = {0, 2, 3};
  intervalChordError(stroke.handPoints, idx, costs, 0);
  intervalChordError(stroke.handPoints, idx, costs, 1);
  EXPECT_DOUBLE_EQ(costs[0], 1.0);
  EXPECT_EQ(costs[1], 0.0);
  const int loop[] = {0, 4};  // a chord of length 0 measures across the x axis
  intervalChordError(stroke.handPoints, loop, costs, 0);
  EXPECT_DOUBLE_EQ(costs[0], 3.0);

  // Equal arc length alone takes point 11; annealing finds the corner, where the error is 0 and
  // no uphill step is accepted any more. The ends never move.
  const Stroke bend = corner(10, 10);
  for (uint32_t seed : {1u, 7u, 99u, 12345u}) {
    seedRandom(seed);
    EXPECT_EQ(indices(select(selectWaypointsByChordError, bend, 3), bend), (std::vector<int>{0, 10, 20})) << seed;
  }
  EXPECT_EQ(indices(select(selectWaypointsByChordError, bend, 2), bend), (std::vector<int>{0, 20}));
}

TEST(ArcLengthSelection, InterpolatesAtEqualDistancesAndFallsBackToTheStartHead) {
  Stroke stroke = strokeThrough({{0, 0, 0}, {1, 0, 0}, {3, 0, 0}});
  std::vector<StrokePoint> heads;
  const std::vector<StrokePoint> w = select(selectWaypointsByArcLength, stroke, 4, &heads);
  const double x[] = {0, 1, 2, 3}, headZ[] = {100, 101, 101.5, 102};
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(w[i].position.x, x[i], 1e-12);
    EXPECT_NEAR(heads[i].position.z, headZ[i], 1e-12);
  }
  stroke.headPoints.clear();
  for (auto method : {selectWaypointsByTurning, selectWaypointsByChordError, selectWaypointsByArcLength}) {
    select(method, stroke, 4, &heads);
    for (const StrokePoint& head : heads) EXPECT_EQ(head.position.z, -1.0);
  }
}

TEST(Resample, ShortStrokeIsExpandedAlongItsPath) {
  // Around a corner, length 2, five slots half a unit apart; the hand turns a quarter about z on
  // the second leg, and the last point repeats the corner's position with a turn of its own.
  const double h = std::sqrt(0.5);
  Stroke stroke;
  stroke.handPoints = {StrokePoint(Vector3(0, 0, 0), Quaternion()), StrokePoint(Vector3(1, 0, 0), Quaternion()),
                       StrokePoint(Vector3(1, 1, 0), Quaternion(0, 0, h, h))};
  for (double z : {10.0, 12.0, 14.0}) stroke.headPoints.emplace_back(Vector3(0, 0, z), Quaternion());
  stroke.headStart = StrokePoint(Vector3(7, 7, 7), Quaternion());
  stroke.sampleType = 1;
  const Stroke r = resampleToWaypointCount(stroke, 5);
  ASSERT_EQ(r.handPoints.size(), 5u);
  ASSERT_EQ(r.headPoints.size(), 5u);
  const double expected[5][3] = {{0, 0, 10}, {0.5, 0, 11}, {1, 0, 12}, {1, 0.5, 13}, {1, 1, 14}};
  for (int i = 0; i < 5; ++i) {
    EXPECT_NEAR(r.handPoints[i].position.x, expected[i][0], 1e-12);
    EXPECT_NEAR(r.handPoints[i].position.y, expected[i][1], 1e-12);
    EXPECT_NEAR(r.headPoints[i].position.z, expected[i][2], 1e-12);
  }
  EXPECT_NEAR(r.handPoints[3].rotation.w, std::cos(3.14159265358979323846 / 8), 1e-12);
  EXPECT_EQ(r.headStart.position.x, 7.0);
  EXPECT_EQ(r.sampleType, 1);

  // The walk ends on the corner (the last leg has no length); the last slot is still the last point.
  stroke.handPoints[2].position = Vector3(1, 0, 0);
  EXPECT_EQ(resampleToWaypointCount(stroke, 4).handPoints[3].rotation.z, h);
}

}  // namespace
}  // namespace zando
