#include "features/shape_warping.h"

#include <cmath>

#include "features/shape_warping_kernel.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zando {

namespace {

#if defined(__SSE2__)
// Eight lanes as two 128-bit vectors, which every x86-64 processor has.
struct NarrowOps {
  struct V {
    __m128 low, high;
  };
  static V load(const float* p) { return {_mm_load_ps(p), _mm_load_ps(p + 4)}; }
  static V set(float f) { return {_mm_set1_ps(f), _mm_set1_ps(f)}; }
  static V add(V a, V b) { return {_mm_add_ps(a.low, b.low), _mm_add_ps(a.high, b.high)}; }
  static V sub(V a, V b) { return {_mm_sub_ps(a.low, b.low), _mm_sub_ps(a.high, b.high)}; }
  static V mul(V a, V b) { return {_mm_mul_ps(a.low, b.low), _mm_mul_ps(a.high, b.high)}; }
  static V min(V a, V b) { return {_mm_min_ps(a.low, b.low), _mm_min_ps(a.high, b.high)}; }
  static V max(V a, V b) { return {_mm_max_ps(a.low, b.low), _mm_max_ps(a.high, b.high)}; }
  static V sqrt(V a) { return {_mm_sqrt_ps(a.low), _mm_sqrt_ps(a.high)}; }
  static V greater(V a, V b) { return {_mm_cmpgt_ps(a.low, b.low), _mm_cmpgt_ps(a.high, b.high)}; }
  static int laneBits(V m) { return _mm_movemask_ps(m.low) | _mm_movemask_ps(m.high) << 4; }
  static void store(float* p, V a) {
    _mm_store_ps(p, a.low);
    _mm_store_ps(p + 4, a.high);
  }
  static void pack(const WarpingLane* lanes, int count, WarpingLanes& packed) {
    packOneByOne<NarrowOps>(lanes, count, packed);
  }
};
#else
// Plain loops, which the compiler turns into whatever vectors the processor has.
struct NarrowOps {
  struct V {
    float lane[kShapeLanes];
  };
  template <class F>
  static V each(F f) {
    V r;
    for (int l = 0; l < kShapeLanes; ++l) r.lane[l] = f(l);
    return r;
  }
  static V load(const float* p) {
    return each([p](int l) { return p[l]; });
  }
  static V set(float f) {
    return each([f](int) { return f; });
  }
  static V add(V a, V b) {
    return each([&](int l) { return a.lane[l] + b.lane[l]; });
  }
  static V sub(V a, V b) {
    return each([&](int l) { return a.lane[l] - b.lane[l]; });
  }
  static V mul(V a, V b) {
    return each([&](int l) { return a.lane[l] * b.lane[l]; });
  }
  static V min(V a, V b) {
    return each([&](int l) { return a.lane[l] < b.lane[l] ? a.lane[l] : b.lane[l]; });
  }
  static V max(V a, V b) {
    return each([&](int l) { return a.lane[l] > b.lane[l] ? a.lane[l] : b.lane[l]; });
  }
  static V sqrt(V a) {
    return each([&](int l) { return std::sqrt(a.lane[l]); });
  }
  static V greater(V a, V b) {
    return each([&](int l) { return a.lane[l] > b.lane[l] ? 1.0f : 0.0f; });
  }
  static int laneBits(V m) {
    int bits = 0;
    for (int l = 0; l < kShapeLanes; ++l) bits |= (m.lane[l] != 0.0f ? 1 : 0) << l;
    return bits;
  }
  static void store(float* p, V a) {
    for (int l = 0; l < kShapeLanes; ++l) p[l] = a.lane[l];
  }
  static void pack(const WarpingLane* lanes, int count, WarpingLanes& packed) {
    packOneByOne<NarrowOps>(lanes, count, packed);
  }
};
#endif

}  // namespace

float placeBoundsNarrow(const WarpingQuery& query, const WarpingEnvelope& stored, PlaceValues& bounds, float limit) {
  return placeBoundsWith<NarrowOps>(query, stored, bounds, limit);
}

void warpPathsNarrow(const WarpingQuery& query, const WarpingLane* lanes, int count, float* distances) {
  warpPathsWith<NarrowOps>(query, lanes, count, distances);
}

#if defined(ZANDO_WIDE_WARPING)
namespace {

// Both versions round alike, so the processor changes the speed, never a distance.
bool wideInstructions() {
  static const bool wide = __builtin_cpu_supports("avx") != 0;
  return wide;
}

}  // namespace
#endif

float placeBounds(const WarpingQuery& query, const WarpingEnvelope& stored, PlaceValues& bounds, float limit) {
#if defined(ZANDO_WIDE_WARPING)
  if (wideInstructions()) return placeBoundsWide(query, stored, bounds, limit);
#endif
  return placeBoundsNarrow(query, stored, bounds, limit);
}

void warpPaths(const WarpingQuery& query, const WarpingLane* lanes, int count, float* distances) {
#if defined(ZANDO_WIDE_WARPING)
  if (wideInstructions()) return warpPathsWide(query, lanes, count, distances);
#endif
  warpPathsNarrow(query, lanes, count, distances);
}

}  // namespace zando
