/*
 * Zando: recognition of 3D hand-motion gestures.
 *
 * Two faces of one library. The flat face is a family of C functions that take the object as a
 * `void*` handle; it compiles as C11 and as C++. The class face, `IGestureRecognition` for one
 * recogniser and `IGestureCombinations` for several recognisers driven as one object (left hand,
 * right hand, head), is available to C++ hosts. Every flat function forwards to the operation of
 * the same name: `GestureRecognition_*` to a recogniser, `GestureCombinations_*` to a
 * combination object.
 *
 * Conventions: operations return an int, a non-negative index, count or 0 on success and a
 * negative `ReturnCode` on failure. Quaternions are x, y, z, w; matrices are sixteen doubles,
 * column-major, translation in elements 12 to 14; Euler angles are radians. Output pointers that
 * an operation documents as optional may be null.
 */
#ifndef ZANDO_ZANDO_H
#define ZANDO_ZANDO_H

/* ZANDO_API marks the flat functions, ZANDO_CLASS_API the classes. A Windows DLL exports the flat
 * face only: class layouts and names differ between the compilers of that platform, so a C++ host
 * there takes an object from the flat create function and calls its virtual operations. Code that
 * links the library's objects directly instead of the DLL defines ZANDO_STATIC. */
#if defined(_WIN32)
#  if defined(ZANDO_BUILDING_LIBRARY)
#    define ZANDO_API __declspec(dllexport)
#  elif defined(ZANDO_STATIC)
#    define ZANDO_API
#  else
#    define ZANDO_API __declspec(dllimport)
#  endif
#  define ZANDO_CLASS_API
#else
#  define ZANDO_API __attribute__((visibility("default")))
#  define ZANDO_CLASS_API ZANDO_API
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
class ZANDO_CLASS_API IGestureRecognition {
 public:
  /* User data hung on a gesture or on the whole set, saved and loaded with it. The library keeps
   * the pointer and never takes ownership (a load replaces and deletes the set's metadata). */
  struct ZANDO_CLASS_API Metadata {
    virtual ~Metadata();
    /* Writes the object; true on success. Must write nothing that readFromStream won't consume. */
    virtual bool writeToStream(std::ostream& stream) = 0;
    /* Replaces the content by what the stream holds, stopping exactly at the block's end. */
    virtual bool readFromStream(std::istream& stream) = 0;
  };

  /* A block of bytes, owned, for hosts without classes of their own. */
  struct ZANDO_CLASS_API DefaultMetadata : public Metadata {
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
  /* Appends a gesture; returns its index, -8, -15 or -17 while a job owns the object, or -18 for
   * a null name. The metadata pointer is kept, not owned. */
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

  /* ---- Enhanced recognition (an addition; off unless switched on) ---- */
  /* Identifies by the shape of every stored sample (evenly resampled, centred, scaled, kept in
   * the head's orientation, compared with a warping distance; closed shapes also from halfway,
   * strokes also the other way round unless the set tells its gestures apart by their direction,
   * whole strokes also a little tilted; a gesture is farther when the stroke turns much more
   * evenly, or more at corners, than its samples do), which holds up with 2 to 10
   * samples per gesture and needs no training (of a gesture with more than 16 samples, a selection
   * that covers them is compared); outputs keep their meaning, probabilities sum to 1.
   * Training in this mode ends at once without a network: it computes the statistics behind
   * similarity values and scores the set by how its samples identify one another.
   * Saved in files and loaded with them (a file without it loads with the mode off); stream saves
   * do not carry it. on: 1 or 0. 0, -8 while training, -15 while loading, -18 for another value. */
  virtual int setEnhancedRecognition(int on) = 0;
  /* 1 when the mode is on, else 0. */
  virtual int getEnhancedRecognition() = 0;

