// From samples to training matrices: the share table, where each sample lands, the targets, and
// the feature scales.
#include "model/training_data.h"

#include <cmath>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "features/feature_extraction.h"
#include "model/training_fixtures.h"

namespace zando {
namespace {

using testing_shapes::ShapeMaker;
using testing_shapes::addGestures;

TEST(TrainingDataTest, ShareTable) {
  // {n, training, middle, last, too few}. 15 tells single precision from a product widened to
  // double (15 * double(0.2f) rounds up to 4).
  const int rows[][5] = {{0, 0, 0, 0, 0}, {1, 1, 0, 0, 1}, {2, 1, 0, 1, 1},  {3, 1, 1, 1, 1},
                         {4, 2, 1, 1, 0}, {5, 3, 1, 1, 0}, {10, 6, 2, 2, 0}, {15, 9, 3, 3, 0}};
  for (const auto& row : rows) {
    int shares[3];
    EXPECT_EQ(sampleShares(row[0], &shares[0], &shares[1], &shares[2]), row[4] != 0) << row[0];
    EXPECT_EQ(std::vector<int>(shares, shares + 3), std::vector<int>(row + 1, row + 4)) << row[0];
  }
}

// Every enabled sample appears exactly once, with 1.0 in its own column and -1.0 in the four
// others, the empty and the disabled gesture's columns included.
TEST(TrainingDataTest, EverySampleLandsOnceUnderItsGesture) {
  ShapeMaker maker(7);
  GestureModel model;
  addGestures(model, maker, {0, 1, 2, 3, 4}, 0);
  const int counts[5] = {4, 5, 10, 0, 6};  // gesture 3 is empty, gesture 4 disabled
  ModelParameters parameters;
  parameters.transferMode = 1;
  std::map<std::vector<double>, int> owner;
  for (int g = 0; g < 5; ++g) {
    for (int i = 0; i < counts[g]; ++i) model.gestures[g]->gestureSamples.push_back(maker.stroke(g));
    for (const Stroke* s : model.gestures[g]->gestureSamples) owner[extractFeatures(*s, parameters)] = g;
  }
  model.gestures[4]->gestureEnabled = false;

  bool invalid = false;
  TrainingData data;
  ASSERT_TRUE(buildTrainingData(model.gestures, data, parameters, &invalid));
  EXPECT_FALSE(invalid);
  EXPECT_EQ(data.training.count, 2 + 3 + 6);
  EXPECT_EQ(data.validation.count, 2 + 2 + 4);
  EXPECT_EQ(data.validation.inputs, data.scoring.inputs);
  std::set<std::vector<double>> seen;
  for (const SampleSet* set : {&data.training, &data.validation}) {
    ASSERT_EQ(set->targets.cols(), 5);
    for (Eigen::Index r = 0; r < set->count; ++r) {
      EXPECT_EQ(set->inputs(r, 0), 1.0);
      const Eigen::RowVectorXd features = set->inputs.row(r).tail(set->inputs.cols() - 1);
      const auto found = owner.find(std::vector<double>(features.data(), features.data() + features.size()));
      ASSERT_TRUE(found != owner.end() && found->second < 4);
      Eigen::RowVectorXd target = Eigen::RowVectorXd::Constant(5, -1.0);
      target(found->second) = 1.0;
      EXPECT_EQ(set->targets.row(r), target);
      seen.insert(found->first);
    }
  }
  EXPECT_EQ(seen.size(), 19u);

  parameters.transferMode = 0;  // logistic targets: 0 where tanh has -1
  ASSERT_TRUE(buildTrainingData(model.gestures, data, parameters, &invalid));
  EXPECT_EQ((data.training.targets.array() == 0.0).count(), data.training.count * 4);
}

TEST(TrainingDataTest, TooFewSamplesMarkTheNetworkOrLeaveNoData) {
  ShapeMaker maker(3);
  GestureModel pairs, single;
  addGestures(pairs, maker, {0, 1}, 2);   // two samples each: one row in each set per gesture
  addGestures(single, maker, {0, 1}, 1);  // one enabled gesture of one sample: nothing held back
  single.gestures[1]->gestureEnabled = false;
  TrainingData data;
  bool invalid = false;
  ASSERT_TRUE(buildTrainingData(pairs.gestures, data, ModelParameters(), &invalid));
  EXPECT_TRUE(invalid);
  EXPECT_EQ(data.training.count + data.validation.count + data.scoring.count, 6);
  invalid = false;
  EXPECT_FALSE(buildTrainingData(single.gestures, data, ModelParameters(), &invalid));
  EXPECT_TRUE(invalid);
}

// Points are measured in the head's frame of their own moment. Centres at 1 and 2 from the head,
// radii 0.1 and 0.2 (mean of 0.3, 0, 0.3); the empty sample does not count.
TEST(TrainingDataTest, FeatureScalesComeFromHeadRelativeCentresAndRadii) {
  Stroke* near = new Stroke;
  for (double dx : {-0.1, 0.1}) {
    near->handPoints.emplace_back(Vector3(dx, 0.0, -1.0), Quaternion());
    near->headPoints.emplace_back(Vector3(), Quaternion());
  }
  // Head at (5, 0, 0) turned 90 degrees about y: its forward (0, 0, -1) is world (-1, 0, 0).
  Stroke* far = new Stroke;
  far->headLatest = StrokePoint(Vector3(5.0, 0.0, 0.0), Quaternion(0.0, std::sqrt(0.5), 0.0, std::sqrt(0.5)));
  far->headPoints.push_back(far->headLatest);  // one head record for three hand points
  for (double dy : {-0.3, 0.0, 0.3}) far->handPoints.emplace_back(Vector3(3.0, dy, 0.0), Quaternion());
  GestureModel model;
  model.gestures.push_back(new Gesture("a", nullptr));
  model.gestures[0]->gestureSamples = {near, far, new Stroke};
  computeFeatureScales(model);
  EXPECT_EQ(far->headPoints.size(), 3u);  // padded with the latest head pose
  EXPECT_NEAR(model.parameters.featureScaleA, 1.0 / 1.5, 1e-12);
  EXPECT_NEAR(model.parameters.featureScaleB, 1.0 / 0.15, 1e-12);

  // Everything at the head: the reciprocal would be infinite, and 1.0 stands instead.
  far->handPoints.clear();
  near->handPoints = near->headPoints;
  computeFeatureScales(model);
  EXPECT_EQ(model.parameters.featureScaleA, 1.0);
  EXPECT_EQ(model.parameters.featureScaleB, 1.0);
}

}  // namespace
}  // namespace zando
