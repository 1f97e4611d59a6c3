// Poses and rotation conversions. Expected values are worked out by hand or built independently
// from Eigen's angle-axis rotations and rotation matrices, never from the functions under test.
#include "spatial/spatial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <random>
#include <string>

namespace zando {
namespace {

const double kPi = 3.141592653589793;
const double kHalfSqrt2 = std::sqrt(0.5);
// Axis letters of each rotation order, in the order the axis rotations are multiplied.
const char* const kOrderNames[6] = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};

int axisIndex(char letter) { return letter - 'X'; }

Eigen::Vector3d unitAxis(char letter) { return Eigen::Vector3d::Unit(axisIndex(letter)); }

// Product of the three axis rotations, left to right in the letters' order; angles are x, y, z.
Eigen::Quaterniond composeIndependently(const double angles[3], const std::string& order) {
  Eigen::Quaterniond result = Eigen::Quaterniond::Identity();
  for (char letter : order) {
    result = result * Eigen::Quaterniond(Eigen::AngleAxisd(angles[axisIndex(letter)], unitAxis(letter)));
  }
  return result;
}

Quaternion normalizedQuaternion(double x, double y, double z, double w) {
  const double n = std::sqrt(x * x + y * y + z * z + w * w);
  return Quaternion(x / n, y / n, z / n, w / n);
}

Quaternion randomUnitQuaternion(std::mt19937& engine) {
  std::normal_distribution<double> normal;
  return normalizedQuaternion(normal(engine), normal(engine), normal(engine), normal(engine));
}

void expectQuaternionNear(const Quaternion& expected, const Quaternion& actual, double tolerance) {
  EXPECT_NEAR(expected.x, actual.x, tolerance);
  EXPECT_NEAR(expected.y, actual.y, tolerance);
  EXPECT_NEAR(expected.z, actual.z, tolerance);
  EXPECT_NEAR(expected.w, actual.w, tolerance);
}

// q and -q are the same rotation.
double distanceUpToSign(const Quaternion& a, const Quaternion& b) {
  const double same = std::fabs(a.x - b.x) + std::fabs(a.y - b.y) + std::fabs(a.z - b.z) + std::fabs(a.w - b.w);
  const double opposite = std::fabs(a.x + b.x) + std::fabs(a.y + b.y) + std::fabs(a.z + b.z) + std::fabs(a.w + b.w);
  return std::min(same, opposite);
}

// Column-major 4x4 matrix of a row-major 3x3 rotation and a translation.
void matrixFromRows(const double r[3][3], const double p[3], double m[16]) {
  for (int column = 0; column < 3; ++column) {
    for (int row = 0; row < 3; ++row) m[column * 4 + row] = r[row][column];
    m[column * 4 + 3] = 0.0;
  }
  m[12] = p[0];
  m[13] = p[1];
  m[14] = p[2];
  m[15] = 1.0;
}

// ---------------------------------------------------------------------------------------------
// Matrices

TEST(MatrixConversion, IdentityAndHalfTurnAboutY) {
  const double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  const double origin[3] = {0, 0, 0};
  double m[16];
  matrixFromRows(identity, origin, m);
  Quaternion q;
  Vector3 p(5, 5, 5);
  quaternionFromMatrix(m, q, p);
  // t = 3, s = 4: w = 1 exactly.
  EXPECT_EQ(0.0, q.x);
  EXPECT_EQ(0.0, q.y);
  EXPECT_EQ(0.0, q.z);
  EXPECT_EQ(1.0, q.w);
  EXPECT_EQ(0.0, p.x);
  EXPECT_EQ(0.0, p.y);
  EXPECT_EQ(0.0, p.z);

  // diag(-1, 1, -1): t = -1, the y element is the largest; s = 4, y = 1.
  const double halfTurnY[3][3] = {{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}};
  const double position[3] = {1.5, -2.0, 3.25};
  matrixFromRows(halfTurnY, position, m);
  quaternionFromMatrix(m, q, p);
  EXPECT_EQ(0.0, q.x);
  EXPECT_EQ(1.0, q.y);
  EXPECT_EQ(0.0, q.z);
  EXPECT_EQ(0.0, q.w);
  EXPECT_EQ(1.5, p.x);
  EXPECT_EQ(-2.0, p.y);
  EXPECT_EQ(3.25, p.z);

  // The matrix constructor of StrokePoint reads the same pose.
  const StrokePoint point(m);
  EXPECT_EQ(1.0, point.rotation.y);
  EXPECT_EQ(3.25, point.position.z);
  EXPECT_EQ(1.0, point.position.w);
}

// Each case of the conversion makes its own component positive (w, x, y or z), so the sign of the
// result tells which case ran. The inputs below have that component's sign opposite to the others,
// so a wrong case gives the negated quaternion.
TEST(MatrixConversion, EachCaseChoosesTheSignOfItsComponent) {
  struct Case {
    const char* name;
    Quaternion rotation;
    int positiveComponent;  // 0 x, 1 y, 2 z, 3 w
  };
  const Case cases[] = {
      {"trace positive", normalizedQuaternion(0.3, -0.2, 0.4, -0.8), 3},
      {"m0 largest", normalizedQuaternion(-0.7, 0.3, 0.5, 0.2), 0},
      {"m5 largest", normalizedQuaternion(0.3, -0.7, 0.5, 0.2), 1},
      {"m10 largest", normalizedQuaternion(0.3, 0.5, -0.7, 0.2), 2},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    // Rotation matrix built by Eigen, not by matrixFromPose.
    const Eigen::Matrix3d r = c.rotation.eigen().toRotationMatrix();
    double m[16];
    const double origin[3] = {0, 0, 0};
    double rows[3][3];
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) rows[i][j] = r(i, j);
    matrixFromRows(rows, origin, m);
    const double t = m[0] + m[5] + m[10];
    if (c.positiveComponent == 3) {
      ASSERT_GT(t, 0.0);
    } else {
      ASSERT_LE(t, 0.0);
      ASSERT_GT(m[c.positiveComponent * 5], m[((c.positiveComponent + 1) % 3) * 5]);
      ASSERT_GT(m[c.positiveComponent * 5], m[((c.positiveComponent + 2) % 3) * 5]);
    }
    const double input[4] = {c.rotation.x, c.rotation.y, c.rotation.z, c.rotation.w};
    const double sign = input[c.positiveComponent] > 0 ? 1.0 : -1.0;
    ASSERT_LT(sign, 0.0);  // the case must flip the input for the test to discriminate
    const Quaternion expected(sign * input[0], sign * input[1], sign * input[2], sign * input[3]);
    expectQuaternionNear(expected, quaternionFromMatrix(m), 1e-12);
  }
}

