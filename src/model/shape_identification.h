// Identification in the enhanced recognition mode: the stroke's shape against the shape of every
// stored sample of the enabled gestures, nearest sample first.
#ifndef ZANDO_MODEL_SHAPE_IDENTIFICATION_H
#define ZANDO_MODEL_SHAPE_IDENTIFICATION_H

#include <algorithm>
#include <utility>
#include <vector>

#include "model/gesture_model.h"

namespace zando {

// True when the mode is on and some enabled gesture has a sample to compare with.
bool shapeMatchingApplies(const GestureModel& model);

// The gesture of the nearest sample (of equal distances the lowest index), or -1 when nothing can
// be compared. Of a gesture with many samples, only a selection that covers them is compared. Distances to a gesture's samples grow when the stroke turns much more evenly, or
// much more at corners, than they do. With `distances` (one per gesture), each gesture's distance
// to its nearest sample is written, infinity for a gesture without one; without, only the nearest
// is worked out fully.
// `leaveOut`: a stored sample not compared with (the stroke itself, when scoring the set).
// `window`: the stroke is a window of running motion (continuous identification), compared as it
// is; a whole stroke is also compared turned a little.
int nearestGestureByShape(const GestureModel& model, const Stroke& stroke, double* distances,
                          const Stroke* leaveOut = nullptr, bool window = false);

// The share of the stored samples that the other samples identify as their own gesture (of the
// enabled gestures with at least two samples; 0 when there are none). `keepGoing` is asked
// between samples; once it says no, the share of those scored so far is given.
template <typename KeepGoing>
double shapeSelfScore(const GestureModel& model, KeepGoing&& keepGoing);

// Makes the shapes of all stored samples, and chooses which samples of a gesture with many are
// compared, now rather than at the first identification, which would otherwise pay for all of it at
// once. Does nothing with the mode off.
void prepareShapes(const GestureModel& model);

// Probabilities from the distances: they sum to 1, the nearest gesture gets the most, and every
// other loses weight with the ratio of its distance to the nearest one's.
void probabilitiesFromShapeDistances(const double* distances, int count, double* probabilities);

// At most this many samples are scored, spread over the set: each costs an identification.
constexpr size_t kMaxScoredSamples = 1000;

template <typename KeepGoing>
double shapeSelfScore(const GestureModel& model, KeepGoing&& keepGoing) {
  std::vector<std::pair<const Stroke*, int>> scored;
  for (int g = 0; g < model.gestureCount(); ++g) {
    const Gesture& gesture = *model.gestures[static_cast<size_t>(g)];
    if (!gesture.gestureEnabled || gesture.gestureSamples.size() < 2) continue;
    for (const Stroke* sample : gesture.gestureSamples) scored.emplace_back(sample, g);
  }
  const size_t count = std::min(scored.size(), kMaxScoredSamples);
  size_t right = 0, done = 0;
  for (; done < count && keepGoing(); ++done) {
    const auto& [sample, gesture] = scored[done * scored.size() / count];
    if (nearestGestureByShape(model, *sample, nullptr, sample) == gesture) ++right;
  }
  return done == 0 ? 0.0 : static_cast<double>(right) / static_cast<double>(done);
}

}  // namespace zando

#endif  // ZANDO_MODEL_SHAPE_IDENTIFICATION_H
