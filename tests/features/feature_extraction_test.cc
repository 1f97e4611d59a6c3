#include "features/feature_extraction.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

namespace zando {
namespace {

using Doubles = std::vector<double>;

struct Extraction {
  Doubles f;
  double pos[4] = {-7, -7, -7, -7};
  double scale = -7;
  double dir[3][4] = {};
};

Extraction extract(const Stroke& stroke, const ModelParameters& p) {
  Extraction e;
  e.f = extractFeatures(stroke, p, e.pos, &e.scale, e.dir[0], e.dir[1], e.dir[2]);
  return e;
}

ModelParameters frequencyPath() {
  ModelParameters p;
  p.featureSelector = 3;
  p.featureFlagA = 0;
  return p;
}
const ModelParameters kBothPaths[] = {ModelParameters(), frequencyPath()};

// An open, tilted loop with a turning hand; the head drifts and turns, or stands still at `head`.
Stroke curve(int count, bool headMoves, const Vector3& head = Vector3(0, 1.7, 0)) {
  Stroke stroke;
  for (int i = 0; i < count; ++i) {
    const double t = 5.5 * i / (count - 1);
    stroke.handPoints.emplace_back(Vector3(0.25 * std::sin(t) + 0.05 * t, 1.4 + 0.15 * std::sin(2 * t), 0.4 + 0.04 * t),
                                   quaternionFromEuler(0.3 * std::sin(t), 0.5 * t, 0.2, 2));
    stroke.headPoints.emplace_back(headMoves ? Vector3(0.02 * t, 1.7, -0.01 * t) : head,
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
    p.featureScaleA = 2.0;
    p.featureScaleB = 3.0;
    const Extraction e = extract(s, p);  // quaternion header and waypoints: 6 * 7 + 8
    expectNear(slice(e.f, 46, 4), {2 * unscaled[46], 2 * unscaled[47], 2 * unscaled[48], 3 * e.scale}, 1e-12);
    const Eigen::Matrix3d frame = Quaternion(&e.f[42]).eigen().toRotationMatrix();
    for (int header : {0, 1, 2, 3, 4, 5}) {
      for (int waypoint : {0, 1, 2, 3, 4, 5}) {
        p.headerFeatureMode = header;
        p.waypointFeatureMode = waypoint;
        const Doubles f = extractFeatures(s, p);
        ASSERT_EQ(f.size(), static_cast<size_t>(base[header] + 6 * per[waypoint]));
        const int stride = (waypoint == 1 || waypoint == 2) ? per[waypoint] : 3;  // mode 4 writes as 0
        for (int i = 0; i < 6; ++i) {
          expectNear(slice(f, i * stride, 3), slice(e.f, 7 * i, 3), 1e-12);
          if (waypoint == 1) expectNear(slice(f, 6 * i + 3, 3), euler(&e.f[7 * i + 3]), 1e-12);
          if (waypoint == 2) expectNear(slice(f, 7 * i + 3, 4), slice(e.f, 7 * i + 3, 4), 1e-12);
        }
        if (waypoint == 4) {
          EXPECT_EQ(slice(f, 18, 36), Doubles(36, 0.0));
        }
        const int h = 6 * per[waypoint];
        if (header == 1) expectNear(slice(f, h, 3), euler(&e.f[42]), 1e-12);
        if (header == 4) {
          expectNear(slice(f, h, 6), {frame(0, 0), frame(1, 0), frame(2, 0), frame(0, 1), frame(1, 1), frame(2, 1)},
                     1e-12);
        }
        expectNear(Doubles(f.end() - 4, f.end()), slice(e.f, 46, 4), 1e-12);
      }
    }
  }
}

TEST(FeatureLayout, ShortStrokeGivesZerosAndLeavesTheOutputsAlone) {
  for (const ModelParameters& p : kBothPaths) {
    for (const Stroke& s : {stroke({}), stroke({{1, 2, 3}})}) {
      const Extraction e = extract(s, p);
      EXPECT_EQ(e.f, Doubles(120, 0.0));
      EXPECT_EQ(e.pos[0], -7.0);
      EXPECT_EQ(e.scale, -7.0);
    }
  }
  // Without head records only the main path goes on, reading every waypoint against headStart.
  Stroke headless = curve(20, false);
  headless.headPoints.clear();
  EXPECT_EQ(extract(headless, frequencyPath()).f, Doubles(120, 0.0));
  expectNear(extract(headless, ModelParameters()).f, extract(curve(20, false), ModelParameters()).f, 1e-12);
}

TEST(Normalisation, RepeatedPointHasTheMinimumRadiusAndTheFixedAxes) {
  // Binary fractions, so that the centroid is the point itself and the radius exactly 0.
  const Stroke s = stroke(std::vector<Vector3>(20, Vector3(0.5, 1.25, -0.75)));
  ModelParameters p;
  p.featureFlagA = 0;
  p.headerFeatureMode = 4;
  const Extraction e = extract(s, p);
  EXPECT_EQ(e.scale, 0.01);
  EXPECT_EQ(e.f.back(), 0.01);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(slice(e.f, 7 * i, 3), Doubles(3, 0.0));
  EXPECT_EQ(slice(e.f, 112, 6), (Doubles{1, 0, 0, 0, 1, 0}));
  EXPECT_EQ((Doubles{e.dir[1][0], e.dir[1][1], e.dir[1][2], e.dir[1][3]}), (Doubles{0, 1, 0, 1}));
  EXPECT_EQ((Doubles{e.pos[0], e.pos[1], e.pos[2], e.pos[3]}), (Doubles{0.5, 1.25, -0.75, 1}));
}

TEST(Normalisation, SizeAndRigidMotionLeaveTheWaypointBlocksAlone) {
  // Head at the origin, so that doubling the hand positions doubles the stroke in the head frame.
  const Stroke small = curve(50, false, Vector3(0, 0, 0));
  Stroke large = small;
  for (StrokePoint& point : large.handPoints) point.position = scale(point.position, 2.0);
  // Moving head and hand together; 90 points over 128 slots leave no unfilled gap.
  const Stroke original = curve(90, true);
  const Eigen::Quaterniond r(Eigen::AngleAxisd(1.1, Eigen::Vector3d(0.3, -0.8, 0.5).normalized()));
  const Eigen::Vector3d t(2.0, -0.5, 3.5);
  const auto move = [&](StrokePoint& p) {
    p = StrokePoint(Vector3(Eigen::Vector3d(r * p.position.eigen() + t)), Quaternion(r * p.rotation.eigen()));
  };
  Stroke moved = original;
  for (StrokePoint& p : moved.handPoints) move(p);
  for (StrokePoint& p : moved.headPoints) move(p);
  move(moved.headStart);

  for (ModelParameters p : kBothPaths) {
    for (int flags = 0; flags < 4; ++flags) {
      p.featureFlagA = flags & 1;
      p.featureFlagB = flags >> 1;
      const Extraction a = extract(small, p), b = extract(large, p);
      expectNear(slice(b.f, 0, 116), slice(a.f, 0, 116), 1e-9);
      for (int k = 116; k < 120; ++k) EXPECT_NEAR(b.f[k], 2.0 * a.f[k], 1e-9);

      const Extraction c = extract(original, p), d = extract(moved, p);
      expectNear(d.f, c.f, 1e-9);
      const Eigen::Vector3d pos = r * Eigen::Vector3d(c.pos) + t, dir = r * Eigen::Vector3d(c.dir[2]);
      expectNear({d.pos[0], d.pos[1], d.pos[2], d.dir[2][0], d.dir[2][1], d.dir[2][2]},
                 {pos.x(), pos.y(), pos.z(), dir.x(), dir.y(), dir.z()}, 1e-9);
    }
  }
}

TEST(HeadFrame, IgnoredYawNoLongerChangesTheVectorButStillTurnsTheOutputs) {
  const auto lookingAt = [](double yaw) {  // the hand stays put in the world
    Stroke s = curve(40, false);
    for (StrokePoint& head : s.headPoints) head.rotation = quaternionFromEuler(0.2, yaw, 0.1, 2);
    s.headStart = s.headPoints.front();
    return s;
  };
  for (ModelParameters p : kBothPaths) {
    EXPECT_GT(std::fabs(extract(lookingAt(0.3), p).f[116] - extract(lookingAt(-0.9), p).f[116]), 0.05);
    p.rotationFrameY = 1;
    const Extraction a = extract(lookingAt(0.3), p), b = extract(lookingAt(-0.9), p);
    expectNear(b.f, a.f, 1e-9);
    const Eigen::Vector3d head(0, 1.7, 0), pa(a.pos), pb(b.pos);
    EXPECT_GT((pa - pb).norm(), 0.1);
    EXPECT_NEAR((pa - head).norm(), (pb - head).norm(), 1e-9);
  }
}

TEST(HeadFrame, UseLatestReadsEachWaypointAgainstItsOwnHeadAndOutputsUseTheRightOne) {
  Stroke together;  // hand and head travel together: against the moving head the hand stands still
  for (int i = 0; i < 60; ++i) {
    const Vector3 head(0.05 * i, 1.7, 0.02 * i);
    together.headPoints.emplace_back(head, Quaternion());
    together.handPoints.emplace_back(add(head, Vector3(0.1, -0.3, 0.4)), Quaternion());
  }
  together.headStart = together.headPoints.front();
  for (ModelParameters p : kBothPaths) {
    EXPECT_GT(extract(together, p).scale, 0.5);
    p.updateHeadPositionPolicy = 0;
    const Extraction e = extract(together, p);
    EXPECT_LT(e.scale, 1e-9);
    expectNear(slice(e.f, 116, 3), {0.1, -0.3, 0.4}, 1e-12);
  }
  // The centroid goes back to the world with the latest head, or on the frequency path headStart.
  Stroke s = curve(70, true);
  s.headStart = StrokePoint(Vector3(-1, 1.5, 2), quaternionFromEuler(0.0, 1.2, 0.0, 2));
  for (const ModelParameters& p : kBothPaths) {
    const Extraction e = extract(s, p);
    const StrokePoint& head = p.featureSelector == 3 ? s.headStart : s.headPoints.back();
    Eigen::Matrix4d m;
    matrixFromPose(head.position, head.rotation, m.data());
    const Eigen::Vector4d pos = m * Eigen::Vector4d(e.f[116], e.f[117], e.f[118], 1.0);
    expectNear({e.pos[0], e.pos[1], e.pos[2], e.pos[3]}, {pos.x(), pos.y(), pos.z(), 1.0}, 1e-12);
  }
}

TEST(StrokeFrame, PrincipalAxesWeighTheStartAndPointAwayFromIt) {
  // Three waypoints 0, (1, 0, 0), (0, 1.5, 0): weights 1, 2/3, 1/3 make the moment diag(4/9, 2.25/9),
  // so x is the first axis, though y would be without the weights. Both point away from the start.
  ModelParameters p;
  p.waypointCount = 3;
  const Extraction e = extract(stroke({{0, 0, 0}, {1, 0, 0}, {0, 1.5, 0}}), p);
  expectNear({e.dir[0][0], e.dir[0][1], e.dir[1][0], e.dir[1][1]}, {1, 0, 0, 1}, 1e-12);
  const Extraction mirrored = extract(stroke({{0, 0, 0}, {-1, 0, 0}, {0, -1.5, 0}}), p);
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
  p.waypointCount = 5;
  p.featureFlagC = false;
  const Doubles base = extractFeatures(s, p);
  s.sampleType = 1;
  const Doubles continuous = extractFeatures(s, p);
  const int order[] = {2, 1, 0, 4, 3};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(slice(continuous, 7 * i, 7), slice(base, 7 * order[i], 7));
  EXPECT_EQ(slice(continuous, 35, 8), slice(base, 35, 8));

  // More waypoints than the usual 128 of a window: still only a reordering.
  Stroke longStroke = curve(300, true);
  p.waypointCount = 200;
  Doubles first = extractFeatures(longStroke, p);
  longStroke.sampleType = 1;
  Doubles second = extractFeatures(longStroke, p);
  EXPECT_NE(first, second);
  std::sort(first.begin(), first.end());
  std::sort(second.begin(), second.end());
  EXPECT_EQ(first, second);
}

// Frequency features of a short stroke against a direct transform of its 32 slots, built by hand.
void expectFrequencyFeatures(const Stroke& s, const std::vector<Eigen::Vector3d>& positions,
                             const std::vector<Eigen::Quaterniond>& rotations) {
  ModelParameters p = frequencyPath();
  p.featureFlagC = false;
  const Doubles f = extractFeatures(s, p);
  Eigen::Vector3d c = Eigen::Vector3d::Zero();
  double r2 = 0;
  for (const Eigen::Vector3d& x : positions) c += x / 32;
  for (const Eigen::Vector3d& x : positions) r2 += (x - c).squaredNorm() / 32;
  const double r = std::sqrt(r2);
  for (int k = 0; k < 16; ++k) {
    for (int ch = 0; ch < 7; ++ch) {
      std::complex<double> sum = 0;
      for (int j = 0; j < 32; ++j) {
        const double v = ch < 3 ? (positions[j][ch] - c[ch]) / r : rotations[j].coeffs()[ch - 3];
        sum += v * std::polar(1.0, -2 * 3.14159265358979323846 * j * (k / 2) / 32.0);
      }
      EXPECT_NEAR(f[7 * k + ch], (k % 2 == 0 ? sum.real() : sum.imag()) / 32, 1e-12) << k << " " << ch;
    }
  }
  expectNear(Doubles(f.end() - 4, f.end()), {c.x(), c.y(), c.z(), r}, 1e-12);
}

TEST(FrequencyPath, SlotsHoldThePointsAndDefaultRecordsInTheGap) {
  // Two points fill only slots 0 and 31; all others keep the default record (origin, identity).
  const Eigen::Vector3d a(0.1, 0.2, 0.3), b(0.4, 0.0, 0.6), e(-0.2, 0.3, 0.1);
  const Eigen::Quaterniond turned(Eigen::AngleAxisd(1.0, Eigen::Vector3d::UnitY()));
  Stroke two = stroke({Vector3(a), Vector3(e)});
  two.handPoints[1].rotation = Quaternion(turned);
  std::vector<Eigen::Vector3d> positions(32, Eigen::Vector3d::Zero());
  std::vector<Eigen::Quaterniond> rotations(32, Eigen::Quaterniond::Identity());
  positions[0] = a, positions[31] = e, rotations[31] = turned;
  expectFrequencyFeatures(two, positions, rotations);

  // A middle point goes to slot 16, with the slots before it interpolated; 17 to 30 stay default.
  Stroke three = stroke({Vector3(a), Vector3(b), Vector3(e)});
  three.handPoints[1].rotation = Quaternion(turned);
  rotations[31] = Eigen::Quaterniond::Identity();
  for (int k = 0; k <= 16; ++k) {
    positions[k] = a + (b - a) * (k / 16.0);
    rotations[k] = Eigen::AngleAxisd(k / 16.0, Eigen::Vector3d::UnitY());
  }
  expectFrequencyFeatures(three, positions, rotations);
}

}  // namespace
}  // namespace zando
