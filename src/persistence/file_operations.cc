// Saving, loading and importing gesture sets: archives, bare text files, memory buffers and
// streams, on top of the database text format.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_set>

#include "model/shape_identification.h"
#include "persistence/archive.h"
#include "persistence/background_job.h"
#include "persistence/database_format.h"
#include "recognition/gesture_recognition.h"

namespace zando {

namespace {

void forwardSaveProgress(int percent, void* context) {
  auto* recognizer = static_cast<GestureRecognition*>(context);
  if (recognizer->savingUpdateCallback != nullptr) {
    recognizer->savingUpdateCallback(percent, recognizer->savingUpdateMetadata);
  }
}

void forwardLoadProgress(int percent, void* context) {
  auto* recognizer = static_cast<GestureRecognition*>(context);
  if (recognizer->loadingUpdateCallback != nullptr) {
    recognizer->loadingUpdateCallback(percent, recognizer->loadingUpdateMetadata);
  }
}

Stroke* copyStroke(const Stroke& stroke) { return new Stroke(stroke); }

}  // namespace

// The enhanced recognition mode travels as a member of its own, written only when the mode is on:
// readers that do not know it never open it, and a file of the plain mode stays as it was.
const char* const kEnhancedMember = "enhanced.txt";
const char* const kEnhancedContent = "enhanced recognition 1\n";

bool enhancedMemberSaysOn(const std::string& content) {
  std::string text = content;
  trimLine(text);
  return text == "enhanced recognition 1";
}

const char* const kDetectionMember = "detection.txt";

std::string detectionMemberText(double sensitivity) {
  char text[64];
  std::snprintf(text, sizeof(text), "detection sensitivity %.17g\n", sensitivity);
  return text;
}

double detectionSensitivityFrom(const std::string& content) {
  std::string text = content;
  trimLine(text);
  const std::string prefix = "detection sensitivity ";
  if (text.size() > 64 || text.compare(0, prefix.size(), prefix) != 0) return kDefaultDetectionSensitivity;
  char* end = nullptr;
  const std::string number = text.substr(prefix.size());
  const double value = std::strtod(number.c_str(), &end);
  if (end == number.c_str() || *end != '\0' || !(value >= 0.0 && value <= 1.0)) return kDefaultDetectionSensitivity;
  return value;
}

// ---- Saving ----

int GestureRecognition::saveToFile(const char* path) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  FinishingJobEntry job(savingState);
  if (job.busy()) return ReturnCode_LoadingInProgress;  // -15 here, not -17, as hosts expect
  if (path == nullptr || path[0] == '\0') return ReturnCode_InvalidPath;
  copyFrameToModel();
  gestureModel.saveProgress = &forwardSaveProgress;
  gestureModel.saveProgressContext = this;
  std::string text;
  StringOutputBuffer buffer(text);
  std::ostream stream(&buffer);
  const int written = writeGestureDatabase(gestureModel, stream, this);
  if (written < 0) return written;
  if (!stream.good()) return ReturnCode_StreamError;
  const std::streamoff position = stream.tellp();
  if (position <= 0 || static_cast<size_t>(position) != text.size()) return ReturnCode_StreamError;
  if (isFolder(path)) return ReturnCode_CannotReplaceFile;  // never removed in place of a file
  // An existing file goes first: a new archive is written, never a member added to an old one.
  if (!removeOldFile(path)) return ReturnCode_CannotReplaceFile;
  if (!writeArchiveMember(path, kDatabaseMember, text)) return ReturnCode_InvalidPath;
  if (gestureModel.enhancedRecognition && !appendArchiveMember(path, kEnhancedMember, kEnhancedContent)) {
    return ReturnCode_InvalidPath;
  }
  const double sensitivity = gestureModel.detectionSensitivity;
  if (sensitivity != kDefaultDetectionSensitivity &&
      !appendArchiveMember(path, kDetectionMember, detectionMemberText(sensitivity))) {
    return ReturnCode_InvalidPath;
  }
  return ReturnCode_Success;
}

int GestureRecognition::saveToStream(std::ostream* stream) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (stream == nullptr) return ReturnCode_InvalidParameter;
  copyFrameToModel();
  gestureModel.saveProgress = &forwardSaveProgress;
  gestureModel.saveProgressContext = this;
  return writeGestureDatabase(gestureModel, *stream, this);
}

// ---- Loading ----

