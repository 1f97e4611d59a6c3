// The flat face of the combination object: each function casts the handle and forwards to the
// operation of the same name, behind the same exception barrier as the recogniser's.
#include "api/flat_forwarding.h"
#include "zando/zando.h"

namespace {

using Metadata = IGestureRecognition::Metadata;
using Combinations = IGestureCombinations;

template <typename F>
int code(void* handle, F&& operation) {
  return zando::forwardCode<Combinations>(handle, operation);
}

template <typename R, typename F>
R value(void* handle, R fallback, F&& operation) {
  return zando::forwardValue<Combinations>(handle, fallback, operation);
}

template <typename F>
void apply(void* handle, F&& operation) {
  zando::forwardApply<Combinations>(handle, operation);
}

Metadata* asMetadata(void* handle) { return static_cast<Metadata*>(handle); }

}  // namespace

extern "C" {

// ---- Objects, version and parts ----

void* GestureCombinations_create(int number_of_parts) {
  try {
    return IGestureCombinations::create(number_of_parts);
  } catch (...) {
    return nullptr;
  }
}
void GestureCombinations_delete(void* gco) {
  apply(gco, [](Combinations* c) { delete c; });
}
const char* GestureCombinations_getVersionString(void) { return IGestureCombinations::getVersionString(); }
int GestureCombinations_getVersionStringLength(void) { return IGestureCombinations::getVersionStringLength(); }
int GestureCombinations_copyVersionString(char* dst, int dst_size) {
  return IGestureCombinations::copyVersionString(dst, dst_size);
}
int GestureCombinations_numberOfParts(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->numberOfParts(); });
}
int GestureCombinations_getPartEnabled(void* gco, int part) {
  return value(gco, 0, [&](Combinations* c) { return c->getPartEnabled(part) ? 1 : 0; });
}
int GestureCombinations_setPartEnabled(void* gco, int part, int enabled) {
  return code(gco, [&](Combinations* c) { return c->setPartEnabled(part, enabled != 0); });
}

// ---- Strokes ----

int GestureCombinations_startStroke(void* gco, int part, const double hmd_p[3], const double hmd_q[4],
                                    int record_as_sample) {
  return code(gco, [&](Combinations* c) { return c->startStroke(part, hmd_p, hmd_q, record_as_sample); });
}
int GestureCombinations_startStrokeM(void* gco, int part, const double hmd[4][4], int record_as_sample) {
  return code(gco, [&](Combinations* c) { return c->startStrokeM(part, hmd, record_as_sample); });
}
int GestureCombinations_updateHeadPositionM(void* gco, const double hmd[4][4]) {
  return code(gco, [&](Combinations* c) { return c->updateHeadPositionM(hmd); });
}
int GestureCombinations_updateHeadPositionQ(void* gco, const double hmd_p[3], const double hmd_q[4]) {
  return code(gco, [&](Combinations* c) { return c->updateHeadPositionQ(hmd_p, hmd_q); });
}
int GestureCombinations_contdStroke(void* gco, int part, const double p[3]) {
  return code(gco, [&](Combinations* c) { return c->contdStroke(part, p); });
}
int GestureCombinations_contdStrokeQ(void* gco, int part, const double p[3], const double q[4]) {
  return code(gco, [&](Combinations* c) { return c->contdStrokeQ(part, p, q); });
}
int GestureCombinations_contdStrokeE(void* gco, int part, const double p[3], const double r[3]) {
  return code(gco, [&](Combinations* c) { return c->contdStrokeE(part, p, r); });
}
int GestureCombinations_contdStrokeM(void* gco, int part, const double m[4][4]) {
  return code(gco, [&](Combinations* c) { return c->contdStrokeM(part, m); });
}
int GestureCombinations_endStroke(void* gco, int part, double pos[3], double* scale, double dir0[3], double dir1[3],
                                  double dir2[3]) {
  return code(gco, [&](Combinations* c) { return c->endStroke(part, pos, scale, dir0, dir1, dir2); });
}
int GestureCombinations_getPartProbabilitiesAndSimilarities(void* gco, int part, double* p, double* s, int* n) {
  return code(gco, [&](Combinations* c) { return c->getPartProbabilitiesAndSimilarities(part, p, s, n); });
}
int GestureCombinations_isStrokeStarted(void* gco, int part) {
  return value(gco, 0, [&](Combinations* c) { return c->isStrokeStarted(part) ? 1 : 0; });
}
int GestureCombinations_pruneStroke(void* gco, int part, int max_points, int max_age_ms) {
  return code(gco, [&](Combinations* c) { return c->pruneStroke(part, max_points, max_age_ms); });
}
int GestureCombinations_cancelStroke(void* gco, int part) {
  return code(gco, [&](Combinations* c) { return c->cancelStroke(part); });
}

