// The combination file: an archive with the list of combinations ("combinations.txt") and one
// gesture database for each part; the two older single-stream layouts; imports that merge a file
// into this object; and the background forms of saving and loading.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <fstream>
#include <memory>
#include <string>

#include "combinations/gesture_combinations.h"
#include "model/shape_identification.h"
#include "persistence/archive.h"
#include "persistence/background_job.h"
#include "persistence/database_format.h"

namespace zando {

namespace {

constexpr const char* kCombinationsMember = "combinations.txt";
constexpr int kCombinationsVersion = 3;
constexpr unsigned kMaxParts = 100;
constexpr unsigned kMaxCombinations = 100;
constexpr unsigned kMaxPartEntries = 10000;
constexpr double kScoreNotComputed = -999.0;
constexpr const char* kMetadataMarker = "METADATA:";
constexpr const char* kNoMetadataMarker = "NO METADATA";
constexpr const char* kPartEnabled = "GRO_ENABLED";
constexpr const char* kPartDisabled = "GRO_DISABLED";

// The member of part i: the index is padded with a blank to two places, "part_ 0.txt".
std::string partMemberName(int part) {
  char name[32];
  std::snprintf(name, sizeof(name), "part_%2i.txt", part);
  return name;
}

// ---- Writing ----

void endLine(std::ostream& out) {
  out.put('\n');
  out.flush();
}

// "METADATA:" and the object's own block, or "NO METADATA"; false if the block failed to write.
bool writeMetadataBlock(std::ostream& out, IGestureRecognition::Metadata* metadata) {
  if (metadata == nullptr) {
    out << kNoMetadataMarker;
    endLine(out);
    return true;
  }
  out << kMetadataMarker;
  endLine(out);
  return metadata->writeToStream(out);
}

// The text must have reached the string whole: a good stream whose position is its length.
bool completeText(std::ostream& out, const std::string& text) {
  if (!out.good()) return false;
  const std::streamoff position = out.tellp();
  return position > 0 && static_cast<size_t>(position) == text.size();
}

// ---- Reading ----

void skipLineEnds(std::istream& in) {
  for (int c = in.peek(); c == '\r' || c == '\n'; c = in.peek()) in.get();
}

bool readLine(std::istream& in, std::string& line) {
  line.clear();
  return static_cast<bool>(std::getline(in, line));
}

std::string readTrimmedLine(std::istream& in) {
  std::string line;
  readLine(in, line);
  trimLine(line);
  return line;
}

// A count on a line of its own that must not exceed `limit` as unsigned; -1 for any failure.
int readCountLine(std::istream& in, unsigned limit) {
  int value = 0;
  in >> value;
  if (in.fail()) return -1;
  skipLineEnds(in);
  return static_cast<unsigned>(value) > limit ? -1 : value;
}

// The opening "M" and its version; with no "M" at all, `implicitVersion` (0: refused).
int readVersion(std::istream& in, int implicitVersion) {
  if (in.peek() != 'M') return implicitVersion;
  in.get();
  skipLineEnds(in);
  int version = 0;
  in >> version;
  if (in.fail()) return 0;
  skipLineEnds(in);
  return version;
}

// A metadata marker and its block. The new object lands in *out, or is deleted when out is null
// (imports read and drop blocks). 0, -18 for a block without a creator, -4 for any damage.
int readMetadataBlock(std::istream& in, IGestureRecognition::MetadataCreatorFunction creator,
                      IGestureRecognition::Metadata** out) {
  const std::string marker = readTrimmedLine(in);
  if (marker == kNoMetadataMarker) return ReturnCode_Success;
  if (marker != kMetadataMarker) return ReturnCode_InvalidFile;
  if (creator == nullptr) return ReturnCode_InvalidParameter;
  std::unique_ptr<IGestureRecognition::Metadata> block(creator());
  if (block == nullptr || !block->readFromStream(in)) return ReturnCode_InvalidFile;
  if (out != nullptr) *out = block.release();
  return ReturnCode_Success;
}

// One combination: name, metadata (from version 2), entry count and entries.
int readCombination(std::istream& in, int version, IGestureRecognition::MetadataCreatorFunction creator,
                    bool keepMetadata, GestureCombination& combination) {
  std::string name;
  combination.name = readLine(in, name) ? (trimLine(name), name) : std::string("ERROR");
  if (version >= 2) {
    const int read = readMetadataBlock(in, creator, keepMetadata ? &combination.metadata : nullptr);
    if (read != 0) return read;
  }
  const unsigned count = static_cast<unsigned>(std::atoi(readTrimmedLine(in).c_str()));
  if (count > kMaxPartEntries) return ReturnCode_InvalidFile;
  combination.partCount = static_cast<int>(count);
  combination.partGestures.clear();
  combination.partGestures.reserve(count);
  for (unsigned k = 0; k < count; ++k) {
    while (in.peek() == ' ') in.get();
    const int c = in.peek();
    if (c == std::char_traits<char>::eof() || c == '\n' || c == '\r') return ReturnCode_InvalidFile;
    int gesture = 0;
    in >> gesture;
    if (in.fail()) return ReturnCode_InvalidFile;
    combination.partGestures.push_back(gesture);
  }
  while (in.peek() == ' ') in.get();
  skipLineEnds(in);
  return ReturnCode_Success;
}

// The score line: NaN or a value above 1 is stored and refused. (strtod, as atof is defined, since
// the atof of Windows' C runtime reads neither "nan" nor "inf".)
int readScoreLine(std::istream& in, double& score) {
  std::string line;
  readLine(in, line);
  score = std::strtod(line.c_str(), nullptr);
  return std::isnan(score) || score > 1.0 ? ReturnCode_InvalidFile : ReturnCode_Success;
}

int readPartEnabled(std::istream& in, uint8_t& enabled) {
  const std::string line = readTrimmedLine(in);
  if (line == kPartEnabled) {
    enabled = 1;
  } else if (line == kPartDisabled) {
    enabled = 0;
  } else {
    return ReturnCode_InvalidFile;
  }
  return ReturnCode_Success;
}

}  // namespace

// Text held in memory and read as a stream.
struct TextStream {
  std::string text;
  std::unique_ptr<MemoryInputBuffer> buffer;
  std::unique_ptr<std::istream> stream;

