// The mean of a gesture read back as a stroke, to draw it or to show a user the motion. Waypoint
// positions stay in the normalised space of the feature vector; only the stroke's position and
// scale are carried back by the feature scales.
#include <algorithm>

#include "recognition/gesture_recognition.h"

namespace zando {

int GestureRecognition::getGestureMeanLength(int) { return gestureModel.parameters.waypointCount; }

int GestureRecognition::getGestureMeanStroke(int gestureIndex, double (*positions)[3], double (*rotations)[4],
                                             int bufferSize, double strokePosition[3], double strokeRotation[4],
                                             double* scale) {
  const ModelParameters& parameters = gestureModel.parameters;
  // The test is against the rows of the statistics, not the gestures: a gesture created since the
  // last training has no mean.
  if (gestureIndex < 0 || static_cast<size_t>(gestureIndex) >= gestureModel.gestureMeans.size()) return 0;
  const std::vector<double>& m = gestureModel.gestureMeans[static_cast<size_t>(gestureIndex)];
  if (static_cast<int>(m.size()) != featureCount(parameters)) return 0;
  const int n = parameters.waypointCount;
  const int order = rotationalFrameOfReferenceRotationOrder;
  size_t k = static_cast<size_t>(n) * static_cast<size_t>(waypointFeatureWidth(parameters.waypointFeatureMode));

  switch (parameters.headerFeatureMode) {
    case 1:
      if (strokeRotation != nullptr) quaternionFromEuler(&m[k], order).copyTo(strokeRotation);
      k += 3;
      break;
    case 2:
      if (strokeRotation != nullptr) Quaternion(&m[k]).copyTo(strokeRotation);
      k += 4;
      break;
    case 4: {
      Eigen::Vector3d a(m[k], m[k + 1], m[k + 2]);
      Eigen::Vector3d b(m[k + 3], m[k + 4], m[k + 5]);
      if (a.squaredNorm() > 0) a /= a.norm();
      if (b.squaredNorm() > 0) b /= b.norm();
      Eigen::Matrix3d columns;
      columns << a, b, a.cross(b);
      if (strokeRotation != nullptr) Quaternion(Eigen::Quaterniond(columns)).copyTo(strokeRotation);
      k += 6;
      break;
    }
    default:
      break;
  }
  if (strokePosition != nullptr) {
    for (int i = 0; i < 3; ++i) strokePosition[i] = m[k + static_cast<size_t>(i)] / parameters.featureScaleA;
  }
  k += 3;
  if (scale != nullptr) *scale = m[k] / parameters.featureScaleB;

  const int rows = std::min(bufferSize, n);
  if (rows < 1) return rows;
  const int mode = parameters.waypointFeatureMode;
  for (int i = 0; i < rows; ++i) {
    // Mode 4 blocks are 9 wide but are read at a stride of 3, as a processed sample is.
    const size_t at = static_cast<size_t>(i) * (mode == 1 ? 6 : mode == 2 ? 7 : 3);
    if (positions != nullptr) {
      for (int c = 0; c < 3; ++c) positions[i][c] = m[at + static_cast<size_t>(c)];
    }
    if (rotations == nullptr) continue;
    if (mode == 1) {
      quaternionFromEuler(&m[at + 3], order).copyTo(rotations[i]);
    } else if (mode == 2) {
      Quaternion(&m[at + 3]).copyTo(rotations[i]);
    } else {
      Quaternion().copyTo(rotations[i]);
    }
  }
  return rows;
}

}  // namespace zando
