// Saving and loading a gesture set the ways a host does: archive files, bare text, memory
// buffers and streams, imports by name, and the background forms with progress and cancelling.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "../recognition/recognizer_fixture.h"
#include "../scratch_files.h"
#include "../waiting.h"
#include "persistence/archive.h"

namespace zando {
namespace {

using testing_support::archiveMembers;
using testing_support::readFile;

using testing_support::recordShape;
using Recognizer = std::unique_ptr<GestureRecognition>;

Recognizer fresh() { return Recognizer(GestureRecognition::createZeroFilled()); }

class FileOperationsTest : public testing_support::RecognizerTest {
 protected:
  void SetUp() override {
    const char* names[3] = {"circle", "swipe", "zigzag"};
    for (int g = 0; g < 3; ++g) {
      ASSERT_EQ(r->createGesture(names[g], nullptr), g);
      for (int s = 0; s < 2; ++s) ASSERT_EQ(recordShape(*r, g, g, rng), g);
    }
    r->setGestureEnabled(2, false);
    r->rotationalFrameOfReferenceY = 1;
    r->rotationalFrameOfReferenceRotationOrder = 4;
    r->contdIdentificationPeriod = 1500;
  }
  std::string text() {
    std::ostringstream out;
    EXPECT_EQ(r->saveToStream(&out), 0);
    return out.str();
  }

  // The fixture's set as another object holds it after a load: gestures, samples and frame.
  void expectSameSet(GestureRecognition& other) {
    ASSERT_EQ(other.numberOfGestures(), 3);
    EXPECT_STREQ(other.getGestureName(1), "swipe");
    EXPECT_FALSE(other.getGestureEnabled(2));
    const Stroke& a = *r->gestureModel.gestures[1]->gestureSamples[1];
    const Stroke& b = *other.gestureModel.gestures[1]->gestureSamples.at(1);
    EXPECT_NEAR(a.handPoints[30].position.x, b.handPoints.at(30).position.x, 1e-8);
    EXPECT_EQ(other.rotationalFrameOfReferenceY, 1);
    EXPECT_EQ(other.rotationalFrameOfReferenceRotationOrder, 4);
    EXPECT_EQ(other.contdIdentificationPeriod, 1500);
  }

  std::mt19937 rng{5};
  testing_support::ScratchFiles path;  // path(name): a scratch file, removed after the test
};

// Paths are UTF-8 text on every system, so each file is written under a plain name and under one
// outside ASCII ("märchen_手"): either is one file for a save, a save that replaces it and a load.
TEST_F(FileOperationsTest, EveryKindOfSourceLoadsTheSameSet) {
  const std::string content = text();
  std::vector<std::string> archives, bares;
  for (const std::string name : {"set", "m\xC3\xA4rchen_\xE6\x89\x8B"}) {
    // An archive of one deflated member; saving again replaces it rather than adding a member.
    archives.push_back(path(name + ".dat"));
    for (int round = 0; round < 2; ++round) {
      ASSERT_EQ(r->saveToFile(archives.back().c_str()), 0);
      EXPECT_EQ(archiveMembers(archives.back()), std::vector<std::string>{"nn.txt deflated"});
    }
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::u8path(archives.back())));
    bares.push_back(path(name + ".txt"));
    std::ofstream(std::filesystem::u8path(bares.back()), std::ios::binary) << content;
  }
  const std::string bytes = readFile(archives[0]);
  std::istringstream stream(content);

  const std::pair<const char*, std::function<int(GestureRecognition&)>> loads[] = {
      {"archive", [&](auto& g) { return g.loadFromFile(archives[0].c_str(), nullptr); }},
      {"archive, UTF-8 name", [&](auto& g) { return g.loadFromFile(archives[1].c_str(), nullptr); }},
      {"bare text", [&](auto& g) { return g.loadFromFile(bares[0].c_str(), nullptr); }},
      {"bare text, UTF-8 name", [&](auto& g) { return g.loadFromFile(bares[1].c_str(), nullptr); }},
      {"archive bytes",
       [&](auto& g) { return g.loadFromBuffer(bytes.data(), static_cast<int>(bytes.size()), nullptr); }},
      {"text bytes",
       [&](auto& g) { return g.loadFromBuffer(content.data(), static_cast<int>(content.size()), nullptr); }},
      {"stream", [&](auto& g) { return g.loadFromStream(&stream, nullptr); }},
  };
  for (const auto& [source, load] : loads) {
    SCOPED_TRACE(source);
    Recognizer other = fresh();
    ASSERT_EQ(load(*other), 0);
    expectSameSet(*other);
  }
}

TEST_F(FileOperationsTest, FailuresReportTheirCodes) {
  Recognizer other = fresh();
  other->rotationalFrameOfReferenceRotationOrder = 5;
  // A short buffer goes down the text path and fails there as content.
  EXPECT_EQ(other->loadFromBuffer("#18\nnonsense", 12, nullptr), ReturnCode_InvalidFile);
  // An archive without the member falls through to the text path and fails as content.
  const std::string foreign = path("foreign.zip");
  ASSERT_TRUE(appendArchiveMember(foreign.c_str(), "other.txt", "hello"));
  EXPECT_EQ(other->loadFromFile(foreign.c_str(), nullptr), ReturnCode_InvalidFile);
  // A failed load leaves the object's frame of reference as it was.
  EXPECT_EQ(other->rotationalFrameOfReferenceRotationOrder, 5);

  // (Unusable paths, and the codes of a running save, are in the hostile-values and the stress
  // tests.) A running training refuses the stream and buffer forms too.
  r->trainingState = kJobRunning;
  std::ostringstream sink;
  EXPECT_EQ(r->saveToStream(&sink), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->loadFromBuffer("x", 1, nullptr), ReturnCode_TrainingInProgress);
}

