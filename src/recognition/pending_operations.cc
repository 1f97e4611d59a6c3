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


int GestureRecognition::selfTest() { return ReturnCode_Success; }

}  // namespace zando
