// Several recognisers driven as one object: each part is a complete GestureRecognition, driven
// through the same operations a host would call; on top of them the list of combinations, the
// training of all parts under a thread limit and one archive for everything.
#ifndef ZANDO_COMBINATIONS_GESTURE_COMBINATIONS_H
#define ZANDO_COMBINATIONS_GESTURE_COMBINATIONS_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <istream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "recognition/continuous_detection.h"
#include "recognition/gesture_recognition.h"
#include "zando/zando.h"

namespace zando {

struct ArchiveSource;
struct TextStream;

// One combination: the gesture each part has to show at the same time; -1 means the part must
// do nothing.
struct GestureCombination {
  std::string name;
  int partCount = 0;
  std::vector<int> partGestures;
  IGestureRecognition::Metadata* metadata = nullptr;  // the application's, not owned
};

// What a part's training callbacks are handed, so that they find their owner and their index.
struct PartContext {
  class GestureCombinations* owner = nullptr;
  int part = -1;
};

// Where a part's last continuous window was: position, scale and the three directions.
struct StrokeInfo {
  double position[3] = {0, 0, 0};
  double scale = 0.0;
  double directions[3][3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
};

// The score computation drives the stroke machinery of every part from a training thread while
// the object still reports training. Forwarded stroke operations come from the application's
// thread and have no busy guard of their own on this object, so they pass through this gate:
// while the gate is closed they are refused with -8, and closing waits for those inside.
class PartAccessGate {
 public:
  bool enter() {
    users_.fetch_add(1);
    if (closed_.load()) {
      users_.fetch_sub(1);
      return false;
    }
    return true;
  }
  void leave() { users_.fetch_sub(1); }
  void close();
  void open() { closed_.store(false); }

 private:
  std::atomic<int> users_{0};
  std::atomic<bool> closed_{false};
};

class GestureCombinations : public IGestureCombinations {
 public:
  explicit GestureCombinations(int numberOfParts);
  ~GestureCombinations() override;
  GestureCombinations(const GestureCombinations&) = delete;
  GestureCombinations& operator=(const GestureCombinations&) = delete;

  // Allocates zero-filled memory and constructs in it, as the recogniser does.
  static GestureCombinations* createZeroFilled(int numberOfParts);

  // ---- Parts ----
  int numberOfParts() override;
  bool getPartEnabled(int part) override;
  int setPartEnabled(int part, bool enabled) override;

  // ---- Strokes ----
  int startStroke(int part, const double headPosition[3], const double headRotation[4], int gesture) override;
  int startStrokeM(int part, const double headMatrix[4][4], int gesture) override;
  int updateHeadPositionM(const double headMatrix[4][4]) override;
  int updateHeadPositionQ(const double headPosition[3], const double headRotation[4]) override;
  int contdStroke(int part, const double handPosition[3]) override;
  int contdStrokeQ(int part, const double handPosition[3], const double handRotation[4]) override;
  int contdStrokeE(int part, const double handPosition[3], const double handEuler[3]) override;
  int contdStrokeM(int part, const double handMatrix[4][4]) override;
  int endStroke(int part, double pos[3], double* scale, double dir0[3], double dir1[3], double dir2[3]) override;
  int getPartProbabilitiesAndSimilarities(int part, double* probabilities, double* similarities,
                                          int* count) override;
  bool isStrokeStarted(int part) override;
  int pruneStroke(int part, int maxPoints, int maxAgeMs) override;
  int cancelStroke(int part) override;

  // ---- Combinations identified ----
  int identifyGestureCombination(double* probability, double* similarity, double* partProbabilities,
                                 double* partSimilarities) override;
  int contdIdentify(const double headPosition[3], const double headRotation[4], double* similarity,
                    double* partProbabilities, double* partSimilarities) override;
  int contdIdentifyM(const double headMatrix[4][4], double* similarity, double* partProbabilities,
                     double* partSimilarities) override;
  int contdIdentifyGetLastStrokeInfo(int part, double pos[3], double* scale, double dir0[3], double dir1[3],
                                     double dir2[3]) override;
  int contdRecord(const double headPosition[3], const double headRotation[4]) override;
  int contdRecordM(const double headMatrix[4][4]) override;
  int contdRecordPart(int part, const double headPosition[3], const double headRotation[4]) override;
  int contdRecordPartM(int part, const double headMatrix[4][4]) override;
  int getContdIdentificationPeriod(int part) override;
  int setContdIdentificationPeriod(int part, int ms) override;
  int getContdIdentificationSmoothing(int part) override;
  int setContdIdentificationSmoothing(int part, int samples) override;

