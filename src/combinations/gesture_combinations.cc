// The combination object and its parts: construction, the per-part arrays, and the operations
// that forward to one part.
#include "combinations/gesture_combinations.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <string>
#include <thread>

#include <Eigen/Dense>

#include "spatial/spatial.h"

namespace zando {

namespace {

// Lets an application-thread operation through the gate for its duration.
class GateUse {
 public:
  explicit GateUse(PartAccessGate& gate) : gate_(gate), entered_(gate.enter()) {}
  ~GateUse() {
    if (entered_) gate_.leave();
  }
  GateUse(const GateUse&) = delete;
  GateUse& operator=(const GateUse&) = delete;
  explicit operator bool() const { return entered_; }

 private:
  PartAccessGate& gate_;
  bool entered_;
};

}  // namespace


void PartAccessGate::close() {
  closed_.store(true);
  while (users_.load() != 0) std::this_thread::yield();
}

GestureCombinations::GestureCombinations(int numberOfParts) {
  maxTrainingTime = 30;
  trainingUpdateCallback = nullptr;
  trainingUpdateCallbackMetadata = nullptr;
  trainingFinishCallback = nullptr;
  trainingFinishCallbackMetadata = nullptr;
  rebuildParts(numberOfParts < 1 ? 0 : numberOfParts);
}

GestureCombinations* GestureCombinations::createZeroFilled(int numberOfParts) {
  void* memory = ::operator new(sizeof(GestureCombinations));
  std::memset(memory, 0, sizeof(GestureCombinations));
  try {
    return new (memory) GestureCombinations(numberOfParts);
  } catch (...) {
    ::operator delete(memory);
    throw;
  }
}

GestureCombinations::~GestureCombinations() {
  if (jobBusy(loadingState.load())) cancelLoading();
  if (jobBusy(savingState.load())) cancelSaving();
  // A save or load worker ends with its finish callback, after its state said so.
  while (activeWorkers.load(std::memory_order_acquire) > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  if (trainingMask.load() != 0) stopTraining();
  releaseParts();
}

void GestureCombinations::releaseParts() {
  // The last part to finish training replays samples through every part, so no part may go
  // before the threads of all of them are done.
  for (auto& recognizer : parts) {
    if (recognizer != nullptr) recognizer->waitForWorkers();
  }
  // A part's own set metadata can only have come from a file the part read, and no host function
  // reaches it: it goes with the part. (Gesture metadata stays the host's, as everywhere.)
  for (auto& recognizer : parts) {
    if (recognizer == nullptr) continue;
    delete recognizer->gestureModel.metadata;
    recognizer->gestureModel.metadata = nullptr;
  }
  parts.clear();
  partEnabled.clear();
  partProbabilities.clear();
  partSimilarities.clear();
  partResultCount.clear();
  partContext.clear();
  partBestPerformance.clear();
  partCount = 0;
}

void GestureCombinations::rebuildParts(int count) {
  releaseParts();
  const size_t n = static_cast<size_t>(count);
  partCount = count;
  partEnabled.assign(n, 1);
  partProbabilities.assign(n, {});
  partSimilarities.assign(n, {});
  partResultCount.assign(n, -1);
  partContext.assign(n, PartContext{});
  partBestPerformance.assign(n, 0.0);
  parts.resize(n);
  for (int i = 0; i < count; ++i) {
    parts[static_cast<size_t>(i)].reset(GestureRecognition::createZeroFilled());
    wirePart(i);
  }
}

void GestureCombinations::wirePart(int index) {
  PartContext& context = partContext[static_cast<size_t>(index)];
  context.owner = this;
  context.part = index;
  GestureRecognition& recognizer = *parts[static_cast<size_t>(index)];
  recognizer.trainingUpdateCallback = &trainingUpdateForwarder;
  recognizer.trainingUpdateCallbackMetadata = &context;
  recognizer.trainingFinishCallback = &trainingFinishForwarder;
  recognizer.trainingFinishCallbackMetadata = &context;
  recognizer.loadingUpdateCallback = &loadingProgressForwarder;
  recognizer.loadingUpdateMetadata = this;
}

void GestureCombinations::lendFrameTo(GestureRecognition& recognizer) const {
  recognizer.rotationalFrameOfReferenceX = rotationalFrameOfReferenceX;
  recognizer.rotationalFrameOfReferenceY = rotationalFrameOfReferenceY;
  recognizer.rotationalFrameOfReferenceZ = rotationalFrameOfReferenceZ;
  recognizer.rotationalFrameOfReferenceRotationOrder = rotationalFrameOfReferenceRotationOrder;
}

void GestureCombinations::takeFrameFrom(const GestureRecognition& recognizer) {
  rotationalFrameOfReferenceX = recognizer.rotationalFrameOfReferenceX;
  rotationalFrameOfReferenceY = recognizer.rotationalFrameOfReferenceY;
  rotationalFrameOfReferenceZ = recognizer.rotationalFrameOfReferenceZ;
  rotationalFrameOfReferenceRotationOrder = recognizer.rotationalFrameOfReferenceRotationOrder;
}

void GestureCombinations::prepareResults(int index) {
  const size_t i = static_cast<size_t>(index);
  const int gestures = parts[i]->numberOfGestures();
  const size_t needed = static_cast<size_t>(gestures < 1 ? 1 : gestures);
  // Grow only: a steady stream of strokes allocates nothing after the first.
  if (needed > partProbabilities[i].size()) {
    partProbabilities[i].assign(needed, 0.0);
    partSimilarities[i].assign(needed, 0.0);
  }
  partResultCount[i] = static_cast<int>(partProbabilities[i].size());
}

// ---- Parts ----

int GestureCombinations::numberOfParts() { return partCount; }

bool GestureCombinations::getPartEnabled(int part) { return validPart(part) && partEnabled[static_cast<size_t>(part)] != 0; }

int GestureCombinations::setPartEnabled(int part, bool enabled) {
  if (!validPart(part)) return ReturnCode_InvalidParameter;
  partEnabled[static_cast<size_t>(part)] = enabled ? 1 : 0;
  return ReturnCode_Success;
}

// ---- Forwarding ----
//
// The families differ only in what a bad index and a missing part give, and in their guards.

namespace {

template <typename F>
int forward(GestureCombinations& self, int index, F&& operation) {
  if (!self.validPart(index)) return ReturnCode_InvalidIndex;
  GestureRecognition* recognizer = self.partAt(index);
  if (recognizer == nullptr) return ReturnCode_ResourceError;
  return operation(*recognizer);
}

// Stroke operations also wait outside while the training thread replays samples through the parts.
template <typename F>
int forwardStroke(GestureCombinations& self, int index, F&& operation) {
  return forward(self, index, [&](GestureRecognition& recognizer) {
    GateUse use(self.partGate);
    return use ? operation(recognizer) : static_cast<int>(ReturnCode_TrainingInProgress);
  });
}

// Operations that change a gesture store are refused while a job owns the object.
template <typename F>
int forwardGuarded(GestureCombinations& self, int index, F&& operation) {
  if (const int busy = self.jobGuards()) return busy;
  return forward(self, index, operation);
}

// Read accessors answer with a neutral value for a bad index or a missing part.
template <typename R, typename F>
R readPart(GestureCombinations& self, int index, R fallback, F&& operation) {
  GestureRecognition* recognizer = self.partAt(index);
  return recognizer == nullptr ? fallback : operation(*recognizer);
}

}  // namespace

int GestureCombinations::startStroke(int part, const double headPosition[3], const double headRotation[4],
                                     int gesture) {
  return forwardStroke(*this, part, [&](GestureRecognition& recognizer) {
    const int refused = prepareStrokeStart(recognizer, gesture);
    return refused != 0 ? refused : recognizer.startStroke(headPosition, headRotation, gesture);
  });
}

int GestureCombinations::startStrokeM(int part, const double headMatrix[4][4], int gesture) {
  return forwardStroke(*this, part, [&](GestureRecognition& recognizer) {
    const int refused = prepareStrokeStart(recognizer, gesture);
    return refused != 0 ? refused : recognizer.startStrokeM(headMatrix, gesture);
  });
}

int GestureCombinations::prepareStrokeStart(GestureRecognition& recognizer, int gesture) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (gesture >= 0 && isSaving()) return ReturnCode_SavingInProgress;
  // A part always records in the frame of its owner.
  lendFrameTo(recognizer);
  return ReturnCode_Success;
}

int GestureCombinations::updateHeadPositionQ(const double headPosition[3], const double headRotation[4]) {
  GateUse use(partGate);
  if (!use) return ReturnCode_TrainingInProgress;
  for (int i = partCount - 1; i >= 0; --i) {
    if (GestureRecognition* recognizer = partAt(i)) recognizer->updateHeadPositionQ(headPosition, headRotation);
  }
  return ReturnCode_Success;
}

int GestureCombinations::updateHeadPositionM(const double headMatrix[4][4]) {
  if (headMatrix == nullptr) return ReturnCode_Success;
  const PoseArrays head(headMatrix);
  return updateHeadPositionQ(head.position, head.rotation);
}

int GestureCombinations::contdStroke(int part, const double handPosition[3]) {
  return forwardStroke(*this, part, [&](GestureRecognition& r) { return r.contdStroke(handPosition); });
}

int GestureCombinations::contdStrokeQ(int part, const double handPosition[3], const double handRotation[4]) {
  return forwardStroke(*this, part, [&](GestureRecognition& r) { return r.contdStrokeQ(handPosition, handRotation); });
}

int GestureCombinations::contdStrokeE(int part, const double handPosition[3], const double handEuler[3]) {
  return forwardStroke(*this, part, [&](GestureRecognition& r) { return r.contdStrokeE(handPosition, handEuler); });
}

int GestureCombinations::contdStrokeM(int part, const double handMatrix[4][4]) {
  return forwardStroke(*this, part, [&](GestureRecognition& r) { return r.contdStrokeM(handMatrix); });
}

int GestureCombinations::pruneStroke(int part, int maxPoints, int maxAgeMs) {
  return forwardStroke(*this, part, [&](GestureRecognition& r) { return r.pruneStroke(maxPoints, maxAgeMs); });
}

int GestureCombinations::cancelStroke(int part) {
  return forwardStroke(*this, part, [&](GestureRecognition& r) { return r.cancelStroke(); });
}

bool GestureCombinations::isStrokeStarted(int part) {
  return readPart(*this, part, false, [](GestureRecognition& r) { return r.isStrokeStarted(); });
}

int GestureCombinations::endStroke(int part, double pos[3], double* scale, double dir0[3], double dir1[3],
                                   double dir2[3]) {
  return forwardStroke(*this, part, [&](GestureRecognition& recognizer) {
    prepareResults(part);
    const size_t i = static_cast<size_t>(part);
    const int result = recognizer.endStrokeAndGetAllProbabilitiesAndSimilarities(
        partProbabilities[i].data(), partSimilarities[i].data(), &partResultCount[i], pos, scale, dir0, dir1, dir2);
    // The part's own answer is not passed up: the application asks for the combination.
    return result < 0 ? result : 0;
  });
}

int GestureCombinations::getPartProbabilitiesAndSimilarities(int part, double* probabilities, double* similarities,
                                                             int* count) {
  if (count == nullptr) return ReturnCode_InvalidParameter;
  const auto fail = [count](int code) {
    *count = 0;
    return code;
  };
  if (*count < 1) return fail(ReturnCode_InvalidParameter);
  if (!validPart(part)) return fail(ReturnCode_InvalidIndex);
  if (partAt(part) == nullptr) return fail(ReturnCode_ResourceError);
  GateUse use(partGate);
  if (!use) return fail(ReturnCode_TrainingInProgress);
  const size_t i = static_cast<size_t>(part);
  if (partResultCount[i] < 1 || partProbabilities[i].empty()) return fail(ReturnCode_NoPartResult);
  const int n = std::min(*count, partResultCount[i]);
  *count = n;
  if (probabilities != nullptr) std::copy_n(partProbabilities[i].data(), n, probabilities);
  if (similarities != nullptr) std::copy_n(partSimilarities[i].data(), n, similarities);
  return ReturnCode_Success;
}

// ---- Settings of the parts ----

int GestureCombinations::getContdIdentificationPeriod(int part) {
  return forward(*this, part, [](GestureRecognition& r) { return r.contdIdentificationPeriod; });
}

int GestureCombinations::setContdIdentificationPeriod(int part, int ms) {
  return forward(*this, part, [ms](GestureRecognition& r) {
    r.contdIdentificationPeriod = ms;
    return 0;
  });
}

int GestureCombinations::getContdIdentificationSmoothing(int part) {
  return forward(*this, part, [](GestureRecognition& r) { return r.contdIdentificationSmoothing; });
}

int GestureCombinations::setContdIdentificationSmoothing(int part, int samples) {
  return forward(*this, part, [samples](GestureRecognition& r) {
    r.contdIdentificationSmoothing = samples;
    return 0;
  });
}

int GestureCombinations::setUpdateHeadPositionPolicy(int part, int policy) {
  return forward(*this, part, [policy](GestureRecognition& r) { return r.setUpdateHeadPositionPolicy(policy); });
}

int GestureCombinations::getUpdateHeadPositionPolicy(int part) {
  return readPart(*this, part, 0, [](GestureRecognition& r) { return r.getUpdateHeadPositionPolicy(); });
}

// ---- Enhanced recognition: one mode for all parts ----

int GestureCombinations::setEnhancedRecognition(int on) {
  if (const int busy = jobGuards()) return busy;
  if (on != 0 && on != 1) return ReturnCode_InvalidParameter;
  for (int i = 0; i < partCount; ++i) {
    if (GestureRecognition* part = partAt(i)) {
      if (const int refused = part->setEnhancedRecognition(on)) return refused;
    }
  }
  return ReturnCode_Success;
}

int GestureCombinations::getEnhancedRecognition() {
  GestureRecognition* first = partAt(0);
  return first != nullptr ? first->getEnhancedRecognition() : 0;
}

// ---- Gesture stores ----

int GestureCombinations::numberOfGestures(int part) {
  return forward(*this, part, [](GestureRecognition& r) { return r.numberOfGestures(); });
}

int GestureCombinations::createGesture(int part, const char* name, Metadata* metadata) {
  return forwardGuarded(*this, part, [&](GestureRecognition& r) { return r.createGesture(name, metadata); });
}

int GestureCombinations::deleteGesture(int part, int index) {
  return forwardGuarded(*this, part, [&](GestureRecognition& r) {
    const int result = r.deleteGesture(index);
    if (result < 0) return result;
    // Entries that named the deleted gesture now ask the part to stay idle; later ones move down.
    for (int c = static_cast<int>(combinations.size()) - 1; c >= 0; --c) {
      const int g = getCombinationPartGesture(c, part);
      if (g < index) continue;
      combinations[static_cast<size_t>(c)].partGestures[static_cast<size_t>(part)] = g > index ? g - 1 : -1;
    }
    return result;
  });
}

int GestureCombinations::deleteAllGestures(int part) {
  return forwardGuarded(*this, part, [&](GestureRecognition& r) {
    const int result = r.deleteAllGestures();
    if (result < 0) return result;
    for (GestureCombination& c : combinations) {
      if (part < c.partCount) c.partGestures[static_cast<size_t>(part)] = -1;
    }
    return result;
  });
}

int GestureCombinations::deleteGestureSample(int part, int gestureIndex, int sampleIndex) {
  return forwardGuarded(*this, part, [&](GestureRecognition& r) { return r.deleteGestureSample(gestureIndex, sampleIndex); });
}

int GestureCombinations::deleteAllGestureSamples(int part, int gestureIndex) {
  return forwardGuarded(*this, part, [&](GestureRecognition& r) { return r.deleteAllGestureSamples(gestureIndex); });
}

double GestureCombinations::gestureRecognitionScore(int part) {
  if (!validPart(part)) return -2.0;
  GestureRecognition* recognizer = partAt(part);
  return recognizer == nullptr ? -14.0 : recognizer->recognitionScore(false);
}

const char* GestureCombinations::getGestureName(int part, int index) {
  return readPart(*this, part, static_cast<const char*>(nullptr), [index](GestureRecognition& r) { return r.getGestureName(index); });
}

int GestureCombinations::getGestureNameLength(int part, int index) {
  return forward(*this, part, [index](GestureRecognition& r) { return r.getGestureNameLength(index); });
}

int GestureCombinations::copyGestureName(int part, int index, char* buffer, int bufferSize) {
  return forward(*this, part, [&](GestureRecognition& r) { return r.copyGestureName(index, buffer, bufferSize); });
}

IGestureRecognition::Metadata* GestureCombinations::getGestureMetadata(int part, int index) {
  return readPart(*this, part, static_cast<Metadata*>(nullptr), [index](GestureRecognition& r) { return r.getGestureMetadata(index); });
}

bool GestureCombinations::getGestureEnabled(int part, int index) {
  return readPart(*this, part, false, [index](GestureRecognition& r) { return r.getGestureEnabled(index); });
}

int GestureCombinations::getGestureNumberOfSamples(int part, int index) {
  return forward(*this, part, [index](GestureRecognition& r) { return r.getGestureNumberOfSamples(index); });
}

int GestureCombinations::getGestureSampleType(int part, int gestureIndex, int sampleIndex) {
  return forward(*this, part, [&](GestureRecognition& r) { return r.getGestureSampleType(gestureIndex, sampleIndex); });
}

int GestureCombinations::setGestureSampleType(int part, int gestureIndex, int sampleIndex, int sampleType) {
  return forward(*this, part, [&](GestureRecognition& r) {
    return r.setGestureSampleType(gestureIndex, sampleIndex, sampleType);
  });
}

int GestureCombinations::getGestureSampleLength(int part, int gestureIndex, int sampleIndex, bool processed) {
  return forward(*this, part, [&](GestureRecognition& r) {
    return r.getGestureSampleLength(gestureIndex, sampleIndex, processed);
  });
}

int GestureCombinations::getGestureSampleStroke(int part, int gestureIndex, int sampleIndex, bool processed,
                                                int bufferSize, double (*handPositions)[3],
                                                double (*handRotations)[4], double (*headPositions)[3],
                                                double (*headRotations)[4]) {
  return readPart(*this, part, 0, [&](GestureRecognition& r) {
    return r.getGestureSampleStroke(gestureIndex, sampleIndex, processed, bufferSize, handPositions, handRotations,
                                    headPositions, headRotations);
  });
}

int GestureCombinations::getGestureMeanLength(int part, int gestureIndex) {
  return readPart(*this, part, 0, [&](GestureRecognition& r) { return r.getGestureMeanLength(gestureIndex); });
}

int GestureCombinations::getGestureMeanStroke(int part, int gestureIndex, double (*positions)[3],
                                              double (*rotations)[4], int bufferSize, double strokePosition[3],
                                              double strokeRotation[4], double* scale) {
  return readPart(*this, part, 0, [&](GestureRecognition& r) {
    return r.getGestureMeanStroke(gestureIndex, positions, rotations, bufferSize, strokePosition, strokeRotation,
                                  scale);
  });
}

int GestureCombinations::setGestureName(int part, int index, const char* name) {
  return forward(*this, part, [&](GestureRecognition& r) { return r.setGestureName(index, name); });
}

int GestureCombinations::setGestureMetadata(int part, int index, Metadata* metadata) {
  return forward(*this, part, [&](GestureRecognition& r) { return r.setGestureMetadata(index, metadata); });
}

int GestureCombinations::setGestureEnabled(int part, int index, bool enabled) {
  return forward(*this, part, [&](GestureRecognition& r) { return r.setGestureEnabled(index, enabled); });
}

// ---- Copying a gesture into another part ----

namespace {

// The mirror of a sample in the world frame, computed relative to the sample's first head pose:
// M relative to H, reflected, and put back on the reflected H. (Exactly S M S, but the steps are
// kept so that rounding does not change.)
class SampleMirror {
 public:
  SampleMirror(int axis, const double headPosition[3], const double headRotation[4]) {
    reflection_.setIdentity();
    reflection_(axis, axis) = -1.0;
    const Eigen::Matrix4d head = poseMatrix(headPosition, headRotation);
    headInverse_ = head.inverse();
    mirroredHead_ = reflection_ * head * reflection_;
  }

