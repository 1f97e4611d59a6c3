// The exported frame as a host meets it: creation and deletion, the version text, the plain
// accessors and the conversions and safety of the flat functions.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "api/version.h"
#include "recognition/gesture_recognition.h"
#include "zando/zando.h"

namespace {

zando::GestureRecognition* concrete(void* handle) {
  return static_cast<zando::GestureRecognition*>(static_cast<IGestureRecognition*>(handle));
}

TEST(VersionText, IsBuiltFromTheBuildConstantsAndCopiedBounded) {
  EXPECT_STREQ(GestureRecognition_getVersionString(), "Zando2.13_Aug31");
  EXPECT_EQ(GestureRecognition_getVersionStringLength(), 15);
  EXPECT_EQ(GestureRecognition_getVersionString(), IGestureRecognition::getVersionString());  // one text
  // A single-digit day, padded with a blank or not, gives the digit with nothing between.
  EXPECT_EQ(zando::buildVersionText("Zando", "2.13", "Sep  7 2025"), "Zando2.13_Sep7");
  EXPECT_EQ(zando::buildVersionText("P", "1.0", "Jan 1 2024"), "P1.0_Jan1");

  // (A copy into room enough: the C header check; every capacity: the hostile-values test.)
  char small[6];
  std::memset(small, 'x', sizeof(small));
  EXPECT_EQ(GestureRecognition_copyVersionString(small, sizeof(small)), 6);
  EXPECT_EQ(std::string(small, sizeof(small)), std::string("Zando\0", 6));
  EXPECT_EQ(GestureRecognition_copyVersionString(nullptr, 0), 0);
}

TEST(Creation, ConstructorValuesAndDefaults) {
  void* gro = GestureRecognition_create();
  ASSERT_NE(gro, nullptr);
  EXPECT_EQ(GestureRecognition_getContdIdentificationPeriod(gro), 1000);
  EXPECT_EQ(GestureRecognition_getContdIdentificationSmoothing(gro), 3);
  EXPECT_EQ(GestureRecognition_getRotationalFrameOfReferenceRotationOrder(gro), 2);
  EXPECT_EQ(GestureRecognition_getUpdateHeadPositionPolicy(gro), 1);
  GestureRecognition_delete(gro);  // (the training time's default and a null delete: the C header check)
}

TEST(Accessors, StoreValuesAsTheyComeButTheIgnoreFlags) {
  void* gro = GestureRecognition_create();
  GestureRecognition_setMaxTrainingTime(gro, -5);
  EXPECT_EQ(GestureRecognition_getMaxTrainingTime(gro), -5);
  EXPECT_EQ(GestureRecognition_setContdIdentificationPeriod(gro, -5), 0);
  EXPECT_EQ(GestureRecognition_getContdIdentificationPeriod(gro), -5);
  GestureRecognition_setIgnoreHeadRotationY(gro, 0);  // (7 gives 1: the C header check)
  EXPECT_EQ(GestureRecognition_getRotationalFrameOfReferenceY(gro), 0);
  GestureRecognition_setRotationalFrameOfReferenceX(gro, 2);
  EXPECT_EQ(GestureRecognition_getIgnoreHeadRotationX(gro), 0);
  EXPECT_EQ(GestureRecognition_getRotationalFrameOfReferenceX(gro), 2);
  GestureRecognition_setIgnoreHeadRotationZ(gro, -3);
  EXPECT_EQ(GestureRecognition_getIgnoreHeadRotationZ(gro), 1);
  GestureRecognition_setRotationalFrameOfReferenceRotationOrder(gro, 17);
  int marker = 0;
  GestureRecognition_setTrainingFinishCallbackMetadata(gro, &marker);
  EXPECT_EQ(GestureRecognition_getTrainingFinishCallbackMetadata(gro), &marker);

  // The setters do not touch the model's copy of the frame; identification refreshes it.
  EXPECT_EQ(concrete(gro)->gestureModel.parameters.rotationFrameX, 0);
  concrete(gro)->copyFrameToModel();
  EXPECT_EQ(concrete(gro)->gestureModel.parameters.rotationFrameX, 2);
  EXPECT_EQ(concrete(gro)->gestureModel.parameters.rotationOrder, 17);
  GestureRecognition_delete(gro);
}

void neverCalled(const char*, void*) { ADD_FAILURE() << "the debug callback must never be called"; }

TEST(FlatFace, ConversionsAndSafetyAtTheBoundary) {
  GestureRecognition_setDebugCallbackFunction(nullptr);
  GestureRecognition_setDebugCallbackMetadata(nullptr);
  GestureRecognition_setDebugCallbackFunction(&neverCalled);

  void* gro = GestureRecognition_create();
  ASSERT_EQ(GestureRecognition_createGesture(gro, "a", nullptr), 0);
  EXPECT_EQ(GestureRecognition_setGestureEnabled(gro, 0, 0), 0);
  EXPECT_EQ(GestureRecognition_getGestureEnabled(gro, 0), 0);
  EXPECT_EQ(GestureRecognition_setGestureEnabled(gro, 0, 42), 0);
  EXPECT_EQ(GestureRecognition_getGestureEnabled(gro, 0), 1);
  EXPECT_EQ(GestureRecognition_getGestureEnabled(gro, 5), 0);
  // Any non-zero processed flag means processed: the length is the waypoint count at once.
  EXPECT_EQ(GestureRecognition_getGestureSampleLength(gro, 99, 99, 5), 16);

  const double head[3] = {0, 0, 0};
  const double rotation[4] = {0, 0, 0, 1};
  ASSERT_EQ(GestureRecognition_startStroke(gro, head, rotation, -1), 0);  // (read back: the C header check)

  // Null handles and poses are refused instead of read; nothing crashes.
  EXPECT_EQ(GestureRecognition_startStroke(nullptr, head, rotation, -1), ReturnCode_InvalidParameter);
  EXPECT_EQ(GestureRecognition_isStrokeStarted(nullptr), 0);
  EXPECT_EQ(GestureRecognition_getGestureName(nullptr, 0), nullptr);
  GestureRecognition_setMaxTrainingTime(nullptr, 3);
  EXPECT_EQ(GestureRecognition_updateHeadPositionQ(gro, nullptr, rotation), ReturnCode_InvalidParameter);
  GestureRecognition_delete(gro);
}

}  // namespace
