/*
 * Zando: recognition of 3D hand-motion gestures.
 *
 * Two faces of one library. The flat face is a family of C functions that take the object as a
 * `void*` handle; it compiles as C11 and as C++. The class face, `IGestureRecognition`, is
 * available to C++ hosts. Every flat function forwards to the operation of the same name.
 *
 * Conventions: operations return an int, a non-negative index, count or 0 on success and a
 * negative `ReturnCode` on failure. Quaternions are x, y, z, w; matrices are sixteen doubles,
 * column-major, translation in elements 12 to 14; Euler angles are radians. Output pointers that
 * an operation documents as optional may be null.
 */
#ifndef ZANDO_ZANDO_H
#define ZANDO_ZANDO_H

#if defined(_WIN32)
#  if defined(ZANDO_BUILDING_LIBRARY)
#    define ZANDO_API __declspec(dllexport)
#  else
#    define ZANDO_API __declspec(dllimport)
#  endif
#else
#  define ZANDO_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#include <istream>
#include <ostream>
#include <vector>
#endif

/* Return codes. Hosts compare against the numbers; numbers that are skipped are not used. */
enum ReturnCode {
  ReturnCode_Success = 0,
  ReturnCode_Failed = -1,
  ReturnCode_InvalidIndex = -2,
  ReturnCode_InvalidPath = -3,
  ReturnCode_InvalidFile = -4,
  ReturnCode_PointCountMismatch = -6,
  ReturnCode_StrokeTooShort = -7,
  ReturnCode_TrainingInProgress = -8,
  ReturnCode_NoGestures = -9,
  ReturnCode_ModelMismatch = -10,
  ReturnCode_CannotReplaceFile = -11,
  ReturnCode_NoStrokeStarted = -12,
  ReturnCode_NoPartResult = -13,
  ReturnCode_ResourceError = -14,
  ReturnCode_LoadingInProgress = -15,
  ReturnCode_SavingInProgress = -17,
  ReturnCode_InvalidParameter = -18,
  ReturnCode_StreamError = -19
};

/* Order in which Euler angles compose; any other value acts as RotationOrder_YXZ. */
enum RotationOrder {
  RotationOrder_XYZ = 0,
  RotationOrder_XZY = 1,
  RotationOrder_YXZ = 2,
  RotationOrder_YZX = 3,
  RotationOrder_ZXY = 4,
  RotationOrder_ZYX = 5
};

/* Which head pose a stroke is read against. */
enum UpdateHeadPositionPolicy {
  UpdateHeadPositionPolicy_UseLatest = 0,  /* each point against its own head pose */
  UpdateHeadPositionPolicy_UseInitial = 1  /* the whole stroke against its first head pose */
};

/* Kind of a recorded sample. */
enum SampleType {
  SampleType_Stroke = 0,     /* a complete motion from start to end */
  SampleType_Continuous = 1  /* a window cut from a running motion */
};

/* Training progress: the score so far, and the metadata pointer that was set with the callback. */
typedef void (*GestureRecognition_TrainingCallbackFunction)(double score, void* metadata);
/* Save or load progress in percent, or the final result code of an asynchronous job. */
typedef void (*GestureRecognition_IOCallbackFunction)(int value, void* metadata);
/* Debug messages: accepted for compatibility, never called. */
typedef void (*GestureRecognition_DebugCallbackFunction)(const char* message, void* metadata);

#ifdef __cplusplus

/* The class face. One concrete class implements it; create objects with IGestureRecognition::create
 * or GestureRecognition_create and delete them with delete or GestureRecognition_delete. */
class ZANDO_API IGestureRecognition {
 public:
  /* User data hung on a gesture or on the whole set, saved and loaded with it. The library keeps
   * the pointer and never takes ownership (a load replaces and deletes the set's metadata). */
  struct ZANDO_API Metadata {
    virtual ~Metadata();
    /* Writes the object; true on success. Must write nothing that readFromStream won't consume. */
    virtual bool writeToStream(std::ostream& stream) = 0;
    /* Replaces the content by what the stream holds, stopping exactly at the block's end. */
    virtual bool readFromStream(std::istream& stream) = 0;
  };

