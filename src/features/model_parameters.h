// The plain record of feature settings, frame of reference, transfer function and head policy
// that travels between a model, every candidate network of a training and the file.
#ifndef ZANDO_FEATURES_MODEL_PARAMETERS_H
#define ZANDO_FEATURES_MODEL_PARAMETERS_H

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace zando {

// Copied as a block and compared bytewise (the training search tells candidates apart this way),
// so the record has no implicit padding: the two filler fields stand where the compiler would
// otherwise leave indeterminate bytes, and they are always zero.
struct ModelParameters {
  int32_t waypointCount;
  int32_t featureSelector;
  int32_t headerFeatureMode;
  int32_t waypointFeatureMode;
  int32_t featureFlagA;
  int32_t featureFlagB;
  double featureScaleA;
  double featureScaleB;
  bool featureFlagC;
  uint8_t filler0[3];
  int32_t rotationFrameX;
  int32_t rotationFrameY;
  int32_t rotationFrameZ;
  int32_t rotationOrder;
  int32_t transferMode;
  double transferSlope;
  int32_t updateHeadPositionPolicy;
  int32_t filler1;

  ModelParameters() {
    std::memset(static_cast<void*>(this), 0, sizeof(*this));
    waypointCount = 16;
    featureSelector = 1;
    headerFeatureMode = 2;
    waypointFeatureMode = 2;
    featureFlagA = 1;
    featureFlagB = 1;
    featureScaleA = 1.0;
    featureScaleB = 1.0;
    featureFlagC = true;
    rotationOrder = 2;
    transferMode = 0;
    transferSlope = 0.33333;
    updateHeadPositionPolicy = 1;
  }

  bool sameAs(const ModelParameters& other) const { return std::memcmp(this, &other, sizeof(*this)) == 0; }
};

static_assert(std::is_trivially_copyable_v<ModelParameters>, "ModelParameters is copied as a block");
static_assert(sizeof(ModelParameters) == 80, "ModelParameters must have no implicit padding");

// Width of the stroke-orientation block of a feature vector for a headerFeatureMode.
inline int headerFeatureBase(int headerFeatureMode) {
  switch (headerFeatureMode) {
    case 1: return 7;
    case 2: return 8;
    case 4: return 10;
    default: return 4;
  }
}

// Width of one waypoint block for a waypointFeatureMode.
inline int waypointFeatureWidth(int waypointFeatureMode) {
  switch (waypointFeatureMode) {
    case 1: return 6;
    case 2: return 7;
    case 4: return 9;
    default: return 3;
  }
}

// The feature count F of a parameter record: header block plus waypointCount waypoint blocks.
inline int featureCount(const ModelParameters& p) {
  return headerFeatureBase(p.headerFeatureMode) + p.waypointCount * waypointFeatureWidth(p.waypointFeatureMode);
}

}  // namespace zando

#endif  // ZANDO_FEATURES_MODEL_PARAMETERS_H
