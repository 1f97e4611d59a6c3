#include "model/training_search.h"

#include <cstdint>
#include <vector>

#include "features/model_parameters.h"
#include "model/model_statistics.h"
#include "model/shape_identification.h"
#include "spatial/random.h"

namespace zando {

namespace {

// A score this high cannot be beaten; the run ends with it.
constexpr double kPerfectScore = 0.9999999999;

// The model as a run that found no network leaves it: no weights, no statistics, neutral scales.
void abandonNetwork(GestureModel& model, double score) noexcept {
  model.trainingCost = 0.0;
  model.validationCost = 0.0;
  model.recognitionScore = score;
  model.weights.clear();
  model.layerBuffers.clear();
  model.gestureMeans.clear();
  model.gestureDeviations.clear();
  model.networkInvalid = true;
  model.parameters.featureScaleA = 1.0;
  model.parameters.featureScaleB = 1.0;
}

class Search {
 public:
  explicit Search(TrainingHost& host) : host_(host), model_(host.model()) {}

  void run();

 private:
  bool isFree(int id) {
    const std::map<int, int>& pinned = host_.trainingParameters();
    const auto found = pinned.find(id);
    return found == pinned.end() || found->second == -1;
  }
  bool pinnedValue(int id, int* value) {
    const std::map<int, int>& pinned = host_.trainingParameters();
    const auto found = pinned.find(id);
    if (found == pinned.end()) return false;
    *value = found->second;
    return true;
  }

  void applyTrainingParameters(ModelParameters& parameters);
  void searchLoop(NeuralNetwork& best);
  // How the last accepted candidate ended decides the direction: shrink after a stall or
  // overfitting, grow after convergence.
  void move(bool grow, const NeuralNetwork& best);
  void change(int id, bool grow);
  void redraw();
  void complete(NeuralNetwork& best);
  void finishByShape();

