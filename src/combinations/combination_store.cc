// The list of combinations, and how the fresh results of the parts name one of them, for finished
// strokes and for the running motion.
#include <algorithm>
#include <cstring>

#include "combinations/gesture_combinations.h"

namespace zando {

namespace {

bool inList(const std::vector<GestureCombination>& list, int index) {
  return index >= 0 && static_cast<size_t>(index) < list.size();
}

}  // namespace

// ---- Records ----

int GestureCombinations::numberOfGestureCombinations() { return static_cast<int>(combinations.size()); }

int GestureCombinations::createGestureCombination(const char* name) {
  if (const int busy = jobGuards()) return busy;
  if (name == nullptr) return ReturnCode_InvalidParameter;
  GestureCombination combination;
  combination.name = name;
  combination.partCount = partCount;
  combination.partGestures.assign(static_cast<size_t>(partCount), -1);
  combinations.push_back(std::move(combination));
  return static_cast<int>(combinations.size()) - 1;
}

int GestureCombinations::deleteGestureCombination(int combination) {
  if (const int busy = jobGuards()) return busy;
  if (!inList(combinations, combination)) return ReturnCode_InvalidIndex;
  combinations.erase(combinations.begin() + combination);
  return ReturnCode_Success;
}

int GestureCombinations::deleteAllGestureCombinations() {
  if (const int busy = jobGuards()) return busy;
  combinations.clear();
  return ReturnCode_Success;
}

int GestureCombinations::setCombinationPartGesture(int combination, int part, int gesture) {
  if (!inList(combinations, combination)) return ReturnCode_InvalidIndex;
  GestureCombination& record = combinations[static_cast<size_t>(combination)];
  if (part < 0 || part >= record.partCount || record.partGestures.empty()) return ReturnCode_InvalidIndex;
  GestureRecognition* recognizer = partAt(part);
  const int gestures = recognizer != nullptr ? recognizer->numberOfGestures() : 0;
  if (gesture < -1 || gesture >= gestures) return ReturnCode_InvalidIndex;
  record.partGestures[static_cast<size_t>(part)] = gesture;
  return ReturnCode_Success;
}

int GestureCombinations::getCombinationPartGesture(int combination, int part) {
  if (!inList(combinations, combination)) return ReturnCode_InvalidIndex;
  const GestureCombination& record = combinations[static_cast<size_t>(combination)];
  if (part < 0 || static_cast<size_t>(part) >= record.partGestures.size()) return ReturnCode_InvalidIndex;
  return record.partGestures[static_cast<size_t>(part)];
}

const char* GestureCombinations::getGestureCombinationName(int combination) {
  return inList(combinations, combination) ? combinations[static_cast<size_t>(combination)].name.c_str() : nullptr;
}

int GestureCombinations::getGestureCombinationNameLength(int combination) {
  if (!inList(combinations, combination)) return ReturnCode_InvalidIndex;
  return static_cast<int>(std::strlen(combinations[static_cast<size_t>(combination)].name.c_str()));
}

int GestureCombinations::copyGestureCombinationName(int combination, char* buffer, int bufferSize) {
  if (!inList(combinations, combination)) return 0;
  return copyNameInto(combinations[static_cast<size_t>(combination)].name, buffer, bufferSize);
}

int GestureCombinations::setGestureCombinationName(int combination, const char* name) {
  if (!inList(combinations, combination)) return ReturnCode_InvalidIndex;
  if (name == nullptr) return ReturnCode_InvalidParameter;
  combinations[static_cast<size_t>(combination)].name = name;
  return ReturnCode_Success;
}

IGestureRecognition::Metadata* GestureCombinations::getGestureCombinationMetadata(int combination) {
  return inList(combinations, combination) ? combinations[static_cast<size_t>(combination)].metadata : nullptr;
}

int GestureCombinations::setGestureCombinationMetadata(int combination, Metadata* newMetadata) {
  if (!inList(combinations, combination)) return ReturnCode_InvalidIndex;
  combinations[static_cast<size_t>(combination)].metadata = newMetadata;
  return ReturnCode_Success;
}

// ---- Identification ----

int GestureCombinations::selectCombination(double* probability, double* similarity, double* partProbabilitiesOut,
                                           double* partSimilaritiesOut) {
  if (combinations.empty()) return ReturnCode_NoGestures;
  double bestProbability = 0.0;
  double bestSimilarity = 0.0;
  int best = -1;
  for (size_t c = 0; c < combinations.size(); ++c) {
    const GestureCombination& record = combinations[c];
    if (record.partCount == 0) continue;
    const int m = std::min({partCount, record.partCount, static_cast<int>(record.partGestures.size())});
    double probabilitySum = 0.0;
    double similaritySum = 0.0;
    int counted = 0;
    bool rejected = false;
    for (int i = m - 1; i >= 0 && !rejected; --i) {
      const size_t k = static_cast<size_t>(i);
      const int g = record.partGestures[k];
      const bool enabled = partEnabled[k] != 0;
      if (g < 0) {
        // A part that should stay idle has performed a stroke.
        rejected = enabled && partResultCount[k] > 0;
      } else if (g >= partResultCount[k] || !enabled) {
        rejected = true;
      } else {
        probabilitySum += partProbabilities[k][static_cast<size_t>(g)];
        similaritySum += partSimilarities[k][static_cast<size_t>(g)];
        ++counted;
      }
    }
    if (rejected || counted == 0) continue;
    const double meanProbability = probabilitySum / counted;
    // Strictly better only: ties stay with the earlier combination.
    if (meanProbability > bestProbability) {
      bestProbability = meanProbability;
      bestSimilarity = similaritySum / counted;
      best = static_cast<int>(c);
    }
  }
  if (probability != nullptr) *probability = bestProbability;
  if (similarity != nullptr) *similarity = bestSimilarity;

  if (best < 0) {
    if (partProbabilitiesOut != nullptr) std::fill_n(partProbabilitiesOut, partCount, -1.0);
    if (partSimilaritiesOut != nullptr) std::fill_n(partSimilaritiesOut, partCount, -1.0);
  } else if (partProbabilitiesOut != nullptr || partSimilaritiesOut != nullptr) {
    const GestureCombination& record = combinations[static_cast<size_t>(best)];
    const int m = std::min({partCount, record.partCount, static_cast<int>(record.partGestures.size())});
    for (int i = 0; i < partCount; ++i) {
      const size_t k = static_cast<size_t>(i);
      double p = -1.0;
      double s = -1.0;
      if (i < m) {
        const int g = record.partGestures[k];
        if (g < 0) {
          p = s = partResultCount[k] > 0 ? 0.0 : 1.0;
        } else if (g < partResultCount[k]) {
          p = partProbabilities[k][static_cast<size_t>(g)];
          s = partSimilarities[k][static_cast<size_t>(g)];
        }
      }
      if (partProbabilitiesOut != nullptr) partProbabilitiesOut[i] = p;
      if (partSimilaritiesOut != nullptr) partSimilaritiesOut[i] = s;
    }
  }
  // Each stroke result is used once.
  std::fill(partResultCount.begin(), partResultCount.end(), -1);
  return best;
}

int GestureCombinations::identifyAfterStrokes(double* probability, double* similarity, double* partProbabilitiesOut,
                                              double* partSimilaritiesOut) {
  if (combinations.empty()) return ReturnCode_NoGestures;
  for (int i = partCount - 1; i >= 0; --i) {
    GestureRecognition* recognizer = partAt(i);
    if (recognizer == nullptr) return ReturnCode_ResourceError;
    if (recognizer->isStrokeStarted()) return ReturnCode_NoPartResult;
  }
  return selectCombination(probability, similarity, partProbabilitiesOut, partSimilaritiesOut);
}

int GestureCombinations::identifyGestureCombination(double* probability, double* similarity,
                                                    double* partProbabilitiesOut, double* partSimilaritiesOut) {
  if (!partGate.enter()) return ReturnCode_TrainingInProgress;
  const int result = identifyAfterStrokes(probability, similarity, partProbabilitiesOut, partSimilaritiesOut);
  partGate.leave();
  return result;
}

int GestureCombinations::contdIdentify(const double headPosition[3], const double headRotation[4],
                                       double* similarity, double* partProbabilitiesOut,
                                       double* partSimilaritiesOut) {
  if (!partGate.enter()) return ReturnCode_TrainingInProgress;
  int result = ReturnCode_Success;
  lastStrokeInfo.resize(static_cast<size_t>(partCount));
  for (int i = 0; i < partCount && result == ReturnCode_Success; ++i) {
    GestureRecognition* recognizer = partAt(i);
    if (recognizer == nullptr) {
      result = ReturnCode_ResourceError;
      break;
    }
    prepareResults(i);
    const size_t k = static_cast<size_t>(i);
    StrokeInfo& info = lastStrokeInfo[k];
    const int part = recognizer->contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
        headPosition, headRotation, partProbabilities[k].data(), partSimilarities[k].data(), &partResultCount[k],
        info.position, &info.scale, info.directions[0], info.directions[1], info.directions[2]);
    // A part without a running stroke simply has no result this time.
    if (part < 0 && part != ReturnCode_NoStrokeStarted) result = part;
  }
  if (result == ReturnCode_Success) {
    result = selectCombination(nullptr, similarity, partProbabilitiesOut, partSimilaritiesOut);
  }
  partGate.leave();
  return result;
}

