// The enhanced recognition mode: its switch, what it recognises that the plain mode does not, its
// files, and continuous identification with it.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <sstream>
#include <vector>

#include "persistence/archive.h"
#include "recognition/gesture_recognition.h"
#include "recognizer_fixture.h"
#include "scratch_files.h"
#include "waiting.h"

namespace zando {
namespace {

using namespace testing_support;

// A "V" turned by quarter turns in the frontal plane: the same shape in four orientations, which
// only the orientation tells apart.
void drawTurnedV(IGestureRecognition& r, int quarterTurns, std::mt19937& rng) {
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  const double size = 0.2 * (1.0 + 0.2 * jitter(rng));
  const double angle = quarterTurns * kPi / 2 + 0.1 * jitter(rng);
  const double cx = 0.05 * jitter(rng), cy = 1.4 + 0.05 * jitter(rng);
  for (int i = 0; i < 50; ++i) {
    double x = 0, y = 0;
    shapeOffset(3, i / 49.0, x, y);
    const double p[3] = {cx + size * (std::cos(angle) * x - std::sin(angle) * y) + 0.004 * jitter(rng),
                         cy + size * (std::sin(angle) * x + std::cos(angle) * y) + 0.004 * jitter(rng),
                         0.45 + 0.004 * jitter(rng)};
    r.contdStrokeQ(p, kFacing);
  }
}

void performTurnedV(IGestureRecognition& r, int quarterTurns, int recordAs, std::mt19937& rng) {
  r.startStroke(kHead, kFacing, recordAs);
  drawTurnedV(r, quarterTurns, rng);
}

// A whole stroke of the turned V: what endStroke gives for it.
int strokeTurnedV(IGestureRecognition& r, int quarterTurns, int recordAs, std::mt19937& rng) {
  performTurnedV(r, quarterTurns, recordAs, rng);
  return endStroke(r);
}

// Of `trials` strokes of the V turned `quarterTurns(trial)`, those identified as `expected(trial)`.
template <typename Turns, typename Expected>
int identified(IGestureRecognition& r, int trials, Turns quarterTurns, Expected expected, std::mt19937& rng) {
  int correct = 0;
  for (int trial = 0; trial < trials; ++trial) {
    correct += strokeTurnedV(r, quarterTurns(trial), -1, rng) == expected(trial) ? 1 : 0;
  }
  return correct;
}

// Gesture g: the V turned g quarter turns, `samples` of each.
std::unique_ptr<GestureRecognition> turnedVSet(std::mt19937& rng, int gestures = 4, int samples = 2) {
  auto r = std::make_unique<GestureRecognition>();
  for (int g = 0; g < gestures; ++g) {
    r->createGesture("V", nullptr);
    for (int s = 0; s < samples; ++s) strokeTurnedV(*r, g, g, rng);
  }
  return r;
}

int correctOf40(GestureRecognition& r, std::mt19937& rng) {
  const auto turn = [](int trial) { return trial % 4; };
  return identified(r, 40, turn, turn, rng);
}

TEST(EnhancedRecognitionTest, SwitchIsRefusedWhileJobsRunAndForOtherValues) {
  GestureRecognition r;
  EXPECT_EQ(r.getEnhancedRecognition(), 0);
  EXPECT_EQ(r.setEnhancedRecognition(2), ReturnCode_InvalidParameter);
  EXPECT_EQ(r.setEnhancedRecognition(-1), ReturnCode_InvalidParameter);
  EXPECT_EQ(r.setEnhancedRecognition(1), ReturnCode_Success);
  const std::pair<std::atomic<int>*, int> jobs[] = {{&r.trainingState, ReturnCode_TrainingInProgress},
                                                    {&r.loadingState, ReturnCode_LoadingInProgress},
                                                    {&r.savingState, ReturnCode_SavingInProgress}};
  for (const auto& job : jobs) {
    job.first->store(kJobRunning);
    EXPECT_EQ(r.setEnhancedRecognition(0), job.second);
    job.first->store(kJobIdle);
  }
  EXPECT_EQ(r.getEnhancedRecognition(), 1);
  EXPECT_EQ(r.setEnhancedRecognition(0), ReturnCode_Success);
  EXPECT_EQ(r.getEnhancedRecognition(), 0);
  EXPECT_EQ(GestureRecognition_setEnhancedRecognition(nullptr, 1), ReturnCode_InvalidParameter);
  EXPECT_EQ(GestureRecognition_getEnhancedRecognition(nullptr), 0);
}

// Two samples a gesture and no training: the plain mode compares a few samples in each stroke's
// own frame and mixes the turned copies up; the enhanced mode keeps the orientation. It needs no
// network: training ends at once, scored by how the samples identify one another, and leaves the
// statistics behind similarity values.
TEST(EnhancedRecognitionTest, TellsApartTurnedCopiesFromTwoSamplesEachAndTrainsAtOnce) {
  std::mt19937 rng(11);
  std::unique_ptr<GestureRecognition> r = turnedVSet(rng);
  const int plain = correctOf40(*r, rng);
  ASSERT_EQ(r->setEnhancedRecognition(1), ReturnCode_Success);
  const int enhanced = correctOf40(*r, rng);
  EXPECT_LE(plain, 32);
  EXPECT_GE(enhanced, 39);

  // The probability forms agree with the answer and share out 1 between the gestures.
  double p[4], s[4];
  int n = 4;
  performTurnedV(*r, 2, -1, rng);
  EXPECT_EQ(endWithSimilarities(*r, p, s, &n), 2);
  ASSERT_EQ(n, 4);
  EXPECT_NEAR(p[0] + p[1] + p[2] + p[3], 1.0, 1e-9);
  EXPECT_GT(p[2], 0.5);

  r->maxTrainingTime = 60;
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(r->startTraining(), ReturnCode_Success);
  ASSERT_TRUE(waitUntil([&] { return !r->isTraining(); }, 10));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_GE(r->recognitionScore(false), 0.75);
  EXPECT_GE(correctOf40(*r, rng), 39);
  double similarity = -1.0;
  performTurnedV(*r, 1, -1, rng);
  EXPECT_EQ(endWithSimilarity(*r, &similarity), 1);
  EXPECT_GT(similarity, 0.0);
}

// Of ten strokes drawn as `query`, those that an enhanced set of `first` (gesture 0) and `second`
// (gesture 1), `samples` of each, identifies as gesture 0. `draw(r, drawing, recordAs)` performs a
// drawing and returns what endStroke gives.
template <typename Drawing, typename Draw>
int firstOf10(Draw&& draw, const Drawing& first, const Drawing& second, const Drawing& query, int samples = 2) {
  GestureRecognition r;
  r.setEnhancedRecognition(1);
  r.createGesture("first", nullptr);
  r.createGesture("second", nullptr);
  for (int s = 0; s < samples; ++s) {
    draw(r, first, 0);
    draw(r, second, 1);
  }
  int found = 0;
  for (int trial = 0; trial < 10; ++trial) found += draw(r, query, -1) == 0 ? 1 : 0;
  return found;
}

// People begin a circle where they like, hold its plane as they like and go round either way.
// Beside circles begun on the right and going anticlockwise: squares begun on the left, which a
// circle begun on the left follows more closely as it is read; flat ellipses, which a circle tipped
// forward resembles from the front; squares going clockwise, which a circle going clockwise
// follows more closely. All those are circles. But where the set holds circles going each way as
// two gestures, the way round tells them apart.
TEST(EnhancedRecognitionTest, ACircleIsACircleHoweverItIsDrawnUnlessTheWayRoundMatters) {
  std::mt19937 rng(9);
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  enum Shape { kCircle, kSquare, kEllipse };
  struct Drawing {
    Shape shape;
    double start;   // radians round from the right
    double turn;    // +1 anticlockwise, -1 clockwise
    double tip;     // radians forward
  };
  // A stroke to identify begins a little off where it is meant to.
  const auto draw = [&](IGestureRecognition& r, const Drawing& d, int recordAs) {
    r.startStroke(kHead, kFacing, recordAs);
    const double start = d.start + (recordAs < 0 ? 0.1 * jitter(rng) : 0.0);
    for (int i = 0; i <= 60; ++i) {
      const double angle = start + d.turn * 2.0 * kPi * i / 60;
      double x = std::cos(angle), y = std::sin(angle);
      if (d.shape == kSquare) {
        const double side = std::max(std::abs(x), std::abs(y));
        x /= side;
        y /= side;
      }
      if (d.shape == kEllipse) y *= std::cos(0.5);
      const double p[3] = {0.15 * x + 0.003 * jitter(rng), 1.4 + 0.15 * y * std::cos(d.tip) + 0.003 * jitter(rng),
                           0.45 + 0.15 * y * std::sin(d.tip)};
      r.contdStrokeQ(p, kFacing);
    }
    return endStroke(r);
  };
  const Drawing circle{kCircle, 0.0, 1.0, 0.0};
  EXPECT_GE(firstOf10<Drawing>(draw, circle, {kSquare, kPi, 1.0, 0.0}, {kCircle, kPi, 1.0, 0.0}), 9);
  EXPECT_GE(firstOf10<Drawing>(draw, circle, {kEllipse, 0.0, 1.0, 0.0}, {kCircle, 0.0, 1.0, 0.5}), 9);
  EXPECT_GE(firstOf10<Drawing>(draw, circle, {kSquare, 0.0, -1.0, 0.0}, {kCircle, 0.0, -1.0, 0.0}), 9);
  // Also in a set of many samples from many people.
  EXPECT_GE(firstOf10<Drawing>(draw, circle, {kSquare, 0.0, -1.0, 0.0}, {kCircle, 0.0, -1.0, 0.0}, 20), 9);
  // And a square begun elsewhere, going the other way and tipped is a square, beside flat ellipses
  // that it follows more closely as it is read.
  const Drawing square{kSquare, 0.0, 1.0, 0.0};
  EXPECT_GE(firstOf10<Drawing>(draw, square, {kEllipse, kPi, -1.0, 0.0}, {kSquare, kPi / 2, -1.0, 0.5}), 9);
  // Circles going clockwise (gesture 0) and anticlockwise (gesture 1).
  EXPECT_GE(firstOf10<Drawing>(draw, {kCircle, 0.0, -1.0, 0.0}, circle, {kCircle, kPi, -1.0, 0.0}), 9);
}

// People begin an open figure at either end too. An "L" begun at its foot (left, then up) runs
// from where a diagonal stroke begins to where it ends, and comes nearer to it as it is read; it is
// an "L" all the same. But where the set holds a stroke to the left and one to the right, the
// way tells them apart.
TEST(EnhancedRecognitionTest, AnOpenFigureBegunAtItsOtherEndIsThatFigureUnlessTheWayMatters) {
  std::mt19937 rng(4);
  std::uniform_real_distribution<double> jitter(-1.0, 1.0);
  using Corners = std::vector<std::array<double, 2>>;
  const auto draw = [&](IGestureRecognition& r, const Corners& corners, int recordAs) {
    r.startStroke(kHead, kFacing, recordAs);
    for (size_t leg = 0; leg + 1 < corners.size(); ++leg) {
      const auto& from = corners[leg];
      const auto& to = corners[leg + 1];
      for (int i = 0; i < 20; ++i) {
        const double t = i / 20.0;
        const double p[3] = {0.15 * (from[0] + t * (to[0] - from[0])) + 0.004 * jitter(rng),
                             1.4 + 0.15 * (from[1] + t * (to[1] - from[1])) + 0.004 * jitter(rng), 0.45};
        r.contdStrokeQ(p, kFacing);
      }
    }
    return endStroke(r);
  };
  const Corners ell{{-1, 1}, {-1, -1}, {1, -1}}, footFirst{{1, -1}, {-1, -1}, {-1, 1}};
  EXPECT_GE(firstOf10<Corners>(draw, ell, {{1, -1}, {-1, 1}}, footFirst), 9);
  EXPECT_GE(firstOf10<Corners>(draw, {{1, 0}, {-1, 0}}, {{-1, 0}, {1, 0}}, {{1, 0}, {-1, 0}}), 9);
}

// A set of many samples a gesture (recorded by many people) is compared with a selection that
// covers them. A way of making a gesture recorded after the set was first used is part of it.
TEST(EnhancedRecognitionTest, ALargeSetCoversEveryWayItsGesturesAreMade) {
  std::mt19937 rng(5);
  std::unique_ptr<GestureRecognition> set = turnedVSet(rng, 2, 20);
  GestureRecognition& r = *set;
  r.setEnhancedRecognition(1);
  EXPECT_EQ(strokeTurnedV(r, 0, -1, rng), 0);
  for (int s = 0; s < 3; ++s) strokeTurnedV(r, 2, 0, rng);
  EXPECT_GE(identified(r, 10, [](int) { return 2; }, [](int) { return 0; }, rng), 9);
}

TEST(EnhancedRecognitionTest, ModeTravelsInFilesAndPlainFilesStayAsTheyWere) {
  std::mt19937 rng(5);
  std::unique_ptr<GestureRecognition> r = turnedVSet(rng);
  std::ostringstream plainText;
  ASSERT_EQ(r->saveToStream(&plainText), ReturnCode_Success);
  ScratchFiles scratch;
  const std::string plainPath = scratch("plain.dat"), enhancedPath = scratch("enhanced.dat");
  ASSERT_EQ(r->saveToFile(plainPath.c_str()), ReturnCode_Success);
  ASSERT_EQ(r->setEnhancedRecognition(1), ReturnCode_Success);
  ASSERT_EQ(r->saveToFile(enhancedPath.c_str()), ReturnCode_Success);

  // Off: the member of before, holding the same text as a stream save (that it is the only one, the
  // file operation tests check). On: that same member and one more, which other readers never open.
  std::string member;
  ASSERT_TRUE(readArchiveMember(plainPath.c_str(), kDatabaseMember, member));
  EXPECT_EQ(member, plainText.str());
  ASSERT_TRUE(readArchiveMember(enhancedPath.c_str(), kDatabaseMember, member));
  EXPECT_EQ(member, plainText.str());
  EXPECT_EQ(archiveMembers(enhancedPath).size(), 2u);

  GestureRecognition loaded;
  ASSERT_EQ(loaded.loadFromFile(enhancedPath.c_str(), nullptr), ReturnCode_Success);
  EXPECT_EQ(loaded.getEnhancedRecognition(), 1);
  for (int trial = 0; trial < 8; ++trial) {
    std::mt19937 same(static_cast<unsigned>(trial));
    double before[4], after[4];
    int n = 4, m = 4;
    performTurnedV(*r, trial % 4, -1, same);
    const int expected = endWithProbabilities(*r, before, &n);
    same.seed(static_cast<unsigned>(trial));
    performTurnedV(loaded, trial % 4, -1, same);
    EXPECT_EQ(endWithProbabilities(loaded, after, &m), expected);
    for (int g = 0; g < 4; ++g) EXPECT_EQ(after[g], before[g]);
  }
  // A plain file sets the mode off again, from a buffer as from a path.
  const std::string bytes = readFile(plainPath);
  ASSERT_EQ(loaded.loadFromBuffer(bytes.data(), static_cast<int>(bytes.size()), nullptr), ReturnCode_Success);
  EXPECT_EQ(loaded.getEnhancedRecognition(), 0);
}

// A running motion: the window holds one performance, then, once that has aged out, the next.
TEST(EnhancedRecognitionTest, ContinuousIdentificationFollowsTheMotion) {
  std::mt19937 rng(8);
  std::unique_ptr<GestureRecognition> r = turnedVSet(rng);
  ASSERT_EQ(r->setEnhancedRecognition(1), ReturnCode_Success);
  r->contdIdentificationSmoothing = 0;
  r->startStroke(kHead, kFacing, -1);
  for (int g : {1, 3, 0}) {
    for (auto& point : r->currentStroke.handPoints) point.timestamp -= 5000;
    drawTurnedV(*r, g, rng);
    double similarity = 0.0;
    EXPECT_EQ(r->contdIdentify(kHead, kFacing, &similarity), g);
    EXPECT_TRUE(r->isStrokeStarted());
  }
}

}  // namespace
}  // namespace zando
