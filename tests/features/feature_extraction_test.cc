#include "features/feature_extraction.h"

#include <cmath>
#include <vector>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

namespace zando {
namespace {

using Doubles = std::vector<double>;

// The vector with every optional output; outputs that are not written keep -7.
struct Extraction {
  Extraction(const Stroke& stroke, const ModelParameters& p)
      : f(extractFeatures(stroke, p, pos, &scale, dir[0], dir[1], dir[2])) {}
  double pos[4] = {-7, -7, -7, -7}, scale = -7, dir[3][4] = {};
  Doubles f;
};

ModelParameters frequencyPath() {
  ModelParameters p;
  p.featureSelector = 3, p.featureFlagA = 0;
  return p;
}
const ModelParameters kBothPaths[] = {ModelParameters(), frequencyPath()};

// An open, tilted loop with a turning hand; the head drifts and turns, or stands still.
Stroke curve(int count, bool headMoves) {
  Stroke stroke;
  for (int i = 0; i < count; ++i) {
    const double t = 5.5 * i / (count - 1);
    stroke.handPoints.emplace_back(Vector3(0.25 * std::sin(t) + 0.05 * t, 1.4 + 0.15 * std::sin(2 * t), 0.4 + 0.04 * t),
                                   quaternionFromEuler(0.3 * std::sin(t), 0.5 * t, 0.2, 2));
    stroke.headPoints.emplace_back(Vector3(headMoves ? 0.02 * t : 0, 1.7, headMoves ? -0.01 * t : 0),
                                   quaternionFromEuler(0.1, headMoves ? 0.1 * t : 0.4, 0.05, 2));
  }
  stroke.headStart = stroke.headPoints.front();
  return stroke;
}

// Points with the head at the origin, unturned.
Stroke stroke(const std::vector<Vector3>& points) {
  Stroke s;
  for (const Vector3& p : points) s.handPoints.emplace_back(p, Quaternion()), s.headPoints.emplace_back();
  return s;
}

Doubles slice(const Doubles& f, int from, int count) { return Doubles(f.begin() + from, f.begin() + from + count); }
Doubles four(const double* v) { return Doubles(v, v + 4); }

void expectNear(const Doubles& a, const Doubles& b, double tolerance) {
  ASSERT_EQ(a.size(), b.size());
  for (size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "at " << i;
}

TEST(FeatureLayout, CountAndPlacesFollowTheModes) {
  const int base[] = {4, 7, 8, 4, 10, 4}, per[] = {3, 6, 7, 3, 9, 3};
  const auto euler = [](const double* q) {
    Doubles angles(3);
    eulerFromQuaternion(Quaternion(q), 2, angles.data());
    return angles;
  };
  const Stroke s = curve(40, true);
  for (ModelParameters p : kBothPaths) {
    p.waypointCount = 6;
    p.featureFlagA = 0;  // a proper rotation: its quaternion and its rows say the same
    const Doubles unscaled = extractFeatures(s, p);
    p.featureScaleA = 2.0, p.featureScaleB = 3.0;
    const Extraction e(s, p);  // quaternion header and waypoints: 6 * 7 + 8
    expectNear(slice(e.f, 46, 4), {2 * unscaled[46], 2 * unscaled[47], 2 * unscaled[48], 3 * e.scale}, 1e-12);
    const Eigen::Matrix3d frame = Quaternion(&e.f[42]).eigen().toRotationMatrix();
    for (int header = 0; header < 6; ++header) {
      for (int waypoint = 0; waypoint < 6; ++waypoint) {
        p.headerFeatureMode = header, p.waypointFeatureMode = waypoint;
        const Doubles f = extractFeatures(s, p);
        ASSERT_EQ(f.size(), static_cast<size_t>(base[header] + 6 * per[waypoint]));
        const int stride = (waypoint == 1 || waypoint == 2) ? per[waypoint] : 3;  // mode 4 writes as 0
        for (int i = 0; i < 6; ++i) {
          expectNear(slice(f, i * stride, 3), slice(e.f, 7 * i, 3), 1e-12);
          if (waypoint == 1) expectNear(slice(f, 6 * i + 3, 3), euler(&e.f[7 * i + 3]), 1e-12);
          if (waypoint == 2) expectNear(slice(f, 7 * i + 3, 4), slice(e.f, 7 * i + 3, 4), 1e-12);
        }
        if (waypoint == 4) expectNear(slice(f, 18, 36), Doubles(36, 0.0), 0.0);
        const int h = 6 * per[waypoint];
        if (header == 1) expectNear(slice(f, h, 3), euler(&e.f[42]), 1e-12);
        const Doubles rows = {frame(0, 0), frame(1, 0), frame(2, 0), frame(0, 1), frame(1, 1), frame(2, 1)};
        if (header == 4) expectNear(slice(f, h, 6), rows, 1e-12);
        expectNear(Doubles(f.end() - 4, f.end()), slice(e.f, 46, 4), 1e-12);
      }
    }
  }
}

TEST(Normalisation, DegenerateStrokes) {
  // Fewer than two points: zeros, and the outputs stay as they were.
  for (const ModelParameters& p : kBothPaths) {
    for (const Stroke& s : {stroke({}), stroke({{1, 2, 3}})}) {
      const Extraction e(s, p);
      EXPECT_EQ(e.f, Doubles(120, 0.0));
      EXPECT_TRUE(e.pos[0] == -7.0 && e.scale == -7.0);
    }
  }
  // Without head records the frequency path gives zeros too; the main path reads headStart.
  Stroke headless = curve(20, false);
  headless.headPoints.clear();
  EXPECT_EQ(Extraction(headless, frequencyPath()).f, Doubles(120, 0.0));
  expectNear(Extraction(headless, ModelParameters()).f, Extraction(curve(20, false), ModelParameters()).f, 1e-12);

  // One repeated point, in binary fractions so that the radius is exactly 0: the minimum radius
  // and the fixed axes.
  ModelParameters p;
  p.featureFlagA = 0, p.headerFeatureMode = 4;
  const Extraction e(stroke(std::vector<Vector3>(20, Vector3(0.5, 1.25, -0.75))), p);
  EXPECT_TRUE(e.scale == 0.01 && e.f.back() == 0.01);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(slice(e.f, 7 * i, 3), Doubles(3, 0.0));
  EXPECT_EQ(slice(e.f, 112, 6), (Doubles{1, 0, 0, 0, 1, 0}));
  EXPECT_EQ(four(e.dir[1]), (Doubles{0, 1, 0, 1}));
  EXPECT_EQ(four(e.pos), (Doubles{0.5, 1.25, -0.75, 1}));
}

// Under UseInitial, doubling the whole scene and moving it rigidly leaves the waypoint blocks
// alone, doubles centroid and radius and carries the outputs along. 90 points over 128 slots leave
// the frequency path no unfilled gap.
TEST(Normalisation, SizeAndRigidMotionLeaveTheWaypointBlocksAlone) {
  const Stroke original = curve(90, true);
  const Eigen::Quaterniond r(Eigen::AngleAxisd(1.1, Eigen::Vector3d(0.3, -0.8, 0.5).normalized()));
  const Eigen::Vector3d t(2.0, -0.5, 3.5);
  Stroke moved = original;
  for (std::vector<StrokePoint>* points : {&moved.handPoints, &moved.headPoints}) {
    for (StrokePoint& p : *points) {
      p.position = Vector3(Eigen::Vector3d(r * (2 * p.position.eigen()) + t));
      p.rotation = Quaternion(r * p.rotation.eigen());
    }
  }
  moved.headStart = moved.headPoints.front();
  for (ModelParameters p : kBothPaths) {
    for (int flags = 0; flags < 4; ++flags) {
      p.featureFlagA = flags & 1, p.featureFlagB = flags >> 1;
      const Extraction c(original, p), d(moved, p);
      expectNear(slice(d.f, 0, 116), slice(c.f, 0, 116), 1e-9);
      for (int k = 116; k < 120; ++k) EXPECT_NEAR(d.f[k], 2.0 * c.f[k], 1e-9);
      const Eigen::Vector3d pos = r * (2 * Eigen::Vector3d(c.pos)) + t, dir = r * Eigen::Vector3d(c.dir[2]);
      expectNear({d.pos[0], d.pos[1], d.pos[2], d.dir[2][0], d.dir[2][1], d.dir[2][2]},
                 {pos.x(), pos.y(), pos.z(), dir.x(), dir.y(), dir.z()}, 1e-9);
    }
  }
}

// An ignored head axis no longer changes the vector but still turns the outputs. Under UseLatest
// each waypoint is read against its own head; the outputs go back to the world with the latest
// head, or on the frequency path with headStart.
TEST(HeadFrame, IgnoredAxesHeadPolicyAndTheOutputsReference) {
  const auto lookingAt = [](double yaw) {  // the hand stays put in the world
    Stroke s = curve(40, false);
    for (StrokePoint& head : s.headPoints) head.rotation = quaternionFromEuler(0.2, yaw, 0.1, 2);
    s.headStart = s.headPoints.front();
    return s;
  };
  Stroke together;  // hand and head travel together: against the moving head the hand stands still
  for (int i = 0; i < 60; ++i) {
    const Vector3 head(0.05 * i, 1.7, 0.02 * i);
    together.headPoints.emplace_back(head, Quaternion());
    together.handPoints.emplace_back(add(head, Vector3(0.1, -0.3, 0.4)), Quaternion());
  }
  together.headStart = together.headPoints.front();
  Stroke s = curve(70, true);
  s.headStart = StrokePoint(Vector3(-1, 1.5, 2), quaternionFromEuler(0.0, 1.2, 0.0, 2));

  for (ModelParameters p : kBothPaths) {
    const Extraction e(s, p);
    const StrokePoint& head = p.featureSelector == 3 ? s.headStart : s.headPoints.back();
    Eigen::Matrix4d m;
    matrixFromPose(head.position, head.rotation, m.data());
    const Eigen::Vector4d pos = m * Eigen::Vector4d(e.f[116], e.f[117], e.f[118], 1.0);
    expectNear(four(e.pos), {pos.x(), pos.y(), pos.z(), 1.0}, 1e-12);

    EXPECT_GT(std::fabs(Extraction(lookingAt(0.3), p).f[116] - Extraction(lookingAt(-0.9), p).f[116]), 0.05);
    EXPECT_GT(Extraction(together, p).scale, 0.5);
    p.rotationFrameY = 1;
    const Extraction a(lookingAt(0.3), p), b(lookingAt(-0.9), p);
    expectNear(b.f, a.f, 1e-9);
    const Eigen::Vector3d eye(0, 1.7, 0), pa(a.pos), pb(b.pos);
    EXPECT_GT((pa - pb).norm(), 0.1);
    EXPECT_NEAR((pa - eye).norm(), (pb - eye).norm(), 1e-9);

    p.rotationFrameY = 0, p.updateHeadPositionPolicy = 0;
    const Extraction latest(together, p);
    EXPECT_LT(latest.scale, 1e-9);
    expectNear(slice(latest.f, 116, 3), {0.1, -0.3, 0.4}, 1e-12);
  }
}

TEST(StrokeFrame, PrincipalAxesWeighTheStartAndPointAwayFromIt) {
  // Three waypoints 0, (1, 0, 0), (0, 1.5, 0): weights 1, 2/3, 1/3 make the moment diag(4/9, 2.25/9),
  // so x is the first axis, though y would be without the weights. Both point away from the start.
  ModelParameters p;
  p.waypointCount = 3;
  const Extraction e(stroke({{0, 0, 0}, {1, 0, 0}, {0, 1.5, 0}}), p);
  expectNear({e.dir[0][0], e.dir[0][1], e.dir[1][0], e.dir[1][1]}, {1, 0, 0, 1}, 1e-12);
  const Extraction mirrored(stroke({{0, 0, 0}, {-1, 0, 0}, {0, -1.5, 0}}), p);
  expectNear({mirrored.dir[0][0], mirrored.dir[0][1], mirrored.dir[1][0], mirrored.dir[1][1]}, {-1, 0, 0, -1}, 1e-12);
  EXPECT_GT(mirrored.f[7], 1.0);  // rotated into the frame, the first step runs along +x
}

TEST(MainPath, StrokeOfExactlyNPointsIsSelectedAsItStands) {
  // Uneven points on a line: with n points turning takes them all, with one fewer the stroke is
  // first expanded to even steps.
  const double xs[] = {0.0, 0.1, 0.15, 0.4, 0.45, 0.5, 0.8, 1.0};
  ModelParameters p;
  p.waypointCount = 8;
  for (int count : {8, 7}) {
    std::vector<Vector3> points;
    for (int i = 0; i < count; ++i) points.emplace_back(xs[i], 0, 0);
    const Doubles f = extractFeatures(stroke(points), p);
    for (int i = 0; i < 8; ++i) EXPECT_NEAR(f[7 * i] / f[49], count == 8 ? xs[i] : i / 7.0, 1e-12) << count;
  }
}

TEST(MainPath, ContinuousStrokeIsReadBackwardFromItsBestScoredWaypoint) {
  // A diamond turned evenly at every corner, so turning takes all five points. Unturned hands score
  // 1 - x - y - z, highest at the bottom corner, number 2: the blocks come as 2 1 0 4 3.
  Stroke s = stroke({{0, 0, 0.3}, {0.1, -0.1, 0.3}, {0, -0.22, 0.3}, {-0.1, -0.1, 0.3}, {0, 0, 0.3}});
  ModelParameters p;
  p.waypointCount = 5, p.featureFlagC = false;
  const Doubles base = extractFeatures(s, p);
  s.sampleType = 1;
  const Doubles continuous = extractFeatures(s, p);
  const int order[] = {2, 1, 0, 4, 3};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(slice(continuous, 7 * i, 7), slice(base, 7 * order[i], 7));
  EXPECT_EQ(slice(continuous, 35, 8), slice(base, 35, 8));
}

// The frequency path spreads the points over 32 slots; two points fill only slots 0 and 31, and
// all others keep the default record (origin, identity). A middle point goes to slot 16, with the
// slots before it interpolated. Checked against a direct transform of the slots, built by hand.
TEST(FrequencyPath, SlotsHoldThePointsAndDefaultRecordsInTheGap) {
  const Eigen::Vector3d a(0.1, 0.2, 0.3), b(0.4, 0.0, 0.6), e(-0.2, 0.3, 0.1);
  const auto turned = [](double angle) {
    return Eigen::Quaterniond(Eigen::AngleAxisd(angle, Eigen::Vector3d::UnitY()));
  };
  ModelParameters p = frequencyPath();
  p.featureFlagC = false;
  for (int count : {2, 3}) {
    SCOPED_TRACE(count);
    Stroke s = count == 2 ? stroke({Vector3(a), Vector3(e)}) : stroke({Vector3(a), Vector3(b), Vector3(e)});
    s.handPoints[1].rotation = Quaternion(turned(1.0));
    Eigen::Matrix<double, 32, 7> slots = Eigen::Matrix<double, 32, 7>::Zero();  // x y z, rotation x y z w
    slots.col(6).setOnes();
    const auto place = [&](int slot, const Eigen::Vector3d& position, double angle) {
      slots.row(slot) << position.transpose(), turned(angle).coeffs().transpose();
    };
    for (int k = 0; k <= (count == 2 ? 0 : 16); ++k) place(k, a + (b - a) * (k / 16.0), k / 16.0);
    place(31, e, count == 2 ? 1.0 : 0.0);

    const Doubles f = extractFeatures(s, p);
    const Eigen::RowVector3d c = slots.leftCols<3>().colwise().mean();
    slots.leftCols<3>().rowwise() -= c;
    const double r = std::sqrt(slots.leftCols<3>().squaredNorm() / 32);
    slots.leftCols<3>() /= r;
    // Waypoint k holds the real part of coefficient k / 2 when k is even, the imaginary part when odd.
    for (int k = 0; k < 16; ++k) {
      Eigen::Matrix<double, 1, 32> wave;
      for (int j = 0; j < 32; ++j) {
        const double angle = 2 * 3.14159265358979323846 * j * (k / 2) / 32;
        wave[j] = k % 2 == 0 ? std::cos(angle) : -std::sin(angle);
      }
      const Eigen::Matrix<double, 1, 7> expected = wave * slots / 32;
      expectNear(slice(f, 7 * k, 7), Doubles(expected.data(), expected.data() + 7), 1e-12);
    }
    expectNear(Doubles(f.end() - 4, f.end()), {c.x(), c.y(), c.z(), r}, 1e-12);
  }
}

}  // namespace
}  // namespace zando
