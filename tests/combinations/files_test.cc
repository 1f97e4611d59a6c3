// The combination file as a host meets it: the archive and its members, loading every layout,
// imports that merge, the background forms, and damaged files of every version.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "combination_fixture.h"
#include "persistence/archive.h"
#include "scratch_files.h"
#include "waiting.h"

namespace zando {
namespace {

using testing_support::archiveMembers;
using testing_support::readFile;

using namespace combination_testing;
using testing_support::waitUntil;
using Metadata = IGestureRecognition::Metadata;

std::string member(const std::string& path, const char* name) {
  std::string text;
  readArchiveMember(path.c_str(), name, text);
  return text;
}

std::string bytes(Metadata* metadata) {
  auto* block = static_cast<IGestureRecognition::DefaultMetadata*>(metadata);
  return block == nullptr ? "" : std::string(static_cast<const char*>(block->data), static_cast<size_t>(block->size));
}

// The blocks a load made with a creator are the host's to delete. The object forgets those of its
// combinations and gestures on the next load, but deletes its own set block then, so that pointer
// is cleared here.
void releaseMetadata(GestureCombinations& g) {
  for (int k = 0; k < g.numberOfGestureCombinations(); ++k) delete g.getGestureCombinationMetadata(k);
  for (int part = 0; part < g.numberOfParts(); ++part) {
    for (int k = 0; k < g.numberOfGestures(part); ++k) delete g.getGestureMetadata(part, k);
  }
  delete g.getMetadata();
  g.setMetadata(nullptr);
}

class CombinationFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    c = makeCombinations(2);
    std::mt19937 rng(12);
    recordTwoHands(*c, 2, rng);
    c->setPartEnabled(1, false);
    c->rotationalFrameOfReferenceZ = 1;
    c->rotationalFrameOfReferenceRotationOrder = 4;
    setMetadata.setData("whole set", 9);
    comboMetadata.setData("a\nb c", 5);
    c->setMetadata(&setMetadata);
    int k = c->createGestureCombination("wave and rest");
    c->setCombinationPartGesture(k, 0, 1);
    k = c->createGestureCombination("both circles");
    c->setCombinationPartGesture(k, 0, 0);
    c->setCombinationPartGesture(k, 1, 0);
    c->setGestureCombinationMetadata(k, &comboMetadata);
    c->recognitionScoreValue = 0.5;
  }
  // The fixture's set saved as an archive under `name`.
  std::string saved(const std::string& name) {
    const std::string file = path(name);
    EXPECT_EQ(c->saveToFile(file.c_str()), 0);
    return file;
  }
  std::string partText(int part) {
    std::ostringstream out;
    EXPECT_EQ(c->parts[static_cast<size_t>(part)]->saveToStream(&out), 0);
    return out.str();
  }

  // What the fixture saved, as a loaded object holds it.
  void expectFixture(GestureCombinations& other) {
    ASSERT_EQ(other.numberOfParts(), 2);
    EXPECT_EQ(other.numberOfGestures(1), 3);
    EXPECT_STREQ(other.getGestureName(1, 2), "zigzag");
    EXPECT_EQ(other.getGestureNumberOfSamples(0, 1), 2);
    EXPECT_TRUE(other.getPartEnabled(0));
    EXPECT_FALSE(other.getPartEnabled(1));
    ASSERT_EQ(other.numberOfGestureCombinations(), 2);
    EXPECT_STREQ(other.getGestureCombinationName(0), "wave and rest");
    EXPECT_EQ(other.getCombinationPartGesture(0, 1), -1);
    EXPECT_EQ(other.getCombinationPartGesture(1, 1), 0);
    EXPECT_EQ(bytes(other.getGestureCombinationMetadata(1)), "a\nb c");
    EXPECT_EQ(bytes(other.getMetadata()), "whole set");
    EXPECT_EQ(other.rotationalFrameOfReferenceZ, 1);
    EXPECT_EQ(other.rotationalFrameOfReferenceRotationOrder, 4);
  }

