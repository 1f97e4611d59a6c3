// Background jobs under stress, on both object types through the flat functions: training, saving
// and loading are started, held in their progress callbacks, cancelled, stopped and cut short by
// deleting the object at random moments, while a second thread keeps reading what a host may
// read during a job. Every answer must be a documented code, every job must end with its finish
// callback, and every file whose save reported success must load again.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <deque>
#include <mutex>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "combinations/combination_fixture.h"
#include "scratch_files.h"
#include "waiting.h"
#include "zando/zando.h"

namespace {

using Clock = std::chrono::steady_clock;
using zando::testing_support::scratchPath;
using zando::testing_support::waitUntil;

constexpr int kMaxRounds = 120;
constexpr auto kBudget = std::chrono::seconds(15);  // no new round starts after this
const std::set<int> kDocumented = {0, -1, -2, -3, -4, -6, -7, -8, -9, -10, -11, -12, -13, -14, -15, -17, -18, -19};
enum Kind { Train, Save, Load };

// What one object's callbacks report, and the switch that keeps a job inside its progress
// callback, so that the driver knows for certain that the job runs.
struct Tally {
  std::atomic<bool> hold{false}, held{false};
  // badValues: out-of-range progress or score, or a failed load of a file that loads.
  std::atomic<int> badValues{0}, trainingRuns{0}, trainingEnds{0}, loadRuns{0}, loadEnds{0};
  std::mutex mutex;                      // the lists below are filled by the workers
  std::deque<std::string> pendingSaves;  // saves run one at a time, so results come in this order
  std::vector<std::pair<std::string, int>> saves;
};

Tally* tallyOf(void* metadata) { return static_cast<Tally*>(metadata); }
void pauseIfHeld(Tally* t) {
  if (!t->hold.load()) return;
  t->held.store(true);
  while (t->hold.load()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
void onProgress(int percent, void* t) {
  tallyOf(t)->badValues += percent < 0 || percent > 100;
  pauseIfHeld(tallyOf(t));
}
void onTrainingStep(double score, void* t) {
  tallyOf(t)->badValues += !(score >= 0.0 && score <= 1.0);
  pauseIfHeld(tallyOf(t));
}
void onTrainingEnd(double score, void* t) {
  // A combination's score may instead be the code that stopped its computation.
  if (!(score >= 0.0 && score <= 1.0) && kDocumented.count(static_cast<int>(score)) == 0) tallyOf(t)->badValues++;
  tallyOf(t)->trainingEnds++;
}
void onSaved(int result, void* t) {
  std::lock_guard<std::mutex> lock(tallyOf(t)->mutex);
  tallyOf(t)->saves.emplace_back(tallyOf(t)->pendingSaves.front(), result);
  tallyOf(t)->pendingSaves.pop_front();
}
void onLoaded(int result, void* t) {
  tallyOf(t)->badValues += result != 0;
  tallyOf(t)->loadEnds++;
}

// One object type through the flat functions that both families name alike, so that one driver
// serves both; what differs goes by `combination`.
struct Face {
  bool combination;
  void (*destroy)(void*);
  void (*wire)(void*, Tally*);
  void (*setMaxTrainingTime)(void*, int);
  int (*saveToFile)(void*, const char*), (*saveToFileAsync)(void*, const char*);
  int (*loadFromFile)(void*, const char*, GestureRecognition_MetadataCreatorFunction);
  int (*loadFromFileAsync)(void*, const char*, GestureRecognition_MetadataCreatorFunction);
  int (*loadFromBufferAsync)(void*, const char*, int, GestureRecognition_MetadataCreatorFunction);
  int (*cancelSaving)(void*), (*cancelLoading)(void*), (*startTraining)(void*), (*stopTraining)(void*);
  int (*isTraining)(void*), (*isSaving)(void*), (*isLoading)(void*);
};

#define FACE(P, combination)                                                                                         \
  {                                                                                                                  \
    combination, P##_delete,                                                                                         \
        [](void* h, Tally* t) {                                                                                      \
          P##_setTrainingUpdateCallback(h, onTrainingStep);                                                          \
          P##_setTrainingUpdateCallbackMetadata(h, t);                                                               \
          P##_setTrainingFinishCallback(h, onTrainingEnd);                                                           \
          P##_setTrainingFinishCallbackMetadata(h, t);                                                               \
          P##_setSavingUpdateCallbackFunction(h, onProgress);                                                        \
          P##_setSavingUpdateCallbackMetadata(h, t);                                                                 \
          P##_setSavingFinishCallbackFunction(h, onSaved);                                                           \
          P##_setSavingFinishCallbackMetadata(h, t);                                                                 \
          P##_setLoadingUpdateCallbackFunction(h, onProgress);                                                       \
          P##_setLoadingUpdateCallbackMetadata(h, t);                                                                \
          P##_setLoadingFinishCallbackFunction(h, onLoaded);                                                         \
          P##_setLoadingFinishCallbackMetadata(h, t);                                                                \
        },                                                                                                           \
        P##_setMaxTrainingTime, P##_saveToFile, P##_saveToFileAsync, P##_loadFromFile, P##_loadFromFileAsync,        \
        P##_loadFromBufferAsync, P##_cancelSaving, P##_cancelLoading, P##_startTraining, P##_stopTraining,           \
        P##_isTraining, P##_isSaving, P##_isLoading                                                                  \
  }
const Face kRecognizer = FACE(GestureRecognition, false);
const Face kCombinations = FACE(GestureCombinations, true);
#undef FACE

// A combination object has two parts.
void* create(const Face& face) {
  return face.combination ? GestureCombinations_create(2) : GestureRecognition_create();
}

// Three gestures of three samples for a recogniser and for each hand, drawn through the class
// face that the handles are; two combinations.
void record(const Face& face, void* h, std::mt19937& rng) {
  if (!face.combination) {
    zando::testing_support::recordSet(*static_cast<IGestureRecognition*>(h), 3, 3, rng);
    return;
  }
  zando::combination_testing::recordTwoHands(*static_cast<IGestureCombinations*>(h), 3, rng);
  for (int c = 0; c < 2; ++c) {
    ASSERT_EQ(GestureCombinations_createGestureCombination(h, c == 0 ? "both circle" : "swipe and zigzag"), c);
    ASSERT_EQ(GestureCombinations_setCombinationPartGesture(h, c, 0, c), 0);
    ASSERT_EQ(GestureCombinations_setCombinationPartGesture(h, c, 1, 2 * c), 0);
  }
}

// The store as text: gestures with names and sample counts, then the combinations.
std::string describe(const Face& face, void* h) {
  const bool gco = face.combination;
  std::string text;
  for (int part = 0; part < (gco ? GestureCombinations_numberOfParts(h) : 1); ++part) {
    const int gestures = gco ? GestureCombinations_numberOfGestures(h, part) : GestureRecognition_numberOfGestures(h);
    text += "|" + std::to_string(gestures);
    for (int g = 0; g < gestures; ++g) {
      const char* name = gco ? GestureCombinations_getGestureName(h, part, g) : GestureRecognition_getGestureName(h, g);
      text += std::string(" ") + (name != nullptr ? name : "(null)") + "/" +
              std::to_string(gco ? GestureCombinations_getGestureNumberOfSamples(h, part, g)
                                 : GestureRecognition_getGestureNumberOfSamples(h, g));
    }
  }
  for (int c = 0; gco && c < GestureCombinations_numberOfGestureCombinations(h); ++c) {
    const char* name = GestureCombinations_getGestureCombinationName(h, c);
    text += std::string("|") + (name != nullptr ? name : "(null)") + ":" +
            std::to_string(GestureCombinations_getCombinationPartGesture(h, c, 1));
  }
  return text;
}

// The readers a host may call at any time: the job flags and a recogniser's stored score.
bool statusPlausible(const Face& face, void* h) {
  const double score = face.combination ? 0.0 : GestureRecognition_recognitionScore(h);
  const auto flag = [](int value) { return value == 0 || value == 1; };
  return flag(face.isTraining(h)) && flag(face.isSaving(h)) && flag(face.isLoading(h)) && score >= 0.0 && score <= 1.0;
}

// The object the reading thread may use. The reader holds the mutex for each pass, so the driver
// takes an object away there before deleting it, and bars its store before a load replaces it.
struct Shared {
  std::mutex mutex;
  void* handle = nullptr;
  bool storeReadable = false;
  void publish(void* h, bool readable) {
    std::lock_guard<std::mutex> lock(mutex);
    handle = h;
    storeReadable = readable;
  }
};

struct Files {
  std::string fixture, never, bytes, expected;  // expected: the store as the fixture holds it
  std::vector<std::string> loadable;            // the fixture and every save that reported success
};

// With a job of `kind` certainly running, every starter and store change is refused with its code.
void expectRefusals(const Face& face, void* h, Kind kind, const Files& files) {
  const int busy = kind == Train ? -8 : kind == Save ? -17 : -15;
  EXPECT_EQ((kind == Train ? face.isTraining : kind == Save ? face.isSaving : face.isLoading)(h), 1);
  EXPECT_EQ(face.startTraining(h), busy);
  EXPECT_EQ(face.saveToFileAsync(h, files.never.c_str()), busy);
  EXPECT_EQ(face.loadFromFileAsync(h, files.fixture.c_str(), nullptr), busy);
  EXPECT_EQ(face.combination ? GestureCombinations_createGesture(h, 0, "late", nullptr)
                             : GestureRecognition_createGesture(h, "late", nullptr),
            busy);
  EXPECT_EQ(face.saveToFile(h, files.never.c_str()), kind != Save ? busy : face.combination ? -17 : -15);
  EXPECT_EQ(face.loadFromFile(h, files.fixture.c_str(), nullptr), busy);
  if (face.combination && kind != Save) {
    EXPECT_EQ(GestureCombinations_recognitionScore(h), busy);
  }
}

// Starts a job of `kind`: 0, or the code of the job that still owns the object.
int startJob(const Face& face, void* h, Kind kind, Tally& tally, Files& files, const std::string& savePath,
             std::mt19937& rng) {
  int started = 0;
  if (kind == Train) {
    if ((started = face.startTraining(h)) == 0) tally.trainingRuns++;
  } else if (kind == Save) {
    std::unique_lock<std::mutex> lock(tally.mutex);
    tally.pendingSaves.push_back(savePath);
    lock.unlock();
    started = face.saveToFileAsync(h, savePath.c_str());
    lock.lock();
    if (started != 0) tally.pendingSaves.pop_back();  // an earlier save, if any, is in front
  } else if (rng() % 2 == 0) {
    const std::string& path = files.loadable[rng() % files.loadable.size()];
    if ((started = face.loadFromFileAsync(h, path.c_str(), nullptr)) == 0) tally.loadRuns++;
  } else {
    const int size = static_cast<int>(files.bytes.size());
    if ((started = face.loadFromBufferAsync(h, files.bytes.data(), size, nullptr)) == 0) tally.loadRuns++;
  }
  return started;
}

// Rounds of jobs on fresh objects loaded from the fixture, each ended by deleting the object.
void driveRounds(const Face& face, const std::string& tag, Files& files, Shared& shared, std::mt19937& rng) {
  int saveCount = 0;
  const auto deadline = Clock::now() + kBudget;
  for (int round = 0; round < kMaxRounds && (round < 3 || Clock::now() < deadline); ++round) {
    Tally tally;
    void* h = create(face);
    ASSERT_EQ(face.loadFromFile(h, files.fixture.c_str(), nullptr), 0);
    face.wire(h, &tally);
    face.setMaxTrainingTime(h, static_cast<int>(rng() % 2));
    shared.publish(h, true);
    bool maybeBusy = false, readable = true;
    const int steps = 1 + static_cast<int>(rng() % 3);
    for (int step = 0; step < steps && h != nullptr; ++step) {
      // The first rounds hold one job of each kind; later, kinds and holds come at random.
      const Kind kind = static_cast<Kind>(step == 0 ? round % 3 : static_cast<int>(rng() % 3));
      if (kind == Load && readable) shared.publish(h, readable = false);
      const bool hold = !maybeBusy && ((round < 3 && step == 0) || rng() % 2 == 0);
      tally.hold.store(hold);
      const std::string savePath = scratchPath(tag + "_save" + std::to_string(saveCount++));
      const int started = startJob(face, h, kind, tally, files, savePath, rng);
      if (maybeBusy) {
        EXPECT_TRUE(started == 0 || started == -8 || started == -15 || started == -17) << started;
      } else {
        EXPECT_EQ(started, 0) << "job kind " << kind;
      }
      if (started == 0 && hold) {
        EXPECT_TRUE(waitUntil([&] { return tally.held.load(); }, 10)) << "no progress reported by job kind " << kind;
        if (tally.held.load()) expectRefusals(face, h, kind, files);
      }
      tally.hold.store(false);
      tally.held.store(false);
      if (started != 0) continue;
      maybeBusy = true;
      std::this_thread::sleep_for(std::chrono::microseconds(rng() % 15000));
      const unsigned ending = rng() % 3;
      if (ending == 0) {  // cancelling and stopping wait for the end
        EXPECT_EQ((kind == Train ? face.stopTraining : kind == Save ? face.cancelSaving : face.cancelLoading)(h), 0);
        EXPECT_TRUE(waitUntil([&] { return !face.isTraining(h) && !face.isSaving(h) && !face.isLoading(h); }, 30))
            << "job kind " << kind << " never ended";
        maybeBusy = false;
        if (!readable) shared.publish(h, readable = true);
      } else if (ending == 1) {  // deleted while the job may run
        shared.publish(nullptr, false);
        face.destroy(h);
        h = nullptr;
      }
    }
    shared.publish(nullptr, false);
    face.destroy(h);
    // Deletion waited for every worker: each job has ended, with its finish callback.
    EXPECT_EQ(tally.trainingEnds.load(), tally.trainingRuns.load());
    EXPECT_EQ(tally.loadEnds.load(), tally.loadRuns.load());
    EXPECT_TRUE(tally.pendingSaves.empty());
    EXPECT_EQ(tally.badValues.load(), 0);
    for (const auto& save : tally.saves) {
      EXPECT_EQ(kDocumented.count(save.second), 1u) << save.second;
      if (save.second == 0) files.loadable.push_back(save.first);
    }
    if (::testing::Test::HasFailure()) return;
  }
}

void stress(const Face& face, const std::string& tag) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 rng(seed);
  Files files;
  files.fixture = scratchPath(tag + "_fixture");
  files.never = scratchPath(tag + "_never_written");
  void* model = create(face);
  record(face, model, rng);
  ASSERT_FALSE(::testing::Test::HasFatalFailure());
  ASSERT_EQ(face.saveToFile(model, files.fixture.c_str()), 0);
  files.expected = describe(face, model);
  files.bytes = zando::testing_support::readFile(files.fixture);
  files.loadable.push_back(files.fixture);
  face.destroy(model);

  Shared shared;
  std::atomic<bool> done{false};
  std::atomic<int> storePasses{0};
  std::thread reader([&] {
    for (bool ok = true; ok && !done.load(); std::this_thread::sleep_for(std::chrono::microseconds(200))) {
      std::lock_guard<std::mutex> lock(shared.mutex);
      if (shared.handle == nullptr) continue;
      EXPECT_TRUE(ok = statusPlausible(face, shared.handle));
      if (ok && shared.storeReadable) {
        const std::string seen = describe(face, shared.handle);
        EXPECT_EQ(seen, files.expected);
        ok = seen == files.expected;
        storePasses++;
      }
    }
  });
  driveRounds(face, tag, files, shared, rng);
  done.store(true);
  reader.join();

  EXPECT_GT(storePasses.load(), 0);
  EXPECT_GT(files.loadable.size(), 1u);  // some save got through
  EXPECT_TRUE(zando::testing_support::readFile(files.never).empty());
  for (const std::string& path : files.loadable) {
    void* fresh = create(face);
    EXPECT_EQ(face.loadFromFile(fresh, path.c_str(), nullptr), 0) << path;
    EXPECT_EQ(describe(face, fresh), files.expected) << path;
    face.destroy(fresh);
    std::remove(path.c_str());
  }
}

TEST(ConcurrencyStress, RecognizerJobsStartStopCancelAndDieWhileAnotherThreadReads) { stress(kRecognizer, "gro"); }

TEST(ConcurrencyStress, CombinationJobsStartStopCancelAndDieWhileAnotherThreadReads) { stress(kCombinations, "gco"); }

}  // namespace
