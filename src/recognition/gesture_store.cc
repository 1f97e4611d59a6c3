// The gesture store: gestures, their samples, names, metadata and enabled flags, and how the
// trained network is kept usable when gestures come and go.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "features/feature_extraction.h"
#include "model/identification.h"
#include "recognition/gesture_recognition.h"

namespace zando {

namespace {

bool hasTrainedNetwork(const GestureModel& model) {
  const size_t layers = model.weights.size();
  return layers >= 2 && model.layerBuffers.size() == layers + 1;
}

}  // namespace

int GestureRecognition::numberOfGestures() { return gestureModel.gestureCount(); }

int GestureRecognition::createGesture(const char* name, Metadata* metadata) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (name == nullptr) return ReturnCode_InvalidParameter;
  gestureModel.gestures.push_back(new Gesture(name, metadata));
  const int count = gestureModel.gestureCount();
  if (hasTrainedNetwork(gestureModel)) {
    // The new output scores from a zero column until the next training.
    Matrix& last = gestureModel.weights.back();
    last.conservativeResize(Eigen::NoChange, last.cols() + 1);
    last.col(last.cols() - 1).setZero();
    gestureModel.layerBuffers.back().resize(1, count);
  }
  return count - 1;
}

int GestureRecognition::deleteGesture(int index) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (index < 0 || index >= gestureModel.gestureCount()) return ReturnCode_InvalidIndex;
  // The record leaves the list but stays allocated until the model goes: a finished job's last
  // steps may still hold it.
  gestureModel.detachedGestures.push_back(gestureModel.gestures[static_cast<size_t>(index)]);
  gestureModel.gestures.erase(gestureModel.gestures.begin() + index);
  if (!hasTrainedNetwork(gestureModel)) return ReturnCode_Success;
  Matrix& last = gestureModel.weights.back();
  if (index < last.cols()) {
    const Eigen::Index behind = last.cols() - index - 1;
    if (behind > 0) last.middleCols(index, behind) = last.rightCols(behind).eval();
    last.conservativeResize(Eigen::NoChange, last.cols() - 1);
  }
  gestureModel.layerBuffers.back().resize(1, gestureModel.gestureCount());
  return ReturnCode_Success;
}

int GestureRecognition::deleteAllGestures() {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  for (Gesture* gesture : gestureModel.gestures) delete gesture;
  gestureModel.gestures.clear();
  return ReturnCode_Success;
}

double GestureRecognition::recognitionScore(bool recompute) {
  if (!recompute) return gestureModel.recognitionScore;
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  if (gestureModel.gestures.empty()) return notANumber;
  int hits = 0;
  int samples = 0;
  for (int g = gestureModel.gestureCount() - 1; g >= 0; --g) {
    const std::vector<Stroke*>& strokes = gestureModel.gestures[static_cast<size_t>(g)]->gestureSamples;
    for (size_t s = strokes.size(); s-- > 0;) {
      copyFrameToModel();
      if (identifyStroke(gestureModel, *strokes[s], nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) == g) {
        ++hits;
      }
      ++samples;
    }
  }
  return samples == 0 ? notANumber : static_cast<double>(hits) / static_cast<double>(samples);
}

const char* GestureRecognition::getGestureName(int index) {
  if (index < 0 || index >= gestureModel.gestureCount()) return nullptr;
  return gestureModel.gestures[static_cast<size_t>(index)]->gestureName.c_str();
}

int GestureRecognition::getGestureNameLength(int index) {
  if (index < 0 || index >= gestureModel.gestureCount()) return ReturnCode_InvalidIndex;
  return static_cast<int>(gestureModel.gestures[static_cast<size_t>(index)]->gestureName.size());
}

int GestureRecognition::copyGestureName(int index, char* buffer, int bufferSize) {
  if (index < 0 || index >= gestureModel.gestureCount()) return 0;
  return copyNameInto(gestureModel.gestures[static_cast<size_t>(index)]->gestureName, buffer, bufferSize);
}

int GestureRecognition::setGestureName(int index, const char* name) {
  if (index < 0 || index >= gestureModel.gestureCount()) return ReturnCode_InvalidIndex;
  if (name == nullptr) return ReturnCode_InvalidParameter;
  gestureModel.gestures[static_cast<size_t>(index)]->gestureName = name;
  return ReturnCode_Success;
}

IGestureRecognition::Metadata* GestureRecognition::getGestureMetadata(int index) {
  if (index < 0 || index >= gestureModel.gestureCount()) return nullptr;
  return gestureModel.gestures[static_cast<size_t>(index)]->gestureMetadata;
}

int GestureRecognition::setGestureMetadata(int index, Metadata* metadata) {
  if (index < 0 || index >= gestureModel.gestureCount()) return ReturnCode_InvalidIndex;
  gestureModel.gestures[static_cast<size_t>(index)]->gestureMetadata = metadata;
  return ReturnCode_Success;
}

bool GestureRecognition::getGestureEnabled(int index) {
  if (index < 0 || index >= gestureModel.gestureCount()) return false;
  return gestureModel.gestures[static_cast<size_t>(index)]->gestureEnabled;
}

int GestureRecognition::setGestureEnabled(int index, bool enabled) {
  if (index < 0 || index >= gestureModel.gestureCount()) return ReturnCode_InvalidIndex;
  gestureModel.gestures[static_cast<size_t>(index)]->gestureEnabled = enabled;
  return ReturnCode_Success;
}