TEST_F(FileOperationsTest, ImportsMergeByName) {
  const std::string content = text();
  Recognizer target = fresh();
  ASSERT_EQ(target->createGesture("zigzag", nullptr), 0);
  target->contdIdentificationPeriod = 700;
  std::istringstream in(content);
  std::vector<int> mapping;
  ASSERT_EQ(target->importFromStream(&in, nullptr, &mapping), 0);
  ASSERT_EQ(target->numberOfGestures(), 3);
  EXPECT_EQ(mapping, (std::vector<int>{1, 2, 0}));
  EXPECT_EQ(target->getGestureNumberOfSamples(0), 2);
  EXPECT_STREQ(target->getGestureName(1), "circle");
  // The period line of the file lands in the importing object; its frame does not.
  EXPECT_EQ(target->contdIdentificationPeriod, 1500);
  EXPECT_EQ(target->rotationalFrameOfReferenceRotationOrder, 2);
  // Importing the same again adds samples to the gestures of the same names.
  ASSERT_EQ(target->importFromBuffer(content.data(), static_cast<int>(content.size()), nullptr, nullptr), 0);
  EXPECT_EQ(target->numberOfGestures(), 3);
  EXPECT_EQ(target->getGestureNumberOfSamples(1), 4);

  // Between objects, the source index is held against both counts with greater-than tests.
  // (Null sources, negative indices and targets at or past the count: hostile-values test.)
  Recognizer other = fresh();
  ASSERT_EQ(other->createGesture("swipe", nullptr), 0);
  EXPECT_EQ(other->importGestureSamples(r, 2, 0), ReturnCode_InvalidIndex);  // above this object's count
  EXPECT_EQ(other->importGestureSamples(r, 1, 0), 0);
  EXPECT_EQ(other->getGestureNumberOfSamples(0), 2);
  ASSERT_EQ(other->importGestures(r), 0);
  EXPECT_EQ(other->numberOfGestures(), 3);
  EXPECT_EQ(other->getGestureNumberOfSamples(0), 4);
  EXPECT_STREQ(other->getGestureName(2), "zigzag");
}

// Watches the save or the load callbacks of one recogniser.
struct JobLog {
  std::atomic<int> finishes{0}, result{1}, lastPercent{-1};
  std::atomic<bool> busyInFinish{true};
  GestureRecognition* recognizer = nullptr;

  JobLog(GestureRecognition* owner, bool save) : recognizer(owner) {
    save ? owner->setSavingUpdateCallbackFunction(&onProgress) : owner->setLoadingUpdateCallbackFunction(&onProgress);
    save ? owner->setSavingUpdateCallbackMetadata(this) : owner->setLoadingUpdateCallbackMetadata(this);
    save ? owner->setSavingFinishCallbackFunction(&onFinish) : owner->setLoadingFinishCallbackFunction(&onFinish);
    save ? owner->setSavingFinishCallbackMetadata(this) : owner->setLoadingFinishCallbackMetadata(this);
  }
  // Each report takes a moment, so that the job is still running when the test acts on it.
  static void onProgress(int percent, void* log) {
    static_cast<JobLog*>(log)->lastPercent = percent;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  static void onFinish(int result, void* log) {
    auto* l = static_cast<JobLog*>(log);
    l->busyInFinish = l->recognizer->isSaving() || l->recognizer->isLoading();
    l->result = result;
    l->finishes++;
  }
  void wait() const {
    ASSERT_TRUE(testing_support::waitUntil([this] { return finishes.load() >= 1; }, 10));
  }
};

TEST_F(FileOperationsTest, BackgroundSaveAndLoadReportProgressAndFinishOnce) {
  const std::string file = path("async.dat");
  JobLog save(r, true);
  ASSERT_EQ(r->saveToFileAsync(file.c_str()), 0);
  EXPECT_EQ(r->cancelSaving(), 0);  // waits for the end; the file is still written
  EXPECT_FALSE(r->isSaving());
  save.wait();
  EXPECT_EQ(save.finishes.load(), 1);
  EXPECT_EQ(save.result.load(), 0);
  EXPECT_FALSE(save.busyInFinish.load());
  EXPECT_EQ(save.lastPercent.load(), 99);
  const std::string bytes = readFile(file);
  for (const bool fromFile : {true, false}) {
    SCOPED_TRACE(fromFile ? "from the file" : "from a buffer");
    Recognizer loaded = fresh();
    JobLog load(loaded.get(), false);
    ASSERT_EQ(fromFile ? loaded->loadFromFileAsync(file.c_str(), nullptr)
                       : loaded->loadFromBufferAsync(bytes.data(), static_cast<int>(bytes.size()), nullptr),
              0);
    load.wait();
    EXPECT_EQ(load.result.load(), 0);
    EXPECT_FALSE(load.busyInFinish.load());
    EXPECT_EQ(load.lastPercent.load(), 99);
    expectSameSet(*loaded);
  }

  // The starters check loading, saving and training in this order (paths: hostile-values test).
  r->loadingState = kJobRunning;
  r->savingState = kJobRunning;
  r->trainingState = kJobRunning;
  EXPECT_EQ(r->saveToFileAsync("x"), ReturnCode_LoadingInProgress);
  r->loadingState = kJobIdle;
  EXPECT_EQ(r->loadFromFileAsync("x", nullptr), ReturnCode_SavingInProgress);
  r->savingState = kJobIdle;
  EXPECT_EQ(r->loadFromBufferAsync("x", 1, nullptr), ReturnCode_TrainingInProgress);
  r->trainingState = kJobIdle;
  EXPECT_EQ(r->cancelLoading(), 0);
  EXPECT_EQ(r->cancelSaving(), 0);
}

}  // namespace
}  // namespace zando
