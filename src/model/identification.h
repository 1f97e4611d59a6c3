// Naming the gesture of a finished stroke: through the network, or by comparison with stored
// samples where no usable network exists, with probabilities and similarity values.
#ifndef ZANDO_MODEL_IDENTIFICATION_H
#define ZANDO_MODEL_IDENTIFICATION_H

#include "model/gesture_model.h"
#include "spatial/spatial.h"

namespace zando {

// The caller copies its frame of reference into model.parameters first. pos and the directions
// receive four doubles each; every output may be null. Returns the gesture index or -9, -10.
// `window`: the stroke is a window of running motion (continuous identification), which the
// enhanced mode compares more cheaply.
int identifyStroke(GestureModel& model, const Stroke& stroke, double pos[4], double* scale, double dir0[4],
                   double dir1[4], double dir2[4], double* similarity, bool window = false);

// Fills probabilities[0 .. m-1], m the smaller of *count and the gesture count, and sets *count
// to m. Returns 0, or -9 (nothing to choose from), -10 (the network does not fit).
int computeProbabilities(GestureModel& model, double* probabilities, int* count, const Stroke& stroke,
                         double pos[4], double* scale, double dir0[4], double dir1[4], double dir2[4]);

// As computeProbabilities, with the similarity of each gesture in similarities.
int computeProbabilitiesAndSimilarities(GestureModel& model, double* probabilities, double* similarities,
                                        int* count, const Stroke& stroke, double pos[4], double* scale,
                                        double dir0[4], double dir1[4], double dir2[4], bool window = false);

}  // namespace zando

#endif  // ZANDO_MODEL_IDENTIFICATION_H
