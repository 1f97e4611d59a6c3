// An outside program built against the installed package.
#include <zando/zando.h>

#include <cstring>
#include <memory>

int main() {
  std::unique_ptr<IGestureRecognition> recognizer(IGestureRecognition::create());
  if (!recognizer) return 1;
  if (recognizer->createGesture("wave", nullptr) != 0) return 2;
  if (std::strcmp(IGestureRecognition::getVersionString(), GestureRecognition_getVersionString()) != 0) return 3;
  if (recognizer->numberOfGestures() != 1) return 4;
  std::unique_ptr<IGestureCombinations> hands(IGestureCombinations::create(2));
  if (!hands || hands->numberOfParts() != 2) return 5;
  return hands->createGesture(1, "wave", nullptr) == 0 ? 0 : 6;
}
