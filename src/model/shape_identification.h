// Identification in the enhanced recognition mode: the stroke's shape against the shape of every
// stored sample of the enabled gestures, nearest sample first.
#ifndef ZANDO_MODEL_SHAPE_IDENTIFICATION_H
#define ZANDO_MODEL_SHAPE_IDENTIFICATION_H

#include "model/gesture_model.h"

namespace zando {

// True when the mode is on and some enabled gesture has a sample to compare with.
bool shapeMatchingApplies(const GestureModel& model);

// The gesture of the nearest sample (of equal distances the lowest index), or -1 when nothing can
// be compared. With `distances` (one per gesture), each gesture's distance to its nearest sample
// is written, infinity for a gesture without one; without, only the nearest is worked out fully.
int nearestGestureByShape(const GestureModel& model, const Stroke& stroke, double* distances);

// Makes the shapes of all stored samples now rather than at the first identification, which
// would otherwise pay for all of them at once. Does nothing with the mode off.
void prepareShapes(const GestureModel& model);

// Probabilities from the distances: they sum to 1, the nearest gesture gets the most, and every
// other loses weight with the ratio of its distance to the nearest one's.
void probabilitiesFromShapeDistances(const double* distances, int count, double* probabilities);

}  // namespace zando

#endif  // ZANDO_MODEL_SHAPE_IDENTIFICATION_H