  TrainingHost& host_;
  GestureModel& model_;
  double lambda_ = 0.06;
  unsigned hiddenNodes_ = 0;
  unsigned hiddenLayers_ = 2;
  ModelParameters params_;          // the settings of the next candidate
  ModelParameters acceptedParams_;  // those of the last accepted one
  TrainingData data_;
  int tries_ = 0;
  bool widened_ = false;  // once set, feature settings join the moves
  int lastResult_ = TrainingResult_Stalled;
  bool needsRebuild_ = false;
};

void Search::applyTrainingParameters(ModelParameters& p) {
  int v;
  if (pinnedValue(TrainingParameter_Lambda, &v) && v > 0) lambda_ = v / 1000.0;
  if (pinnedValue(TrainingParameter_HiddenNodes, &v) && v > 0) hiddenNodes_ = static_cast<unsigned>(v);
  if (pinnedValue(TrainingParameter_HiddenLayers, &v) && v > 0) hiddenLayers_ = static_cast<unsigned>(v);
  if (pinnedValue(TrainingParameter_WaypointCount, &v) && v > 0) p.waypointCount = v;
  if (pinnedValue(TrainingParameter_WaypointFeatureMode, &v) && v >= 0) p.waypointFeatureMode = v;
  if (pinnedValue(TrainingParameter_FeatureFlagC, &v) && v >= 0) p.featureFlagC = v != 0;
  if (pinnedValue(TrainingParameter_FeatureSelector, &v) && v >= 0) p.featureSelector = v;
  if (pinnedValue(TrainingParameter_FeatureFlagA, &v) && v >= 0) p.featureFlagA = v;
  if (pinnedValue(TrainingParameter_FeatureFlagB, &v) && v >= 0) p.featureFlagB = v;
  if (pinnedValue(TrainingParameter_TransferMode, &v) && v >= 0) p.transferMode = v;
  if (pinnedValue(TrainingParameter_TransferSlope, &v) && v >= 0) p.transferSlope = v / 1000.0;
}

void Search::run() {
  if (model_.gestures.empty()) {
    abandonNetwork(model_, 1.0);  // nothing to tell apart: every answer is right
    return;
  }
  model_.networkInvalid = false;
  computeFeatureScales(model_);

  ModelParameters& p = model_.parameters;
  p.waypointCount = 16;
  p.featureSelector = 3;
  p.featureFlagA = 0;
  p.headerFeatureMode = 2;
  p.waypointFeatureMode = 2;
  p.featureFlagC = true;
  p.transferMode = 1;
  p.transferSlope = 0.33333;
  lambda_ = 0.06;
  hiddenLayers_ = 2;
  // From the default feature count: a pinned waypoint count does not move it.
  hiddenNodes_ = static_cast<unsigned>(featureCount(p) * 1.2);
  applyTrainingParameters(p);
  params_ = p;
  acceptedParams_ = p;

  if (shapeMatchingApplies(model_)) {
    finishByShape();
    return;
  }

  if (!buildTrainingData(model_.gestures, data_, params_, &model_.networkInvalid)) {
    abandonNetwork(model_, 0.0);
    return;
  }
  // The random start stands until a candidate beats it.
  NeuralNetwork best(params_, static_cast<int>(hiddenLayers_), static_cast<int>(hiddenNodes_),
                     model_.gestureCount());
  reportTrainingUpdate(host_, 0.0);
  searchLoop(best);
  complete(best);
}

void Search::searchLoop(NeuralNetwork& best) {
  const int outputs = model_.gestureCount();
  for (;;) {
    if (trainingStopRequested(host_)) return;
    if (trainingTimeUp(host_)) return;
    if (needsRebuild_ || data_.training.inputs.cols() != featureCount(params_) + 1) {
      // Each rebuild also draws a new split.
      if (!buildTrainingData(model_.gestures, data_, params_, &model_.networkInvalid)) return;
      needsRebuild_ = false;
    }

    NeuralNetwork candidate(params_, static_cast<int>(hiddenLayers_), static_cast<int>(hiddenNodes_), outputs);
    const int result = trainNetwork(host_, candidate, data_, lambda_, best.recognitionScore);
    ++tries_;

    // A slightly lower score with a lower validation cost counts as better.
    if (candidate.validationCost < best.validationCost &&
        candidate.recognitionScore >= best.recognitionScore - 0.001) {
      if (host_.reportAllUpdates() || candidate.recognitionScore > best.recognitionScore) {
        reportTrainingUpdate(host_, candidate.recognitionScore);
      }
      best = std::move(candidate);
      acceptedParams_ = params_;
      lastResult_ = result;
      if (best.recognitionScore >= kPerfectScore) return;
    } else {
      if (host_.reportAllUpdates()) reportTrainingUpdate(host_, candidate.recognitionScore);
      // Feature settings go back to the winner's; the network settings stay where the search
      // took them.
      if (!params_.sameAs(acceptedParams_)) {
        params_ = acceptedParams_;
        needsRebuild_ = true;
      }
    }

    // The hyperbolic tangent gets three candidates, then the logistic function takes over; the
    // map is not consulted here.
    if (tries_ > 3 && params_.transferMode != 0) {
      params_.transferMode = 0;
      needsRebuild_ = true;  // the targets' negative value changes with the function
    }
    if (tries_ == 10) widened_ = true;

    // A rejected candidate repeats the move that followed the last accepted one.
    if (lastResult_ == TrainingResult_Stalled || lastResult_ == TrainingResult_Overfitting) {
      move(false, best);
    } else if (lastResult_ == TrainingResult_Converged) {
      move(true, best);
    }
  }
}

void Search::move(bool grow, const NeuralNetwork& best) {
  const int64_t features = featureCount(params_);
  const int64_t waypoints = params_.waypointCount;
  std::vector<int> ids;
  const auto consider = [&](int id, bool condition) {
    if (condition && isFree(id)) ids.push_back(id);
  };
  if (grow) {
    consider(TrainingParameter_Lambda, !(lambda_ < 0.0001));
    consider(TrainingParameter_HiddenNodes, static_cast<int64_t>(hiddenNodes_) < 8 * features);
    consider(TrainingParameter_HiddenLayers, hiddenLayers_ < 4);
    consider(TrainingParameter_WaypointCount, waypoints + 2 < 128);
    consider(TrainingParameter_WaypointFeatureMode, params_.waypointFeatureMode == 0);
  } else {
    consider(TrainingParameter_Lambda, !(lambda_ > 2.0));
    consider(TrainingParameter_HiddenNodes, hiddenNodes_ > 4);
    consider(TrainingParameter_HiddenLayers, hiddenLayers_ > 1);
    consider(TrainingParameter_WaypointCount, waypoints > 4);
    consider(TrainingParameter_WaypointFeatureMode, params_.waypointFeatureMode != 0);
  }

  if (!ids.empty()) {
    if (widened_) {
      for (int id : {TrainingParameter_FeatureSelector, TrainingParameter_FeatureFlagC, TrainingParameter_FeatureFlagA,
                     TrainingParameter_FeatureFlagB}) {
        if (isFree(id)) ids.push_back(id);
      }
    }
    shuffleMersenne(ids);
    change(ids.back(), grow);
    return;
  }

  if (best.recognitionScore >= kPerfectScore) {
    // Nothing left to try and nothing to gain: the loop ends at its next test. A stop request
    // of the application may have come first; either way the state says "stop".
    int running = TrainingState_Running;
    host_.trainingState().compare_exchange_strong(running, TrainingState_Stopping);
  } else {
    redraw();
  }
}

void Search::change(int id, bool grow) {
  switch (id) {
    case TrainingParameter_Lambda:
      lambda_ = grow ? lambda_ / 3.0 : lambda_ * 3.0;
      break;
    case TrainingParameter_HiddenNodes:
      hiddenNodes_ = static_cast<unsigned>(grow ? hiddenNodes_ * 1.3 : hiddenNodes_ / 1.3);
      break;
    case TrainingParameter_HiddenLayers:
      hiddenLayers_ = grow ? hiddenLayers_ + 1 : hiddenLayers_ - 1;
      break;
    case TrainingParameter_WaypointCount:
      params_.waypointCount += grow ? 2 : -2;
      needsRebuild_ = true;
      break;
    case TrainingParameter_WaypointFeatureMode:
      params_.waypointFeatureMode = grow ? 2 : 0;
      needsRebuild_ = true;
      break;
    case TrainingParameter_FeatureFlagC:
      params_.featureFlagC = !params_.featureFlagC;
      needsRebuild_ = true;
      break;
    case TrainingParameter_FeatureSelector:
      params_.featureSelector = params_.featureSelector >= 3 ? 0 : params_.featureSelector + 1;
      needsRebuild_ = true;
      break;
    case TrainingParameter_FeatureFlagA:
      params_.featureFlagA = 1 - params_.featureFlagA;
      needsRebuild_ = true;
      break;
    case TrainingParameter_FeatureFlagB:
      params_.featureFlagB = 1 - params_.featureFlagB;
      needsRebuild_ = true;
      break;
    // Never put on a list so far; kept so that the moves are complete.
    case TrainingParameter_TransferMode:
      params_.transferMode = 1 - params_.transferMode;
      break;
    case TrainingParameter_TransferSlope:
      params_.transferSlope = (randomInt() % 20 + 20) / 100.0;
      break;
    default:
      break;
  }
}

void Search::redraw() {
  if (isFree(TrainingParameter_Lambda)) lambda_ = ((randomInt() % 300 + 1) * 0.06) / 100.0;
  if (isFree(TrainingParameter_HiddenLayers)) hiddenLayers_ = static_cast<unsigned>(randomInt() % 5 + 1);
  // Sized for the waypoint count that stood before this restart.
  if (isFree(TrainingParameter_HiddenNodes)) hiddenNodes_ = static_cast<unsigned>(featureCount(params_) * 1.2);
  if (isFree(TrainingParameter_WaypointCount)) params_.waypointCount = randomInt() % 64 + 2;
  if (isFree(TrainingParameter_WaypointFeatureMode)) params_.waypointFeatureMode = (randomInt() & 1) ? 2 : 0;
  if (widened_) {
    if (isFree(TrainingParameter_FeatureSelector)) params_.featureSelector = randomInt() % 4;
    if (isFree(TrainingParameter_FeatureFlagC)) params_.featureFlagC = (randomInt() & 1) != 0;
    if (isFree(TrainingParameter_FeatureFlagA)) params_.featureFlagA = 1 - params_.featureFlagA;
    if (isFree(TrainingParameter_FeatureFlagB)) params_.featureFlagB = 1 - params_.featureFlagB;
  }
  needsRebuild_ = true;
}

// The enhanced mode identifies by the shapes of the stored samples, which a network adds nothing
// to: the run keeps what the mode does use (the gesture statistics behind similarity values) and
// scores the samples against one another, without a network.
void Search::finishByShape() {
  model_.weights.clear();
  model_.layerBuffers.clear();
  model_.networkInvalid = true;
  model_.trainingCost = 0.0;
  model_.validationCost = 0.0;
  computeGestureMeans(model_);
  model_.recognitionScore =
      shapeSelfScore(model_, [this] { return !trainingStopRequested(host_) && !trainingTimeUp(host_); });
  prepareShapes(model_);
  reportTrainingUpdate(host_, model_.recognitionScore);
}

void Search::complete(NeuralNetwork& best) {
  GestureModel& model = model_;
  model.parameters = best.parameters;
  model.trainingCost = best.trainingCost;
  model.validationCost = best.validationCost;
  model.recognitionScore = best.recognitionScore;
  model.weights = std::move(best.weights);

  // Buffers for one stroke, so that identification allocates nothing.
  const size_t layers = model.weights.size();
  const Eigen::Index features = featureCount(model.parameters);
  const Eigen::Index hidden = layers > 0 ? model.weights.front().cols() : 0;
  model.layerBuffers.assign(layers + 1, Matrix());
  for (size_t k = 0; k <= layers; ++k) {
    Matrix& buffer = model.layerBuffers[k];
    if (k == 0) {
      buffer = Matrix::Zero(1, features + 1);
    } else if (k < layers) {
      buffer = Matrix::Zero(1, hidden + 1);
    } else {
      buffer = Matrix::Zero(1, model.gestureCount());
    }
    if (k < layers) buffer(0, 0) = 1.0;
  }
  computeGestureMeans(model);
}

}  // namespace

void runTraining(TrainingHost& host) {
  GestureModel& model = host.model();
  try {
    Search search(host);
    search.run();
  } catch (...) {
    // Chiefly a failed allocation for an oversized network or set. The thread has nobody to
    // report to; the run shows as failed.
    abandonNetwork(model, 0.0);
  }
  // Everything the callback needs is read before the state says "finished": from then on the
  // application may use the model again.
  const double score = model.recognitionScore;
  void* metadata = nullptr;
  const TrainingCallback finish = host.finishCallback(&metadata);
  host.trainingState().store(TrainingState_Finished, std::memory_order_release);
  if (finish != nullptr) finish(score, metadata);
}

}  // namespace zando
