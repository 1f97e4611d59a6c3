// An outside program built against the installed package.
#include <zando/zando.h>

#include <cstring>
#include <memory>

int main() {
  std::unique_ptr<IGestureRecognition> recognizer(IGestureRecognition::create());
  if (!recognizer) return 1;
  if (recognizer->createGesture("wave", nullptr) != 0) return 2;
  if (std::strcmp(IGestureRecognition::getVersionString(), GestureRecognition_getVersionString()) != 0) return 3;
  return recognizer->numberOfGestures() == 1 ? 0 : 4;
}