  Combinations c;
  IGestureRecognition::DefaultMetadata setMetadata, comboMetadata;
  const IGestureRecognition::MetadataCreatorFunction creator = IGestureRecognition::getDefaultMetadataCreatorFunction();
  testing_support::ScratchFiles path;  // path(name): a scratch file, removed after the test
};

TEST_F(CombinationFilesTest, SavedArchiveLoadsFromFileAndBuffer) {
  const std::string file = saved("set.zip");
  EXPECT_EQ(archiveMembers(file),
            (std::vector<std::string>{"combinations.txt deflated", "part_ 0.txt deflated", "part_ 1.txt deflated"}));
  const std::string list = member(file, "combinations.txt");
  EXPECT_EQ(list.rfind("M3\n2\n2\nwave and rest\nNO METADATA\n2\n1 -1 \nboth circles\n", 0), 0u);
  EXPECT_NE(list.find("METADATA:\n5 a\nb c2\n0 0 \n"), std::string::npos);  // the count follows the block
  EXPECT_EQ(list.substr(list.size() - 13), "5.000000e-01\n");
  EXPECT_EQ(member(file, "part_ 1.txt"), partText(1) + "GRO_DISABLED\n");

  // A fresh object of another size takes the file's parts, and the stored score as it is, from
  // the file and from its bytes alike.
  const std::string archive = readFile(file);
  for (const bool fromFile : {true, false}) {
    SCOPED_TRACE(fromFile ? "from the file" : "from a buffer");
    Combinations loaded = makeCombinations(fromFile ? 5 : 1);
    ASSERT_EQ(fromFile ? loaded->loadFromFile(file.c_str(), creator)
                       : loaded->loadFromBuffer(archive.data(), static_cast<int>(archive.size()), creator),
              0);
    expectFixture(*loaded);
    EXPECT_EQ(loaded->recognitionScore(), 0.5);
    releaseMetadata(*loaded);
  }

  // One part on its own, as a gesture database file, into a part that had no gestures.
  const std::string single = path("part.dat");
  ASSERT_EQ(c->saveGestureToFile(0, single.c_str()), 0);
  Combinations other = makeCombinations(2);
  ASSERT_EQ(other->loadGestureFromFile(1, single.c_str(), nullptr), 0);
  EXPECT_EQ(other->getGestureNumberOfSamples(1, 2), 2);
}

// The enhanced mode is one switch for all parts, refused while a job runs, and travels in the
// archive as a member of its own; a file saved without it loads with it off.
TEST_F(CombinationFilesTest, EnhancedModeCoversEveryPartAndTravelsInTheArchive) {
  const std::string plain = saved("plain.zip");
  EXPECT_EQ(c->setEnhancedRecognition(3), ReturnCode_InvalidParameter);
  c->loadingState = kJobRunning;
  EXPECT_EQ(c->setEnhancedRecognition(1), ReturnCode_LoadingInProgress);
  c->loadingState = kJobIdle;
  ASSERT_EQ(GestureCombinations_setEnhancedRecognition(c.get(), 1), 0);
  EXPECT_EQ(GestureCombinations_getEnhancedRecognition(c.get()), 1);
  EXPECT_EQ(c->parts[1]->getEnhancedRecognition(), 1);
  const std::string enhanced = saved("enhanced.zip");
  EXPECT_EQ(archiveMembers(enhanced).size(), archiveMembers(plain).size() + 1);

  Combinations loaded = makeCombinations(1);
  ASSERT_EQ(loaded->loadFromFile(enhanced.c_str(), creator), 0);
  EXPECT_EQ(loaded->getEnhancedRecognition(), 1);
  EXPECT_EQ(loaded->parts[1]->getEnhancedRecognition(), 1);
  releaseMetadata(*loaded);  // the host's: the next load forgets the combinations' blocks
  ASSERT_EQ(loaded->loadFromFile(plain.c_str(), creator), 0);
  EXPECT_EQ(loaded->parts[0]->getEnhancedRecognition(), 0);
  releaseMetadata(*loaded);
}

