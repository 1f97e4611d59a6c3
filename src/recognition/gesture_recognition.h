// The recogniser: stroke capture, the gesture store, identification, training and persistence of
// one gesture set, behind the IGestureRecognition interface.
#ifndef ZANDO_RECOGNITION_GESTURE_RECOGNITION_H
#define ZANDO_RECOGNITION_GESTURE_RECOGNITION_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "model/gesture_model.h"
#include "model/network_training.h"
#include "spatial/spatial.h"
#include "zando/zando.h"

namespace zando {

class ContinuousDetector;
struct Detection;

// Saving and loading move through the same five states as training: idle, requested, running,
// stop requested, finished.
constexpr int kJobIdle = TrainingState_Idle;
constexpr int kJobRequested = TrainingState_Starting;
constexpr int kJobRunning = TrainingState_Running;
constexpr int kJobStopRequested = TrainingState_Stopping;
constexpr int kJobFinished = TrainingState_Finished;

inline bool jobBusy(int state) { return state >= kJobRequested && state <= kJobStopRequested; }

class GestureRecognition : public IGestureRecognition {
 public:
  GestureRecognition();
  ~GestureRecognition() override;
  GestureRecognition(const GestureRecognition&) = delete;
  GestureRecognition& operator=(const GestureRecognition&) = delete;

  // Allocates zero-filled memory and constructs in it, so that nothing reads indeterminate bytes.
  static GestureRecognition* createZeroFilled();

  // ---- Stroke capture ----
  int startStroke(const double headPosition[3], const double headRotation[4], int gestureId) override;
  int startStrokeM(const double headMatrix[4][4], int gestureId) override;
  int setUpdateHeadPositionPolicy(int policy) override;
  int getUpdateHeadPositionPolicy() override;
  int updateHeadPositionM(const double headMatrix[4][4]) override;
  int updateHeadPositionQ(const double headPosition[3], const double headRotation[4]) override;
  int contdStroke(const double handPosition[3]) override;
  int contdStrokeQ(const double handPosition[3], const double handRotation[4]) override;
  int contdStrokeE(const double handPosition[3], const double handEuler[3]) override;
  int contdStrokeM(const double handMatrix[4][4]) override;
  int endStroke(double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]) override;
  int endStrokeAndGetAllProbabilities(double* probabilities, int* count, double pos[3], double* scale,
                                      double dir0[3], double dir1[3], double dir2[3]) override;
  int endStrokeAndGetSimilarity(double* similarity, double pos[3], double* scale, double dir0[3], double dir1[3],
                                double dir2[3]) override;
  int endStrokeAndGetAllProbabilitiesAndSimilarities(double* probabilities, double* similarities, int* count,
                                                     double pos[3], double* scale, double dir0[3],
                                                     double dir1[3], double dir2[3]) override;
  bool isStrokeStarted() override;
  int pruneStroke(int maxPoints, int maxAgeMs) override;
  int cancelStroke() override;

  // ---- Continuous identification ----
  int contdIdentify(const double headPosition[3], const double headRotation[4], double* similarity) override;
  int contdIdentifyM(const double headMatrix[4][4], double* similarity) override;
  int contdIdentifyAndGetAllProbabilitiesAndSimilarities(const double headPosition[3],
                                                         const double headRotation[4], double* probabilities,
                                                         double* similarities, int* count) override;
  int contdIdentifyAndGetAllProbabilitiesAndSimilaritiesM(const double headMatrix[4][4], double* probabilities,
                                                          double* similarities, int* count) override;
  int contdIdentifyAndGetStroke(const double headPosition[3], const double headRotation[4], double* similarity,
                                double pos[3], double* scale, double dir0[3], double dir1[3],
                                double dir2[3]) override;
  int contdIdentifyAndGetStrokeAndGetAllProbabilitiesAndSimilarities(const double headPosition[3],
                                                                     const double headRotation[4],
                                                                     double* probabilities, double* similarities,
                                                                     int* count, double pos[3], double* scale,
                                                                     double dir0[3], double dir1[3],
                                                                     double dir2[3]) override;
  int contdRecord(const double headPosition[3], const double headRotation[4]) override;
  int contdRecordM(const double headMatrix[4][4]) override;

