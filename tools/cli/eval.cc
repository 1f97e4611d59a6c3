// `zando eval DATA.csv`: how well a recording's gestures are recognised. Same user: for each
// subject, T samples of each gesture train a fresh set and the subject's other samples test it.
// New user (--by-subject): each subject in turn is left out, T samples of each gesture drawn from
// the other subjects train, and all of the left-out subject's samples test. Every training is a
// job; jobs run in parallel.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <mutex>
#include <numeric>
#include <random>
#include <thread>

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <zando/zando.h>

#include "commands.h"
#include "recording.h"

namespace cli {

namespace {

struct JobResult {
  int correct = 0;
  int total = 0;
  std::vector<std::vector<int>> confusion;  // performed x identified (last column: no answer)
  std::vector<double> latencies;            // microseconds per identification
  double trainingSeconds = 0.0;
};

JobResult runJob(const EvalJob& job, size_t gestures, int seconds, bool enhanced) {
  JobResult result;
  result.confusion.assign(gestures, std::vector<int>(gestures + 1, 0));
  void* gro = GestureRecognition_create();
  if (enhanced) GestureRecognition_setEnhancedRecognition(gro, 1);
  for (size_t g = 0; g < gestures; ++g) GestureRecognition_createGesture(gro, std::to_string(g).c_str(), nullptr);
  for (const Sample* sample : job.training) performSample(gro, *sample, sample->gesture);
  std::atomic<bool> done{false};
  GestureRecognition_setMaxTrainingTime(gro, seconds);
  GestureRecognition_setTrainingFinishCallback(gro, &markDone);
  GestureRecognition_setTrainingFinishCallbackMetadata(gro, &done);
  const auto begin = std::chrono::steady_clock::now();
  if (GestureRecognition_startTraining(gro) == 0) {
    while (!done.load()) std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  result.trainingSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  for (const Sample* sample : job.testing) {
    const Pose& head = sample->points.front().head;
    GestureRecognition_startStroke(gro, head.position, head.rotation, -1);
    for (const Point& point : sample->points) {
      GestureRecognition_updateHeadPositionQ(gro, point.head.position, point.head.rotation);
      GestureRecognition_contdStrokeQ(gro, point.hand.position, point.hand.rotation);
    }
    const auto start = std::chrono::steady_clock::now();
    const int answer = GestureRecognition_endStroke(gro, nullptr, nullptr, nullptr, nullptr, nullptr);
    result.latencies.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
    const size_t column = answer >= 0 && static_cast<size_t>(answer) < gestures ? static_cast<size_t>(answer) : gestures;
    ++result.confusion[static_cast<size_t>(sample->gesture)][column];
    result.correct += answer == sample->gesture;
    ++result.total;
  }
  GestureRecognition_delete(gro);
  return result;
}

// T samples of each gesture from `pool`, drawn at random; the rest go to `rest`.
void draw(std::vector<const Sample*> pool, size_t gestures, int perGesture, std::mt19937& rng,
          std::vector<const Sample*>& chosen, std::vector<const Sample*>* rest) {
  std::shuffle(pool.begin(), pool.end(), rng);
  std::vector<int> taken(gestures, 0);
  for (const Sample* sample : pool) {
    if (taken[static_cast<size_t>(sample->gesture)] < perGesture) {
      ++taken[static_cast<size_t>(sample->gesture)];
      chosen.push_back(sample);
    } else if (rest != nullptr) {
      rest->push_back(sample);
    }
  }
}

}  // namespace

std::vector<EvalJob> makeEvalJobs(const Recording& recording, const EvalOptions& options) {
  std::mt19937 rng(options.seed);
  std::vector<EvalJob> jobs;
  const size_t gestures = recording.gestures.size();
  for (int trial = 0; trial < options.trials; ++trial) {
    for (const std::string& subject : recording.subjects) {
      std::vector<const Sample*> own, others;
      for (const Sample& sample : recording.samples) (sample.subject == subject ? own : others).push_back(&sample);
      EvalJob job;
      job.trial = trial;
      if (options.bySubject) {
        draw(others, gestures, options.trainPerClass, rng, job.training, nullptr);
        job.testing = own;
      } else {
        draw(own, gestures, options.trainPerClass, rng, job.training, &job.testing);
      }
      if (!job.training.empty() && !job.testing.empty()) jobs.push_back(std::move(job));
    }
  }
  return jobs;
}

double percentile(std::vector<double> values, double share) {
  if (values.empty()) return 0.0;
  std::sort(values.begin(), values.end());
  return values[std::min(values.size() - 1, static_cast<size_t>(share * static_cast<double>(values.size())))];
}

void runInParallel(size_t count, int workers, bool quiet, const std::function<void(size_t)>& work) {
  std::atomic<size_t> next{0}, finished{0};
  std::vector<std::thread> pool;
  for (int w = 0; w < std::max(1, std::min(workers, static_cast<int>(count))); ++w) {
    pool.emplace_back([&] {
      for (size_t j = next++; j < count; j = next++) {
        work(j);
        ++finished;
      }
    });
  }
  Progress progress("evaluating");
  while (finished.load() < count) {
    if (!quiet) {
      progress.update(static_cast<double>(finished.load()) / count,
                      fmt::format("{} of {} trainings", finished.load(), count));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  for (std::thread& thread : pool) thread.join();
  if (!quiet) progress.finish(fmt::format("{} of {} trainings", count, count));
}

int runEval(const EvalOptions& options) {
  Recording recording;
  std::string error;
  if (!readRecording(options.recording, recording, error)) {
    fmt::print(stderr, "zando: {}\n", error);
    return 1;
  }
  const std::vector<EvalJob> jobs = makeEvalJobs(recording, options);
  if (jobs.empty()) {
    fmt::print(stderr, "zando: no subject has samples left to test with {} per gesture for training\n",
               options.trainPerClass);
    return 1;
  }
  if (options.continuous) return runContinuousEval(options, recording, jobs);
  const size_t gestures = recording.gestures.size();
  std::vector<JobResult> results(jobs.size());
  runInParallel(jobs.size(), options.jobs, options.json,
                [&](size_t j) { results[j] = runJob(jobs[j], gestures, options.seconds, options.enhanced); });

  // Accuracy per trial, then its mean and spread over trials.
  std::vector<double> accuracy;
  std::vector<std::vector<int>> confusion(gestures, std::vector<int>(gestures + 1, 0));
  std::vector<double> latencies;
  double trainingSeconds = 0.0;
  for (int trial = 0; trial < options.trials; ++trial) {
    int correct = 0, total = 0;
    for (size_t j = 0; j < jobs.size(); ++j) {
      if (jobs[j].trial != trial) continue;
      correct += results[j].correct;
      total += results[j].total;
    }
    if (total > 0) accuracy.push_back(static_cast<double>(correct) / total);
  }
  for (const JobResult& result : results) {
    for (size_t g = 0; g < gestures; ++g) {
      for (size_t h = 0; h <= gestures; ++h) confusion[g][h] += result.confusion[g][h];
    }
    latencies.insert(latencies.end(), result.latencies.begin(), result.latencies.end());
    trainingSeconds += result.trainingSeconds;
  }
  const double mean = std::accumulate(accuracy.begin(), accuracy.end(), 0.0) / accuracy.size();
  double spread = 0.0;
  for (double a : accuracy) spread += (a - mean) * (a - mean);
  spread = accuracy.size() > 1 ? std::sqrt(spread / (accuracy.size() - 1)) : 0.0;
  const double meanLatency = std::accumulate(latencies.begin(), latencies.end(), 0.0) / latencies.size();
  const double p95Latency = percentile(latencies, 0.95);
  const double meanTraining = trainingSeconds / jobs.size();
  const char* protocol = options.bySubject ? "new user (leave one subject out)" : "same user";

  if (options.json) {
    nlohmann::json out;
    out["recording"] = options.recording;
    out["protocol"] = options.bySubject ? "new-user" : "same-user";
    out["train_per_class"] = options.trainPerClass;
    out["enhanced"] = options.enhanced;
    out["trials"] = options.trials;
    out["training_seconds_limit"] = options.seconds;
    out["accuracy"] = {{"mean", mean}, {"stddev", spread}, {"per_trial", accuracy}};
    out["latency_us"] = {{"mean", meanLatency}, {"p95", p95Latency}};
    out["training_seconds_mean"] = meanTraining;
    out["gestures"] = recording.gestures;
    out["confusion"] = confusion;
    fmt::print("{}\n", out.dump(2));
    return 0;
  }
  fmt::print("{}: {}{}, {} per gesture for training, {} trials, {} trainings of at most {} s\n", options.recording,
             protocol, options.enhanced ? ", enhanced recognition" : "", options.trainPerClass, options.trials,
             jobs.size(), options.seconds);
  fmt::print("  accuracy        {:.1f} % (spread over trials {:.1f} %)\n", 100 * mean, 100 * spread);
  fmt::print("  identification  {:.1f} us mean, {:.1f} us at the 95th percentile\n", meanLatency, p95Latency);
  fmt::print("  training        {:.1f} s mean per set\n", meanTraining);
  fmt::print("  confusion (rows performed, columns identified, last column no answer)\n        ");
  for (size_t h = 0; h < gestures; ++h) fmt::print("{:>7.6}", recording.gestures[h]);
  fmt::print("{:>7}\n", "none");
  for (size_t g = 0; g < gestures; ++g) {
    fmt::print("  {:<6.6}", recording.gestures[g]);
    for (size_t h = 0; h <= gestures; ++h) fmt::print("{:>7}", confusion[g][h]);
    fmt::print("\n");
  }
  return 0;
}

}  // namespace cli
