#include "recognition/gesture_recognition.h"

#include <chrono>
#include <cstring>
#include <new>
#include <thread>

#include "model/shape_identification.h"
#include "recognition/continuous_detection.h"

namespace zando {

GestureRecognition::GestureRecognition() {
  contdIdentificationPeriod = 1000;
  contdIdentificationSmoothing = 3;
  maxTrainingTime = 30;
  trainingUpdateCallback = nullptr;
  trainingUpdateCallbackMetadata = nullptr;
  trainingFinishCallback = nullptr;
  trainingFinishCallbackMetadata = nullptr;
  rotationalFrameOfReferenceX = 0;
  rotationalFrameOfReferenceY = 0;
  rotationalFrameOfReferenceZ = 0;
  rotationalFrameOfReferenceRotationOrder = 2;
}

GestureRecognition* GestureRecognition::createZeroFilled() {
  // Hosts may rely on members the constructor does not name reading as zero.
  void* memory = ::operator new(sizeof(GestureRecognition));
  std::memset(memory, 0, sizeof(GestureRecognition));
  return new (memory) GestureRecognition();
}

GestureRecognition::~GestureRecognition() {
  if (jobBusy(loadingState.load())) cancelLoading();
  if (jobBusy(savingState.load())) cancelSaving();
  if (jobBusy(trainingState.load())) stopTraining();
  waitForWorkers();
}

void GestureRecognition::waitForWorkers() {
  // A worker's last act is to leave this count; after that it never touches the object again.
  while (activeWorkers.load(std::memory_order_acquire) > 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

void GestureRecognition::copyFrameToModel() {
  ModelParameters& p = gestureModel.parameters;
  p.rotationFrameX = rotationalFrameOfReferenceX;
  p.rotationFrameY = rotationalFrameOfReferenceY;
  p.rotationFrameZ = rotationalFrameOfReferenceZ;
  p.rotationOrder = rotationalFrameOfReferenceRotationOrder;
}

void GestureRecognition::copyFrameFromModel() {
  const ModelParameters& p = gestureModel.parameters;
  rotationalFrameOfReferenceX = p.rotationFrameX;
  rotationalFrameOfReferenceY = p.rotationFrameY;
  rotationalFrameOfReferenceZ = p.rotationFrameZ;
  rotationalFrameOfReferenceRotationOrder = p.rotationOrder;
}

bool GestureRecognition::isTraining() { return jobBusy(trainingState.load()); }

bool GestureRecognition::isLoading() { return jobBusy(loadingState.load()); }

bool GestureRecognition::isSaving() { return jobBusy(savingState.load()); }

int GestureRecognition::setMetadata(Metadata* metadata) {
  gestureModel.metadata = metadata;
  return ReturnCode_Success;
}

IGestureRecognition::Metadata* GestureRecognition::getMetadata() { return gestureModel.metadata; }

// The flag is read by a background save, so it changes only while no job runs.
int GestureRecognition::setEnhancedRecognition(int on) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (on != 0 && on != 1) return ReturnCode_InvalidParameter;
  gestureModel.enhancedRecognition = on == 1;
  copyFrameToModel();
  prepareShapes(gestureModel);
  return ReturnCode_Success;
}

int GestureRecognition::getEnhancedRecognition() { return gestureModel.enhancedRecognition ? 1 : 0; }

}  // namespace zando