// ---- Combinations identified ----

int GestureCombinations_identifyGestureCombination(void* gco, double* probability, double* similarity,
                                                   double* part_probabilities, double* part_similarities) {
  return code(gco, [&](Combinations* c) {
    return c->identifyGestureCombination(probability, similarity, part_probabilities, part_similarities);
  });
}
int GestureCombinations_contdIdentify(void* gco, const double hmd_p[3], const double hmd_q[4], double* similarity,
                                      double* part_probabilities, double* part_similarities) {
  return code(gco, [&](Combinations* c) {
    return c->contdIdentify(hmd_p, hmd_q, similarity, part_probabilities, part_similarities);
  });
}
int GestureCombinations_contdIdentifyM(void* gco, const double hmd[4][4], double* similarity,
                                       double* part_probabilities, double* part_similarities) {
  return code(gco, [&](Combinations* c) {
    return c->contdIdentifyM(hmd, similarity, part_probabilities, part_similarities);
  });
}
int GestureCombinations_contdIdentifyGetLastStrokeInfo(void* gco, int part, double pos[3], double* scale,
                                                       double dir0[3], double dir1[3], double dir2[3]) {
  return code(gco, [&](Combinations* c) {
    return c->contdIdentifyGetLastStrokeInfo(part, pos, scale, dir0, dir1, dir2);
  });
}
int GestureCombinations_contdRecord(void* gco, const double hmd_p[3], const double hmd_q[4]) {
  return code(gco, [&](Combinations* c) { return c->contdRecord(hmd_p, hmd_q); });
}
int GestureCombinations_contdRecordM(void* gco, const double hmd[4][4]) {
  return code(gco, [&](Combinations* c) { return c->contdRecordM(hmd); });
}
int GestureCombinations_contdRecordPart(void* gco, int part, const double hmd_p[3], const double hmd_q[4]) {
  return code(gco, [&](Combinations* c) { return c->contdRecordPart(part, hmd_p, hmd_q); });
}
int GestureCombinations_contdRecordPartM(void* gco, int part, const double hmd[4][4]) {
  return code(gco, [&](Combinations* c) { return c->contdRecordPartM(part, hmd); });
}
int GestureCombinations_getContdIdentificationPeriod(void* gco, int part) {
  return code(gco, [&](Combinations* c) { return c->getContdIdentificationPeriod(part); });
}
int GestureCombinations_setContdIdentificationPeriod(void* gco, int part, int ms) {
  return code(gco, [&](Combinations* c) { return c->setContdIdentificationPeriod(part, ms); });
}
int GestureCombinations_getContdIdentificationSmoothing(void* gco, int part) {
  return code(gco, [&](Combinations* c) { return c->getContdIdentificationSmoothing(part); });
}
int GestureCombinations_setContdIdentificationSmoothing(void* gco, int part, int samples) {
  return code(gco, [&](Combinations* c) { return c->setContdIdentificationSmoothing(part, samples); });
}

// ---- Gesture stores of the parts ----

