// The lane-by-lane warping against a plain one-pair-at-a-time warping, its lower bounds, its giving
// up, and its instruction sets against each other and against the bits every processor must give.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "features/shape_matching.h"

namespace zando {
namespace {

// A wandering path of `points` points whose coordinates are multiples of 1/256, exact in any
// floating-point type: the same on every processor before the first rounding.
StrokeShape exactShape(std::mt19937& rng, int points, bool stored) {
  std::vector<Eigen::Vector3d> path;
  Eigen::Vector3d p = Eigen::Vector3d::Zero();
  for (int i = 0; i < points; ++i) {
    for (int k = 0; k < 3; ++k) p[k] += (static_cast<int>(rng() % 17) - 8) / 256.0;
    path.push_back(p);
  }
  StrokeShape shape;
  makePathShape(path, stored, shape);
  return shape;
}

uint32_t bitsOf(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// The warping written out cell by cell, in double precision.
double plainWarping(const WarpingQuery& a, const WarpingQuery& b) {
  const int n = kShapePoints;
  std::vector<double> table((n + 1) * (n + 1), INFINITY);
  const auto at = [&](int i, int j) -> double& { return table[static_cast<size_t>(i * (n + 1) + j)]; };
  at(0, 0) = 0.0;
  for (int i = 1; i <= n; ++i) {
    for (int j = std::max(1, i - kShapeBand); j <= std::min(n, i + kShapeBand); ++j) {
      const int p = i - 1, q = j - 1;
      double cost = std::hypot(a.x[p] - b.x[q], a.y[p] - b.y[q], a.z[p] - b.z[q]);
      if (p < n - 1 && q < n - 1) {
        cost += kShapeDirectionWeight * std::hypot(a.dx[p] - b.dx[q], a.dy[p] - b.dy[q], a.dz[p] - b.dz[q]);
      }
      at(i, j) = cost + std::min({at(i - 1, j), at(i, j - 1), at(i - 1, j - 1)});
    }
  }
  return at(n, n);
}

// A query and one stored path per lane, each lane with its bounds and no limit.
class ShapeWarpingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::mt19937 rng(11);
    query = exactShape(rng, 45, false);
    for (int l = 0; l < kShapeLanes; ++l) {
      stored.push_back(exactShape(rng, 10 + 7 * l, true));
      exact.push_back(plainWarping(query.path, stored.back().path));
    }
    bounds.resize(stored.size());
    for (size_t l = 0; l < stored.size(); ++l) {
      sums.push_back(placeBounds(query.path, stored[l].envelope, bounds[l]));
      lanes.push_back({&stored[l].path, &bounds[l], INFINITY});
    }
  }

