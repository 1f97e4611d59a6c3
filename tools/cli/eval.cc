// `zando eval DATA.csv`: how well a recording's gestures are recognised. Same user: for each
// subject, T samples of each gesture train a fresh set and the subject's other samples test it.
// New user (--by-subject): each subject in turn is left out, T samples of each gesture drawn from
// the other subjects train, and all of the left-out subject's samples test. Every training is a
// job; jobs run in parallel.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <map>
#include <filesystem>
#include <mutex>
#include <numeric>
#include <random>
#include <thread>

#include <Eigen/Geometry>
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

namespace {

nlohmann::json measureIdentification(const EvalOptions& options, const Recording& recording,
                                     const std::vector<EvalJob>& jobs) {
  const size_t gestures = recording.gestures.size();
  std::vector<JobResult> results(jobs.size());
  runInParallel(jobs.size(), options.jobs, options.json,
                [&](size_t j) { results[j] = runJob(jobs[j], gestures, options.seconds, options.enhanced); });

  // Accuracy per trial, then its mean and spread over trials.
  std::vector<double> accuracy;
  std::vector<std::vector<int>> confusion(gestures, std::vector<int>(gestures + 1, 0));
  std::vector<double> latencies;
  double trainingSeconds = 0.0;
  int correct = 0, total = 0;
  for (int trial = 0; trial < options.trials; ++trial) {
    int trialCorrect = 0, trialTotal = 0;
    for (size_t j = 0; j < jobs.size(); ++j) {
      if (jobs[j].trial != trial) continue;
      trialCorrect += results[j].correct;
      trialTotal += results[j].total;
    }
    if (trialTotal > 0) accuracy.push_back(static_cast<double>(trialCorrect) / trialTotal);
    correct += trialCorrect;
    total += trialTotal;
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

  nlohmann::json out;
  out["recording"] = options.recording;
  out["protocol"] = options.bySubject ? "new-user" : "same-user";
  out["train_per_class"] = options.trainPerClass;
  out["enhanced"] = options.enhanced;
  out["trials"] = options.trials;
  out["training_seconds_limit"] = options.seconds;
  out["accuracy"] = {{"mean", mean}, {"stddev", spread}, {"per_trial", accuracy}};
  out["counts"] = {{"correct", correct}, {"tested", total}};
  out["latency_us"] = {{"mean", std::accumulate(latencies.begin(), latencies.end(), 0.0) / latencies.size()},
                       {"p95", percentile(latencies, 0.95)}};
  out["training_seconds_mean"] = trainingSeconds / jobs.size();
  out["gestures"] = recording.gestures;
  out["confusion"] = confusion;
  out["jobs"] = jobs.size();
  return out;
}

void printIdentification(const EvalOptions& options, const nlohmann::json& out) {
  const char* protocol = options.bySubject ? "new user (leave one subject out)" : "same user";
  fmt::print("{}: {}{}, {} per gesture for training, {} trials, {} trainings of at most {} s\n", options.recording,
             protocol, options.enhanced ? ", enhanced recognition" : "", options.trainPerClass, options.trials,
             out["jobs"].get<size_t>(), options.seconds);
  fmt::print("  accuracy        {:.1f} % (spread over trials {:.1f} %)\n", 100 * out["accuracy"]["mean"].get<double>(),
             100 * out["accuracy"]["stddev"].get<double>());
  fmt::print("  identification  {:.1f} us mean, {:.1f} us at the 95th percentile\n",
             out["latency_us"]["mean"].get<double>(), out["latency_us"]["p95"].get<double>());
  fmt::print("  training        {:.1f} s mean per set\n", out["training_seconds_mean"].get<double>());
  fmt::print("  confusion (rows performed, columns identified, last column no answer)\n        ");
  const std::vector<std::string> gestures = out["gestures"];
  const std::vector<std::vector<int>> confusion = out["confusion"];
  for (const std::string& gesture : gestures) fmt::print("{:>7.6}", gesture);
  fmt::print("{:>7}\n", "none");
  for (size_t g = 0; g < gestures.size(); ++g) {
    fmt::print("  {:<6.6}", gestures[g]);
    for (int count : confusion[g]) fmt::print("{:>7}", count);
    fmt::print("\n");
  }
}

// The recording, or every recording (.csv) in a folder, in name order.
std::vector<std::string> recordingsAt(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_directory(std::filesystem::u8path(path), error)) return {path};
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::u8path(path), error)) {
    if (entry.is_regular_file(error) && entry.path().extension() == ".csv") files.push_back(entry.path().u8string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The recording as other people and another tracker might have made it (see EvalOptions):
// the same draws for every run with the same seed.
void perturb(Recording& recording, const EvalOptions& options) {
  if (options.perturbScale == 1.0 && options.perturbTilt == 0.0 && options.perturbJitter == 0.0) return;
  std::mt19937 rng(options.seed ^ 0x9e3779b9u);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  std::normal_distribution<double> normal(0.0, 1.0);
  std::map<std::string, std::pair<double, Eigen::Matrix3d>> bySubject;
  for (const std::string& subject : recording.subjects) {
    const Eigen::Vector3d axis = Eigen::Vector3d(normal(rng), normal(rng), normal(rng)).normalized();
    const double scale = std::pow(options.perturbScale, unit(rng));
    bySubject[subject] = {scale, Eigen::AngleAxisd(options.perturbTilt * unit(rng), axis).toRotationMatrix()};
  }
  std::normal_distribution<double> shake(0.0, options.perturbJitter);
  for (Sample& sample : recording.samples) {
    const auto& [scale, turn] = bySubject[sample.subject];
    Eigen::Vector3d centre = Eigen::Vector3d::Zero();
    for (const Point& point : sample.points) centre += Eigen::Vector3d(point.hand.position);
    centre /= std::max<size_t>(1, sample.points.size());
    for (Point& point : sample.points) {
      Eigen::Vector3d p = centre + scale * (turn * (Eigen::Vector3d(point.hand.position) - centre));
      if (options.perturbJitter > 0.0) p += Eigen::Vector3d(shake(rng), shake(rng), shake(rng));
      for (int k = 0; k < 3; ++k) point.hand.position[k] = p[k];
    }
  }
}

// One measurement: the JSON of a single run, or null with a message on failure.
nlohmann::json measure(const EvalOptions& options) {
  Recording recording;
  std::string error;
  if (!readRecording(options.recording, recording, error)) {
    fmt::print(stderr, "zando: {}\n", error);
    return nullptr;
  }
  perturb(recording, options);
  const std::vector<EvalJob> jobs = makeEvalJobs(recording, options);
  if (jobs.empty()) {
    fmt::print(stderr, "zando: {}: no subject has samples left to test with {} per gesture for training\n",
               options.recording, options.trainPerClass);
    return nullptr;
  }
  nlohmann::json result = options.continuous ? measureContinuous(options, recording, jobs)
                                              : measureIdentification(options, recording, jobs);
  result["perturbed"] = {{"scale", options.perturbScale}, {"tilt", options.perturbTilt}, {"jitter", options.perturbJitter}};
  return result;
}

// What a table cell shows: accuracy, or F1 for detection, in percent.
double cellValue(const EvalOptions& options, const nlohmann::json& result) {
  return 100 * (options.continuous ? result["f1"].get<double>() : result["accuracy"]["mean"].get<double>());
}

}  // namespace

int runEval(const EvalOptions& options) {
  const std::vector<std::string> recordings = recordingsAt(options.recording);
  const std::vector<int> sizes = options.trainPerClassList.empty() ? std::vector<int>{options.trainPerClass}
                                                                   : options.trainPerClassList;
  if (recordings.empty()) {
    fmt::print(stderr, "zando: no recording (.csv) in {}\n", options.recording);
    return 1;
  }
  if (recordings.size() == 1 && sizes.size() == 1) {
    EvalOptions one = options;
    one.recording = recordings.front();
    one.trainPerClass = sizes.front();
    const nlohmann::json result = measure(one);
    if (result.is_null()) return 1;
    if (options.json) {
      nlohmann::json shown = result;
      shown.erase("jobs");
      fmt::print("{}\n", shown.dump(2));
    } else {
      options.continuous ? printContinuous(one, result) : printIdentification(one, result);
    }
    return 0;
  }

  // One table: a row per recording, a column per training size, and the pooled row (every test
  // of every recording counted alike) under them.
  std::vector<std::vector<nlohmann::json>> results(recordings.size());
  std::vector<double> pooledRight(sizes.size(), 0.0), pooledOf(sizes.size(), 0.0);
  int failures = 0;
  for (size_t r = 0; r < recordings.size(); ++r) {
    for (size_t t = 0; t < sizes.size(); ++t) {
      EvalOptions one = options;
      one.recording = recordings[r];
      one.trainPerClass = sizes[t];
      one.json = true;  // no progress lines between the rows
      if (!options.json) fmt::print(stderr, "{}, {} per gesture ...\n", recordings[r], sizes[t]);
      nlohmann::json result = measure(one);
      if (result.is_null()) {
        ++failures;
      } else if (options.continuous) {
        pooledRight[t] += 2.0 * result["counts"]["correct"].get<double>();
        pooledOf[t] += result["counts"]["samples"].get<double>() + result["counts"]["detections"].get<double>();
      } else {
        pooledRight[t] += result["counts"]["correct"].get<double>();
        pooledOf[t] += result["counts"]["tested"].get<double>();
      }
      results[r].push_back(std::move(result));
    }
  }
  const char* measured = options.continuous ? "F1" : "accuracy";
  std::vector<double> pooled;
  for (size_t t = 0; t < sizes.size(); ++t) pooled.push_back(pooledOf[t] > 0.0 ? pooledRight[t] / pooledOf[t] : 0.0);
  if (options.json) {
    nlohmann::json out;
    out["folder"] = options.recording;
    out["protocol"] = options.bySubject ? "new-user" : "same-user";
    out["enhanced"] = options.enhanced;
    out["continuous"] = options.continuous;
    out["train_per_class"] = sizes;
    out["measure"] = measured;
    out["results"] = nlohmann::json::array();
    for (size_t r = 0; r < recordings.size(); ++r) {
      for (nlohmann::json& result : results[r]) {
        if (!result.is_null()) result.erase("jobs");
      }
      out["results"].push_back({{"recording", recordings[r]}, {"by_train_per_class", results[r]}});
    }
    out["pooled"] = pooled;
    fmt::print("{}\n", out.dump(2));
    return failures > 0 ? 1 : 0;
  }
  fmt::print("{}: {}{}{}, {} trials; {} in % by samples of each gesture for training\n", options.recording,
             options.bySubject ? "new user (leave one subject out)" : "same user",
             options.continuous ? ", continuous detection" : "", options.enhanced ? ", enhanced recognition" : "",
             options.trials, measured);
  size_t width = 6;
  for (const std::string& recording : recordings) {
    width = std::max(width, std::filesystem::u8path(recording).filename().u8string().size());
  }
  fmt::print("  {:<{}}", "", width);
  for (int size : sizes) fmt::print("{:>9}", fmt::format("T = {}", size));
  fmt::print("\n");
  for (size_t r = 0; r < recordings.size(); ++r) {
    fmt::print("  {:<{}}", std::filesystem::u8path(recordings[r]).filename().u8string(), width);
    for (const nlohmann::json& result : results[r]) {
      if (result.is_null()) {
        fmt::print("{:>9}", "-");
      } else {
        fmt::print("{:>9.1f}", cellValue(options, result));
      }
    }
    fmt::print("\n");
  }
  fmt::print("  {:<{}}", "pooled", width);
  for (double share : pooled) fmt::print("{:>9.1f}", 100 * share);
  fmt::print("\n");
  return failures > 0 ? 1 : 0;
}

}  // namespace cli
