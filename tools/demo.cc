// A host in miniature: plays a user in VR who records a few samples of two gestures at 90 Hz
// through the flat functions, then performs one more stroke and asks what it was.
#include <cmath>
#include <cstdio>

#include <zando/zando.h>

namespace {

const double kPi = 3.14159265358979323846;

// One performance of a gesture, sampled at 90 frames a second over one second.
void perform(void* gro, int shape, int recordAs) {
  const double head[3] = {0.0, 1.7, 0.0};
  const double facing[4] = {0.0, 0.0, 0.0, 1.0};
  GestureRecognition_startStroke(gro, head, facing, recordAs);
  for (int frame = 0; frame < 90; ++frame) {
    const double t = frame / 89.0;
    double hand[3];
    if (shape == 0) {  // a circle in front of the face
      hand[0] = 0.2 * std::cos(2 * kPi * t);
      hand[1] = 1.5 + 0.2 * std::sin(2 * kPi * t);
    } else {  // a swipe from left to right
      hand[0] = -0.3 + 0.6 * t;
      hand[1] = 1.4;
    }
    hand[2] = 0.4;
    const double rotation[4] = {0.0, std::sin(0.25 * t), 0.0, std::cos(0.25 * t)};
    GestureRecognition_updateHeadPositionQ(gro, head, facing);
    GestureRecognition_contdStrokeQ(gro, hand, rotation);
  }
}

}  // namespace

int main() {
  std::printf("%s\n", GestureRecognition_getVersionString());
  void* gro = GestureRecognition_create();
  const char* names[2] = {"circle", "swipe"};
  for (int g = 0; g < 2; ++g) GestureRecognition_createGesture(gro, names[g], nullptr);
  for (int g = 0; g < 2; ++g) {
    for (int sample = 0; sample < 5; ++sample) {
      perform(gro, g, g);
      GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
    std::printf("recorded %d samples of \"%s\"\n", GestureRecognition_getGestureNumberOfSamples(gro, g), names[g]);
  }
  perform(gro, 0, -1);
  double similarity = 0.0;
  double position[3] = {0, 0, 0};
  double scale = 0.0;
  const int result = GestureRecognition_endStrokeAndGetSimilarity(gro, &similarity, position, &scale, nullptr,
                                                                  nullptr, nullptr);
  if (result >= 0) {
    std::printf("identified \"%s\" (similarity %.3f) at (%.2f, %.2f, %.2f), size %.2f\n", names[result],
                similarity, position[0], position[1], position[2], scale);
  } else {
    std::printf("identification answered %d\n", result);
  }
  GestureRecognition_delete(gro);
  return 0;
}
