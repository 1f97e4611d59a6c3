// `zando plot FILE|DATA.csv -o OUT.svg`: the samples of a gesture, or of every gesture as small
// multiples, in three orthogonal projections (front, top, side) so that depth shows; over them,
// where the set is trained on positions, a fourth view of the samples as the network sees them
// (normalised waypoints) with the gesture's mean stroke over them.
#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <zando/zando.h>

#include "commands.h"
#include "recording.h"

namespace cli {

namespace {

using Path = std::vector<std::array<double, 3>>;

struct GesturePicture {
  std::string name;
  std::vector<Path> samples;
  // The waypoints of each sample as the network sees them, and the gesture's mean in the same
  // normalised frame; empty when the set holds no mean of positions.
  std::vector<Path> processed;
  Path mean;
};

constexpr double kPanel = 180.0;
constexpr double kMargin = 14.0;
constexpr double kLabel = 22.0;
const char* const kViews[4] = {"front (x, y)", "top (x, z)", "side (z, y)", "normalised, with the mean"};
const int kAxes[4][2] = {{0, 1}, {0, 2}, {2, 1}, {0, 1}};

bool fromRecording(const std::string& path, std::vector<GesturePicture>& pictures, std::string& error) {
  Recording recording;
  if (!readRecording(path, recording, error)) return false;
  pictures.resize(recording.gestures.size());
  for (size_t g = 0; g < pictures.size(); ++g) pictures[g].name = recording.gestures[g];
  for (const Sample& sample : recording.samples) {
    Path line;
    for (const Point& point : sample.points) line.push_back({point.hand.position[0], point.hand.position[1], point.hand.position[2]});
    pictures[static_cast<size_t>(sample.gesture)].samples.push_back(std::move(line));
  }
  return true;
}

bool fromSet(const std::string& path, std::vector<GesturePicture>& pictures, std::string& error, bool& meansDrawn) {
  void* gro = GestureRecognition_create();
  const int loaded = GestureRecognition_loadFromFile(gro, path.c_str(), GestureRecognition_getDefaultMetadataCreatorFunction());
  if (loaded != 0) {
    error = fmt::format("'{}' does not load: {} ({})", path, loaded, returnCodeName(loaded));
    GestureRecognition_delete(gro);
    return false;
  }
  const int gestures = GestureRecognition_numberOfGestures(gro);
  for (int g = 0; g < gestures; ++g) {
    GesturePicture picture;
    picture.name = GestureRecognition_getGestureName(gro, g);
    for (int s = 0; s < GestureRecognition_getGestureNumberOfSamples(gro, g); ++s) {
      const int length = GestureRecognition_getGestureSampleLength(gro, g, s, 0);
      if (length < 1) continue;
      std::vector<double> hand(3 * static_cast<size_t>(length)), turn(4 * static_cast<size_t>(length));
      std::vector<double> head(3 * static_cast<size_t>(length)), headTurn(4 * static_cast<size_t>(length));
      auto* handP = reinterpret_cast<double(*)[3]>(hand.data());
      const int got = GestureRecognition_getGestureSampleStroke(gro, g, s, 0, length, handP,
                                                                reinterpret_cast<double(*)[4]>(turn.data()),
                                                                reinterpret_cast<double(*)[3]>(head.data()),
                                                                reinterpret_cast<double(*)[4]>(headTurn.data()));
      Path line;
      for (int i = 0; i < got; ++i) line.push_back({handP[i][0], handP[i][1], handP[i][2]});
      picture.samples.push_back(std::move(line));
    }
    const int rows = GestureRecognition_getGestureMeanLength(gro, g);
    if (meansDrawn && rows > 0) {
      std::vector<double> positions(3 * static_cast<size_t>(rows)), rotations(4 * static_cast<size_t>(rows));
      std::vector<double> heads(3 * static_cast<size_t>(rows)), headTurns(4 * static_cast<size_t>(rows));
      auto* p = reinterpret_cast<double(*)[3]>(positions.data());
      auto* q = reinterpret_cast<double(*)[4]>(rotations.data());
      const auto toPath = [&](int count) {
        Path path;
        for (int i = 0; i < count; ++i) path.push_back({p[i][0], p[i][1], p[i][2]});
        return path;
      };
      const int got = GestureRecognition_getGestureMeanStroke(gro, g, p, q, rows, nullptr, nullptr, nullptr);
      if (got > 0) {
        picture.mean = toPath(got);
        for (int s = 0; s < GestureRecognition_getGestureNumberOfSamples(gro, g); ++s) {
          const int n = GestureRecognition_getGestureSampleStroke(gro, g, s, 1, rows, p, q,
                                                                  reinterpret_cast<double(*)[3]>(heads.data()),
                                                                  reinterpret_cast<double(*)[4]>(headTurns.data()));
          picture.processed.push_back(toPath(n));
        }
      }
    }
    pictures.push_back(std::move(picture));
  }
  GestureRecognition_delete(gro);
  return true;
}

// One scale for every view of a gesture, so that its proportions hold.
double fit(const std::vector<Path>& paths, double low[3]) {
  double high[3];
  std::fill(low, low + 3, std::numeric_limits<double>::max());
  std::fill(high, high + 3, std::numeric_limits<double>::lowest());
  for (const Path& path : paths) {
    for (const auto& p : path) {
      for (size_t a = 0; a < 3; ++a) {
        low[a] = std::min(low[a], p[a]);
        high[a] = std::max(high[a], p[a]);
      }
    }
  }
  const double extent = std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2], 1e-9});
  return (kPanel - 2 * kMargin) / extent;
}

