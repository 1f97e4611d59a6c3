// Saving and loading in the background: a detached worker runs the blocking operation, reports
// progress through the update callback and ends with the finish callback.
#include <string>
#include <utility>

#include "persistence/background_job.h"
#include "recognition/gesture_recognition.h"

namespace zando {

namespace {

template <typename Work>
int startJob(GestureRecognition& self, std::atomic<int>& state, Work work) {
  return startBackgroundJob(state, self.activeWorkers, self.startMutex, self.startCondition, std::move(work));
}

void finishJob(GestureRecognition& self, std::atomic<int>& state, GestureRecognition_IOCallbackFunction callback,
               void* metadata, int result) {
  finishBackgroundJob(state, self.activeWorkers, callback, metadata, result);
}

}  // namespace

int GestureRecognition::saveToFileAsync(const char* path) {
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (!validJobPath(path)) return ReturnCode_InvalidPath;
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
  if (!validJobPath(path)) return ReturnCode_InvalidPath;
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

int GestureRecognition::cancelSaving() { return cancelBackgroundJob(savingState, activeWorkers); }

int GestureRecognition::cancelLoading() { return cancelBackgroundJob(loadingState, activeWorkers); }

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