int GestureCombinations_numberOfGestures(void* gco, int part) {
  return code(gco, [&](Combinations* c) { return c->numberOfGestures(part); });
}
int GestureCombinations_deleteGesture(void* gco, int part, int index) {
  return code(gco, [&](Combinations* c) { return c->deleteGesture(part, index); });
}
int GestureCombinations_deleteAllGestures(void* gco, int part) {
  return code(gco, [&](Combinations* c) { return c->deleteAllGestures(part); });
}
int GestureCombinations_createGesture(void* gco, int part, const char* name, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->createGesture(part, name, asMetadata(metadata)); });
}
int GestureCombinations_copyGesture(void* gco, int from_part, int from_gesture, int to_part, int to_gesture,
                                    int mirror_axis) {
  return code(gco, [&](Combinations* c) {
    return c->copyGesture(from_part, from_gesture, to_part, to_gesture, mirror_axis);
  });
}
double GestureCombinations_gestureRecognitionScore(void* gco, int part) {
  return value(gco, -14.0, [&](Combinations* c) { return c->gestureRecognitionScore(part); });
}
const char* GestureCombinations_getGestureName(void* gco, int part, int index) {
  return value(gco, static_cast<const char*>(nullptr), [&](Combinations* c) { return c->getGestureName(part, index); });
}
int GestureCombinations_getGestureNameLength(void* gco, int part, int index) {
  return code(gco, [&](Combinations* c) { return c->getGestureNameLength(part, index); });
}
int GestureCombinations_copyGestureName(void* gco, int part, int index, char* buf, int buflen) {
  return value(gco, 0, [&](Combinations* c) { return c->copyGestureName(part, index, buf, buflen); });
}
void* GestureCombinations_getGestureMetadata(void* gco, int part, int index) {
  return value(gco, static_cast<void*>(nullptr),
               [&](Combinations* c) { return static_cast<void*>(c->getGestureMetadata(part, index)); });
}
int GestureCombinations_getGestureEnabled(void* gco, int part, int index) {
  return value(gco, 0, [&](Combinations* c) { return c->getGestureEnabled(part, index) ? 1 : 0; });
}
int GestureCombinations_getGestureNumberOfSamples(void* gco, int part, int index) {
  return code(gco, [&](Combinations* c) { return c->getGestureNumberOfSamples(part, index); });
}
int GestureCombinations_getGestureSampleType(void* gco, int part, int gesture_index, int sample_index) {
  return code(gco, [&](Combinations* c) { return c->getGestureSampleType(part, gesture_index, sample_index); });
}
int GestureCombinations_setGestureSampleType(void* gco, int part, int gesture_index, int sample_index,
                                             int sample_type) {
  return code(gco, [&](Combinations* c) {
    return c->setGestureSampleType(part, gesture_index, sample_index, sample_type);
  });
}
int GestureCombinations_getGestureSampleLength(void* gco, int part, int gesture_index, int sample_index,
                                               int processed) {
  return code(gco, [&](Combinations* c) {
    return c->getGestureSampleLength(part, gesture_index, sample_index, processed != 0);
  });
}
int GestureCombinations_getGestureSampleStroke(void* gco, int part, int gesture_index, int sample_index,
                                               int processed, int stroke_buf_size, double (*hands_p)[3],
                                               double (*hands_q)[4], double (*hmd_p)[3], double (*hmd_q)[4]) {
  return value(gco, 0, [&](Combinations* c) {
    return c->getGestureSampleStroke(part, gesture_index, sample_index, processed != 0, stroke_buf_size, hands_p,
                                     hands_q, hmd_p, hmd_q);
  });
}
int GestureCombinations_getGestureMeanLength(void* gco, int part, int gesture_index) {
  return value(gco, 0, [&](Combinations* c) { return c->getGestureMeanLength(part, gesture_index); });
}
int GestureCombinations_getGestureMeanStroke(void* gco, int part, int gesture_index, double (*p)[3],
                                             double (*q)[4], int stroke_buf_size, double stroke_p[3],
                                             double stroke_q[4], double* stroke_scale) {
  return value(gco, 0, [&](Combinations* c) {
    return c->getGestureMeanStroke(part, gesture_index, p, q, stroke_buf_size, stroke_p, stroke_q, stroke_scale);
  });
}
int GestureCombinations_deleteGestureSample(void* gco, int part, int gesture_index, int sample_index) {
  return code(gco, [&](Combinations* c) { return c->deleteGestureSample(part, gesture_index, sample_index); });
}
int GestureCombinations_deleteAllGestureSamples(void* gco, int part, int gesture_index) {
  return code(gco, [&](Combinations* c) { return c->deleteAllGestureSamples(part, gesture_index); });
}
int GestureCombinations_setGestureName(void* gco, int part, int index, const char* name) {
  return code(gco, [&](Combinations* c) { return c->setGestureName(part, index, name); });
}
int GestureCombinations_setGestureMetadata(void* gco, int part, int index, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->setGestureMetadata(part, index, asMetadata(metadata)); });
}
int GestureCombinations_setGestureEnabled(void* gco, int part, int index, int enabled) {
  return code(gco, [&](Combinations* c) { return c->setGestureEnabled(part, index, enabled != 0); });
}

// ---- Persistence ----

