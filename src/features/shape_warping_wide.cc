// Compiled for processors with 256-bit vectors and called only on them: includes nothing but the
// plain-array warping body and the vector intrinsics.
#include "features/shape_warping.h"

#if defined(ZANDO_WIDE_WARPING)

#include <immintrin.h>

#include "features/shape_warping_kernel.h"

namespace zando {

namespace {

// Rows r[l] = eight values of lane l become r[i] = value i of the eight lanes.
void transpose(__m256 r[8]) {
  __m256 t[8], u[8];
  for (int k = 0; k < 8; k += 2) {
    t[k] = _mm256_unpacklo_ps(r[k], r[k + 1]);
    t[k + 1] = _mm256_unpackhi_ps(r[k], r[k + 1]);
  }
  for (int k = 0; k < 8; k += 4) {
    u[k] = _mm256_shuffle_ps(t[k], t[k + 2], _MM_SHUFFLE(1, 0, 1, 0));
    u[k + 1] = _mm256_shuffle_ps(t[k], t[k + 2], _MM_SHUFFLE(3, 2, 3, 2));
    u[k + 2] = _mm256_shuffle_ps(t[k + 1], t[k + 3], _MM_SHUFFLE(1, 0, 1, 0));
    u[k + 3] = _mm256_shuffle_ps(t[k + 1], t[k + 3], _MM_SHUFFLE(3, 2, 3, 2));
  }
  for (int k = 0; k < 4; ++k) {
    r[k] = _mm256_permute2f128_ps(u[k], u[k + 4], 0x20);
    r[k + 4] = _mm256_permute2f128_ps(u[k], u[k + 4], 0x31);
  }
}

// One coordinate of every lane's path, eight places at a time.
void packRows(const float* const rows[8], float (*packed)[kShapeLanes]) {
  for (int at = 0; at < kShapePoints; at += 8) {
    __m256 r[8];
    for (int l = 0; l < 8; ++l) r[l] = _mm256_load_ps(rows[l] + at);
    transpose(r);
    for (int i = 0; i < 8; ++i) _mm256_store_ps(packed[at + i], r[i]);
  }
}

struct WideOps {
  using V = __m256;
  static V load(const float* p) { return _mm256_load_ps(p); }
  static V set(float f) { return _mm256_set1_ps(f); }
  static V add(V a, V b) { return _mm256_add_ps(a, b); }
  static V sub(V a, V b) { return _mm256_sub_ps(a, b); }
  static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
  static V min(V a, V b) { return _mm256_min_ps(a, b); }
  static V max(V a, V b) { return _mm256_max_ps(a, b); }
  static V sqrt(V a) { return _mm256_sqrt_ps(a); }
  static V greater(V a, V b) { return _mm256_cmp_ps(a, b, _CMP_GT_OQ); }
  static int laneBits(V m) { return _mm256_movemask_ps(m); }
  static void store(float* p, V a) { _mm256_store_ps(p, a); }
  static void pack(const WarpingLane* lanes, int count, WarpingLanes& packed) {
    static_assert(kShapeLanes == 8 && kShapePoints % 8 == 0, "eight lanes, eight places at a time");
    const WarpingLane* of[8];
    for (int l = 0; l < 8; ++l) of[l] = &lanes[l < count ? l : 0];
    const auto coordinate = [&](auto member, float (*out)[kShapeLanes]) {
      const float* rows[8];
      for (int l = 0; l < 8; ++l) rows[l] = member(*of[l]);
      packRows(rows, out);
    };
    coordinate([](const WarpingLane& lane) { return lane.path->x; }, packed.x);
    coordinate([](const WarpingLane& lane) { return lane.path->y; }, packed.y);
    coordinate([](const WarpingLane& lane) { return lane.path->z; }, packed.z);
    coordinate([](const WarpingLane& lane) { return lane.path->dx; }, packed.dx);
    coordinate([](const WarpingLane& lane) { return lane.path->dy; }, packed.dy);
    coordinate([](const WarpingLane& lane) { return lane.path->dz; }, packed.dz);
    coordinate([](const WarpingLane& lane) { return lane.bounds->value; }, packed.rest);
  }
};

}  // namespace

float placeBoundsWide(const WarpingQuery& query, const WarpingEnvelope& stored, PlaceValues& bounds, float limit) {
  return placeBoundsWith<WideOps>(query, stored, bounds, limit);
}

void warpPathsWide(const WarpingQuery& query, const WarpingLane* lanes, int count, float* distances) {
  warpPathsWith<WideOps>(query, lanes, count, distances);
}

}  // namespace zando

#endif  // ZANDO_WIDE_WARPING