  void open() {
    buffer = std::make_unique<MemoryInputBuffer>(text.data(), text.size());
    stream = std::make_unique<std::istream>(buffer.get());
  }
};

namespace {

}  // namespace

// Where an archive comes from: a path, or a buffer in memory.
struct ArchiveSource {
  const char* path = nullptr;
  const char* buffer = nullptr;
  int size = 0;

  bool extract(const char* member, TextStream& out) const {
    const bool found = path != nullptr
                           ? readArchiveMember(path, member, out.text)
                           : readArchiveMemberFromBuffer(buffer, static_cast<size_t>(size), member, out.text);
    if (found) out.open();
    return found;
  }
};

// ---- Saving ----

int GestureCombinations::saveToFile(const char* path) {
  if (path == nullptr) return ReturnCode_InvalidParameter;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  // The state moves to "finished" only at the end of a save that got through, or when an old
  // file could not be replaced; other failures leave it running.
  const JobEntry job(savingState);
  if (job.busy()) return ReturnCode_SavingInProgress;

  std::string text;
  {
    StringOutputBuffer buffer(text);
    std::ostream out(&buffer);
    out.setf(std::ios_base::scientific, std::ios_base::floatfield);
    out.precision(6);
    out << 'M' << kCombinationsVersion;
    endLine(out);
    out << partCount;
    endLine(out);
    out << static_cast<unsigned>(combinations.size());
    endLine(out);
    for (const GestureCombination& combination : combinations) {
      for (char c : combination.name) {
        if (c != '\n' && c != '\r') out.put(c);
      }
      endLine(out);
      if (!writeMetadataBlock(out, combination.metadata)) return ReturnCode_ResourceError;
      out << combination.partCount;
      endLine(out);
      for (int gesture : combination.partGestures) out << gesture << ' ';
      endLine(out);
    }
    writeMetadataBlock(out, metadata);
    out << recognitionScoreValue;
    endLine(out);
    if (!completeText(out, text)) return ReturnCode_StreamError;
  }

  if (isFolder(path)) {  // never removed in place of a file
    markJobFinished(savingState);
    return ReturnCode_CannotReplaceFile;
  }
  if (!removeOldFile(path)) {
    markJobFinished(savingState);
    return ReturnCode_CannotReplaceFile;
  }
  if (!appendArchiveMember(path, kCombinationsMember, text)) return ReturnCode_InvalidPath;

  for (int i = 0; i < partCount; ++i) {
    GestureRecognition* recognizer = partAt(i);
    if (recognizer == nullptr) return ReturnCode_ResourceError;
    std::string partText;
    StringOutputBuffer buffer(partText);
    std::ostream out(&buffer);
    savingPart = i;
    lendFrameTo(*recognizer);
    recognizer->savingUpdateCallback = &savingProgressForwarder;
    recognizer->savingUpdateMetadata = this;
    int result = recognizer->saveToStream(&out);
    if (result >= 0 && out.good()) {
      out << (partEnabled[static_cast<size_t>(i)] != 0 ? kPartEnabled : kPartDisabled);
      endLine(out);
    }
    if (result >= 0 && !out.good()) result = ReturnCode_StreamError;
    savingPart = -1;
    if (result < 0) return result;
    if (!completeText(out, partText)) return ReturnCode_StreamError;
    if (!appendArchiveMember(path, partMemberName(i).c_str(), partText)) return ReturnCode_StreamError;
  }
  if (getEnhancedRecognition() == 1 && !appendArchiveMember(path, kEnhancedMember, kEnhancedContent)) {
    return ReturnCode_StreamError;
  }
  const double sensitivity = getDetectionSensitivity();
  if (sensitivity != kDefaultDetectionSensitivity &&
      !appendArchiveMember(path, kDetectionMember, detectionMemberText(sensitivity))) {
    return ReturnCode_StreamError;
  }
  markJobFinished(savingState);
  return ReturnCode_Success;
}

void GestureCombinations::savingProgressForwarder(int percent, void* owner) {
  auto* self = static_cast<GestureCombinations*>(owner);
  if (self == nullptr || self->savingUpdateCallback == nullptr) return;
  // A part saved on its own reports nothing here.
  if (self->savingPart < 0 || self->partCount < 1) return;
  const float share = 100.0f * self->savingPart / self->partCount + static_cast<float>(percent) / self->partCount;
  self->savingUpdateCallback(static_cast<int>(share), self->savingUpdateMetadata);
}

void GestureCombinations::loadingProgressForwarder(int percent, void* owner) {
  auto* self = static_cast<GestureCombinations*>(owner);
  if (self == nullptr || self->loadingUpdateCallback == nullptr) return;
  if (self->loadingPart < 0 || self->partCount < 1) return;
  const float share = 100.0f * self->loadingPart / self->partCount + static_cast<float>(percent) / self->partCount;
  self->loadingUpdateCallback(static_cast<int>(share), self->loadingUpdateMetadata);
}

// ---- Loading ----

// Replaces the whole content: from here on the old parts and combinations are gone.
void GestureCombinations::resetForLoad(int count) {
  rebuildParts(count);
  combinations.clear();
  recognitionScoreValue = kScoreNotComputed;
  delete metadata;
  metadata = nullptr;
}

int GestureCombinations::readCombinationText(std::istream& in, MetadataCreatorFunction creator) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (readVersion(in, 0) != kCombinationsVersion) return ReturnCode_InvalidFile;
  const int count = readCountLine(in, kMaxParts);
  if (count < 0) return ReturnCode_InvalidFile;
  resetForLoad(count);
  return readCombinationsAndTail(in, kCombinationsVersion, creator);
}

