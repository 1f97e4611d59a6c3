// Saving and loading in the background: a detached worker runs the blocking operation, reports
// progress through the update callback and ends with the finish callback.
#include <string>
#include <utility>

#include "persistence/background_job.h"
#include "recognition/gesture_recognition.h"

namespace zando {

int GestureRecognition::saveToFileAsync(const char* path) {
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (!validJobPath(path)) return ReturnCode_InvalidPath;
  return runInBackground(savingState, activeWorkers, startMutex, startCondition, savingFinishCallback,
                         savingFinishMetadata, [this, copy = std::string(path)] { return saveToFile(copy.c_str()); });
}

int GestureRecognition::loadFromFileAsync(const char* path, MetadataCreatorFunction metadataCreator) {
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (!validJobPath(path)) return ReturnCode_InvalidPath;
  return runInBackground(loadingState, activeWorkers, startMutex, startCondition, loadingFinishCallback,
                         loadingFinishMetadata, [this, copy = std::string(path), metadataCreator] {
                           return loadFromFile(copy.c_str(), metadataCreator);
                         });
}

int GestureRecognition::loadFromBufferAsync(const char* buffer, int size, MetadataCreatorFunction metadataCreator) {
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (buffer == nullptr || size < 0) return ReturnCode_InvalidParameter;
  return runInBackground(loadingState, activeWorkers, startMutex, startCondition, loadingFinishCallback,
                         loadingFinishMetadata,
                         [this, copy = std::string(buffer, static_cast<size_t>(size)), metadataCreator] {
                           return loadFromBuffer(copy.data(), static_cast<int>(copy.size()), metadataCreator);
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
