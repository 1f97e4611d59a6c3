// The flat face. Each function casts the handle and forwards to the operation of the same name;
// the only additions are the conversions of bool to int and back, and a barrier that keeps C++
// exceptions from crossing into a host: an int result becomes -14, a pointer null, a count 0.
#include <new>

#include "api/flat_forwarding.h"
#include "zando/zando.h"

namespace {

using Metadata = IGestureRecognition::Metadata;
using DefaultMetadata = IGestureRecognition::DefaultMetadata;

IGestureRecognition* self(void* handle) { return static_cast<IGestureRecognition*>(handle); }

template <typename F>
int code(void* handle, F&& operation) {
  return zando::forwardCode<IGestureRecognition>(handle, operation);
}

template <typename R, typename F>
R value(void* handle, R fallback, F&& operation) {
  return zando::forwardValue<IGestureRecognition>(handle, fallback, operation);
}

template <typename F>
void apply(void* handle, F&& operation) {
  zando::forwardApply<IGestureRecognition>(handle, operation);
}

Metadata* asMetadata(void* handle) { return static_cast<Metadata*>(handle); }
DefaultMetadata* asDefault(void* handle) { return static_cast<DefaultMetadata*>(handle); }
const IGestureRecognition* asRecognizer(const void* handle) { return static_cast<const IGestureRecognition*>(handle); }

}  // namespace

extern "C" {

// ---- Objects and version ----

void* GestureRecognition_create(void) {
  try {
    return IGestureRecognition::create();
  } catch (...) {
    return nullptr;
  }
}

void GestureRecognition_delete(void* gro) {
  if (gro == nullptr) return;
  try {
    delete self(gro);
  } catch (...) {
  }
}

const char* GestureRecognition_getVersionString(void) { return IGestureRecognition::getVersionString(); }
int GestureRecognition_getVersionStringLength(void) { return IGestureRecognition::getVersionStringLength(); }
int GestureRecognition_copyVersionString(char* dst, int dst_size) {
  return IGestureRecognition::copyVersionString(dst, dst_size);
}
void GestureRecognition_setDebugCallbackFunction(GestureRecognition_DebugCallbackFunction callback) {
  IGestureRecognition::setDebugCallbackFunction(callback);
}
void GestureRecognition_setDebugCallbackMetadata(void* metadata) {
  IGestureRecognition::setDebugCallbackMetadata(metadata);
}

// ---- Stroke capture ----

int GestureRecognition_startStroke(void* gro, const double hmd_p[3], const double hmd_q[4], int record_as_sample) {
  return code(gro, [&](IGestureRecognition* r) { return r->startStroke(hmd_p, hmd_q, record_as_sample); });
}
int GestureRecognition_startStrokeM(void* gro, const double hmd[4][4], int record_as_sample) {
  return code(gro, [&](IGestureRecognition* r) { return r->startStrokeM(hmd, record_as_sample); });
}
int GestureRecognition_setUpdateHeadPositionPolicy(void* gro, int policy) {
  return code(gro, [&](IGestureRecognition* r) { return r->setUpdateHeadPositionPolicy(policy); });
}
int GestureRecognition_getUpdateHeadPositionPolicy(void* gro) {
  return code(gro, [&](IGestureRecognition* r) { return r->getUpdateHeadPositionPolicy(); });
}
int GestureRecognition_updateHeadPositionM(void* gro, const double hmd[4][4]) {
  return code(gro, [&](IGestureRecognition* r) { return r->updateHeadPositionM(hmd); });
}
int GestureRecognition_updateHeadPositionQ(void* gro, const double hmd_p[3], const double hmd_q[4]) {
  return code(gro, [&](IGestureRecognition* r) { return r->updateHeadPositionQ(hmd_p, hmd_q); });
}
int GestureRecognition_contdStroke(void* gro, const double p[3]) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdStroke(p); });
}
int GestureRecognition_contdStrokeQ(void* gro, const double p[3], const double q[4]) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdStrokeQ(p, q); });
}
int GestureRecognition_contdStrokeE(void* gro, const double p[3], const double e[3]) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdStrokeE(p, e); });
}
int GestureRecognition_contdStrokeM(void* gro, const double m[4][4]) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdStrokeM(m); });
}
int GestureRecognition_endStroke(void* gro, double pos[3], double* scale, double dir0[3], double dir1[3],
                                 double dir2[3]) {
  return code(gro, [&](IGestureRecognition* r) { return r->endStroke(pos, scale, dir0, dir1, dir2); });
}
int GestureRecognition_endStrokeAndGetAllProbabilities(void* gro, double* p, int* n, double pos[3], double* scale,
                                                       double dir0[3], double dir1[3], double dir2[3]) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->endStrokeAndGetAllProbabilities(p, n, pos, scale, dir0, dir1, dir2);
  });
}
int GestureRecognition_endStrokeAndGetSimilarity(void* gro, double* similarity, double pos[3], double* scale,
                                                 double dir0[3], double dir1[3], double dir2[3]) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->endStrokeAndGetSimilarity(similarity, pos, scale, dir0, dir1, dir2);
  });
}
int GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(void* gro, double* p, double* s, int* n,
                                                                      double pos[3], double* scale, double dir0[3],
                                                                      double dir1[3], double dir2[3]) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->endStrokeAndGetAllProbabilitiesAndSimilarities(p, s, n, pos, scale, dir0, dir1, dir2);
  });
}
int GestureRecognition_isStrokeStarted(void* gro) {
  return value(gro, 0, [&](IGestureRecognition* r) { return r->isStrokeStarted() ? 1 : 0; });
}
int GestureRecognition_pruneStroke(void* gro, int max_points, int max_age_ms) {
  return code(gro, [&](IGestureRecognition* r) { return r->pruneStroke(max_points, max_age_ms); });
}
int GestureRecognition_cancelStroke(void* gro) {
  return code(gro, [&](IGestureRecognition* r) { return r->cancelStroke(); });
}