int GestureCombinations::readCombinationsAndTail(std::istream& in, int version, MetadataCreatorFunction creator) {
  const int count = readCountLine(in, kMaxCombinations);
  if (count < 0) return ReturnCode_InvalidFile;
  for (int c = 0; c < count; ++c) {
    GestureCombination combination;
    const int read = readCombination(in, version, creator, true, combination);
    if (read != 0) {
      // A damaged record is not kept, and nobody else could free its block.
      delete combination.metadata;
      return read;
    }
    combinations.push_back(std::move(combination));
  }
  if (version < 2) return ReturnCode_Success;
  const int read = readMetadataBlock(in, creator, &metadata);
  if (read != 0) return read;
  return readScoreLine(in, recognitionScoreValue);
}

int GestureCombinations::loadPart(int index, std::istream& in, MetadataCreatorFunction creator, bool withFlag) {
  GestureRecognition& recognizer = *parts[static_cast<size_t>(index)];
  loadingPart = index;
  int result = recognizer.loadFromStream(&in, creator);
  if (result >= 0) {
    takeFrameFrom(recognizer);
    if (withFlag) result = readPartEnabled(in, partEnabled[static_cast<size_t>(index)]);
  }
  loadingPart = -1;
  return result;
}

int GestureCombinations::loadArchive(const ArchiveSource& source, MetadataCreatorFunction creator) {
  TextStream list;
  if (source.extract(kCombinationsMember, list)) {
    const int read = readCombinationText(*list.stream, creator);
    if (read != 0) return read;
    for (int i = 0; i < partCount; ++i) {
      TextStream member;
      if (!source.extract(partMemberName(i).c_str(), member)) return ReturnCode_StreamError;
      const int loaded = loadPart(i, *member.stream, creator, true);
      if (loaded < 0) return loaded;
    }
    TextStream mode;
    setPartsEnhanced(source.extract(kEnhancedMember, mode) && enhancedMemberSaysOn(mode.text));
    TextStream detection;
    setPartsSensitivity(source.extract(kDetectionMember, detection) ? detectionSensitivityFrom(detection.text)
                                                                    : kDefaultDetectionSensitivity);
    return ReturnCode_Success;
  }
  // The single-stream layouts carry no mode: they load with it off.
  int result;
  TextStream single;
  if (source.extract(kDatabaseMember, single)) {
    result = loadFromStream(single.stream.get(), creator);
  } else if (source.path != nullptr) {
    std::ifstream file(filePath(source.path), std::ios::binary);
    if (!file.is_open()) return ReturnCode_InvalidPath;
    result = loadFromStream(&file, creator);
  } else {
    MemoryInputBuffer buffer(source.buffer, static_cast<size_t>(source.size));
    std::istream text(&buffer);
    result = loadFromStream(&text, creator);
  }
  if (result >= 0) {
    setPartsEnhanced(false);
    setPartsSensitivity(kDefaultDetectionSensitivity);
  }
  return result;
}

