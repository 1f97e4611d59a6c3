// Training of one network of fixed shape: full-batch gradient descent with back-propagation on a
// cross-entropy cost with weight decay, a self-adapting multiplicative learning rate, and the
// best weights by validation cost kept aside.
#ifndef ZANDO_MODEL_NETWORK_TRAINING_H
#define ZANDO_MODEL_NETWORK_TRAINING_H

#include <atomic>
#include <cstdint>
#include <map>
#include <vector>

#include "model/gesture_model.h"
#include "model/neural_network.h"
#include "model/training_data.h"
#include "zando/zando.h"

namespace zando {

// Values of a recogniser's training state word.
enum TrainingState : int {
  TrainingState_Idle = 0,
  TrainingState_Starting = 1,
  TrainingState_Running = 2,
  TrainingState_Stopping = 3,
  TrainingState_Finished = 4,
};

// How one network's training ended.
enum TrainingResult : int {
  TrainingResult_Stalled = 0,      // the score no longer improves, or the time ran out
  TrainingResult_Overfitting = 1,  // validation cost rose far above its best
  TrainingResult_Converged = 2,    // training cost has stopped moving
  TrainingResult_Aborted = 3,      // a cost was not finite, or stop was requested
};

using TrainingCallback = GestureRecognition_TrainingCallbackFunction;

// What a training run needs of the object it trains for. The model layer knows nothing of the
// recogniser; the recogniser (or a test) implements this. Everything but model() is read again
// at each use, so that changes the application makes during a run take effect.
class TrainingHost {
 public:
  virtual ~TrainingHost() = default;
  virtual GestureModel& model() = 0;
  // The state word the application polls and writes a stop request into.
  virtual std::atomic<int>& trainingState() = 0;
  // Pinned settings of the search by training parameter id; -1 or no entry leaves one free.
  virtual const std::map<int, int>& trainingParameters() = 0;
  // Seconds since the epoch at which the run started, and the limit in seconds (compared unsigned).
  virtual int64_t trainingStartTime() = 0;
  virtual int maxTrainingTime() = 0;
  virtual bool reportAllUpdates() = 0;
  // The callbacks as set at this moment, with their metadata in *metadata; either may be null.
  virtual TrainingCallback updateCallback(void** metadata) = 0;
  virtual TrainingCallback finishCallback(void** metadata) = 0;
};

// True once the application (or the search itself) has asked the run to stop.
bool trainingStopRequested(TrainingHost& host);
// True once the whole seconds since the start, low 32 bits of each, reach the limit.
bool trainingTimeUp(TrainingHost& host);
// Calls the update callback, if one is set now, with the score and its current metadata.
void reportTrainingUpdate(TrainingHost& host, double score);

// Minus the sum of the log-likelihood terms over all entries, divided by the row count. With
// transferMode 1 outputs and targets run from -1 to 1, otherwise from 0 to 1. A non-finite term
// resets the running sum to the most negative finite double, so a hard failure shows as a huge
// but usually finite cost. 0.0 for no rows.
double crossEntropyCost(const Matrix& outputs, const Matrix& targets, int transferMode);

// lambda * (sum of squares of all weights but the biases) / (2 * sampleCount); 0.0 without samples.
double regularizationCost(int sampleCount, const std::vector<Matrix>& weights, double lambda);

// Share of rows whose largest output (lowest column among ties) has a target of exactly 1.0;
// 0.0 for an empty set.
double scoreNetwork(const SampleSet& set, const NeuralNetwork& network);

// The multiplicative step-size control of trainNetwork: a step that raises the training cost by
// at most 1 percent is taken and the next factor grows by 1.1; a worse one sends the weights
// back to the best by validation cost, the rate down by 0.6 and the growth back to 1.0.
struct StepSchedule {
  enum Verdict { Accepted, Converged, Rejected };

  double learningRate;
  double growth = 1.4;
  double stepFactor = 1.4;  // the factor on learningRate in this iteration
  double lastScore = 0.0;
  bool nearlyConverged = false;
  int countdown = 100;

  explicit StepSchedule(int transferMode) : learningRate(transferMode == 1 ? 0.0009 : 0.003) {}

  // Judges the cost of this iteration against the previous one. Converged after the second flat
  // step (a change below 0.0001) in a row.
  Verdict judge(double cost, double previousCost);
  // Applies this iteration's factor to the learning rate.
  void applyStep() { learningRate *= stepFactor; }
  // After an iteration that went ahead: the next factor is the grown one.
  void advance() { stepFactor = growth; }
  // True when the score is to be checked in this iteration: after 101 iterations, then every 250.
  bool scoringDue() { return --countdown < 0; }
  // Records a checked score; true if it rose by less than 0.005 since the last check.
  bool stalled(double score);
};

// The working buffers of one trainNetwork call, all allocated at construction and reused by
// every iteration. Exposed so that the cost of one iteration can be measured on its own.
class GradientDescent {
 public:
  GradientDescent(const std::vector<Matrix>& weights, const TrainingData& data, int transferMode,
                  double transferSlope);
  // Forward passes over the training and the validation set. *cost includes the weight decay,
  // *validationCost does not.
  void evaluate(const std::vector<Matrix>& weights, double lambda, double* cost, double* validationCost);
  // Back-propagation over the training forward pass of the last evaluate (made with these
  // weights) and one step of learningRate against the gradient, with weight decay.
  void descend(std::vector<Matrix>& weights, double lambda, double learningRate);
  // scoreNetwork on the scoring set with these weights.
  double score(const std::vector<Matrix>& weights);

 private:
  const TrainingData& data_;
  int transferMode_;
  double transferSlope_;
  std::vector<Matrix> training_;    // A[0] .. A[L]
  std::vector<Matrix> validation_;  // V[0] .. V[L]
  std::vector<Matrix> scoring_;
  std::vector<Matrix> delta_;     // delta[1] .. delta[L] at 1 .. L; hidden ones without the bias column
  std::vector<Matrix> gradient_;  // shaped like the weights
};

// Trains `network` (whose random weights are the start) on `data` until the training cost stops
// moving, the validation cost rises to 1.2 times its best, the score on the scoring set stalls,
// the host asks to stop or the time is up. On return the network holds the weights with the
// lowest validation cost seen, their costs, and its last score. Returns a TrainingResult;
// TrainingResult_Aborted at once if the sets do not fit the network's shape. The update callback
// hears of each passing score check that beats bestScore (every one with reportAllUpdates).
int trainNetwork(TrainingHost& host, NeuralNetwork& network, const TrainingData& data, double lambda,
                 double bestScore);

}  // namespace zando

#endif  // ZANDO_MODEL_NETWORK_TRAINING_H