  /* ---- Continuous detection (an addition; nothing changes until it is used) ---- */
  /* From this call on, the object reads the host's time instead of the system clock wherever it
   * reads the clock (stroke points, the continuous window, detection). seconds: the host's frame
   * time, from any origin, never decreasing. A negative value returns to the system clock.
   * 0, or -18 for a value that is not finite. */
  virtual int setHostTime(double seconds) = 0;
  /* Call once a frame, after the frame's hand pose went into a stroke started with index -1.
   * Returns 1 on the one frame on which a performance of a gesture has been completed, with its
   * index in *gesture and a confidence from 0 to 1 in *confidence; 0 on every other frame. Works
   * in both modes, trained or not. What is not a gesture is rejected by thresholds learned from
   * the stored samples, on the first call after they changed (up to a few tenths of a second for
   * a large set); a gesture whose samples hardly move is never reported. -12 without a started
   * stroke, -8 while training, -15 while loading, -18 for a null or non-finite head pose or null
   * outputs, -9 without an enabled gesture that has samples. */
  virtual int contdDetect(const double headPosition[3], const double headRotation[4], int* gesture,
                          double* confidence) = 0;
  virtual int contdDetectM(const double headMatrix[4][4], int* gesture, double* confidence) = 0;
  /* Shifts the learned thresholds: 0 the strictest, 1 the most willing; the default 0.5 is the
   * one that was measured. Saved in files when not the default. 0, -18 outside 0 to 1. */
  virtual int setDetectionSensitivity(double sensitivity) = 0;
  virtual double getDetectionSensitivity() = 0;

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

/* Several recognisers driven as one object, one part for each hand (or hand and head), with
 * combinations that name one gesture for each part. Create objects with IGestureCombinations::create
 * or GestureCombinations_create and delete them with delete or GestureCombinations_delete.
 * Operations that name a part take its index first; a bad index gives -2 unless noted. */
class ZANDO_CLASS_API IGestureCombinations {
 public:
  using Metadata = IGestureRecognition::Metadata;
  using MetadataCreatorFunction = IGestureRecognition::MetadataCreatorFunction;

  /* Public settings, read and written by the plain accessors of the flat face. */
  int maxTrainingTime;  /* seconds, handed to every part when training starts */
  GestureRecognition_TrainingCallbackFunction trainingUpdateCallback;  /* mean best score of all parts */
  void* trainingUpdateCallbackMetadata;
  GestureRecognition_TrainingCallbackFunction trainingFinishCallback;  /* the combinations' score */
  void* trainingFinishCallbackMetadata;
  int rotationalFrameOfReferenceX;  /* copied into a part whenever it starts a stroke */
  int rotationalFrameOfReferenceY;
  int rotationalFrameOfReferenceZ;
  int rotationalFrameOfReferenceRotationOrder;

  IGestureCombinations();
  IGestureCombinations(const IGestureCombinations& other);
  IGestureCombinations& operator=(const IGestureCombinations& other);
  virtual ~IGestureCombinations();

  /* ---- Parts ---- */
  virtual int numberOfParts() = 0;
  /* false for a bad index. */
  virtual bool getPartEnabled(int part) = 0;
  /* Disabled parts neither train nor count in identification; -18 for a bad index. */
  virtual int setPartEnabled(int part, bool enabled) = 0;

  /* ---- Strokes, forwarded to one part ---- */
  /* -2, -14 (part missing), then -8, -15, and -17 when recording (gesture >= 0). */
  virtual int startStroke(int part, const double headPosition[3], const double headRotation[4], int gesture) = 0;
  virtual int startStrokeM(int part, const double headMatrix[4][4], int gesture) = 0;
  /* The head pose for all parts; always 0. */
  virtual int updateHeadPositionM(const double headMatrix[4][4]) = 0;
  virtual int updateHeadPositionQ(const double headPosition[3], const double headRotation[4]) = 0;
  virtual int contdStroke(int part, const double handPosition[3]) = 0;
  virtual int contdStrokeQ(int part, const double handPosition[3], const double handRotation[4]) = 0;
  virtual int contdStrokeE(int part, const double handPosition[3], const double handEuler[3]) = 0;
  virtual int contdStrokeM(int part, const double handMatrix[4][4]) = 0;
  /* Ends the part's stroke and keeps its result for identifyGestureCombination; 0 or a code. */
  virtual int endStroke(int part, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]) = 0;
  /* The part's last probabilities and similarities; *count is the room in, the number out.
   * -18, -2, -14, or -13 when the part has no fresh result. */
  virtual int getPartProbabilitiesAndSimilarities(int part, double* probabilities, double* similarities,
                                                  int* count) = 0;
  virtual bool isStrokeStarted(int part) = 0;
  virtual int pruneStroke(int part, int maxPoints, int maxAgeMs) = 0;
  virtual int cancelStroke(int part) = 0;

