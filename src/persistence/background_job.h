// The machinery of a background save or load, shared by the recogniser and the combination
// object: a state word that moves idle -> requested -> running -> finished (or stop requested),
// a detached worker counted in the owner's activeWorkers from before it exists to its very last
// access, and the cancel that waits for the end.
#ifndef ZANDO_PERSISTENCE_BACKGROUND_JOB_H
#define ZANDO_PERSISTENCE_BACKGROUND_JOB_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <ctime>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "recognition/gesture_recognition.h"

namespace zando {

constexpr size_t kMaxJobPathLength = 2048;
constexpr int64_t kCancelLimitSeconds = 5000;

// Null, empty and over-long paths are refused before any thread starts.
inline bool validJobPath(const char* path) {
  if (path == nullptr) return false;
  const size_t length = strnlen(path, kMaxJobPathLength + 1);
  return length > 0 && length <= kMaxJobPathLength;
}

// Starts `work` on a detached thread with the state at "requested" and polls until the worker
// has moved it on. `workers` counts the thread until its last step, so that a destructor can
// wait for it. The worker begins by taking `mutex`, which is held here until the thread is
// detached: no worker ends before it is detached, which MinGW's thread library does not survive
// (it recycles such a thread's record while the thread still tidies it up, and the next thread
// created may never run).
template <typename Work>
int startBackgroundJob(std::atomic<int>& state, std::atomic<int>& workers, std::mutex& mutex,
                       std::condition_variable& condition, Work work) {
  state.store(kJobRequested);
  workers.fetch_add(1);
  std::unique_lock<std::mutex> lock(mutex);
  try {
    std::thread([&mutex, work = std::move(work)]() mutable {
      { std::lock_guard<std::mutex> detached(mutex); }
      work();
    }).detach();
  } catch (const std::system_error&) {
    state.store(kJobIdle);
    workers.fetch_sub(1);
    return ReturnCode_ResourceError;
  }
  // The timed wait makes a signal that came before the wait harmless.
  while (state.load() == kJobRequested) condition.wait_for(lock, std::chrono::milliseconds(10));
  return ReturnCode_Success;
}

// The end of every worker: a job refused before it could enter (another job took the object in
// between) must not stay "requested" for ever; then the finish callback, then the last access.
inline void finishBackgroundJob(std::atomic<int>& state, std::atomic<int>& workers,
                                GestureRecognition_IOCallbackFunction callback, void* metadata, int result) {
  int expected = kJobRequested;
  state.compare_exchange_strong(expected, kJobFinished);
  if (callback != nullptr) callback(result, metadata);
  workers.fetch_sub(1, std::memory_order_release);
}

// Runs a blocking operation (returning its code) as a background job; the finish callback, read
// when the operation has ended, receives the code. The callback members belong to the owner,
// which outlives the worker (its destructor waits for `workers`).
template <typename Operation>
int runInBackground(std::atomic<int>& state, std::atomic<int>& workers, std::mutex& mutex,
                    std::condition_variable& condition, GestureRecognition_IOCallbackFunction& finishCallback,
                    void*& finishMetadata, Operation operation) {
  return startBackgroundJob(state, workers, mutex, condition,
                            [&state, &workers, &finishCallback, &finishMetadata, operation = std::move(operation)]() {
                              int result = ReturnCode_ResourceError;
                              try {
                                result = operation();
                              } catch (...) {
                              }
                              finishBackgroundJob(state, workers, finishCallback, finishMetadata, result);
                            });
}

// Asks a job to stop and waits for it to end; a cancel does not shorten the work. Once no
// worker of the owner is left alive the state can no longer change, so the wait ends there with
// the answer the full wait would have given.
inline int cancelBackgroundJob(std::atomic<int>& state, const std::atomic<int>& workers) {
  const int current = state.load();
  if (current == kJobIdle || current == kJobFinished) return ReturnCode_Success;
  state.store(kJobStopRequested);
  const std::time_t start = std::time(nullptr);
  while (state.load() == kJobStopRequested && workers.load() > 0) {
    if (std::time(nullptr) - start >= kCancelLimitSeconds) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return state.load() == kJobStopRequested ? ReturnCode_ResourceError : ReturnCode_Success;
}

// The entry of a blocking save or load, which is also the body of its background job: a worker
// enters with the state at "requested" and moves it to "running"; a job already running (or
// being cancelled) refuses a second entry.
class JobEntry {
 public:
  explicit JobEntry(std::atomic<int>& state) : state_(state) {
    int expected = kJobRequested;
    entered_ = state_.compare_exchange_strong(expected, kJobRunning);
    busy_ = !entered_ && (expected == kJobRunning || expected == kJobStopRequested);
  }
  bool busy() const { return busy_; }
  bool entered() const { return entered_; }

 protected:
  std::atomic<int>& state_;
  bool entered_ = false;
  bool busy_ = false;
};

// A job entry that always ends "finished" once it was let in, whatever the result.
class FinishingJobEntry : public JobEntry {
 public:
  using JobEntry::JobEntry;
  FinishingJobEntry(const FinishingJobEntry&) = delete;
  FinishingJobEntry& operator=(const FinishingJobEntry&) = delete;
  ~FinishingJobEntry() {
    if (entered_) state_.store(kJobFinished);
  }
};

// A running or cancelled job becomes finished; idle and finished states stay as they are.
inline void markJobFinished(std::atomic<int>& state) {
  int expected = kJobRunning;
  if (!state.compare_exchange_strong(expected, kJobFinished) && expected == kJobStopRequested) {
    state.compare_exchange_strong(expected, kJobFinished);
  }
}

}  // namespace zando

#endif  // ZANDO_PERSISTENCE_BACKGROUND_JOB_H
