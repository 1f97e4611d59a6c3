// The class face: the interface's own members, its static functions and the default metadata.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api/version.h"
#include "recognition/gesture_recognition.h"
#include "zando/zando.h"

IGestureRecognition::IGestureRecognition()
    : rotationalFrameOfReferenceX(0),
      rotationalFrameOfReferenceY(0),
      rotationalFrameOfReferenceZ(0),
      rotationalFrameOfReferenceRotationOrder(2) {}

IGestureRecognition::IGestureRecognition(const IGestureRecognition& other) { *this = other; }

IGestureRecognition& IGestureRecognition::operator=(const IGestureRecognition& other) {
  contdIdentificationPeriod = other.contdIdentificationPeriod;
  contdIdentificationSmoothing = other.contdIdentificationSmoothing;
  maxTrainingTime = other.maxTrainingTime;
  trainingUpdateCallback = other.trainingUpdateCallback;
  trainingUpdateCallbackMetadata = other.trainingUpdateCallbackMetadata;
  trainingFinishCallback = other.trainingFinishCallback;
  trainingFinishCallbackMetadata = other.trainingFinishCallbackMetadata;
  rotationalFrameOfReferenceX = other.rotationalFrameOfReferenceX;
  rotationalFrameOfReferenceY = other.rotationalFrameOfReferenceY;
  rotationalFrameOfReferenceZ = other.rotationalFrameOfReferenceZ;
  rotationalFrameOfReferenceRotationOrder = other.rotationalFrameOfReferenceRotationOrder;
  return *this;
}

IGestureRecognition::~IGestureRecognition() = default;

IGestureRecognition* IGestureRecognition::create() { return zando::GestureRecognition::createZeroFilled(); }

const char* IGestureRecognition::getVersionString() { return zando::versionString(); }

int IGestureRecognition::getVersionStringLength() {
  const char* text = zando::versionString();
  return text == nullptr ? 0 : static_cast<int>(std::strlen(text));
}

int IGestureRecognition::copyVersionString(char* dst, int dstSize) {
  const char* text = zando::versionString();
  if (text == nullptr) return 0;
  const int length = static_cast<int>(std::strlen(text));
  const int result = std::min(length, dstSize);
  if (dst != nullptr && dstSize > 0) {
    // The text and its terminator must fit; a short buffer gets as much as fits, terminated.
    const int copied = std::min(length, dstSize - 1);
    std::memcpy(dst, text, static_cast<size_t>(copied));
    dst[copied] = '\0';
  }
  return result;
}

void IGestureRecognition::setDebugCallbackFunction(GestureRecognition_DebugCallbackFunction) {}

void IGestureRecognition::setDebugCallbackMetadata(void*) {}

IGestureRecognition::Metadata* IGestureRecognition::defaultMetadataCreatorFunction() { return new DefaultMetadata(); }

IGestureRecognition::MetadataCreatorFunction IGestureRecognition::getDefaultMetadataCreatorFunction() {
  return &IGestureRecognition::defaultMetadataCreatorFunction;
}

IGestureRecognition::Metadata::~Metadata() = default;

IGestureRecognition::DefaultMetadata::~DefaultMetadata() { std::free(data); }

bool IGestureRecognition::DefaultMetadata::writeToStream(std::ostream& stream) {
  char header[32];
  std::snprintf(header, sizeof(header), "%i ", size);
  stream << header;
  if (size > 0 && data != nullptr) stream.write(static_cast<const char*>(data), size);
  return !stream.fail() && !stream.bad();
}

bool IGestureRecognition::DefaultMetadata::readFromStream(std::istream& stream) {
  std::free(data);
  data = nullptr;
  size = 0;
  char header[32];
  int used = 0;
  bool blank = false;
  while (used < 32) {
    const int c = stream.get();
    if (c == std::char_traits<char>::eof()) return false;
    header[used++] = static_cast<char>(c);
    if (c == ' ') {
      blank = true;
      break;
    }
  }
  if (!blank) return false;
  header[used - 1] = '\0';
  size = std::atoi(header);
  if (size <= 0) return false;
  // The count comes from a file and may be damaged: memory grows only as bytes actually arrive,
  // so a huge count over a short input fails without a huge allocation.
  constexpr int kChunk = 1 << 20;
  int capacity = std::min(size, kChunk);
  char* block = static_cast<char*>(std::malloc(static_cast<size_t>(capacity)));
  int received = 0;
  while (block != nullptr && received < size) {
    if (received == capacity) {
      capacity = capacity > size - capacity ? size : capacity * 2;
      char* grown = static_cast<char*>(std::realloc(block, static_cast<size_t>(capacity)));
      if (grown == nullptr) {
        std::free(block);
        block = nullptr;
        break;
      }
      block = grown;
    }
    stream.read(block + received, capacity - received);
    received += static_cast<int>(stream.gcount());
    if (stream.eof() || stream.fail() || stream.bad()) break;
  }
  if (block == nullptr) {
    size = 0;
    return false;
  }
  data = block;
  if (stream.eof() || stream.fail() || stream.bad() || received != size) {
    std::free(data);
    data = nullptr;
    size = 0;
    return false;
  }
  return true;
}

int IGestureRecognition::DefaultMetadata::copyData(void* buffer, int capacity) const {
  if (data == nullptr || size == 0 || buffer == nullptr) return 0;
  const int copied = std::min(size, capacity);
  if (copied <= 0) return 0;
  std::memcpy(buffer, data, static_cast<size_t>(copied));
  return copied;
}

int IGestureRecognition::DefaultMetadata::setData(const void* bytes, int byteCount) {
  if (bytes == nullptr || byteCount <= 0) {
    std::free(data);
    data = nullptr;
    size = 0;
    return ReturnCode_Success;
  }
  // A block of the same size is reused.
  if (byteCount != size) {
    std::free(data);
    data = std::malloc(static_cast<size_t>(byteCount));
    if (data == nullptr) {
      size = 0;
      return ReturnCode_ResourceError;
    }
  }
  size = byteCount;
  std::memcpy(data, bytes, static_cast<size_t>(byteCount));
  return ReturnCode_Success;
}
