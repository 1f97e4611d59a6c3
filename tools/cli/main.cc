// `zando`: the command line for people who build with gestures. Built on the public API only.
#include <cstdio>
#include <algorithm>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <zando/zando.h>

#include "commands.h"

namespace cli {

const char* returnCodeName(int code) {
  switch (code) {
    case ReturnCode_Success: return "ReturnCode_Success";
    case ReturnCode_Failed: return "ReturnCode_Failed";
    case ReturnCode_InvalidIndex: return "ReturnCode_InvalidIndex";
    case ReturnCode_InvalidPath: return "ReturnCode_InvalidPath";
    case ReturnCode_InvalidFile: return "ReturnCode_InvalidFile";
    case ReturnCode_PointCountMismatch: return "ReturnCode_PointCountMismatch";
    case ReturnCode_StrokeTooShort: return "ReturnCode_StrokeTooShort";
    case ReturnCode_TrainingInProgress: return "ReturnCode_TrainingInProgress";
    case ReturnCode_NoGestures: return "ReturnCode_NoGestures";
    case ReturnCode_ModelMismatch: return "ReturnCode_ModelMismatch";
    case ReturnCode_CannotReplaceFile: return "ReturnCode_CannotReplaceFile";
    case ReturnCode_NoStrokeStarted: return "ReturnCode_NoStrokeStarted";
    case ReturnCode_NoPartResult: return "ReturnCode_NoPartResult";
    case ReturnCode_ResourceError: return "ReturnCode_ResourceError";
    case ReturnCode_LoadingInProgress: return "ReturnCode_LoadingInProgress";
    case ReturnCode_SavingInProgress: return "ReturnCode_SavingInProgress";
    case ReturnCode_InvalidParameter: return "ReturnCode_InvalidParameter";
    case ReturnCode_StreamError: return "ReturnCode_StreamError";
    default: return "unknown code";
  }
}

}  // namespace cli

int main(int argc, char** argv) {
  CLI::App app{fmt::format("zando {}: gesture sets, recordings and evaluation", GestureRecognition_getVersionString())};
  app.require_subcommand(0, 1);

  std::string infoPath;
  CLI::App* info = app.add_subcommand("info", "Summarise a gesture database or combination file");
  info->add_option("FILE", infoPath, "the file")->required();

  cli::TrainOptions train;
  std::vector<std::string> parameters;
  CLI::App* trainCommand = app.add_subcommand("train", "Record a recording file into a new set, train it and save it");
  trainCommand->add_option("DATA", train.recording, "recording file (CSV)")->required();
  trainCommand->add_option("-o,--output", train.output, "the set to write")->required();
  trainCommand->add_option("--seconds", train.seconds, "training time limit")->check(CLI::PositiveNumber);
  trainCommand->add_option("--param", parameters, "pin a training parameter, ID=VALUE");

  cli::EvalOptions eval;
  eval.jobs = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  CLI::App* evalCommand = app.add_subcommand("eval", "Measure how well a recording's gestures are recognised");
  evalCommand->add_option("DATA", eval.recording, "recording file (CSV), or a folder: every recording in it, one table")
      ->required();
  evalCommand
      ->add_option("--train-per-class", eval.trainPerClassList,
                   "samples of each gesture for training; several (2,4,8) give one table")
      ->delimiter(',')
      ->check(CLI::PositiveNumber);
  evalCommand->add_option("--trials", eval.trials, "repetitions with new random draws")->check(CLI::PositiveNumber);
  evalCommand->add_option("--seconds", eval.seconds, "training time limit of each set")->check(CLI::PositiveNumber);
  evalCommand->add_flag("--by-subject", eval.bySubject, "leave one subject out: sets trained on the others");
  evalCommand->add_flag("--enhanced", eval.enhanced, "the enhanced recognition mode");
  evalCommand->add_flag("--json", eval.json, "machine-readable output");
  evalCommand->add_option("--jobs", eval.jobs, "trainings in parallel (default: the core count)")
      ->check(CLI::PositiveNumber);
  evalCommand->add_option("--seed", eval.seed, "seed of the random draws");
  evalCommand->add_option("--perturb-scale", eval.perturbScale, "each subject's samples up to F times larger or smaller")
      ->check(CLI::Range(1.0, 10.0));
  evalCommand->add_option("--perturb-tilt", eval.perturbTilt, "each subject's samples turned up to R radians")
      ->check(CLI::Range(0.0, 3.2));
  evalCommand->add_option("--perturb-jitter", eval.perturbJitter, "every point shaken by M metres (tracker jitter)")
      ->check(CLI::Range(0.0, 1.0));
  CLI::Option* continuous = evalCommand->add_flag(
      "--continuous", eval.continuous,
      "detection in a stream: test samples and untrained gestures joined by moves and pauses");
  evalCommand->add_option("--hands", eval.hands, "1, or 2 for two-handed streams (a combination object)")
      ->check(CLI::IsMember({1, 2}))
      ->needs(continuous);
  evalCommand->add_option("--fps", eval.framesPerSecond, "frame rate of the stream")
      ->check(CLI::Range(5, 1000))
      ->needs(continuous);
  std::pair<double, double> speeds{1.0, 1.0};
  evalCommand->add_option("--speed-range", speeds, "each sample of the stream plays SLOWEST,FASTEST times as fast")
      ->delimiter(',')
      ->needs(continuous);
  evalCommand->add_option("--sensitivity", eval.sensitivity, "detection sensitivity, 0 to 1 (default 0.5)")
      ->check(CLI::Range(0.0, 1.0))
      ->needs(continuous);

  cli::PlotOptions plot;
  CLI::App* plotCommand = app.add_subcommand("plot", "Draw the samples of gestures in three projections as SVG");
  plotCommand->add_option("INPUT", plot.input, "gesture database, or recording file ending in .csv")->required();
  plotCommand->add_option("--gesture", plot.gesture, "only this gesture (default: all, as small multiples)");
  plotCommand->add_option("-o,--output", plot.output, "the SVG file to write")->required();
  plotCommand->add_option("--samples", plot.samples, "at most this many samples of each gesture")
      ->check(CLI::NonNegativeNumber);

  try {
    app.parse(argc, argv);
    for (const std::string& pair : parameters) {
      const size_t equals = pair.find('=');
      if (equals == std::string::npos) throw CLI::ValidationError("--param", "'" + pair + "' is not ID=VALUE");
      train.parameters.emplace_back(std::stoi(pair.substr(0, equals)), std::stoi(pair.substr(equals + 1)));
    }
    if (!(speeds.first > 0.0 && speeds.first <= speeds.second && speeds.second <= 100.0)) {
      throw CLI::ValidationError("--speed-range", "wants two speeds, the slower first, above 0 and at most 100");
    }
    eval.slowest = speeds.first;
    eval.fastest = speeds.second;
  } catch (const CLI::CallForHelp&) {
    fmt::print("{}", app.help());
    return 0;
  } catch (const CLI::ParseError& e) {
    fmt::print(stderr, "zando: {}\n", e.what());
    return 2;
  } catch (const std::exception& e) {
    fmt::print(stderr, "zando: bad argument: {}\n", e.what());
    return 2;
  }
  if (info->parsed()) return cli::runInfo(infoPath);
  if (trainCommand->parsed()) return cli::runTrain(train);
  if (evalCommand->parsed()) return cli::runEval(eval);
  if (plotCommand->parsed()) return cli::runPlot(plot);
  fmt::print("{}", app.help());
  return 0;
}