int GestureCombinations_saveToFile(void* gco, const char* path) {
  return code(gco, [&](Combinations* c) { return c->saveToFile(path); });
}
int GestureCombinations_loadFromFile(void* gco, const char* path,
                                     GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->loadFromFile(path, createMetadata); });
}
int GestureCombinations_loadFromBuffer(void* gco, const char* buffer, int size,
                                       GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->loadFromBuffer(buffer, size, createMetadata); });
}
int GestureCombinations_loadFromStream(void* gco, std::istream* stream,
                                       GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->loadFromStream(stream, createMetadata); });
}
int GestureCombinations_importFromFile(void* gco, const char* path,
                                       GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->importFromFile(path, createMetadata); });
}
int GestureCombinations_importFromBuffer(void* gco, const char* buffer, int size,
                                         GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->importFromBuffer(buffer, size, createMetadata); });
}
int GestureCombinations_importFromStream(void* gco, std::istream* stream,
                                         GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->importFromStream(stream, createMetadata); });
}
int GestureCombinations_saveGestureToFile(void* gco, int part, const char* path) {
  return code(gco, [&](Combinations* c) { return c->saveGestureToFile(part, path); });
}
int GestureCombinations_loadGestureFromFile(void* gco, int part, const char* path,
                                            GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->loadGestureFromFile(part, path, createMetadata); });
}
int GestureCombinations_loadGestureFromBuffer(void* gco, int part, const char* buffer, int size,
                                              GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->loadGestureFromBuffer(part, buffer, size, createMetadata); });
}
int GestureCombinations_saveToFileAsync(void* gco, const char* path) {
  return code(gco, [&](Combinations* c) { return c->saveToFileAsync(path); });
}
int GestureCombinations_setSavingUpdateCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback) {
  return code(gco, [&](Combinations* c) { return c->setSavingUpdateCallbackFunction(callback); });
}
int GestureCombinations_setSavingUpdateCallbackMetadata(void* gco, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->setSavingUpdateCallbackMetadata(metadata); });
}
int GestureCombinations_setSavingFinishCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback) {
  return code(gco, [&](Combinations* c) { return c->setSavingFinishCallbackFunction(callback); });
}
int GestureCombinations_setSavingFinishCallbackMetadata(void* gco, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->setSavingFinishCallbackMetadata(metadata); });
}
int GestureCombinations_isSaving(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->isSaving() ? 1 : 0; });
}
int GestureCombinations_cancelSaving(void* gco) {
  return code(gco, [](Combinations* c) { return c->cancelSaving(); });
}
int GestureCombinations_loadFromFileAsync(void* gco, const char* path,
                                          GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->loadFromFileAsync(path, createMetadata); });
}
int GestureCombinations_loadFromBufferAsync(void* gco, const char* buffer, int size,
                                            GestureRecognition_MetadataCreatorFunction createMetadata) {
  return code(gco, [&](Combinations* c) { return c->loadFromBufferAsync(buffer, size, createMetadata); });
}
int GestureCombinations_setLoadingUpdateCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback) {
  return code(gco, [&](Combinations* c) { return c->setLoadingUpdateCallbackFunction(callback); });
}
int GestureCombinations_setLoadingUpdateCallbackMetadata(void* gco, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->setLoadingUpdateCallbackMetadata(metadata); });
}
int GestureCombinations_setLoadingFinishCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback) {
  return code(gco, [&](Combinations* c) { return c->setLoadingFinishCallbackFunction(callback); });
}
int GestureCombinations_setLoadingFinishCallbackMetadata(void* gco, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->setLoadingFinishCallbackMetadata(metadata); });
}
int GestureCombinations_isLoading(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->isLoading() ? 1 : 0; });
}
int GestureCombinations_cancelLoading(void* gco) {
  return code(gco, [](Combinations* c) { return c->cancelLoading(); });
}

// ---- Combination records ----

