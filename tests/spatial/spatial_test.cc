// Poses and rotation conversions. Expected values are worked out by hand or built independently
// from Eigen's angle-axis rotations and rotation matrices, never from the functions under test.
#include "spatial/spatial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <tuple>

namespace zando {
namespace {

const double kPi = 3.141592653589793;
const double kHalfSqrt2 = std::sqrt(0.5);
// Axis letters of each rotation order, in the order the axis rotations are multiplied.
const char* const kOrderNames[6] = {"XYZ", "XZY", "YXZ", "YZX", "ZXY", "ZYX"};

int axisIndex(char letter) { return letter - 'X'; }

// Product of the three axis rotations, left to right in the letters' order; angles are x, y, z.
Quaternion composeIndependently(const double angles[3], const std::string& order) {
  Eigen::Quaterniond result = Eigen::Quaterniond::Identity();
  for (char letter : order) {
    const int axis = axisIndex(letter);
    result = result * Eigen::Quaterniond(Eigen::AngleAxisd(angles[axis], Eigen::Vector3d::Unit(axis)));
  }
  return Quaternion(result);
}

Quaternion normalizedQuaternion(double x, double y, double z, double w) {
  return Quaternion(Eigen::Quaterniond(w, x, y, z).normalized());
}

Quaternion negated(const Quaternion& q) { return Quaternion(-q.x, -q.y, -q.z, -q.w); }

void expectQuaternionNear(const Quaternion& expected, const Quaternion& actual, double tolerance) {
  const Eigen::Vector4d e = expected.eigen().coeffs(), a = actual.eigen().coeffs();
  EXPECT_TRUE(((e - a).cwiseAbs().array() <= tolerance).all()) << e.transpose() << " vs " << a.transpose();
}

// q and -q are the same rotation.
double distanceUpToSign(const Quaternion& a, const Quaternion& b) {
  const Eigen::Vector4d p = a.eigen().coeffs(), q = b.eigen().coeffs();
  return std::min((p - q).cwiseAbs().sum(), (p + q).cwiseAbs().sum());
}

Eigen::Vector3d toVector(const double v[3]) { return Eigen::Vector3d(v[0], v[1], v[2]); }
Eigen::Vector4d xyzw(const Vector3& v) { return Eigen::Vector4d(v.x, v.y, v.z, v.w); }

// Each case of the conversion makes its own component positive (w, x, y or z), so the sign of the
// result tells which case ran: the first four inputs have that component's sign opposite to the
// others and come back negated. Half turns about diagonal axes tie on the diagonal; the strict
// comparisons hand a tie to the later case.
TEST(MatrixConversion, EachCaseChoosesTheSignOfItsComponentAndTiesFallToTheLaterCase) {
  const double h = kHalfSqrt2;
  const auto flipped = [](const Quaternion& q) { return std::make_pair(q.eigen().toRotationMatrix(), negated(q)); };
  // 2 v v^T / |v|^2 - I, exact for these axes.
  const auto halfTurn = [](double x, double y, double z) {
    const Eigen::Vector3d v(x, y, z);
    return Eigen::Matrix3d(2 * v * v.transpose() / v.squaredNorm() - Eigen::Matrix3d::Identity());
  };
  const std::pair<Eigen::Matrix3d, Quaternion> cases[] = {
      flipped(normalizedQuaternion(0.3, -0.2, 0.4, -0.8)),  // trace positive: w
      flipped(normalizedQuaternion(-0.7, 0.3, 0.5, 0.2)),  // m0 largest: x
      flipped(normalizedQuaternion(0.3, -0.7, 0.5, 0.2)),  // m5 largest: y
      flipped(normalizedQuaternion(0.3, 0.5, -0.7, 0.2)),  // m10 largest: z
      {halfTurn(1, -1, 0), Quaternion(-h, h, 0, 0)},  // m0 == m5 > m10: y
      {halfTurn(1, 0, -1), Quaternion(-h, 0, h, 0)},  // m0 == m10 > m5: z
      {halfTurn(0, 1, -1), Quaternion(0, -h, h, 0)},  // m5 == m10 > m0: z
      // A third of a turn about (1, 1, 1): trace exactly 0 is not the first case; three-way tie.
      {(Eigen::Matrix3d() << 0, 1, 0, 0, 0, 1, 1, 0, 0).finished(), Quaternion(0.5, 0.5, 0.5, -0.5)},
  };
  for (const auto& [r, expected] : cases) {
    SCOPED_TRACE(testing::Message() << r);
    expectQuaternionNear(expected, quaternionFromMatrix(Eigen::Affine3d(r).matrix().data()), 1e-12);
  }
  // Nothing is checked: a non-finite element comes through.
  const Eigen::Matrix4d nan = Eigen::Matrix4d::Constant(std::numeric_limits<double>::quiet_NaN());
  EXPECT_TRUE(std::isnan(quaternionFromMatrix(nan.data()).w));
}

TEST(MatrixConversion, PoseMatrixMatchesEigenAndRoundTripsThroughStrokePoint) {
  std::mt19937 engine(20240611);
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> coordinate(-10.0, 10.0);
  for (int i = 0; i < 100; ++i) {
    const Quaternion q = normalizedQuaternion(normal(engine), normal(engine), normal(engine), normal(engine));
    const Vector3 p(coordinate(engine), coordinate(engine), coordinate(engine));
    Eigen::Matrix4d m;
    matrixFromPose(p, q, m.data());
    const Eigen::Matrix4d expected = (Eigen::Translation3d(p.eigen()) * q.eigen().toRotationMatrix()).matrix();
    ASSERT_LT((m - expected).cwiseAbs().maxCoeff(), 1e-12) << m << "\n\n" << expected;

    const StrokePoint back(m.data());
    EXPECT_LT(distanceUpToSign(q, back.rotation), 1e-12);
    EXPECT_EQ(p.eigen(), back.position.eigen());
  }
}

TEST(EulerConversion, EachOrderComposesItsAxisRotationsLeftToRightAndUnknownOrdersActAsYXZ) {
  const double angles[3] = {0.4, -1.1, 2.3};
  const Quaternion q = normalizedQuaternion(0.1, 0.7, -0.3, 0.5);
  for (int order : {0, 1, 2, 3, 4, 5, 6, 7, -1, 1000}) {
    SCOPED_TRACE(order);
    const int actsAs = order >= 0 && order < 6 ? order : kRotationOrderYXZ;
    // The exact quaternion, sign included: the product of the half-angle quaternions.
    expectQuaternionNear(composeIndependently(angles, kOrderNames[actsAs]), quaternionFromEuler(angles, order), 1e-14);
    double expected[3], actual[3];
    eulerFromQuaternion(q, actsAs, expected);
    eulerFromQuaternion(q, order, actual);
    EXPECT_EQ(toVector(expected), toVector(actual));
  }
}

// Angles in the principal ranges (middle axis within a quarter turn) come back unchanged, and any
// quaternion survives the round trip up to sign.
TEST(EulerConversion, RoundTripsInEveryOrder) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> outer(-3.1, 3.1), middle(-1.5, 1.5);
  std::normal_distribution<double> normal;
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    const int middleAxis = axisIndex(kOrderNames[order][1]);
    for (int i = 0; i < 100; ++i) {
      double angles[3], back[3];
      for (int axis = 0; axis < 3; ++axis) angles[axis] = axis == middleAxis ? middle(engine) : outer(engine);
      eulerFromQuaternion(composeIndependently(angles, kOrderNames[order]), order, back);
      EXPECT_LT((toVector(angles) - toVector(back)).cwiseAbs().maxCoeff(), 1e-9);

      const Quaternion q = normalizedQuaternion(normal(engine), normal(engine), normal(engine), normal(engine));
      eulerFromQuaternion(q, order, back);
      EXPECT_LT(distanceUpToSign(q, quaternionFromEuler(back, order)), 1e-9);
    }
  }
}