  /* ---- Combinations identified ---- */
  /* Picks the combination that fits the parts' finished strokes best; each result is used once.
   * Per-part outputs have room for one double per part. -9 no combinations, -13 a stroke still
   * runs, -14 a part is missing, -1 nothing fits. */
  virtual int identifyGestureCombination(double* probability, double* similarity, double* partProbabilities,
                                         double* partSimilarities) = 0;
  /* The same over the running strokes of all parts (parts without a stroke are passed over). */
  virtual int contdIdentify(const double headPosition[3], const double headRotation[4], double* similarity,
                            double* partProbabilities, double* partSimilarities) = 0;
  virtual int contdIdentifyM(const double headMatrix[4][4], double* similarity, double* partProbabilities,
                             double* partSimilarities) = 0;
  /* Where the part's last continuous window was; -18 bad part, -7 none yet. */
  virtual int contdIdentifyGetLastStrokeInfo(int part, double pos[3], double* scale, double dir0[3],
                                             double dir1[3], double dir2[3]) = 0;
  /* Stores the windows of all parts that record; 0 or the first non-zero part result. */
  virtual int contdRecord(const double headPosition[3], const double headRotation[4]) = 0;
  virtual int contdRecordM(const double headMatrix[4][4]) = 0;
  /* The same for one part; -18 bad part, -14 part missing. */
  virtual int contdRecordPart(int part, const double headPosition[3], const double headRotation[4]) = 0;
  virtual int contdRecordPartM(int part, const double headMatrix[4][4]) = 0;
  virtual int getContdIdentificationPeriod(int part) = 0;
  virtual int setContdIdentificationPeriod(int part, int ms) = 0;
  virtual int getContdIdentificationSmoothing(int part) = 0;
  virtual int setContdIdentificationSmoothing(int part, int samples) = 0;

  /* ---- Gesture stores of the parts ---- */
  virtual int numberOfGestures(int part) = 0;
  /* Combination entries follow: the deleted gesture becomes -1, later ones move down. */
  virtual int deleteGesture(int part, int index) = 0;
  virtual int deleteAllGestures(int part) = 0;
  virtual int createGesture(int part, const char* name, Metadata* metadata) = 0;
  /* Replays the samples of one gesture into another part (toGesture < 0 creates one), mirrored
   * about the X (1), Y (2) or Z (4) axis or not (0); returns the target gesture, or 0 when there
   * is nothing to copy. -18 for another axis value. */
  virtual int copyGesture(int fromPart, int fromGesture, int toPart, int toGesture, int mirrorAxis) = 0;
  /* The part's stored score; -2.0 or -14.0 on failure. */
  virtual double gestureRecognitionScore(int part) = 0;
  virtual const char* getGestureName(int part, int index) = 0;
  virtual int getGestureNameLength(int part, int index) = 0;
  virtual int copyGestureName(int part, int index, char* buffer, int bufferSize) = 0;
  virtual Metadata* getGestureMetadata(int part, int index) = 0;
  virtual bool getGestureEnabled(int part, int index) = 0;
  virtual int getGestureNumberOfSamples(int part, int index) = 0;
  virtual int getGestureSampleType(int part, int gestureIndex, int sampleIndex) = 0;
  virtual int setGestureSampleType(int part, int gestureIndex, int sampleIndex, int sampleType) = 0;
  virtual int getGestureSampleLength(int part, int gestureIndex, int sampleIndex, bool processed) = 0;
  virtual int getGestureSampleStroke(int part, int gestureIndex, int sampleIndex, bool processed, int bufferSize,
                                     double (*handPositions)[3], double (*handRotations)[4],
                                     double (*headPositions)[3], double (*headRotations)[4]) = 0;
  virtual int getGestureMeanLength(int part, int gestureIndex) = 0;
  virtual int getGestureMeanStroke(int part, int gestureIndex, double (*positions)[3], double (*rotations)[4],
                                   int bufferSize, double strokePosition[3], double strokeRotation[4],
                                   double* scale) = 0;
  virtual int deleteGestureSample(int part, int gestureIndex, int sampleIndex) = 0;
  virtual int deleteAllGestureSamples(int part, int gestureIndex) = 0;
  virtual int setGestureName(int part, int index, const char* name) = 0;
  virtual int setGestureMetadata(int part, int index, Metadata* metadata) = 0;
  virtual int setGestureEnabled(int part, int index, bool enabled) = 0;

