#include "model/model_statistics.h"

#include <algorithm>
#include <cmath>

#include "features/feature_extraction.h"
#include "features/similarity.h"
#include "features/statistics.h"

namespace zando {

namespace {

// Gaussian of one coordinate. The floor keeps a gesture with a single sample (variance 0) finite.
double gaussian(double d, double variance) { return std::exp(-(d * d) / (2.0 * std::max(variance, 0.001))); }

double dot3(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

}  // namespace

double gestureSimilarity(const GestureModel& model, const std::vector<double>& featureVector, int gestureIndex) {
  if (gestureIndex < 0) return -1.0;
  const size_t index = static_cast<size_t>(gestureIndex);
  if (index >= model.gestureMeans.size() || index >= model.gestureDeviations.size()) return -1.0;
  const std::vector<double>& mean = model.gestureMeans[index];
  const std::vector<double>& variance = model.gestureDeviations[index];
  const ModelParameters& parameters = model.parameters;
  if (mean.size() != variance.size() || mean.size() != featureVector.size() ||
      featureVector.size() != static_cast<size_t>(featureCount(parameters))) {
    return -1.0;
  }
  const double* f = featureVector.data();
  const double* m = mean.data();
  const double* v = variance.data();

  double posSum = 0.0;
  int posCount = 0;
  double rotSum = 0.0;
  int rotCount = 0;
  int o = 0;
  const int width = waypointFeatureWidth(parameters.waypointFeatureMode);
  for (int i = 0; i < parameters.waypointCount; ++i, o += width) {
    for (int j = 0; j < 3; ++j) posSum += gaussian(f[o + j] - m[o + j], v[o + j]);
    posCount += 3;
    const int r = o + 3;
    switch (parameters.waypointFeatureMode) {
      case 0:
        break;
      case 1:
        for (int j = 0; j < 3; ++j) rotSum += gaussian(angleDistance(f[r + j], m[r + j]), v[r + j]);
        rotCount += 3;
        break;
      case 2: {
        // Passing a * a sets the fourth power of the angle against a variance of its square; the
        // scale of all similarity values rests on that pairing.
        const double a = quaternionAngle(Quaternion(m + r), Quaternion(f + r));
        rotSum += gaussian(a * a, v[r]);
        rotCount += 1;
        break;
      }
      case 4: {
        const double e1 = 1.0 - dot3(f + r, m + r);
        const double e2 = 1.0 - dot3(f + r + 3, m + r + 3);
        rotSum += gaussian(e1 * e1, v[r]);
        rotSum += gaussian(e2 * e2, v[r + 3]);
        rotCount += 2;
        break;
      }
      default:
        return -1.0;
    }
  }
  // A group without coordinates counts as a full match.
  const double positions = posCount == 0 ? 1.0 : posSum / posCount;
  const double rotations = rotCount == 0 ? 1.0 : rotSum / rotCount;

  double header = 1.0;
  switch (parameters.headerFeatureMode) {
    case 0:
      break;
    case 1:
      header = (gaussian(angleDistance(f[o], m[o]), v[o]) + gaussian(angleDistance(f[o + 1], m[o + 1]), v[o + 1]) +
                gaussian(angleDistance(f[o + 2], m[o + 2]), v[o + 2])) /
               3.0;
      o += 3;
      break;
    case 2: {
      const double a = quaternionAngle(Quaternion(m + o), Quaternion(f + o));
      header = gaussian(a * a, v[o]);
      o += 4;
      break;
    }
    case 4: {
      const double e1 = 1.0 - dot3(f + o, m + o);
      const double e2 = 1.0 - dot3(f + o + 3, m + o + 3);
      header = (gaussian(e1 * e1, v[o]) + gaussian(e2 * e2, v[o + 3])) * 0.5;
      o += 6;
      break;
    }
    default:
      return -1.0;
  }

  const double centroid =
      (gaussian(f[o] - m[o], v[o]) + gaussian(f[o + 1] - m[o + 1], v[o + 1]) + gaussian(f[o + 2] - m[o + 2], v[o + 2])) /
      3.0;
  const double radius = gaussian(f[o + 3] - m[o + 3], v[o + 3]);
  return (positions + rotations + header + centroid + radius) * 0.2;
}

void computeGestureMeans(GestureModel& model) {
  const size_t gestureCount = model.gestures.size();
  model.gestureMeans.resize(gestureCount);
  model.gestureDeviations.resize(gestureCount);
  std::vector<std::vector<double>> features;
  // Last to first, like the extraction order of the samples: under random waypoint selection the
  // order decides which draws each sample gets.
  for (size_t g = gestureCount; g-- > 0;) {
    const Gesture* gesture = model.gestures[g];
    const size_t sampleCount = gesture == nullptr ? 0 : gesture->gestureSamples.size();
    features.assign(sampleCount, std::vector<double>());
    for (size_t s = sampleCount; s-- > 0;) {
      features[s] = extractFeatures(*gesture->gestureSamples[s], model.parameters);
    }
    model.gestureMeans[g] = averageFeatureVectors(features, model.parameters);
    model.gestureDeviations[g] = featureVariance(features, model.gestureMeans[g], model.parameters);
  }
}

}  // namespace zando
