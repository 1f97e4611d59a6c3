// Statistics of a model's gestures and the similarity measured against them.
#ifndef ZANDO_MODEL_MODEL_STATISTICS_H
#define ZANDO_MODEL_MODEL_STATISTICS_H

#include <vector>

#include "model/gesture_model.h"

namespace zando {

// How typical `featureVector` is of the gesture, 0 to 1 (exactly 1 at the gesture's mean): five
// groups of equal weight (waypoint positions, waypoint orientations, stroke orientation, centroid,
// radius), each a mean of per-coordinate Gaussians against the stored variances (floored at 0.001).
// -1.0 when the gesture has no statistics, a length does not fit the parameters, or a feature
// mode is not one of 0, 1, 2, 4.
double gestureSimilarity(const GestureModel& model, const std::vector<double>& featureVector, int gestureIndex);

// Rebuilds gestureMeans and gestureDeviations from every stored sample, extracted with the model's
// parameters. Under featureSelector 0 the extraction is random, so two rebuilds differ.
void computeGestureMeans(GestureModel& model);

}  // namespace zando

#endif  // ZANDO_MODEL_MODEL_STATISTICS_H
