// Continuous detection of combinations: every part detects its own gestures in its running
// motion; a combination is reported when the gestures it names were performed together and the
// parts it marks idle performed nothing meanwhile.
#include <algorithm>
#include <cmath>

#include "combinations/gesture_combinations.h"
#include "recognition/stroke_results.h"
#include "spatial/thread_scratch.h"

namespace zando {

namespace {

// Gestures of two parts belong together when their performances overlap or one ends this soon
// after the other.
constexpr double kTogetherSeconds = 0.5;
// A combination that a part's later report could still change (one with an idle part, or one
// whose gestures are also part of a larger combination) waits while such a part has a match it
// has not yet decided on, up to this long after its last report.
constexpr double kSettleSeconds = 0.3;
// A report is part of a combination only this soon after it came; afterwards it only keeps
// combinations that want its part idle from being reported, until it is forgotten.
constexpr double kPairSeconds = 1.0;
constexpr double kForgetSeconds = 3.0;

bool overlap(const Detection& a, const Detection& b, double slack) {
  return a.start <= b.end + slack && b.start <= a.end + slack;
}

}  // namespace

int GestureCombinations::setHostTime(double seconds) {
  if (!std::isfinite(seconds)) return ReturnCode_InvalidParameter;
  for (int i = 0; i < partCount; ++i) {
    if (GestureRecognition* part = partAt(i)) part->setHostTime(seconds);
  }
  return ReturnCode_Success;
}

int GestureCombinations::setDetectionSensitivity(double sensitivity) {
  if (!(sensitivity >= 0.0 && sensitivity <= 1.0)) return ReturnCode_InvalidParameter;
  for (int i = 0; i < partCount; ++i) {
    if (GestureRecognition* part = partAt(i)) part->setDetectionSensitivity(sensitivity);
  }
  return ReturnCode_Success;
}

double GestureCombinations::getDetectionSensitivity() {
  GestureRecognition* first = partAt(0);
  return first != nullptr ? first->getDetectionSensitivity() : 0.5;
}

int GestureCombinations::contdDetectM(const double headMatrix[4][4], int* combination, double* confidence) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  const PoseArrays head(headMatrix);
  return contdDetect(head.position, head.rotation, combination, confidence);
}

int GestureCombinations::contdDetect(const double headPosition[3], const double headRotation[4], int* combination,
                                     double* confidence) {
  if (!partGate.enter()) return ReturnCode_TrainingInProgress;
  struct Leave {
    PartAccessGate& gate;
    ~Leave() { gate.leave(); }
  } leave{partGate};
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (headPosition == nullptr || headRotation == nullptr || combination == nullptr || confidence == nullptr) {
    return ReturnCode_InvalidParameter;
  }
  if (!allFinite(headPosition, 3) || !allFinite(headRotation, 4)) return ReturnCode_InvalidParameter;
  if (combinations.empty()) return ReturnCode_NoGestures;

  partEvents.resize(static_cast<size_t>(partCount));
  shareGestureLength();
  bool anyStroke = false;
  double now = -HUGE_VAL;
  for (int i = 0; i < partCount; ++i) {
    GestureRecognition* part = partAt(i);
    // A part without a running stroke, or without gestures, performs nothing.
    if (part == nullptr || !part->isStrokeStarted()) continue;
    anyStroke = true;
    Detection found;
    const int result = part->detectPerformed(headPosition, headRotation, found);
    now = std::max(now, static_cast<double>(part->clockNow()) / 1000.0);
    if (result == ReturnCode_NoGestures) continue;
    if (result < 0) return result;
    if (result == 1) partEvents[static_cast<size_t>(i)].push_back({found, now, false});
  }
  if (!anyStroke) return ReturnCode_NoStrokeStarted;
  for (std::vector<PartEvent>& events : partEvents) {
    events.erase(std::remove_if(events.begin(), events.end(),
                                [now](const PartEvent& event) { return event.reported < now - kForgetSeconds; }),
                 events.end());
  }
  const int found = completedCombination(now, *confidence);
  if (found < 0) return 0;
  *combination = found;
  return 1;
}