int GestureRecognition::getGestureNumberOfSamples(int index) {
  if (index < 0 || index >= gestureModel.gestureCount()) return 0;
  return static_cast<int>(gestureModel.gestures[static_cast<size_t>(index)]->gestureSamples.size());
}

namespace {

Stroke* findSample(GestureModel& model, int gestureIndex, int sampleIndex) {
  if (gestureIndex < 0 || gestureIndex >= model.gestureCount()) return nullptr;
  std::vector<Stroke*>& samples = model.gestures[static_cast<size_t>(gestureIndex)]->gestureSamples;
  if (sampleIndex < 0 || static_cast<size_t>(sampleIndex) >= samples.size()) return nullptr;
  return samples[static_cast<size_t>(sampleIndex)];
}

void writePose(const StrokePoint& point, double (*positions)[3], double (*rotations)[4], int row) {
  if (positions != nullptr) {
    positions[row][0] = point.position.x;
    positions[row][1] = point.position.y;
    positions[row][2] = point.position.z;
  }
  if (rotations != nullptr) point.rotation.copyTo(rotations[row]);
}

}  // namespace

int GestureRecognition::getGestureSampleType(int gestureIndex, int sampleIndex) {
  const Stroke* sample = findSample(gestureModel, gestureIndex, sampleIndex);
  return sample == nullptr ? ReturnCode_InvalidIndex : sample->sampleType;
}

int GestureRecognition::setGestureSampleType(int gestureIndex, int sampleIndex, int sampleType) {
  Stroke* sample = findSample(gestureModel, gestureIndex, sampleIndex);
  if (sample == nullptr) return ReturnCode_InvalidIndex;
  if (static_cast<unsigned>(sampleType) > 1u) return ReturnCode_InvalidParameter;
  sample->sampleType = sampleType;
  return ReturnCode_Success;
}

int GestureRecognition::getGestureSampleLength(int gestureIndex, int sampleIndex, bool processed) {
  if (processed) return gestureModel.parameters.waypointCount;
  const Stroke* sample = findSample(gestureModel, gestureIndex, sampleIndex);
  return sample == nullptr ? 0 : static_cast<int>(sample->handPoints.size());
}

int GestureRecognition::getGestureSampleStroke(int gestureIndex, int sampleIndex, bool processed, int bufferSize,
                                               double (*handPositions)[3], double (*handRotations)[4],
                                               double (*headPositions)[3], double (*headRotations)[4]) {
  const Stroke* sample = findSample(gestureModel, gestureIndex, sampleIndex);
  if (sample == nullptr) return 0;
  if (!processed) {
    const int n = std::min(static_cast<int>(sample->handPoints.size()), bufferSize);
    for (int i = 0; i < n; ++i) {
      writePose(sample->handPoints[static_cast<size_t>(i)], handPositions, handRotations, i);
      writePose(sample->headPoints.size() > static_cast<size_t>(i) ? sample->headPoints[static_cast<size_t>(i)]
                                                                  : sample->headLatest,
                headPositions, headRotations, i);
    }
    return n;
  }
  const ModelParameters& parameters = gestureModel.parameters;
  const int n = std::min(parameters.waypointCount, bufferSize);
  const std::vector<double> features = extractFeatures(*sample, parameters);
  if (n < 1) return n;
  const int mode = parameters.waypointFeatureMode;
  const int headCount = static_cast<int>(sample->headPoints.size());
  for (int i = 0; i < n; ++i) {
    // Mode 4 blocks are 9 wide but are read at a stride of 3, as the positions of mode 0.
    const int width = mode == 1 ? 6 : (mode == 2 ? 7 : 3);
    const size_t at = static_cast<size_t>(width) * static_cast<size_t>(i);
    if (at + static_cast<size_t>(width) > features.size()) break;
    StrokePoint hand(Unstamped{});
    hand.position = Vector3(features[at], features[at + 1], features[at + 2]);
    if (mode == 1) {
      hand.rotation = quaternionFromEuler(&features[at + 3], rotationalFrameOfReferenceRotationOrder);
    } else if (mode == 2) {
      hand.rotation = Quaternion(&features[at + 3]);
    }
    writePose(hand, handPositions, handRotations, i);
    if (headCount == 0) {
      writePose(sample->headStart, headPositions, headRotations, i);
    } else {
      const float where = static_cast<float>(headCount) * static_cast<float>(i) / static_cast<float>(n);
      const int head = std::clamp(static_cast<int>(std::roundf(where)), 0, headCount - 1);
      writePose(sample->headPoints[static_cast<size_t>(head)], headPositions, headRotations, i);
    }
  }
  return n;
}

int GestureRecognition::deleteGestureSample(int gestureIndex, int sampleIndex) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (findSample(gestureModel, gestureIndex, sampleIndex) == nullptr) return ReturnCode_InvalidIndex;
  std::vector<Stroke*>& samples = gestureModel.gestures[static_cast<size_t>(gestureIndex)]->gestureSamples;
  delete samples[static_cast<size_t>(sampleIndex)];
  samples.erase(samples.begin() + sampleIndex);
  return ReturnCode_Success;
}

int GestureRecognition::deleteAllGestureSamples(int gestureIndex) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (gestureIndex < 0 || gestureIndex >= gestureModel.gestureCount()) return ReturnCode_InvalidIndex;
  std::vector<Stroke*>& samples = gestureModel.gestures[static_cast<size_t>(gestureIndex)]->gestureSamples;
  for (Stroke* sample : samples) delete sample;
  samples.clear();
  return ReturnCode_Success;
}

}  // namespace zando