  StrokeShape query;
  std::vector<StrokeShape> stored;
  std::vector<double> exact;
  std::vector<PlaceValues> bounds;
  std::vector<float> sums;
  std::vector<WarpingLane> lanes;
};

TEST_F(ShapeWarpingTest, EveryLaneMatchesThePlainWarpingAndItsBoundStaysBelow) {
  for (const int count : {kShapeLanes, 3, 1}) {
    float found[kShapeLanes];
    warpPaths(query.path, lanes.data(), count, found);
    for (int l = 0; l < count; ++l) {
      EXPECT_NEAR(found[l], exact[static_cast<size_t>(l)], 1e-4 * exact[static_cast<size_t>(l)]) << count << " " << l;
      EXPECT_GT(sums[static_cast<size_t>(l)], 0.0f);
      EXPECT_LE(sums[static_cast<size_t>(l)], exact[static_cast<size_t>(l)]);
    }
  }
}

// Past its limit a lane may stop early (infinity) or finish; below it, it always finishes. So
// does a bound: stopped early it still passes the limit, and below the limit it is whole.
TEST_F(ShapeWarpingTest, ALaneIsGivenUpOnlyPastItsLimit) {
  PlaceValues scratch;
  for (size_t l = 0; l < stored.size(); ++l) {
    EXPECT_GT(placeBounds(query.path, stored[l].envelope, scratch, 0.01f * sums[l]), 0.01f * sums[l]);
    EXPECT_EQ(placeBounds(query.path, stored[l].envelope, scratch, sums[l]), sums[l]);
  }
  for (size_t l = 0; l < lanes.size(); ++l) {
    lanes[l].limit = static_cast<float>(exact[l] * (l % 2 == 0 ? 0.9 : 1.1));
  }
  lanes[0].limit = 0.0f;
  float found[kShapeLanes];
  warpPaths(query.path, lanes.data(), kShapeLanes, found);
  EXPECT_TRUE(std::isinf(found[0]));
  for (int l = 1; l < kShapeLanes; ++l) {
    const double expected = exact[static_cast<size_t>(l)];
    if (l % 2 == 0) {
      EXPECT_TRUE(std::isinf(found[l]) || std::abs(found[l] - expected) < 1e-4 * expected) << l;
    } else {
      EXPECT_NEAR(found[l], expected, 1e-4 * expected) << l;
    }
  }
}

#if defined(ZANDO_WIDE_WARPING)
TEST_F(ShapeWarpingTest, BothInstructionSetsGiveTheSameBits) {
  if (__builtin_cpu_supports("avx") == 0) GTEST_SKIP() << "no 256-bit instructions here";
  lanes[2].limit = static_cast<float>(exact[2] * 0.5);
  float narrow[kShapeLanes], wide[kShapeLanes];
  warpPathsNarrow(query.path, lanes.data(), 6, narrow);
  warpPathsWide(query.path, lanes.data(), 6, wide);
  for (int l = 0; l < 6; ++l) EXPECT_EQ(narrow[l], wide[l]) << l;
  PlaceValues narrowBounds, wideBounds;
  EXPECT_EQ(placeBoundsNarrow(query.path, stored[4].envelope, narrowBounds),
            placeBoundsWide(query.path, stored[4].envelope, wideBounds));
  EXPECT_TRUE(std::equal(narrowBounds.value, narrowBounds.value + kShapePoints, wideBounds.value));
}
#endif

// From the points to the distances, every step rounds as IEEE arithmetic prescribes, so a gesture
// is matched alike on every processor. The bits below were taken on x86-64, where both instruction
// sets give them.
TEST_F(ShapeWarpingTest, EveryProcessorGivesTheSameBoundsAndDistances) {
  static constexpr uint32_t kBounds[kShapeLanes] = {0x415a99ae, 0x418b5e0b, 0x40fa1cab, 0x41deac92,
                                                     0x40d30284, 0x4113987a, 0x410f60c7, 0x41e0805b};
  static constexpr uint32_t kDistances[kShapeLanes] = {0x429a5d41, 0x4276138c, 0x4250debb, 0x42b0eceb,
                                                        0x428e39a4, 0x426ba24d, 0x42945ec8, 0x42ae1bf2};
  PlaceValues scratch;
  for (int l = 0; l < kShapeLanes; ++l) {
    const StrokeShape& shape = stored[static_cast<size_t>(l)];
    EXPECT_EQ(kBounds[l], bitsOf(placeBoundsNarrow(query.path, shape.envelope, scratch))) << l;
    EXPECT_EQ(kBounds[l], bitsOf(placeBounds(query.path, shape.envelope, scratch))) << l;
  }
  float chosen[kShapeLanes], narrow[kShapeLanes];
  warpPaths(query.path, lanes.data(), kShapeLanes, chosen);
  warpPathsNarrow(query.path, lanes.data(), kShapeLanes, narrow);
  for (int l = 0; l < kShapeLanes; ++l) {
    EXPECT_EQ(kDistances[l], bitsOf(chosen[l])) << l;
    EXPECT_EQ(kDistances[l], bitsOf(narrow[l])) << l;
  }
}

}  // namespace
}  // namespace zando