int GestureCombinations::contdIdentifyM(const double headMatrix[4][4], double* similarity,
                                        double* partProbabilitiesOut, double* partSimilaritiesOut) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  const PoseArrays head(headMatrix);
  return contdIdentify(head.position, head.rotation, similarity, partProbabilitiesOut, partSimilaritiesOut);
}

int GestureCombinations::contdIdentifyGetLastStrokeInfo(int part, double pos[3], double* scale, double dir0[3],
                                                        double dir1[3], double dir2[3]) {
  if (!validPart(part)) return ReturnCode_InvalidParameter;
  if (static_cast<size_t>(part) >= lastStrokeInfo.size()) return ReturnCode_StrokeTooShort;
  const StrokeInfo& info = lastStrokeInfo[static_cast<size_t>(part)];
  if (pos != nullptr) std::copy_n(info.position, 3, pos);
  if (scale != nullptr) *scale = info.scale;
  double* outputs[3] = {dir0, dir1, dir2};
  for (int d = 0; d < 3; ++d) {
    if (outputs[d] != nullptr) std::copy_n(info.directions[d], 3, outputs[d]);
  }
  return ReturnCode_Success;
}

// ---- Recording from the running motion ----

int GestureCombinations::contdRecord(const double headPosition[3], const double headRotation[4]) {
  if (const int busy = jobGuards()) return busy;
  int first = ReturnCode_Success;
  for (int i = 0; i < partCount; ++i) {
    GestureRecognition* recognizer = partAt(i);
    if (recognizer == nullptr || !recognizer->isStrokeStarted()) continue;
    const int result = recognizer->contdRecord(headPosition, headRotation);
    if (first == ReturnCode_Success) first = result;
  }
  return first;
}

int GestureCombinations::contdRecordM(const double headMatrix[4][4]) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  const PoseArrays head(headMatrix);
  return contdRecord(head.position, head.rotation);
}

int GestureCombinations::contdRecordPart(int part, const double headPosition[3], const double headRotation[4]) {
  if (const int busy = jobGuards()) return busy;
  if (!validPart(part)) return ReturnCode_InvalidParameter;
  GestureRecognition* recognizer = partAt(part);
  return recognizer == nullptr ? ReturnCode_ResourceError : recognizer->contdRecord(headPosition, headRotation);
}

int GestureCombinations::contdRecordPartM(int part, const double headMatrix[4][4]) {
  if (headMatrix == nullptr) return ReturnCode_InvalidParameter;
  const PoseArrays head(headMatrix);
  return contdRecordPart(part, head.position, head.rotation);
}

}  // namespace zando
