#include "spatial/spatial.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace zando {

PoseArrays::PoseArrays(const double matrix[4][4]) {
  Quaternion q;
  Vector3 p;
  quaternionFromMatrix(&matrix[0][0], q, p);
  p.copyTo(position);
  q.copyTo(rotation);
}

double dot(const Vector3& a, const Vector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

double length(const Vector3& a) { return std::sqrt(dot(a, a)); }

Vector3 cross(const Vector3& a, const Vector3& b) {
  return Vector3(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

Vector3 add(const Vector3& a, const Vector3& b) { return Vector3(a.x + b.x, a.y + b.y, a.z + b.z); }

Vector3 subtract(const Vector3& a, const Vector3& b) { return Vector3(a.x - b.x, a.y - b.y, a.z - b.z); }

Vector3 scale(const Vector3& a, double factor) { return Vector3(a.x * factor, a.y * factor, a.z * factor); }

int64_t nowMilliseconds() {
  using Ticks = std::chrono::duration<int64_t, std::ratio<1, 10000000>>;
  const int64_t ticks =
      std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count();
  return ticks / 10000;
}

StrokePoint::StrokePoint(const double m[16]) : timestamp(nowMilliseconds()) {
  quaternionFromMatrix(m, rotation, position);
}

void quaternionFromMatrix(const double m[16], Quaternion& q, Vector3& p) {
  p = Vector3(m[12], m[13], m[14]);
  const double t = m[0] + m[5] + m[10];
  // Strict comparisons: a tie between diagonal values falls to the later case.
  if (t > 0) {
    const double s = 2.0 * std::sqrt(t + 1.0);
    q.w = s / 4.0;
    q.x = (m[6] - m[9]) / s;
    q.y = (m[8] - m[2]) / s;
    q.z = (m[1] - m[4]) / s;
  } else if (m[0] > m[5] && m[0] > m[10]) {
    const double s = 2.0 * std::sqrt(1.0 + m[0] - m[5] - m[10]);
    q.w = (m[6] - m[9]) / s;
    q.x = s / 4.0;
    q.y = (m[4] + m[1]) / s;
    q.z = (m[8] + m[2]) / s;
  } else if (m[5] > m[10]) {
    const double s = 2.0 * std::sqrt(1.0 + m[5] - m[0] - m[10]);
    q.w = (m[8] - m[2]) / s;
    q.x = (m[4] + m[1]) / s;
    q.y = s / 4.0;
    q.z = (m[9] + m[6]) / s;
  } else {
    const double s = 2.0 * std::sqrt(1.0 + m[10] - m[0] - m[5]);
    q.w = (m[1] - m[4]) / s;
    q.x = (m[8] + m[2]) / s;
    q.y = (m[9] + m[6]) / s;
    q.z = s / 4.0;
  }
}

Quaternion quaternionFromMatrix(const double m[16]) {
  Quaternion q;
  Vector3 p;
  quaternionFromMatrix(m, q, p);
  return q;
}

void matrixFromPose(const Vector3& p, const Quaternion& q, double m[16]) {
  const double x = q.x, y = q.y, z = q.z, w = q.w;
  m[0] = 1 - 2 * y * y - 2 * z * z;
  m[1] = 2 * x * y + 2 * z * w;
  m[2] = 2 * x * z - 2 * y * w;
  m[3] = 0;
  m[4] = 2 * x * y - 2 * z * w;
  m[5] = 1 - 2 * x * x - 2 * z * z;
  m[6] = 2 * y * z + 2 * x * w;
  m[7] = 0;
  m[8] = 2 * x * z + 2 * y * w;
  m[9] = 2 * y * z - 2 * x * w;
  m[10] = 1 - 2 * x * x - 2 * y * y;
  m[11] = 0;
  m[12] = p.x;
  m[13] = p.y;
  m[14] = p.z;
  m[15] = 1;
}

namespace {

int normalizedOrder(int order) {
  switch (order) {
    case kRotationOrderXYZ:
    case kRotationOrderXZY:
    case kRotationOrderYZX:
    case kRotationOrderZXY:
    case kRotationOrderZYX:
      return order;
    default:
      return kRotationOrderYXZ;
  }
}

}  // namespace

Quaternion quaternionFromEuler(double x, double y, double z, int rotationOrder) {
  const Eigen::Quaterniond qx(std::cos(x / 2), std::sin(x / 2), 0, 0);
  const Eigen::Quaterniond qy(std::cos(y / 2), 0, std::sin(y / 2), 0);
  const Eigen::Quaterniond qz(std::cos(z / 2), 0, 0, std::sin(z / 2));
  Eigen::Quaterniond r;
  switch (normalizedOrder(rotationOrder)) {
    case kRotationOrderXYZ: r = qx * qy * qz; break;
    case kRotationOrderXZY: r = qx * qz * qy; break;
    case kRotationOrderYZX: r = qy * qz * qx; break;
    case kRotationOrderZXY: r = qz * qx * qy; break;
    case kRotationOrderZYX: r = qz * qy * qx; break;
    default: r = qy * qx * qz; break;
  }
  return Quaternion(r);
}

Quaternion quaternionFromEuler(const double angles[3], int rotationOrder) {
  return quaternionFromEuler(angles[0], angles[1], angles[2], rotationOrder);
}

void eulerFromQuaternion(const Quaternion& q, int rotationOrder, double angles[3]) {
  const double x = q.x, y = q.y, z = q.z, w = q.w;
  const double r00 = 1 - 2 * y * y - 2 * z * z, r01 = 2 * x * y - 2 * w * z, r02 = 2 * x * z + 2 * w * y;
  const double r10 = 2 * x * y + 2 * w * z, r11 = 1 - 2 * x * x - 2 * z * z, r12 = 2 * y * z - 2 * w * x;
  const double r20 = 2 * x * z - 2 * w * y, r21 = 2 * y * z + 2 * w * x, r22 = 1 - 2 * x * x - 2 * y * y;
  const auto clampedAsin = [](double v) { return std::asin(std::clamp(v, -1.0, 1.0)); };
  const auto regular = [](double v) { return std::fabs(v) < 0.9999999; };
  double& ax = angles[0];
  double& ay = angles[1];
  double& az = angles[2];
  switch (normalizedOrder(rotationOrder)) {
    case kRotationOrderXYZ:
      ay = clampedAsin(r02);
      if (regular(r02)) { ax = std::atan2(-r12, r22); az = std::atan2(-r01, r00); }
      else { ax = std::atan2(r21, r11); az = 0; }
      break;
    case kRotationOrderXZY:
      az = clampedAsin(-r01);
      if (regular(r01)) { ax = std::atan2(r21, r11); ay = std::atan2(r02, r00); }
      else { ax = std::atan2(-r12, r22); ay = 0; }
      break;
    case kRotationOrderYZX:
      az = clampedAsin(r10);
      if (regular(r10)) { ax = std::atan2(-r12, r11); ay = std::atan2(-r20, r00); }
      else { ax = 0; ay = std::atan2(r02, r22); }
      break;
    case kRotationOrderZXY:
      ax = clampedAsin(r21);
      if (regular(r21)) { ay = std::atan2(-r20, r22); az = std::atan2(-r01, r11); }
      else { ay = 0; az = std::atan2(r10, r00); }
      break;
    case kRotationOrderZYX:
      ay = clampedAsin(-r20);
      if (regular(r20)) { ax = std::atan2(r21, r22); az = std::atan2(r10, r00); }
      else { ax = 0; az = std::atan2(-r01, r11); }
      break;
    default:  // YXZ
      ax = clampedAsin(-r12);
      if (regular(r12)) { ay = std::atan2(r02, r22); az = std::atan2(r10, r11); }
      else { ay = std::atan2(-r20, r00); az = 0; }
      break;
  }
}

Quaternion slerpShortest(const Quaternion& a, const Quaternion& b, double t) {
  static const double kOne = 1.0 - 2.220446049250313e-16;
  const double d = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
  const double absD = std::fabs(d);
  double scale0;
  double scale1;
  if (absD >= kOne) {
    scale0 = 1.0 - t;
    scale1 = t;
  } else {
    const double theta = std::acos(absD);
    const double sinTheta = std::sin(theta);
    scale0 = std::sin((1.0 - t) * theta) / sinTheta;
    scale1 = std::sin(t * theta) / sinTheta;
  }
  if (d < 0) scale1 = -scale1;
  return Quaternion(scale0 * a.x + scale1 * b.x, scale0 * a.y + scale1 * b.y, scale0 * a.z + scale1 * b.z,
                    scale0 * a.w + scale1 * b.w);
}

StrokePoint interpolatePoint(const StrokePoint& a, const StrokePoint& b, double t) {
  const Vector3 p((1.0 - t) * a.position.x + t * b.position.x, (1.0 - t) * a.position.y + t * b.position.y,
                  (1.0 - t) * a.position.z + t * b.position.z);
  return StrokePoint(p, slerpShortest(a.rotation, b.rotation, t));
}

double angleDistance(double a, double b) {
  const double d = std::fabs(b - a);
  const double e = std::fabs(d - 6.283185307179586);
  return e < d ? e : d;
}

Quaternion reduceHeadRotation(const Quaternion& q, int ignoreX, int ignoreY, int ignoreZ, int rotationOrder) {
  if (ignoreX == 0 && ignoreY == 0 && ignoreZ == 0) return q;
  double angles[3];
  eulerFromQuaternion(q, rotationOrder, angles);
  if (ignoreX != 0) angles[0] = 0.0;
  if (ignoreY != 0) angles[1] = 0.0;
  if (ignoreZ != 0) angles[2] = 0.0;
  return quaternionFromEuler(angles, rotationOrder);
}

}  // namespace zando