// ---- Continuous identification ----

int GestureRecognition_contdIdentify(void* gro, const double hmd_p[3], const double hmd_q[4], double* similarity) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdIdentify(hmd_p, hmd_q, similarity); });
}
int GestureRecognition_contdIdentifyM(void* gro, const double hmd[4][4], double* similarity) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdIdentifyM(hmd, similarity); });
}
int GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(void* gro, const double hmd_p[3],
                                                                          const double hmd_q[4], double* p,
                                                                          double* s, int* n) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->contdIdentifyAndGetAllProbabilitiesAndSimilarities(hmd_p, hmd_q, p, s, n);
  });
}
int GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(void* gro, const double hmd[4][4],
                                                                           double* p, double* s, int* n) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(hmd, p, s, n);
  });
}
int GestureRecognition_contdIdentifyAndGetStroke(void* gro, const double hmd_p[3], const double hmd_q[4],
                                                 double* similarity, double pos[3], double* scale, double dir0[3],
                                                 double dir1[3], double dir2[3]) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->contdIdentifyAndGetStroke(hmd_p, hmd_q, similarity, pos, scale, dir0, dir1, dir2);
  });
}
int GestureRecognition_contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
    void* gro, const double hmd_p[3], const double hmd_q[4], double* p, double* s, int* n, double pos[3],
    double* scale, double dir0[3], double dir1[3], double dir2[3]) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(hmd_p, hmd_q, p, s, n, pos, scale,
                                                                             dir0, dir1, dir2);
  });
}
int GestureRecognition_contdRecord(void* gro, const double hmd_p[3], const double hmd_q[4]) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdRecord(hmd_p, hmd_q); });
}
int GestureRecognition_contdRecordM(void* gro, const double hmd[4][4]) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdRecordM(hmd); });
}
int GestureRecognition_getContdIdentificationPeriod(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->contdIdentificationPeriod; });
}
int GestureRecognition_setContdIdentificationPeriod(void* gro, int ms) {
  return code(gro, [&](IGestureRecognition* r) {
    r->contdIdentificationPeriod = ms;
    return 0;
  });
}
int GestureRecognition_getContdIdentificationSmoothing(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->contdIdentificationSmoothing; });
}
int GestureRecognition_setContdIdentificationSmoothing(void* gro, int samples) {
  return code(gro, [&](IGestureRecognition* r) {
    r->contdIdentificationSmoothing = samples;
    return 0;
  });
}

// ---- Gesture store ----