  // ---- Gesture stores of the parts ----
  int numberOfGestures(int part) override;
  int deleteGesture(int part, int index) override;
  int deleteAllGestures(int part) override;
  int createGesture(int part, const char* name, Metadata* metadata) override;
  int copyGesture(int fromPart, int fromGesture, int toPart, int toGesture, int mirrorAxis) override;
  double gestureRecognitionScore(int part) override;
  const char* getGestureName(int part, int index) override;
  int getGestureNameLength(int part, int index) override;
  int copyGestureName(int part, int index, char* buffer, int bufferSize) override;
  Metadata* getGestureMetadata(int part, int index) override;
  bool getGestureEnabled(int part, int index) override;
  int getGestureNumberOfSamples(int part, int index) override;
  int getGestureSampleType(int part, int gestureIndex, int sampleIndex) override;
  int setGestureSampleType(int part, int gestureIndex, int sampleIndex, int sampleType) override;
  int getGestureSampleLength(int part, int gestureIndex, int sampleIndex, bool processed) override;
  int getGestureSampleStroke(int part, int gestureIndex, int sampleIndex, bool processed, int bufferSize,
                             double (*handPositions)[3], double (*handRotations)[4], double (*headPositions)[3],
                             double (*headRotations)[4]) override;
  int getGestureMeanLength(int part, int gestureIndex) override;
  int getGestureMeanStroke(int part, int gestureIndex, double (*positions)[3], double (*rotations)[4],
                           int bufferSize, double strokePosition[3], double strokeRotation[4],
                           double* scale) override;
  int deleteGestureSample(int part, int gestureIndex, int sampleIndex) override;
  int deleteAllGestureSamples(int part, int gestureIndex) override;
  int setGestureName(int part, int index, const char* name) override;
  int setGestureMetadata(int part, int index, Metadata* metadata) override;
  int setGestureEnabled(int part, int index, bool enabled) override;