  /* A block of bytes, owned, for hosts without classes of their own. */
  struct ZANDO_API DefaultMetadata : public Metadata {
    void* data = nullptr;
    int size = 0;
    DefaultMetadata() = default;
    DefaultMetadata(const DefaultMetadata&) = delete;
    DefaultMetadata& operator=(const DefaultMetadata&) = delete;
    ~DefaultMetadata() override;
    bool writeToStream(std::ostream& stream) override;
    bool readFromStream(std::istream& stream) override;
    /* Copies up to capacity bytes into buffer; returns the number copied. */
    int copyData(void* buffer, int capacity) const;
    /* Replaces the bytes (null or 0 bytes empties the object); 0, or -14 without memory. */
    int setData(const void* bytes, int byteCount);
  };

  typedef Metadata* (*MetadataCreatorFunction)();

  /* Public settings, read and written by the plain accessors of the flat face. */
  int contdIdentificationPeriod;     /* window of continuous identification, ms */
  int contdIdentificationSmoothing;  /* number of recent results that are smoothed */
  int maxTrainingTime;               /* training time limit, seconds */
  GestureRecognition_TrainingCallbackFunction trainingUpdateCallback;
  void* trainingUpdateCallbackMetadata;
  GestureRecognition_TrainingCallbackFunction trainingFinishCallback;
  void* trainingFinishCallbackMetadata;
  int rotationalFrameOfReferenceX;   /* non-zero: the head's rotation about X is taken out */
  int rotationalFrameOfReferenceY;
  int rotationalFrameOfReferenceZ;
  int rotationalFrameOfReferenceRotationOrder;  /* a RotationOrder */

  IGestureRecognition();
  IGestureRecognition(const IGestureRecognition& other);
  IGestureRecognition& operator=(const IGestureRecognition& other);
  virtual ~IGestureRecognition();

