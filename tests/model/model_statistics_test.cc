#include "model/model_statistics.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "features/feature_extraction.h"
#include "features/similarity.h"

namespace zando {
namespace {

// A model with the statistics of one gesture over two waypoints; mode-4 axes are of unit length.
struct OneGesture {
  GestureModel model;
  std::vector<double> mean;

  OneGesture(int waypointMode, int headerMode, double variance) {
    model.parameters.waypointCount = 2;
    model.parameters.waypointFeatureMode = waypointMode;
    model.parameters.headerFeatureMode = headerMode;
    mean.resize(static_cast<size_t>(featureCount(model.parameters)));
    for (size_t i = 0; i < mean.size(); ++i) mean[i] = 0.3 * std::sin(static_cast<double>(i));
    const int width = waypointFeatureWidth(waypointMode);
    for (int at : {3, 6, width + 3, width + 6}) {
      if (waypointMode == 4) normalize(at);
    }
    for (int at : {2 * width, 2 * width + 3}) {
      if (headerMode == 4) normalize(at);
    }
    model.gestureMeans = {mean};
    model.gestureDeviations = {std::vector<double>(mean.size(), variance)};
  }

  void normalize(int at) {
    const double n = std::sqrt(mean[at] * mean[at] + mean[at + 1] * mean[at + 1] + mean[at + 2] * mean[at + 2]);
    for (int j = 0; j < 3; ++j) mean[at + j] /= n;
  }
};

TEST(ModelStatisticsTest, SimilarityAtTheMeanIsExactlyOne) {
  for (int waypointMode : {0, 1, 2, 4}) {
    for (int headerMode : {0, 1, 2, 4}) {
      for (double variance : {0.0, 0.37, 12.0}) {
        OneGesture g(waypointMode, headerMode, variance);
        EXPECT_EQ(gestureSimilarity(g.model, g.mean, 0), 1.0) << waypointMode << " " << headerMode;
      }
    }
  }
}

// Variance 0 (one sample) is floored at 0.001; each of the five groups weighs a fifth; a waypoint
// quaternion sets the fourth power of its angle against the variance.
TEST(ModelStatisticsTest, GroupsFloorAndQuaternionExponent) {
  OneGesture g(2, 2, 0.0);  // quaternions at 3 and 10, header 14, centroid 18, radius 21
  const double gauss = std::exp(-0.01 / 0.002);
  std::vector<double> x = g.mean;
  x[21] += 0.1;
  EXPECT_NEAR(gauss, 0.0067, 1e-4);
  EXPECT_NEAR(gestureSimilarity(g.model, x, 0), (4.0 + gauss) * 0.2, 1e-15);
  x = g.mean;
  x[18] += 0.1;
  EXPECT_NEAR(gestureSimilarity(g.model, x, 0), (4.0 + (2.0 + gauss) / 3.0) * 0.2, 1e-15);

  g.model.gestureDeviations[0].assign(x.size(), 0.05);
  Quaternion().copyTo(&g.mean[3]);
  g.model.gestureMeans = {g.mean};
  x = g.mean;
  Quaternion(std::sin(0.3), 0, 0, std::cos(0.3)).copyTo(&x[3]);  // a turn of 0.6
  const double rotations = (std::exp(-std::pow(0.6, 4) / 0.1) + 1.0) / 2.0;
  EXPECT_NEAR(gestureSimilarity(g.model, x, 0), (4.0 + rotations) * 0.2, 1e-12);
}

TEST(ModelStatisticsTest, SimilarityRefusesWhatItCannotMeasure) {
  OneGesture g(2, 2, 0.1);
  EXPECT_EQ(gestureSimilarity(g.model, g.mean, 1), -1.0);
  EXPECT_EQ(gestureSimilarity(g.model, g.mean, -1), -1.0);
  std::vector<double> longer = g.mean;
  longer.push_back(0.0);
  EXPECT_EQ(gestureSimilarity(g.model, longer, 0), -1.0);
  EXPECT_EQ(gestureSimilarity(OneGesture(3, 2, 0.1).model, OneGesture(3, 2, 0.1).mean, 0), -1.0);
  EXPECT_EQ(gestureSimilarity(OneGesture(2, 3, 0.1).model, OneGesture(2, 3, 0.1).mean, 0), -1.0);
  g.model.gestureDeviations.clear();
  EXPECT_EQ(gestureSimilarity(g.model, g.mean, 0), -1.0);
}

Stroke arc(double radius, double tilt) {
  Stroke stroke;
  for (int i = 0; i < 30; ++i) {
    const double t = i / 29.0 * 2.5;
    stroke.handPoints.emplace_back(Vector3(radius * std::cos(t), radius * std::sin(t) + 0.3 * t, -0.5),
                                   Quaternion(0, std::sin(tilt / 2), 0, std::cos(tilt / 2)));
    stroke.headPoints.emplace_back(Vector3(), Quaternion());
  }
  stroke.headStart = stroke.headLatest = stroke.headPoints.front();
  return stroke;
}

TEST(ModelStatisticsTest, GestureMeansCoverEveryGestureAndFitTheirSamples) {
  GestureModel model;
  for (int g = 0; g < 3; ++g) model.gestures.push_back(new Gesture("g", nullptr));
  model.gestures[0]->gestureSamples = {new Stroke(arc(0.4, 0.2))};
  model.gestures[2]->gestureSamples = {new Stroke(arc(0.4, 0.2)), new Stroke(arc(0.4, 0.2)), new Stroke(arc(0.7, 0.9))};
  computeGestureMeans(model);

  const size_t count = static_cast<size_t>(featureCount(model.parameters));
  ASSERT_EQ(model.gestureMeans.size(), 3u);
  ASSERT_EQ(model.gestureDeviations.size(), 3u);
  EXPECT_EQ(model.gestureMeans[1], std::vector<double>(count, 0.0));
  EXPECT_EQ(model.gestureDeviations[1], std::vector<double>(count, 0.0));

  const std::vector<double> x = extractFeatures(arc(0.4, 0.2), model.parameters);
  const std::vector<double> y = extractFeatures(arc(0.7, 0.9), model.parameters);
  for (double v : model.gestureDeviations[0]) EXPECT_NEAR(v, 0.0, 1e-12);
  EXPECT_NEAR(gestureSimilarity(model, x, 0), 1.0, 1e-9);
  EXPECT_NEAR(model.gestureMeans[2][count - 1], (2.0 * x[count - 1] + y[count - 1]) / 3.0, 1e-12);
  EXPECT_GT(model.gestureDeviations[2][count - 1], 0.0);
  EXPECT_GT(gestureSimilarity(model, y, 2), gestureSimilarity(model, y, 0));
}

}  // namespace
}  // namespace zando