// Half turns about diagonal axes give exact ties on the diagonal; the strict comparisons hand a tie
// to the later case, whose component then comes out positive.
TEST(MatrixConversion, TiesFallToTheLaterCase) {
  const double origin[3] = {0, 0, 0};
  double m[16];
  const double h = kHalfSqrt2;

  // Half turn about (1, -1, 0): m0 == m5 == 0 > m10 == -1; case 3 makes y positive.
  const double aboutXminusY[3][3] = {{0, -1, 0}, {-1, 0, 0}, {0, 0, -1}};
  matrixFromRows(aboutXminusY, origin, m);
  expectQuaternionNear(Quaternion(-h, h, 0, 0), quaternionFromMatrix(m), 1e-15);

  // Half turn about (1, 0, -1): m0 == m10 == 0 > m5 == -1; case 4 makes z positive.
  const double aboutXminusZ[3][3] = {{0, 0, -1}, {0, -1, 0}, {-1, 0, 0}};
  matrixFromRows(aboutXminusZ, origin, m);
  expectQuaternionNear(Quaternion(-h, 0, h, 0), quaternionFromMatrix(m), 1e-15);

  // Half turn about (0, 1, -1): m5 == m10 == 0 > m0 == -1; case 4 makes z positive.
  const double aboutYminusZ[3][3] = {{-1, 0, 0}, {0, 0, -1}, {0, -1, 0}};
  matrixFromRows(aboutYminusZ, origin, m);
  expectQuaternionNear(Quaternion(0, -h, h, 0), quaternionFromMatrix(m), 1e-15);

  // A third of a turn backwards about (1, 1, 1): t == 0 exactly is not case 1, and the three-way
  // diagonal tie goes to case 4: z positive, w negative.
  const double cyclic[3][3] = {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}};
  matrixFromRows(cyclic, origin, m);
  expectQuaternionNear(Quaternion(0.5, 0.5, 0.5, -0.5), quaternionFromMatrix(m), 1e-15);
}