  /* ---- Stroke capture ---- */
  /* Starts a stroke at the head pose; gestureId >= 0 records a sample of that gesture, a negative
   * id identifies the stroke at its end. -8, -15, -18 (non-finite or null pose), -17, -2. */
  virtual int startStroke(const double headPosition[3], const double headRotation[4], int gestureId) = 0;
  virtual int startStrokeM(const double headMatrix[4][4], int gestureId) = 0;
  /* 0, or -8, -17, -18 for a value other than 0 or 1. */
  virtual int setUpdateHeadPositionPolicy(int policy) = 0;
  virtual int getUpdateHeadPositionPolicy() = 0;
  /* Replace the latest head pose; always 0. */
  virtual int updateHeadPositionM(const double headMatrix[4][4]) = 0;
  virtual int updateHeadPositionQ(const double headPosition[3], const double headRotation[4]) = 0;
  /* Append one tracked pose; -8, -15, -12 without a stroke, -18 for non-finite values. */
  virtual int contdStroke(const double handPosition[3]) = 0;
  virtual int contdStrokeQ(const double handPosition[3], const double handRotation[4]) = 0;
  virtual int contdStrokeE(const double handPosition[3], const double handEuler[3]) = 0;
  virtual int contdStrokeM(const double handMatrix[4][4]) = 0;
  /* Ends the stroke: the recorded gesture's index, the identified gesture's index, or a code. */
  virtual int endStroke(double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]) = 0;
  virtual int endStrokeAndGetAllProbabilities(double* probabilities, int* count, double pos[3], double* scale,
                                              double dir0[3], double dir1[3], double dir2[3]) = 0;
  virtual int endStrokeAndGetSimilarity(double* similarity, double pos[3], double* scale, double dir0[3],
                                        double dir1[3], double dir2[3]) = 0;
  virtual int endStrokeAndGetAllProbabilitiesAndSimilarities(double* probabilities, double* similarities,
                                                             int* count, double pos[3], double* scale,
                                                             double dir0[3], double dir1[3], double dir2[3]) = 0;
  virtual bool isStrokeStarted() = 0;
  /* Keeps at most maxPoints oldest points and drops points older than maxAgeMs; points left. */
  virtual int pruneStroke(int maxPoints, int maxAgeMs) = 0;
  virtual int cancelStroke() = 0;

  /* ---- Continuous identification over a sliding time window ---- */
  virtual int contdIdentify(const double headPosition[3], const double headRotation[4], double* similarity) = 0;
  virtual int contdIdentifyM(const double headMatrix[4][4], double* similarity) = 0;
  virtual int contdIdentifyAndGetAllProbabilitiesAndSimilarities(const double headPosition[3],
                                                                 const double headRotation[4],
                                                                 double* probabilities, double* similarities,
                                                                 int* count) = 0;
  virtual int contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(const double headMatrix[4][4],
                                                                  double* probabilities, double* similarities,
                                                                  int* count) = 0;
  virtual int contdIdentifyAndGetStroke(const double headPosition[3], const double headRotation[4],
                                        double* similarity, double pos[3], double* scale, double dir0[3],
                                        double dir1[3], double dir2[3]) = 0;
  virtual int contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(
      const double headPosition[3], const double headRotation[4], double* probabilities, double* similarities,
      int* count, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]) = 0;
  virtual int contdRecord(const double headPosition[3], const double headRotation[4]) = 0;
  virtual int contdRecordM(const double headMatrix[4][4]) = 0;

  /* ---- Gesture store ---- */
  virtual int numberOfGestures() = 0;
  virtual int deleteGesture(int index) = 0;
  virtual int deleteAllGestures() = 0;
  /* Appends a gesture; returns its index. The metadata pointer is kept, not owned. */
  virtual int createGesture(const char* name, Metadata* metadata) = 0;
  /* The stored score of the last training, or a new measurement over all samples. */
  virtual double recognitionScore(bool recompute) = 0;
  virtual const char* getGestureName(int index) = 0;
  virtual int getGestureNameLength(int index) = 0;
  virtual int copyGestureName(int index, char* buffer, int bufferSize) = 0;
  virtual Metadata* getGestureMetadata(int index) = 0;
  virtual bool getGestureEnabled(int index) = 0;
  virtual int getGestureNumberOfSamples(int index) = 0;
  virtual int getGestureSampleType(int gestureIndex, int sampleIndex) = 0;
  virtual int setGestureSampleType(int gestureIndex, int sampleIndex, int sampleType) = 0;
  virtual int getGestureSampleLength(int gestureIndex, int sampleIndex, bool processed) = 0;
  virtual int getGestureSampleStroke(int gestureIndex, int sampleIndex, bool processed, int bufferSize,
                                     double (*handPositions)[3], double (*handRotations)[4],
                                     double (*headPositions)[3], double (*headRotations)[4]) = 0;
  virtual int getGestureMeanLength(int gestureIndex) = 0;
  virtual int getGestureMeanStroke(int gestureIndex, double (*positions)[3], double (*rotations)[4],
                                   int bufferSize, double strokePosition[3], double strokeRotation[4],
                                   double* scale) = 0;
  virtual int deleteGestureSample(int gestureIndex, int sampleIndex) = 0;
  virtual int deleteAllGestureSamples(int gestureIndex) = 0;
  virtual int setGestureName(int index, const char* name) = 0;
  virtual int setGestureMetadata(int index, Metadata* metadata) = 0;
  virtual int setGestureEnabled(int index, bool enabled) = 0;

  /* ---- Persistence ---- */
  virtual int saveToFile(const char* path) = 0;
  virtual int saveToStream(std::ostream* stream) = 0;
  virtual int loadFromFile(const char* path, MetadataCreatorFunction metadataCreator) = 0;
  virtual int loadFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) = 0;
  virtual int loadFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) = 0;
  virtual int importFromFile(const char* path, MetadataCreatorFunction metadataCreator,
                             std::vector<int>* mapping) = 0;
  virtual int importFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator,
                               std::vector<int>* mapping) = 0;
  virtual int importFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator,
                               std::vector<int>* mapping) = 0;
  virtual int saveToFileAsync(const char* path) = 0;
  virtual int setSavingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) = 0;
  virtual int setSavingUpdateCallbackMetadata(void* metadata) = 0;
  virtual int setSavingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) = 0;
  virtual int setSavingFinishCallbackMetadata(void* metadata) = 0;
  virtual bool isSaving() = 0;
  virtual int cancelSaving() = 0;
  virtual int loadFromFileAsync(const char* path, MetadataCreatorFunction metadataCreator) = 0;
  virtual int loadFromBufferAsync(const char* buffer, int size, MetadataCreatorFunction metadataCreator) = 0;
  virtual int setLoadingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) = 0;
  virtual int setLoadingUpdateCallbackMetadata(void* metadata) = 0;
  virtual int setLoadingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) = 0;
  virtual int setLoadingFinishCallbackMetadata(void* metadata) = 0;
  virtual bool isLoading() = 0;
  virtual int cancelLoading() = 0;
  virtual int importGestureSamples(const IGestureRecognition* from, int fromGesture, int intoGesture) = 0;
  virtual int importGestures(const IGestureRecognition* from) = 0;

  /* ---- Training ---- */
  /* Starts training on a background thread; 0, -8, -15, -17 or -14. */
  virtual int startTraining() = 0;
  virtual bool isTraining() = 0;
  /* Asks a running training to stop and waits for it; 0, -8 or -14. */
  virtual int stopTraining() = 0;
  /* Pinned training parameter by id: its value, -1 when not set, -18 for a negative id. */
  virtual int getTrainingParameter(int id) = 0;
  virtual int setTrainingParameter(int id, int value) = 0;

  /* ---- Metadata of the whole set ---- */
  virtual int setMetadata(Metadata* metadata) = 0;
  virtual Metadata* getMetadata() = 0;

  /* Consistency check of the object's own data; 0 or -1. Not exported as a flat function. */
  virtual int selfTest() = 0;

  /* ---- Static functions ---- */
  static IGestureRecognition* create();
  /* "Zando2.13_Aug31", owned by the library; null only if its memory could not be had. */
  static const char* getVersionString();
  static int getVersionStringLength();
  /* Copies the version text; returns the smaller of its length and dstSize. */
  static int copyVersionString(char* dst, int dstSize);
  /* Accepted and ignored: the library emits no debug messages. */
  static void setDebugCallbackFunction(GestureRecognition_DebugCallbackFunction callback);
  static void setDebugCallbackMetadata(void* metadata);
  static Metadata* defaultMetadataCreatorFunction();
  static MetadataCreatorFunction getDefaultMetadataCreatorFunction();
};

