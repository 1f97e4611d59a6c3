// `zando eval --continuous DATA.csv`: gestures detected in a running stream of motion, frame by
// frame on the host's clock, as a host meets them. The trainings are those of `zando eval`, except
// that two or three gestures of each trial stay untrained. The test subject's held-out samples of
// the trained gestures and of those distractors follow one another in random order at their
// recorded timing, joined by smooth moves and pauses of slow drift and tremor, and the stream is
// resampled to a frame rate. A detection is right when it names the sample being performed, or
// one that ended less than half a second before and was not found yet; any other detection is a
// false alarm. With two hands a combination object detects: each gesture is performed by the
// right hand, the left (mirrored) or both, while a hand that has nothing to do rests or wanders.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <random>
#include <thread>

#include <Eigen/Core>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>
#include <zando/zando.h>

#include "commands.h"
#include "recording.h"

namespace cli {

namespace {

using Eigen::Vector3d;

constexpr double kPi = 3.14159265358979323846;
constexpr double kLateSeconds = 0.5;       // a detection may follow the end of its sample by this much
constexpr double kSampleGapSeconds = 1.0;  // host time between training samples
const double kHeadPosition[3] = {0.0, 0.0, 0.0};
const double kIdentity[4] = {0.0, 0.0, 0.0, 1.0};

// Which hands perform a gesture, a bit for each part: part 0 is the left hand, part 1 the right.
constexpr int kLeftHand = 1, kRightHand = 2, kBothHands = 3;

bool performs(int hands, int manner, int part) { return hands == 1 || ((manner >> part) & 1) != 0; }

// The left hand of two does the mirror image of what the right hand does.
Vector3d handAt(const Point& point, int part, int hands) {
  const Vector3d position(point.hand.position[0], point.hand.position[1], point.hand.position[2]);
  return hands == 2 && part == 0 ? Vector3d(-position.x(), position.y(), position.z()) : position;
}

double sampleSeconds(const Sample& sample) { return (sample.points.back().time - sample.points.front().time) / 1000.0; }

// The object under test and the calls a host makes to it: a recogniser for one hand, or a
// combination object for two whose combination g names gesture g in the performing parts.
class Detector {
 public:
  Detector(int hands, const std::vector<int>& mannerOfLabel, bool enhanced, double sensitivity) : hands_(hands) {
    if (hands_ == 1) {
      object_ = GestureRecognition_create();
      if (enhanced) GestureRecognition_setEnhancedRecognition(object_, 1);
      GestureRecognition_setDetectionSensitivity(object_, sensitivity);
      for (size_t g = 0; g < mannerOfLabel.size(); ++g) {
        GestureRecognition_createGesture(object_, std::to_string(g).c_str(), nullptr);
      }
      return;
    }
    object_ = GestureCombinations_create(2);
    if (enhanced) GestureCombinations_setEnhancedRecognition(object_, 1);
    GestureCombinations_setDetectionSensitivity(object_, sensitivity);
    for (size_t g = 0; g < mannerOfLabel.size(); ++g) {
      const std::string name = std::to_string(g);
      const int combination = GestureCombinations_createGestureCombination(object_, name.c_str());
      for (int part = 0; part < 2; ++part) {
        const int gesture = GestureCombinations_createGesture(object_, part, name.c_str(), nullptr);
        GestureCombinations_setCombinationPartGesture(object_, combination, part,
                                                      performs(2, mannerOfLabel[g], part) ? gesture : -1);
      }
    }
  }
  ~Detector() { hands_ == 1 ? GestureRecognition_delete(object_) : GestureCombinations_delete(object_); }
  Detector(const Detector&) = delete;
  Detector& operator=(const Detector&) = delete;

