#include "model/shape_identification.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
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

// A stroke that comes within this many times a gesture's typical nearest distance (see
// SampleChoice) of one of its samples goes that gesture's samples' way: it is not read from
// elsewhere against a set of many samples. Measured on sets of 900 samples from nine people: 1 to 2
// times give the same answers, and 1.5 a third less time than 1.
constexpr float kMatchedReach = 1.5f;

// Which samples a reading of the stroke is compared with.
enum class Against { All, Closed, Few, ClosedBackwards, OpenBackwards };

// A gesture with at most this many samples is also compared with the stroke turned a little: with
// many samples, from many people, its samples mostly hold the tilts that people give it already,
// and a large set would pay for every reading. (Not so the ways round: of a set of 90 samples a
// digit from nine people, reading closed strokes backwards too takes a new person's digits from
// 98.6 to 99.6 %.)
constexpr size_t kFewSamples = 16;

// The turns of a whole stroke that such gestures are compared with: tipped forward and back (a
// drawing's plane leans as the head and hand are held), and turned left and right about the
// vertical axis. Axis 0 is x (across), 1 is y (up).
struct Turn {
  int axis;
  float angle;  // radians
};
constexpr Turn kTurns[] = {{0, 0.3f}, {0, -0.3f}, {1, 0.4f}, {1, -0.4f}};

// A closed gesture whose samples, read the other way round, come as near another gesture's samples
// as those come to one another (within this factor of their typical nearest distance), and much
// nearer than read as they are (by this factor), is that gesture drawn the other way round: the
// set tells a circle drawn clockwise from one drawn anticlockwise, and no stroke is read the other
// way round against either. (A circle and a square that people draw loosely, either way round,
// come about as near read either way.)
constexpr double kMirrorShare = 1.5;
constexpr double kMirrorGain = 0.5;
// The closed samples of a gesture that the check reads, at most, and as many open ones.
constexpr size_t kMirrorChecks = 8;
// What reversibleGestures tells of a gesture: whether a closed stroke is read the other way round
// against its closed samples, and an open stroke from its end against its open samples.
constexpr char kClosedWays = 1;
constexpr char kOpenWays = 2;

// The same closed path gone round the other way, begun at its point `first`.
void reversedFrom(const WarpingQuery& path, int first, WarpingQuery& out) {
  WarpingQuery backwards;
  reversedPath(path, backwards);
  startAt(backwards, first, out);
}

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

// A gesture with more samples than kFewSamples (a set recorded by many people, shipped to all
// users) is compared with a selection of them: a sample that comes nearer to one chosen before it
// than this share of how near the gesture's samples typically come to one another adds time and
// little else, since a stroke near it is nearly as near the chosen one. (Measured on sets of 90
// samples a gesture from nine people: about a third of the samples go, and the new person's
// strokes are identified as often.)
constexpr double kDuplicateShare = 1.0;
// How near a gesture's samples typically come to one another: the median of the nearest distances
// of this many of them to the others.
constexpr size_t kTypicalChecks = 16;

}  // namespace

// Which samples of each gesture identification compares with: all of a gesture with few samples;
// of one with many, each sample that none chosen before it comes near (see kDuplicateShare). And
// for those, how near their samples typically come to one another.
struct SampleChoice {
  struct Sample {
    const Stroke* stroke;  // never read through: a sample may have gone since
    size_t points;         // its length, which tells a sample recorded since at the same address
    bool compared;
  };
  std::vector<std::vector<Sample>> samples;  // per gesture, those it was chosen from
  std::vector<float> typical;                // infinity where not measured
  size_t total = 0;                          // samples it was chosen from
  int settings[5] = {0, 0, 0, 0, 0};         // the head settings then (see headSettingsOf)
};