TEST(MatrixConversion, NonFiniteElementGivesNonFiniteRotation) {
  const double identity[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  const double origin[3] = {0, 0, 0};
  double m[16];
  matrixFromRows(identity, origin, m);
  m[0] = std::numeric_limits<double>::quiet_NaN();
  const Quaternion q = quaternionFromMatrix(m);
  EXPECT_TRUE(std::isnan(q.x) && std::isnan(q.y) && std::isnan(q.z) && std::isnan(q.w));
}

TEST(MatrixConversion, PoseMatrixMatchesEigenAndRoundTrips) {
  std::mt19937 engine(20240611);
  std::uniform_real_distribution<double> coordinate(-10.0, 10.0);
  for (int i = 0; i < 200; ++i) {
    const Quaternion q = randomUnitQuaternion(engine);
    const Vector3 p(coordinate(engine), coordinate(engine), coordinate(engine));
    double m[16];
    matrixFromPose(p, q, m);

    Eigen::Matrix4d expected = Eigen::Matrix4d::Identity();
    expected.topLeftCorner<3, 3>() = q.eigen().toRotationMatrix();
    expected.topRightCorner<3, 1>() = p.eigen();
    const Eigen::Map<const Eigen::Matrix4d> actual(m);  // column-major, as Eigen's default
    ASSERT_TRUE(actual.isApprox(expected, 1e-12)) << actual << "\n\n" << expected;
    EXPECT_EQ(0.0, m[3]);
    EXPECT_EQ(0.0, m[7]);
    EXPECT_EQ(0.0, m[11]);
    EXPECT_EQ(1.0, m[15]);

    Quaternion back;
    Vector3 position;
    quaternionFromMatrix(m, back, position);
    EXPECT_LT(distanceUpToSign(q, back), 1e-12);
    EXPECT_EQ(p.x, position.x);
    EXPECT_EQ(p.y, position.y);
    EXPECT_EQ(p.z, position.z);
  }
}

// ---------------------------------------------------------------------------------------------
// Euler angles

TEST(EulerConversion, EachOrderComposesItsAxisRotationsLeftToRight) {
  const double angles[3] = {0.4, -1.1, 2.3};
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    const Quaternion actual = quaternionFromEuler(angles, order);
    const Eigen::Quaterniond expected = composeIndependently(angles, kOrderNames[order]);
    // The exact quaternion, sign included: the product of the half-angle quaternions.
    expectQuaternionNear(Quaternion(expected), actual, 1e-14);
    // And the same rotation as the product of the axis rotation matrices in that order.
    Eigen::Matrix3d matrix = Eigen::Matrix3d::Identity();
    for (char letter : std::string(kOrderNames[order])) {
      matrix = matrix * Eigen::AngleAxisd(angles[axisIndex(letter)], unitAxis(letter)).toRotationMatrix();
    }
    EXPECT_TRUE(actual.eigen().toRotationMatrix().isApprox(matrix, 1e-13));
  }
  // A single axis rotation: (axis * sin(a/2), cos(a/2)).
  expectQuaternionNear(Quaternion(0, std::sin(0.35), 0, std::cos(0.35)), quaternionFromEuler(0, 0.7, 0, 0),
                       1e-15);
}

