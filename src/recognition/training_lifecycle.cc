// The recogniser's side of training: starting the one training thread and handing over to it,
// stopping it, and the table of training parameters.
#include <chrono>
#include <ctime>
#include <map>
#include <thread>
#include <utility>

#include "model/training_search.h"
#include "recognition/gesture_recognition.h"

namespace zando {

namespace {

// The recogniser as the training search sees it. The parameter map is a copy taken when the run
// was requested: the application may set parameters at any time, and a map must not change
// under a reader on another thread. Everything else is read live.
class RecognizerTrainingHost : public TrainingHost {
 public:
  RecognizerTrainingHost(GestureRecognition& recognizer, std::map<int, int> parameters)
      : recognizer_(recognizer), parameters_(std::move(parameters)) {}

  GestureModel& model() override { return recognizer_.gestureModel; }
  std::atomic<int>& trainingState() override { return recognizer_.trainingState; }
  const std::map<int, int>& trainingParameters() override { return parameters_; }
  int64_t trainingStartTime() override { return recognizer_.trainingStartTime; }
  int maxTrainingTime() override { return recognizer_.maxTrainingTime; }
  bool reportAllUpdates() override { return recognizer_.reportAllUpdates != 0; }
  TrainingCallback updateCallback(void** metadata) override {
    *metadata = recognizer_.trainingUpdateCallbackMetadata;
    return recognizer_.trainingUpdateCallback;
  }
  TrainingCallback finishCallback(void** metadata) override {
    *metadata = recognizer_.trainingFinishCallbackMetadata;
    return recognizer_.trainingFinishCallback;
  }

 private:
  GestureRecognition& recognizer_;
  std::map<int, int> parameters_;
};

void trainingThread(GestureRecognition* recognizer, std::map<int, int> parameters) {
  {
    std::lock_guard<std::mutex> lock(recognizer->startMutex);
    recognizer->trainingState.store(kJobRunning);
  }
  recognizer->startCondition.notify_one();
  recognizer->trainingStartTime = static_cast<int64_t>(std::time(nullptr));
  {
    RecognizerTrainingHost host(*recognizer, std::move(parameters));
    try {
      runTraining(host);
    } catch (...) {
      // Only a throwing finish callback gets here, after the state said "finished": nothing is
      // left to do, and an exception must not end the process from a detached thread.
    }
  }
  // The last touch of the object: once the count drops, the destructor may free it.
  recognizer->activeWorkers.fetch_sub(1, std::memory_order_release);
}

}  // namespace

int GestureRecognition::startTraining() {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  copyFrameToModel();
  const int previousState = trainingState.load();
  trainingState.store(kJobRequested);
  // Counted before the thread exists, so that no destructor can miss it.
  activeWorkers.fetch_add(1, std::memory_order_acq_rel);
  // The worker's first step takes startMutex, held here until the thread is detached: no worker
  // ends before it is detached, which MinGW's thread library does not survive (the next thread
  // created may never run).
  std::unique_lock<std::mutex> lock(startMutex);
  std::thread worker;
  try {
    worker = std::thread(trainingThread, this, trainingParameters);
  } catch (...) {
    activeWorkers.fetch_sub(1, std::memory_order_acq_rel);
    trainingState.store(previousState);
    throw;
  }
  if (worker.get_id() == std::thread::id()) {
    activeWorkers.fetch_sub(1, std::memory_order_acq_rel);
    trainingState.store(kJobIdle);
    return ReturnCode_ResourceError;
  }
  worker.detach();
  // The timed wait makes a signal that came before the wait harmless.
  while (trainingState.load() == kJobRequested) startCondition.wait_for(lock, std::chrono::milliseconds(10));
  return ReturnCode_Success;
}

int GestureRecognition::stopTraining() {
  int state = trainingState.load();
  // A thread that has not started yet cannot be stopped yet.
  if (state == kJobRequested) return ReturnCode_TrainingInProgress;
  if (state != kJobRunning && state != kJobStopRequested) return ReturnCode_Success;
  // Only a running thread is asked to stop: a run that has just finished must not be marked as
  // stopping, or the wait below would never end.
  while (state == kJobRunning && !trainingState.compare_exchange_weak(state, kJobStopRequested)) {
  }
  if (state != kJobRunning && state != kJobStopRequested) return ReturnCode_Success;
  const auto start = std::chrono::steady_clock::now();
  while (trainingState.load() == kJobStopRequested) {
    if (std::chrono::steady_clock::now() - start >= std::chrono::seconds(1000)) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return trainingState.load() == kJobStopRequested ? ReturnCode_ResourceError : ReturnCode_Success;
}

int GestureRecognition::getTrainingParameter(int id) {
  if (id < 0) return ReturnCode_InvalidParameter;
  const auto found = trainingParameters.find(id);
  return found == trainingParameters.end() ? -1 : found->second;
}

int GestureRecognition::setTrainingParameter(int id, int value) {
  if (id < 0) return ReturnCode_InvalidParameter;
  trainingParameters[id] = value;
  return ReturnCode_Success;
}

}  // namespace zando