  void setTime(double seconds) {
    hands_ == 1 ? GestureRecognition_setHostTime(object_, seconds) : GestureCombinations_setHostTime(object_, seconds);
  }
  void startStroke(int part, int gesture) {
    hands_ == 1 ? GestureRecognition_startStroke(object_, kHeadPosition, kIdentity, gesture)
                : GestureCombinations_startStroke(object_, part, kHeadPosition, kIdentity, gesture);
  }
  void feed(int part, const Vector3d& position) {
    hands_ == 1 ? GestureRecognition_contdStrokeQ(object_, position.data(), kIdentity)
                : GestureCombinations_contdStrokeQ(object_, part, position.data(), kIdentity);
  }
  void endStroke(int part) {
    hands_ == 1 ? GestureRecognition_endStroke(object_, nullptr, nullptr, nullptr, nullptr, nullptr)
                : GestureCombinations_endStroke(object_, part, nullptr, nullptr, nullptr, nullptr, nullptr);
  }
  int detect(int* label, double* confidence) {
    return hands_ == 1 ? GestureRecognition_contdDetect(object_, kHeadPosition, kIdentity, label, confidence)
                       : GestureCombinations_contdDetect(object_, kHeadPosition, kIdentity, label, confidence);
  }
  // Trains with the time limit (in the enhanced mode too, so that both modes find a trained set);
  // returns the seconds it took.
  double train(int seconds) {
    const auto begin = std::chrono::steady_clock::now();
    if (hands_ == 1) {
      GestureRecognition_setMaxTrainingTime(object_, seconds);
      if (GestureRecognition_startTraining(object_) == 0) {
        while (GestureRecognition_isTraining(object_) != 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
    } else {
      GestureCombinations_setMaxTrainingTime(object_, seconds);
      GestureCombinations_startTraining(object_);  // parts that started train on after a refusal
      while (GestureCombinations_isTraining(object_) != 0) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }

 private:
  int hands_;
  void* object_;
};

// Records a sample into each performing part at its recorded timing, from host time `clock`;
// returns the host time after it.
double record(Detector& detector, const Sample& sample, int label, int manner, int hands, double clock) {
  for (int part = 0; part < hands; ++part) {
    if (!performs(hands, manner, part)) continue;
    detector.setTime(clock);
    detector.startStroke(part, label);
    for (const Point& point : sample.points) {
      detector.setTime(clock + (point.time - sample.points.front().time) / 1000.0);
      detector.feed(part, handAt(point, part, hands));
    }
    detector.endStroke(part);
    clock += sampleSeconds(sample) + kSampleGapSeconds;
  }
  return clock;
}

// A hand's way through a stream: positions at non-decreasing times (seconds).
struct Path {
  std::vector<double> times;
  std::vector<Vector3d> positions;

  void add(double time, const Vector3d& position) {
    times.push_back(time);
    positions.push_back(position);
  }
  // Linear between the neighbouring points, held before the first and after the last.
  Vector3d at(double time) const {
    const size_t i = static_cast<size_t>(std::upper_bound(times.begin(), times.end(), time) - times.begin());
    if (i == 0) return positions.front();
    if (i == times.size()) return positions.back();
    const double share = (time - times[i - 1]) / (times[i] - times[i - 1]);
    return positions[i - 1] + share * (positions[i] - positions[i - 1]);
  }
};

// A sample in a stream: the label a detection must name (-1 for a distractor) and its time.
struct Performance {
  int label;
  double start;
  double end;
};

// Every hand's path, built segment by segment; all paths reach the same time after each one.
class Stream {
 public:
  Stream(int hands, double framesPerSecond, const Vector3d& offset, const Sample& first, std::mt19937& rng)
      : paths(static_cast<size_t>(hands)), step_(1.0 / framesPerSecond), offset_(offset), rng_(rng) {
    for (int part = 0; part < hands; ++part) {
      homes_.push_back(handAt(first.points.front(), part, hands) + offset_);
      paths[static_cast<size_t>(part)].add(0.0, homes_.back());
    }
  }

  // Every hand rests.
  void pause(double seconds) {
    for (size_t part = 0; part < paths.size(); ++part) rest(part, seconds);
    now += seconds;
  }

  // The performing hands move to the start of the sample and play it at `speed`; the others
  // rest or, now and then, wander slowly.
  void perform(const Sample& sample, int manner, double speed, int label) {
    const int hands = static_cast<int>(paths.size());
    const double moveSeconds = uniform(0.3, 1.0), playSeconds = sampleSeconds(sample) / speed;
    for (int part = 0; part < hands; ++part) {
      if (performs(hands, manner, part)) move(part, handAt(sample.points.front(), part, hands) + offset_, moveSeconds);
    }
    idleOthers(manner, moveSeconds);
    now += moveSeconds;
    for (int part = 0; part < hands; ++part) {
      if (!performs(hands, manner, part)) continue;
      for (const Point& point : sample.points) {
        paths[static_cast<size_t>(part)].add(now + (point.time - sample.points.front().time) / 1000.0 / speed,
                                             handAt(point, part, hands) + offset_);
      }
    }
    idleOthers(manner, playSeconds);
    performances.push_back(Performance{label, now, now + playSeconds});
    now += playSeconds;
  }

  std::vector<Path> paths;
  std::vector<Performance> performances;
  double now = 0.0;

 private:
  double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(rng_); }
  Vector3d randomDirection() {
    std::normal_distribution<double> normal(0.0, 1.0);
    const Vector3d v(normal(rng_), normal(rng_), normal(rng_));
    return v.norm() > 1e-9 ? v.normalized() : Vector3d::UnitX();
  }

  // A slow drift of a few millimetres with about a millimetre of tremor at the frame rate.
  void rest(size_t part, double seconds) {
    Path& path = paths[part];
    const Vector3d from = path.positions.back(), drift = uniform(0.002, 0.006) * randomDirection();
    std::normal_distribution<double> tremor(0.0, 0.0006);  // per axis: about 1 mm in space
    const int steps = std::max(1, static_cast<int>(std::lround(seconds / step_)));
    for (int k = 1; k <= steps; ++k) {
      const double tau = static_cast<double>(k) / steps, eased = tau * tau * (3.0 - 2.0 * tau);
      path.add(now + seconds * tau, from + eased * drift + Vector3d(tremor(rng_), tremor(rng_), tremor(rng_)));
    }
  }

  // A minimum-jerk move with a slight bend to one side.
  void move(int part, const Vector3d& to, double seconds) {
    Path& path = paths[static_cast<size_t>(part)];
    const Vector3d from = path.positions.back(), way = to - from;
    Vector3d side = randomDirection();
    if (way.norm() > 1e-9) side = (side - side.dot(way.normalized()) * way.normalized()).normalized();
    const double bend = uniform(0.05, 0.2) * way.norm();
    const int steps = std::max(1, static_cast<int>(std::ceil(seconds / step_)));
    for (int k = 1; k <= steps; ++k) {
      const double tau = static_cast<double>(k) / steps;
      const double s = tau * tau * tau * (10.0 - 15.0 * tau + 6.0 * tau * tau);
      path.add(now + seconds * tau, from + s * way + std::sin(kPi * s) * bend * side);
    }
  }

  void idleOthers(int manner, double seconds) {
    for (int part = 0; part < static_cast<int>(paths.size()); ++part) {
      if (performs(static_cast<int>(paths.size()), manner, part)) continue;
      if (seconds >= 1.0 && uniform(0.0, 1.0) < 0.25) {
        move(part, homes_[static_cast<size_t>(part)] + uniform(0.0, 0.05) * randomDirection(), seconds);
      } else {
        rest(static_cast<size_t>(part), seconds);
      }
    }
  }

  double step_;
  Vector3d offset_;
  std::vector<Vector3d> homes_;
  std::mt19937& rng_;
};

// What each trial decides for all of its trainings: labels of the trained gestures (-1 for a
// distractor) and the hands that perform each gesture.
struct TrialPlan {
  std::vector<int> labelOf;
  std::vector<int> mannerOf;
};

TrialPlan planTrial(size_t gestures, int trial, const EvalOptions& options) {
  std::seed_seq seed{options.seed, static_cast<unsigned>(trial), 1u};
  std::mt19937 rng(seed);
  std::vector<size_t> order(gestures);
  std::iota(order.begin(), order.end(), size_t{0});
  std::shuffle(order.begin(), order.end(), rng);
  const size_t distractors = std::min<size_t>(2 + rng() % 2, (gestures - 1) / 2);
  TrialPlan plan{std::vector<int>(gestures, 0), std::vector<int>(gestures, kRightHand)};
  for (size_t i = 0; i < distractors; ++i) plan.labelOf[order[i]] = -1;
  int label = 0;
  for (size_t g = 0; g < gestures; ++g) {
    if (plan.labelOf[g] >= 0) plan.labelOf[g] = label++;
    const int manners[3] = {kRightHand, kLeftHand, kBothHands};
    if (options.hands == 2) plan.mannerOf[g] = manners[rng() % 3];
  }
  return plan;
}

struct Detection {
  double time;
  int label;
  double confidence;
};

struct JobResult {
  int samples = 0;
  int detections = 0;
  int correct = 0;
  double nonGestureSeconds = 0.0;
  std::vector<double> delays;          // seconds from a sample's end to its detection
  std::vector<double> callTimes;       // microseconds per contdDetect
  std::vector<double> frameTimes;      // microseconds per frame: the hands' points and contdDetect
  std::vector<double> confidences[2];  // of false alarms, of correct detections
  // False alarms by where they fell: in an untrained gesture, in a trained gesture of another
  // name, again in a sample already found, between gestures (moves and pauses).
  int alarmsWhere[4] = {0, 0, 0, 0};
  int refusals = 0;
  int firstRefusal = 0;
  double trainingSeconds = 0.0;
};

enum AlarmPlace { kInUntrained, kInOtherGesture, kRepeated, kBetween };

AlarmPlace alarmPlace(const Stream& stream, const std::vector<bool>& found, const Detection& detection) {
  for (size_t i = 0; i < stream.performances.size(); ++i) {
    const Performance& performance = stream.performances[i];
    if (detection.time < performance.start || detection.time >= performance.end + kLateSeconds) continue;
    if (performance.label < 0) return kInUntrained;
    return performance.label == detection.label && found[i] ? kRepeated : kInOtherGesture;
  }
  return kBetween;
}

// Each detection is matched to the earliest sample it names that runs, or ended less than
// kLateSeconds before, and was not found yet.
void score(const Stream& stream, const std::vector<Detection>& detections, JobResult& result) {
  std::vector<bool> found(stream.performances.size(), false);
  double gestureSeconds = 0.0;
  for (const Performance& performance : stream.performances) {
    if (performance.label < 0) continue;
    ++result.samples;
    gestureSeconds += performance.end - performance.start;
  }
  result.nonGestureSeconds = stream.now - gestureSeconds;
  for (const Detection& detection : detections) {
    ++result.detections;
    bool right = false;
    for (size_t i = 0; i < stream.performances.size() && !right; ++i) {
      const Performance& performance = stream.performances[i];
      right = !found[i] && performance.label == detection.label && performance.start <= detection.time &&
              detection.time < performance.end + kLateSeconds;
      if (!right) continue;
      found[i] = true;
      ++result.correct;
      result.delays.push_back(detection.time - performance.end);
    }
    result.confidences[right ? 1 : 0].push_back(detection.confidence);
    if (!right) ++result.alarmsWhere[alarmPlace(stream, found, detection)];
  }
}

JobResult runJob(const EvalJob& job, size_t jobIndex, const TrialPlan& plan, const EvalOptions& options) {
  JobResult result;
  const int hands = options.hands;
  std::vector<int> mannerOfLabel;
  for (size_t g = 0; g < plan.labelOf.size(); ++g) {
    if (plan.labelOf[g] >= 0) mannerOfLabel.push_back(plan.mannerOf[g]);
  }
  Detector detector(hands, mannerOfLabel, options.enhanced, options.sensitivity);
  double clock = 0.0;
  for (const Sample* sample : job.training) {
    const int label = plan.labelOf[static_cast<size_t>(sample->gesture)];
    if (label < 0) continue;
    clock = record(detector, *sample, label, plan.mannerOf[static_cast<size_t>(sample->gesture)], hands, clock);
  }
  result.trainingSeconds = detector.train(options.seconds);

  std::seed_seq seed{options.seed, static_cast<unsigned>(job.trial), static_cast<unsigned>(jobIndex), 2u};
  std::mt19937 rng(seed);
  std::vector<const Sample*> items = job.testing;
  std::shuffle(items.begin(), items.end(), rng);
  std::uniform_real_distribution<double> unit(0.0, 1.0), offset(-0.05, 0.05);
  const Vector3d shift(offset(rng), offset(rng), offset(rng));
  Stream stream(hands, options.framesPerSecond, shift, *items.front(), rng);
  stream.pause(1.0);
  for (const Sample* item : items) {
    const double speed = options.slowest * std::pow(options.fastest / options.slowest, unit(rng));
    stream.perform(*item, plan.mannerOf[static_cast<size_t>(item->gesture)], speed,
                   plan.labelOf[static_cast<size_t>(item->gesture)]);
    if (unit(rng) < 0.8) stream.pause(0.5 + 2.5 * unit(rng));
  }
  stream.pause(2.0);

  // Frames on the host's clock, which goes on from where the training samples left it.
  const double origin = clock + kSampleGapSeconds;
  detector.setTime(origin);
  for (int part = 0; part < hands; ++part) detector.startStroke(part, -1);
  std::vector<Detection> detections;
  const size_t frames = static_cast<size_t>(stream.now * options.framesPerSecond) + 1;
  result.callTimes.reserve(frames);
  result.frameTimes.reserve(frames);
  for (size_t frame = 0; frame < frames; ++frame) {
    const double time = static_cast<double>(frame) / options.framesPerSecond;
    Vector3d positions[2];
    for (int part = 0; part < hands; ++part) positions[part] = stream.paths[static_cast<size_t>(part)].at(time);
    detector.setTime(origin + time);
    const auto begin = std::chrono::steady_clock::now();
    for (int part = 0; part < hands; ++part) detector.feed(part, positions[part]);
    int label = -1;
    double confidence = 0.0;
    const auto detecting = std::chrono::steady_clock::now();
    const int answer = detector.detect(&label, &confidence);
    const auto end = std::chrono::steady_clock::now();
    result.callTimes.push_back(std::chrono::duration<double, std::micro>(end - detecting).count());
    result.frameTimes.push_back(std::chrono::duration<double, std::micro>(end - begin).count());
    if (answer == 1) detections.push_back(Detection{time, label, confidence});
    if (answer < 0 && result.refusals++ == 0) result.firstRefusal = answer;
  }
  score(stream, detections, result);
  return result;
}

double ratio(double part, double whole) { return whole > 0.0 ? part / whole : 0.0; }
double harmonicMean(double a, double b) { return a + b > 0.0 ? 2.0 * a * b / (a + b) : 0.0; }

}  // namespace

nlohmann::json measureContinuous(const EvalOptions& options, const Recording& recording, const std::vector<EvalJob>& jobs) {
  std::vector<TrialPlan> plans;
  std::vector<int> untrained;
  for (int trial = 0; trial < options.trials; ++trial) {
    plans.push_back(planTrial(recording.gestures.size(), trial, options));
    untrained.push_back(static_cast<int>(std::count(plans.back().labelOf.begin(), plans.back().labelOf.end(), -1)));
  }
  std::vector<JobResult> results(jobs.size());
  runInParallel(jobs.size(), options.jobs, options.json,
                [&](size_t j) { results[j] = runJob(jobs[j], j, plans[static_cast<size_t>(jobs[j].trial)], options); });

  JobResult all;
  std::vector<JobResult> trials(static_cast<size_t>(options.trials));
  std::vector<double> firstCalls;  // the first call of a set prepares what detection needs
  for (size_t j = 0; j < jobs.size(); ++j) {
    firstCalls.push_back(results[j].callTimes.front());
    for (JobResult* sum : {&all, &trials[static_cast<size_t>(jobs[j].trial)]}) {
      const JobResult& r = results[j];
      sum->samples += r.samples;
      sum->detections += r.detections;
      sum->correct += r.correct;
      sum->nonGestureSeconds += r.nonGestureSeconds;
      sum->trainingSeconds += r.trainingSeconds;
      if (sum->refusals == 0) sum->firstRefusal = r.firstRefusal;
      sum->refusals += r.refusals;
      for (int k = 0; k < 4; ++k) sum->alarmsWhere[k] += r.alarmsWhere[k];
      sum->delays.insert(sum->delays.end(), r.delays.begin(), r.delays.end());
      sum->callTimes.insert(sum->callTimes.end(), r.callTimes.begin(), r.callTimes.end());
      sum->frameTimes.insert(sum->frameTimes.end(), r.frameTimes.begin(), r.frameTimes.end());
      for (int k = 0; k < 2; ++k) {
        sum->confidences[k].insert(sum->confidences[k].end(), r.confidences[k].begin(), r.confidences[k].end());
      }
    }
  }
  const auto f1 = [](const JobResult& r) {
    return harmonicMean(ratio(r.correct, r.detections), ratio(r.correct, r.samples));
  };
  std::vector<double> f1PerTrial, f1PercentPerTrial;
  for (const JobResult& trial : trials) {
    f1PerTrial.push_back(f1(trial));
    f1PercentPerTrial.push_back(100 * f1PerTrial.back());
  }
  const double precision = ratio(all.correct, all.detections), recall = ratio(all.correct, all.samples);
  const int falseAlarms = all.detections - all.correct, misses = all.samples - all.correct;
  const double nonGestureMinutes = all.nonGestureSeconds / 60.0;
  const double alarmsPerMinute = ratio(falseAlarms, nonGestureMinutes);
  const double meanTraining = all.trainingSeconds / jobs.size();
  nlohmann::json out;
  out["recording"] = options.recording;
  {
    out["protocol"] = options.bySubject ? "new-user" : "same-user";
    out["continuous"] = true;
    out["hands"] = options.hands;
    out["frames_per_second"] = options.framesPerSecond;
    out["speed_range"] = {options.slowest, options.fastest};
    out["sensitivity"] = options.sensitivity;
    out["train_per_class"] = options.trainPerClass;
    out["enhanced"] = options.enhanced;
    out["trials"] = options.trials;
    out["training_seconds_limit"] = options.seconds;
    out["untrained_per_trial"] = untrained;
    out["counts"] = {{"samples", all.samples}, {"detections", all.detections},
                     {"correct", all.correct}, {"false_alarms", falseAlarms},
                     {"misses", misses},       {"refused_frames", all.refusals},
                     {"first_refusal", all.firstRefusal}};
    out["false_alarms_where"] = {{"untrained_gesture", all.alarmsWhere[kInUntrained]},
                                 {"other_gesture", all.alarmsWhere[kInOtherGesture]},
                                 {"repeated", all.alarmsWhere[kRepeated]},
                                 {"between_gestures", all.alarmsWhere[kBetween]}};
    out["precision"] = precision;
    out["recall"] = recall;
    out["f1"] = f1(all);
    out["f1_per_trial"] = f1PerTrial;
    out["false_alarms_per_minute"] = alarmsPerMinute;
    out["non_gesture_minutes"] = nonGestureMinutes;
    out["delay_seconds"] = {{"median", percentile(all.delays, 0.5)}, {"p95", percentile(all.delays, 0.95)}};
    out["detect_call_us"] = {{"median", percentile(all.callTimes, 0.5)},
                             {"p95", percentile(all.callTimes, 0.95)},
                             {"first_call_median", percentile(firstCalls, 0.5)}};
    out["frame_us"] = {{"median", percentile(all.frameTimes, 0.5)}, {"p95", percentile(all.frameTimes, 0.95)}};
    out["confidence_median"] = {{"correct", percentile(all.confidences[1], 0.5)},
                                {"false_alarms", percentile(all.confidences[0], 0.5)}};
    out["training_seconds_mean"] = meanTraining;
  }
  out["jobs"] = jobs.size();
  return out;
}

void printContinuous(const EvalOptions& options, const nlohmann::json& out) {
  const char* protocol = options.bySubject ? "new user (leave one subject out)" : "same user";
  const nlohmann::json& counts = out["counts"];
  const nlohmann::json& where = out["false_alarms_where"];
  std::vector<double> f1PercentPerTrial;
  for (double f1 : out["f1_per_trial"]) f1PercentPerTrial.push_back(100 * f1);
  const std::vector<int> untrained = out["untrained_per_trial"];
  fmt::print(
      "{}: continuous detection, {}, {}{}, {} per gesture for training, {} trials, {} trainings of at most {} s\n",
      options.recording, protocol, options.hands == 2 ? "two hands (combinations)" : "one hand",
      options.enhanced ? ", enhanced recognition" : "", options.trainPerClass, options.trials,
      out["jobs"].get<size_t>(), options.seconds);
  fmt::print("  streams at {} frames/s, samples played {}, untrained gestures in each trial: {}{}\n",
             options.framesPerSecond,
             options.slowest == options.fastest ? fmt::format("at {}x", options.slowest)
                                                : fmt::format("at {}x to {}x", options.slowest, options.fastest),
             fmt::join(untrained, ", "),
             options.sensitivity == 0.5 ? "" : fmt::format(", detection sensitivity {}", options.sensitivity));
  fmt::print("  samples        {:>7}   trained test samples in the streams\n", counts["samples"].get<int>());
  fmt::print("  detections     {:>7}\n", counts["detections"].get<int>());
  fmt::print("  correct        {:>7}\n", counts["correct"].get<int>());
  fmt::print("  false alarms   {:>7}   {:.2f} per minute of non-gesture motion ({:.1f} min)\n",
             counts["false_alarms"].get<int>(), out["false_alarms_per_minute"].get<double>(),
             out["non_gesture_minutes"].get<double>());
  fmt::print("                           {} in untrained gestures, {} in other gestures, {} repeated, {} between\n",
             where["untrained_gesture"].get<int>(), where["other_gesture"].get<int>(), where["repeated"].get<int>(),
             where["between_gestures"].get<int>());
  fmt::print("  misses         {:>7}\n", counts["misses"].get<int>());
  fmt::print("  precision      {:>7.1f} %\n", 100 * out["precision"].get<double>());
  fmt::print("  recall         {:>7.1f} %\n", 100 * out["recall"].get<double>());
  fmt::print("  F1             {:>7.1f} %   per trial: {:.1f}\n", 100 * out["f1"].get<double>(),
             fmt::join(f1PercentPerTrial, ", "));
  const nlohmann::json& delay = out["delay_seconds"];
  const nlohmann::json& call = out["detect_call_us"];
  const nlohmann::json& frame = out["frame_us"];
  const nlohmann::json& confidence = out["confidence_median"];
  fmt::print("  delay          {:>7.2f} s   median; {:.2f} s at the 95th percentile (from a sample's end)\n",
             delay["median"].get<double>(), delay["p95"].get<double>());
  fmt::print("  contdDetect    {:>7.1f} us  median; {:.1f} us at the 95th percentile (per frame)\n",
             call["median"].get<double>(), call["p95"].get<double>());
  fmt::print("  first call     {:>7.1f} ms  median over the sets\n", call["first_call_median"].get<double>() / 1000.0);
  fmt::print("  whole frame    {:>7.1f} us  median; {:.1f} us at the 95th percentile (points and contdDetect)\n",
             frame["median"].get<double>(), frame["p95"].get<double>());
  fmt::print("  confidence     {:>7.2f}     median of correct detections; {:.2f} of false alarms\n",
             confidence["correct"].get<double>(), confidence["false_alarms"].get<double>());
  fmt::print("  training       {:>7.1f} s   mean per set\n", out["training_seconds_mean"].get<double>());
  const int refusals = counts["refused_frames"].get<int>();
  if (refusals > 0) {
    const int first = counts["first_refusal"].get<int>();
    fmt::print("  refused        {:>7}   frames (first: {} {})\n", refusals, first, returnCodeName(first));
  }
}

}  // namespace cli