  void apply(double position[3], double rotation[4]) const {
    const Eigen::Matrix4d relative = headInverse_ * poseMatrix(position, rotation);
    const Eigen::Matrix4d mirrored = reflection_ * relative * reflection_;
    const Eigen::Matrix4d result = mirroredHead_ * mirrored;
    Quaternion q;
    Vector3 p;
    quaternionFromMatrix(result.data(), q, p);
    p.copyTo(position);
    q.copyTo(rotation);
  }

 private:
  static Eigen::Matrix4d poseMatrix(const double position[3], const double rotation[4]) {
    Eigen::Matrix4d m;
    matrixFromPose(Vector3(position), Quaternion(rotation), m.data());
    return m;
  }

  Eigen::Matrix4d reflection_;
  Eigen::Matrix4d headInverse_;
  Eigen::Matrix4d mirroredHead_;
};

}  // namespace

int GestureCombinations::copyGesture(int fromPart, int fromGesture, int toPart, int toGesture, int mirrorAxis) {
  if (const int busy = jobGuards()) return busy;
  if (!validPart(fromPart) || !validPart(toPart)) return ReturnCode_InvalidIndex;
  GestureRecognition* source = partAt(fromPart);
  GestureRecognition* target = partAt(toPart);
  if (source == nullptr || target == nullptr) return ReturnCode_ResourceError;
  if (fromGesture < 0 || fromGesture >= source->numberOfGestures()) return ReturnCode_InvalidIndex;
  int axis = -1;
  switch (mirrorAxis) {
    case 0: break;
    case 1: axis = 0; break;
    case 2: axis = 1; break;
    case 4: axis = 2; break;
    default: return ReturnCode_InvalidParameter;
  }
  if (toGesture < 0) {
    const std::string name = source->getGestureName(fromGesture);
    toGesture = target->createGesture(name.c_str(), nullptr);
    if (toGesture < 0) return ReturnCode_InvalidIndex;
  } else if (toGesture >= target->numberOfGestures()) {
    return ReturnCode_InvalidIndex;
  }
  const int samples = source->getGestureNumberOfSamples(fromGesture);
  if (samples <= 0) return ReturnCode_Success;

  std::vector<double> hands(0), handTurns(0), heads(0), headTurns(0);
  for (int s = 0; s < samples; ++s) {
    const int length = source->getGestureSampleLength(fromGesture, s, false);
    if (length > 0 && static_cast<size_t>(length) * 3 > hands.size()) {
      hands.resize(static_cast<size_t>(length) * 3);
      heads.resize(static_cast<size_t>(length) * 3);
      handTurns.resize(static_cast<size_t>(length) * 4);
      headTurns.resize(static_cast<size_t>(length) * 4);
    }
    auto* handP = reinterpret_cast<double(*)[3]>(hands.data());
    auto* handQ = reinterpret_cast<double(*)[4]>(handTurns.data());
    auto* headP = reinterpret_cast<double(*)[3]>(heads.data());
    auto* headQ = reinterpret_cast<double(*)[4]>(headTurns.data());
    const int fetched = source->getGestureSampleStroke(fromGesture, s, false, length, handP, handQ, headP, headQ);
    if (fetched != length) return ReturnCode_ResourceError;
    if (axis >= 0 && length > 0) {
      const SampleMirror mirror(axis, headP[0], headQ[0]);
      for (int j = 0; j < length; ++j) {
        mirror.apply(handP[j], handQ[j]);
        mirror.apply(headP[j], headQ[j]);
      }
    }
    // The target records through its normal stroke path, with all its rules.
    for (int j = 0; j < length; ++j) {
      const int head = j == 0 ? target->startStroke(headP[0], headQ[0], toGesture)
                              : target->updateHeadPositionQ(headP[j], headQ[j]);
      if (head != 0 || target->contdStrokeQ(handP[j], handQ[j]) != 0) return ReturnCode_ResourceError;
    }
    if (target->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr) != toGesture) return ReturnCode_ResourceError;
  }
  return toGesture;
}

// ---- Metadata and self test ----

int GestureCombinations::setMetadata(Metadata* newMetadata) {
  metadata = newMetadata;
  return ReturnCode_Success;
}

IGestureRecognition::Metadata* GestureCombinations::getMetadata() { return metadata; }

int GestureCombinations::selfTest() {
  for (int i = 0; i < partCount; ++i) {
    GestureRecognition* recognizer = partAt(i);
    if (recognizer == nullptr) continue;
    const int result = recognizer->selfTest();
    if (result != 0) return result;
  }
  return ReturnCode_Success;
}

}  // namespace zando
