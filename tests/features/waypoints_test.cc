#include "features/waypoints.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "spatial/random.h"

namespace zando {
namespace {

using Numbers = std::vector<int>;
using Method = void (*)(const Stroke&, int, StrokePoint*, StrokePoint*);

// Hand points as given, numbered by their time stamps; head record i sits at z = 100 + i.
Stroke strokeThrough(const std::vector<Vector3>& points) {
  Stroke stroke;
  for (size_t i = 0; i < points.size(); ++i) {
    stroke.handPoints.emplace_back(points[i], Quaternion());
    stroke.handPoints.back().timestamp = static_cast<int64_t>(i);
    stroke.headPoints.emplace_back(Vector3(0, 0, 100.0 + i), Quaternion());
  }
  stroke.headStart = StrokePoint(Vector3(0, 0, -1), Quaternion());
  return stroke;
}

// Unit steps along x to point `first`, then `second` steps up y.
Stroke corner(int first, int second) {
  std::vector<Vector3> points;
  for (int k = 0; k <= first + second; ++k) points.emplace_back(std::min(k, first), std::max(k - first, 0), 0);
  return strokeThrough(points);
}

// The numbers of the points a method picks; each pick must come with its own head record.
Numbers picks(Method method, const Stroke& stroke, int n) {
  std::vector<StrokePoint> waypoints(n), heads(n);
  method(stroke, n, waypoints.data(), heads.data());
  Numbers numbers;
  for (int i = 0; i < n; ++i) {
    numbers.push_back(static_cast<int>(waypoints[i].timestamp));
    EXPECT_EQ(heads[i].position.z, 100.0 + numbers.back()) << "pick " << i;
  }
  return numbers;
}

TEST(TurningSelection, FollowsTheTurningAndFallsBackToHalving) {
  std::vector<Vector3> straight, repeated;
  for (int k = 0; k < 30; ++k) straight.emplace_back(k + 0.3 * (k % 3), 0, 0);
  for (int k = 0; k < 20; ++k) repeated.emplace_back(k, (k * k) % 7, 0);
  repeated[6] = repeated[5];
  // Straight, unevenly spaced: no turning, so the zero threshold takes the first points in order.
  EXPECT_EQ(picks(selectWaypointsByTurning, strokeThrough(straight), 8), (Numbers{0, 1, 2, 3, 4, 5, 6, 29}));
  // All turning at point 14 (weight (1 - 0.5) * 2 = 1), well past the middle of the path.
  EXPECT_EQ(picks(selectWaypointsByTurning, corner(14, 6), 3), (Numbers{0, 14, 20}));
  // A repeated point makes the weights NaN: each open entry halves the way to the end.
  EXPECT_EQ(picks(selectWaypointsByTurning, strokeThrough(repeated), 5), (Numbers{0, 9, 14, 16, 19}));
}

TEST(ChordError, IntervalCostsAndAnnealingTowardTheCorner) {
  const Stroke stroke = strokeThrough({{0, 0, 0}, {1, 1, 0}, {2, 0, 0}, {3, 0, 2}, {0, 0, 0}});
  const int idx[] = {0, 2, 3, 0, 4};  // intervals 0 to 2, 2 to 3, and (the fourth) 0 to 4
  double costs[4];
  for (int j : {0, 1, 3}) intervalChordError(stroke.handPoints, idx, costs, j);
  EXPECT_DOUBLE_EQ(1.0, costs[0]);
  EXPECT_EQ(0.0, costs[1]);
  EXPECT_DOUBLE_EQ(3.0, costs[3]);  // a chord of length 0 measures across the x axis

  // Equal arc length alone takes point 11; annealing finds the corner, where the error is 0 and
  // no uphill step is accepted any more. The ends never move.
  for (uint32_t seed : {1u, 7u, 99u, 12345u}) {
    seedRandom(seed);
    EXPECT_EQ(picks(selectWaypointsByChordError, corner(10, 10), 3), (Numbers{0, 10, 20})) << seed;
  }
  EXPECT_EQ(picks(selectWaypointsByChordError, corner(10, 10), 2), (Numbers{0, 20}));
}

TEST(ArcLengthSelection, InterpolatesAtEqualDistancesAndFallsBackToTheStartHead) {
  Stroke stroke = strokeThrough({{0, 0, 0}, {1, 0, 0}, {3, 0, 0}});
  std::vector<StrokePoint> waypoints(4), heads(4);
  selectWaypointsByArcLength(stroke, 4, waypoints.data(), heads.data());
  const double x[] = {0, 1, 2, 3}, headZ[] = {100, 101, 101.5, 102};
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(waypoints[i].position.x, x[i], 1e-12);
    EXPECT_NEAR(heads[i].position.z, headZ[i], 1e-12);
  }
  // Without head records every method reads headStart.
  stroke.headPoints.clear();
  for (Method method : {selectWaypointsByTurning, selectWaypointsByChordError, selectWaypointsByArcLength}) {
    method(stroke, 4, waypoints.data(), heads.data());
    for (const StrokePoint& head : heads) EXPECT_EQ(head.position.z, -1.0);
  }
}

TEST(Resample, ShortStrokeIsExpandedAlongItsPath) {
  // Around a corner, length 2, five slots half a unit apart; the hand turns a quarter about z on
  // the second leg.
  const double h = std::sqrt(0.5);
  Stroke stroke = strokeThrough({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
  stroke.handPoints[2].rotation = Quaternion(0, 0, h, h);
  const Stroke r = resampleToWaypointCount(stroke, 5);
  ASSERT_TRUE(r.handPoints.size() == 5 && r.headPoints.size() == 5);
  const double expected[5][3] = {{0, 0, 100}, {0.5, 0, 100.5}, {1, 0, 101}, {1, 0.5, 101.5}, {1, 1, 102}};
  for (int i = 0; i < 5; ++i) {  // hand x and y, head z
    const Eigen::Vector3d actual(r.handPoints[i].position.x, r.handPoints[i].position.y, r.headPoints[i].position.z);
    EXPECT_LT((actual - Eigen::Vector3d(expected[i])).norm(), 1e-12) << i;
  }
  EXPECT_NEAR(r.handPoints[3].rotation.w, std::cos(3.14159265358979323846 / 8), 1e-12);

  // The walk ends on the corner (the last leg has no length); the last slot is still the last point.
  stroke.handPoints[2].position = Vector3(1, 0, 0);
  EXPECT_EQ(resampleToWaypointCount(stroke, 4).handPoints[3].rotation.z, h);
}

}  // namespace
}  // namespace zando
