// One gesture of a set: its name, the host's metadata pointer, its samples and whether it trains.
#ifndef ZANDO_MODEL_GESTURE_H
#define ZANDO_MODEL_GESTURE_H

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

}  // namespace zando

#endif  // ZANDO_MODEL_GESTURE_H
