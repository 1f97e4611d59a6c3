// Measures that compare feature vectors without the network: the distance of two strokes, the
// classifier of a model without a usable network, and the angle between two orientations.
#ifndef ZANDO_FEATURES_SIMILARITY_H
#define ZANDO_FEATURES_SIMILARITY_H

#include <vector>

#include "features/model_parameters.h"
#include "spatial/spatial.h"

namespace zando {

// Rotation angle from b to a, 0 to pi: d = a * conjugate(b), 2 * atan2(|vector part of d|, |w of d|).
// q and -q are at angle 0 from each other.
double quaternionAngle(const Quaternion& a, const Quaternion& b);

// Sum of squared position differences and orientation terms over the waypoints, the stroke
// orientation and the four closing values; never negative, no square root. Under header mode 2 the
// closing values read the header quaternion again instead of centroid and radius. Vectors shorter
// than featureCount(parameters) are a caller's fault; they give the largest finite double.
double strokeDistance(const std::vector<double>& a, const std::vector<double>& b, const ModelParameters& parameters);

}  // namespace zando

#endif  // ZANDO_FEATURES_SIMILARITY_H
