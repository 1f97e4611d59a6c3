#include "model/gesture_model.h"

namespace zando {

GestureModel::~GestureModel() {
  for (Gesture* gesture : gestures) delete gesture;
  for (Gesture* gesture : detachedGestures) delete gesture;
}

}  // namespace zando
