#include "features/similarity.h"

#include <cmath>
#include <limits>

namespace zando {

namespace {

Quaternion quaternionAt(const double* values) { return Quaternion(values); }

Quaternion quaternionOfEulerAt(const double* values, int rotationOrder) {
  return quaternionFromEuler(values, rotationOrder);
}

double dot3(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

double squaredDistance3(const double* a, const double* b) {
  const double dx = a[0] - b[0];
  const double dy = a[1] - b[1];
  const double dz = a[2] - b[2];
  return dx * dx + dy * dy + dz * dz;
}

}  // namespace

double quaternionAngle(const Quaternion& a, const Quaternion& b) {
  // The product is spelled out term by term so that equal inputs cancel exactly to a zero vector
  // part: a vector equal to a gesture's mean must score a similarity of exactly 1.
  const double bx = -b.x, by = -b.y, bz = -b.z, bw = b.w;
  const double w = a.w * bw - a.x * bx - a.y * by - a.z * bz;
  const double x = a.w * bx + a.x * bw + a.y * bz - a.z * by;
  const double y = a.w * by + a.y * bw + a.z * bx - a.x * bz;
  const double z = a.w * bz + a.z * bw + a.x * by - a.y * bx;
  return 2.0 * std::atan2(std::sqrt(x * x + y * y + z * z), std::fabs(w));
}

double strokeDistance(const std::vector<double>& a, const std::vector<double>& b, const ModelParameters& parameters) {
  const size_t count = static_cast<size_t>(featureCount(parameters));
  if (a.size() < count || b.size() < count) return std::numeric_limits<double>::max();
  const int waypoints = parameters.waypointCount;
  const int width = waypointFeatureWidth(parameters.waypointFeatureMode);
  const int order = parameters.rotationOrder;
  const double* pa = a.data();
  const double* pb = b.data();
  double s = 0.0;
  for (int i = 0; i < waypoints; ++i) {
    const int o = i * width;
    s += squaredDistance3(pa + o, pb + o);
    switch (parameters.waypointFeatureMode) {
      case 1:
        s += quaternionAngle(quaternionOfEulerAt(pa + o + 3, order), quaternionOfEulerAt(pb + o + 3, order));
        break;
      case 2:
        s += quaternionAngle(quaternionAt(pa + o + 3), quaternionAt(pb + o + 3));
        break;
      case 4: {
        const double e1 = 1.0 - dot3(pa + o + 3, pb + o + 3);
        const double e2 = 1.0 - dot3(pa + o + 6, pb + o + 6);
        s += (e1 * e1 + e2 * e2) * 0.5;
        break;
      }
      default:
        break;
    }
  }
  int h = waypoints * width;
  switch (parameters.headerFeatureMode) {
    case 1:
      s += quaternionAngle(quaternionOfEulerAt(pa + h, order), quaternionOfEulerAt(pb + h, order));
      h += 3;
      break;
    case 2:
      // h stays on the quaternion: the closing terms below then weigh the stroke's orientation a
      // second time and ignore where and how large the stroke was. Stored models are scored this
      // way, so it stays.
      s += quaternionAngle(quaternionAt(pa + h), quaternionAt(pb + h));
      break;
    case 4:
      for (int axis = 0; axis < 2; ++axis) {
        const double t = (1.0 - dot3(pa + h + axis * 3, pb + h + axis * 3)) * 0.5;
        s += t * t;
      }
      h += 6;
      break;
    default:
      break;
  }
  s += squaredDistance3(pa + h, pb + h);
  const double dr = pa[h + 3] - pb[h + 3];
  s += dr * dr;
  return s;
}

}  // namespace zando