// Set by a load of the whole object, which owns the parts meanwhile: their own guards are not
// asked.
void GestureCombinations::setPartsSensitivity(double sensitivity) {
  for (int i = 0; i < partCount; ++i) {
    if (GestureRecognition* part = partAt(i)) part->gestureModel.detectionSensitivity = sensitivity;
  }
}

void GestureCombinations::setPartsEnhanced(bool on) {
  for (int i = 0; i < partCount; ++i) {
    if (GestureRecognition* part = partAt(i)) {
      part->gestureModel.enhancedRecognition = on;
      prepareShapes(part->gestureModel);
    }
  }
}

int GestureCombinations::loadFromFile(const char* path, MetadataCreatorFunction metadataCreator) {
  if (path == nullptr) return ReturnCode_InvalidParameter;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  const FinishingJobEntry job(loadingState);
  if (job.busy()) return ReturnCode_LoadingInProgress;
  ArchiveSource source;
  source.path = path;
  return loadArchive(source, metadataCreator);
}

int GestureCombinations::loadFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) {
  if (buffer == nullptr || size < 0) return ReturnCode_InvalidParameter;
  if (isTraining()) return ReturnCode_TrainingInProgress;
  const FinishingJobEntry job(loadingState);
  if (job.busy()) return ReturnCode_LoadingInProgress;
  ArchiveSource source;
  source.buffer = buffer;
  source.size = size;
  return loadArchive(source, metadataCreator);
}

int GestureCombinations::loadFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (stream == nullptr) return ReturnCode_InvalidParameter;
  std::istream& in = *stream;
  const int version = readVersion(in, 1);
  if (version != 1 && version != 2) return ReturnCode_InvalidFile;
  const int count = readCountLine(in, kMaxParts);
  if (count < 0) return ReturnCode_InvalidFile;
  resetForLoad(count);
  for (int i = 0; i < partCount; ++i) {
    const int loaded = loadPart(i, in, metadataCreator, version >= 2);
    if (loaded < 0) return loaded;
  }
  const int read = readCombinationsAndTail(in, version, metadataCreator);
  if (read != 0 || version >= 2) return read;
  // The first layout stored no score: it is computed now, or on demand after a background load.
  if (isLoading()) {
    recognitionScoreValue = kScoreNotComputed;
  } else {
    computeRecognitionScore();
  }
  return ReturnCode_Success;
}

// ---- Importing ----

