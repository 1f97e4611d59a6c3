#include "model/shape_identification.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "features/shape_matching.h"

namespace zando {

namespace {

struct Candidate {
  double bound;
  int gesture;
  const StrokeShape* shape;
};

// How sharply the probabilities fall with the ratio of a distance to the nearest one: a gesture
// 10 % farther than the nearest keeps e^-1 of its weight.
constexpr double kRatioSharpness = 10.0;

}  // namespace

bool shapeMatchingApplies(const GestureModel& model) {
  if (!model.enhancedRecognition) return false;
  for (const Gesture* gesture : model.gestures) {
    if (gesture->gestureEnabled && !gesture->gestureSamples.empty()) return true;
  }
  return false;
}

int nearestGestureByShape(const GestureModel& model, const Stroke& stroke, double* distances) {
  constexpr double kFar = std::numeric_limits<double>::infinity();
  thread_local StrokeShape query;
  thread_local std::vector<Candidate> candidates;
  makeStrokeShape(stroke, model.parameters, false, query);

  // The cheap bound of every sample first; the warping runs on the most promising samples and
  // stops as soon as no remaining bound can beat what was found.
  candidates.clear();
  for (int g = 0; g < model.gestureCount(); ++g) {
    const Gesture& gesture = *model.gestures[static_cast<size_t>(g)];
    if (!gesture.gestureEnabled) continue;
    for (const Stroke* sample : gesture.gestureSamples) {
      const StrokeShape& shape = storedShape(*sample, model.parameters);
      candidates.push_back({shapeLowerBound(query, shape), g, &shape});
    }
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const Candidate& a, const Candidate& b) { return a.bound < b.bound; });

  int nearest = -1;
  double best = kFar;
  if (distances == nullptr) {
    for (const Candidate& candidate : candidates) {
      if (candidate.bound > best) break;
      const double d = shapeDistance(query, *candidate.shape, best);
      if (d < best || (d == best && candidate.gesture < nearest)) {
        best = d;
        nearest = candidate.gesture;
      }
    }
    return nearest;
  }
  std::fill_n(distances, model.gestureCount(), kFar);
  for (const Candidate& candidate : candidates) {
    double& own = distances[candidate.gesture];
    if (candidate.bound > own) continue;
    own = std::min(own, shapeDistance(query, *candidate.shape, own));
  }
  for (int g = 0; g < model.gestureCount(); ++g) {
    if (distances[g] < best) {
      best = distances[g];
      nearest = g;
    }
  }
  return nearest;
}

void prepareShapes(const GestureModel& model) {
  if (!model.enhancedRecognition) return;
  for (const Gesture* gesture : model.gestures) {
    for (const Stroke* sample : gesture->gestureSamples) storedShape(*sample, model.parameters);
  }
}

void probabilitiesFromShapeDistances(const double* distances, int count, double* probabilities) {
  double nearest = std::numeric_limits<double>::infinity();
  for (int i = 0; i < count; ++i) nearest = std::min(nearest, distances[i]);
  double total = 0.0;
  for (int i = 0; i < count; ++i) {
    double weight = 0.0;
    if (std::isfinite(distances[i])) {
      // An exact match makes every other distance infinitely far in ratio.
      weight = nearest > 0.0 ? std::exp(-kRatioSharpness * (distances[i] / nearest - 1.0))
                             : (distances[i] == 0.0 ? 1.0 : 0.0);
    }
    probabilities[i] = weight;
    total += weight;
  }
  for (int i = 0; i < count; ++i) probabilities[i] = total > 0.0 ? probabilities[i] / total : 0.0;
}

}  // namespace zando