namespace {

// Reads a database from a file: the archive's member if there is one, else the file as text. A
// successful read sets the model's enhanced mode to what the archive says (a text file: off).
int readFromPath(GestureModel& model, const char* path, IGestureRecognition::MetadataCreatorFunction creator,
                 IGestureRecognition* owner) {
  std::string text;
  if (readArchiveMember(path, kDatabaseMember, text)) {
    MemoryInputBuffer buffer(text.data(), text.size());
    std::istream stream(&buffer);
    const int result = readGestureDatabase(model, stream, creator, owner);
    if (result >= 0) {
      model.enhancedRecognition = readArchiveMember(path, kEnhancedMember, text) && enhancedMemberSaysOn(text);
      model.detectionSensitivity = readArchiveMember(path, kDetectionMember, text) ? detectionSensitivityFrom(text)
                                                                                   : kDefaultDetectionSensitivity;
      prepareShapes(model);
    }
    return result;
  }
  std::ifstream file(filePath(path), std::ios::binary);
  if (!file.is_open()) return ReturnCode_InvalidPath;
  const int result = readGestureDatabase(model, file, creator, owner);
  if (result >= 0) {
    model.enhancedRecognition = false;
    model.detectionSensitivity = kDefaultDetectionSensitivity;
  }
  return result;
}

int readFromBuffer(GestureModel& model, const char* data, int size,
                   IGestureRecognition::MetadataCreatorFunction creator, IGestureRecognition* owner) {
  std::string text;
  const size_t bytes = static_cast<size_t>(size);
  if (readArchiveMemberFromBuffer(data, bytes, kDatabaseMember, text)) {
    MemoryInputBuffer buffer(text.data(), text.size());
    std::istream stream(&buffer);
    const int result = readGestureDatabase(model, stream, creator, owner);
    if (result >= 0) {
      model.enhancedRecognition =
          readArchiveMemberFromBuffer(data, bytes, kEnhancedMember, text) && enhancedMemberSaysOn(text);
      model.detectionSensitivity = readArchiveMemberFromBuffer(data, bytes, kDetectionMember, text)
                                       ? detectionSensitivityFrom(text)
                                       : kDefaultDetectionSensitivity;
      prepareShapes(model);
    }
    return result;
  }
  MemoryInputBuffer buffer(data, bytes);
  std::istream stream(&buffer);
  const int result = readGestureDatabase(model, stream, creator, owner);
  if (result >= 0) {
    model.enhancedRecognition = false;
    model.detectionSensitivity = kDefaultDetectionSensitivity;
  }
  return result;
}

}  // namespace

int GestureRecognition::loadFromFile(const char* path, MetadataCreatorFunction metadataCreator) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  FinishingJobEntry job(loadingState);
  if (job.busy()) return ReturnCode_LoadingInProgress;
  if (path == nullptr || path[0] == '\0') return ReturnCode_InvalidPath;
  gestureModel.loadProgress = &forwardLoadProgress;
  gestureModel.loadProgressContext = this;
  const int result = readFromPath(gestureModel, path, metadataCreator, this);
  if (result >= 0) copyFrameFromModel();
  return result;
}

int GestureRecognition::loadFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  FinishingJobEntry job(loadingState);
  if (job.busy()) return ReturnCode_LoadingInProgress;
  if (buffer == nullptr || size < 0) return ReturnCode_InvalidParameter;
  gestureModel.loadProgress = &forwardLoadProgress;
  gestureModel.loadProgressContext = this;
  const int result = readFromBuffer(gestureModel, buffer, size, metadataCreator, this);
  if (result >= 0) copyFrameFromModel();
  return result;
}

int GestureRecognition::loadFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (stream == nullptr) return ReturnCode_InvalidParameter;
  gestureModel.loadProgress = &forwardLoadProgress;
  gestureModel.loadProgressContext = this;
  const int result = readGestureDatabase(gestureModel, *stream, metadataCreator, this);
  if (result >= 0) copyFrameFromModel();
  return result;
}

// ---- Importing ----

namespace {

// Appends the gestures of `from` to `into` by name: samples of a gesture whose name is already
// present join that gesture, others come as new gestures. Settings, weights and statistics of
// `from` are not taken.
void mergeModels(GestureModel& into, const GestureModel& from, std::vector<int>* mapping) {
  if (mapping != nullptr) mapping->resize(from.gestures.size());
  for (size_t i = 0; i < from.gestures.size(); ++i) {
    const Gesture& source = *from.gestures[i];
    int target = -1;
    for (size_t k = 0; k < into.gestures.size(); ++k) {
      if (into.gestures[k]->gestureName == source.gestureName) {
        target = static_cast<int>(k);
        break;
      }
    }
    if (target < 0) {
      auto* copy = new Gesture(source.gestureName, source.gestureMetadata);
      copy->gestureEnabled = source.gestureEnabled;
      into.gestures.push_back(copy);
      target = into.gestureCount() - 1;
    }
    Gesture& destination = *into.gestures[static_cast<size_t>(target)];
    for (const Stroke* sample : source.gestureSamples) destination.gestureSamples.push_back(copyStroke(*sample));
    if (mapping != nullptr) (*mapping)[i] = target;
  }
}

// The reader made metadata objects for the file's set and its gestures. Those of gestures that
// came over as new ones now belong to the host; the rest (the set's, those of gestures that joined
// one already here, all of a failed import) would reach nobody, so they go with the file's model.
void discardUnclaimedMetadata(GestureModel& imported, const GestureModel& into) {
  std::unordered_set<const IGestureRecognition::Metadata*> claimed;
  for (const Gesture* gesture : into.gestures) claimed.insert(gesture->gestureMetadata);
  for (Gesture* gesture : imported.gestures) {
    if (claimed.count(gesture->gestureMetadata) == 0) delete gesture->gestureMetadata;
    gesture->gestureMetadata = nullptr;
  }
  delete imported.metadata;
  imported.metadata = nullptr;
}

}  // namespace

