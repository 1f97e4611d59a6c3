#include "model/identification.h"

#include <algorithm>
#include <cfloat>

#include "features/feature_extraction.h"
#include "features/similarity.h"
#include "model/model_statistics.h"
#include "model/neural_network.h"
#include "model/shape_identification.h"
#include "spatial/thread_scratch.h"
#include "zando/zando.h"

namespace zando {

namespace {

// Only the first three samples of a gesture take part in the comparison without a network: the
// route serves tiny sample sets, and each call extracts them anew.
template <typename Visit>
void forEachComparedSample(const Gesture& gesture, Visit&& visit) {
  const int count = static_cast<int>(gesture.gestureSamples.size());
  for (int s = std::min(count - 1, 2); s >= 0; --s) visit(*gesture.gestureSamples[static_cast<size_t>(s)]);
}

// The network fits when its shapes match the present gestures and feature length; each mismatch
// means training is needed. The chain of inner widths is checked too, since a damaged model must
// not reach the matrix products.
bool networkFits(const GestureModel& model, Eigen::Index inputs) {
  const std::vector<Matrix>& w = model.weights;
  const std::vector<Matrix>& a = model.layerBuffers;
  const Eigen::Index gestures = model.gestureCount();
  if (w.size() < 2) return false;
  if (a.size() != w.size() + 1) return false;
  if (w.back().cols() != gestures || a.back().cols() != gestures) return false;
  if (a.front().cols() != inputs + 1 || w.front().rows() != inputs + 1) return false;
  for (size_t k = 1; k < w.size(); ++k) {
    if (w[k].rows() != w[k - 1].cols() + 1) return false;
  }
  return true;
}

// Runs the network on one feature vector; the outputs are in the last layer buffer.
void runNetwork(GestureModel& model, const std::vector<double>& x) {
  Matrix& input = model.layerBuffers.front();
  if (input.rows() != 1) input.resize(1, static_cast<Eigen::Index>(x.size()) + 1);
  input(0, 0) = 1.0;
  for (size_t i = 0; i < x.size(); ++i) input(0, static_cast<Eigen::Index>(i) + 1) = x[i];
  forward(model.weights, model.layerBuffers, model.parameters.transferMode, model.parameters.transferSlope);
}

// Shared body of the two probability forms; similarities may be null.
int probabilities(GestureModel& model, double* p, double* s, int* count, const Stroke& stroke, double pos[4],
                  double* scale, double dir0[4], double dir1[4], double dir2[4], bool window) {
  const std::vector<double> x = extractFeatures(stroke, model.parameters, pos, scale, dir0, dir1, dir2);
  const int m = std::min(*count, model.gestureCount());
  if (m < 1) return ReturnCode_NoGestures;
  if (shapeMatchingApplies(model)) {
    std::vector<double>& distances = threadScratch<std::vector<double>, struct DistancesPlace>();
    std::vector<double>& shares = threadScratch<std::vector<double>, struct SharesPlace>();
    distances.resize(static_cast<size_t>(model.gestureCount()));
    shares.resize(distances.size());
    if (nearestGestureByShape(model, stroke, distances.data(), nullptr, window) >= 0) {
      probabilitiesFromShapeDistances(distances.data(), model.gestureCount(), shares.data());
      // In the tanh mode the caller turns p into 0.5 + 0.5 p; the host sees the shares either way.
      const bool tanhMode = model.parameters.transferMode == 1;
      for (int i = 0; i < m; ++i) {
        p[i] = tanhMode ? 2.0 * shares[static_cast<size_t>(i)] - 1.0 : shares[static_cast<size_t>(i)];
        if (s != nullptr) s[i] = gestureSimilarity(model, x, i);
      }
      *count = m;
      return ReturnCode_Success;
    }
  }
  if (model.networkInvalid) {
    for (int i = 0; i < m; ++i) {
      p[i] = 0.0;
      if (s != nullptr) s[i] = 0.0;
      forEachComparedSample(*model.gestures[static_cast<size_t>(i)], [&](const Stroke& sample) {
        const double d = strokeDistance(x, extractFeatures(sample, model.parameters), model.parameters);
        // Not limited to 1: a distance of 0.25 gives 4, while an exact match gives only 1.
        const double v = d <= 0.0 ? 1.0 : 1.0 / d;
        if (p[i] < v) {
          p[i] = v;
          if (s != nullptr) s[i] = gestureSimilarity(model, x, i);
        }
      });
    }
  } else {
    if (!networkFits(model, static_cast<Eigen::Index>(x.size()))) return ReturnCode_ModelMismatch;
    runNetwork(model, x);
    const Matrix& outputs = model.layerBuffers.back();
    for (int i = 0; i < m; ++i) {
      p[i] = outputs(0, i);
      if (s != nullptr) s[i] = gestureSimilarity(model, x, i);
    }
  }
  *count = m;
  return ReturnCode_Success;
}

}  // namespace

int identifyStroke(GestureModel& model, const Stroke& stroke, double pos[4], double* scale, double dir0[4],
                   double dir1[4], double dir2[4], double* similarity, bool window) {
  const std::vector<double> x = extractFeatures(stroke, model.parameters, pos, scale, dir0, dir1, dir2);
  int result = shapeMatchingApplies(model) ? nearestGestureByShape(model, stroke, nullptr, nullptr, window) : -1;
  if (result >= 0) {
    if (similarity != nullptr) *similarity = gestureSimilarity(model, x, result);
    return result;
  }
  result = 0;
  if (model.networkInvalid) {
    if (model.gestures.empty()) return ReturnCode_NoGestures;
    double best = DBL_MAX;
    for (int g = 0; g < model.gestureCount(); ++g) {
      forEachComparedSample(*model.gestures[static_cast<size_t>(g)], [&](const Stroke& sample) {
        const double d = strokeDistance(x, extractFeatures(sample, model.parameters), model.parameters);
        if (d < best) {
          best = d;
          result = g;
        }
      });
    }
  } else {
    if (!networkFits(model, static_cast<Eigen::Index>(x.size()))) return ReturnCode_ModelMismatch;
    runNetwork(model, x);
    // Of equal outputs the lowest index wins.
    const Matrix& outputs = model.layerBuffers.back();
    for (Eigen::Index i = 1; i < outputs.cols(); ++i) {
      if (outputs(0, i) > outputs(0, result)) result = static_cast<int>(i);
    }
  }
  if (similarity != nullptr) *similarity = gestureSimilarity(model, x, result);
  return result;
}

int computeProbabilities(GestureModel& model, double* p, int* count, const Stroke& stroke, double pos[4],
                         double* scale, double dir0[4], double dir1[4], double dir2[4]) {
  return probabilities(model, p, nullptr, count, stroke, pos, scale, dir0, dir1, dir2, false);
}

int computeProbabilitiesAndSimilarities(GestureModel& model, double* p, double* s, int* count, const Stroke& stroke,
                                        double pos[4], double* scale, double dir0[4], double dir1[4],
                                        double dir2[4], bool window) {
  return probabilities(model, p, s, count, stroke, pos, scale, dir0, dir1, dir2, window);
}

}  // namespace zando
