#include "model/model_statistics.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "features/feature_extraction.h"
#include "features/similarity.h"
#include "model/training_fixtures.h"

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
    for (int i = 0; i < featureCount(model.parameters); ++i) mean.push_back(0.3 * std::sin(i));
    const int width = waypointFeatureWidth(waypointMode);
    std::vector<int> axes;
    if (waypointMode == 4) axes = {3, 6, width + 3, width + 6};
    if (headerMode == 4) axes.insert(axes.end(), {2 * width, 2 * width + 3});
    for (int at : axes) Eigen::Map<Eigen::Vector3d>(&mean[at]).normalize();
    model.gestureMeans = {mean};
    model.gestureDeviations = {std::vector<double>(mean.size(), variance)};
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
  const double gauss = std::exp(-0.01 / 0.002);  // 0.1 off, against the floor
  std::vector<double> x = g.mean;
  x[21] += 0.1;
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
  for (int gesture : {1, -1}) EXPECT_EQ(gestureSimilarity(g.model, g.mean, gesture), -1.0) << gesture;
  std::vector<double> longer = g.mean;
  longer.push_back(0.0);
  EXPECT_EQ(gestureSimilarity(g.model, longer, 0), -1.0);
  for (const OneGesture& unknownMode : {OneGesture(3, 2, 0.1), OneGesture(2, 3, 0.1)}) {
    EXPECT_EQ(gestureSimilarity(unknownMode.model, unknownMode.mean, 0), -1.0);
  }
  g.model.gestureDeviations.clear();
  EXPECT_EQ(gestureSimilarity(g.model, g.mean, 0), -1.0);
}

// Statistics for every gesture, zeros for one without samples; a single sample is its own mean.
TEST(ModelStatisticsTest, GestureMeansCoverEveryGestureAndFitTheirSamples) {
  testing_shapes::ShapeMaker maker(9);
  GestureModel model;
  for (const auto& [shape, samples] : {std::pair(0, 1), std::pair(1, 0), std::pair(2, 3)}) {
    testing_shapes::addGestures(model, maker, {shape}, samples);
  }
  computeGestureMeans(model);
  const auto features = [&](int g, int s) {
    return extractFeatures(*model.gestures[g]->gestureSamples[s], model.parameters);
  };
  const std::vector<double> x = features(0, 0), y = features(2, 0);
  ASSERT_EQ(model.gestureMeans.size(), 3u);
  ASSERT_EQ(model.gestureDeviations.size(), 3u);
  EXPECT_EQ(model.gestureMeans[1], std::vector<double>(x.size(), 0.0));
  EXPECT_EQ(model.gestureDeviations[1], model.gestureMeans[1]);
  for (double v : model.gestureDeviations[0]) EXPECT_NEAR(v, 0.0, 1e-12);
  EXPECT_NEAR(gestureSimilarity(model, x, 0), 1.0, 1e-9);
  EXPECT_NEAR(model.gestureMeans[2].back(), (y.back() + features(2, 1).back() + features(2, 2).back()) / 3.0, 1e-12);
  EXPECT_GT(model.gestureDeviations[2].back(), 0.0);
  EXPECT_GT(gestureSimilarity(model, y, 2), gestureSimilarity(model, y, 0));
}

}  // namespace
}  // namespace zando