// Angles in the principal ranges (middle axis within a quarter turn) come back unchanged.
TEST(EulerConversion, RecoversAnglesInEveryOrder) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> outer(-3.1, 3.1);
  std::uniform_real_distribution<double> middle(-1.5, 1.5);
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    const int middleAxis = axisIndex(kOrderNames[order][1]);
    for (int i = 0; i < 100; ++i) {
      double angles[3];
      for (int axis = 0; axis < 3; ++axis) angles[axis] = axis == middleAxis ? middle(engine) : outer(engine);
      const Quaternion q(composeIndependently(angles, kOrderNames[order]));
      double back[3];
      eulerFromQuaternion(q, order, back);
      EXPECT_NEAR(angles[0], back[0], 1e-9);
      EXPECT_NEAR(angles[1], back[1], 1e-9);
      EXPECT_NEAR(angles[2], back[2], 1e-9);
    }
  }
}

TEST(EulerConversion, RoundTripReturnsTheQuaternionUpToSign) {
  std::mt19937 engine(99);
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    for (int i = 0; i < 500; ++i) {
      const Quaternion q = randomUnitQuaternion(engine);
      double angles[3];
      eulerFromQuaternion(q, order, angles);
      EXPECT_LT(distanceUpToSign(q, quaternionFromEuler(angles, order)), 1e-9);
    }
  }
}

// At a quarter turn of the middle axis the first and last axes coincide; the conversion puts the
// whole turn into one angle and sets the last axis of the order to zero, and the rotation survives.
TEST(EulerConversion, RoundTripAtGimbalLock) {
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    const std::string name = kOrderNames[order];
    for (double quarter : {kPi / 2, -kPi / 2}) {
      for (double first : {0.0, 0.8, -2.5}) {
        for (double last : {0.0, 0.3, 1.9}) {
          double angles[3];
          angles[axisIndex(name[0])] = first;
          angles[axisIndex(name[1])] = quarter;
          angles[axisIndex(name[2])] = last;
          const Quaternion q(composeIndependently(angles, name));
          double back[3];
          eulerFromQuaternion(q, order, back);
          EXPECT_EQ(0.0, back[axisIndex(name[2])]);
          EXPECT_NEAR(quarter, back[axisIndex(name[1])], 1e-6);
          EXPECT_LT(distanceUpToSign(q, quaternionFromEuler(back, order)), 1e-6);
        }
      }
    }
  }
}

// q = (w 1, middle axis h, first axis 0.25, last axis 0) makes the middle element exactly 2h in
// every order. At 0.9999999 the order is locked (last angle 0); one step below it is regular.
TEST(EulerConversion, LockThresholdIsInclusiveAndUsesTheUnclampedElement) {
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    const std::string name = kOrderNames[order];
    const auto build = [&](double h) {
      double c[3] = {0, 0, 0};
      c[axisIndex(name[1])] = h;
      c[axisIndex(name[0])] = 0.25;
      return Quaternion(c[0], c[1], c[2], 1.0);
    };
    const double atLimit = 0.9999999 / 2;  // halving is exact, so 2h is exactly 0.9999999
    double angles[3];

    eulerFromQuaternion(build(atLimit), order, angles);
    EXPECT_EQ(0.0, angles[axisIndex(name[2])]);
    EXPECT_DOUBLE_EQ(std::asin(0.9999999), std::fabs(angles[axisIndex(name[1])]));

    eulerFromQuaternion(build(std::nextafter(atLimit, 0.0)), order, angles);
    EXPECT_GT(std::fabs(angles[axisIndex(name[2])]), 0.1);

    // A non-unit quaternion can push the element past 1: clamped, a quarter turn, not NaN.
    eulerFromQuaternion(build(0.6), order, angles);
    EXPECT_DOUBLE_EQ(kPi / 2, std::fabs(angles[axisIndex(name[1])]));
    EXPECT_EQ(0.0, angles[axisIndex(name[2])]);
    EXPECT_FALSE(std::isnan(angles[0]) || std::isnan(angles[1]) || std::isnan(angles[2]));
  }
}

