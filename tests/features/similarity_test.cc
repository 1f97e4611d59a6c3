#include "features/similarity.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace zando {
namespace {

ModelParameters twoWaypoints(int waypointMode, int headerMode) {
  ModelParameters p;
  p.waypointCount = 2;
  p.waypointFeatureMode = waypointMode;
  p.headerFeatureMode = headerMode;
  return p;
}

Quaternion aboutZ(double angle) { return Quaternion(0, 0, std::sin(angle / 2), std::cos(angle / 2)); }

TEST(SimilarityTest, QuaternionAngleIsTheTurnBetweenAndIgnoresSign) {
  EXPECT_NEAR(quaternionAngle(aboutZ(0.7), aboutZ(0.2)), 0.5, 1e-12);
  const Quaternion q(0.1, -0.5, 0.3, 0.8);
  EXPECT_EQ(quaternionAngle(q, Quaternion(-q.x, -q.y, -q.z, -q.w)), 0.0);
  EXPECT_EQ(quaternionAngle(q, q), 0.0);
}

// Under header mode 2 the closing terms re-read the header quaternion: centroid and radius never
// count, the stroke's orientation counts twice.
TEST(SimilarityTest, HeaderModeTwoIgnoresCentroidAndRadius) {
  const ModelParameters p = twoWaypoints(2, 2);  // quaternions at 3, 10, 14; centroid 18, radius 21
  std::vector<double> a(22, 0.25);
  for (int at : {3, 10, 14}) Quaternion().copyTo(&a[at]);
  std::vector<double> b = a;
  b[18] += 5.0;
  b[21] *= 3.0;
  EXPECT_EQ(strokeDistance(a, b, p), 0.0);
  aboutZ(0.4).copyTo(&b[14]);
  const double dz = std::sin(0.2), dw = std::cos(0.2) - 1.0;
  EXPECT_NEAR(strokeDistance(a, b, p), 0.4 + dz * dz + dw * dw, 1e-12);
}

TEST(SimilarityTest, OtherModesWeighTheirOwnTerms) {
  const ModelParameters euler = twoWaypoints(0, 1);  // angles at 6, centroid 9, radius 12
  std::vector<double> a(13, 0.1), b(13, 0.1);
  b[8] += 0.5;  // the third angle turns about z
  b[9] += 0.3;
  b[12] += 0.2;
  EXPECT_NEAR(strokeDistance(a, b, euler), 0.5 + 0.09 + 0.04, 1e-12);

  // Axes: waypoint terms (e1^2 + e2^2) / 2 with e = 1 - dot; header terms ((1 - dot) / 2)^2.
  const ModelParameters axes = twoWaypoints(4, 4);  // axes at 3, 6, 12, 15, 18, 21; radius 27
  a.assign(28, 0.0);
  for (int at : {3, 7, 12, 16, 18, 22}) a[at] = 1.0;
  b = a;
  b[3] = -1.0;  // e1 = 2
  b[18] = 0.0;
  b[19] = 1.0;  // t = 0.5
  b[27] = 0.1;
  EXPECT_NEAR(strokeDistance(a, b, axes), 2.0 + 0.25 + 0.01, 1e-12);

  // Mode 3 has no orientation here: blocks are 3 wide and hold positions only.
  const ModelParameters three = twoWaypoints(3, 0);
  a.assign(10, 0.1);
  b = a;
  b[4] += 0.2;
  EXPECT_NEAR(strokeDistance(a, b, three), 0.04, 1e-12);
}

}  // namespace
}  // namespace zando
