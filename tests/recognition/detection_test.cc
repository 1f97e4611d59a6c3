// Continuous detection in a running motion: one report per performance, none for idle motion and
// moves, replays that depend on the host's clock only, its refusals and what files keep of it.
#include <chrono>
#include <cstdio>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "persistence/archive.h"
#include "recognition/motion_builder.h"
#include "scratch_files.h"
#include "waiting.h"

namespace zando {
namespace {

using namespace testing_support;
using Recognizer = std::unique_ptr<GestureRecognition>;

// Circle, zigzag and "V": shapes none of which is a piece of another.
const int kShapes[3] = {0, 2, 3};

// The samples begin and end at rest, as people's do.
Recognizer makeRecorded(bool enhanced) {
  Recognizer r(GestureRecognition::createZeroFilled());
  r->setEnhancedRecognition(enhanced ? 1 : 0);
  for (int g = 0; g < 3; ++g) {
    r->createGesture(("g" + std::to_string(g)).c_str(), nullptr);
    for (int k = 0; k < 3; ++k) {
      recordTimedSample(*r, kShapes[g], g, 1.0 + 0.2 * k, 0.25 * (0.9 + 0.1 * k), 100.0 + 10 * g + 3 * k,
                        static_cast<unsigned>(10 * g + k), true);
    }
  }
  return r;
}

struct Event {
  size_t frame;
  int gesture;
  double confidence;
};

// Feeds a motion frame by frame on the host's clock; `pause` waits that long every tenth frame.
std::vector<Event> replay(GestureRecognition& r, const MotionBuilder& motion,
                          std::chrono::microseconds pause = std::chrono::microseconds(0)) {
  std::vector<Event> events;
  r.setHostTime(1000.0);
  EXPECT_EQ(r.startStroke(kHead, kFacing, -1), 0);
  for (size_t i = 0; i < motion.points.size(); ++i) {
    r.setHostTime(1000.0 + static_cast<double>(i) / kFrameRate);
    r.contdStrokeQ(motion.points[i].data(), kFacing);
    int gesture = -1;
    double confidence = -1.0;
    const int result = r.contdDetect(kHead, kFacing, &gesture, &confidence);
    EXPECT_GE(result, 0);
    if (result == 1) events.push_back({i, gesture, confidence});
    if (pause.count() > 0 && i % 10 == 0) std::this_thread::sleep_for(pause);
  }
  return events;
}

struct Performance {
  int gesture;
  double seconds;
  double size;
};

// Idle stretches and moves, some with nothing performed after them, and the performances in
// order; `ends` gets the frame at which each performance ends.
MotionBuilder session(const std::vector<Performance>& plan, std::vector<size_t>& ends) {
  MotionBuilder motion(7);
  motion.idle(1.5);
  motion.move({0.2, 1.2, 0.4}, 0.8);
  motion.idle(1.0);
  for (size_t i = 0; i < plan.size(); ++i) {
    const Performance& p = plan[i];
    const double side = i % 2 == 0 ? -0.05 : 0.05;
    motion.move(MotionBuilder::startFor(kShapes[p.gesture], p.size, {side, 1.4, 0.45}), 0.6);
    motion.perform(kShapes[p.gesture], p.seconds, p.size, true);
    ends.push_back(motion.points.size() - 1);
    motion.idle(1.2);
    if (i == 1) {
      motion.move({-0.2, 1.1, 0.5}, 0.9);
      motion.idle(1.5);
    }
  }
  return motion;
}

TEST(DetectionTest, ReportsEachPerformanceOnceAndNothingElse) {
  // Faster, slower, larger and smaller than the samples, which took 1 to 1.4 s at 0.22 to 0.27 m.
  const std::vector<Performance> plan = {{0, 0.45, 0.25}, {1, 3.0, 0.25}, {2, 1.2, 0.32}, {0, 2.2, 0.2},
                                         {2, 0.6, 0.22}, {1, 1.0, 0.3}};
  std::vector<size_t> ends;
  MotionBuilder motion = session(plan, ends);
  // Then a circle swept through inside a figure of its own (up into it and out of it downwards
  // without slowing): no performance of it, since it does not begin where the hand slowed.
  const MotionBuilder::Point start = MotionBuilder::startFor(kShapes[0], 0.25, {0.0, 1.4, 0.45});
  const MotionBuilder::Point below = {start[0], start[1] - 0.25, start[2]};
  motion.move(below, 0.6);
  motion.idle(0.5);
  motion.glide(start, 0.4);
  motion.perform(kShapes[0], 1.2, 0.25);
  motion.glide(below, 0.4);
  motion.idle(1.5);
  // And a square, begun and ended at rest where the circle would be: not a circle, even when the
  // hand, after resting, moves on the way a circle's first stretch goes (the rest joins two motions).
  motion.move(MotionBuilder::startFor(4, 0.25, {0.0, 1.4, 0.45}), 0.6);
  motion.perform(4, 1.2, 0.25, true);
  motion.idle(1.5);
  MotionBuilder::Point onwards = motion.points.back();
  onwards[1] += 0.15;
  motion.move(onwards, 0.6);
  motion.idle(1.0);
  for (bool enhanced : {true, false}) {
    SCOPED_TRACE(enhanced ? "enhanced, untrained" : "plain, trained");
    Recognizer r = makeRecorded(enhanced);
    if (!enhanced) {
      r->maxTrainingTime = timeScale();  // a second of a native run
      ASSERT_EQ(r->startTraining(), 0);
      while (r->isTraining()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    const std::vector<Event> events = replay(*r, motion);
    ASSERT_EQ(events.size(), plan.size());
    for (size_t i = 0; i < plan.size(); ++i) {
      EXPECT_EQ(events[i].gesture, plan[i].gesture) << "performance " << i;
      // Reported at the end of the performance, well within half a second.
      EXPECT_GE(events[i].frame + 6, ends[i]) << "performance " << i;
      EXPECT_LE(events[i].frame, ends[i] + static_cast<size_t>(0.4 * kFrameRate)) << "performance " << i;
      EXPECT_GT(events[i].confidence, 0.0);
      EXPECT_LE(events[i].confidence, 1.0);
    }
  }
}

TEST(DetectionTest, FindsTheWayOfMakingAGestureThatOnlyOneOfManySamplesShows) {
  // More samples of the circle than are matched running: seven one way round, one the other.
  Recognizer r = makeRecorded(true);
  for (int k = 3; k < 8; ++k) {
    recordTimedSample(*r, k == 5 ? 5 : 0, 0, 1.2, 0.25, 200.0 + 3 * k, static_cast<unsigned>(40 + k), true);
  }
  MotionBuilder motion(11);
  motion.idle(1.0);
  motion.move(MotionBuilder::startFor(5, 0.25, {0.0, 1.4, 0.45}), 0.6);
  motion.perform(5, 1.2, 0.25, true);
  motion.idle(1.5);
  const std::vector<Event> events = replay(*r, motion);
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].gesture, 0);
}

TEST(DetectionTest, AGestureThatALongerOneBeginsWithIsReportedOnceTheHandRests) {
  // A "V" and a "W", the first half of which is that "V", made slowly. The "V", after which the
  // hand rests, is reported at once, not after the "W" has stopped looking under way; the "W" is
  // reported as itself, not as the "V" it begins with, however well that matches.
  Recognizer r(GestureRecognition::createZeroFilled());
  r->setEnhancedRecognition(1);
  for (int g = 0; g < 2; ++g) {
    r->createGesture(g == 0 ? "V" : "W", nullptr);
    for (int k = 0; k < 3; ++k) {
      recordTimedSample(*r, g == 0 ? 3 : 6, g, (2.0 + 0.3 * k) * (g + 1), 0.25, 100.0 + 20 * g + 5 * k,
                        static_cast<unsigned>(10 * g + k), true);
    }
  }
  MotionBuilder motion(13);
  std::vector<size_t> ends;
  for (int shape : {3, 6}) {
    motion.idle(1.0);
    motion.move(MotionBuilder::startFor(shape, 0.25, {0.0, 1.4, 0.45}), 0.6);
    motion.perform(shape, shape == 3 ? 2.2 : 4.4, 0.25, true);
    ends.push_back(motion.points.size() - 1);
  }
  motion.idle(1.5);
  const std::vector<Event> events = replay(*r, motion);
  ASSERT_EQ(events.size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(events[i].gesture, static_cast<int>(i));
    EXPECT_LE(events[i].frame, ends[i] + static_cast<size_t>(0.3 * kFrameRate)) << "performance " << i;
  }
}

TEST(DetectionTest, HostTimeAloneDecides) {
  std::vector<size_t> ends;
  const MotionBuilder motion = session({{0, 1.0, 0.25}, {2, 0.8, 0.25}}, ends);
  Recognizer fast = makeRecorded(true);
  Recognizer slow = makeRecorded(true);
  const std::vector<Event> first = replay(*fast, motion);
  const std::vector<Event> second = replay(*slow, motion, std::chrono::microseconds(1500));
  ASSERT_EQ(first.size(), 2u);
  ASSERT_EQ(second.size(), first.size());
  for (size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(second[i].frame, first[i].frame);
    EXPECT_EQ(second[i].gesture, first[i].gesture);
    EXPECT_EQ(second[i].confidence, first[i].confidence);
  }

  // Back on the system clock, points are stamped with the time of day again.
  EXPECT_EQ(fast->setHostTime(-1.0), 0);
  fast->startStroke(kHead, kFacing, -1);
  fast->contdStrokeQ(motion.points[0].data(), kFacing);
  const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::system_clock::now().time_since_epoch()).count();
  EXPECT_NEAR(static_cast<double>(fast->currentStroke.handPoints.back().timestamp), static_cast<double>(now), 5000.0);
}

TEST(DetectionTest, Refusals) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double badHead[3] = {0.0, nan, 0.0};
  int gesture = 0;
  double confidence = 0.0;
  Recognizer r(GestureRecognition::createZeroFilled());
  EXPECT_EQ(r->contdDetect(kHead, kFacing, &gesture, &confidence), ReturnCode_NoStrokeStarted);
  r->startStroke(kHead, kFacing, -1);
  EXPECT_EQ(r->contdDetect(kHead, kFacing, &gesture, &confidence), ReturnCode_NoGestures);
  EXPECT_EQ(r->contdDetect(kHead, kFacing, nullptr, &confidence), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->contdDetect(kHead, kFacing, &gesture, nullptr), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->contdDetect(badHead, kFacing, &gesture, &confidence), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->contdDetectM(nullptr, &gesture, &confidence), ReturnCode_InvalidParameter);
  for (double bad : {nan, std::numeric_limits<double>::infinity(), -0.1, 1.1}) {
    EXPECT_EQ(r->setDetectionSensitivity(bad), ReturnCode_InvalidParameter);
    if (!std::isfinite(bad)) {
      EXPECT_EQ(r->setHostTime(bad), ReturnCode_InvalidParameter);
    }
  }
  EXPECT_EQ(r->getDetectionSensitivity(), 0.5);
  EXPECT_EQ(GestureRecognition_contdDetect(nullptr, kHead, kFacing, &gesture, &confidence),
            ReturnCode_InvalidParameter);

