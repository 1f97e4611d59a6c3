// The capture cycle: start, extend, prune, cancel and end a stroke.
#include "model/identification.h"
#include "features/shape_matching.h"
#include "recognition/gesture_recognition.h"
#include "recognition/stroke_results.h"

namespace zando {

namespace {

bool poseFinite(const double position[3], const double* rotation, int rotationCount) {
  return allFinite(position, 3) && allFinite(rotation, rotationCount);
}

const double* flat(const double matrix[4][4]) { return &matrix[0][0]; }

}  // namespace

int GestureRecognition::beginStroke(const StrokePoint& head, int gestureId) {
  recordingGestureId = gestureId;
  currentStroke.headStart = head;
  if (hostTimeMs >= 0) currentStroke.headStart.timestamp = hostTimeMs;
  currentStroke.headLatest = currentStroke.headStart;
  // clear() keeps the capacity, so a steady stream of strokes stops allocating.
  currentStroke.handPoints.clear();
  currentStroke.headPoints.clear();
  currentStroke.startTime = clockNow();
  currentStroke.sampleType = SampleType_Stroke;
  strokeStarted = true;
  ++strokeSerial;
  return ReturnCode_Success;
}

int GestureRecognition::startStroke(const double headPosition[3], const double headRotation[4], int gestureId) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (headPosition == nullptr || headRotation == nullptr) return ReturnCode_InvalidParameter;
  if (!poseFinite(headPosition, headRotation, 4)) return ReturnCode_InvalidParameter;
  if (gestureId >= 0) {
    if (isSaving()) return ReturnCode_SavingInProgress;
    if (gestureId >= numberOfGestures()) return ReturnCode_InvalidIndex;
  }
  return beginStroke(StrokePoint(headPosition, headRotation), gestureId);
}

int GestureRecognition::startStrokeM(const double headMatrix[4][4], int gestureId) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  if (gestureId >= 0) {
    if (isSaving()) return ReturnCode_SavingInProgress;
    if (gestureId >= numberOfGestures()) return ReturnCode_InvalidIndex;
  }
  return beginStroke(StrokePoint(flat(headMatrix)), gestureId);
}

int GestureRecognition::setUpdateHeadPositionPolicy(int policy) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (static_cast<unsigned>(policy) > 1u) return ReturnCode_InvalidParameter;
  gestureModel.parameters.updateHeadPositionPolicy = policy;
  return ReturnCode_Success;
}

int GestureRecognition::getUpdateHeadPositionPolicy() { return gestureModel.parameters.updateHeadPositionPolicy; }

int GestureRecognition::updateHeadPositionM(const double headMatrix[4][4]) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  // The time stamp of the latest head pose stays that of the stroke's start.
  quaternionFromMatrix(flat(headMatrix), currentStroke.headLatest.rotation, currentStroke.headLatest.position);
  currentStroke.headLatest.position.w = 1.0;
  return ReturnCode_Success;
}

int GestureRecognition::updateHeadPositionQ(const double headPosition[3], const double headRotation[4]) {
  if (headPosition == nullptr || headRotation == nullptr) return ReturnCode_InvalidParameter;
  currentStroke.headLatest.position = Vector3(headPosition);
  currentStroke.headLatest.rotation = Quaternion(headRotation);
  return ReturnCode_Success;
}

int GestureRecognition::appendHandPoint(const StrokePoint& point) {
  currentStroke.handPoints.push_back(point);
  if (hostTimeMs >= 0) currentStroke.handPoints.back().timestamp = hostTimeMs;
  // The head record keeps the time stamp of headLatest; only hand points carry capture times.
  currentStroke.headPoints.push_back(currentStroke.headLatest);
  return ReturnCode_Success;
}

int GestureRecognition::contdStroke(const double handPosition[3]) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (!strokeStarted) return ReturnCode_NoStrokeStarted;
  if (handPosition == nullptr || !allFinite(handPosition, 3)) return ReturnCode_InvalidParameter;
  return appendHandPoint(StrokePoint(Vector3(handPosition), Quaternion()));
}

