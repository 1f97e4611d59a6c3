/* A host written in C: creates a recogniser, records a stroke and reads values back. */
#include <stdio.h>
#include <string.h>

#include <zando/zando.h>

static int failures = 0;

static void expect(int condition, const char* what) {
  if (!condition) {
    fprintf(stderr, "failed: %s\n", what);
    ++failures;
  }
}

int main(void) {
  char version[64];
  const double head_p[3] = {0.0, 1.7, 0.0};
  const double head_q[4] = {0.0, 0.0, 0.0, 1.0};
  double point[3] = {0.0, 1.5, 0.4};
  int i;
  void* gco;
  void* gro = GestureRecognition_create();
  expect(gro != NULL, "create");
  expect(GestureRecognition_copyVersionString(version, (int)sizeof version) ==
             GestureRecognition_getVersionStringLength(),
         "version length");
  expect(strcmp(version, GestureRecognition_getVersionString()) == 0, "version text");

  expect(GestureRecognition_createGesture(gro, "circle", NULL) == 0, "createGesture");
  expect(GestureRecognition_startStroke(gro, head_p, head_q, 0) == ReturnCode_Success, "startStroke");
  expect(GestureRecognition_isStrokeStarted(gro) == 1, "isStrokeStarted");
  for (i = 0; i < 20; ++i) {
    point[0] = 0.01 * i;
    expect(GestureRecognition_contdStroke(gro, point) == 0, "contdStroke");
  }
  expect(GestureRecognition_endStroke(gro, NULL, NULL, NULL, NULL, NULL) == 0, "endStroke records");
  expect(GestureRecognition_getGestureNumberOfSamples(gro, 0) == 1, "sample stored");
  expect(GestureRecognition_getGestureSampleLength(gro, 0, 0, 0) == 20, "sample length");

  GestureRecognition_setIgnoreHeadRotationY(gro, 7);
  expect(GestureRecognition_getRotationalFrameOfReferenceY(gro) == 1, "ignore head rotation");
  expect(GestureRecognition_getMaxTrainingTime(gro) == 30, "training time default");
  GestureRecognition_delete(gro);
  GestureRecognition_delete(NULL);

  gco = GestureCombinations_create(2);
  expect(GestureCombinations_numberOfParts(gco) == 2, "combination parts");
  expect(GestureCombinations_createGesture(gco, 1, "wave", NULL) == 0, "part gesture");
  expect(GestureCombinations_numberOfGestures(gco, 0) == 0, "other part untouched");
  expect(GestureCombinations_createGestureCombination(gco, "right wave") == 0, "combination");
  expect(GestureCombinations_setCombinationPartGesture(gco, 0, 1, 0) == 0, "combination entry");
  GestureCombinations_delete(gco);

  printf("%d passed, %d failed\n", failures == 0 ? 1 : 0, failures == 0 ? 0 : 1);
  return failures == 0 ? 0 : 1;
}