int GestureRecognition_numberOfGestures(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->numberOfGestures(); });
}
int GestureRecognition_deleteGesture(void* gro, int index) {
  return code(gro, [&](IGestureRecognition* r) { return r->deleteGesture(index); });
}
int GestureRecognition_deleteAllGestures(void* gro) {
  return code(gro, [&](IGestureRecognition* r) { return r->deleteAllGestures(); });
}
int GestureRecognition_createGesture(void* gro, const char* name, void* metadata) {
  return code(gro, [&](IGestureRecognition* r) { return r->createGesture(name, asMetadata(metadata)); });
}
double GestureRecognition_recognitionScore(void* gro) {
  return value(gro, 0.0, [](IGestureRecognition* r) { return r->recognitionScore(false); });
}
const char* GestureRecognition_getGestureName(void* gro, int index) {
  return value(gro, static_cast<const char*>(nullptr),
               [&](IGestureRecognition* r) { return r->getGestureName(index); });
}
int GestureRecognition_getGestureNameLength(void* gro, int index) {
  return code(gro, [&](IGestureRecognition* r) { return r->getGestureNameLength(index); });
}
int GestureRecognition_copyGestureName(void* gro, int index, char* buf, int buflen) {
  return value(gro, 0, [&](IGestureRecognition* r) { return r->copyGestureName(index, buf, buflen); });
}
void* GestureRecognition_getGestureMetadata(void* gro, int index) {
  return value(gro, static_cast<void*>(nullptr),
               [&](IGestureRecognition* r) { return static_cast<void*>(r->getGestureMetadata(index)); });
}
int GestureRecognition_getGestureEnabled(void* gro, int index) {
  return value(gro, 0, [&](IGestureRecognition* r) { return r->getGestureEnabled(index) ? 1 : 0; });
}
int GestureRecognition_getGestureNumberOfSamples(void* gro, int index) {
  return value(gro, 0, [&](IGestureRecognition* r) { return r->getGestureNumberOfSamples(index); });
}
int GestureRecognition_getGestureSampleType(void* gro, int gesture_index, int sample_index) {
  return code(gro, [&](IGestureRecognition* r) { return r->getGestureSampleType(gesture_index, sample_index); });
}
int GestureRecognition_setGestureSampleType(void* gro, int gesture_index, int sample_index, int sample_type) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->setGestureSampleType(gesture_index, sample_index, sample_type);
  });
}
int GestureRecognition_getGestureSampleLength(void* gro, int gesture_index, int sample_index, int processed) {
  return value(gro, 0, [&](IGestureRecognition* r) {
    return r->getGestureSampleLength(gesture_index, sample_index, processed != 0);
  });
}
int GestureRecognition_getGestureSampleStroke(void* gro, int gesture_index, int sample_index, int processed,
                                              int stroke_buf_size, double (*hands_p)[3], double (*hands_q)[4],
                                              double (*hmd_p)[3], double (*hmd_q)[4]) {
  return value(gro, 0, [&](IGestureRecognition* r) {
    return r->getGestureSampleStroke(gesture_index, sample_index, processed != 0, stroke_buf_size, hands_p, hands_q,
                                     hmd_p, hmd_q);
  });
}
int GestureRecognition_getGestureMeanLength(void* gro, int gesture_index) {
  return value(gro, 0, [&](IGestureRecognition* r) { return r->getGestureMeanLength(gesture_index); });
}
int GestureRecognition_getGestureMeanStroke(void* gro, int gesture_index, double (*p)[3], double (*q)[4],
                                            int stroke_buf_size, double stroke_p[3], double stroke_q[4],
                                            double* stroke_scale) {
  return value(gro, 0, [&](IGestureRecognition* r) {
    return r->getGestureMeanStroke(gesture_index, p, q, stroke_buf_size, stroke_p, stroke_q, stroke_scale);
  });
}
int GestureRecognition_deleteGestureSample(void* gro, int gesture_index, int sample_index) {
  return code(gro, [&](IGestureRecognition* r) { return r->deleteGestureSample(gesture_index, sample_index); });
}
int GestureRecognition_deleteAllGestureSamples(void* gro, int gesture_index) {
  return code(gro, [&](IGestureRecognition* r) { return r->deleteAllGestureSamples(gesture_index); });
}
int GestureRecognition_setGestureName(void* gro, int index, const char* name) {
  return code(gro, [&](IGestureRecognition* r) { return r->setGestureName(index, name); });
}
int GestureRecognition_setGestureMetadata(void* gro, int index, void* metadata) {
  return code(gro, [&](IGestureRecognition* r) { return r->setGestureMetadata(index, asMetadata(metadata)); });
}
int GestureRecognition_setGestureEnabled(void* gro, int index, int enabled) {
  return code(gro, [&](IGestureRecognition* r) { return r->setGestureEnabled(index, enabled != 0); });
}

