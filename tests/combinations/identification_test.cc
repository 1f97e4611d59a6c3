// Which combination the parts' results name: finished strokes on both hands, the idle-part rule,
// disabled parts, ties, results used only once, per-part outputs, and the running motion.
#include <gtest/gtest.h>

#include <vector>

#include "combination_fixture.h"

namespace zando {
namespace {

using namespace combination_testing;

class CombinationIdentificationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    c = makeCombinations(2);
    for (int part = 0; part < 2; ++part) {
      for (int g = 0; g < 3; ++g) c->createGesture(part, "g", nullptr);
    }
  }
  int define(std::vector<int> gestures) {
    const int k = c->createGestureCombination("k");
    for (int part = 0; part < 2; ++part) c->setCombinationPartGesture(k, part, gestures[part]);
    return k;
  }
  int identify(double* probability = nullptr, double* similarity = nullptr) {
    return c->identifyGestureCombination(probability, similarity, partP, partS);
  }
  // Fresh results on part 0 and, when given, on part 1, then the identification.
  int identifyAfter(std::vector<double> p0, std::vector<double> s0, std::vector<double> p1 = {},
                    std::vector<double> s1 = {}) {
    setPartResult(*c, 0, p0, s0);
    if (!p1.empty()) setPartResult(*c, 1, p1, s1);
    return identify();
  }
  Combinations c;
  double partP[2] = {9, 9}, partS[2] = {9, 9};
};

TEST_F(CombinationIdentificationTest, TheBestMeanOfTheWantedGesturesWins) {
  EXPECT_EQ(identify(), -9);
  define({0, 1});   // 0: left circle, right swipe
  define({2, -1});  // 1: left zigzag, right idle
  define({1, 1});   // 2: both swipe
  // Part 1's own best is gesture 2, which no combination wants: the mean of the wanted ones decides.
  setPartResult(*c, 0, {0.5, 0.1, 0.4}, {0.5, 0.6, 0.7});
  setPartResult(*c, 1, {0.0, 0.2, 0.8}, {0.1, 0.8, 0.2});
  double probability = 0, similarity = 0;
  EXPECT_EQ(identify(&probability, &similarity), 0);
  EXPECT_DOUBLE_EQ(probability, (0.5 + 0.2) / 2);
  EXPECT_DOUBLE_EQ(similarity, (0.5 + 0.8) / 2);
  EXPECT_DOUBLE_EQ(partP[0], 0.5);
  EXPECT_DOUBLE_EQ(partS[1], 0.8);

  // Each result counts once: a second call finds nothing fresh.
  EXPECT_EQ(identify(&probability, &similarity), -1);
  EXPECT_EQ(probability, 0.0);
  EXPECT_EQ(partP[0], -1.0);
  EXPECT_EQ(partS[1], -1.0);

  // Only part 0 moved: the combination that wants part 1 idle is the one that fits.
  setPartResult(*c, 0, {0.1, 0.1, 0.8}, {0.1, 0.1, 0.9});
  EXPECT_EQ(identify(&probability), 1);
  EXPECT_DOUBLE_EQ(probability, 0.8);
  EXPECT_EQ(partP[1], 1.0);  // idle as required
  EXPECT_EQ(partP[0], 0.8);

  // A stroke on the part that should stay idle rejects it, unless that part is disabled.
  for (bool enabled : {true, false}) {
    c->setPartEnabled(1, enabled);
    EXPECT_EQ(identifyAfter({0.0, 0.0, 1.0}, {0.1, 0.1, 0.9}, {0.0, 0.0, 1.0}, {0.0, 0.0, 1.0}), enabled ? -1 : 1);
  }
  // A disabled part that a combination needs rejects it.
  EXPECT_EQ(identifyAfter({0.9, 0.1, 0.0}, {0.9, 0.1, 0.0}, {0.1, 0.9, 0.0}, {0.1, 0.9, 0.0}), -1);
}