template <typename Read>
static int importWith(GestureRecognition& self, std::vector<int>* mapping, Read&& read) {
  if (self.isTraining()) return ReturnCode_TrainingInProgress;
  if (self.isLoading()) return ReturnCode_LoadingInProgress;
  if (self.isSaving()) return ReturnCode_SavingInProgress;
  GestureModel imported;
  imported.loadProgress = &forwardLoadProgress;
  imported.loadProgressContext = &self;
  const int result = read(imported);
  if (result == 0) mergeModels(self.gestureModel, imported, mapping);
  discardUnclaimedMetadata(imported, self.gestureModel);
  return result;
}

int GestureRecognition::importFromFile(const char* path, MetadataCreatorFunction metadataCreator,
                                       std::vector<int>* mapping) {
  return importWith(*this, mapping, [&](GestureModel& model) {
    if (path == nullptr || path[0] == '\0') return static_cast<int>(ReturnCode_InvalidPath);
    return readFromPath(model, path, metadataCreator, this);
  });
}

int GestureRecognition::importFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator,
                                         std::vector<int>* mapping) {
  return importWith(*this, mapping, [&](GestureModel& model) {
    if (buffer == nullptr || size < 0) return static_cast<int>(ReturnCode_InvalidParameter);
    return readFromBuffer(model, buffer, size, metadataCreator, this);
  });
}

int GestureRecognition::importFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator,
                                         std::vector<int>* mapping) {
  return importWith(*this, mapping, [&](GestureModel& model) {
    if (stream == nullptr) return static_cast<int>(ReturnCode_InvalidParameter);
    return readGestureDatabase(model, *stream, metadataCreator, this);
  });
}

int GestureRecognition::importGestureSamples(const IGestureRecognition* from, int fromGesture, int intoGesture) {
  if (from == nullptr) return ReturnCode_InvalidParameter;
  if (fromGesture < 0) return ReturnCode_InvalidIndex;
  const auto* source = dynamic_cast<const GestureRecognition*>(from);
  if (source == nullptr) return ReturnCode_InvalidParameter;
  const int ownCount = gestureModel.gestureCount();
  const int sourceCount = source->gestureModel.gestureCount();
  if (fromGesture > ownCount || fromGesture > sourceCount) return ReturnCode_InvalidIndex;
  if (intoGesture < 0 || intoGesture > ownCount) return ReturnCode_InvalidIndex;
  // An index equal to a count passes the tests above without naming a gesture; it is refused
  // here rather than read.
  if (fromGesture >= sourceCount || intoGesture >= ownCount) return ReturnCode_InvalidIndex;
  const std::vector<Stroke*>& samples = source->gestureModel.gestures[static_cast<size_t>(fromGesture)]->gestureSamples;
  std::vector<Stroke*>& target = gestureModel.gestures[static_cast<size_t>(intoGesture)]->gestureSamples;
  const size_t before = target.size();
  const size_t copied = samples.size();  // fixed first: the source may be the target itself
  for (size_t i = 0; i < copied; ++i) target.push_back(copyStroke(*samples[i]));
  return target.size() == before + copied ? ReturnCode_Success : ReturnCode_ResourceError;
}

int GestureRecognition::importGestures(const IGestureRecognition* from) {
  if (from == nullptr) return ReturnCode_InvalidParameter;
  const auto* source = dynamic_cast<const GestureRecognition*>(from);
  if (source == nullptr) return ReturnCode_InvalidParameter;
  const int sourceCount = source->gestureModel.gestureCount();
  for (int i = 0; i < sourceCount; ++i) {
    const Gesture& gesture = *source->gestureModel.gestures[static_cast<size_t>(i)];
    int found = -1;
    for (int k = 0; k < gestureModel.gestureCount(); ++k) {
      if (gestureModel.gestures[static_cast<size_t>(k)]->gestureName == gesture.gestureName) {
        found = k;
        break;
      }
    }
    if (found >= 0 && importGestureSamples(from, i, found) == 0) continue;
    const std::string name = gesture.gestureName;  // the source may be this object
    const int created = createGesture(name.c_str(), gesture.gestureMetadata);
    if (importGestureSamples(from, i, created) != 0) return ReturnCode_ResourceError;
  }
  return ReturnCode_Success;
}

}  // namespace zando