// ---- Persistence ----

int GestureRecognition_saveToFile(void* gro, const char* path) {
  return code(gro, [&](IGestureRecognition* r) { return r->saveToFile(path); });
}
int GestureRecognition_saveToStream(void* gro, std::ostream* stream) {
  return code(gro, [&](IGestureRecognition* r) { return r->saveToStream(stream); });
}
int GestureRecognition_loadFromFile(void* gro, const char* path, GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->loadFromFile(path, create); });
}
int GestureRecognition_loadFromBuffer(void* gro, const char* buffer, int size,
                                      GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->loadFromBuffer(buffer, size, create); });
}
int GestureRecognition_loadFromStream(void* gro, std::istream* stream,
                                      GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->loadFromStream(stream, create); });
}
int GestureRecognition_importFromFile(void* gro, const char* path, GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->importFromFile(path, create, nullptr); });
}
int GestureRecognition_importFromBuffer(void* gro, const char* buffer, int size,
                                        GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->importFromBuffer(buffer, size, create, nullptr); });
}
int GestureRecognition_importFromStream(void* gro, std::istream* stream,
                                        GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->importFromStream(stream, create, nullptr); });
}
int GestureRecognition_saveToFileAsync(void* gro, const char* path) {
  return code(gro, [&](IGestureRecognition* r) { return r->saveToFileAsync(path); });
}
int GestureRecognition_setSavingUpdateCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback) {
  return code(gro, [&](IGestureRecognition* r) { return r->setSavingUpdateCallbackFunction(callback); });
}
int GestureRecognition_setSavingUpdateCallbackMetadata(void* gro, void* metadata) {
  return code(gro, [&](IGestureRecognition* r) { return r->setSavingUpdateCallbackMetadata(metadata); });
}
int GestureRecognition_setSavingFinishCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback) {
  return code(gro, [&](IGestureRecognition* r) { return r->setSavingFinishCallbackFunction(callback); });
}
int GestureRecognition_setSavingFinishCallbackMetadata(void* gro, void* metadata) {
  return code(gro, [&](IGestureRecognition* r) { return r->setSavingFinishCallbackMetadata(metadata); });
}
int GestureRecognition_isSaving(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->isSaving() ? 1 : 0; });
}
int GestureRecognition_cancelSaving(void* gro) {
  return code(gro, [](IGestureRecognition* r) { return r->cancelSaving(); });
}
int GestureRecognition_loadFromFileAsync(void* gro, const char* path,
                                         GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->loadFromFileAsync(path, create); });
}
int GestureRecognition_loadFromBufferAsync(void* gro, const char* buffer, int size,
                                           GestureRecognition_MetadataCreatorFunction create) {
  return code(gro, [&](IGestureRecognition* r) { return r->loadFromBufferAsync(buffer, size, create); });
}
int GestureRecognition_setLoadingUpdateCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback) {
  return code(gro, [&](IGestureRecognition* r) { return r->setLoadingUpdateCallbackFunction(callback); });
}
int GestureRecognition_setLoadingUpdateCallbackMetadata(void* gro, void* metadata) {
  return code(gro, [&](IGestureRecognition* r) { return r->setLoadingUpdateCallbackMetadata(metadata); });
}
int GestureRecognition_setLoadingFinishCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback) {
  return code(gro, [&](IGestureRecognition* r) { return r->setLoadingFinishCallbackFunction(callback); });
}
int GestureRecognition_setLoadingFinishCallbackMetadata(void* gro, void* metadata) {
  return code(gro, [&](IGestureRecognition* r) { return r->setLoadingFinishCallbackMetadata(metadata); });
}
int GestureRecognition_isLoading(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->isLoading() ? 1 : 0; });
}
int GestureRecognition_cancelLoading(void* gro) {
  return code(gro, [](IGestureRecognition* r) { return r->cancelLoading(); });
}
int GestureRecognition_importGestureSamples(void* gro, const void* from_gro, int from_gesture_index,
                                            int into_gesture_index) {
  return code(gro, [&](IGestureRecognition* r) {
    return r->importGestureSamples(asRecognizer(from_gro), from_gesture_index, into_gesture_index);
  });
}
int GestureRecognition_importGestures(void* gro, const void* from_gro) {
  return code(gro, [&](IGestureRecognition* r) { return r->importGestures(asRecognizer(from_gro)); });
}

