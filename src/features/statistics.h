// Per-gesture statistics of feature vectors: the mean, with orientations averaged as rotations,
// and the variance, with orientations measured in angle. Similarity values are measured against
// them; the network never reads them.
#ifndef ZANDO_FEATURES_STATISTICS_H
#define ZANDO_FEATURES_STATISTICS_H

#include <vector>

#include <Eigen/Core>

#include "features/model_parameters.h"
#include "spatial/spatial.h"

namespace zando {

// Average of orientations as the dominant eigenvector of the sum of their outer products, so that
// q and -q count alike.
class alignas(16) QuaternionAverager {
 public:
  EIGEN_MAKE_ALIGNED_OPERATOR_NEW

  QuaternionAverager() : accumulator(Eigen::Matrix4d::Zero()) {}
  virtual ~QuaternionAverager() = default;

  // Adds q * q^T, q taken in stored order x, y, z, w.
  void add(const Quaternion& q);
  // Unit eigenvector (real parts) of the largest real eigenvalue; ties go to the lower index. Its
  // sign is whatever the solver gives. Not normalised if its length is 0.
  Quaternion average() const;

  Eigen::Matrix4d accumulator;
};

// Mean of the samples, each of featureCount(parameters) values: positions, centroid and radius
// arithmetically, orientations through one QuaternionAverager per waypoint and one for the header.
// No samples, or a sample of another length, give zeros.
std::vector<double> averageFeatureVectors(const std::vector<std::vector<double>>& samples,
                                          const ModelParameters& parameters);

// Mean squared difference from `mean` (divided by the sample count, so one sample gives zeros);
// orientations contribute the square of their angle (or of 1 - dot) to each of their slots.
// No samples, or vectors of another length, give zeros.
std::vector<double> featureVariance(const std::vector<std::vector<double>>& samples, const std::vector<double>& mean,
                                    const ModelParameters& parameters);

}  // namespace zando

#endif  // ZANDO_FEATURES_STATISTICS_H
