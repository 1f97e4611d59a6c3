#include "model/gesture_model.h"

namespace zando {

GestureModel::~GestureModel() {
  for (Gesture* gesture : gestures) delete gesture;
  for (Gesture* gesture : detachedGestures) delete gesture;
}

void sampleFingerprint(const GestureModel& model, const ModelParameters& parameters, std::vector<uintptr_t>& out) {
  out.clear();
  out.push_back(static_cast<uintptr_t>(parameters.updateHeadPositionPolicy));
  out.push_back(static_cast<uintptr_t>(parameters.rotationFrameX));
  out.push_back(static_cast<uintptr_t>(parameters.rotationFrameY));
  out.push_back(static_cast<uintptr_t>(parameters.rotationFrameZ));
  out.push_back(static_cast<uintptr_t>(parameters.rotationOrder));
  for (const Gesture* gesture : model.gestures) {
    out.push_back(gesture->gestureEnabled ? gesture->gestureSamples.size() : ~uintptr_t{0});
    for (const Stroke* sample : gesture->gestureSamples) {
      out.push_back(reinterpret_cast<uintptr_t>(sample));
      out.push_back(sample->handPoints.size());
      out.push_back(sample->handPoints.empty() ? 0 : static_cast<uintptr_t>(sample->handPoints.back().timestamp));
    }
  }
}

}  // namespace zando