namespace {

SampleChoice choosePrototypes(const GestureModel& model) {
  SampleChoice choice;
  choice.samples.resize(model.gestures.size());
  choice.typical.assign(model.gestures.size(), std::numeric_limits<float>::infinity());
  std::vector<const StrokeShape*> shapes, kept;
  for (size_t g = 0; g < model.gestures.size(); ++g) {
    const Gesture& gesture = *model.gestures[g];
    const size_t count = gesture.gestureSamples.size();
    std::vector<SampleChoice::Sample>& chosen = choice.samples[g];
    for (const Stroke* sample : gesture.gestureSamples) chosen.push_back({sample, sample->handPoints.size(), true});
    choice.total += count;
    if (!gesture.gestureEnabled || count <= kFewSamples) continue;
    shapes.clear();
    for (const Stroke* sample : gesture.gestureSamples) shapes.push_back(&storedShape(*sample, model.parameters));
    std::vector<float> typical;
    for (size_t k = 0; k < kTypicalChecks; ++k) {
      const size_t checked = k * count / kTypicalChecks;
      const float nearest = nearestStoredShape(shapes[checked]->path, count, [&](size_t i) {
        return i == checked ? nullptr : shapes[i];
      });
      if (std::isfinite(nearest)) typical.push_back(nearest);
    }
    if (typical.empty()) continue;
    std::nth_element(typical.begin(), typical.begin() + static_cast<std::ptrdiff_t>(typical.size() / 2), typical.end());
    choice.typical[g] = typical[typical.size() / 2];
    const float near = static_cast<float>(kDuplicateShare) * choice.typical[g];
    kept.clear();
    for (size_t i = 0; i < count; ++i) {
      if (nearestStoredShape(shapes[i]->path, kept.size(), [&](size_t k) { return kept[k]; }, near) < near) {
        chosen[i].compared = false;
      } else {
        kept.push_back(shapes[i]);
      }
    }
  }
  return choice;
}

// A choice is made again at the first identification after the set's samples grew or shrank by
// more than this factor since it was made (samples recorded one by one between identifications
// would otherwise pay for a whole choice each), and whenever training ends or a file loads.
constexpr double kChoiceGrowth = 1.25;

bool hasManySamples(const GestureModel& model) {
  for (const Gesture* gesture : model.gestures) {
    if (gesture->gestureEnabled && gesture->gestureSamples.size() > kFewSamples) return true;
  }
  return false;
}

// The samples chosen of a set that has a gesture of many samples (see kChoiceGrowth; `renew`: made
// again if the samples changed at all), whose sampleDigest is `digest`.
std::shared_ptr<const SampleChoice> prototypesOf(const GestureModel& model, uint64_t digest, bool renew = false) {
  size_t total = 0;
  for (const Gesture* gesture : model.gestures) total += gesture->gestureSamples.size();
  std::lock_guard<std::mutex> lock(model.prototypeMutex);
  const SampleChoice* made = model.prototypes.get();
  if (made != nullptr && model.prototypeDigest == digest) return model.prototypes;
  const double grown = made == nullptr ? 0.0 : static_cast<double>(total) / static_cast<double>(made->total);
  int settings[5];
  headSettingsOf(model.parameters, settings);
  if (made == nullptr || renew || !std::equal(settings, settings + 5, made->settings) ||
      made->samples.size() != model.gestures.size() ||
      !(grown <= kChoiceGrowth && grown * kChoiceGrowth >= 1.0)) {
    SampleChoice choice = choosePrototypes(model);
    std::copy(settings, settings + 5, choice.settings);
    model.prototypes = std::make_shared<const SampleChoice>(std::move(choice));
    model.prototypeDigest = digest;
  }
  return model.prototypes;
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

// A stroke whose sharpness (see turnSharpness) lies outside what a gesture's samples show is
// farther from that gesture: its distances grow by this weight times how far outside it lies (in
// the logarithm). People draw circles and squares loosely, either way round and from anywhere,
// and a circle read from another start or the other way comes close to a square; how evenly a
// stroke turns tells them apart whatever its start, direction, size or tilt.
constexpr double kSharpnessWeight = 3.0;
// What counts as inside: the samples' range widened by this factor either way, and at least this
// far either way from its middle (in the logarithm), since a few samples show little of the range.
constexpr double kSharpnessReach = 1.1;
constexpr double kSharpnessLeeway = 0.2;

// What a gesture's distances are multiplied by for a stroke of the given sharpness, when its
// compared samples' sharpness runs from `lowest` to `highest`: 1 within that range, more outside.
float sharpnessFactor(double sharpness, double lowest, double highest) {
  if (!(sharpness > 0.0) || !std::isfinite(sharpness) || !(highest > 0.0)) return 1.0f;  // nothing to tell by
  const double middle = 0.5 * (std::log(highest) + std::log(lowest));
  const double reach = std::max(0.5 * std::log(highest / lowest) + std::log(kSharpnessReach), kSharpnessLeeway);
  return static_cast<float>(1.0 + kSharpnessWeight * std::max(0.0, std::abs(std::log(sharpness) - middle) - reach));
}

}  // namespace

bool shapeMatchingApplies(const GestureModel& model) {
  if (!model.enhancedRecognition) return false;
  for (const Gesture* gesture : model.gestures) {
    if (gesture->gestureEnabled && !gesture->gestureSamples.empty()) return true;
  }
  return false;
}

namespace {

// The nearest gesture to a shape, as nearestGestureByShape. `reversible`: per gesture, whether a
// closed stroke is also read the other way round against its closed samples; null for never.
// `chosen`: which samples are compared; null for all.
int nearestToShape(const GestureModel& model, const StrokeShape& query, double* distances, const Stroke* leaveOut,
                   bool window, const std::vector<char>* reversible, const SampleChoice* chosen) {
  constexpr float kFar = std::numeric_limits<float>::infinity();
  std::vector<Candidate>& candidates = threadScratch<std::vector<Candidate>, struct CandidatesPlace>();
  std::vector<uint64_t>& order = threadScratch<std::vector<uint64_t>, struct OrderPlace>();
  std::vector<PlaceValues>& bounds = threadScratch<std::vector<PlaceValues>, struct BoundsPlace>();
  std::vector<float>& nearestOf = threadScratch<std::vector<float>, struct NearestPlace>();
  std::vector<float>& factorOf = threadScratch<std::vector<float>, struct SharpnessFactorPlace>();
  candidates.clear();
  factorOf.assign(static_cast<size_t>(model.gestureCount()), 1.0f);
  for (int g = 0; g < model.gestureCount(); ++g) {
    const Gesture& gesture = *model.gestures[static_cast<size_t>(g)];
    if (!gesture.gestureEnabled) continue;
    const bool few = gesture.gestureSamples.size() <= kFewSamples;
    // The samples the choice was made from, and whether each is compared; a sample added since
    // always is.
    const bool chose = chosen != nullptr && static_cast<size_t>(g) < chosen->samples.size();
    const size_t choices = chose ? chosen->samples[static_cast<size_t>(g)].size() : 0;
    const SampleChoice::Sample* choiceOf = chose ? chosen->samples[static_cast<size_t>(g)].data() : nullptr;
    double lowest = std::numeric_limits<double>::infinity(), highest = 0.0;
    for (size_t k = 0; k < gesture.gestureSamples.size(); ++k) {
      const Stroke* sample = gesture.gestureSamples[k];
      if (sample == leaveOut) continue;
      const StrokeShape* shape = &storedShape(*sample, model.parameters);
      if (k >= choices || choiceOf[k].compared || choiceOf[k].stroke != sample ||
          choiceOf[k].points != sample->handPoints.size()) {
        candidates.push_back({g, shape, few});
      }
      // The sharpness that the gesture shows is that of all its samples.
      const double own = shape->sharpness;
      if (!(own > 0.0) || !std::isfinite(own)) continue;
      lowest = std::min(lowest, own);
      highest = std::max(highest, own);
    }
    factorOf[static_cast<size_t>(g)] = sharpnessFactor(query.sharpness, lowest, highest);
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
  // gesture) has found, in this pass or an earlier one. Bounds, limits and distances are all
  // taken times the gesture's sharpness factor.
  const auto pass = [&](const WarpingQuery& path, Against against) {
    order.clear();
    // A sample whose bound passes the nearest distance found so far is left out at once.
    for (size_t i = 0; i < candidates.size(); ++i) {
      const Candidate& candidate = candidates[i];
      const bool closed = candidate.shape->closed;
      const char ways = reversible != nullptr ? (*reversible)[static_cast<size_t>(candidate.gesture)] : 0;
      bool compared = true;
      switch (against) {
        case Against::All:
          break;
        case Against::Closed:
          compared = closed;
          break;
        case Against::Few:
          compared = candidate.few;
          break;
        case Against::ClosedBackwards:
          compared = closed && (ways & kClosedWays) != 0;
          break;
        case Against::OpenBackwards:
          compared = !closed && candidate.few && (ways & kOpenWays) != 0;
          break;
      }
      if (!compared) continue;
      const float limit = nearestFor(candidate.gesture);
      const float factor = factorOf[static_cast<size_t>(candidate.gesture)];
      const float bound = factor * placeBounds(path, candidate.shape->envelope, bounds[i], limit / factor);
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
        batch[count] = {&candidate.shape->path, &bounds[index],
                        limit / factorOf[static_cast<size_t>(candidate.gesture)]};
        batchGesture[count++] = candidate.gesture;
      }
      if (count == 0) break;
      warpPaths(path, batch, count, found);
      for (int l = 0; l < count; ++l) found[l] *= factorOf[static_cast<size_t>(batchGesture[l])];
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
  // Whether a gesture of many samples (see SampleChoice) already has one that comes about as near
  // as its samples typically come to one another (kMatchedReach): the stroke begins where its
  // samples begin and goes their way, and reading it from elsewhere would cost a large set much
  // time for nothing.
  const auto matchedAsSamplesAre = [&] {
    if (chosen == nullptr || chosen->typical.size() != static_cast<size_t>(model.gestureCount())) return false;
    int best = nearest;
    float distance = perGesture ? kFar : nearestOf[0];
    for (size_t g = 0; perGesture && g < nearestOf.size(); ++g) {
      if (nearestOf[g] < distance) {
        distance = nearestOf[g];
        best = static_cast<int>(g);
      }
    }
    // (A gesture of few samples has no typical distance, and its ways round are always read.)
    return best >= 0 && std::isfinite(chosen->typical[static_cast<size_t>(best)]) &&
           distance <= kMatchedReach * chosen->typical[static_cast<size_t>(best)];
  };
  WarpingQuery& turned = threadScratch<WarpingQuery, struct TurnedPlace>();
  const bool matched = matchedAsSamplesAre();
  if (query.closed && !matched) {
    // A closed stroke is also read from halfway round, against the closed samples: people start a
    // circle or a square at different places.
    startAt(query.path, kShapePoints / 2, turned);
    pass(turned, Against::Closed);
    // And the other way round, from where it begins and from halfway, against the closed samples
    // of the gestures whose direction does not tell them from another: people go round a circle
    // either way.
    if (reversible != nullptr) {
      for (int first : {0, kShapePoints / 2}) {
        reversedFrom(query.path, first, turned);
        pass(turned, Against::ClosedBackwards);
      }
    }
  } else if (!query.closed && reversible != nullptr && !matched) {
    // An open stroke is also read from its end to its start, against the open samples of those
    // gestures: people begin a figure at either end. Only against gestures of few samples: a set
    // from many people holds both ends already, and reading every stroke twice against it costs
    // much time.
    reversedPath(query.path, turned);
    pass(turned, Against::OpenBackwards);
  }
  // A whole stroke is also compared turned a little with the gestures of few samples. Not a
  // window of running motion, which resembles few samples, so that the bounds skip little and
  // each reading would cost about as much as the first, every frame.
  if (!window) {
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

// Per gesture, whether a stroke may be read the other way round against its closed samples
// (kClosedWays) and against its open ones (kOpenWays): not when the set tells it from another
// gesture by its direction (see kMirrorShare). Closed and open samples are judged apart, each kind
// against how near that kind comes to its own gesture. Worked out once for a set of samples; `out`
// receives a copy.
// `digest`: the set's sampleDigest.
void reversibleGestures(const GestureModel& model, uint64_t digest, std::vector<char>& out) {
  std::lock_guard<std::mutex> lock(model.shapeSetMutex);
  if (model.shapeSetKnown && digest == model.shapeSetDigest) {
    out = model.reversibleGestures;
    return;
  }
  model.shapeSetKnown = true;
  model.shapeSetDigest = digest;
  std::vector<char>& reversible = model.reversibleGestures;
  const size_t gestureCount = model.gestures.size();
  reversible.assign(gestureCount, kClosedWays | kOpenWays);
  // The samples of one kind checked of each gesture with their nearest distances to every
  // gesture, and how near the gesture's samples of that kind come to one another (the median of
  // their nearest distances to their own gesture; infinite for a single sample, which has nothing
  // to measure against).
  struct Checked {
    const Stroke* sample;
    std::vector<double> forwards;
  };
  std::vector<std::vector<Checked>> checked(gestureCount);
  std::vector<double> typical(gestureCount);
  std::vector<double> distances(gestureCount);
  std::vector<const Stroke*> kind;
  StrokeShape backwards;
  for (const bool closed : {true, false}) {
    const char way = closed ? kClosedWays : kOpenWays;
    typical.assign(gestureCount, std::numeric_limits<double>::infinity());
    for (size_t g = 0; g < gestureCount; ++g) {
      checked[g].clear();
      const Gesture& gesture = *model.gestures[g];
      if (!gesture.gestureEnabled) continue;
      kind.clear();
      for (const Stroke* sample : gesture.gestureSamples) {
        if (storedShape(*sample, model.parameters).closed == closed) kind.push_back(sample);
      }
      const size_t count = std::min(kind.size(), kMirrorChecks);
      std::vector<double> nearest;
      for (size_t k = 0; k < count; ++k) {
        const Stroke* sample = kind[k * kind.size() / count];
        nearestToShape(model, storedShape(*sample, model.parameters), distances.data(), sample, true, nullptr,
                       nullptr);
        if (std::isfinite(distances[g])) nearest.push_back(distances[g]);
        checked[g].push_back({sample, distances});
      }
      if (nearest.empty()) continue;
      std::nth_element(nearest.begin(), nearest.begin() + static_cast<std::ptrdiff_t>(nearest.size() / 2),
                       nearest.end());
      typical[g] = nearest[nearest.size() / 2];
    }
    // A gesture whose samples, gone through the other way, come as near another gesture's samples
    // as those come to one another, is that gesture drawn the other way.
    backwards.closed = closed;
    for (size_t g = 0; g < gestureCount; ++g) {
      for (const Checked& check : checked[g]) {
        const StrokeShape& forwards = storedShape(*check.sample, model.parameters);
        if (closed) {
          reversedFrom(forwards.path, 0, backwards.path);
        } else {
          reversedPath(forwards.path, backwards.path);
        }
        backwards.sharpness = forwards.sharpness;  // the same turns, gone through the other way
        nearestToShape(model, backwards, distances.data(), check.sample, true, nullptr, nullptr);
        for (size_t h = 0; h < gestureCount; ++h) {
          if (h != g && std::isfinite(typical[h]) && distances[h] < kMirrorShare * typical[h] &&
              distances[h] < kMirrorGain * check.forwards[h]) {
            reversible[g] &= static_cast<char>(~way);
            reversible[h] &= static_cast<char>(~way);
          }
        }
      }
    }
  }
  out = reversible;
}

}  // namespace

int nearestGestureByShape(const GestureModel& model, const Stroke& stroke, double* distances,
                          const Stroke* leaveOut, bool window) {
  StrokeShape& query = threadScratch<StrokeShape, struct QueryPlace>();
  makeStrokeShape(stroke, model.parameters, false, query);
  // Worked out before the search, which shares its scratch with the working out. Windows of
  // running motion are not read the other way round: that would cost every frame.
  std::vector<char>& reversible = threadScratch<std::vector<char>, struct ReversiblePlace>();
  bool reversals = !window;
  // A set with a gesture of many samples is compared with the samples chosen of it; scoring the
  // set, which leaves samples out, with all the others.
  const bool choose = leaveOut == nullptr && hasManySamples(model);
  const uint64_t digest = reversals || choose ? sampleDigest(model, model.parameters) : 0;
  const std::shared_ptr<const SampleChoice> chosen = choose ? prototypesOf(model, digest) : nullptr;
  if (reversals) {
    reversibleGestures(model, digest, reversible);
    reversals = reversible.size() == model.gestures.size();
  }
  return nearestToShape(model, query, distances, leaveOut, window, reversals ? &reversible : nullptr, chosen.get());
}

void prepareShapes(const GestureModel& model) {
  if (!model.enhancedRecognition) return;
  for (const Gesture* gesture : model.gestures) {
    for (const Stroke* sample : gesture->gestureSamples) storedShape(*sample, model.parameters);
  }
  const uint64_t digest = sampleDigest(model, model.parameters);
  if (hasManySamples(model)) prototypesOf(model, digest, true);
  reversibleGestures(model, digest, threadScratch<std::vector<char>, struct ReversiblePlace>());
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
