// Poses, strokes and the rotation conversions every other subsystem builds on.
//
// The conversions are written out by hand rather than taken from Eigen: their branch order and
// thresholds (strict comparisons, the gimbal-lock limit) decide which of several equivalent
// answers a host sees, and hosts compare against those answers.
#ifndef ZANDO_SPATIAL_SPATIAL_H
#define ZANDO_SPATIAL_SPATIAL_H

#include <cstdint>
#include <memory>
#include <vector>

#include <Eigen/Core>
#include <Eigen/Geometry>

namespace zando {

// A position or direction. The fourth, homogeneous component is always 1.0 and is never read.
struct Vector3 {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double w = 1.0;

  Vector3() = default;
  Vector3(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
  explicit Vector3(const double p[3]) : x(p[0]), y(p[1]), z(p[2]) {}
  explicit Vector3(const Eigen::Vector3d& v) : x(v.x()), y(v.y()), z(v.z()) {}

  Eigen::Vector3d eigen() const { return Eigen::Vector3d(x, y, z); }
  void copyTo(double out[3]) const { out[0] = x; out[1] = y; out[2] = z; }
};

double dot(const Vector3& a, const Vector3& b);
double length(const Vector3& a);
Vector3 cross(const Vector3& a, const Vector3& b);
Vector3 add(const Vector3& a, const Vector3& b);
Vector3 subtract(const Vector3& a, const Vector3& b);
Vector3 scale(const Vector3& a, double factor);

// An orientation in stored order x, y, z, w; identity (0, 0, 0, 1). Kept as the caller gave it:
// neither normalised nor made canonical in sign.
struct Quaternion {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double w = 1.0;

  Quaternion() = default;
  Quaternion(double x_, double y_, double z_, double w_) : x(x_), y(y_), z(z_), w(w_) {}
  explicit Quaternion(const double q[4]) : x(q[0]), y(q[1]), z(q[2]), w(q[3]) {}
  explicit Quaternion(const Eigen::Quaterniond& q) : x(q.x()), y(q.y()), z(q.z()), w(q.w()) {}

  Eigen::Quaterniond eigen() const { return Eigen::Quaterniond(w, x, y, z); }
  void copyTo(double out[4]) const { out[0] = x; out[1] = y; out[2] = z; out[3] = w; }
};

// Euler-angle composition order; values other than 0, 1, 3, 4, 5 act as 2 (YXZ).
enum RotationOrderValue : int {
  kRotationOrderXYZ = 0,
  kRotationOrderXZY = 1,
  kRotationOrderYXZ = 2,
  kRotationOrderYZX = 3,
  kRotationOrderZXY = 4,
  kRotationOrderZYX = 5,
};

// Milliseconds since the Unix epoch from the wall clock (100-ns ticks divided by 10000).
int64_t nowMilliseconds();

// Selects the constructor of StrokePoint that takes no clock reading, for scratch records on hot
// paths whose time stamp is never read.
struct Unstamped {};

// One pose at one instant, for hand and head alike. A plain value with a fixed layout, so that
// the arrays of a Stroke move by block copy.
struct StrokePoint {
  Vector3 position;
  Quaternion rotation;
  int64_t timestamp;

  StrokePoint() : timestamp(nowMilliseconds()) {}
  explicit StrokePoint(Unstamped) : timestamp(0) {}
  StrokePoint(const Vector3& p, const Quaternion& q) : position(p), rotation(q), timestamp(nowMilliseconds()) {}
  StrokePoint(const double p[3], const double q[4]) : position(p), rotation(q), timestamp(nowMilliseconds()) {}
  // From a column-major 4x4 matrix, by quaternionFromMatrix.
  explicit StrokePoint(const double m[16]);
};

// The normalised path of a stored sample that shape matching compares with; made by the features
// layer on first use.
struct StrokeShape;

// One recorded motion, and the stored form of a sample. headPoints[i] belongs to handPoints[i].
struct Stroke {
  int64_t startTime = 0;
  StrokePoint headStart;
  StrokePoint headLatest;
  std::vector<StrokePoint> headPoints;
  std::vector<StrokePoint> handPoints;
  int sampleType = 0;  // 0 a complete stroke, 1 a window of a continuous motion
  // A stored sample never changes, so its shape is made once and kept with it (a copy shares it).
  // Only the thread that identifies makes it, and never while training runs, which reads the points
  // but not this member; the stroke being recorded never gets one.
  mutable std::shared_ptr<const StrokeShape> shape;
};

// Rotation and position of a column-major 4x4 matrix. No scale is taken out, nothing is checked.
void quaternionFromMatrix(const double m[16], Quaternion& rotation, Vector3& position);
Quaternion quaternionFromMatrix(const double m[16]);
// Position and rotation of a column-major pose matrix, as the quaternion forms of the operations
// take them (quaternionFromMatrix).
struct PoseArrays {
  double position[3];
  double rotation[4];
  explicit PoseArrays(const double matrix[4][4]);
};

// Column-major 4x4 homogeneous matrix of a pose.
void matrixFromPose(const Vector3& position, const Quaternion& rotation, double m[16]);
// Product of the three axis rotations in the given order; not normalised.
Quaternion quaternionFromEuler(double x, double y, double z, int rotationOrder);
Quaternion quaternionFromEuler(const double angles[3], int rotationOrder);
// Angles x, y, z in radians; the middle axis of the order is locked at |element| >= 0.9999999.
void eulerFromQuaternion(const Quaternion& q, int rotationOrder, double angles[3]);
// Spherical interpolation along the shorter arc; not normalised.
Quaternion slerpShortest(const Quaternion& a, const Quaternion& b, double t);
// Linear position, spherical rotation; the time stamp is the present time.
StrokePoint interpolatePoint(const StrokePoint& a, const StrokePoint& b, double t);
// |b - a|, or its distance to a full turn if that is smaller; not folded further.
double angleDistance(double a, double b);
// Takes out the Euler angles whose flag is non-zero; all flags zero passes q unchanged.
Quaternion reduceHeadRotation(const Quaternion& q, int ignoreX, int ignoreY, int ignoreZ, int rotationOrder);

}  // namespace zando

#endif  // ZANDO_SPATIAL_SPATIAL_H
