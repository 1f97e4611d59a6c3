#include "model/shape_identification.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "features/shape_matching.h"
#include "spatial/thread_scratch.h"

namespace zando {

namespace {

struct Candidate {
  float bound;
  int gesture;
  const WarpingQuery* path;
  // Index of the candidate's place bounds.
  size_t slot;
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
  constexpr float kFar = std::numeric_limits<float>::infinity();
  StrokeShape& query = threadScratch<StrokeShape, struct QueryPlace>();
  std::vector<Candidate>& candidates = threadScratch<std::vector<Candidate>, struct CandidatesPlace>();
  std::vector<PlaceValues>& bounds = threadScratch<std::vector<PlaceValues>, struct BoundsPlace>();
  std::vector<float>& nearestOf = threadScratch<std::vector<float>, struct NearestPlace>();
  makeStrokeShape(stroke, model.parameters, false, query);

  // The cheap bound of every sample first; the warping runs on the most promising samples, several
  // at once, and skips every sample whose bound cannot beat what its gesture (or, when only the
  // nearest gesture is asked for, any gesture) has found.
  candidates.clear();
  bounds.clear();
  for (int g = 0; g < model.gestureCount(); ++g) {
    const Gesture& gesture = *model.gestures[static_cast<size_t>(g)];
    if (!gesture.gestureEnabled) continue;
    for (const Stroke* sample : gesture.gestureSamples) {
      const StrokeShape& shape = storedShape(*sample, model.parameters);
      bounds.emplace_back();
      const float bound = placeBounds(query.path, shape.envelope, bounds.back());
      candidates.push_back({bound, g, &shape.path, bounds.size() - 1});
    }
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const Candidate& a, const Candidate& b) { return a.bound < b.bound; });

  const bool perGesture = distances != nullptr;
  nearestOf.assign(perGesture ? static_cast<size_t>(model.gestureCount()) : 1, kFar);
  const auto nearestFor = [&](int gesture) -> float& {
    return nearestOf[perGesture ? static_cast<size_t>(gesture) : 0];
  };
  int nearest = -1;
  WarpingLane batch[kShapeLanes];
  int batchGesture[kShapeLanes];
  float found[kShapeLanes];
  for (size_t next = 0; next < candidates.size();) {
    int count = 0;
    for (; next < candidates.size() && count < kShapeLanes; ++next) {
      const Candidate& candidate = candidates[next];
      const float limit = nearestFor(candidate.gesture);
      if (candidate.bound > limit) {
        // The bounds are sorted: past the overall nearest, no later sample can come closer.
        if (perGesture) continue;
        next = candidates.size();
        break;
      }
      batch[count] = {candidate.path, &bounds[candidate.slot], limit};
      batchGesture[count++] = candidate.gesture;
    }
    if (count == 0) break;
    warpPaths(query.path, batch, count, found);
    for (int l = 0; l < count; ++l) {
      float& own = nearestFor(batchGesture[l]);
      // Of equal distances the lowest gesture index wins.
      if (found[l] < own || (found[l] == own && !perGesture && batchGesture[l] < nearest)) {
        own = found[l];
        if (!perGesture) nearest = batchGesture[l];
      }
    }
  }
  if (!perGesture) return nearest;
  float best = kFar;
  for (int g = 0; g < model.gestureCount(); ++g) {
    const float d = nearestOf[static_cast<size_t>(g)];
    distances[g] = static_cast<double>(d);
    if (d < best) {
      best = d;
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