  // A running training owns the samples the detector reads.
  Recognizer training = makeRecorded(false);
  training->startStroke(kHead, kFacing, -1);
  training->trainingState = kJobRunning;
  EXPECT_EQ(training->contdDetect(kHead, kFacing, &gesture, &confidence), ReturnCode_TrainingInProgress);
  training->trainingState = kJobIdle;
  EXPECT_EQ(training->contdDetect(kHead, kFacing, &gesture, &confidence), 0);
}

TEST(DetectionTest, FilesKeepOnlyASensitivityThatWasSet) {
  ScratchFiles scratch;
  const std::string untouched = scratch("untouched.dat"), used = scratch("used.dat"), set = scratch("set.dat");
  Recognizer r = makeRecorded(true);
  ASSERT_EQ(r->saveToFile(untouched.c_str()), 0);
  std::vector<size_t> ends;
  EXPECT_EQ(replay(*r, session({{1, 1.0, 0.25}}, ends)).size(), 1u);
  r->cancelStroke();
  ASSERT_EQ(r->saveToFile(used.c_str()), 0);
  std::string before, after, member;
  ASSERT_TRUE(readArchiveMember(untouched.c_str(), kDatabaseMember, before));
  ASSERT_TRUE(readArchiveMember(used.c_str(), kDatabaseMember, after));
  EXPECT_EQ(after, before);
  EXPECT_EQ(archiveMembers(used), archiveMembers(untouched));

  ASSERT_EQ(r->setDetectionSensitivity(0.3), 0);
  ASSERT_EQ(r->saveToFile(set.c_str()), 0);
  Recognizer loaded(GestureRecognition::createZeroFilled());
  ASSERT_EQ(loaded->loadFromFile(set.c_str(), nullptr), 0);
  EXPECT_EQ(loaded->getDetectionSensitivity(), 0.3);
  // Files keep no point times: a loaded set detects all the same.
  EXPECT_EQ(replay(*loaded, session({{1, 1.0, 0.25}}, ends)).size(), 1u);
  ASSERT_EQ(loaded->loadFromFile(used.c_str(), nullptr), 0);
  EXPECT_EQ(loaded->getDetectionSensitivity(), 0.5);
}

}  // namespace
}  // namespace zando