  /* ---- Persistence: one archive with the combinations and every part ---- */
  virtual int saveToFile(const char* path) = 0;
  /* Replaces all parts and combinations by those of the file. */
  virtual int loadFromFile(const char* path, MetadataCreatorFunction metadataCreator) = 0;
  virtual int loadFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) = 0;
  /* Reads the older single-stream layouts. */
  virtual int loadFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) = 0;
  /* Merges a file with as many parts: gestures join by name, equal combinations by content. */
  virtual int importFromFile(const char* path, MetadataCreatorFunction metadataCreator) = 0;
  virtual int importFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) = 0;
  virtual int importFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) = 0;
  /* One part as a gesture database file. */
  virtual int saveGestureToFile(int part, const char* path) = 0;
  virtual int loadGestureFromFile(int part, const char* path, MetadataCreatorFunction metadataCreator) = 0;
  virtual int loadGestureFromBuffer(int part, const char* buffer, int size,
                                    MetadataCreatorFunction metadataCreator) = 0;
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

  /* ---- Combination records ---- */
  virtual int numberOfGestureCombinations() = 0;
  virtual int deleteGestureCombination(int combination) = 0;
  virtual int deleteAllGestureCombinations() = 0;
  /* A new combination in which every part must stay idle; returns its index, -18 for a null name. */
  virtual int createGestureCombination(const char* name) = 0;
  /* gesture -1: the part must do nothing. */
  virtual int setCombinationPartGesture(int combination, int part, int gesture) = 0;
  virtual int getCombinationPartGesture(int combination, int part) = 0;
  virtual const char* getGestureCombinationName(int combination) = 0;
  virtual int getGestureCombinationNameLength(int combination) = 0;
  virtual int copyGestureCombinationName(int combination, char* buffer, int bufferSize) = 0;
  virtual int setGestureCombinationName(int combination, const char* name) = 0;
  virtual Metadata* getGestureCombinationMetadata(int combination) = 0;
  virtual int setGestureCombinationMetadata(int combination, Metadata* metadata) = 0;

  /* ---- Training of all parts ---- */
  virtual int getTrainingParameter(int id) = 0;
  virtual int setTrainingParameter(int id, int value) = 0;
  /* Starts every enabled part; at most getMaxTrainingThreads() compute at once. 0, -8, -15, -17,
   * -9 (no enabled part) or a part's code. */
  virtual int startTraining() = 0;
  virtual bool isTraining() = 0;
  virtual int stopTraining() = 0;
  /* The share of combinations recognised when samples are replayed; -8.0 while training. */
  virtual double recognitionScore() = 0;
  virtual int getMaxTrainingTime() = 0;
  virtual void setMaxTrainingTime(int seconds) = 0;
  virtual int getMaxTrainingThreads() = 0;
  /* 0 or below: no limit. */
  virtual void setMaxTrainingThreads(int threads) = 0;

  /* ---- Settings and metadata ---- */
  virtual int setUpdateHeadPositionPolicy(int part, int policy) = 0;
  virtual int getUpdateHeadPositionPolicy(int part) = 0;
  virtual int setMetadata(Metadata* metadata) = 0;
  virtual Metadata* getMetadata() = 0;
  /* The first non-zero selfTest result of the parts, else 0. Not exported as a flat function. */
  virtual int selfTest() = 0;

  /* ---- Enhanced recognition (an addition; off unless switched on) ---- */
  /* The recogniser's enhanced recognition mode for every part, saved in the combination file.
   * 0, -8 while training, -15 while loading, -18 for a value other than 0 and 1. */
  virtual int setEnhancedRecognition(int on) = 0;
  /* 1 when the mode is on, else 0. */
  virtual int getEnhancedRecognition() = 0;

  /* ---- Continuous detection (an addition; nothing changes until it is used) ---- */
  /* The host's time for every part: see IGestureRecognition::setHostTime. */
  virtual int setHostTime(double seconds) = 0;
  /* Call once a frame, after every part's hand pose went into strokes started with index -1.
   * Returns 1 on the frame on which a combination has been performed (the gesture of each of
   * its parts performed together, and no gesture by the parts it marks -1), with its index in
   * *combination and a confidence from 0 to 1 in *confidence; 0 on every other frame. A part
   * without a started stroke performs nothing; -12 when no part has one. -8 while training, -15
   * while loading, -18 for a null or non-finite head pose or null outputs, -9 without
   * combinations. */
  virtual int contdDetect(const double headPosition[3], const double headRotation[4], int* combination,
                          double* confidence) = 0;
  virtual int contdDetectM(const double headMatrix[4][4], int* combination, double* confidence) = 0;
  /* The detection sensitivity of every part: see IGestureRecognition::setDetectionSensitivity. */
  virtual int setDetectionSensitivity(double sensitivity) = 0;
  virtual double getDetectionSensitivity() = 0;

  /* ---- Static functions ---- */
  /* A new object with that many parts (none for a number below 1). */
  static IGestureCombinations* create(int numberOfParts);
  static const char* getVersionString();
  static int getVersionStringLength();
  static int copyVersionString(char* dst, int dstSize);
};

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
/* Enhanced recognition (an addition): see IGestureRecognition::setEnhancedRecognition. */
ZANDO_API int GestureRecognition_setEnhancedRecognition(void* gro, int on);
ZANDO_API int GestureRecognition_getEnhancedRecognition(void* gro);
/* Continuous detection (an addition): see IGestureRecognition::setHostTime and contdDetect. */
ZANDO_API int GestureRecognition_setHostTime(void* gro, double seconds);
ZANDO_API int GestureRecognition_contdDetect(void* gro, const double hmd_p[3], const double hmd_q[4], int* gesture, double* confidence);
ZANDO_API int GestureRecognition_contdDetectM(void* gro, const double hmd[4][4], int* gesture, double* confidence);
ZANDO_API int GestureRecognition_setDetectionSensitivity(void* gro, double sensitivity);
/* The sensitivity, or -1 for a null handle. */
ZANDO_API double GestureRecognition_getDetectionSensitivity(void* gro);
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

