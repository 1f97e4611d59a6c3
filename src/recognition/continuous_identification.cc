// Identification and recording over a sliding time window of a running stroke. The stroke stays
// open and keeps growing; each call cuts it to the window, reads it as a continuous sample and,
// if asked, smooths the answer over the last calls.
#include "model/identification.h"
#include "recognition/gesture_recognition.h"
#include "recognition/stroke_results.h"

namespace zando {

namespace {

bool finitePose(const double position[3], const double rotation[4]) {
  return allFinite(position, 3) && allFinite(rotation, 4);
}

}  // namespace

int GestureRecognition::contdWindow(const double headPosition[3], const double headRotation[4], int64_t* now) {
  currentStroke.headLatest = StrokePoint(headPosition, headRotation);
  if (hostTimeMs >= 0) currentStroke.headLatest.timestamp = hostTimeMs;
  if (now != nullptr) *now = clockNow();
  pruneStroke(-1, contdIdentificationPeriod);
  // The window is read against the head pose of its own first point.
  if (!currentStroke.headPoints.empty()) currentStroke.headStart = currentStroke.headPoints.front();
  if (currentStroke.handPoints.size() < 2) return ReturnCode_StrokeTooShort;
  currentStroke.sampleType = SampleType_Continuous;
  return ReturnCode_Success;
}

void GestureRecognition::smoothContdResult(int& gesture, double& similarity) {
  if (contdIdentificationSmoothing == 0) return;
  const size_t keep = static_cast<unsigned>(contdIdentificationSmoothing);
  if (contdHistory.size() > keep) contdHistory.erase(contdHistory.begin(), contdHistory.end() - static_cast<std::ptrdiff_t>(keep));
  contdHistory.emplace_back(gesture, similarity);
  // A gesture wins by its summed similarity, not by its count of votes; a tie goes to the lowest id.
  // The history is a handful of entries, so the sums are taken in place rather than in a map: this
  // runs every frame and allocates nothing.
  gesture = -1;
  similarity = -1.0;
  for (size_t i = 0; i < contdHistory.size(); ++i) {
    const int candidate = contdHistory[i].first;
    if (candidate < 0) continue;
    bool counted = false;
    for (size_t j = 0; j < i && !counted; ++j) counted = contdHistory[j].first == candidate;
    if (counted) continue;
    double sum = 0.0;
    for (size_t j = i; j < contdHistory.size(); ++j) {
      if (contdHistory[j].first == candidate) sum += contdHistory[j].second;
    }
    if (sum > similarity || (sum == similarity && gesture >= 0 && candidate < gesture)) {
      gesture = candidate;
      similarity = sum;
    }
  }
  // Agreement counts for the winner, everything else against it (failures and, when no gesture
  // won, every entry), so a disputed window reports a low or negative similarity.
  double balance = 0.0;
  for (const auto& entry : contdHistory) {
    balance += entry.first >= 0 && entry.first == gesture ? entry.second : -entry.second;
  }
  similarity = balance / static_cast<double>(contdHistory.size());
}

int GestureRecognition::contdIdentifyAndGetStroke(const double headPosition[3], const double headRotation[4],
                                                  double* similarity, double pos[3], double* scale, double dir0[3],
                                                  double dir1[3], double dir2[3]) {
  if (!strokeStarted) return ReturnCode_NoStrokeStarted;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (headPosition == nullptr || headRotation == nullptr) return ReturnCode_InvalidParameter;
  if (!finitePose(headPosition, headRotation)) return ReturnCode_InvalidParameter;
  int64_t now = 0;
  const int window = contdWindow(headPosition, headRotation, &now);
  if (window < 0) return window;

  if (recordingGestureId >= 0) {
    if (isSaving()) return ReturnCode_SavingInProgress;
    // Once the window is 90% full, every tenth call stores it as a sample.
    const double period = static_cast<double>(static_cast<unsigned>(contdIdentificationPeriod));
    const double age = static_cast<double>(now - currentStroke.handPoints.front().timestamp);
    if (period * 0.9 < age && --contdRecordCountdown <= 0) {
      storeCurrentStrokeAsSample();
      contdRecordCountdown = 10;
    }
    return recordingGestureId;
  }

  StrokeResults results;
  double localSimilarity = -1.0;
  double* result = similarity != nullptr ? similarity : &localSimilarity;
  copyFrameToModel();
  int gesture = identifyStroke(gestureModel, currentStroke, results.position, &results.scale, results.axes[0],
                               results.axes[1], results.axes[2], result, true);
  smoothContdResult(gesture, *result);
  results.writeTo(pos, scale, dir0, dir1, dir2);
  return gesture;
}

int GestureRecognition::contdIdentify(const double headPosition[3], const double headRotation[4],
                                      double* similarity) {
  return contdIdentifyAndGetStroke(headPosition, headRotation, similarity, nullptr, nullptr, nullptr, nullptr,
                                   nullptr);
}

int GestureRecognition::contdIdentifyM(const double headMatrix[4][4], double* similarity) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  const PoseArrays head(headMatrix);
  return contdIdentify(head.position, head.rotation, similarity);
}

