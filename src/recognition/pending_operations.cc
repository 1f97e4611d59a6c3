// Operations whose subsystems are still being built. Each answers as the finished operation
// would on an object that has nothing to offer yet: no continuous result, no mean, no file, no
// training. They move to their own files as those subsystems arrive.
#include "recognition/gesture_recognition.h"

namespace zando {

int GestureRecognition::contdIdentify(const double*, const double*, double*) { return ReturnCode_NoGestures; }
int GestureRecognition::contdIdentifyM(const double (*)[4], double*) { return ReturnCode_NoGestures; }
int GestureRecognition::contdIdentifyAndGetAllProbabilitiesAndSimilarities(const double*, const double*, double*,
                                                                           double*, int* count) {
  if (count != nullptr) *count = 0;
  return ReturnCode_NoGestures;
}
int GestureRecognition::contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(const double (*)[4], double*, double*,
                                                                            int* count) {
  if (count != nullptr) *count = 0;
  return ReturnCode_NoGestures;
}
int GestureRecognition::contdIdentifyAndGetStroke(const double*, const double*, double*, double*, double*, double*,
                                                  double*, double*) {
  return ReturnCode_NoGestures;
}
int GestureRecognition::contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
    const double*, const double*, double*, double*, int* count, double*, double*, double*, double*, double*) {
  if (count != nullptr) *count = 0;
  return ReturnCode_NoGestures;
}
int GestureRecognition::contdRecord(const double*, const double*) { return ReturnCode_NoGestures; }
int GestureRecognition::contdRecordM(const double (*)[4]) { return ReturnCode_NoGestures; }

int GestureRecognition::getGestureMeanLength(int) { return gestureModel.parameters.waypointCount; }
int GestureRecognition::getGestureMeanStroke(int, double (*)[3], double (*)[4], int, double*, double*, double*) {
  return 0;
}

int GestureRecognition::saveToFile(const char*) { return ReturnCode_InvalidPath; }
int GestureRecognition::saveToStream(std::ostream*) { return ReturnCode_StreamError; }
int GestureRecognition::loadFromFile(const char*, MetadataCreatorFunction) { return ReturnCode_InvalidPath; }
int GestureRecognition::loadFromBuffer(const char*, int, MetadataCreatorFunction) { return ReturnCode_InvalidFile; }
int GestureRecognition::loadFromStream(std::istream*, MetadataCreatorFunction) { return ReturnCode_InvalidFile; }
int GestureRecognition::importFromFile(const char*, MetadataCreatorFunction, std::vector<int>*) {
  return ReturnCode_InvalidPath;
}
int GestureRecognition::importFromBuffer(const char*, int, MetadataCreatorFunction, std::vector<int>*) {
  return ReturnCode_InvalidFile;
}
int GestureRecognition::importFromStream(std::istream*, MetadataCreatorFunction, std::vector<int>*) {
  return ReturnCode_InvalidFile;
}
int GestureRecognition::saveToFileAsync(const char*) { return ReturnCode_InvalidPath; }
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
int GestureRecognition::cancelSaving() { return ReturnCode_Success; }
int GestureRecognition::loadFromFileAsync(const char*, MetadataCreatorFunction) { return ReturnCode_InvalidPath; }
int GestureRecognition::loadFromBufferAsync(const char*, int, MetadataCreatorFunction) {
  return ReturnCode_InvalidFile;
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
int GestureRecognition::cancelLoading() { return ReturnCode_Success; }
int GestureRecognition::importGestureSamples(const IGestureRecognition*, int, int) { return ReturnCode_InvalidIndex; }
int GestureRecognition::importGestures(const IGestureRecognition*) { return ReturnCode_Success; }

int GestureRecognition::startTraining() { return ReturnCode_ResourceError; }
int GestureRecognition::stopTraining() { return ReturnCode_Success; }
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

int GestureRecognition::selfTest() { return ReturnCode_Success; }

}  // namespace zando
