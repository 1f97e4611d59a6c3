// From a stroke to the classifier's input: a fixed-length vector relative to the head and
// independent of the stroke's size, with where, how large and how oriented the stroke was.
#ifndef ZANDO_FEATURES_FEATURE_EXTRACTION_H
#define ZANDO_FEATURES_FEATURE_EXTRACTION_H

#include <vector>

#include <Eigen/Core>

#include "features/model_parameters.h"
#include "spatial/spatial.h"

namespace zando {

// Returns featureCount(parameters) values. The optional outputs (each may be null): pos, dir0,
// dir1, dir2 receive four doubles (x, y, z, 1); scale the stroke's radius. A stroke with fewer
// than two points gives zeros and leaves the outputs untouched.
std::vector<double> extractFeatures(const Stroke& stroke, const ModelParameters& parameters,
                                    double pos[4] = nullptr, double* scale = nullptr, double dir0[4] = nullptr,
                                    double dir1[4] = nullptr, double dir2[4] = nullptr);

// The head frame G of one head record: the inverse of the head's pose, with the Euler axes the
// parameters ignore taken out of its rotation.
Eigen::Matrix4d inverseHeadFrame(const StrokePoint& head, const ModelParameters& parameters);

}  // namespace zando

#endif  // ZANDO_FEATURES_FEATURE_EXTRACTION_H
