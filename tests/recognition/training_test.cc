// Training as a host drives it: record, train in the background, identify; the refusals while a
// run lasts; stopping; the finish callback; and deleting the object around a run.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <thread>

#include "model/training_fixtures.h"
#include "recognition/gesture_recognition.h"

namespace zando {
namespace {

using testing_shapes::ShapeMaker;

const double kIdentity[4] = {0.0, 0.0, 0.0, 1.0};

// Outlives the recogniser, so that a late callback can still be checked.
struct FinishLog {
  std::atomic<int> calls{0};
  std::atomic<int> trainingInside{-1};
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

  bool waitForCalls(int count) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (calls.load() < count && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return calls.load() >= count;
  }
};

class TrainingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    r = GestureRecognition::createZeroFilled();
    log.recognizer = r;
    r->trainingFinishCallback = &FinishLog::record;
    r->trainingFinishCallbackMetadata = &log;
  }
  void TearDown() override { delete r; }

  // One performance through the public stroke operations; what endStroke returns.
  int perform(int shape, int gesture) {
    const double head[3] = {ShapeMaker::head().x(), ShapeMaker::head().y(), ShapeMaker::head().z()};
    const int started = r->startStroke(head, kIdentity, gesture);
    if (started != 0) return started;
    for (const Eigen::Vector3d& p : maker.perform(shape)) {
      const double hand[3] = {p.x(), p.y(), p.z()};
      EXPECT_EQ(r->contdStrokeQ(hand, kIdentity), 0);
    }
    return r->endStroke(nullptr, nullptr, nullptr, nullptr, nullptr);
  }

  void record(const std::vector<int>& shapes, int samples) {
    for (int shape : shapes) {
      const int gesture = r->createGesture("shape", nullptr);
      for (int i = 0; i < samples; ++i) ASSERT_EQ(perform(shape, gesture), gesture);
    }
  }

  GestureRecognition* r = nullptr;
  FinishLog log;
  ShapeMaker maker{2024};
};

TEST_F(TrainingTest, DistinctShapesTrainAndFreshPerformancesAreRecognised) {
  record({0, 1, 2, 3, 4}, 12);
  r->maxTrainingTime = 5;
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

TEST_F(TrainingTest, EmptySetZeroTimeAndTheParameterTable) {
  EXPECT_EQ(r->getTrainingParameter(0), -1);
  EXPECT_EQ(r->getTrainingParameter(-1), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->setTrainingParameter(-1, 3), ReturnCode_InvalidParameter);
  EXPECT_EQ(r->setTrainingParameter(11, 5), 0);
  EXPECT_EQ(r->getTrainingParameter(11), 5);
  EXPECT_EQ(r->stopTraining(), 0);  // nothing to stop

  ASSERT_EQ(r->startTraining(), 0);
  ASSERT_TRUE(log.waitForCalls(1));
  EXPECT_EQ(log.score.load(), 1.0);
  EXPECT_EQ(r->stopTraining(), 0);

  // No time: the random start network, score 0.0, and still exactly one callback.
  record({0, 1, 2}, 5);
  r->maxTrainingTime = 0;
  ASSERT_EQ(r->startTraining(), 0);
  ASSERT_TRUE(log.waitForCalls(2));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_EQ(log.calls.load(), 2);
  EXPECT_EQ(log.score.load(), 0.0);
  // A first training's settings: tanh, 16 waypoints (F 120), two hidden layers of 144.
  const GestureModel& model = r->gestureModel;
  EXPECT_EQ(model.parameters.transferMode, 1);
  EXPECT_EQ(model.validationCost, std::numeric_limits<double>::max());
  ASSERT_EQ(model.weights.size(), 3u);
  EXPECT_EQ(model.weights[0].rows(), 121);
  EXPECT_EQ(model.weights[0].cols(), 144);
  EXPECT_EQ(model.layerBuffers.size(), 4u);
}

TEST_F(TrainingTest, RefusalsWhileRunningAndStopFromAnotherThread) {
  record({0, 1, 1, 1, 2}, 10);  // three of a kind: no perfect score, the run goes on until stopped
  ASSERT_EQ(r->setTrainingParameter(3, 10), 0);
  ASSERT_EQ(r->setTrainingParameter(2, 1), 0);
  r->maxTrainingTime = 60;
  ASSERT_EQ(r->startTraining(), 0);
  EXPECT_TRUE(r->isTraining());
  EXPECT_EQ(r->startTraining(), ReturnCode_TrainingInProgress);
  const double head[3] = {0.0, 1.7, 0.0};
  EXPECT_EQ(r->startStroke(head, kIdentity, 0), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->createGesture("late", nullptr), ReturnCode_TrainingInProgress);
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
  EXPECT_EQ(log.calls.load(), 0);

  const auto start = std::chrono::steady_clock::now();
  int stopped = -100;
  std::thread([&] { stopped = r->stopTraining(); }).join();
  EXPECT_EQ(stopped, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_FALSE(r->isTraining());
  ASSERT_TRUE(log.waitForCalls(1));
  // The run keeps its best network, of the pinned shape.
  EXPECT_GT(r->recognitionScore(false), 0.4);
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
    for (int g = 0; g < 3; ++g) {
      r->gestureModel.gestures.push_back(new Gesture("g", nullptr));
      for (int i = 0; i < 5; ++i) r->gestureModel.gestures[g]->gestureSamples.push_back(maker.stroke(g));
    }
    r->maxTrainingTime = variant == 0 ? 60 : 0;
    ASSERT_EQ(r->startTraining(), 0);
    if (variant > 0) {
      ASSERT_TRUE(log.waitForCalls(variant));
    }
    const auto start = std::chrono::steady_clock::now();
    delete r;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(log.calls.load(), variant == 2 ? 2 : 1) << variant;
  }
}

}  // namespace
}  // namespace zando