typedef IGestureRecognition::Metadata* (*GestureRecognition_MetadataCreatorFunction)();

extern "C" {
#else
typedef void* (*GestureRecognition_MetadataCreatorFunction)(void);
#endif /* __cplusplus */

/* ---- Objects and version ---- */
/* A new recogniser, or null if memory could not be had. */
ZANDO_API void* GestureRecognition_create(void);
/* Deletes the object after cancelling its background jobs; null does nothing. */
ZANDO_API void GestureRecognition_delete(void* gro);
ZANDO_API const char* GestureRecognition_getVersionString(void);
ZANDO_API int GestureRecognition_getVersionStringLength(void);
ZANDO_API int GestureRecognition_copyVersionString(char* dst, int dst_size);
ZANDO_API void GestureRecognition_setDebugCallbackFunction(GestureRecognition_DebugCallbackFunction callback);
ZANDO_API void GestureRecognition_setDebugCallbackMetadata(void* metadata);

/* ---- Stroke capture ---- */
ZANDO_API int GestureRecognition_startStroke(void* gro, const double hmd_p[3], const double hmd_q[4], int record_as_sample);
ZANDO_API int GestureRecognition_startStrokeM(void* gro, const double hmd[4][4], int record_as_sample);
ZANDO_API int GestureRecognition_setUpdateHeadPositionPolicy(void* gro, int policy);
ZANDO_API int GestureRecognition_getUpdateHeadPositionPolicy(void* gro);
ZANDO_API int GestureRecognition_updateHeadPositionM(void* gro, const double hmd[4][4]);
ZANDO_API int GestureRecognition_updateHeadPositionQ(void* gro, const double hmd_p[3], const double hmd_q[4]);
ZANDO_API int GestureRecognition_contdStroke(void* gro, const double p[3]);
ZANDO_API int GestureRecognition_contdStrokeQ(void* gro, const double p[3], const double q[4]);
ZANDO_API int GestureRecognition_contdStrokeE(void* gro, const double p[3], const double r[3]);
ZANDO_API int GestureRecognition_contdStrokeM(void* gro, const double m[4][4]);
ZANDO_API int GestureRecognition_endStroke(void* gro, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
ZANDO_API int GestureRecognition_endStrokeAndGetAllProbabilities(void* gro, double* p, int* n, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
ZANDO_API int GestureRecognition_endStrokeAndGetSimilarity(void* gro, double* similarity, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
ZANDO_API int GestureRecognition_endStrokeAndGetAllProbabilitiesAndSimilarities(void* gro, double* p, double* s, int* n, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
/* 1 while a stroke is being captured, else 0. */
ZANDO_API int GestureRecognition_isStrokeStarted(void* gro);
ZANDO_API int GestureRecognition_pruneStroke(void* gro, int max_points, int max_age_ms);
ZANDO_API int GestureRecognition_cancelStroke(void* gro);

/* ---- Continuous identification ---- */
ZANDO_API int GestureRecognition_contdIdentify(void* gro, const double hmd_p[3], const double hmd_q[4], double* similarity);
ZANDO_API int GestureRecognition_contdIdentifyM(void* gro, const double hmd[4][4], double* similarity);
ZANDO_API int GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilarities(void* gro, const double hmd_p[3], const double hmd_q[4], double* p, double* s, int* n);
ZANDO_API int GestureRecognition_contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(void* gro, const double hmd[4][4], double* p, double* s, int* n);
ZANDO_API int GestureRecognition_contdIdentifyAndGetStroke(void* gro, const double hmd_p[3], const double hmd_q[4], double* similarity, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
ZANDO_API int GestureRecognition_contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(void* gro, const double hmd_p[3], const double hmd_q[4], double* p, double* s, int* n, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
ZANDO_API int GestureRecognition_contdRecord(void* gro, const double hmd_p[3], const double hmd_q[4]);
ZANDO_API int GestureRecognition_contdRecordM(void* gro, const double hmd[4][4]);
ZANDO_API int GestureRecognition_getContdIdentificationPeriod(void* gro);
ZANDO_API int GestureRecognition_setContdIdentificationPeriod(void* gro, int ms);
ZANDO_API int GestureRecognition_getContdIdentificationSmoothing(void* gro);
ZANDO_API int GestureRecognition_setContdIdentificationSmoothing(void* gro, int samples);

/* ---- Gesture store ---- */
ZANDO_API int GestureRecognition_numberOfGestures(void* gro);
ZANDO_API int GestureRecognition_deleteGesture(void* gro, int index);
ZANDO_API int GestureRecognition_deleteAllGestures(void* gro);
/* metadata: a Metadata object (for example a default-metadata handle) or null; kept, not owned. */
ZANDO_API int GestureRecognition_createGesture(void* gro, const char* name, void* metadata);
/* The stored score of the last training, from 0 to 1. */
ZANDO_API double GestureRecognition_recognitionScore(void* gro);
ZANDO_API const char* GestureRecognition_getGestureName(void* gro, int index);
ZANDO_API int GestureRecognition_getGestureNameLength(void* gro, int index);
ZANDO_API int GestureRecognition_copyGestureName(void* gro, int index, char* buf, int buflen);
ZANDO_API void* GestureRecognition_getGestureMetadata(void* gro, int index);
ZANDO_API int GestureRecognition_getGestureEnabled(void* gro, int index);
ZANDO_API int GestureRecognition_getGestureNumberOfSamples(void* gro, int index);
ZANDO_API int GestureRecognition_getGestureSampleType(void* gro, int gesture_index, int sample_index);
ZANDO_API int GestureRecognition_setGestureSampleType(void* gro, int gesture_index, int sample_index, int sample_type);
ZANDO_API int GestureRecognition_getGestureSampleLength(void* gro, int gesture_index, int sample_index, int processed);
ZANDO_API int GestureRecognition_getGestureSampleStroke(void* gro, int gesture_index, int sample_index, int processed, int stroke_buf_size, double (*hands_p)[3], double (*hands_q)[4], double (*hmd_p)[3], double (*hmd_q)[4]);
ZANDO_API int GestureRecognition_getGestureMeanLength(void* gro, int gesture_index);
ZANDO_API int GestureRecognition_getGestureMeanStroke(void* gro, int gesture_index, double (*p)[3], double (*q)[4], int stroke_buf_size, double stroke_p[3], double stroke_q[4], double* stroke_scale);
ZANDO_API int GestureRecognition_deleteGestureSample(void* gro, int gesture_index, int sample_index);
ZANDO_API int GestureRecognition_deleteAllGestureSamples(void* gro, int gesture_index);
ZANDO_API int GestureRecognition_setGestureName(void* gro, int index, const char* name);
ZANDO_API int GestureRecognition_setGestureMetadata(void* gro, int index, void* metadata);
ZANDO_API int GestureRecognition_setGestureEnabled(void* gro, int index, int enabled);

/* ---- Persistence ---- */
ZANDO_API int GestureRecognition_saveToFile(void* gro, const char* path);
ZANDO_API int GestureRecognition_loadFromFile(void* gro, const char* path, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureRecognition_loadFromBuffer(void* gro, const char* buffer, int size, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureRecognition_importFromFile(void* gro, const char* path, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureRecognition_importFromBuffer(void* gro, const char* buffer, int size, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureRecognition_saveToFileAsync(void* gro, const char* path);
ZANDO_API int GestureRecognition_setSavingUpdateCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureRecognition_setSavingUpdateCallbackMetadata(void* gro, void* metadata);
ZANDO_API int GestureRecognition_setSavingFinishCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureRecognition_setSavingFinishCallbackMetadata(void* gro, void* metadata);
ZANDO_API int GestureRecognition_isSaving(void* gro);
ZANDO_API int GestureRecognition_cancelSaving(void* gro);
ZANDO_API int GestureRecognition_loadFromFileAsync(void* gro, const char* path, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureRecognition_loadFromBufferAsync(void* gro, const char* buffer, int size, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureRecognition_setLoadingUpdateCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureRecognition_setLoadingUpdateCallbackMetadata(void* gro, void* metadata);
ZANDO_API int GestureRecognition_setLoadingFinishCallbackFunction(void* gro, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureRecognition_setLoadingFinishCallbackMetadata(void* gro, void* metadata);
ZANDO_API int GestureRecognition_isLoading(void* gro);
ZANDO_API int GestureRecognition_cancelLoading(void* gro);
ZANDO_API int GestureRecognition_importGestureSamples(void* gro, const void* from_gro, int from_gesture_index, int into_gesture_index);
ZANDO_API int GestureRecognition_importGestures(void* gro, const void* from_gro);

/* ---- Training ---- */
ZANDO_API int GestureRecognition_startTraining(void* gro);
ZANDO_API int GestureRecognition_isTraining(void* gro);
ZANDO_API int GestureRecognition_stopTraining(void* gro);
ZANDO_API int GestureRecognition_getTrainingParameter(void* gro, int id);
ZANDO_API int GestureRecognition_setTrainingParameter(void* gro, int id, int value);
ZANDO_API int GestureRecognition_getMaxTrainingTime(void* gro);
ZANDO_API void GestureRecognition_setMaxTrainingTime(void* gro, int t);
ZANDO_API void GestureRecognition_setTrainingUpdateCallback(void* gro, GestureRecognition_TrainingCallbackFunction cbf);
ZANDO_API void GestureRecognition_setTrainingFinishCallback(void* gro, GestureRecognition_TrainingCallbackFunction cbf);
ZANDO_API void GestureRecognition_setTrainingUpdateCallbackMetadata(void* gro, void* metadata);
ZANDO_API void GestureRecognition_setTrainingFinishCallbackMetadata(void* gro, void* metadata);
ZANDO_API void* GestureRecognition_getTrainingUpdateCallbackMetadata(void* gro);
ZANDO_API void* GestureRecognition_getTrainingFinishCallbackMetadata(void* gro);

/* ---- Frame of reference ---- */
ZANDO_API int GestureRecognition_getIgnoreHeadRotationX(void* gro);
ZANDO_API void GestureRecognition_setIgnoreHeadRotationX(void* gro, int on_off);
ZANDO_API int GestureRecognition_getIgnoreHeadRotationY(void* gro);
ZANDO_API void GestureRecognition_setIgnoreHeadRotationY(void* gro, int on_off);
ZANDO_API int GestureRecognition_getIgnoreHeadRotationZ(void* gro);
ZANDO_API void GestureRecognition_setIgnoreHeadRotationZ(void* gro, int on_off);
ZANDO_API int GestureRecognition_getRotationalFrameOfReferenceX(void* gro);
ZANDO_API void GestureRecognition_setRotationalFrameOfReferenceX(void* gro, int i);
ZANDO_API int GestureRecognition_getRotationalFrameOfReferenceY(void* gro);
ZANDO_API void GestureRecognition_setRotationalFrameOfReferenceY(void* gro, int i);
ZANDO_API int GestureRecognition_getRotationalFrameOfReferenceZ(void* gro);
ZANDO_API void GestureRecognition_setRotationalFrameOfReferenceZ(void* gro, int i);
ZANDO_API int GestureRecognition_getRotationalFrameOfReferenceRotationOrder(void* gro);
ZANDO_API void GestureRecognition_setRotationalFrameOfReferenceRotationOrder(void* gro, int i);

/* ---- Metadata ---- */
ZANDO_API int GestureRecognition_setMetadata(void* gro, void* metadata);
ZANDO_API void* GestureRecognition_getMetadata(void* gro);
/* A new, empty default-metadata object; free it with GestureRecognition_deleteDefaultMetadata. */
ZANDO_API void* GestureRecognition_createDefaultMetadata(void);
ZANDO_API void* GestureRecognition_defaultMetadataCreatorFunction(void);
ZANDO_API GestureRecognition_MetadataCreatorFunction GestureRecognition_getDefaultMetadataCreatorFunction(void);
ZANDO_API void GestureRecognition_deleteDefaultMetadata(void* metadata);
/* Copies up to buffer_size bytes; returns the number copied. */
ZANDO_API int GestureRecognition_getDefaultMetadataData(void* metadata, void* buffer, int buffer_size);
ZANDO_API int GestureRecognition_getDefaultMetadataSize(void* metadata);
/* 0, or -14 if memory could not be had (the object is then empty). */
ZANDO_API int GestureRecognition_setDefaultMetadataData(void* metadata, const void* data, int size);

#ifdef __cplusplus
} /* extern "C" */

/* Stream forms, for C++ hosts only. */
extern "C" ZANDO_API int GestureRecognition_saveToStream(void* gro, std::ostream* stream);
extern "C" ZANDO_API int GestureRecognition_loadFromStream(void* gro, std::istream* stream, GestureRecognition_MetadataCreatorFunction createMetadata);
extern "C" ZANDO_API int GestureRecognition_importFromStream(void* gro, std::istream* stream, GestureRecognition_MetadataCreatorFunction createMetadata);
#endif

#endif /* ZANDO_ZANDO_H */
