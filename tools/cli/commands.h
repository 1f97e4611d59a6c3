// The subcommands of the `zando` program; each returns the process's exit code.
#ifndef ZANDO_TOOLS_CLI_COMMANDS_H
#define ZANDO_TOOLS_CLI_COMMANDS_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace cli {

// The symbolic name of a return code, "ReturnCode_InvalidFile" for -4.
const char* returnCodeName(int code);

int runInfo(const std::string& path);

struct TrainOptions {
  std::string recording;
  std::string output;
  int seconds = 30;
  std::vector<std::pair<int, int>> parameters;  // training parameter id and value
};
int runTrain(const TrainOptions& options);

struct EvalOptions {
  std::string recording;
  int trainPerClass = 4;
  int trials = 2;
  int seconds = 5;
  bool bySubject = false;
  bool json = false;
  int jobs = 1;
  unsigned seed = 1;
};
int runEval(const EvalOptions& options);

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
