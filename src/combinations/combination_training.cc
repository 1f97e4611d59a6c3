// Training of all parts together: each part trains on its own thread, a queue on the object's
// mutex lets at most maxTrainingThreads of them compute at once, and the last part to finish
// computes the score of the combinations by replaying random samples.
#include <algorithm>
#include <chrono>
#include <cstdint>

#include "combinations/gesture_combinations.h"
#include "spatial/random.h"

namespace zando {

namespace {

constexpr double kScoreNotComputed = -999.0;
constexpr int kScoreRepetitions = 100;

// Bit i of the mask; past 64 parts the shift wraps as the processor's does.
uint64_t partBit(int part) { return uint64_t{1} << (static_cast<unsigned>(part) & 63u); }

void removeFrom(std::deque<int>& list, int part) {
  list.erase(std::remove(list.begin(), list.end(), part), list.end());
}

GestureCombinations* ownerOf(void* context, int* part) {
  auto* partContext = static_cast<PartContext*>(context);
  if (partContext == nullptr || partContext->owner == nullptr) return nullptr;
  GestureCombinations* owner = partContext->owner;
  *part = partContext->part;
  return *part >= 0 && *part < owner->partCount ? owner : nullptr;
}

}  // namespace

int GestureCombinations::getTrainingParameter(int id) {
  if (id < 0) return ReturnCode_InvalidParameter;
  const auto found = trainingParameters.find(id);
  return found == trainingParameters.end() ? -1 : found->second;
}

int GestureCombinations::setTrainingParameter(int id, int value) {
  if (id < 0) return ReturnCode_InvalidParameter;
  trainingParameters[id] = value;
  for (auto& recognizer : parts) {
    if (recognizer != nullptr) recognizer->setTrainingParameter(id, value);
  }
  return ReturnCode_Success;
}

int GestureCombinations::getMaxTrainingTime() { return maxTrainingTime; }

void GestureCombinations::setMaxTrainingTime(int seconds) {
  maxTrainingTime = seconds;
  for (auto& recognizer : parts) {
    if (recognizer != nullptr) recognizer->maxTrainingTime = seconds;
  }
}

int GestureCombinations::getMaxTrainingThreads() { return maxTrainingThreads.load(); }

void GestureCombinations::setMaxTrainingThreads(int threads) { maxTrainingThreads.store(threads); }

bool GestureCombinations::isTraining() { return trainingMask.load() != 0; }

int GestureCombinations::startTraining() {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  recognitionScoreValue = kScoreNotComputed;
  std::vector<int> starting;
  for (int i = 0; i < partCount; ++i) {
    if (partAt(i) != nullptr && partEnabled[static_cast<size_t>(i)] != 0) starting.push_back(i);
  }
  {
    std::lock_guard<std::mutex> lock(mutex);
    runningParts.clear();
    waitingParts.clear();
    std::fill(partBestPerformance.begin(), partBestPerformance.end(), 0.0);
    // All bits are set before the first part starts: a part that finishes at once (no samples,
    // say) must not take itself for the last one while the others have yet to start.
    for (int i : starting) {
      trainingMask.fetch_or(partBit(i));
      runningParts.push_back(i);
    }
  }
  if (starting.empty()) return ReturnCode_NoGestures;
  for (size_t n = 0; n < starting.size(); ++n) {
    GestureRecognition& recognizer = *parts[static_cast<size_t>(starting[n])];
    recognizer.maxTrainingTime = maxTrainingTime;
    lendFrameTo(recognizer);
    // Every candidate is reported, so that each step passes through the scheduler.
    recognizer.reportAllUpdates = 1;
    const int result = recognizer.startTraining();
    if (result != 0) {
      // This part and those behind it never start; parts started before keep training.
      {
        std::lock_guard<std::mutex> lock(mutex);
        for (size_t k = n; k < starting.size(); ++k) {
          trainingMask.fetch_and(~partBit(starting[k]));
          removeFrom(runningParts, starting[k]);
        }
      }
      condition.notify_all();
      return result;
    }
  }
  return ReturnCode_Success;
}

int GestureCombinations::stopTraining() {
  // Every part is asked first, so that none waits in the queue for a part that is still busy.
  for (auto& recognizer : parts) {
    if (recognizer == nullptr) continue;
    int running = kJobRunning;
    recognizer->trainingState.compare_exchange_strong(running, kJobStopRequested);
  }
  int first = ReturnCode_Success;
  for (auto& recognizer : parts) {
    if (recognizer == nullptr || !recognizer->isTraining()) continue;
    const int result = recognizer->stopTraining();
    if (first == ReturnCode_Success) first = result;
  }
  return first;
}

void GestureCombinations::trainingUpdateForwarder(double performance, void* context) {
  int part = -1;
  GestureCombinations* self = ownerOf(context, &part);
  if (self == nullptr) return;
  std::unique_lock<std::mutex> lock(self->mutex);
  double& best = self->partBestPerformance[static_cast<size_t>(part)];
  if (best < performance) best = performance;
  if (self->trainingUpdateCallback != nullptr) {
    double sum = 0.0;
    for (double value : self->partBestPerformance) sum += value;
    self->trainingUpdateCallback(sum / self->partCount, self->trainingUpdateCallbackMetadata);
  }
  // Every step queues: first come, first served, and never more parts computing than allowed.
  removeFrom(self->runningParts, part);
  self->waitingParts.push_back(part);
  for (;;) {
    const int limit = self->maxTrainingThreads.load();
    if (limit <= 0) break;
    if (static_cast<int>(self->runningParts.size()) < limit) {
      if (self->waitingParts.front() == part) break;
      lock.unlock();
      self->condition.notify_one();
      lock.lock();
    }
    self->condition.wait_for(lock, std::chrono::milliseconds(100));
  }
  removeFrom(self->waitingParts, part);
  self->runningParts.push_back(part);
}

void GestureCombinations::trainingFinishForwarder(double performance, void* context) {
  int part = -1;
  GestureCombinations* self = ownerOf(context, &part);
  if (self == nullptr) return;
  bool last = false;
  double score = 0.0;
  GestureRecognition_TrainingCallbackFunction finish = nullptr;
  void* finishMetadata = nullptr;
  {
    std::lock_guard<std::mutex> lock(self->mutex);
    self->partBestPerformance[static_cast<size_t>(part)] = performance;
    const uint64_t bit = partBit(part);
    last = self->trainingMask.load() == bit;
    // The application keeps away until the mask clears, which comes after the score. From then
    // on it may start the next run (which resets the stored score) or change the callback, so
    // everything the callback needs is read before.
    if (last) {
      self->computeRecognitionScore();
      score = self->recognitionScoreValue;
      finish = self->trainingFinishCallback;
      finishMetadata = self->trainingFinishCallbackMetadata;
    }
    self->trainingMask.fetch_and(~bit);
    removeFrom(self->runningParts, part);
    removeFrom(self->waitingParts, part);
  }
  if (!last) {
    self->condition.notify_all();
  } else if (finish != nullptr) {
    finish(score, finishMetadata);
  }
}

double GestureCombinations::recognitionScore() {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (recognitionScoreValue == kScoreNotComputed) computeRecognitionScore();
  return recognitionScoreValue;
}

// One repetition of a combination: a random sample of each gesture it needs, replayed through
// its part. 0, or the code that ends the whole computation.
int GestureCombinations::replayForScore(int combination) {
  const GestureCombination& record = combinations[static_cast<size_t>(combination)];
  const int m = std::min({partCount, record.partCount, static_cast<int>(record.partGestures.size())});
  for (int i = m - 1; i >= 0; --i) {
    const size_t k = static_cast<size_t>(i);
    const int g = record.partGestures[k];
    if (partEnabled[k] == 0 || g < 0) continue;
    GestureRecognition* recognizer = partAt(i);
    if (recognizer == nullptr || recognizer->numberOfGestures() <= g) return ReturnCode_ResourceError;
    const std::vector<Stroke*>& samples = recognizer->gestureModel.gestures[static_cast<size_t>(g)]->gestureSamples;
    if (samples.empty()) continue;
    const Stroke& sample = *samples[static_cast<size_t>(randomInt()) % samples.size()];
    double headPosition[3], headRotation[4];
    sample.headStart.position.copyTo(headPosition);
    sample.headStart.rotation.copyTo(headRotation);
    const int started = recognizer->startStroke(headPosition, headRotation, -1);
    if (started != 0) return started;
    for (const StrokePoint& point : sample.handPoints) {
      double position[3], rotation[4];
      point.position.copyTo(position);
      point.rotation.copyTo(rotation);
      recognizer->contdStrokeQ(position, rotation);
    }
    prepareResults(i);
    const int ended = recognizer->endStrokeAndGetAllProbabilitiesAndSimilarities(
        partProbabilities[k].data(), partSimilarities[k].data(), &partResultCount[k], nullptr, nullptr, nullptr,
        nullptr, nullptr);
    if (ended < 0) return ended;
  }
  return ReturnCode_Success;
}

void GestureCombinations::computeRecognitionScore() {
  partGate.close();
  // With no parts the value is overwritten below unless a repetition fails.
  if (partCount == 0) recognitionScoreValue = ReturnCode_ResourceError;
  if (combinations.empty()) {
    recognitionScoreValue = 0.0;
    partGate.open();
    return;
  }
  int correct = 0;
  int total = 0;
  for (size_t c = 0; c < combinations.size(); ++c) {
    if (combinations[c].partGestures.empty()) continue;
    for (int repetition = 0; repetition < kScoreRepetitions; ++repetition) {
      const int replayed = replayForScore(static_cast<int>(c));
      if (replayed != 0) {
        recognitionScoreValue = replayed;
        partGate.open();
        return;
      }
      if (identifyAfterStrokes(nullptr, nullptr, nullptr, nullptr) == static_cast<int>(c)) ++correct;
      ++total;
    }
  }
  recognitionScoreValue = total == 0 ? 0.0 : static_cast<double>(correct) / total;
  partGate.open();
}

}  // namespace zando