TEST_F(CombinationFilesTest, OlderSingleStreamLayoutsLoad) {
  const std::string combos = "2\nwave and rest\n2\n1 -1 \nboth circles\n2\n0 0 \n";
  // Version 1: no opening, no flags, no metadata; the score is computed at once.
  std::istringstream first("2\n" + partText(0) + partText(1) + combos);
  Combinations loaded = makeCombinations(1);
  ASSERT_EQ(loaded->loadFromStream(&first, nullptr), 0);
  EXPECT_EQ(loaded->numberOfParts(), 2);
  EXPECT_TRUE(loaded->getPartEnabled(1));
  EXPECT_EQ(loaded->getCombinationPartGesture(1, 1), 0);
  EXPECT_GE(loaded->recognitionScoreValue, 0.0);
  EXPECT_LE(loaded->recognitionScoreValue, 1.0);

  // Version 2 has flags, metadata and the score; in an archive that text is refused.
  const std::string second = "M2\n2\n" + partText(0) + "GRO_ENABLED\n" + partText(1) + "GRO_DISABLED\n" +
                             "1\nonly\nNO METADATA\n2\n2 1 \nNO METADATA\n-9.990000e+02\n";
  std::istringstream stream(second);
  ASSERT_EQ(loaded->loadFromStream(&stream, nullptr), 0);
  EXPECT_FALSE(loaded->getPartEnabled(1));
  EXPECT_EQ(loaded->recognitionScoreValue, -999.0);
  EXPECT_GE(loaded->recognitionScore(), 0.0);  // -999 means: compute on demand
  const std::string file = path("v2.zip");
  ASSERT_TRUE(appendArchiveMember(file.c_str(), "combinations.txt", second));
  EXPECT_EQ(loaded->loadFromFile(file.c_str(), nullptr), -4);
  // A single stream in "nn.txt" is read as one; a plain gesture database there is not one.
  const std::string wrapped = path("nn.zip");
  ASSERT_TRUE(appendArchiveMember(wrapped.c_str(), "nn.txt", second));
  EXPECT_EQ(loaded->loadFromFile(wrapped.c_str(), nullptr), 0);
  std::remove(wrapped.c_str());
  ASSERT_TRUE(appendArchiveMember(wrapped.c_str(), "nn.txt", partText(0)));
  EXPECT_EQ(loaded->loadFromFile(wrapped.c_str(), nullptr), -4);
  EXPECT_EQ(loaded->numberOfParts(), 2);  // refused before anything was replaced
  std::istringstream third("M3\n2\n");
  EXPECT_EQ(loaded->loadFromStream(&third, nullptr), -4);
}

TEST_F(CombinationFilesTest, DamageReportsItsCodeAndWhatSurvives) {
  const std::string file = saved("set.zip");
  Combinations other = makeCombinations(3);
  // Metadata blocks need a creator. (Unusable paths are in the hostile-values test.)
  EXPECT_EQ(other->loadFromFile(file.c_str(), nullptr), -18);

  const auto loadList = [&](const std::string& list) {
    std::istringstream in(list);
    return other->readCombinationText(in, nullptr);
  };
  EXPECT_EQ(loadList("M3\n101\n0\n"), -4);
  EXPECT_EQ(other->numberOfParts(), 2);  // the object is intact
  EXPECT_EQ(loadList("M3\n4\n101\n"), -4);
  EXPECT_EQ(other->numberOfParts(), 4);  // parts rebuilt, list empty
  EXPECT_EQ(other->numberOfGestureCombinations(), 0);
  EXPECT_EQ(loadList("M3\n2\n2\nfirst\nNO METADATA\n2\n1 -1 \nsecond\nNO METADATA\n2\n1\n"), -4);
  EXPECT_EQ(other->numberOfGestureCombinations(), 1);  // as far as read
  EXPECT_EQ(loadList("M3\n1\n0\nNO METADATA\nnan\n"), -4);
  EXPECT_TRUE(std::isnan(other->recognitionScoreValue));  // stored all the same
  EXPECT_EQ(loadList("M3\n1\n0\nNO METADATA\n1.5\n"), -4);
  EXPECT_EQ(loadList("M3\n1\n0\nSOME METADATA\n0\n"), -4);
  EXPECT_EQ(loadList("M4\n1\n0\nNO METADATA\n0\n"), -4);

  // An archive without one part's member loads the parts before it.
  const std::string partial = path("partial.zip");
  ASSERT_TRUE(appendArchiveMember(partial.c_str(), "combinations.txt", member(file, "combinations.txt")));
  ASSERT_TRUE(appendArchiveMember(partial.c_str(), "part_ 0.txt", member(file, "part_ 0.txt")));
  EXPECT_EQ(other->loadFromFile(partial.c_str(), creator), -19);
  EXPECT_EQ(other->numberOfGestures(0), 3);
  EXPECT_EQ(other->numberOfGestures(1), 0);
  releaseMetadata(*other);
}