TEST(EulerConversion, UnknownOrdersActAsYXZ) {
  const double angles[3] = {0.4, -1.1, 2.3};
  const Quaternion yxz(composeIndependently(angles, "YXZ"));
  const Quaternion q = normalizedQuaternion(0.1, 0.7, -0.3, 0.5);
  double expected[3];
  eulerFromQuaternion(q, kRotationOrderYXZ, expected);
  for (int order : {7, -1, 6, 1000}) {
    SCOPED_TRACE(order);
    expectQuaternionNear(yxz, quaternionFromEuler(angles, order), 1e-14);
    double actual[3];
    eulerFromQuaternion(q, order, actual);
    EXPECT_EQ(expected[0], actual[0]);
    EXPECT_EQ(expected[1], actual[1]);
    EXPECT_EQ(expected[2], actual[2]);
  }
  // The YXZ answer itself: pitch asin(-R12), yaw and roll from the regular column.
  double back[3];
  eulerFromQuaternion(yxz, 7, back);
  EXPECT_NEAR(0.4, back[0], 1e-12);
  EXPECT_NEAR(-1.1, back[1], 1e-12);
  EXPECT_NEAR(2.3, back[2], 1e-12);
}

// ---------------------------------------------------------------------------------------------
// Interpolation and angles

TEST(Slerp, EndpointsMidpointAndShortestPath) {
  const Quaternion identity;
  const Quaternion quarterZ(0, 0, kHalfSqrt2, kHalfSqrt2);
  expectQuaternionNear(identity, slerpShortest(identity, quarterZ, 0.0), 1e-15);
  expectQuaternionNear(quarterZ, slerpShortest(identity, quarterZ, 1.0), 1e-15);
  const Quaternion eighthZ(0, 0, std::sin(kPi / 8), std::cos(kPi / 8));
  expectQuaternionNear(eighthZ, slerpShortest(identity, quarterZ, 0.5), 1e-15);
  // A quarter of the way: a sixteenth of a turn.
  expectQuaternionNear(Quaternion(0, 0, std::sin(kPi / 16), std::cos(kPi / 16)),
                       slerpShortest(identity, quarterZ, 0.25), 1e-15);

  // The same rotation with the opposite sign: the short way, not through the long arc, and the end
  // is the negated input (the second weight takes the sign of the dot product).
  const Quaternion negatedQuarterZ(0, 0, -kHalfSqrt2, -kHalfSqrt2);
  expectQuaternionNear(eighthZ, slerpShortest(identity, negatedQuarterZ, 0.5), 1e-15);
  expectQuaternionNear(quarterZ, slerpShortest(identity, negatedQuarterZ, 1.0), 1e-15);
}

TEST(Slerp, ParallelInputsInterpolateLinearlyWithoutNormalising) {
  // Equal inputs: dot exactly 1, no division by sin(0).
  const Quaternion q = normalizedQuaternion(0.2, -0.4, 0.1, 0.9);
  expectQuaternionNear(q, slerpShortest(q, q, 0.3), 1e-15);

  // Non-unit inputs with |dot| >= 1 take the linear weights (1 - t, t) and stay unnormalised.
  const Quaternion two(0, 0, 0, 2);
  const Quaternion one(0, 0, 0, 1);
  const Quaternion minusOne(0, 0, 0, -1);
  expectQuaternionNear(Quaternion(0, 0, 0, 1.75), slerpShortest(two, one, 0.25), 1e-15);
  expectQuaternionNear(Quaternion(0, 0, 0, 1.75), slerpShortest(two, minusOne, 0.25), 1e-15);
  expectQuaternionNear(Quaternion(0, 0, 0, 1.0), slerpShortest(two, minusOne, 1.0), 1e-15);

  // The linear weights hold from a dot product of 1 - 2^-52 up. The two branches differ by less
  // than rounding inside [0, 1], so extrapolate to t = 2^26, where they part: linearly,
  // (1 - t) + t (1 - 2^-52) = 1 - 2^-26 exactly; the spherical weights would swing through an
  // angle of about 2^0.5 and land far from 1.
  const double t = 67108864.0;
  const Quaternion atLimit(0, 0, 0, 1.0 - std::ldexp(1.0, -52));
  EXPECT_EQ(1.0 - std::ldexp(1.0, -26), slerpShortest(one, atLimit, t).w);
  const Quaternion belowLimit(0, 0, 0, 1.0 - std::ldexp(1.0, -51));
  EXPECT_LT(slerpShortest(one, belowLimit, t).w, 0.5);
}