int GestureRecognition::contdStrokeQ(const double handPosition[3], const double handRotation[4]) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (!strokeStarted) return ReturnCode_NoStrokeStarted;
  if (handPosition == nullptr || handRotation == nullptr) return ReturnCode_InvalidParameter;
  if (!poseFinite(handPosition, handRotation, 4)) return ReturnCode_InvalidParameter;
  return appendHandPoint(StrokePoint(handPosition, handRotation));
}

int GestureRecognition::contdStrokeE(const double handPosition[3], const double handEuler[3]) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (!strokeStarted) return ReturnCode_NoStrokeStarted;
  if (handPosition == nullptr || handEuler == nullptr) return ReturnCode_InvalidParameter;
  if (!poseFinite(handPosition, handEuler, 3)) return ReturnCode_InvalidParameter;
  return appendHandPoint(StrokePoint(Vector3(handPosition),
                                     quaternionFromEuler(handEuler, rotationalFrameOfReferenceRotationOrder)));
}

int GestureRecognition::contdStrokeM(const double handMatrix[4][4]) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (!strokeStarted) return ReturnCode_NoStrokeStarted;
  if (handMatrix == nullptr) return ReturnCode_InvalidParameter;
  return appendHandPoint(StrokePoint(flat(handMatrix)));
}

bool GestureRecognition::isStrokeStarted() { return strokeStarted; }

int GestureRecognition::pruneStroke(int maxPoints, int maxAgeMs) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (!isStrokeStarted()) return ReturnCode_NoStrokeStarted;
  std::vector<StrokePoint>& hand = currentStroke.handPoints;
  std::vector<StrokePoint>& head = currentStroke.headPoints;
  // The count limit keeps the oldest points, the age limit the newest.
  if (maxPoints >= 0 && static_cast<size_t>(maxPoints) < hand.size()) {
    hand.resize(static_cast<size_t>(maxPoints), StrokePoint(Unstamped{}));
    if (head.size() > hand.size()) head.resize(hand.size(), StrokePoint(Unstamped{}));
  }
  if (maxAgeMs >= 0 && !hand.empty()) {
    const int64_t cutoff = clockNow() - maxAgeMs;
    for (size_t i = hand.size(); i-- > 0;) {
      if (hand[i].timestamp < cutoff) {
        hand.erase(hand.begin(), hand.begin() + static_cast<std::ptrdiff_t>(i + 1));
        if (head.size() > i) head.erase(head.begin(), head.begin() + static_cast<std::ptrdiff_t>(i + 1));
        break;
      }
    }
  }
  return static_cast<int>(hand.size());
}

int GestureRecognition::cancelStroke() {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  currentStroke.handPoints.clear();
  currentStroke.headPoints.clear();
  contdHistory.clear();
  strokeStarted = false;
  return ReturnCode_Success;
}

void GestureRecognition::storeCurrentStrokeAsSample() {
  // Gestures may have been deleted while the stroke ran; then nothing is stored.
  if (recordingGestureId < 0 || recordingGestureId >= gestureModel.gestureCount()) return;
  auto* sample = new Stroke(currentStroke);
  gestureModel.gestures[static_cast<size_t>(recordingGestureId)]->gestureSamples.push_back(sample);
  if (gestureModel.enhancedRecognition) {
    copyFrameToModel();
    storedShape(*sample, gestureModel.parameters);
  }
}