TEST_F(CombinationFilesTest, ImportsMergePartsAndCombinations) {
  const std::string file = saved("set.zip");
  Combinations target = makeCombinations(2);
  target->createGesture(0, "extra", nullptr);
  target->createGesture(0, "swipe", nullptr);
  // The same as the file's "wave and rest" once the gesture indices are mapped.
  int k = target->createGestureCombination("left swipe");
  target->setCombinationPartGesture(k, 0, 1);
  target->createGestureCombination("both circles");  // every part idle: not the file's

  ASSERT_EQ(target->importFromFile(file.c_str(), creator), 0);
  EXPECT_EQ(target->numberOfGestures(0), 4);  // extra, swipe, circle, zigzag
  EXPECT_EQ(target->getGestureNumberOfSamples(0, 1), 2);
  EXPECT_FALSE(target->getPartEnabled(1));  // flags come with the parts
  ASSERT_EQ(target->numberOfGestureCombinations(), 3);
  EXPECT_STREQ(target->getGestureCombinationName(0), "left swipe/wave and rest");
  EXPECT_STREQ(target->getGestureCombinationName(2), "both circles");
  EXPECT_EQ(target->getCombinationPartGesture(2, 0), 2);  // the file's circle, mapped
  EXPECT_EQ(target->getGestureCombinationMetadata(2), nullptr);
  EXPECT_EQ(target->getMetadata(), nullptr);  // the file's object metadata is not taken

  Combinations three = makeCombinations(3);
  EXPECT_EQ(three->importFromFile(file.c_str(), creator), -4);
  EXPECT_EQ(three->numberOfGestures(0), 0);
  const std::string archive = readFile(file);
  ASSERT_EQ(three->importFromBuffer(archive.data(), 10, creator), -4);  // short: taken as text
  // The single-stream layout imports the same way.
  std::istringstream stream("M2\n2\n" + partText(0) + "GRO_ENABLED\n" + partText(1) + "GRO_ENABLED\n" +
                            "2\nanother name\nNO METADATA\n2\n1 -1 \nboth circles\nNO METADATA\n2\n0 0 \n"
                            "NO METADATA\n");
  ASSERT_EQ(target->importFromStream(&stream, creator), 0);
  EXPECT_STREQ(target->getGestureCombinationName(0), "left swipe/wave and rest/another name");
  EXPECT_EQ(target->numberOfGestureCombinations(), 3);  // equal and of the same name: dropped
  EXPECT_TRUE(target->getPartEnabled(1));
}

void recordPercent(int percent, void* list) { static_cast<std::vector<int>*>(list)->push_back(percent); }
void recordResult(int result, void* slot) { static_cast<std::atomic<int>*>(slot)->store(result); }

