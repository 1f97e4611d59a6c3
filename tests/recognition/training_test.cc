// Training as a host drives it: train in the background and identify fresh performances; the
// refusals while a run lasts; stopping; the finish callback; and deleting the object around a run.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "model/training_fixtures.h"
#include "recognition/gesture_recognition.h"
#include "waiting.h"

namespace zando {
namespace {

using testing_shapes::ShapeMaker;
using testing_shapes::addGestures;

const double kHead[3] = {0.0, 1.7, 0.0}, kIdentity[4] = {0.0, 0.0, 0.0, 1.0};  // ShapeMaker's head

template <typename Condition>
bool waitFor(Condition done) { return testing_support::waitUntil(done, 15); }

// Outlives the recogniser, so that a late callback can still be checked.
struct FinishLog {
  std::atomic<int> calls{0}, trainingInside{-1};
  std::atomic<double> score{-1.0};
  GestureRecognition* recognizer = nullptr;  // asked for isTraining inside the callback if set
  bool restart = false;                      // start the next run from inside the first callback

  static void record(double score, void* metadata) {
    FinishLog* log = static_cast<FinishLog*>(metadata);
    if (log->recognizer != nullptr) log->trainingInside = log->recognizer->isTraining() ? 1 : 0;
    log->score = score;
    if (log->calls.fetch_add(1) == 0 && log->restart) {
      EXPECT_EQ(log->recognizer->startTraining(), 0);
    }
  }
  bool waitForCalls(int count) const { return waitFor([&] { return calls.load() >= count; }); }
};

class TrainingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    log.recognizer = r;
    r->trainingFinishCallback = &FinishLog::record;
    r->trainingFinishCallbackMetadata = &log;
  }
  void TearDown() override { delete r; }

  // One performance through the public stroke operations; what endStroke returns.
  int perform(int shape, int gesture) {
    const int started = r->startStroke(kHead, kIdentity, gesture);
    if (started != 0) return started;
    for (const Eigen::Vector3d& p : maker.perform(shape)) {
      const double hand[3] = {p.x(), p.y(), p.z()};
      EXPECT_EQ(r->contdStrokeQ(hand, kIdentity), 0);
    }
    return r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr);
  }

  GestureRecognition* r = GestureRecognition::createZeroFilled();
  FinishLog log;
  ShapeMaker maker{2024};
};

TEST_F(TrainingTest, DistinctShapesTrainAndFreshPerformancesAreRecognised) {
  addGestures(r->gestureModel, maker, {0, 1, 2, 3, 4}, 12);
  r->maxTrainingTime = 5 * testing_support::timeScale();
  ASSERT_EQ(r->startTraining(), 0);
  ASSERT_TRUE(log.waitForCalls(1));
  EXPECT_EQ(log.trainingInside.load(), 0);  // already finished inside its own callback
  EXPECT_GE(r->recognitionScore(false), 0.95);
  EXPECT_EQ(log.score.load(), r->recognitionScore(false));
  int correct = 0;
  for (int round = 0; round < 8; ++round) {
    for (int shape = 0; shape < 5; ++shape) correct += perform(shape, -1) == shape;
  }
  EXPECT_GE(correct, 36) << "of 40";
  EXPECT_EQ(log.calls.load(), 1);
}

TEST_F(TrainingTest, RefusalsWhileRunningAndStopFromAnotherThread) {
  EXPECT_EQ(r->stopTraining(), 0);  // nothing to stop
  // Three of a kind: no perfect score, so the run goes on until stopped.
  addGestures(r->gestureModel, maker, {0, 1, 1, 1, 2}, 10);
  for (const auto& [id, value] : {std::pair(1, 20), std::pair(2, 1), std::pair(3, 10)}) {
    ASSERT_EQ(r->setTrainingParameter(id, value), 0);
  }
  std::atomic<double> update{0.0};
  r->trainingUpdateCallback = [](double score, void* last) { *static_cast<std::atomic<double>*>(last) = score; };
  r->trainingUpdateCallbackMetadata = &update;
  r->maxTrainingTime = 60;
  ASSERT_EQ(r->startTraining(), 0);
  EXPECT_TRUE(r->isTraining());
  ASSERT_TRUE(waitFor([&] { return update.load() > 0.45; }));  // a trained candidate
  EXPECT_EQ(log.calls.load(), 0);

  const auto start = std::chrono::steady_clock::now();
  int stopped = -100;
  std::thread([&] { stopped = r->stopTraining(); }).join();
  EXPECT_EQ(stopped, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, testing_support::scaledSeconds(10));
  EXPECT_FALSE(r->isTraining());
  ASSERT_TRUE(log.waitForCalls(1));
  // The run keeps its best network, of the pinned shape: well above the 0.2 of chance. (Not
  // necessarily at 0.45: the update may have come from a network the run did not keep, one whose
  // validation cost was higher.)
  EXPECT_GT(r->recognitionScore(false), 0.3);
  EXPECT_EQ(r->gestureModel.parameters.waypointCount, 10);
  EXPECT_EQ(r->gestureModel.weights.size(), 2u);
  EXPECT_EQ(r->createGesture("late", nullptr), 5);
}

// Deleting right after startTraining stops the run; deleting right after the finish callback
// (whose thread may still be in its last steps, or may have started the next run) waits for it.
TEST(TrainingLifetimeTest, DeletingDuringOrRightAfterARunIsSafe) {
  ShapeMaker maker(77);
  for (int variant = 0; variant < 3; ++variant) {
    FinishLog log;
    GestureRecognition* r = GestureRecognition::createZeroFilled();
    r->trainingFinishCallback = &FinishLog::record;
    r->trainingFinishCallbackMetadata = &log;
    log.restart = variant == 2;
    log.recognizer = log.restart ? r : nullptr;
    addGestures(r->gestureModel, maker, {0, 1, 2}, 5);
    r->maxTrainingTime = variant == 0 ? 60 : 0;
    ASSERT_EQ(r->startTraining(), 0);
    if (variant > 0) {
      ASSERT_TRUE(log.waitForCalls(variant));
    }
    if (variant == 1) {
      EXPECT_EQ(log.score.load(), 0.0);  // no time: the random start network, which scores nothing
      EXPECT_EQ(r->gestureModel.weights.size(), 3u);
    }
    const auto start = std::chrono::steady_clock::now();
    delete r;
    EXPECT_LT(std::chrono::steady_clock::now() - start, testing_support::scaledSeconds(10));
    EXPECT_EQ(log.calls.load(), variant == 2 ? 2 : 1) << variant;
  }
}

}  // namespace
}  // namespace zando