/* ---- Combinations: several recognisers as parts of one object ---- */
/* A new object with that many parts, or null if memory could not be had. */
ZANDO_API void* GestureCombinations_create(int number_of_parts);
/* Deletes the object after cancelling its background jobs and stopping its training; null does nothing. */
ZANDO_API void GestureCombinations_delete(void* gco);
ZANDO_API const char* GestureCombinations_getVersionString(void);
ZANDO_API int GestureCombinations_getVersionStringLength(void);
ZANDO_API int GestureCombinations_copyVersionString(char* dst, int dst_size);
ZANDO_API int GestureCombinations_numberOfParts(void* gco);
ZANDO_API int GestureCombinations_getPartEnabled(void* gco, int part);
ZANDO_API int GestureCombinations_setPartEnabled(void* gco, int part, int enabled);

ZANDO_API int GestureCombinations_startStroke(void* gco, int part, const double hmd_p[3], const double hmd_q[4], int record_as_sample);
ZANDO_API int GestureCombinations_startStrokeM(void* gco, int part, const double hmd[4][4], int record_as_sample);
ZANDO_API int GestureCombinations_updateHeadPositionM(void* gco, const double hmd[4][4]);
ZANDO_API int GestureCombinations_updateHeadPositionQ(void* gco, const double hmd_p[3], const double hmd_q[4]);
ZANDO_API int GestureCombinations_contdStroke(void* gco, int part, const double p[3]);
ZANDO_API int GestureCombinations_contdStrokeQ(void* gco, int part, const double p[3], const double q[4]);
ZANDO_API int GestureCombinations_contdStrokeE(void* gco, int part, const double p[3], const double r[3]);
ZANDO_API int GestureCombinations_contdStrokeM(void* gco, int part, const double m[4][4]);
ZANDO_API int GestureCombinations_endStroke(void* gco, int part, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
ZANDO_API int GestureCombinations_getPartProbabilitiesAndSimilarities(void* gco, int part, double* p, double* s, int* n);
ZANDO_API int GestureCombinations_isStrokeStarted(void* gco, int part);
ZANDO_API int GestureCombinations_pruneStroke(void* gco, int part, int max_points, int max_age_ms);
ZANDO_API int GestureCombinations_cancelStroke(void* gco, int part);

ZANDO_API int GestureCombinations_identifyGestureCombination(void* gco, double* probability, double* similarity, double* part_probabilities, double* part_similarities);
ZANDO_API int GestureCombinations_contdIdentify(void* gco, const double hmd_p[3], const double hmd_q[4], double* similarity, double* part_probabilities, double* part_similarities);
ZANDO_API int GestureCombinations_contdIdentifyM(void* gco, const double hmd[4][4], double* similarity, double* part_probabilities, double* part_similarities);
ZANDO_API int GestureCombinations_contdIdentifyGetLastStrokeInfo(void* gco, int part, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
ZANDO_API int GestureCombinations_contdRecord(void* gco, const double hmd_p[3], const double hmd_q[4]);
ZANDO_API int GestureCombinations_contdRecordM(void* gco, const double hmd[4][4]);
ZANDO_API int GestureCombinations_contdRecordPart(void* gco, int part, const double hmd_p[3], const double hmd_q[4]);
ZANDO_API int GestureCombinations_contdRecordPartM(void* gco, int part, const double hmd[4][4]);
ZANDO_API int GestureCombinations_getContdIdentificationPeriod(void* gco, int part);
ZANDO_API int GestureCombinations_setContdIdentificationPeriod(void* gco, int part, int ms);
ZANDO_API int GestureCombinations_getContdIdentificationSmoothing(void* gco, int part);
ZANDO_API int GestureCombinations_setContdIdentificationSmoothing(void* gco, int part, int samples);

ZANDO_API int GestureCombinations_numberOfGestures(void* gco, int part);
ZANDO_API int GestureCombinations_deleteGesture(void* gco, int part, int index);
ZANDO_API int GestureCombinations_deleteAllGestures(void* gco, int part);
ZANDO_API int GestureCombinations_createGesture(void* gco, int part, const char* name, void* metadata);
ZANDO_API int GestureCombinations_copyGesture(void* gco, int from_part, int from_gesture, int to_part, int to_gesture, int mirror_axis);
ZANDO_API double GestureCombinations_gestureRecognitionScore(void* gco, int part);
ZANDO_API const char* GestureCombinations_getGestureName(void* gco, int part, int index);
ZANDO_API int GestureCombinations_getGestureNameLength(void* gco, int part, int index);
ZANDO_API int GestureCombinations_copyGestureName(void* gco, int part, int index, char* buf, int buflen);
ZANDO_API void* GestureCombinations_getGestureMetadata(void* gco, int part, int index);
ZANDO_API int GestureCombinations_getGestureEnabled(void* gco, int part, int index);
ZANDO_API int GestureCombinations_getGestureNumberOfSamples(void* gco, int part, int index);
ZANDO_API int GestureCombinations_getGestureSampleType(void* gco, int part, int gesture_index, int sample_index);
ZANDO_API int GestureCombinations_setGestureSampleType(void* gco, int part, int gesture_index, int sample_index, int sample_type);
ZANDO_API int GestureCombinations_getGestureSampleLength(void* gco, int part, int gesture_index, int sample_index, int processed);
ZANDO_API int GestureCombinations_getGestureSampleStroke(void* gco, int part, int gesture_index, int sample_index, int processed, int stroke_buf_size, double (*hands_p)[3], double (*hands_q)[4], double (*hmd_p)[3], double (*hmd_q)[4]);
ZANDO_API int GestureCombinations_getGestureMeanLength(void* gco, int part, int gesture_index);
ZANDO_API int GestureCombinations_getGestureMeanStroke(void* gco, int part, int gesture_index, double (*p)[3], double (*q)[4], int stroke_buf_size, double stroke_p[3], double stroke_q[4], double* stroke_scale);
ZANDO_API int GestureCombinations_deleteGestureSample(void* gco, int part, int gesture_index, int sample_index);
ZANDO_API int GestureCombinations_deleteAllGestureSamples(void* gco, int part, int gesture_index);
ZANDO_API int GestureCombinations_setGestureName(void* gco, int part, int index, const char* name);
ZANDO_API int GestureCombinations_setGestureMetadata(void* gco, int part, int index, void* metadata);
ZANDO_API int GestureCombinations_setGestureEnabled(void* gco, int part, int index, int enabled);

ZANDO_API int GestureCombinations_saveToFile(void* gco, const char* path);
ZANDO_API int GestureCombinations_loadFromFile(void* gco, const char* path, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_loadFromBuffer(void* gco, const char* buffer, int size, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_importFromFile(void* gco, const char* path, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_importFromBuffer(void* gco, const char* buffer, int size, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_saveGestureToFile(void* gco, int part, const char* path);
ZANDO_API int GestureCombinations_loadGestureFromFile(void* gco, int part, const char* path, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_loadGestureFromBuffer(void* gco, int part, const char* buffer, int size, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_saveToFileAsync(void* gco, const char* path);
ZANDO_API int GestureCombinations_setSavingUpdateCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureCombinations_setSavingUpdateCallbackMetadata(void* gco, void* metadata);
ZANDO_API int GestureCombinations_setSavingFinishCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureCombinations_setSavingFinishCallbackMetadata(void* gco, void* metadata);
ZANDO_API int GestureCombinations_isSaving(void* gco);
ZANDO_API int GestureCombinations_cancelSaving(void* gco);
ZANDO_API int GestureCombinations_loadFromFileAsync(void* gco, const char* path, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_loadFromBufferAsync(void* gco, const char* buffer, int size, GestureRecognition_MetadataCreatorFunction createMetadata);
ZANDO_API int GestureCombinations_setLoadingUpdateCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureCombinations_setLoadingUpdateCallbackMetadata(void* gco, void* metadata);
ZANDO_API int GestureCombinations_setLoadingFinishCallbackFunction(void* gco, GestureRecognition_IOCallbackFunction callback);
ZANDO_API int GestureCombinations_setLoadingFinishCallbackMetadata(void* gco, void* metadata);
ZANDO_API int GestureCombinations_isLoading(void* gco);
ZANDO_API int GestureCombinations_cancelLoading(void* gco);

ZANDO_API int GestureCombinations_numberOfGestureCombinations(void* gco);
ZANDO_API int GestureCombinations_deleteGestureCombination(void* gco, int combination);
ZANDO_API int GestureCombinations_deleteAllGestureCombinations(void* gco);
ZANDO_API int GestureCombinations_createGestureCombination(void* gco, const char* name);
ZANDO_API int GestureCombinations_setCombinationPartGesture(void* gco, int combination, int part, int gesture);
ZANDO_API int GestureCombinations_getCombinationPartGesture(void* gco, int combination, int part);
ZANDO_API const char* GestureCombinations_getGestureCombinationName(void* gco, int combination);
ZANDO_API int GestureCombinations_getGestureCombinationNameLength(void* gco, int combination);
ZANDO_API int GestureCombinations_copyGestureCombinationName(void* gco, int combination, char* buf, int buflen);
ZANDO_API int GestureCombinations_setGestureCombinationName(void* gco, int combination, const char* name);
ZANDO_API void* GestureCombinations_getGestureCombinationMetadata(void* gco, int combination);
ZANDO_API int GestureCombinations_setGestureCombinationMetadata(void* gco, int combination, void* metadata);

ZANDO_API int GestureCombinations_getTrainingParameter(void* gco, int id);
ZANDO_API int GestureCombinations_setTrainingParameter(void* gco, int id, int value);
ZANDO_API int GestureCombinations_startTraining(void* gco);
ZANDO_API int GestureCombinations_isTraining(void* gco);
ZANDO_API int GestureCombinations_stopTraining(void* gco);
ZANDO_API double GestureCombinations_recognitionScore(void* gco);
ZANDO_API int GestureCombinations_getMaxTrainingTime(void* gco);
ZANDO_API void GestureCombinations_setMaxTrainingTime(void* gco, int t);
/* Answers the maximum training time, as GestureCombinations_getMaxTrainingTime does; the thread
 * limit itself is read through IGestureCombinations::getMaxTrainingThreads. */
ZANDO_API int GestureCombinations_getMaxTrainingThreads(void* gco);
ZANDO_API void GestureCombinations_setMaxTrainingThreads(void* gco, int n);
ZANDO_API void GestureCombinations_setTrainingUpdateCallback(void* gco, GestureRecognition_TrainingCallbackFunction cbf);
ZANDO_API void GestureCombinations_setTrainingFinishCallback(void* gco, GestureRecognition_TrainingCallbackFunction cbf);
ZANDO_API void GestureCombinations_setTrainingUpdateCallbackMetadata(void* gco, void* metadata);
ZANDO_API void GestureCombinations_setTrainingFinishCallbackMetadata(void* gco, void* metadata);

ZANDO_API int GestureCombinations_setUpdateHeadPositionPolicy(void* gco, int part, int policy);
ZANDO_API int GestureCombinations_getUpdateHeadPositionPolicy(void* gco, int part);
ZANDO_API int GestureCombinations_getIgnoreHeadRotationX(void* gco);
ZANDO_API void GestureCombinations_setIgnoreHeadRotationX(void* gco, int on_off);
ZANDO_API int GestureCombinations_getIgnoreHeadRotationY(void* gco);
ZANDO_API void GestureCombinations_setIgnoreHeadRotationY(void* gco, int on_off);
ZANDO_API int GestureCombinations_getIgnoreHeadRotationZ(void* gco);
ZANDO_API void GestureCombinations_setIgnoreHeadRotationZ(void* gco, int on_off);
ZANDO_API int GestureCombinations_getRotationalFrameOfReferenceX(void* gco);
ZANDO_API void GestureCombinations_setRotationalFrameOfReferenceX(void* gco, int i);
ZANDO_API int GestureCombinations_getRotationalFrameOfReferenceY(void* gco);
ZANDO_API void GestureCombinations_setRotationalFrameOfReferenceY(void* gco, int i);
ZANDO_API int GestureCombinations_getRotationalFrameOfReferenceZ(void* gco);
ZANDO_API void GestureCombinations_setRotationalFrameOfReferenceZ(void* gco, int i);
ZANDO_API int GestureCombinations_getRotationalFrameOfReferenceRotationOrder(void* gco);
ZANDO_API void GestureCombinations_setRotationalFrameOfReferenceRotationOrder(void* gco, int i);
ZANDO_API int GestureCombinations_setMetadata(void* gco, void* metadata);
ZANDO_API void* GestureCombinations_getMetadata(void* gco);
/* Enhanced recognition (an addition) for every part: see IGestureCombinations::setEnhancedRecognition. */
ZANDO_API int GestureCombinations_setEnhancedRecognition(void* gco, int on);
ZANDO_API int GestureCombinations_getEnhancedRecognition(void* gco);
/* Continuous detection (an addition) for every part: see IGestureCombinations::contdDetect. */
ZANDO_API int GestureCombinations_setHostTime(void* gco, double seconds);
ZANDO_API int GestureCombinations_contdDetect(void* gco, const double hmd_p[3], const double hmd_q[4], int* combination, double* confidence);
ZANDO_API int GestureCombinations_contdDetectM(void* gco, const double hmd[4][4], int* combination, double* confidence);
ZANDO_API int GestureCombinations_setDetectionSensitivity(void* gco, double sensitivity);
/* The sensitivity, or -1 for a null handle. */
ZANDO_API double GestureCombinations_getDetectionSensitivity(void* gco);

#ifdef __cplusplus
} /* extern "C" */

/* Stream forms, for C++ hosts only. */
extern "C" ZANDO_API int GestureRecognition_saveToStream(void* gro, std::ostream* stream);
extern "C" ZANDO_API int GestureRecognition_loadFromStream(void* gro, std::istream* stream, GestureRecognition_MetadataCreatorFunction createMetadata);
extern "C" ZANDO_API int GestureRecognition_importFromStream(void* gro, std::istream* stream, GestureRecognition_MetadataCreatorFunction createMetadata);
extern "C" ZANDO_API int GestureCombinations_loadFromStream(void* gco, std::istream* stream, GestureRecognition_MetadataCreatorFunction createMetadata);
extern "C" ZANDO_API int GestureCombinations_importFromStream(void* gco, std::istream* stream, GestureRecognition_MetadataCreatorFunction createMetadata);
#endif

#endif /* ZANDO_ZANDO_H */