// ---- Training ----

int GestureRecognition_startTraining(void* gro) {
  return code(gro, [](IGestureRecognition* r) { return r->startTraining(); });
}
int GestureRecognition_isTraining(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->isTraining() ? 1 : 0; });
}
int GestureRecognition_stopTraining(void* gro) {
  return code(gro, [](IGestureRecognition* r) { return r->stopTraining(); });
}
int GestureRecognition_getTrainingParameter(void* gro, int id) {
  return code(gro, [&](IGestureRecognition* r) { return r->getTrainingParameter(id); });
}
int GestureRecognition_setTrainingParameter(void* gro, int id, int value_) {
  return code(gro, [&](IGestureRecognition* r) { return r->setTrainingParameter(id, value_); });
}
int GestureRecognition_getMaxTrainingTime(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->maxTrainingTime; });
}
void GestureRecognition_setMaxTrainingTime(void* gro, int t) {
  apply(gro, [&](IGestureRecognition* r) { r->maxTrainingTime = t; });
}
void GestureRecognition_setTrainingUpdateCallback(void* gro, GestureRecognition_TrainingCallbackFunction cbf) {
  apply(gro, [&](IGestureRecognition* r) { r->trainingUpdateCallback = cbf; });
}
void GestureRecognition_setTrainingFinishCallback(void* gro, GestureRecognition_TrainingCallbackFunction cbf) {
  apply(gro, [&](IGestureRecognition* r) { r->trainingFinishCallback = cbf; });
}
void GestureRecognition_setTrainingUpdateCallbackMetadata(void* gro, void* metadata) {
  apply(gro, [&](IGestureRecognition* r) { r->trainingUpdateCallbackMetadata = metadata; });
}
void GestureRecognition_setTrainingFinishCallbackMetadata(void* gro, void* metadata) {
  apply(gro, [&](IGestureRecognition* r) { r->trainingFinishCallbackMetadata = metadata; });
}
void* GestureRecognition_getTrainingUpdateCallbackMetadata(void* gro) {
  return value(gro, static_cast<void*>(nullptr),
               [](IGestureRecognition* r) { return r->trainingUpdateCallbackMetadata; });
}
void* GestureRecognition_getTrainingFinishCallbackMetadata(void* gro) {
  return value(gro, static_cast<void*>(nullptr),
               [](IGestureRecognition* r) { return r->trainingFinishCallbackMetadata; });
}

// ---- Frame of reference ----
// The ignore-head-rotation forms store 0 or 1 and answer true only for exactly 1; the direct
// forms store and return the int as it is.