int GestureRecognition::finishStroke(EndKind kind, double* similarity, double* probabilities, double* similarities,
                                     int* count, double pos[3], double* scale, double dir0[3], double dir1[3],
                                     double dir2[3]) {
  const bool withProbabilities = kind == EndKind::Probabilities || kind == EndKind::ProbabilitiesAndSimilarities;
  if (withProbabilities) {
    if (count == nullptr) return ReturnCode_InvalidParameter;
    if (probabilities == nullptr || *count < 1 ||
        (kind == EndKind::ProbabilitiesAndSimilarities && similarities == nullptr)) {
      *count = 0;
      return ReturnCode_InvalidParameter;
    }
  }
  // Every failure from here on reports an empty result in the count, and the similarity form
  // reports 0.0 for the refusals that follow the end of the stroke.
  const auto fail = [&](int code) {
    if (withProbabilities) *count = 0;
    return code;
  };
  if (!strokeStarted) return fail(ReturnCode_NoStrokeStarted);
  strokeStarted = false;  // from here on the stroke is over, whatever the result
  if (kind == EndKind::Similarity && similarity == nullptr) return ReturnCode_InvalidParameter;
  const auto failAfterEnd = [&](int code) {
    if (kind == EndKind::Similarity) *similarity = 0.0;
    return fail(code);
  };
  if (isTraining()) return failAfterEnd(ReturnCode_TrainingInProgress);
  if (isLoading()) return failAfterEnd(ReturnCode_LoadingInProgress);
  if (currentStroke.handPoints.size() < 2) return failAfterEnd(ReturnCode_StrokeTooShort);
  if (kind == EndKind::ProbabilitiesAndSimilarities &&
      currentStroke.handPoints.size() != currentStroke.headPoints.size()) {
    return fail(ReturnCode_PointCountMismatch);
  }

  if (recordingGestureId >= 0) {
    if (isSaving()) return failAfterEnd(ReturnCode_SavingInProgress);
    storeCurrentStrokeAsSample();
    currentStroke.handPoints.clear();
    currentStroke.headPoints.clear();
    if (kind == EndKind::Similarity) *similarity = 1.0;
    if (withProbabilities) *count = 0;
    return recordingGestureId;
  }

  copyFrameToModel();
  StrokeResults results;
  int result;
  if (!withProbabilities) {
    result = identifyStroke(gestureModel, currentStroke, results.position, &results.scale, results.axes[0],
                            results.axes[1], results.axes[2], kind == EndKind::Similarity ? similarity : nullptr);
    currentStroke.handPoints.clear();
    currentStroke.headPoints.clear();
  } else {
    results.setUnitAxes();
    result = kind == EndKind::Probabilities
                 ? computeProbabilities(gestureModel, probabilities, count, currentStroke, results.position,
                                        &results.scale, results.axes[0], results.axes[1], results.axes[2])
                 : computeProbabilitiesAndSimilarities(gestureModel, probabilities, similarities, count,
                                                       currentStroke, results.position, &results.scale,
                                                       results.axes[0], results.axes[1], results.axes[2]);
    currentStroke.handPoints.clear();
    currentStroke.headPoints.clear();
    if (result < 0) return fail(result);
    result = pickMostProbable(probabilities, *count, gestureModel.parameters.transferMode == 1);
  }
  results.writeTo(pos, scale, dir0, dir1, dir2);
  return result;
}

int GestureRecognition::endStroke(double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]) {
  return finishStroke(EndKind::Plain, nullptr, nullptr, nullptr, nullptr, pos, scale, dir0, dir1, dir2);
}

int GestureRecognition::endStrokeAndGetSimilarity(double* similarity, double pos[3], double* scale, double dir0[3],
                                                  double dir1[3], double dir2[3]) {
  return finishStroke(EndKind::Similarity, similarity, nullptr, nullptr, nullptr, pos, scale, dir0, dir1, dir2);
}

int GestureRecognition::endStrokeAndGetAllProbabilities(double* probabilities, int* count, double pos[3],
                                                        double* scale, double dir0[3], double dir1[3],
                                                        double dir2[3]) {
  return finishStroke(EndKind::Probabilities, nullptr, probabilities, nullptr, count, pos, scale, dir0, dir1, dir2);
}

int GestureRecognition::endStrokeAndGetAllProbabilitiesAndSimilarities(double* probabilities, double* similarities,
                                                                       int* count, double pos[3], double* scale,
                                                                       double dir0[3], double dir1[3],
                                                                       double dir2[3]) {
  return finishStroke(EndKind::ProbabilitiesAndSimilarities, nullptr, probabilities, similarities, count, pos,
                      scale, dir0, dir1, dir2);
}

}  // namespace zando