int GestureCombinations_numberOfGestureCombinations(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->numberOfGestureCombinations(); });
}
int GestureCombinations_deleteGestureCombination(void* gco, int combination) {
  return code(gco, [&](Combinations* c) { return c->deleteGestureCombination(combination); });
}
int GestureCombinations_deleteAllGestureCombinations(void* gco) {
  return code(gco, [](Combinations* c) { return c->deleteAllGestureCombinations(); });
}
int GestureCombinations_createGestureCombination(void* gco, const char* name) {
  return code(gco, [&](Combinations* c) { return c->createGestureCombination(name); });
}
int GestureCombinations_setCombinationPartGesture(void* gco, int combination, int part, int gesture) {
  return code(gco, [&](Combinations* c) { return c->setCombinationPartGesture(combination, part, gesture); });
}
int GestureCombinations_getCombinationPartGesture(void* gco, int combination, int part) {
  return code(gco, [&](Combinations* c) { return c->getCombinationPartGesture(combination, part); });
}
const char* GestureCombinations_getGestureCombinationName(void* gco, int combination) {
  return value(gco, static_cast<const char*>(nullptr),
               [&](Combinations* c) { return c->getGestureCombinationName(combination); });
}
int GestureCombinations_getGestureCombinationNameLength(void* gco, int combination) {
  return code(gco, [&](Combinations* c) { return c->getGestureCombinationNameLength(combination); });
}
int GestureCombinations_copyGestureCombinationName(void* gco, int combination, char* buf, int buflen) {
  return value(gco, 0, [&](Combinations* c) { return c->copyGestureCombinationName(combination, buf, buflen); });
}
int GestureCombinations_setGestureCombinationName(void* gco, int combination, const char* name) {
  return code(gco, [&](Combinations* c) { return c->setGestureCombinationName(combination, name); });
}
void* GestureCombinations_getGestureCombinationMetadata(void* gco, int combination) {
  return value(gco, static_cast<void*>(nullptr),
               [&](Combinations* c) { return static_cast<void*>(c->getGestureCombinationMetadata(combination)); });
}
int GestureCombinations_setGestureCombinationMetadata(void* gco, int combination, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->setGestureCombinationMetadata(combination, asMetadata(metadata)); });
}

// ---- Training ----

int GestureCombinations_getTrainingParameter(void* gco, int id) {
  return code(gco, [&](Combinations* c) { return c->getTrainingParameter(id); });
}
int GestureCombinations_setTrainingParameter(void* gco, int id, int value) {
  return code(gco, [&](Combinations* c) { return c->setTrainingParameter(id, value); });
}
int GestureCombinations_startTraining(void* gco) {
  return code(gco, [](Combinations* c) { return c->startTraining(); });
}
int GestureCombinations_isTraining(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->isTraining() ? 1 : 0; });
}
int GestureCombinations_stopTraining(void* gco) {
  return code(gco, [](Combinations* c) { return c->stopTraining(); });
}
double GestureCombinations_recognitionScore(void* gco) {
  return value(gco, 0.0, [](Combinations* c) { return c->recognitionScore(); });
}
int GestureCombinations_getMaxTrainingTime(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->getMaxTrainingTime(); });
}
void GestureCombinations_setMaxTrainingTime(void* gco, int t) {
  apply(gco, [&](Combinations* c) { c->setMaxTrainingTime(t); });
}
// Hosts of the flat face read the training time here too; the thread limit has no flat reader.
int GestureCombinations_getMaxTrainingThreads(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->getMaxTrainingTime(); });
}
void GestureCombinations_setMaxTrainingThreads(void* gco, int n) {
  apply(gco, [&](Combinations* c) { c->setMaxTrainingThreads(n); });
}
void GestureCombinations_setTrainingUpdateCallback(void* gco, GestureRecognition_TrainingCallbackFunction cbf) {
  apply(gco, [&](Combinations* c) { c->trainingUpdateCallback = cbf; });
}
void GestureCombinations_setTrainingFinishCallback(void* gco, GestureRecognition_TrainingCallbackFunction cbf) {
  apply(gco, [&](Combinations* c) { c->trainingFinishCallback = cbf; });
}
void GestureCombinations_setTrainingUpdateCallbackMetadata(void* gco, void* metadata) {
  apply(gco, [&](Combinations* c) { c->trainingUpdateCallbackMetadata = metadata; });
}
void GestureCombinations_setTrainingFinishCallbackMetadata(void* gco, void* metadata) {
  apply(gco, [&](Combinations* c) { c->trainingFinishCallbackMetadata = metadata; });
}

// ---- Settings and metadata ----

