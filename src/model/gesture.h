// One gesture of a set: its name, the host's metadata pointer, its samples and whether it trains.
#ifndef ZANDO_MODEL_GESTURE_H
#define ZANDO_MODEL_GESTURE_H

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "spatial/spatial.h"
#include "zando/zando.h"

namespace zando {

struct Gesture {
  std::string gestureName;
  IGestureRecognition::Metadata* gestureMetadata = nullptr;  // the host's; never deleted here
  std::vector<Stroke*> gestureSamples;                       // owned, oldest first
  bool gestureEnabled = true;

  Gesture() = default;
  Gesture(const std::string& name, IGestureRecognition::Metadata* metadata)
      : gestureName(name), gestureMetadata(metadata) {}
  Gesture(const Gesture&) = delete;
  Gesture& operator=(const Gesture&) = delete;
  ~Gesture() {
    for (Stroke* sample : gestureSamples) delete sample;
  }
};

// Copies as much of a name as fits with its terminator; returns the smaller of the name's length
// and the buffer's size.
inline int copyNameInto(const std::string& name, char* buffer, int bufferSize) {
  const int length = static_cast<int>(name.size());
  if (buffer != nullptr && bufferSize > 0) {
    const int copied = std::min(length, bufferSize - 1);
    std::memcpy(buffer, name.data(), static_cast<size_t>(copied));
    buffer[copied] = '\0';
  }
  return std::min(length, bufferSize);
}

}  // namespace zando

#endif  // ZANDO_MODEL_GESTURE_H
