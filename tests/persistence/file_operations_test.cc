// Saving and loading a gesture set the ways a host does: archive files, bare text, memory
// buffers and streams, imports by name, and the background forms with progress and cancelling.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "../recognition/recognizer_fixture.h"

namespace zando {
namespace {

using testing_support::recordShape;

std::string scratchPath(const std::string& name) {
  return ::testing::TempDir() + "zando_" + std::to_string(::getpid()) + "_" + name;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class FileOperationsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    r = GestureRecognition::createZeroFilled();
    for (int g = 0; g < 3; ++g) {
      const char* names[3] = {"circle", "swipe", "zigzag"};
      ASSERT_EQ(r->createGesture(names[g], nullptr), g);
      for (int s = 0; s < 2; ++s) ASSERT_EQ(recordShape(*r, g, g, rng), g);
    }
    r->setGestureEnabled(2, false);
    r->rotationalFrameOfReferenceY = 1;
    r->rotationalFrameOfReferenceRotationOrder = 4;
    r->contdIdentificationPeriod = 1500;
  }
  void TearDown() override {
    delete r;
    for (const std::string& path : created) std::remove(path.c_str());
  }
  std::string path(const std::string& name) {
    created.push_back(scratchPath(name));
    return created.back();
  }

  // The same gestures, samples and settings as the fixture's recogniser.
  void expectSameSet(GestureRecognition& other) {
    ASSERT_EQ(other.numberOfGestures(), 3);
    EXPECT_STREQ(other.getGestureName(1), "swipe");
    EXPECT_FALSE(other.getGestureEnabled(2));
    EXPECT_EQ(other.getGestureNumberOfSamples(0), 2);
    const Stroke& a = *r->gestureModel.gestures[1]->gestureSamples[1];
    const Stroke& b = *other.gestureModel.gestures[1]->gestureSamples[1];
    ASSERT_EQ(a.handPoints.size(), b.handPoints.size());
    for (size_t i = 0; i < a.handPoints.size(); i += 7) {
      EXPECT_NEAR(a.handPoints[i].position.x, b.handPoints[i].position.x, 1e-8);
      EXPECT_NEAR(a.handPoints[i].rotation.w, b.handPoints[i].rotation.w, 1e-8);
    }
    EXPECT_EQ(other.rotationalFrameOfReferenceY, 1);
    EXPECT_EQ(other.rotationalFrameOfReferenceRotationOrder, 4);
    EXPECT_EQ(other.contdIdentificationPeriod, 1500);
  }

