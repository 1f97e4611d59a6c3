// Saving and loading in the background: a detached worker runs the blocking operation, reports
// progress through the update callback and ends with the finish callback.
#include <chrono>
#include <cstring>
#include <ctime>
#include <string>
#include <system_error>
#include <thread>

#include "recognition/gesture_recognition.h"

namespace zando {

namespace {

constexpr size_t kMaxPathLength = 2048;
constexpr int64_t kCancelLimitSeconds = 5000;

// Starts `work` on a detached thread with the job's state at "requested" and waits until the
// worker has entered the operation. The worker is counted in activeWorkers until its very last
// step, so that the destructor can wait for it.
template <typename Work>
int startJob(GestureRecognition& self, std::atomic<int>& state, Work work) {
  state.store(kJobRequested);
  self.activeWorkers.fetch_add(1);
  try {
    std::thread(std::move(work)).detach();
  } catch (const std::system_error&) {
    state.store(kJobIdle);
    self.activeWorkers.fetch_sub(1);
    return ReturnCode_ResourceError;
  }
  while (state.load() == kJobRequested) {
    std::unique_lock<std::mutex> lock(self.startMutex);
    self.startCondition.wait_for(lock, std::chrono::milliseconds(10));
  }
  return ReturnCode_Success;
}

// The end of every worker: a job refused before it could enter (another job took the object in
// between) must not stay "requested" for ever; then the finish callback, then the last access.
void finishJob(GestureRecognition& self, std::atomic<int>& state, GestureRecognition_IOCallbackFunction callback,
               void* metadata, int result) {
  int expected = kJobRequested;
  state.compare_exchange_strong(expected, kJobFinished);
  if (callback != nullptr) callback(result, metadata);
  self.activeWorkers.fetch_sub(1);
}

int cancelJob(std::atomic<int>& state) {
  const int current = state.load();
  if (current == kJobIdle || current == kJobFinished) return ReturnCode_Success;
  state.store(kJobStopRequested);
  // A cancel does not shorten the work: it waits for the end.
  const std::time_t start = std::time(nullptr);
  while (state.load() == kJobStopRequested) {
    if (std::time(nullptr) - start >= kCancelLimitSeconds) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return state.load() == kJobStopRequested ? ReturnCode_ResourceError : ReturnCode_Success;
}

bool validPath(const char* path) {
  if (path == nullptr) return false;
  const size_t length = strnlen(path, kMaxPathLength + 1);
  return length > 0 && length <= kMaxPathLength;
}

}  // namespace

int GestureRecognition::saveToFileAsync(const char* path) {
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (!validPath(path)) return ReturnCode_InvalidPath;
  std::string copy(path);
  return startJob(*this, savingState, [this, copy = std::move(copy)]() {
    int result = ReturnCode_ResourceError;
    try {
      result = saveToFile(copy.c_str());
    } catch (...) {
    }
    finishJob(*this, savingState, savingFinishCallback, savingFinishMetadata, result);
  });
}

int GestureRecognition::loadFromFileAsync(const char* path, MetadataCreatorFunction metadataCreator) {
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (!validPath(path)) return ReturnCode_InvalidPath;
  std::string copy(path);
  return startJob(*this, loadingState, [this, copy = std::move(copy), metadataCreator]() {
    int result = ReturnCode_ResourceError;
    try {
      result = loadFromFile(copy.c_str(), metadataCreator);
    } catch (...) {
    }
    finishJob(*this, loadingState, loadingFinishCallback, loadingFinishMetadata, result);
  });
}

int GestureRecognition::loadFromBufferAsync(const char* buffer, int size, MetadataCreatorFunction metadataCreator) {
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (buffer == nullptr || size < 0) return ReturnCode_InvalidParameter;
  std::string copy(buffer, static_cast<size_t>(size));
  return startJob(*this, loadingState, [this, copy = std::move(copy), metadataCreator]() {
    int result = ReturnCode_ResourceError;
    try {
      result = loadFromBuffer(copy.data(), static_cast<int>(copy.size()), metadataCreator);
    } catch (...) {
    }
    finishJob(*this, loadingState, loadingFinishCallback, loadingFinishMetadata, result);
  });
}

int GestureRecognition::cancelSaving() { return cancelJob(savingState); }

int GestureRecognition::cancelLoading() { return cancelJob(loadingState); }

int GestureRecognition::setSavingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  savingUpdateCallback = callback;
  return ReturnCode_Success;
}
int GestureRecognition::setSavingUpdateCallbackMetadata(void* metadata) {
  savingUpdateMetadata = metadata;
  return ReturnCode_Success;
}
int GestureRecognition::setSavingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  savingFinishCallback = callback;
  return ReturnCode_Success;
}
int GestureRecognition::setSavingFinishCallbackMetadata(void* metadata) {
  savingFinishMetadata = metadata;
  return ReturnCode_Success;
}
int GestureRecognition::setLoadingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  loadingUpdateCallback = callback;
  return ReturnCode_Success;
}
int GestureRecognition::setLoadingUpdateCallbackMetadata(void* metadata) {
  loadingUpdateMetadata = metadata;
  return ReturnCode_Success;
}
int GestureRecognition::setLoadingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  loadingFinishCallback = callback;
  return ReturnCode_Success;
}
int GestureRecognition::setLoadingFinishCallbackMetadata(void* metadata) {
  loadingFinishMetadata = metadata;
  return ReturnCode_Success;
}

}  // namespace zando