  // ---- Persistence ----
  int saveToFile(const char* path) override;
  int loadFromFile(const char* path, MetadataCreatorFunction metadataCreator) override;
  int loadFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) override;
  int loadFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) override;
  int importFromFile(const char* path, MetadataCreatorFunction metadataCreator) override;
  int importFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) override;
  int importFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) override;
  int saveGestureToFile(int part, const char* path) override;
  int loadGestureFromFile(int part, const char* path, MetadataCreatorFunction metadataCreator) override;
  int loadGestureFromBuffer(int part, const char* buffer, int size, MetadataCreatorFunction metadataCreator) override;
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

  // ---- Combination records ----
  int numberOfGestureCombinations() override;
  int deleteGestureCombination(int combination) override;
  int deleteAllGestureCombinations() override;
  int createGestureCombination(const char* name) override;
  int setCombinationPartGesture(int combination, int part, int gesture) override;
  int getCombinationPartGesture(int combination, int part) override;
  const char* getGestureCombinationName(int combination) override;
  int getGestureCombinationNameLength(int combination) override;
  int copyGestureCombinationName(int combination, char* buffer, int bufferSize) override;
  int setGestureCombinationName(int combination, const char* name) override;
  Metadata* getGestureCombinationMetadata(int combination) override;
  int setGestureCombinationMetadata(int combination, Metadata* metadata) override;

  // ---- Training ----
  int getTrainingParameter(int id) override;
  int setTrainingParameter(int id, int value) override;
  int startTraining() override;
  bool isTraining() override;
  int stopTraining() override;
  double recognitionScore() override;
  int getMaxTrainingTime() override;
  void setMaxTrainingTime(int seconds) override;
  int getMaxTrainingThreads() override;
  void setMaxTrainingThreads(int threads) override;

  // ---- Settings and metadata ----
  int setUpdateHeadPositionPolicy(int part, int policy) override;
  int getUpdateHeadPositionPolicy(int part) override;
  int setMetadata(Metadata* metadata) override;
  Metadata* getMetadata() override;
  int selfTest() override;
  int setEnhancedRecognition(int on) override;
  int getEnhancedRecognition() override;

  // ---- Continuous detection ----
  int setHostTime(double seconds) override;
  int contdDetect(const double headPosition[3], const double headRotation[4], int* combination,
                  double* confidence) override;
  int contdDetectM(const double headMatrix[4][4], int* combination, double* confidence) override;
  int setDetectionSensitivity(double sensitivity) override;
  double getDetectionSensitivity() override;

  // The part's training callbacks; they run on the part's training thread.
  static void trainingUpdateForwarder(double performance, void* context);
  static void trainingFinishForwarder(double performance, void* context);
  // The parts' save and load progress, turned into the percentage of the whole object.
  static void savingProgressForwarder(int percent, void* owner);
  static void loadingProgressForwarder(int percent, void* owner);

  // Replays random samples of every combination through the parts and identifies them; the
  // share recognised goes to the stored score (a code, as a negative value, on failure).
  void computeRecognitionScore();

  // ---- State, in declaration order behind the interface members ----
  std::vector<std::unique_ptr<GestureRecognition>> parts;
  std::vector<uint8_t> partEnabled;
  int partCount = 0;
  // Last probabilities and similarities of each part; the vectors only grow, and their size is
  // the capacity. partResultCount is -1 while a part has no fresh result.
  std::vector<std::vector<double>> partProbabilities;
  std::vector<std::vector<double>> partSimilarities;
  std::vector<int> partResultCount;
  std::vector<GestureCombination> combinations;
  std::vector<PartContext> partContext;
  std::vector<double> partBestPerformance;
  std::atomic<uint64_t> trainingMask{0};
  std::deque<int> runningParts;
  std::deque<int> waitingParts;
  std::atomic<int> maxTrainingThreads{2};
  std::atomic<int> loadingState{kJobIdle};
  int loadingPart = -1;
  GestureRecognition_IOCallbackFunction loadingUpdateCallback = nullptr;
  void* loadingUpdateMetadata = nullptr;
  GestureRecognition_IOCallbackFunction loadingFinishCallback = nullptr;
  void* loadingFinishMetadata = nullptr;
  std::atomic<int> savingState{kJobIdle};
  int savingPart = -1;
  GestureRecognition_IOCallbackFunction savingUpdateCallback = nullptr;
  void* savingUpdateMetadata = nullptr;
  GestureRecognition_IOCallbackFunction savingFinishCallback = nullptr;
  void* savingFinishMetadata = nullptr;
  std::vector<StrokeInfo> lastStrokeInfo;
  std::map<int, int> trainingParameters;
  double recognitionScoreValue = 0.0;  // -999.0: not computed yet
  Metadata* metadata = nullptr;
  std::mutex mutex;  // the training scheduler's lists and mask; the start handshake of jobs
  std::condition_variable condition;
  // Background save and load workers of this object still alive (the parts count their own).
  std::atomic<int> activeWorkers{0};
  PartAccessGate partGate;
  // Continuous detection: what each part performed lately, kept until a combination used it or
  // it is too old to be part of one.
  struct PartEvent {
    Detection detection;
    double reported = 0.0;  // when the part reported it, in seconds of the parts' clock
    bool used = false;
  };
  std::vector<std::vector<PartEvent>> partEvents;
  // What each part's detection learned from when the parts last agreed on what a moving gesture
  // measures: a hand whose gestures all rest is told by the other hands' gestures.
  std::vector<std::vector<uintptr_t>> detectionFingerprints;
  void shareGestureLength();
  // The combination whose parts have been performed together and nothing can change any more, or
  // -1; `found` gets its confidence.
  int completedCombination(double now, double& confidence);

  // Deletes all parts and builds `count` new ones, wired as the constructor wires them.
  void rebuildParts(int count);
  // Index check of the forwarding families; null when the index is bad.
  GestureRecognition* partAt(int index) const {
    return index >= 0 && index < partCount ? parts[static_cast<size_t>(index)].get() : nullptr;
  }
  bool validPart(int index) const { return index >= 0 && index < partCount; }
  // 0, or -15, -17, -8 while a load, a save or training owns the object, tested in that order.
  void setPartsEnhanced(bool on);
  void setPartsSensitivity(double sensitivity);
  int jobGuards() {
    if (isLoading()) return ReturnCode_LoadingInProgress;
    if (isSaving()) return ReturnCode_SavingInProgress;
    if (isTraining()) return ReturnCode_TrainingInProgress;
    return ReturnCode_Success;
  }
  // The four frame-of-reference values, handed to a part or taken back from one.
  void lendFrameTo(GestureRecognition& recognizer) const;
  void takeFrameFrom(const GestureRecognition& recognizer);
  // Grows the part's result arrays to its gesture count (at least 1) and marks them as full.
  void prepareResults(int index);
  // The choice among the combinations from the parts' fresh results, which it consumes.
  int selectCombination(double* probability, double* similarity, double* partProbabilitiesOut,
                        double* partSimilaritiesOut);
  // The list member of an archive, from its opening to the score line: the parts are rebuilt
  // empty, the combinations and the object's metadata and score read. 0 or a code.
  int readCombinationText(std::istream& in, MetadataCreatorFunction creator);
  // identifyGestureCombination without the gate, for the score computation.
  int identifyAfterStrokes(double* probability, double* similarity, double* partProbabilitiesOut,
                           double* partSimilaritiesOut);

 private:
  // The stream that part i is read from during an import; null when it is missing.
  using PartStreamSource = std::function<std::istream*(int part)>;

  void resetForLoad(int count);
  int readCombinationsAndTail(std::istream& in, int version, MetadataCreatorFunction creator);
  // One part's database, its frame taken over by the object, and (withFlag) its enabled line.
  int loadPart(int index, std::istream& in, MetadataCreatorFunction creator, bool withFlag);
  int loadArchive(const ArchiveSource& source, MetadataCreatorFunction creator);
  int importParts(std::istream& list, int version, const PartStreamSource& partStream,
                  MetadataCreatorFunction creator);
  int importArchive(const ArchiveSource& source, MetadataCreatorFunction creator);
  // The guards of a stroke start, and the owner's frame copied into the part; 0 or a code.
  int prepareStrokeStart(GestureRecognition& recognizer, int gesture);
  void wirePart(int index);
  void releaseParts();
  int replayForScore(int combination);
};

}  // namespace zando

#endif  // ZANDO_COMBINATIONS_GESTURE_COMBINATIONS_H