int GestureRecognition_getIgnoreHeadRotationX(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->rotationalFrameOfReferenceX == 1 ? 1 : 0; });
}
void GestureRecognition_setIgnoreHeadRotationX(void* gro, int on_off) {
  apply(gro, [&](IGestureRecognition* r) { r->rotationalFrameOfReferenceX = on_off != 0 ? 1 : 0; });
}
int GestureRecognition_getIgnoreHeadRotationY(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->rotationalFrameOfReferenceY == 1 ? 1 : 0; });
}
void GestureRecognition_setIgnoreHeadRotationY(void* gro, int on_off) {
  apply(gro, [&](IGestureRecognition* r) { r->rotationalFrameOfReferenceY = on_off != 0 ? 1 : 0; });
}
int GestureRecognition_getIgnoreHeadRotationZ(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->rotationalFrameOfReferenceZ == 1 ? 1 : 0; });
}
void GestureRecognition_setIgnoreHeadRotationZ(void* gro, int on_off) {
  apply(gro, [&](IGestureRecognition* r) { r->rotationalFrameOfReferenceZ = on_off != 0 ? 1 : 0; });
}
int GestureRecognition_getRotationalFrameOfReferenceX(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->rotationalFrameOfReferenceX; });
}
void GestureRecognition_setRotationalFrameOfReferenceX(void* gro, int i) {
  apply(gro, [&](IGestureRecognition* r) { r->rotationalFrameOfReferenceX = i; });
}
int GestureRecognition_getRotationalFrameOfReferenceY(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->rotationalFrameOfReferenceY; });
}
void GestureRecognition_setRotationalFrameOfReferenceY(void* gro, int i) {
  apply(gro, [&](IGestureRecognition* r) { r->rotationalFrameOfReferenceY = i; });
}
int GestureRecognition_getRotationalFrameOfReferenceZ(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->rotationalFrameOfReferenceZ; });
}
void GestureRecognition_setRotationalFrameOfReferenceZ(void* gro, int i) {
  apply(gro, [&](IGestureRecognition* r) { r->rotationalFrameOfReferenceZ = i; });
}
int GestureRecognition_getRotationalFrameOfReferenceRotationOrder(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->rotationalFrameOfReferenceRotationOrder; });
}
void GestureRecognition_setRotationalFrameOfReferenceRotationOrder(void* gro, int i) {
  apply(gro, [&](IGestureRecognition* r) { r->rotationalFrameOfReferenceRotationOrder = i; });
}

// ---- Metadata ----

int GestureRecognition_setMetadata(void* gro, void* metadata) {
  return code(gro, [&](IGestureRecognition* r) { return r->setMetadata(asMetadata(metadata)); });
}
void* GestureRecognition_getMetadata(void* gro) {
  return value(gro, static_cast<void*>(nullptr),
               [](IGestureRecognition* r) { return static_cast<void*>(r->getMetadata()); });
}

// ---- Enhanced recognition ----

int GestureRecognition_setEnhancedRecognition(void* gro, int on) {
  return code(gro, [&](IGestureRecognition* r) { return r->setEnhancedRecognition(on); });
}
int GestureRecognition_getEnhancedRecognition(void* gro) {
  return value(gro, 0, [](IGestureRecognition* r) { return r->getEnhancedRecognition(); });
}

// ---- Continuous detection ----

int GestureRecognition_setHostTime(void* gro, double seconds) {
  return code(gro, [&](IGestureRecognition* r) { return r->setHostTime(seconds); });
}
int GestureRecognition_contdDetect(void* gro, const double hmd_p[3], const double hmd_q[4], int* gesture,
                                   double* confidence) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdDetect(hmd_p, hmd_q, gesture, confidence); });
}
int GestureRecognition_contdDetectM(void* gro, const double hmd[4][4], int* gesture, double* confidence) {
  return code(gro, [&](IGestureRecognition* r) { return r->contdDetectM(hmd, gesture, confidence); });
}
int GestureRecognition_setDetectionSensitivity(void* gro, double sensitivity) {
  return code(gro, [&](IGestureRecognition* r) { return r->setDetectionSensitivity(sensitivity); });
}
double GestureRecognition_getDetectionSensitivity(void* gro) {
  return value(gro, -1.0, [](IGestureRecognition* r) { return r->getDetectionSensitivity(); });
}

void* GestureRecognition_createDefaultMetadata(void) {
  return new (std::nothrow) DefaultMetadata();
}
void* GestureRecognition_defaultMetadataCreatorFunction(void) {
  return new (std::nothrow) DefaultMetadata();
}
GestureRecognition_MetadataCreatorFunction GestureRecognition_getDefaultMetadataCreatorFunction(void) {
  return IGestureRecognition::getDefaultMetadataCreatorFunction();
}
void GestureRecognition_deleteDefaultMetadata(void* metadata) {
  if (metadata != nullptr) delete asDefault(metadata);
}
int GestureRecognition_getDefaultMetadataData(void* metadata, void* buffer, int buffer_size) {
  return metadata == nullptr ? 0 : asDefault(metadata)->copyData(buffer, buffer_size);
}
int GestureRecognition_getDefaultMetadataSize(void* metadata) {
  return metadata == nullptr ? 0 : asDefault(metadata)->size;
}
int GestureRecognition_setDefaultMetadataData(void* metadata, const void* data, int size) {
  return metadata == nullptr ? ReturnCode_InvalidParameter : asDefault(metadata)->setData(data, size);
}

}  // extern "C"