TEST_F(CombinationIdentificationTest, TiesStayWithTheEarlierCombination) {
  define({1, -1});
  define({0, -1});
  EXPECT_EQ(identifyAfter({0.5, 0.5, 0.0}, {0.2, 0.9, 0.0}), 0);
  EXPECT_EQ(identifyAfter({0.0, 0.0, 1.0}, {1.0, 1.0, 1.0}), -1);  // a mean of exactly zero never wins
}

TEST_F(CombinationIdentificationTest, ACombinationFromAFileWithFewerPartsIgnoresTheRest) {
  const int k = define({1, 1});
  c->combinations[static_cast<size_t>(k)].partCount = 1;
  EXPECT_EQ(identifyAfter({0.1, 0.7, 0.2}, {0.1, 0.7, 0.2}, {1.0, 0.0, 0.0}, {1.0, 0.0, 0.0}), k);
  EXPECT_EQ(partP[0], 0.7);
  EXPECT_EQ(partP[1], -1.0);
}

// Real strokes on both hands, identified by comparison with the recorded samples.
TEST_F(CombinationIdentificationTest, StrokesOfBothHandsNameTheCombination) {
  c = makeCombinations(2);
  std::mt19937 rng(8);
  recordTwoHands(*c, 4, rng);
  const int circles = define({0, 0});
  const int leftSwipe = define({1, -1});
  const int mixed = define({2, 1});

  struct Case {
    int left, right, expected;
  } cases[] = {{0, 0, circles}, {1, -1, leftSwipe}, {2, 1, mixed}};
  for (const Case& test : cases) {
    const int parts = test.right >= 0 ? 2 : 1;
    for (int part = 0; part < parts; ++part) performOnPart(*c, part, part == 0 ? test.left : test.right, -1, rng);
    EXPECT_EQ(identify(), -13);  // strokes still running
    for (int part = 0; part < parts; ++part) {
      ASSERT_EQ(c->endStroke(part, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    }
    double probabilities[3], similarities[3];
    int count = 3;
    ASSERT_EQ(c->getPartProbabilitiesAndSimilarities(0, probabilities, similarities, &count), 0);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(identify(), test.expected) << "left " << test.left << ", right " << test.right;
  }
}

TEST_F(CombinationIdentificationTest, TheRunningMotionNamesACombination) {
  c = makeCombinations(2);
  std::mt19937 rng(21);
  recordTwoHands(*c, 4, rng);
  define({1, -1});
  const int both = define({0, 2});
  double similarity = 0;
  EXPECT_EQ(c->contdIdentify(kHead, kFacing, &similarity, partP, partS), -1);  // no strokes: nothing fits
  performOnPart(*c, 0, 0, -1, rng);
  performOnPart(*c, 1, 2, -1, rng);
  EXPECT_EQ(c->contdIdentify(kHead, kFacing, &similarity, partP, partS), both);
  EXPECT_GT(partP[0], 0.0);
  EXPECT_GT(partP[1], 0.0);
  double position[3] = {0, 0, 0}, scale = 0;
  ASSERT_EQ(c->contdIdentifyGetLastStrokeInfo(1, position, &scale, nullptr, nullptr, nullptr), 0);
  EXPECT_NEAR(position[1], 1.4, 0.1);
  EXPECT_GT(scale, 0.0);

  // Recording from the running motion stores a window in the recording part only.
  c->cancelStroke(1);
  c->startStroke(0, kHead, kFacing, 1);
  for (int i = 0; i < 5; ++i) {
    const double p[3] = {0.1 * i, 1.4, 0.4};
    c->contdStrokeQ(0, p, kFacing);
  }
  const int before = c->getGestureNumberOfSamples(0, 1);
  EXPECT_EQ(c->contdRecord(kHead, kFacing), 1);  // the first part's gesture index
  EXPECT_EQ(c->contdRecordPart(0, kHead, kFacing), 1);
  EXPECT_EQ(c->getGestureNumberOfSamples(0, 1), before + 2);
  EXPECT_EQ(c->getGestureSampleType(0, 1, before), 1);
  EXPECT_EQ(c->contdRecordPart(1, kHead, kFacing), -12);
}

}  // namespace
}  // namespace zando