TEST(InterpolatePoint, LinearPositionSphericalRotationPresentTime) {
  StrokePoint a(Vector3(0, 2, -4), Quaternion());
  StrokePoint b(Vector3(4, -2, 4), Quaternion(0, 0, kHalfSqrt2, kHalfSqrt2));
  a.timestamp = 1000;
  b.timestamp = 2000;
  a.position.w = 5.0;  // never read; the result's is 1.0 regardless
  const int64_t before = nowMilliseconds();
  const StrokePoint p = interpolatePoint(a, b, 0.25);
  const int64_t after = nowMilliseconds();
  EXPECT_DOUBLE_EQ(1.0, p.position.x);
  EXPECT_DOUBLE_EQ(1.0, p.position.y);
  EXPECT_DOUBLE_EQ(-2.0, p.position.z);
  EXPECT_EQ(1.0, p.position.w);
  expectQuaternionNear(Quaternion(0, 0, std::sin(kPi / 16), std::cos(kPi / 16)), p.rotation, 1e-15);
  EXPECT_GE(p.timestamp, before);
  EXPECT_LE(p.timestamp, after);
}

TEST(AngleDistance, WrapsOnceAroundAFullTurnOnly) {
  const double fullTurn = 6.283185307179586;
  EXPECT_DOUBLE_EQ(fullTurn - 6.0, angleDistance(0.0, 6.0));
  EXPECT_DOUBLE_EQ(fullTurn - 6.0, angleDistance(6.0, 0.0));
  EXPECT_DOUBLE_EQ(fullTurn - 6.0, angleDistance(-3.0, 3.0));
  EXPECT_NEAR(0.7168146928204138, angleDistance(0.0, 7.0), 1e-15);  // 7 - 2pi
  EXPECT_DOUBLE_EQ(20.0 - fullTurn, angleDistance(0.0, 20.0));    // not folded below pi
  EXPECT_DOUBLE_EQ(3.0, angleDistance(1.0, -2.0));
  EXPECT_EQ(0.0, angleDistance(1.25, 1.25));
}

// ---------------------------------------------------------------------------------------------
// Head frame

TEST(ReduceHeadRotation, AllFlagsZeroPassesTheQuaternionUnchanged) {
  // Neither normalised nor made canonical in sign.
  const Quaternion q(0.1, 0.2, 0.3, -5.0);
  const Quaternion r = reduceHeadRotation(q, 0, 0, 0, kRotationOrderYXZ);
  EXPECT_EQ(q.x, r.x);
  EXPECT_EQ(q.y, r.y);
  EXPECT_EQ(q.z, r.z);
  EXPECT_EQ(q.w, r.w);
}

TEST(ReduceHeadRotation, YawFlagTakesOutTheHeadYaw) {
  // A head turned 1 rad to the side, pitched 0.3 and rolled 0.2, composed Qy * Qx * Qz.
  const double head[3] = {0.3, 1.0, 0.2};
  const Quaternion q(composeIndependently(head, "YXZ"));
  const double withoutYaw[3] = {0.3, 0.0, 0.2};
  const Quaternion expected(composeIndependently(withoutYaw, "YXZ"));
  EXPECT_LT(distanceUpToSign(expected, reduceHeadRotation(q, 0, 1, 0, kRotationOrderYXZ)), 1e-12);
  // Any non-zero flag counts, and pure yaw leaves the identity.
  const double yawOnly[3] = {0.0, -2.0, 0.0};
  EXPECT_LT(distanceUpToSign(Quaternion(), reduceHeadRotation(Quaternion(composeIndependently(yawOnly, "YXZ")),
                                                               0, 2, 0, kRotationOrderYXZ)),
            1e-12);
}

