// The subcommands of the `zando` program; each returns the process's exit code.
#ifndef ZANDO_TOOLS_CLI_COMMANDS_H
#define ZANDO_TOOLS_CLI_COMMANDS_H

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace cli {

// The symbolic name of a return code, "ReturnCode_InvalidFile" for -4.
const char* returnCodeName(int code);

int runInfo(const std::string& path);
// The feature selector that a gesture database file stores (the frequency path is 3).
int storedFeatureSelector(const std::string& path);

struct PlotOptions {
  std::string input;    // a gesture database or a recording (.csv)
  std::string gesture;  // empty: every gesture
  std::string output;
  int samples = 0;      // at most this many samples of each gesture; 0: all
};
int runPlot(const PlotOptions& options);

struct TrainOptions {
  std::string recording;
  std::string output;
  int seconds = 30;
  std::vector<std::pair<int, int>> parameters;  // training parameter id and value
};
int runTrain(const TrainOptions& options);

struct EvalOptions {
  std::string recording;  // a recording, or a folder of them (every .csv in it)
  int trainPerClass = 4;
  // Several training sizes, measured in turn into one table; empty: trainPerClass alone.
  std::vector<int> trainPerClassList;
  int trials = 2;
  int seconds = 5;
  bool bySubject = false;
  bool enhanced = false;
  bool json = false;
  int jobs = 1;
  unsigned seed = 1;
  // Detection in a running stream of motion instead of identification of single strokes.
  bool continuous = false;
  int hands = 1;  // 2: both hands, through a combination object
  int framesPerSecond = 30;
  double slowest = 1.0;  // each sample of the stream plays between these speeds
  double fastest = 1.0;
  double sensitivity = 0.5;  // the detection sensitivity the objects are given
  // Perturbed copies of the recording, imitating what it does not hold: each subject's samples
  // made up to this many times larger or smaller and turned up to this many radians about a
  // random axis, and every point shaken by this many metres (a hand tracker's jitter).
  double perturbScale = 1.0;
  double perturbTilt = 0.0;
  double perturbJitter = 0.0;
};
int runEval(const EvalOptions& options);

struct Sample;
struct Recording;

// One training of an evaluation: the samples that train a fresh set and those that test it.
struct EvalJob {
  int trial = 0;
  std::vector<const Sample*> training;
  std::vector<const Sample*> testing;
};
// Same user: for each subject, T samples of each gesture train and the subject's others test.
// New user (bySubject): T samples of each gesture of the other subjects train, all of the
// subject's samples test. Subjects with nothing to train or test are left out.
std::vector<EvalJob> makeEvalJobs(const Recording& recording, const EvalOptions& options);
// Calls work(0) to work(count - 1) on at most `workers` threads, with a progress line unless quiet.
void runInParallel(size_t count, int workers, bool quiet, const std::function<void(size_t)>& work);
// The value below which `share` of the values lie; 0 for none.
double percentile(std::vector<double> values, double share);
// `zando eval --continuous`, on the recording and jobs that runEval prepared: what --json shows,
// and its text form.
nlohmann::json measureContinuous(const EvalOptions& options, const Recording& recording,
                                 const std::vector<EvalJob>& jobs);
void printContinuous(const EvalOptions& options, const nlohmann::json& result);

// A training finish callback that sets the std::atomic<bool> it is handed.
inline void markDone(double, void* done) { static_cast<std::atomic<bool>*>(done)->store(true); }

// A progress line: redrawn in place on a terminal, else one plain line now and then.
class Progress {
 public:
  explicit Progress(std::string label);
  void update(double fraction, const std::string& detail);
  void finish(const std::string& detail);

 private:
  std::string label_;
  bool terminal_;
  int lastTenth_ = -1;
};

}  // namespace cli

#endif  // ZANDO_TOOLS_CLI_COMMANDS_H
