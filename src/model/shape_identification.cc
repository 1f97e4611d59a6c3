#include "model/shape_identification.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "features/shape_matching.h"
#include "spatial/thread_scratch.h"

namespace zando {

namespace {

struct Candidate {
  int gesture;
  const StrokeShape* shape;
  bool few;  // of a gesture with few samples
};

// Which samples a reading of the stroke is compared with.
enum class Against { All, Closed, Few };

// A gesture with at most this many samples is also compared with the stroke turned a little:
// with many samples (from many people) its samples already hold the tilts people give it.
constexpr size_t kFewSamples = 16;

// The turns of a whole stroke that such gestures are compared with: tipped forward and back (a
// drawing's plane leans as the head and hand are held), and turned left and right about the
// vertical axis. Axis 0 is x (across), 1 is y (up).
struct Turn {
  int axis;
  float angle;  // radians
};
constexpr Turn kTurns[] = {{0, 0.3f}, {0, -0.3f}, {1, 0.4f}, {1, -0.4f}};

// The path turned about the x or y axis of the head's frame.
void turnPath(const WarpingQuery& path, const Turn& turn, WarpingQuery& out) {
  const float c = std::cos(turn.angle), s = std::sin(turn.angle);
  // About x: y and z turn; about y: z and x turn.
  const auto rotate = [&](const float* u, const float* v, float* outU, float* outV, int i) {
    outU[i] = c * u[i] - s * v[i];
    outV[i] = s * u[i] + c * v[i];
  };
  out = path;
  for (int i = 0; i < kShapePoints; ++i) {
    if (turn.axis == 0) {
      rotate(path.y, path.z, out.y, out.z, i);
      rotate(path.dy, path.dz, out.dy, out.dz, i);
    } else {
      rotate(path.z, path.x, out.z, out.x, i);
      rotate(path.dz, path.dx, out.dz, out.dx, i);
    }
  }
}

// Candidates are ordered by their bound through keys: the bound's bits (which order as the bound
// does, for bounds of zero and above) above the candidate's index.
uint64_t orderKey(float bound, size_t index) {
  if (!(bound > 0.0f)) bound = 0.0f;  // no sign bit, and a bound that is not a number comes first
  uint32_t bits = 0;
  std::memcpy(&bits, &bound, sizeof(bits));
  return static_cast<uint64_t>(bits) << 32 | static_cast<uint64_t>(index);
}

float boundOfKey(uint64_t key) {
  const uint32_t bits = static_cast<uint32_t>(key >> 32);
  float bound = 0.0f;
  std::memcpy(&bound, &bits, sizeof(bound));
  return bound;
}

// Candidates are put in order this many at first: the nearest is usually among the first few
// dozen, and the rest never need ordering.
constexpr size_t kOrderedAtOnce = 64;

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

int nearestGestureByShape(const GestureModel& model, const Stroke& stroke, double* distances,
                          const Stroke* leaveOut, bool window) {
  constexpr float kFar = std::numeric_limits<float>::infinity();
  StrokeShape& query = threadScratch<StrokeShape, struct QueryPlace>();
  std::vector<Candidate>& candidates = threadScratch<std::vector<Candidate>, struct CandidatesPlace>();
  std::vector<uint64_t>& order = threadScratch<std::vector<uint64_t>, struct OrderPlace>();
  std::vector<PlaceValues>& bounds = threadScratch<std::vector<PlaceValues>, struct BoundsPlace>();
  std::vector<float>& nearestOf = threadScratch<std::vector<float>, struct NearestPlace>();
  makeStrokeShape(stroke, model.parameters, false, query);

  candidates.clear();
  for (int g = 0; g < model.gestureCount(); ++g) {
    const Gesture& gesture = *model.gestures[static_cast<size_t>(g)];
    if (!gesture.gestureEnabled) continue;
    const bool few = gesture.gestureSamples.size() <= kFewSamples;
    for (const Stroke* sample : gesture.gestureSamples) {
      if (sample != leaveOut) candidates.push_back({g, &storedShape(*sample, model.parameters), few});
    }
  }
  // Grown, never shrunk: the per-place bounds of every sample are kept for the warping.
  if (bounds.size() < candidates.size()) bounds.resize(candidates.size());

  const bool perGesture = distances != nullptr;
  nearestOf.assign(perGesture ? static_cast<size_t>(model.gestureCount()) : 1, kFar);
  const auto nearestFor = [&](int gesture) -> float& {
    return nearestOf[perGesture ? static_cast<size_t>(gesture) : 0];
  };
  int nearest = -1;
  // One pass of a path against the samples (or the closed ones): the cheap bound of each first;
  // the warping runs on the most promising samples, several at once, and skips every sample whose
  // bound cannot beat what its gesture (or, when only the nearest gesture is asked for, any
  // gesture) has found, in this pass or an earlier one.
  const auto pass = [&](const WarpingQuery& path, Against against) {
    order.clear();
    // A sample whose bound passes the nearest distance found so far is left out at once.
    for (size_t i = 0; i < candidates.size(); ++i) {
      if ((against == Against::Closed && !candidates[i].shape->closed) || (against == Against::Few && !candidates[i].few)) {
        continue;
      }
      const float limit = nearestFor(candidates[i].gesture);
      const float bound = placeBounds(path, candidates[i].shape->envelope, bounds[i], limit);
      if (!(bound > limit)) order.push_back(orderKey(bound, i));
    }
    WarpingLane batch[kShapeLanes];
    int batchGesture[kShapeLanes];
    float found[kShapeLanes];
    size_t ordered = 0;
    for (size_t next = 0; next < order.size();) {
      int count = 0;
      for (; next < order.size() && count < kShapeLanes; ++next) {
        if (next == ordered) {
          // Twice as many each time: a long way down the order, the rest is ordered in few steps.
          ordered = std::min(order.size(), next + std::max(kOrderedAtOnce, next));
          const auto from = order.begin() + static_cast<std::ptrdiff_t>(next);
          const auto to = order.begin() + static_cast<std::ptrdiff_t>(ordered);
          std::nth_element(from, to - 1, order.end());
          std::sort(from, to);
        }
        const float bound = boundOfKey(order[next]);
        const size_t index = static_cast<size_t>(order[next] & 0xffffffffu);
        const Candidate& candidate = candidates[index];
        const float limit = nearestFor(candidate.gesture);
        if (bound > limit) {
          // The bounds are in order: past the overall nearest, no later sample can come closer.
          if (perGesture) continue;
          next = order.size();
          break;
        }
        batch[count] = {&candidate.shape->path, &bounds[index], limit};
        batchGesture[count++] = candidate.gesture;
      }
      if (count == 0) break;
      warpPaths(path, batch, count, found);
      for (int l = 0; l < count; ++l) {
        float& own = nearestFor(batchGesture[l]);
        // Of equal distances the lowest gesture index wins.
        if (found[l] < own || (found[l] == own && !perGesture && batchGesture[l] < nearest)) {
          own = found[l];
          if (!perGesture) nearest = batchGesture[l];
        }
      }
    }
  };
  pass(query.path, Against::All);
  // A closed stroke is also read from halfway round, against the closed samples: people start a
  // circle or a square at different places.
  if (query.closed) {
    WarpingQuery& turned = threadScratch<WarpingQuery, struct TurnedPlace>();
    startAt(query.path, kShapePoints / 2, turned);
    pass(turned, Against::Closed);
  }
  // A whole stroke is also compared turned a little with the gestures of few samples. Not a
  // window of running motion, which resembles few samples, so that the bounds skip little and
  // each reading would cost about as much as the first, every frame.
  if (!window) {
    WarpingQuery& turned = threadScratch<WarpingQuery, struct TurnedPlace>();
    for (const Turn& turn : kTurns) {
      turnPath(query.path, turn, turned);
      pass(turned, Against::Few);
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