int GestureRecognition::contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
    const double headPosition[3], const double headRotation[4], double* probabilities, double* similarities,
    int* count, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]) {
  if (count == nullptr) return ReturnCode_InvalidParameter;
  const auto fail = [count](int code) {
    *count = 0;
    return code;
  };
  if (probabilities == nullptr || similarities == nullptr || *count < 1) return fail(ReturnCode_InvalidParameter);
  if (!strokeStarted) return fail(ReturnCode_NoStrokeStarted);
  if (isTraining()) return fail(ReturnCode_TrainingInProgress);
  if (isLoading()) return fail(ReturnCode_LoadingInProgress);
  if (headPosition == nullptr || headRotation == nullptr) return fail(ReturnCode_InvalidParameter);
  if (!finitePose(headPosition, headRotation)) return fail(ReturnCode_InvalidParameter);
  const int window = contdWindow(headPosition, headRotation, nullptr);
  if (window < 0) return fail(window);

  // This form identifies even while a recording target is set, and leaves the history alone.
  StrokeResults results;
  copyFrameToModel();
  const int computed =
      computeProbabilitiesAndSimilarities(gestureModel, probabilities, similarities, count, currentStroke,
                                          results.position, &results.scale, results.axes[0], results.axes[1],
                                          results.axes[2], true);
  if (computed < 0) return fail(computed);
  const int gesture = pickMostProbable(probabilities, *count, gestureModel.parameters.transferMode == 1);
  results.writeTo(pos, scale, dir0, dir1, dir2);
  return gesture;
}

int GestureRecognition::contdIdentifyAndGetAllProbabilitiesAndSimilarities(const double headPosition[3],
                                                                           const double headRotation[4],
                                                                           double* probabilities,
                                                                           double* similarities, int* count) {
  return contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
      headPosition, headRotation, probabilities, similarities, count, nullptr, nullptr, nullptr, nullptr, nullptr);
}

int GestureRecognition::contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(const double headMatrix[4][4],
                                                                            double* probabilities,
                                                                            double* similarities, int* count) {
  if (headMatrix == nullptr) {
    if (count != nullptr) *count = 0;
    return ReturnCode_InvalidParameter;
  }
  const PoseArrays head(headMatrix);
  return contdIdentifyAndGetAllProbabilitiesAndSimilarities(head.position, head.rotation, probabilities,
                                                            similarities, count);
}

int GestureRecognition::contdRecord(const double headPosition[3], const double headRotation[4]) {
  if (!strokeStarted) return ReturnCode_NoStrokeStarted;
  if (recordingGestureId < 0 || isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (headPosition == nullptr || headRotation == nullptr) return ReturnCode_InvalidParameter;
  if (!finitePose(headPosition, headRotation)) return ReturnCode_InvalidParameter;
  const int window = contdWindow(headPosition, headRotation, nullptr);
  if (window < 0) return window;
  storeCurrentStrokeAsSample();
  return recordingGestureId;
}

int GestureRecognition::contdRecordM(const double headMatrix[4][4]) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  const PoseArrays head(headMatrix);
  return contdRecord(head.position, head.rotation);
}

}  // namespace zando
