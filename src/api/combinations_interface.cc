// The class face of the combination object: the interface's own members and static functions.
#include "combinations/gesture_combinations.h"
#include "zando/zando.h"

IGestureCombinations::IGestureCombinations()
    : rotationalFrameOfReferenceX(0),
      rotationalFrameOfReferenceY(0),
      rotationalFrameOfReferenceZ(0),
      rotationalFrameOfReferenceRotationOrder(2) {}

IGestureCombinations::IGestureCombinations(const IGestureCombinations& other) { *this = other; }

IGestureCombinations& IGestureCombinations::operator=(const IGestureCombinations& other) {
  maxTrainingTime = other.maxTrainingTime;
  trainingUpdateCallback = other.trainingUpdateCallback;
  trainingUpdateCallbackMetadata = other.trainingUpdateCallbackMetadata;
  trainingFinishCallback = other.trainingFinishCallback;
  trainingFinishCallbackMetadata = other.trainingFinishCallbackMetadata;
  rotationalFrameOfReferenceX = other.rotationalFrameOfReferenceX;
  rotationalFrameOfReferenceY = other.rotationalFrameOfReferenceY;
  rotationalFrameOfReferenceZ = other.rotationalFrameOfReferenceZ;
  rotationalFrameOfReferenceRotationOrder = other.rotationalFrameOfReferenceRotationOrder;
  return *this;
}

IGestureCombinations::~IGestureCombinations() = default;

IGestureCombinations* IGestureCombinations::create(int numberOfParts) {
  return zando::GestureCombinations::createZeroFilled(numberOfParts);
}

const char* IGestureCombinations::getVersionString() { return IGestureRecognition::getVersionString(); }

int IGestureCombinations::getVersionStringLength() { return IGestureRecognition::getVersionStringLength(); }

int IGestureCombinations::copyVersionString(char* dst, int dstSize) {
  return IGestureRecognition::copyVersionString(dst, dstSize);
}
