// Continuous detection of combinations: a combination is reported when its parts performed their
// gestures together, and one that leaves a part idle only when that part did nothing.
#include <vector>

#include <gtest/gtest.h>

#include "combinations/combination_fixture.h"
#include "recognition/motion_builder.h"

namespace zando {
namespace {

using namespace combination_testing;
using testing_support::kFrameRate;
using testing_support::MotionBuilder;

constexpr int kCircle = 0, kZigzag = 2, kV = 3;

// Part 0 knows a circle and a "V", part 1 a zigzag, a "V" and resting; combinations: the circle
// while the other hand rests, the zigzag alone, and both at once.
Combinations makeTwoHanded() {
  Combinations c = makeCombinations(2);
  const int shapes[2][2] = {{kCircle, kV}, {kZigzag, kV}};
  for (int part = 0; part < 2; ++part) {
    for (int g = 0; g < 2; ++g) {
      c->createGesture(part, g == 0 ? "first" : "v", nullptr);
      for (int k = 0; k < 3; ++k) {
        testing_support::recordTimedSample(*c->parts[static_cast<size_t>(part)], shapes[part][g], g, 1.0 + 0.2 * k,
                                           0.25 * (0.9 + 0.1 * k), 50.0 + 10 * g + 3 * k,
                                           static_cast<unsigned>(20 * part + 5 * g + k));
      }
    }
  }
  // A hand that rests while the other performs may also be recorded as a gesture of its own.
  const int rest = c->createGesture(1, "rest", nullptr);
  for (int k = 0; k < 3; ++k) {
    MotionBuilder still(static_cast<unsigned>(40 + k));
    still.idle(1.2);
    GestureRecognition& part = *c->parts[1];
    part.setHostTime(80.0 + 3 * k);
    part.startStroke(kHead, kFacing, rest);
    for (size_t i = 0; i < still.points.size(); ++i) {
      part.setHostTime(80.0 + 3 * k + static_cast<double>(i) / kFrameRate);
      part.contdStrokeQ(still.points[i].data(), kFacing);
    }
    testing_support::endStroke(part);
  }
  const int records[3][2] = {{0, rest}, {-1, 0}, {0, 0}};
  for (const auto& record : records) {
    const int index = c->createGestureCombination("combination");
    for (int part = 0; part < 2; ++part) c->setCombinationPartGesture(index, part, record[part]);
  }
  return c;
}

// One hand performs `shape` while the other idles for as long, or both perform.
void act(MotionBuilder& hand, int shape, double x) {
  if (shape < 0) {
    hand.idle(0.6 + 1.0);
  } else {
    hand.move(MotionBuilder::startFor(shape, 0.25, {x, 1.4, 0.45}), 0.6);
    hand.perform(shape, 1.0, 0.25);
  }
  hand.idle(1.2);
}

TEST(CombinationDetectionTest, ReportsTheCombinationThePartsPerformedTogether) {
  Combinations c = makeTwoHanded();
  MotionBuilder left(1, {-0.25, 1.3, 0.4}), right(2, {0.25, 1.3, 0.4});
  left.idle(1.5);
  right.idle(1.5);
  // The circle while the other hand makes a "V" is no combination: that hand was to stay idle.
  const int plan[4][2] = {{kCircle, -1}, {-1, kZigzag}, {kCircle, kV}, {kCircle, kZigzag}};
  for (const auto& step : plan) {
    act(left, step[0], -0.2);
    act(right, step[1], 0.2);
  }
  ASSERT_EQ(left.points.size(), right.points.size());

  int combination = -1;
  double confidence = 0.0;
  EXPECT_EQ(c->contdDetect(kHead, kFacing, &combination, &confidence), ReturnCode_NoStrokeStarted);
  c->setHostTime(500.0);
  for (int part = 0; part < 2; ++part) ASSERT_EQ(c->startStroke(part, kHead, kFacing, -1), 0);
  std::vector<int> found;
  for (size_t i = 0; i < left.points.size(); ++i) {
    ASSERT_EQ(c->setHostTime(500.0 + static_cast<double>(i) / kFrameRate), 0);
    c->contdStrokeQ(0, left.points[i].data(), kFacing);
    c->contdStrokeQ(1, right.points[i].data(), kFacing);
    const int result = c->contdDetect(kHead, kFacing, &combination, &confidence);
    ASSERT_GE(result, 0);
    if (result == 1) {
      found.push_back(combination);
      EXPECT_GT(confidence, 0.0);
      EXPECT_LE(confidence, 1.0);
    }
  }
  EXPECT_EQ(found, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(c->contdDetect(kHead, kFacing, nullptr, &confidence), ReturnCode_InvalidParameter);
  EXPECT_EQ(c->setDetectionSensitivity(0.4), 0);
  EXPECT_EQ(c->parts[1]->getDetectionSensitivity(), 0.4);
}

}  // namespace
}  // namespace zando