int GestureCombinations_setUpdateHeadPositionPolicy(void* gco, int part, int policy) {
  return code(gco, [&](Combinations* c) { return c->setUpdateHeadPositionPolicy(part, policy); });
}
int GestureCombinations_getUpdateHeadPositionPolicy(void* gco, int part) {
  return value(gco, 0, [&](Combinations* c) { return c->getUpdateHeadPositionPolicy(part); });
}
int GestureCombinations_getIgnoreHeadRotationX(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->rotationalFrameOfReferenceX == 1 ? 1 : 0; });
}
void GestureCombinations_setIgnoreHeadRotationX(void* gco, int on_off) {
  apply(gco, [&](Combinations* c) { c->rotationalFrameOfReferenceX = on_off != 0 ? 1 : 0; });
}
int GestureCombinations_getIgnoreHeadRotationY(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->rotationalFrameOfReferenceY == 1 ? 1 : 0; });
}
void GestureCombinations_setIgnoreHeadRotationY(void* gco, int on_off) {
  apply(gco, [&](Combinations* c) { c->rotationalFrameOfReferenceY = on_off != 0 ? 1 : 0; });
}
int GestureCombinations_getIgnoreHeadRotationZ(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->rotationalFrameOfReferenceZ == 1 ? 1 : 0; });
}
void GestureCombinations_setIgnoreHeadRotationZ(void* gco, int on_off) {
  apply(gco, [&](Combinations* c) { c->rotationalFrameOfReferenceZ = on_off != 0 ? 1 : 0; });
}
int GestureCombinations_getRotationalFrameOfReferenceX(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->rotationalFrameOfReferenceX; });
}
void GestureCombinations_setRotationalFrameOfReferenceX(void* gco, int i) {
  apply(gco, [&](Combinations* c) { c->rotationalFrameOfReferenceX = i; });
}
int GestureCombinations_getRotationalFrameOfReferenceY(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->rotationalFrameOfReferenceY; });
}
void GestureCombinations_setRotationalFrameOfReferenceY(void* gco, int i) {
  apply(gco, [&](Combinations* c) { c->rotationalFrameOfReferenceY = i; });
}
int GestureCombinations_getRotationalFrameOfReferenceZ(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->rotationalFrameOfReferenceZ; });
}
void GestureCombinations_setRotationalFrameOfReferenceZ(void* gco, int i) {
  apply(gco, [&](Combinations* c) { c->rotationalFrameOfReferenceZ = i; });
}
int GestureCombinations_getRotationalFrameOfReferenceRotationOrder(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->rotationalFrameOfReferenceRotationOrder; });
}
void GestureCombinations_setRotationalFrameOfReferenceRotationOrder(void* gco, int i) {
  apply(gco, [&](Combinations* c) { c->rotationalFrameOfReferenceRotationOrder = i; });
}
int GestureCombinations_setMetadata(void* gco, void* metadata) {
  return code(gco, [&](Combinations* c) { return c->setMetadata(asMetadata(metadata)); });
}
void* GestureCombinations_getMetadata(void* gco) {
  return value(gco, static_cast<void*>(nullptr), [](Combinations* c) { return static_cast<void*>(c->getMetadata()); });
}

int GestureCombinations_setEnhancedRecognition(void* gco, int on) {
  return code(gco, [&](Combinations* c) { return c->setEnhancedRecognition(on); });
}
int GestureCombinations_getEnhancedRecognition(void* gco) {
  return value(gco, 0, [](Combinations* c) { return c->getEnhancedRecognition(); });
}

// ---- Continuous detection ----

int GestureCombinations_setHostTime(void* gco, double seconds) {
  return code(gco, [&](Combinations* c) { return c->setHostTime(seconds); });
}
int GestureCombinations_contdDetect(void* gco, const double hmd_p[3], const double hmd_q[4], int* combination,
                                    double* confidence) {
  return code(gco, [&](Combinations* c) { return c->contdDetect(hmd_p, hmd_q, combination, confidence); });
}
int GestureCombinations_contdDetectM(void* gco, const double hmd[4][4], int* combination, double* confidence) {
  return code(gco, [&](Combinations* c) { return c->contdDetectM(hmd, combination, confidence); });
}
int GestureCombinations_setDetectionSensitivity(void* gco, double sensitivity) {
  return code(gco, [&](Combinations* c) { return c->setDetectionSensitivity(sensitivity); });
}
double GestureCombinations_getDetectionSensitivity(void* gco) {
  return value(gco, -1.0, [](Combinations* c) { return c->getDetectionSensitivity(); });
}

}  // extern "C"