  // ---- Gesture store ----
  int numberOfGestures() override;
  int deleteGesture(int index) override;
  int deleteAllGestures() override;
  int createGesture(const char* name, Metadata* metadata) override;
  double recognitionScore(bool recompute) override;
  const char* getGestureName(int index) override;
  int getGestureNameLength(int index) override;
  int copyGestureName(int index, char* buffer, int bufferSize) override;
  Metadata* getGestureMetadata(int index) override;
  bool getGestureEnabled(int index) override;
  int getGestureNumberOfSamples(int index) override;
  int getGestureSampleType(int gestureIndex, int sampleIndex) override;
  int setGestureSampleType(int gestureIndex, int sampleIndex, int sampleType) override;
  int getGestureSampleLength(int gestureIndex, int sampleIndex, bool processed) override;
  int getGestureSampleStroke(int gestureIndex, int sampleIndex, bool processed, int bufferSize,
                             double (*handPositions)[3], double (*handRotations)[4], double (*headPositions)[3],
                             double (*headRotations)[4]) override;
  int getGestureMeanLength(int gestureIndex) override;
  int getGestureMeanStroke(int gestureIndex, double (*positions)[3], double (*rotations)[4], int bufferSize,
                           double strokePosition[3], double strokeRotation[4], double* scale) override;
  int deleteGestureSample(int gestureIndex, int sampleIndex) override;
  int deleteAllGestureSamples(int gestureIndex) override;
  int setGestureName(int index, const char* name) override;
  int setGestureMetadata(int index, Metadata* metadata) override;
  int setGestureEnabled(int index, bool enabled) override;

