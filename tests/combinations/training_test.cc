// Training all parts together: the thread limit, one finish with the combinations' score, the
// refusals, and deleting the object while its parts train.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "combination_fixture.h"
#include "waiting.h"

namespace zando {
namespace {

using namespace combination_testing;

// What the application's callbacks saw. The update callback runs under the object's mutex, so it
// may look at the scheduler's lists.
struct Observer {
  GestureCombinations* owner = nullptr;
  std::atomic<int> updates{0};
  std::atomic<int> overLimit{0};
  std::atomic<int> finishes{0};
  std::atomic<bool> trainingAtFinish{true};
  double finalScore = -1.0;
};

void onUpdate(double, void* context) {
  auto* observer = static_cast<Observer*>(context);
  ++observer->updates;
  const int limit = observer->owner->getMaxTrainingThreads();
  if (static_cast<int>(observer->owner->runningParts.size()) > limit) ++observer->overLimit;
}

void onFinish(double score, void* context) {
  auto* observer = static_cast<Observer*>(context);
  observer->finalScore = score;
  observer->trainingAtFinish = observer->owner->isTraining();
  ++observer->finishes;
}

bool waitFor(const std::atomic<int>& counter, int value, int seconds) {
  return testing_support::waitUntil([&] { return counter.load() >= value; }, seconds);
}

class CombinationTrainingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    c = makeCombinations(2);
    std::mt19937 rng(4);
    recordTwoHands(*c, 5, rng);
    c->createGesture(0, "never recorded", nullptr);
    // The gestures of parts 0 and 1; the last one's has no samples, so its repetitions can only fail.
    const struct { const char* name; int left, right; } combinations[] = {
        {"circles", 0, 0}, {"left swipe, right zigzag", 1, 2}, {"empty", 3, -1}};
    for (const auto& wanted : combinations) {
      const int k = c->createGestureCombination(wanted.name);
      c->setCombinationPartGesture(k, 0, wanted.left);
      c->setCombinationPartGesture(k, 1, wanted.right);
    }
    c->setMaxTrainingTime(testing_support::timeScale());  // a second of a native run
    observer.owner = c.get();
    c->trainingUpdateCallback = &onUpdate;
    c->trainingUpdateCallbackMetadata = &observer;
    c->trainingFinishCallback = &onFinish;
    c->trainingFinishCallbackMetadata = &observer;
  }
  Combinations c;
  Observer observer;
};

TEST_F(CombinationTrainingTest, OnePartAtATimeThenOneScore) {
  // A twin of the circle keeps both parts from a perfect score, so they train to the time limit.
  std::mt19937 rng(6);
  for (int part = 0; part < 2; ++part) {
    const int twin = c->createGesture(part, "circle again", nullptr);
    for (int s = 0; s < 5; ++s) recordOnPart(*c, part, 0, twin, rng);
  }
  c->setMaxTrainingThreads(1);
  c->setMaxTrainingTime(2 * testing_support::timeScale());  // at least a whole second of a native run's steps
  ASSERT_EQ(c->startTraining(), 0);
  EXPECT_EQ(c->createGestureCombination("x"), -8);  // (other refusals while training: the stress test)
  ASSERT_TRUE(waitFor(observer.finishes, 1, 20));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(observer.finishes.load(), 1);
  EXPECT_FALSE(observer.trainingAtFinish.load());
  EXPECT_FALSE(c->isTraining());
  // Every step queued; after the first report, which the two parts may share, one computes.
  EXPECT_GT(observer.updates.load(), 4);
  EXPECT_LE(observer.overLimit.load(), 1);
  // Two of three combinations can be recognised; the score is the one the finish reported.
  EXPECT_GE(observer.finalScore, 0.5);
  EXPECT_LE(observer.finalScore, 2.0 / 3.0 + 1e-12);
  EXPECT_EQ(c->recognitionScore(), observer.finalScore);
  for (int part : {0, 1}) EXPECT_GT(c->gestureRecognitionScore(part), 0.5) << part;
}

TEST_F(CombinationTrainingTest, APartWithoutSamplesFinishesAtOnceWithoutEndingTheRun) {
  c->setMaxTrainingThreads(2);
  for (int g = 0; g < 3; ++g) c->deleteAllGestureSamples(0, g);
  ASSERT_EQ(c->startTraining(), 0);
  ASSERT_TRUE(waitFor(observer.finishes, 1, 20));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(observer.finishes.load(), 1);
  EXPECT_EQ(observer.overLimit.load(), 0);
  // Every combination needs a stroke of part 0, which has nothing to replay.
  EXPECT_EQ(observer.finalScore, 0.0);
  EXPECT_GT(c->gestureRecognitionScore(1), 0.5);
}

TEST_F(CombinationTrainingTest, RefusalsAndStopping) {
  c->setPartEnabled(0, false);
  c->setPartEnabled(1, false);
  EXPECT_EQ(c->startTraining(), -9);
  EXPECT_FALSE(c->isTraining());
  c->setPartEnabled(1, true);

  c->setMaxTrainingTime(60);
  ASSERT_EQ(c->startTraining(), 0);
  EXPECT_FALSE(c->parts[0]->isTraining());  // disabled parts do not train
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(c->stopTraining(), 0);
  ASSERT_TRUE(waitFor(observer.finishes, 1, 20));
  EXPECT_LT(std::chrono::steady_clock::now() - started, testing_support::scaledSeconds(10));
  EXPECT_FALSE(c->isTraining());
}

TEST(CombinationTrainingDeletionTest, DeletingWhilePartsTrainWaitsForThem) {
  for (int threads : {1, 2}) {
    Combinations c = makeCombinations(2);
    std::mt19937 rng(9);
    recordTwoHands(*c, 4, rng);
    const int k = c->createGestureCombination("both circles");
    c->setCombinationPartGesture(k, 0, 0);
    c->setCombinationPartGesture(k, 1, 0);
    c->setMaxTrainingTime(60);
    c->setMaxTrainingThreads(threads);
    ASSERT_EQ(c->startTraining(), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(20 * threads));
    const auto started = std::chrono::steady_clock::now();
    c.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - started, testing_support::scaledSeconds(10));
  }
}

}  // namespace
}  // namespace zando