// At a quarter turn of the middle axis the first and last axes coincide; the conversion puts the
// whole turn into one angle, sets the last axis of the order to zero, and the rotation survives.
// The lock starts at an element of exactly 0.9999999: q = (w 1, middle axis h, first axis 0.25)
// makes the middle element exactly 2h in every order.
TEST(EulerConversion, GimbalLockFromTheThresholdOn) {
  for (int order = 0; order < 6; ++order) {
    SCOPED_TRACE(kOrderNames[order]);
    const std::string name = kOrderNames[order];
    const int first = axisIndex(name[0]), middle = axisIndex(name[1]), last = axisIndex(name[2]);
    double angles[3], back[3];
    const double outerAngles[][2] = {{0.0, 0.0}, {0.8, 0.3}, {-2.5, 1.9}, {0.8, -1.9}};
    for (double quarter : {kPi / 2, -kPi / 2}) {
      for (const auto& outer : outerAngles) {
        angles[first] = outer[0], angles[middle] = quarter, angles[last] = outer[1];
        const Quaternion q = composeIndependently(angles, name);
        eulerFromQuaternion(q, order, back);
        EXPECT_EQ(0.0, back[last]);
        EXPECT_NEAR(quarter, back[middle], 1e-6);
        EXPECT_LT(distanceUpToSign(q, quaternionFromEuler(back, order)), 1e-6);
      }
    }
    const auto convert = [&](double h) {
      double c[3] = {0, 0, 0};
      c[middle] = h, c[first] = 0.25;
      eulerFromQuaternion(Quaternion(c[0], c[1], c[2], 1.0), order, angles);
    };
    const double atLimit = 0.9999999 / 2;  // halving is exact
    convert(atLimit);
    EXPECT_EQ(0.0, angles[last]);
    EXPECT_DOUBLE_EQ(std::asin(0.9999999), std::fabs(angles[middle]));
    convert(std::nextafter(atLimit, 0.0));
    EXPECT_GT(std::fabs(angles[last]), 0.1);
    // A non-unit quaternion can push the element past 1: clamped to a quarter turn, not NaN.
    convert(0.6);
    EXPECT_DOUBLE_EQ(kPi / 2, std::fabs(angles[middle]));
    EXPECT_EQ(0.0, angles[last]);
  }
}

