#include "features/statistics.h"

#include <cmath>
#include <limits>

#include <Eigen/Eigenvalues>

#include "features/similarity.h"

namespace zando {

void QuaternionAverager::add(const Quaternion& q) {
  const Eigen::Vector4d v(q.x, q.y, q.z, q.w);
  accumulator.noalias() += v * v.transpose();
}

Quaternion QuaternionAverager::average() const {
  // The general solver rather than the symmetric one: its choice of sign for the eigenvector ends
  // up in the means that models store, so it must not change.
  const Eigen::EigenSolver<Eigen::Matrix4d> solver(accumulator);
  const auto& values = solver.eigenvalues();
  int best = 0;
  double bestValue = std::numeric_limits<double>::lowest();
  for (int i = 0; i < 4; ++i) {
    if (values[i].real() > bestValue) {
      bestValue = values[i].real();
      best = i;
    }
  }
  Eigen::Vector4d v = solver.eigenvectors().col(best).real();
  const double squaredLength = v.squaredNorm();
  if (squaredLength > 0) v /= std::sqrt(squaredLength);
  return Quaternion(v[0], v[1], v[2], v[3]);
}

namespace {

double dot3(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

// The rotation whose columns are the two stored axes and their cross product. Nothing checks that
// the axes are orthonormal.
Quaternion quaternionOfAxes(const double* r0, const double* r1) {
  const double r2[3] = {r0[1] * r1[2] - r0[2] * r1[1], r0[2] * r1[0] - r0[0] * r1[2], r0[0] * r1[1] - r0[1] * r1[0]};
  const double m[16] = {r0[0], r0[1], r0[2], 0.0, r1[0], r1[1], r1[2], 0.0,
                        r2[0], r2[1], r2[2], 0.0, 0.0,   0.0,   0.0,   1.0};
  return quaternionFromMatrix(m);
}

// Adds the orientation block at `values` of the given mode to the averager; modes without an
// orientation add nothing.
void addOrientation(QuaternionAverager& averager, const double* values, int mode, int rotationOrder) {
  switch (mode) {
    case 1:
      averager.add(quaternionFromEuler(values, rotationOrder));
      break;
    case 2:
      averager.add(Quaternion(values));
      break;
    case 4:
      averager.add(quaternionOfAxes(values, values + 3));
      break;
    default:
      break;
  }
}

// Writes an averaged orientation back in the form of the mode.
void writeOrientation(const Quaternion& q, double* out, int mode, int rotationOrder) {
  switch (mode) {
    case 1:
      eulerFromQuaternion(q, rotationOrder, out);
      break;
    case 2:
      q.copyTo(out);
      break;
    case 4: {
      double m[16];
      matrixFromPose(Vector3(), q, m);
      for (int i = 0; i < 3; ++i) {
        out[i] = m[i];
        out[3 + i] = m[4 + i];
      }
      break;
    }
    default:
      break;
  }
}

// Squared angular differences of an orientation block, added to each of its slots.
void addOrientationVariance(const double* sample, const double* mean, double* out, int mode) {
  switch (mode) {
    case 1:
      for (int i = 0; i < 3; ++i) {
        const double d = angleDistance(sample[i], mean[i]);
        out[i] += d * d;
      }
      break;
    case 2: {
      const double a = quaternionAngle(Quaternion(mean), Quaternion(sample));
      for (int i = 0; i < 4; ++i) out[i] += a * a;
      break;
    }
    case 4: {
      const double d1 = 1.0 - dot3(sample, mean);
      const double d2 = 1.0 - dot3(sample + 3, mean + 3);
      for (int i = 0; i < 3; ++i) {
        out[i] += d1 * d1;
        out[3 + i] += d2 * d2;
      }
      break;
    }
    default:
      break;
  }
}

bool allOfLength(const std::vector<std::vector<double>>& samples, size_t length) {
  for (const std::vector<double>& sample : samples) {
    if (sample.size() != length) return false;
  }
  return true;
}

}  // namespace

std::vector<double> averageFeatureVectors(const std::vector<std::vector<double>>& samples,
                                          const ModelParameters& parameters) {
  const int count = featureCount(parameters);
  std::vector<double> result(static_cast<size_t>(count), 0.0);
  if (samples.empty() || !allOfLength(samples, result.size())) return result;
  const int waypoints = parameters.waypointCount;
  const int width = waypointFeatureWidth(parameters.waypointFeatureMode);
  const int waypointMode = parameters.waypointFeatureMode;
  const int headerMode = parameters.headerFeatureMode;
  const int order = parameters.rotationOrder;
  const int header = waypoints * width;
  const int tail = count - 4;

  std::vector<QuaternionAverager> waypointAveragers(static_cast<size_t>(waypoints));
  QuaternionAverager headerAverager;
  double* out = result.data();
  for (size_t s = samples.size(); s-- > 0;) {
    const double* sample = samples[s].data();
    for (int i = 0; i < waypoints; ++i) {
      const int o = i * width;
      for (int j = 0; j < 3; ++j) out[o + j] += sample[o + j];
      addOrientation(waypointAveragers[static_cast<size_t>(i)], sample + o + 3, waypointMode, order);
    }
    addOrientation(headerAverager, sample + header, headerMode, order);
    for (int j = 0; j < 4; ++j) out[tail + j] += sample[tail + j];
  }

  const double k = 1.0 / static_cast<double>(samples.size());
  for (int i = 0; i < waypoints; ++i) {
    const int o = i * width;
    for (int j = 0; j < 3; ++j) out[o + j] *= k;
    writeOrientation(waypointAveragers[static_cast<size_t>(i)].average(), out + o + 3, waypointMode, order);
  }
  writeOrientation(headerAverager.average(), out + header, headerMode, order);
  for (int j = 0; j < 4; ++j) out[tail + j] *= k;
  return result;
}

std::vector<double> featureVariance(const std::vector<std::vector<double>>& samples, const std::vector<double>& mean,
                                    const ModelParameters& parameters) {
  const int count = featureCount(parameters);
  std::vector<double> result(static_cast<size_t>(count), 0.0);
  if (samples.empty() || mean.size() != result.size() || !allOfLength(samples, result.size())) return result;
  const int waypoints = parameters.waypointCount;
  const int width = waypointFeatureWidth(parameters.waypointFeatureMode);
  const int header = waypoints * width;
  const int tail = count - 4;
  const double* m = mean.data();
  double* out = result.data();
  for (size_t s = samples.size(); s-- > 0;) {
    const double* sample = samples[s].data();
    for (int i = 0; i < waypoints; ++i) {
      const int o = i * width;
      for (int j = 0; j < 3; ++j) {
        const double d = sample[o + j] - m[o + j];
        out[o + j] += d * d;
      }
      addOrientationVariance(sample + o + 3, m + o + 3, out + o + 3, parameters.waypointFeatureMode);
    }
    addOrientationVariance(sample + header, m + header, out + header, parameters.headerFeatureMode);
    for (int j = 0; j < 4; ++j) {
      const double d = sample[tail + j] - m[tail + j];
      out[tail + j] += d * d;
    }
  }
  const double k = 1.0 / static_cast<double>(samples.size());
  for (double& value : result) value *= k;
  return result;
}

}  // namespace zando