std::string polyline(const Path& path, int view, const double low[3], double unit, double left, double top,
                     const char* style) {
  std::string points;
  for (const auto& p : path) {
    const double u = left + kMargin + (p[static_cast<size_t>(kAxes[view][0])] - low[kAxes[view][0]]) * unit;
    // Up is up in the picture: the second axis grows toward the top.
    const double v = top + kPanel - kMargin - (p[static_cast<size_t>(kAxes[view][1])] - low[kAxes[view][1]]) * unit;
    points += fmt::format("{:.1f},{:.1f} ", u, v);
  }
  return fmt::format("<polyline points=\"{}\" {}/>\n", points, style);
}

}  // namespace

int runPlot(const PlotOptions& options) {
  std::vector<GesturePicture> pictures;
  std::string error;
  const bool csv = options.input.size() >= 4 && options.input.substr(options.input.size() - 4) == ".csv";
  // The frequency features of a trained set hold no positions, so their mean is no drawable path.
  bool meansDrawn = !csv && storedFeatureSelector(options.input) != 3;
  if (!(csv ? fromRecording(options.input, pictures, error) : fromSet(options.input, pictures, error, meansDrawn))) {
    fmt::print(stderr, "zando: {}\n", error);
    return 1;
  }
  if (options.samples > 0) {
    for (GesturePicture& picture : pictures) {
      const size_t keep = static_cast<size_t>(options.samples);
      if (picture.samples.size() > keep) picture.samples.resize(keep);
      if (picture.processed.size() > keep) picture.processed.resize(keep);
    }
  }
  if (!options.gesture.empty()) {
    pictures.erase(std::remove_if(pictures.begin(), pictures.end(),
                                  [&](const GesturePicture& p) { return p.name != options.gesture; }),
                   pictures.end());
    if (pictures.empty()) {
      fmt::print(stderr, "zando: no gesture named '{}' in '{}'\n", options.gesture, options.input);
      return 1;
    }
  }
  const bool withMeans = std::any_of(pictures.begin(), pictures.end(), [](const GesturePicture& p) { return !p.mean.empty(); });
  const int views = withMeans ? 4 : 3;
  const double width = views * kPanel + 120.0;
  const double rowHeight = kPanel + kLabel;
  std::string svg = fmt::format(
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{:.0f}\" height=\"{:.0f}\" font-family=\"sans-serif\" "
      "font-size=\"12\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n",
      width, kLabel + rowHeight * static_cast<double>(pictures.size()));
  for (int view = 0; view < views; ++view) {
    svg += fmt::format("<text x=\"{:.0f}\" y=\"15\" fill=\"#444\">{}</text>\n", 120.0 + view * kPanel + kMargin,
                       kViews[view]);
  }
  for (size_t g = 0; g < pictures.size(); ++g) {
    const GesturePicture& picture = pictures[g];
    double low[3], normalLow[3];
    const double unit = fit(picture.samples, low);
    std::vector<Path> normalised = picture.processed;
    normalised.push_back(picture.mean);
    const double normalUnit = fit(normalised, normalLow);
    const double top = kLabel + rowHeight * static_cast<double>(g);
    svg += fmt::format("<text x=\"8\" y=\"{:.0f}\">{}</text>\n<text x=\"8\" y=\"{:.0f}\" fill=\"#777\">{} samples</text>\n",
                       top + kPanel / 2, picture.name, top + kPanel / 2 + 16, picture.samples.size());
    for (int view = 0; view < views; ++view) {
      const double left = 120.0 + view * kPanel;
      svg += fmt::format("<rect x=\"{:.0f}\" y=\"{:.0f}\" width=\"{:.0f}\" height=\"{:.0f}\" fill=\"none\" "
                         "stroke=\"#ddd\"/>\n",
                         left + 2, top + 2, kPanel - 4, kPanel - 4);
      const bool normal = view == 3;
      for (const Path& path : normal ? picture.processed : picture.samples) {
        svg += polyline(path, view, normal ? normalLow : low, normal ? normalUnit : unit, left, top,
                        "fill=\"none\" stroke=\"#3b6fb6\" stroke-opacity=\"0.35\" stroke-width=\"1\"");
      }
      if (normal && !picture.mean.empty()) {
        svg += polyline(picture.mean, view, normalLow, normalUnit, left, top,
                        "fill=\"none\" stroke=\"#d2452b\" stroke-width=\"2.5\"");
      }
    }
  }
  svg += "</svg>\n";
  std::ofstream out(options.output, std::ios::binary);
  out << svg;
  if (!out.good()) {
    fmt::print(stderr, "zando: cannot write '{}'\n", options.output);
    return 1;
  }
  fmt::print("wrote {}: {} gestures\n", options.output, pictures.size());
  return 0;
}

}  // namespace cli