  // ---- Persistence ----
  int saveToFile(const char* path) override;
  int saveToStream(std::ostream* stream) override;
  int loadFromFile(const char* path, MetadataCreatorFunction metadataCreator) override;
  int loadFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) override;
  int loadFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) override;
  int importFromFile(const char* path, MetadataCreatorFunction metadataCreator, std::vector<int>* mapping) override;
  int importFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator,
                       std::vector<int>* mapping) override;
  int importFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator,
                       std::vector<int>* mapping) override;
  int saveToFileAsync(const char* path) override;
  int setSavingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) override;
  int setSavingUpdateCallbackMetadata(void* metadata) override;
  int setSavingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) override;
  int setSavingFinishCallbackMetadata(void* metadata) override;
  bool isSaving() override;
  int cancelSaving() override;
  int loadFromFileAsync(const char* path, MetadataCreatorFunction metadataCreator) override;
  int loadFromBufferAsync(const char* buffer, int size, MetadataCreatorFunction metadataCreator) override;
  int setLoadingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) override;
  int setLoadingUpdateCallbackMetadata(void* metadata) override;
  int setLoadingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) override;
  int setLoadingFinishCallbackMetadata(void* metadata) override;
  bool isLoading() override;
  int cancelLoading() override;
  int importGestureSamples(const IGestureRecognition* from, int fromGesture, int intoGesture) override;
  int importGestures(const IGestureRecognition* from) override;

  // ---- Training ----
  int startTraining() override;
  bool isTraining() override;
  int stopTraining() override;
  int getTrainingParameter(int id) override;
  int setTrainingParameter(int id, int value) override;

  // ---- Metadata ----
  int setMetadata(Metadata* metadata) override;
  Metadata* getMetadata() override;

  int selfTest() override;

  // ---- Enhanced recognition ----
  int setEnhancedRecognition(int on) override;
  int getEnhancedRecognition() override;

  // ---- Continuous detection ----
  int setHostTime(double seconds) override;
  int contdDetect(const double headPosition[3], const double headRotation[4], int* gesture,
                  double* confidence) override;
  int contdDetectM(const double headMatrix[4][4], int* gesture, double* confidence) override;
  int setDetectionSensitivity(double sensitivity) override;
  double getDetectionSensitivity() override;

  // Copies the frame-of-reference members into the model's parameters before the model's
  // routines run (identification, training, saving).
  void copyFrameToModel();
  // Takes the frame of reference back from the model after a successful load.
  void copyFrameFromModel();
  // Replaces a raw continuous result by the winner over the recent history.
  void smoothContdResult(int& gesture, double& similarity);
  // Returns once no background thread of this object can touch it any more.
  void waitForWorkers();
  // contdDetect with the whole detection (times in seconds of the stroke's clock): 1, 0 or a code.
  int detectPerformed(const double headPosition[3], const double headRotation[4], Detection& found);
  // True for a gesture that detection takes as the hand resting (its samples hardly move).
  bool gestureIsStill(int gesture) const;
  // True while detection holds a match it has not yet reported or dropped.
  bool detectionPending() const;
  // "Now" in milliseconds: the host's time once it has given one, else the system clock.
  int64_t clockNow() const { return hostTimeMs >= 0 ? hostTimeMs.load() : nowMilliseconds(); }

  // ---- State, in declaration order behind the interface members ----
  bool strokeStarted = false;
  std::map<int, int> trainingParameters;
  uint8_t reportAllUpdates = 0;
  Stroke currentStroke;
  std::vector<std::pair<int, double>> contdHistory;
  int recordingGestureId = -1;
  int contdRecordCountdown = 10;
  GestureModel gestureModel;
  std::atomic<int> loadingState{kJobIdle};
  GestureRecognition_IOCallbackFunction loadingUpdateCallback = nullptr;
  void* loadingUpdateMetadata = nullptr;
  GestureRecognition_IOCallbackFunction loadingFinishCallback = nullptr;
  void* loadingFinishMetadata = nullptr;
  std::atomic<int> savingState{kJobIdle};
  GestureRecognition_IOCallbackFunction savingUpdateCallback = nullptr;
  void* savingUpdateMetadata = nullptr;
  GestureRecognition_IOCallbackFunction savingFinishCallback = nullptr;
  void* savingFinishMetadata = nullptr;
  int64_t trainingStartTime = 0;
  std::atomic<int> trainingState{kJobIdle};
  std::mutex startMutex;
  std::condition_variable startCondition;
  // Background threads that may still touch this object. A job reports "finished" before its
  // last callback returns, so the destructor waits for this count to reach zero as well.
  std::atomic<int> activeWorkers{0};
  // The host's frame time in milliseconds, or -1 for the system clock. Written by the host's
  // thread only; atomic because a background save may read stroke times alongside.
  std::atomic<int64_t> hostTimeMs{-1};
  // Continuous detection, made at its first use. The detector is fed the points of the current
  // stroke that came after the last point it took.
  std::unique_ptr<ContinuousDetector> detector;
  uint64_t strokeSerial = 0;  // counts started strokes, so the detector sees a new one
  uint64_t detectorStroke = 0;
  int64_t detectionEpochMs = 0;
  bool detectorFed = false;
  StrokePoint lastDetectedPoint{Unstamped{}};
  // What the moving gestures measure, when other sets (the other hands of a combination) decide
  // it too; 0: this set's own.
  double detectionReferenceLength = 0.0;

 private:
  // Appends a deep copy of the current stroke to the samples of recordingGestureId, if that is
  // still a valid gesture index.
  void storeCurrentStrokeAsSample();
  // Shared path of the end-of-stroke family; which = the operation, for its own quirks.
  enum class EndKind { Plain, Similarity, Probabilities, ProbabilitiesAndSimilarities };
  int finishStroke(EndKind kind, double* similarity, double* probabilities, double* similarities, int* count,
                   double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]);
  int appendHandPoint(const StrokePoint& point);
  // Cuts the running stroke to the time window ending now and marks it continuous; -7 when fewer
  // than two points remain. The time of the cut goes to *now if asked.
  int contdWindow(const double headPosition[3], const double headRotation[4], int64_t* now);
  // Feeds the detector the stroke's new points and reports what it confirms by now: 1 with the
  // detection, else 0.
  int detectInStroke(Detection& found);

  int beginStroke(const StrokePoint& head, int gestureId);
};

}  // namespace zando

#endif  // ZANDO_RECOGNITION_GESTURE_RECOGNITION_H
