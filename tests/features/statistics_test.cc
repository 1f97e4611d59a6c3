#include "features/statistics.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "features/similarity.h"

namespace zando {
namespace {

Quaternion negated(const Quaternion& q) { return Quaternion(-q.x, -q.y, -q.z, -q.w); }

Quaternion turn(double angle, double x, double y, double z) {
  const double s = std::sin(angle / 2);
  return Quaternion(x * s, y * s, z * s, std::cos(angle / 2));
}

ModelParameters twoWaypoints(int waypointMode, int headerMode) {
  ModelParameters p;
  p.waypointCount = 2;
  p.waypointFeatureMode = waypointMode;
  p.headerFeatureMode = headerMode;
  return p;
}

TEST(StatisticsTest, AveragerTiesGoToTheLowerIndex) {
  QuaternionAverager tie;
  tie.add(Quaternion(1, 0, 0, 0));
  tie.add(Quaternion(0, 1, 0, 0));
  EXPECT_NEAR(std::fabs(tie.average().x), 1.0, 1e-12);
}

// Positions and the closing four values are arithmetic means, orientations rotation means, blind
// to the sign a rotation is given with and normalised; the variance divides by the count and puts
// the squared angle into every slot of a quaternion.
TEST(StatisticsTest, MeanAndVarianceWithQuaternions) {
  const ModelParameters p = twoWaypoints(2, 2);  // F = 22; quaternions at 3, 10, 14
  EXPECT_EQ(averageFeatureVectors({}, p), std::vector<double>(22, 0.0));
  std::vector<double> a(22, 0.0), b(22, 0.0);
  a[0] = 1.0; b[0] = 3.0;
  a[21] = 0.5; b[21] = 1.5;
  turn(0.3, 1, 0, 0).copyTo(&a[3]);
  negated(turn(0.3, 1, 0, 0)).copyTo(&b[3]);
  turn(0.4, 0, 0, 1).copyTo(&a[10]);
  negated(turn(-0.4, 0, 0, 1)).copyTo(&b[10]);
  const Quaternion q(0.2, -0.4, 0.1, 0.88);  // not of unit length
  q.copyTo(&a[14]);
  q.copyTo(&b[14]);

  const std::vector<double> mean = averageFeatureVectors({a, b}, p);
  EXPECT_DOUBLE_EQ(mean[0], 2.0);
  EXPECT_DOUBLE_EQ(mean[21], 1.0);
  EXPECT_NEAR(quaternionAngle(Quaternion(&mean[3]), turn(0.3, 1, 0, 0)), 0.0, 1e-7);
  EXPECT_NEAR(quaternionAngle(Quaternion(&mean[10]), Quaternion()), 0.0, 1e-7);
  const Eigen::Vector4d header = Eigen::Vector4d::Map(&mean[14]);
  EXPECT_TRUE(header.isApprox(Eigen::Vector4d(q.x, q.y, q.z, q.w).normalized() * (header[3] > 0 ? 1 : -1), 1e-12));

  const std::vector<double> variance = featureVariance({a, b}, mean, p);
  EXPECT_DOUBLE_EQ(variance[0], 1.0);
  EXPECT_DOUBLE_EQ(variance[21], 0.25);
  for (int slot = 10; slot < 14; ++slot) EXPECT_NEAR(variance[slot], 0.16, 1e-7);
  EXPECT_NEAR(variance[3], 0.0, 1e-12);
  for (double v : featureVariance({a}, averageFeatureVectors({a}, p), p)) EXPECT_NEAR(v, 0.0, 1e-14);
}

TEST(StatisticsTest, MeanAndVarianceWithEulerAnglesAndAxes) {
  const ModelParameters euler = twoWaypoints(1, 1);  // F = 19; angles at 3, 9, 12
  std::vector<double> a(19, 0.0), b(19, 0.0);
  a[5] = 0.2; b[5] = 0.6;  // about z
  const std::vector<double> mean = averageFeatureVectors({a, b}, euler);
  EXPECT_NEAR(mean[5], 0.4, 1e-9);
  EXPECT_NEAR(featureVariance({a, b}, mean, euler)[5], 0.04, 1e-9);

  // One sample's axes come back; a reversed axis puts (1 - dot)^2 = 4 into its three slots.
  const ModelParameters axes = twoWaypoints(4, 4);  // F = 28; axes at 3, 6 and 18, 21
  std::vector<double> c(28, 0.0);
  c[4] = c[19] = 0.6;
  c[5] = c[20] = 0.8;
  c[6] = c[21] = 1.0;
  const std::vector<double> axesMean = averageFeatureVectors({c}, axes);
  for (int slot : {3, 4, 5, 6, 7, 8, 18, 19, 20, 21, 22, 23}) EXPECT_NEAR(axesMean[slot], c[slot], 1e-12) << slot;
  std::vector<double> flipped = axesMean;
  flipped[6] = -flipped[6];
  const std::vector<double> variance = featureVariance({flipped}, axesMean, axes);
  EXPECT_NEAR(variance[3], 0.0, 1e-12);
  EXPECT_NEAR(variance[8], 4.0, 1e-12);
}

}  // namespace
}  // namespace zando