TEST_F(CombinationFilesTest, BackgroundJobsReportProgressAndFinishOnce) {
  const std::string file = path("async.zip");
  std::vector<int> saved, loaded;
  std::atomic<int> saveResult{99}, loadResult{99};
  c->setSavingUpdateCallbackFunction(&recordPercent);
  c->setSavingUpdateCallbackMetadata(&saved);
  c->setSavingFinishCallbackFunction(&recordResult);
  c->setSavingFinishCallbackMetadata(&saveResult);
  ASSERT_EQ(c->saveToFileAsync(file.c_str()), 0);
  ASSERT_TRUE(waitUntil([&] { return saveResult.load() != 99; }));
  EXPECT_EQ(saveResult.load(), 0);
  EXPECT_FALSE(c->isSaving());
  ASSERT_FALSE(saved.empty());
  EXPECT_TRUE(std::is_sorted(saved.begin(), saved.end()));
  EXPECT_EQ(saved.front(), 0);  // part 0 reports 1 percent of half the whole
  EXPECT_EQ(saved.back(), 99);  // 50 + 99 / 2, cut toward zero

  Combinations other = makeCombinations(1);
  other->setLoadingUpdateCallbackFunction(&recordPercent);
  other->setLoadingUpdateCallbackMetadata(&loaded);
  other->setLoadingFinishCallbackFunction(&recordResult);
  other->setLoadingFinishCallbackMetadata(&loadResult);
  ASSERT_EQ(other->loadFromFileAsync(file.c_str(), creator), 0);
  ASSERT_TRUE(waitUntil([&] { return loadResult.load() != 99; }));
  EXPECT_EQ(other->cancelLoading(), 0);
  EXPECT_EQ(loadResult.load(), 0);
  EXPECT_TRUE(std::is_sorted(loaded.begin(), loaded.end()));
  EXPECT_GE(loaded.back(), 90);
  expectFixture(*other);
  releaseMetadata(*other);
}

TEST_F(CombinationFilesTest, AFailedBackgroundSaveStaysRunningWithoutHangingAnyone) {
  std::atomic<int> result{99};
  c->setSavingFinishCallbackFunction(&recordResult);
  c->setSavingFinishCallbackMetadata(&result);
  ASSERT_EQ(c->saveToFileAsync("/no/such/folder/set.zip"), 0);
  ASSERT_TRUE(waitUntil([&] { return result.load() != 99; }));
  EXPECT_EQ(result.load(), -3);
  EXPECT_TRUE(c->isSaving());
  EXPECT_EQ(c->saveToFileAsync(path("again.zip").c_str()), -17);
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(c->cancelSaving(), -14);
  c.reset();  // cancels once more on the way out
  EXPECT_LT(std::chrono::steady_clock::now() - started, testing_support::scaledSeconds(2));
}

// Damaged combination files of every layout: only a documented code, never a crash or a hang.
TEST_F(CombinationFilesTest, DamagedFilesNeverCrashTheReaders) {
  const std::string list = member(saved("seed.zip"), "combinations.txt");
  const std::string parts = partText(0) + "GRO_ENABLED\n" + partText(1) + "GRO_DISABLED\n";
  const std::vector<std::string> seeds = {
      list, "M2\n2\n" + parts + list.substr(5), "2\n" + partText(0) + partText(1) + "1\nname\n2\n1 -1 \n"};
  const char* huge[] = {"2147483647", "-2147483648", "4294967295", "100", "10000", "-1", "101"};
  const char alphabet[] = "0123456789-+. eEnaM:\n\r#";
  std::mt19937 random(77u);
  Combinations target = makeCombinations(2);
  int accepted = 0;
  for (int round = 0; round < 1500; ++round) {
    const size_t seed = static_cast<size_t>(round) % seeds.size();
    std::string text = seeds[seed];
    switch (round / 3 % 4) {
      case 0:
        for (int k = 0; k < 3; ++k) text[random() % text.size()] = alphabet[random() % (sizeof(alphabet) - 1)];
        break;
      case 1: text.resize(random() % text.size()); break;
      case 2: {
        const size_t at = text.find('\n', random() % text.size());
        if (at != std::string::npos) text.insert(at + 1, std::string(huge[random() % 7]) + "\n");
        break;
      }
      default: text.erase(random() % text.size(), 1 + random() % 40);
    }
    std::istringstream in(text);
    int result;
    if (seed == 0) {
      result = target->readCombinationText(in, creator);
    } else if (round % 2 == 0) {
      result = target->loadFromStream(&in, creator);
    } else {
      result = target->importFromStream(&in, creator);
    }
    ASSERT_TRUE(result == 0 || result == -4 || result == -18) << result << "\n" << text;
    accepted += result == 0;
    releaseMetadata(*target);
    if (target->numberOfParts() != 2) target = makeCombinations(2);
    target->deleteAllGestureCombinations();
  }
  EXPECT_GT(accepted, 50);
}

}  // namespace
}  // namespace zando