void GestureCombinations::shareGestureLength() {
  std::vector<uintptr_t>& fingerprint = threadScratch<std::vector<uintptr_t>, struct FingerprintPlace>();
  bool changed = detectionFingerprints.size() != static_cast<size_t>(partCount);
  detectionFingerprints.resize(static_cast<size_t>(partCount));
  for (int i = 0; i < partCount; ++i) {
    GestureRecognition* part = partAt(i);
    if (part == nullptr) continue;
    part->copyFrameToModel();
    sampleFingerprint(part->gestureModel, part->gestureModel.parameters, fingerprint);
    if (fingerprint != detectionFingerprints[static_cast<size_t>(i)]) {
      detectionFingerprints[static_cast<size_t>(i)] = fingerprint;
      changed = true;
    }
  }
  if (!changed) return;
  std::vector<double> lengths;
  for (int i = 0; i < partCount; ++i) {
    if (GestureRecognition* part = partAt(i)) appendGestureLengths(part->gestureModel, part->gestureModel.parameters, lengths);
  }
  const double reference = movingGestureLength(lengths);
  for (int i = 0; i < partCount; ++i) {
    if (GestureRecognition* part = partAt(i)) part->detectionReferenceLength = reference;
  }
}

int GestureCombinations::completedCombination(double now, double& confidence) {
  int best = -1;
  int bestParts = 0;
  double bestConfidence = 0.0;
  std::vector<PartEvent*> chosen(static_cast<size_t>(partCount), nullptr);
  std::vector<PartEvent*> bestChosen;
  for (size_t c = 0; c < combinations.size(); ++c) {
    const GestureCombination& record = combinations[c];
    int named = 0;
    bool complete = true;
    double latest = -HUGE_VAL, begin = HUGE_VAL, end = -HUGE_VAL, sum = 0.0;
    for (int p = 0; p < partCount && complete; ++p) {
      chosen[static_cast<size_t>(p)] = nullptr;
      int gesture = p < static_cast<int>(record.partGestures.size()) ? record.partGestures[static_cast<size_t>(p)] : -1;
      // A gesture made by resting the hand asks for that part to be idle.
      const GestureRecognition* part = partAt(p);
      if (part != nullptr && part->gestureIsStill(gesture)) gesture = -1;
      if (gesture < 0) continue;
      ++named;
      // The part's latest unused report of that gesture.
      PartEvent* match = nullptr;
      for (PartEvent& event : partEvents[static_cast<size_t>(p)]) {
        if (!event.used && event.detection.gesture == gesture && now - event.reported <= kPairSeconds) match = &event;
      }
      if (match == nullptr) complete = false;
      chosen[static_cast<size_t>(p)] = match;
    }
    if (!complete || named == 0) continue;
    for (int p = 0; p < partCount; ++p) {
      const PartEvent* event = chosen[static_cast<size_t>(p)];
      if (event == nullptr) continue;
      latest = std::max(latest, event->reported);
      begin = std::min(begin, event->detection.start);
      end = std::max(end, event->detection.end);
      sum += event->detection.confidence;
      for (int q = 0; q < p && complete; ++q) {
        const PartEvent* other = chosen[static_cast<size_t>(q)];
        if (other != nullptr && !overlap(event->detection, other->detection, kTogetherSeconds)) complete = false;
      }
    }
    // The parts the combination leaves idle performed nothing meanwhile.
    const Detection span{-1, 0.0, begin, end};
    for (int p = 0; p < partCount && complete; ++p) {
      if (chosen[static_cast<size_t>(p)] != nullptr) continue;
      for (const PartEvent& event : partEvents[static_cast<size_t>(p)]) {
        if (overlap(event.detection, span, 0.0)) complete = false;
      }
    }
    if (!complete) continue;
    // Unless every part has its gesture, another part's report may still come and change the
    // answer: the combination waits for it a moment.
    if (named < partCount && now - latest < kSettleSeconds) {
      for (int p = 0; p < partCount; ++p) {
        const GestureRecognition* part = partAt(p);
        if (chosen[static_cast<size_t>(p)] == nullptr && part != nullptr && part->detectionPending()) return -1;
      }
    }
    const double mean = sum / named;
    if (named > bestParts || (named == bestParts && mean > bestConfidence)) {
      best = static_cast<int>(c);
      bestParts = named;
      bestConfidence = mean;
      bestChosen = chosen;
    }
  }
  if (best < 0) return -1;
  for (PartEvent* event : bestChosen) {
    if (event != nullptr) event->used = true;
  }
  confidence = bestConfidence;
  return best;
}

}  // namespace zando