int GestureCombinations::importParts(std::istream& list, int version, const PartStreamSource& partStream,
                                     MetadataCreatorFunction creator) {
  std::vector<std::vector<int>> mappings(static_cast<size_t>(partCount));
  for (int i = 0; i < partCount; ++i) {
    std::istream* in = partStream(i);
    if (in == nullptr) return ReturnCode_StreamError;
    GestureRecognition* recognizer = partAt(i);
    if (recognizer == nullptr) return ReturnCode_ResourceError;
    loadingPart = i;
    int result = recognizer->importFromStream(in, creator, &mappings[static_cast<size_t>(i)]);
    if (result >= 0 && version >= 2) result = readPartEnabled(*in, partEnabled[static_cast<size_t>(i)]);
    loadingPart = -1;
    if (result < 0) return result;
  }

  const int count = readCountLine(list, kMaxCombinations);
  if (count < 0) return ReturnCode_InvalidFile;
  std::vector<GestureCombination> imported;
  for (int c = 0; c < count; ++c) {
    GestureCombination combination;
    const int read = readCombination(list, version, creator, false, combination);
    if (read != 0) return read;
    if (combination.partCount != partCount) return ReturnCode_InvalidFile;
    for (size_t i = 0; i < combination.partGestures.size(); ++i) {
      int& gesture = combination.partGestures[i];
      if (gesture >= static_cast<int>(mappings[i].size())) return ReturnCode_InvalidFile;
      if (gesture >= 0) gesture = mappings[i][static_cast<size_t>(gesture)];
    }
    imported.push_back(std::move(combination));
  }

  // Equal combinations merge; under another name the names are joined.
  for (GestureCombination& combination : imported) {
    auto same = std::find_if(combinations.begin(), combinations.end(), [&](const GestureCombination& existing) {
      return existing.partCount == combination.partCount && existing.partGestures == combination.partGestures;
    });
    if (same == combinations.end()) {
      combinations.push_back(std::move(combination));
    } else if (same->name != combination.name) {
      same->name += "/" + combination.name;
    }
  }
  // The imported object's own metadata is read and thrown away; its score line is not read.
  return version >= 2 ? readMetadataBlock(list, creator, nullptr) : ReturnCode_Success;
}

int GestureCombinations::importFromStream(std::istream* stream, MetadataCreatorFunction metadataCreator) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  if (stream == nullptr) return ReturnCode_InvalidParameter;
  const int version = readVersion(*stream, 1);
  if (version != 1 && version != 2) return ReturnCode_InvalidFile;
  if (readCountLine(*stream, kMaxParts) != partCount) return ReturnCode_InvalidFile;
  return importParts(*stream, version, [stream](int) { return stream; }, metadataCreator);
}

int GestureCombinations::importArchive(const ArchiveSource& source, MetadataCreatorFunction creator) {
  if (isTraining()) return ReturnCode_TrainingInProgress;
  if (isLoading()) return ReturnCode_LoadingInProgress;
  if (isSaving()) return ReturnCode_SavingInProgress;
  TextStream list;
  if (source.extract(kCombinationsMember, list)) {
    std::istream& in = *list.stream;
    const int version = readVersion(in, kCombinationsVersion);
    if (version != kCombinationsVersion) return ReturnCode_InvalidFile;
    if (readCountLine(in, kMaxParts) != partCount) return ReturnCode_InvalidFile;
    TextStream member;
    const PartStreamSource partStream = [&](int part) -> std::istream* {
      return source.extract(partMemberName(part).c_str(), member) ? member.stream.get() : nullptr;
    };
    return importParts(in, version, partStream, creator);
  }
  TextStream single;
  if (source.extract(kDatabaseMember, single)) return importFromStream(single.stream.get(), creator);
  if (source.path != nullptr) {
    std::ifstream file(filePath(source.path), std::ios::binary);
    if (!file.is_open()) return ReturnCode_InvalidPath;
    return importFromStream(&file, creator);
  }
  MemoryInputBuffer buffer(source.buffer, static_cast<size_t>(source.size));
  std::istream text(&buffer);
  return importFromStream(&text, creator);
}

int GestureCombinations::importFromFile(const char* path, MetadataCreatorFunction metadataCreator) {
  if (path == nullptr) return ReturnCode_InvalidParameter;
  ArchiveSource source;
  source.path = path;
  return importArchive(source, metadataCreator);
}