TEST(Slerp, ShortestPathAndLinearWeightsForParallelInputs) {
  // A quarter of the way from identity to quarterZ is checked through interpolatePoint below.
  const Quaternion identity, quarterZ(0, 0, kHalfSqrt2, kHalfSqrt2);
  const Quaternion sixteenthZ(0, 0, std::sin(kPi / 16), std::cos(kPi / 16));
  const Quaternion q = normalizedQuaternion(0.2, -0.4, 0.1, 0.9);
  const Quaternion two(0, 0, 0, 2), minusOne(0, 0, 0, -1);
  const std::tuple<Quaternion, Quaternion, double, Quaternion> cases[] = {
      {identity, quarterZ, 1.0, quarterZ},
      // The same rotation with the opposite sign goes the short way, ending on the negated input.
      {identity, negated(quarterZ), 0.25, sixteenthZ},
      {q, q, 0.3, q},  // dot exactly 1: no division by sin(0)
      // |dot| >= 1 takes the linear weights (1 - t, t), signed, and leaves the result unnormalised.
      {two, Quaternion(), 0.25, Quaternion(0, 0, 0, 1.75)},
      {two, minusOne, 0.25, Quaternion(0, 0, 0, 1.75)},
  };
  for (const auto& [a, b, t, expected] : cases) expectQuaternionNear(expected, slerpShortest(a, b, t), 1e-15);

  // The linear weights hold from a dot product of 1 - 2^-52 up. Inside [0, 1] the branches differ
  // by less than rounding, so extrapolate to t = 2^26: linearly (1 - t) + t (1 - 2^-52) is exactly
  // 1 - 2^-26; the spherical weights would swing far from 1.
  const double t = 67108864.0;
  EXPECT_EQ(1.0 - std::ldexp(1.0, -26), slerpShortest(identity, Quaternion(0, 0, 0, 1.0 - std::ldexp(1.0, -52)), t).w);
  EXPECT_LT(slerpShortest(identity, Quaternion(0, 0, 0, 1.0 - std::ldexp(1.0, -51)), t).w, 0.5);
}

TEST(AngleDistance, WrapsOnceAroundAFullTurnOnly) {
  const double fullTurn = 2 * kPi;
  const double cases[][3] = {{0, 6, fullTurn - 6}, {0, 7, 7 - fullTurn}, {0, 20, 20 - fullTurn},  // not folded below pi
                             {1, -2, 3}, {1.25, 1.25, 0}};
  for (const auto& c : cases) EXPECT_NEAR(c[2], angleDistance(c[0], c[1]), 1e-14) << c[0] << " " << c[1];
}

TEST(ReduceHeadRotation, RemovesExactlyTheFlaggedAnglesInEveryOrder) {
  // All flags zero: neither normalised nor made canonical in sign.
  const Quaternion raw(0.1, 0.2, 0.3, -5.0);
  const Quaternion same = reduceHeadRotation(raw, 0, 0, 0, kRotationOrderYXZ);
  EXPECT_EQ(raw.eigen().coeffs(), same.eigen().coeffs());

  const double angles[3] = {0.5, -0.6, 1.2};
  for (int order = 0; order < 6; ++order) {
    const Quaternion q = composeIndependently(angles, kOrderNames[order]);
    for (int flags = 1; flags < 8; ++flags) {
      SCOPED_TRACE(testing::Message() << kOrderNames[order] << " flags " << flags);
      double kept[3];
      for (int axis = 0; axis < 3; ++axis) kept[axis] = (flags >> axis) & 1 ? 0.0 : angles[axis];
      // Any non-zero flag counts, not only 1.
      const Quaternion actual = reduceHeadRotation(q, flags & 1, flags & 2, flags & 4, order);
      EXPECT_LT(distanceUpToSign(composeIndependently(kept, kOrderNames[order]), actual), 1e-12);
    }
  }
}

TEST(StrokePointTest, NewAndInterpolatedPointsAreStampedWithMillisecondsSinceTheUnixEpoch) {
  using namespace std::chrono;
  const int64_t before = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  StrokePoint a(Vector3(0, 2, -4), Quaternion()), b(Vector3(4, -2, 4), Quaternion(0, 0, kHalfSqrt2, kHalfSqrt2));
  a.timestamp = 1000, b.timestamp = 2000;
  // Linear position, spherical rotation, present time.
  const StrokePoint p = interpolatePoint(a, b, 0.25);
  // A new point is stamped with the present time too.
  const StrokePoint fresh;
  const int64_t after = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  EXPECT_EQ(Eigen::Vector4d(1, 1, -2, 1), xyzw(p.position));
  expectQuaternionNear(Quaternion(0, 0, std::sin(kPi / 16), std::cos(kPi / 16)), p.rotation, 1e-15);
  EXPECT_TRUE(p.timestamp >= before && p.timestamp <= after) << p.timestamp;
  EXPECT_TRUE(fresh.timestamp >= before && fresh.timestamp <= after) << fresh.timestamp;
}

}  // namespace
}  // namespace zando
