#include "model/network_training.h"

#include <cfloat>
#include <cmath>
#include <ctime>

namespace zando {

namespace {

// Prediction of each row (lowest column among equal outputs) against a target of exactly 1.0.
double scoreOutputs(const Matrix& outputs, const Matrix& targets) {
  const Eigen::Index rows = outputs.rows();
  if (rows == 0) return 0.0;
  int correct = 0;
  for (Eigen::Index r = 0; r < rows; ++r) {
    Eigen::Index best = 0;
    for (Eigen::Index c = 1; c < outputs.cols(); ++c) {
      if (outputs(r, c) > outputs(r, best)) best = c;
    }
    if (best < targets.cols() && targets(r, best) == 1.0) ++correct;
  }
  return static_cast<double>(correct) / static_cast<double>(rows);
}

// Layer buffers A[0] .. A[L] for the rows of `inputs`, A[0] a copy of them.
std::vector<Matrix> layerBuffersFor(const Matrix& inputs, const std::vector<Matrix>& weights) {
  std::vector<Matrix> buffers;
  buffers.reserve(weights.size() + 1);
  buffers.push_back(inputs);
  for (size_t k = 0; k < weights.size(); ++k) {
    const bool output = k + 1 == weights.size();
    buffers.emplace_back(inputs.rows(), weights[k].cols() + (output ? 0 : 1));
  }
  return buffers;
}

bool weightsFit(const SampleSet& set, const std::vector<Matrix>& weights) {
  return !weights.empty() && set.inputs.cols() == weights.front().rows() &&
         set.targets.cols() == weights.back().cols() && set.targets.rows() == set.inputs.rows();
}

}  // namespace

bool trainingStopRequested(TrainingHost& host) {
  return host.trainingState().load(std::memory_order_acquire) == TrainingState_Stopping;
}

bool trainingTimeUp(TrainingHost& host) {
  // Whole seconds in 32 bits, compared unsigned: a negative limit never runs out.
  const uint32_t now = static_cast<uint32_t>(std::time(nullptr));
  const uint32_t start = static_cast<uint32_t>(host.trainingStartTime());
  return now - start >= static_cast<uint32_t>(host.maxTrainingTime());
}

void reportTrainingUpdate(TrainingHost& host, double score) {
  void* metadata = nullptr;
  const TrainingCallback callback = host.updateCallback(&metadata);
  if (callback != nullptr) callback(score, metadata);
}

double crossEntropyCost(const Matrix& outputs, const Matrix& targets, int transferMode) {
  const Eigen::Index rows = outputs.rows();
  if (rows == 0) return 0.0;
  const Eigen::Index count = outputs.size();
  const double* o = outputs.data();
  const double* t = targets.data();
  double sum = 0.0;
  for (Eigen::Index i = 0; i < count; ++i) {
    double term;
    if (transferMode == 1) {
      term = t[i] > 0 ? std::log(0.5 * (o[i] + 1)) : std::log(0.5 * (1 - o[i]));
    } else {
      term = t[i] > 0.5 ? std::log(o[i]) : std::log(1 - o[i]);
    }
    if (std::isfinite(term)) {
      sum += term;
    } else {
      sum = -DBL_MAX;
    }
  }
  return -sum / static_cast<double>(rows);
}

double regularizationCost(int sampleCount, const std::vector<Matrix>& weights, double lambda) {
  if (sampleCount <= 0) return 0.0;
  double sum = 0.0;
  for (const Matrix& w : weights) {
    if (w.rows() > 1) sum += w.bottomRows(w.rows() - 1).squaredNorm();
  }
  return sum * lambda / (2.0 * sampleCount);
}

double scoreNetwork(const SampleSet& set, const NeuralNetwork& network) {
  if (set.count == 0 || set.inputs.rows() == 0) return 0.0;
  if (!weightsFit(set, network.weights)) return 0.0;
  std::vector<Matrix> buffers = layerBuffersFor(set.inputs, network.weights);
  forward(network.weights, buffers, network.parameters.transferMode, network.parameters.transferSlope);
  return scoreOutputs(buffers.back(), set.targets);
}

StepSchedule::Verdict StepSchedule::judge(double cost, double previousCost) {
  // The tolerance lets the rate keep growing through small bumps; the first iteration always
  // passes, its previous cost being the largest double.
  if (cost <= 1.01 * previousCost) {
    if (std::fabs(cost - previousCost) < 0.0001) {
      if (nearlyConverged) return Converged;
      nearlyConverged = true;
    } else {
      nearlyConverged = false;
    }
    growth *= 1.1;
    return Accepted;
  }
  growth = 1.0;
  stepFactor = 0.6;
  return Rejected;
}

bool StepSchedule::stalled(double score) {
  if (score - lastScore < 0.005) return true;
  countdown = 249;
  lastScore = score;
  return false;
}

GradientDescent::GradientDescent(const std::vector<Matrix>& weights, const TrainingData& data, int transferMode,
                                 double transferSlope)
    : data_(data), transferMode_(transferMode), transferSlope_(transferSlope) {
  training_ = layerBuffersFor(data.training.inputs, weights);
  validation_ = layerBuffersFor(data.validation.inputs, weights);
  scoring_ = layerBuffersFor(data.scoring.inputs, weights);
  const size_t layers = weights.size();
  delta_.resize(layers + 1);
  gradient_.resize(layers);
  for (size_t k = 0; k < layers; ++k) {
    // The error of a hidden layer is never needed at its constant bias column.
    delta_[k + 1].resize(data.training.inputs.rows(), weights[k].cols());
    gradient_[k].resize(weights[k].rows(), weights[k].cols());
  }
}

void GradientDescent::evaluate(const std::vector<Matrix>& weights, double lambda, double* cost,
                               double* validationCost) {
  forward(weights, training_, transferMode_, transferSlope_);
  forward(weights, validation_, transferMode_, transferSlope_);
  *cost = crossEntropyCost(training_.back(), data_.training.targets, transferMode_) +
          regularizationCost(data_.training.count, weights, lambda);
  *validationCost = crossEntropyCost(validation_.back(), data_.validation.targets, transferMode_);
}

void GradientDescent::descend(std::vector<Matrix>& weights, double lambda, double learningRate) {
  const size_t layers = weights.size();
  if (layers == 0) return;
  // Output error without a derivative factor: with the cross-entropy cost it cancels for both
  // transfer functions.
  delta_[layers] = training_[layers] - data_.training.targets;
  for (size_t k = layers - 1; k >= 1; --k) {
    const Matrix& w = weights[k];
    Matrix& delta = delta_[k];
    delta.noalias() = delta_[k + 1] * w.bottomRows(w.rows() - 1).transpose();
    const auto a = training_[k].rightCols(delta.cols()).array();
    if (transferMode_ == 1) {
      delta.array() *= (1.0 - a.square()) * transferSlope_;
    } else {
      delta.array() *= (1.0 - a) * a;
    }
  }
  for (size_t k = 0; k < layers; ++k) {
    // A sum over the rows, not a mean: the small start rates make up for it.
    gradient_[k].noalias() = training_[k].transpose() * delta_[k + 1];
    Matrix& w = weights[k];
    const Eigen::Index decayed = w.rows() - 1;
    gradient_[k].bottomRows(decayed) += lambda * w.bottomRows(decayed);
    w.noalias() -= learningRate * gradient_[k];
  }
}

double GradientDescent::score(const std::vector<Matrix>& weights) {
  if (data_.scoring.count == 0 || scoring_.front().rows() == 0) return 0.0;
  forward(weights, scoring_, transferMode_, transferSlope_);
  return scoreOutputs(scoring_.back(), data_.scoring.targets);
}

int trainNetwork(TrainingHost& host, NeuralNetwork& network, const TrainingData& data, double lambda,
                 double bestScore) {
  const int transferMode = network.parameters.transferMode;
  if (!weightsFit(data.training, network.weights) || !weightsFit(data.validation, network.weights) ||
      !weightsFit(data.scoring, network.weights)) {
    return TrainingResult_Aborted;  // the sets were built for other feature settings
  }
  GradientDescent descent(network.weights, data, transferMode, network.parameters.transferSlope);
  // `current` walks downhill and may get worse; `network` keeps the best by validation cost.
  NeuralNetwork current = network;
  StepSchedule schedule(transferMode);

  bool stopped = trainingStopRequested(host);
  if (!stopped && !trainingTimeUp(host)) {
    for (;;) {
      double cost, validationCost;
      descent.evaluate(current.weights, lambda, &cost, &validationCost);
      if (!std::isfinite(cost) || !std::isfinite(validationCost)) return TrainingResult_Aborted;

      const StepSchedule::Verdict verdict = schedule.judge(cost, current.trainingCost);
      if (verdict == StepSchedule::Converged) {
        network.recognitionScore = descent.score(network.weights);
        return TrainingResult_Converged;
      }
      const bool restoration = verdict == StepSchedule::Rejected;
      if (restoration) {
        current.weights = network.weights;
        current.trainingCost = network.trainingCost;
        current.validationCost = network.validationCost;
        descent.evaluate(current.weights, lambda, &cost, &validationCost);
      }
      schedule.applyStep();
      current.trainingCost = cost;
      current.validationCost = validationCost;

      if (validationCost < network.validationCost) {
        network.trainingCost = cost;
        network.validationCost = validationCost;
        network.weights = current.weights;
      } else if (!restoration && validationCost > 1.2 * network.validationCost) {
        network.recognitionScore = descent.score(network.weights);
        return TrainingResult_Overfitting;
      }

      if (schedule.scoringDue()) {
        // The best network is scored, not the one walking.
        const double score = descent.score(network.weights);
        network.recognitionScore = score;
        if (schedule.stalled(score)) return TrainingResult_Stalled;
        if (host.reportAllUpdates() || score > bestScore) reportTrainingUpdate(host, score);
      }

      descent.descend(current.weights, lambda, schedule.learningRate);

      stopped = trainingStopRequested(host);
      if (stopped || trainingTimeUp(host)) break;
      schedule.advance();
    }
  }
  network.recognitionScore = descent.score(network.weights);
  // Running out of time reads like a stall.
  return stopped ? TrainingResult_Aborted : TrainingResult_Stalled;
}

}  // namespace zando