TEST(ReduceHeadRotation, RemovesExactlyTheFlaggedAnglesInEveryOrder) {
  const double angles[3] = {0.5, -0.6, 1.2};
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    const Quaternion q(composeIndependently(angles, kOrderNames[order]));
    for (int flags = 1; flags < 8; ++flags) {
      SCOPED_TRACE(flags);
      double kept[3];
      for (int axis = 0; axis < 3; ++axis) kept[axis] = (flags >> axis) & 1 ? 0.0 : angles[axis];
      const Quaternion expected(composeIndependently(kept, kOrderNames[order]));
      const Quaternion actual = reduceHeadRotation(q, flags & 1, (flags >> 1) & 1, (flags >> 2) & 1, order);
      EXPECT_LT(distanceUpToSign(expected, actual), 1e-12);
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Vectors, points and the clock

TEST(VectorHelpers, ComputeOnXyzAndSetWToOne) {
  Vector3 a(1, 2, 3);
  Vector3 b(-4, 0.5, 2);
  a.w = 7.0;
  b.w = -3.0;
  const Vector3 c = cross(a, b);
  EXPECT_DOUBLE_EQ(2 * 2 - 3 * 0.5, c.x);
  EXPECT_DOUBLE_EQ(3 * -4 - 1 * 2, c.y);
  EXPECT_DOUBLE_EQ(1 * 0.5 - 2 * -4, c.z);
  EXPECT_EQ(1.0, c.w);
  const Vector3 unitZ = cross(Vector3(1, 0, 0), Vector3(0, 1, 0));
  EXPECT_EQ(0.0, unitZ.x);
  EXPECT_EQ(0.0, unitZ.y);
  EXPECT_EQ(1.0, unitZ.z);

  const Vector3 sum = add(a, b);
  const Vector3 difference = subtract(a, b);
  const Vector3 scaled = scale(a, -2.0);
  EXPECT_DOUBLE_EQ(-3.0, sum.x);
  EXPECT_DOUBLE_EQ(2.5, sum.y);
  EXPECT_DOUBLE_EQ(5.0, sum.z);
  EXPECT_DOUBLE_EQ(5.0, difference.x);
  EXPECT_DOUBLE_EQ(1.5, difference.y);
  EXPECT_DOUBLE_EQ(1.0, difference.z);
  EXPECT_DOUBLE_EQ(-2.0, scaled.x);
  EXPECT_DOUBLE_EQ(-4.0, scaled.y);
  EXPECT_DOUBLE_EQ(-6.0, scaled.z);
  EXPECT_EQ(1.0, sum.w);
  EXPECT_EQ(1.0, difference.w);
  EXPECT_EQ(1.0, scaled.w);

  // The homogeneous component is not part of the dot product or the length.
  EXPECT_DOUBLE_EQ(-4.0 + 1.0 + 6.0, dot(a, b));
  Vector3 v(3, 4, 0);
  v.w = 100.0;
  EXPECT_DOUBLE_EQ(5.0, length(v));
}

TEST(StrokePointTest, DefaultIsIdentityPoseAtThePresentTime) {
  const int64_t before = nowMilliseconds();
  const StrokePoint p;
  const int64_t after = nowMilliseconds();
  EXPECT_EQ(0.0, p.position.x);
  EXPECT_EQ(0.0, p.position.y);
  EXPECT_EQ(0.0, p.position.z);
  EXPECT_EQ(1.0, p.position.w);
  expectQuaternionNear(Quaternion(0, 0, 0, 1), p.rotation, 0.0);
  EXPECT_GE(p.timestamp, before);
  EXPECT_LE(p.timestamp, after);
}

TEST(Clock, MillisecondsSinceTheUnixEpoch) {
  using std::chrono::duration_cast;
  using std::chrono::milliseconds;
  using std::chrono::system_clock;
  const int64_t before = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  const int64_t now = nowMilliseconds();
  const int64_t after = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  EXPECT_GE(now, before);
  EXPECT_LE(now, after);
  // And independently of the chrono epoch: within a few seconds of time() in milliseconds.
  const int64_t fromTime = static_cast<int64_t>(std::time(nullptr)) * 1000;
  EXPECT_LT(std::llabs(now - fromTime), 3000);
}

}  // namespace
}  // namespace zando