int GestureCombinations::importFromBuffer(const char* buffer, int size, MetadataCreatorFunction metadataCreator) {
  if (buffer == nullptr || size < 0) return ReturnCode_InvalidParameter;
  ArchiveSource source;
  source.buffer = buffer;
  source.size = size;
  return importArchive(source, metadataCreator);
}

// ---- One part as a gesture database ----

int GestureCombinations::saveGestureToFile(int part, const char* path) {
  GestureRecognition* recognizer = partAt(part);
  if (!validPart(part)) return ReturnCode_InvalidIndex;
  return recognizer == nullptr ? ReturnCode_ResourceError : recognizer->saveToFile(path);
}

int GestureCombinations::loadGestureFromFile(int part, const char* path, MetadataCreatorFunction metadataCreator) {
  GestureRecognition* recognizer = partAt(part);
  if (!validPart(part)) return ReturnCode_InvalidIndex;
  return recognizer == nullptr ? ReturnCode_ResourceError : recognizer->loadFromFile(path, metadataCreator);
}

int GestureCombinations::loadGestureFromBuffer(int part, const char* buffer, int size,
                                               MetadataCreatorFunction metadataCreator) {
  GestureRecognition* recognizer = partAt(part);
  if (!validPart(part)) return ReturnCode_InvalidIndex;
  return recognizer == nullptr ? ReturnCode_ResourceError : recognizer->loadFromBuffer(buffer, size, metadataCreator);
}

// ---- In the background ----

int GestureCombinations::saveToFileAsync(const char* path) {
  if (const int busy = jobGuards()) return busy;
  if (!validJobPath(path)) return ReturnCode_InvalidPath;
  return runInBackground(savingState, activeWorkers, mutex, condition, savingFinishCallback, savingFinishMetadata,
                         [this, copy = std::string(path)] { return saveToFile(copy.c_str()); });
}

int GestureCombinations::loadFromFileAsync(const char* path, MetadataCreatorFunction metadataCreator) {
  if (const int busy = jobGuards()) return busy;
  if (!validJobPath(path)) return ReturnCode_InvalidPath;
  return runInBackground(loadingState, activeWorkers, mutex, condition, loadingFinishCallback, loadingFinishMetadata,
                         [this, copy = std::string(path), metadataCreator] {
                           return loadFromFile(copy.c_str(), metadataCreator);
                         });
}

int GestureCombinations::loadFromBufferAsync(const char* buffer, int size, MetadataCreatorFunction metadataCreator) {
  if (const int busy = jobGuards()) return busy;
  if (buffer == nullptr || size < 0) return ReturnCode_InvalidParameter;
  return runInBackground(loadingState, activeWorkers, mutex, condition, loadingFinishCallback, loadingFinishMetadata,
                         [this, copy = std::string(buffer, static_cast<size_t>(size)), metadataCreator] {
                           return loadFromBuffer(copy.data(), static_cast<int>(copy.size()), metadataCreator);
                         });
}

bool GestureCombinations::isSaving() { return jobBusy(savingState.load()); }

bool GestureCombinations::isLoading() { return jobBusy(loadingState.load()); }

int GestureCombinations::cancelSaving() { return cancelBackgroundJob(savingState, activeWorkers); }

int GestureCombinations::cancelLoading() { return cancelBackgroundJob(loadingState, activeWorkers); }

int GestureCombinations::setSavingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  savingUpdateCallback = callback;
  return ReturnCode_Success;
}
int GestureCombinations::setSavingUpdateCallbackMetadata(void* value) {
  savingUpdateMetadata = value;
  return ReturnCode_Success;
}
int GestureCombinations::setSavingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  savingFinishCallback = callback;
  return ReturnCode_Success;
}
int GestureCombinations::setSavingFinishCallbackMetadata(void* value) {
  savingFinishMetadata = value;
  return ReturnCode_Success;
}
int GestureCombinations::setLoadingUpdateCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  loadingUpdateCallback = callback;
  return ReturnCode_Success;
}
int GestureCombinations::setLoadingUpdateCallbackMetadata(void* value) {
  loadingUpdateMetadata = value;
  return ReturnCode_Success;
}
int GestureCombinations::setLoadingFinishCallbackFunction(GestureRecognition_IOCallbackFunction callback) {
  loadingFinishCallback = callback;
  return ReturnCode_Success;
}
int GestureCombinations::setLoadingFinishCallbackMetadata(void* value) {
  loadingFinishMetadata = value;
  return ReturnCode_Success;
}

}  // namespace zando