  GestureRecognition* r = nullptr;
  std::mt19937 rng{5};
  std::vector<std::string> created;
};

TEST_F(FileOperationsTest, ArchiveRoundTripAndReplacement) {
  const std::string file = path("set.dat");
  ASSERT_EQ(r->saveToFile(file.c_str()), 0);
  // One member, "nn.txt", deflated.
  int error = 0;
  zip_t* archive = zip_open(file.c_str(), ZIP_RDONLY, &error);
  ASSERT_NE(archive, nullptr);
  EXPECT_EQ(zip_get_num_entries(archive, 0), 1);
  zip_stat_t stat;
  ASSERT_EQ(zip_stat_index(archive, 0, 0, &stat), 0);
  EXPECT_STREQ(stat.name, "nn.txt");
  EXPECT_EQ(stat.comp_method, ZIP_CM_DEFLATE);
  zip_discard(archive);

  // Saving again replaces the file rather than adding a member.
  ASSERT_EQ(r->saveToFile(file.c_str()), 0);
  archive = zip_open(file.c_str(), ZIP_RDONLY, &error);
  ASSERT_NE(archive, nullptr);
  EXPECT_EQ(zip_get_num_entries(archive, 0), 1);
  zip_discard(archive);

  std::unique_ptr<GestureRecognition> loaded(GestureRecognition::createZeroFilled());
  ASSERT_EQ(loaded->loadFromFile(file.c_str(), nullptr), 0);
  expectSameSet(*loaded);
}

TEST_F(FileOperationsTest, BareTextBuffersAndStreams) {
  std::ostringstream text;
  ASSERT_EQ(r->saveToStream(&text), 0);
  const std::string content = text.str();
  EXPECT_EQ(content.rfind("#18", 0), 0u);

  std::unique_ptr<GestureRecognition> fromStream(GestureRecognition::createZeroFilled());
  std::istringstream in(content);
  ASSERT_EQ(fromStream->loadFromStream(&in, nullptr), 0);
  expectSameSet(*fromStream);

  std::unique_ptr<GestureRecognition> fromBuffer(GestureRecognition::createZeroFilled());
  ASSERT_EQ(fromBuffer->loadFromBuffer(content.data(), static_cast<int>(content.size()), nullptr), 0);
  expectSameSet(*fromBuffer);

  // A bare text file loads through the file path as well.
  const std::string file = path("bare.txt");
  std::ofstream(file, std::ios::binary) << content;
  std::unique_ptr<GestureRecognition> fromFile(GestureRecognition::createZeroFilled());
  ASSERT_EQ(fromFile->loadFromFile(file.c_str(), nullptr), 0);
  expectSameSet(*fromFile);

  // An archive in memory loads from a buffer.
  const std::string archived = path("mem.dat");
  ASSERT_EQ(r->saveToFile(archived.c_str()), 0);
  const std::string bytes = readFile(archived);
  std::unique_ptr<GestureRecognition> fromArchiveBuffer(GestureRecognition::createZeroFilled());
  ASSERT_EQ(fromArchiveBuffer->loadFromBuffer(bytes.data(), static_cast<int>(bytes.size()), nullptr), 0);
  expectSameSet(*fromArchiveBuffer);
}

TEST_F(FileOperationsTest, FailuresReportTheirCodes) {
  std::unique_ptr<GestureRecognition> other(GestureRecognition::createZeroFilled());
  EXPECT_EQ(other->loadFromFile(scratchPath("missing.dat").c_str(), nullptr), ReturnCode_InvalidPath);
  EXPECT_EQ(other->importFromFile(scratchPath("missing.dat").c_str(), nullptr, nullptr), ReturnCode_InvalidPath);
  EXPECT_EQ(other->loadFromFile("", nullptr), ReturnCode_InvalidPath);
  EXPECT_EQ(r->saveToFile("/nonexistent-directory/x/set.dat"), ReturnCode_InvalidPath);
  // A short buffer goes down the text path and fails there as content.
  EXPECT_EQ(other->loadFromBuffer("#18\nnonsense", 12, nullptr), ReturnCode_InvalidFile);
  // An archive without the member falls through to the text path and fails as content.
  const std::string foreign = path("foreign.zip");
  int error = 0;
  zip_t* archive = zip_open(foreign.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
  ASSERT_NE(archive, nullptr);
  const char data[] = "hello";
  zip_source_t* source = zip_source_buffer(archive, data, 5, 0);
  ASSERT_GE(zip_file_add(archive, "other.txt", source, 0), 0);
  ASSERT_EQ(zip_close(archive), 0);
  EXPECT_EQ(other->loadFromFile(foreign.c_str(), nullptr), ReturnCode_InvalidFile);
  // A failed load leaves the object's frame of reference as it was.
  EXPECT_EQ(other->rotationalFrameOfReferenceRotationOrder, 2);

  // What cannot be removed cannot be replaced: a directory that holds a file stands in its place.
  const std::string directory = path("dir.dat");
  ASSERT_EQ(::mkdir(directory.c_str(), 0700), 0);
  const std::string inner = directory + "/keep";
  std::ofstream(inner) << "x";
  EXPECT_EQ(r->saveToFile(directory.c_str()), ReturnCode_CannotReplaceFile);
  EXPECT_EQ(readFile(inner), "x");
  std::remove(inner.c_str());
  ::rmdir(directory.c_str());

  // Busy guards.
  r->savingState = kJobRunning;
  EXPECT_EQ(r->saveToFile(path("x.dat").c_str()), ReturnCode_LoadingInProgress);
  EXPECT_EQ(r->createGesture("x", nullptr), ReturnCode_SavingInProgress);
  EXPECT_EQ(r->loadFromFile("x", nullptr), ReturnCode_SavingInProgress);
  r->savingState = kJobIdle;
  r->trainingState = kJobRunning;
  std::ostringstream sink;
  EXPECT_EQ(r->saveToStream(&sink), ReturnCode_TrainingInProgress);
  EXPECT_EQ(r->loadFromBuffer("x", 1, nullptr), ReturnCode_TrainingInProgress);
  r->trainingState = kJobIdle;
}

TEST_F(FileOperationsTest, ImportsMergeByName) {
  std::ostringstream text;
  ASSERT_EQ(r->saveToStream(&text), 0);
  const std::string content = text.str();

  std::unique_ptr<GestureRecognition> target(GestureRecognition::createZeroFilled());
  ASSERT_EQ(target->createGesture("zigzag", nullptr), 0);
  target->contdIdentificationPeriod = 700;
  std::istringstream in(content);
  std::vector<int> mapping;
  ASSERT_EQ(target->importFromStream(&in, nullptr, &mapping), 0);
  ASSERT_EQ(target->numberOfGestures(), 3);
  EXPECT_EQ(mapping, (std::vector<int>{1, 2, 0}));
  EXPECT_EQ(target->getGestureNumberOfSamples(0), 2);
  EXPECT_STREQ(target->getGestureName(1), "circle");
  EXPECT_TRUE(target->gestureModel.networkInvalid);
  // The period line of the file lands in the importing object; its frame does not.
  EXPECT_EQ(target->contdIdentificationPeriod, 1500);
  EXPECT_EQ(target->rotationalFrameOfReferenceRotationOrder, 2);

  // Importing the same again adds samples to the gestures of the same names.
  ASSERT_EQ(target->importFromBuffer(content.data(), static_cast<int>(content.size()), nullptr, nullptr), 0);
  EXPECT_EQ(target->numberOfGestures(), 3);
  EXPECT_EQ(target->getGestureNumberOfSamples(1), 4);
}

TEST_F(FileOperationsTest, ImportBetweenObjectsChecksItsBounds) {
  std::unique_ptr<GestureRecognition> target(GestureRecognition::createZeroFilled());
  ASSERT_EQ(target->createGesture("swipe", nullptr), 0);
  EXPECT_EQ(target->importGestureSamples(nullptr, 0, 0), ReturnCode_InvalidParameter);
  EXPECT_EQ(target->importGestureSamples(r, -1, 0), ReturnCode_InvalidIndex);
  EXPECT_EQ(target->importGestureSamples(r, 2, 0), ReturnCode_InvalidIndex);  // above this object's count
  EXPECT_EQ(target->importGestureSamples(r, 1, 2), ReturnCode_InvalidIndex);
  EXPECT_EQ(target->importGestureSamples(r, 1, 1), ReturnCode_InvalidIndex);  // equal to the count
  EXPECT_EQ(target->importGestureSamples(r, 1, 0), 0);
  EXPECT_EQ(target->getGestureNumberOfSamples(0), 2);

  EXPECT_EQ(target->importGestures(nullptr), ReturnCode_InvalidParameter);
  ASSERT_EQ(target->importGestures(r), 0);
  EXPECT_EQ(target->numberOfGestures(), 3);
  EXPECT_EQ(target->getGestureNumberOfSamples(0), 4);
  EXPECT_STREQ(target->getGestureName(2), "zigzag");
  // Samples are copies: the source can go.
  delete r;
  r = GestureRecognition::createZeroFilled();
  EXPECT_EQ(target->gestureModel.gestures[2]->gestureSamples[1]->handPoints.size(), 60u);
}

struct JobLog {
  std::atomic<int> finishes{0};
  std::atomic<int> result{1};
  std::atomic<int> lastPercent{-1};
  std::atomic<bool> busyInFinish{true};
  GestureRecognition* recognizer = nullptr;
};

void onProgress(int percent, void* log) { static_cast<JobLog*>(log)->lastPercent = percent; }
void onSaveFinished(int result, void* log) {
  auto* l = static_cast<JobLog*>(log);
  l->busyInFinish = l->recognizer->isSaving();
  l->result = result;
  l->finishes++;
}
void onLoadFinished(int result, void* log) {
  auto* l = static_cast<JobLog*>(log);
  l->busyInFinish = l->recognizer->isLoading();
  l->result = result;
  l->finishes++;
}

void waitFor(const std::atomic<int>& counter, int value) {
  for (int i = 0; i < 2000 && counter.load() < value; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

TEST_F(FileOperationsTest, BackgroundSaveAndLoadReportProgressAndFinishOnce) {
  const std::string file = path("async.dat");
  JobLog save;
  save.recognizer = r;
  r->setSavingUpdateCallbackFunction(&onProgress);
  r->setSavingUpdateCallbackMetadata(&save);
  r->setSavingFinishCallbackFunction(&onSaveFinished);
  r->setSavingFinishCallbackMetadata(&save);
  ASSERT_EQ(r->saveToFileAsync(file.c_str()), 0);
  EXPECT_EQ(r->cancelSaving(), 0);  // waits for the end; the file is still written
  waitFor(save.finishes, 1);
  EXPECT_EQ(save.finishes.load(), 1);
  EXPECT_EQ(save.result.load(), 0);
  EXPECT_FALSE(save.busyInFinish.load());
  EXPECT_EQ(save.lastPercent.load(), 99);
  EXPECT_FALSE(r->isSaving());

  std::unique_ptr<GestureRecognition> loaded(GestureRecognition::createZeroFilled());
  JobLog load;
  load.recognizer = loaded.get();
  loaded->setLoadingUpdateCallbackFunction(&onProgress);
  loaded->setLoadingUpdateCallbackMetadata(&load);
  loaded->setLoadingFinishCallbackFunction(&onLoadFinished);
  loaded->setLoadingFinishCallbackMetadata(&load);
  ASSERT_EQ(loaded->loadFromFileAsync(file.c_str(), nullptr), 0);
  waitFor(load.finishes, 1);
  EXPECT_EQ(load.result.load(), 0);
  EXPECT_FALSE(load.busyInFinish.load());
  EXPECT_EQ(load.lastPercent.load(), 99);
  expectSameSet(*loaded);

  // A path that cannot be created starts fine and reports -3 at the finish.
  JobLog failing;
  failing.recognizer = r;
  r->setSavingFinishCallbackMetadata(&failing);
  r->setSavingUpdateCallbackFunction(nullptr);
  ASSERT_EQ(r->saveToFileAsync("/nonexistent-directory/x/set.dat"), 0);
  waitFor(failing.finishes, 1);
  EXPECT_EQ(failing.result.load(), ReturnCode_InvalidPath);

  // Buffer form.
  const std::string bytes = readFile(file);
  std::unique_ptr<GestureRecognition> fromBuffer(GestureRecognition::createZeroFilled());
  JobLog bufferLoad;
  bufferLoad.recognizer = fromBuffer.get();
  fromBuffer->setLoadingFinishCallbackFunction(&onLoadFinished);
  fromBuffer->setLoadingFinishCallbackMetadata(&bufferLoad);
  ASSERT_EQ(fromBuffer->loadFromBufferAsync(bytes.data(), static_cast<int>(bytes.size()), nullptr), 0);
  waitFor(bufferLoad.finishes, 1);
  EXPECT_EQ(bufferLoad.result.load(), 0);
  EXPECT_EQ(fromBuffer->numberOfGestures(), 3);
}

TEST_F(FileOperationsTest, BackgroundStartersCheckPathsAndGuards) {
  EXPECT_EQ(r->saveToFileAsync(nullptr), ReturnCode_InvalidPath);
  EXPECT_EQ(r->saveToFileAsync(""), ReturnCode_InvalidPath);
  const std::string tooLong(2049, 'a');
  EXPECT_EQ(r->saveToFileAsync(tooLong.c_str()), ReturnCode_InvalidPath);
  EXPECT_EQ(r->loadFromFileAsync(tooLong.c_str(), nullptr), ReturnCode_InvalidPath);
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

TEST_F(FileOperationsTest, DeletingDuringABackgroundSaveWaitsForTheFile) {
  const std::string file = path("deleted.dat");
  JobLog save;
  save.recognizer = r;
  r->setSavingFinishCallbackFunction(&onSaveFinished);
  r->setSavingFinishCallbackMetadata(&save);
  ASSERT_EQ(r->saveToFileAsync(file.c_str()), 0);
  delete r;
  r = GestureRecognition::createZeroFilled();
  EXPECT_EQ(save.finishes.load(), 1);
  std::unique_ptr<GestureRecognition> loaded(GestureRecognition::createZeroFilled());
  EXPECT_EQ(loaded->loadFromFile(file.c_str(), nullptr), 0);
  EXPECT_EQ(loaded->numberOfGestures(), 3);
}

}  // namespace
}  // namespace zando
