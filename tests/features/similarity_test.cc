#include "features/similarity.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace zando {
namespace {

Quaternion aboutZ(double angle) { return Quaternion(0, 0, std::sin(angle / 2), std::cos(angle / 2)); }

TEST(SimilarityTest, QuaternionAngleIsTheTurnBetweenAndIgnoresSign) {
  EXPECT_NEAR(quaternionAngle(aboutZ(0.7), aboutZ(0.2)), 0.5, 1e-12);
  const Quaternion q(0.1, -0.5, 0.3, 0.8);
  EXPECT_EQ(quaternionAngle(q, Quaternion(-q.x, -q.y, -q.z, -q.w)), 0.0);
  EXPECT_EQ(quaternionAngle(q, q), 0.0);
}

// Two strokes over two waypoints, all zeros but the entries listed, and the distance between them.
TEST(SimilarityTest, EachModeWeighsItsOwnTerms) {
  struct Case {
    int waypointMode, headerMode, size;
    std::vector<std::pair<int, double>> a, b;  // b starts as a copy of a
    double distance;
  };
  const double s = std::sin(0.2), c = std::cos(0.2);
  const Case cases[] = {
      // Header mode 2: the closing terms re-read the header quaternion (14), so centroid (18) and
      // radius (21) never count and the stroke's orientation counts twice, as angle and as parts.
      {2, 2, 22, {{6, 1}, {13, 1}, {17, 1}}, {{18, 5}, {21, 0.75}, {16, s}, {17, c}}, 0.4 + s * s + (c - 1) * (c - 1)},
      // Euler angles at 6 (the third turns about z), centroid 9, radius 12.
      {0, 1, 13, {}, {{8, 0.5}, {9, 0.3}, {12, 0.2}}, 0.5 + 0.09 + 0.04},
      // Axes at 3, 6, 12, 15, 18, 21, radius 27: waypoint terms (e1^2 + e2^2) / 2 with
      // e = 1 - dot; header terms ((1 - dot) / 2)^2.
      {4, 4, 28, {{3, 1}, {7, 1}, {12, 1}, {16, 1}, {18, 1}, {22, 1}}, {{3, -1}, {18, 0}, {19, 1}, {27, 0.1}},
       2.0 + 0.25 + 0.01},
      // Mode 3 has no orientation: blocks are 3 wide and hold positions only.
      {3, 0, 10, {}, {{4, 0.2}}, 0.04},
  };
  for (const Case& k : cases) {
    ModelParameters p;
    p.waypointCount = 2;
    p.waypointFeatureMode = k.waypointMode;
    p.headerFeatureMode = k.headerMode;
    std::vector<double> a(k.size, 0.0);
    for (const auto& [at, value] : k.a) a[at] = value;
    std::vector<double> b = a;
    for (const auto& [at, value] : k.b) b[at] = value;
    EXPECT_NEAR(strokeDistance(a, b, p), k.distance, 1e-12) << k.waypointMode << " " << k.headerMode;
  }
}

}  // namespace
}  // namespace zando
