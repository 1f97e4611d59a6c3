#include "model/gesture_model.h"

namespace zando {

GestureModel::~GestureModel() {
  for (Gesture* gesture : gestures) delete gesture;
  for (Gesture* gesture : detachedGestures) delete gesture;
}

namespace {

template <typename Take>
void fingerprintValues(const GestureModel& model, const ModelParameters& parameters, Take&& take) {
  take(static_cast<uintptr_t>(parameters.updateHeadPositionPolicy));
  take(static_cast<uintptr_t>(parameters.rotationFrameX));
  take(static_cast<uintptr_t>(parameters.rotationFrameY));
  take(static_cast<uintptr_t>(parameters.rotationFrameZ));
  take(static_cast<uintptr_t>(parameters.rotationOrder));
  for (const Gesture* gesture : model.gestures) {
    take(gesture->gestureEnabled ? gesture->gestureSamples.size() : ~uintptr_t{0});
    for (const Stroke* sample : gesture->gestureSamples) {
      take(reinterpret_cast<uintptr_t>(sample));
      take(sample->handPoints.size());
      take(sample->handPoints.empty() ? 0 : static_cast<uintptr_t>(sample->handPoints.back().timestamp));
    }
  }
}

}  // namespace

void sampleFingerprint(const GestureModel& model, const ModelParameters& parameters, std::vector<uintptr_t>& out) {
  out.clear();
  fingerprintValues(model, parameters, [&out](uintptr_t value) { out.push_back(value); });
}

uint64_t sampleDigest(const GestureModel& model, const ModelParameters& parameters) {
  // Four values mixed side by side and then together: one chain of mixing would take a while on
  // a set of many samples, and this runs with every identification.
  uint64_t lanes[4] = {1, 2, 3, 4};
  size_t next = 0;
  const auto mix = [](uint64_t digest, uint64_t value) {
    return digest ^ (value + 0x9e3779b97f4a7c15u + (digest << 6) + (digest >> 2));
  };
  fingerprintValues(model, parameters, [&](uintptr_t value) {
    uint64_t& lane = lanes[next++ & 3];
    lane = mix(lane, static_cast<uint64_t>(value));
  });
  uint64_t digest = next;
  for (uint64_t lane : lanes) digest = mix(digest, lane);
  return digest;
}

}  // namespace zando
