#include "model/training_data.h"

#include <cmath>

#include <Eigen/LU>

#include "features/feature_extraction.h"
#include "spatial/random.h"

namespace zando {

namespace {

double reciprocalOfMean(double sum, int count) {
  if (count == 0) return 1.0;
  const double mean = sum / count;
  if (mean == 0.0) return 1.0;  // the reciprocal would be infinite
  const double value = 1.0 / mean;
  return std::isfinite(value) ? value : 1.0;
}

// Fills one row of a set: inputs with the constant 1.0 and the features, targets with the
// gesture's column at 1.0. Returns false (leaving the surplus unwritten) if the vector's length
// does not fit the matrix.
bool fillRow(SampleSet& set, Eigen::Index row, const std::vector<double>& features, int gesture, double negative) {
  set.inputs(row, 0) = 1.0;
  const Eigen::Index width = set.inputs.cols() - 1;
  const Eigen::Index available = static_cast<Eigen::Index>(features.size());
  const Eigen::Index copied = available < width ? available : width;
  for (Eigen::Index c = 0; c < copied; ++c) set.inputs(row, c + 1) = features[static_cast<size_t>(c)];
  for (Eigen::Index c = copied; c < width; ++c) set.inputs(row, c + 1) = 0.0;
  set.targets.row(row).setConstant(negative);
  set.targets(row, gesture) = 1.0;
  return available == width;
}

void resizeSet(SampleSet& set, size_t rows, int features, int gestures) {
  set.count = static_cast<int32_t>(rows);
  set.inputs.resize(static_cast<Eigen::Index>(rows), features + 1);
  set.targets.resize(static_cast<Eigen::Index>(rows), gestures);
}

bool setFits(const SampleSet& set, int features, int gestures) {
  return set.count > 0 && set.inputs.rows() == set.count && set.inputs.cols() == features + 1 &&
         set.targets.rows() == set.count && set.targets.cols() == gestures;
}

}  // namespace

uint32_t uniformMersenne(uint32_t upper) {
  const uint64_t range = static_cast<uint64_t>(upper) + 1;
  const uint64_t scaling = (uint64_t{1} << 32) / range;
  const uint64_t past = range * scaling;  // draws at or above this would favour low values
  uint64_t draw;
  do {
    draw = randomMersenne();
  } while (draw >= past);
  return static_cast<uint32_t>(draw / scaling);
}

void computeFeatureScales(GestureModel& model) {
  int samples = 0;
  double centreSum = 0.0;
  double radiusSum = 0.0;
  std::vector<Eigen::Vector3d> relative;
  for (Gesture* gesture : model.gestures) {
    for (Stroke* sample : gesture->gestureSamples) {
      const size_t count = sample->handPoints.size();
      if (count == 0) continue;
      // Older recordings may lack head records at their end; the latest head pose stands in.
      while (sample->headPoints.size() < count) sample->headPoints.push_back(sample->headLatest);
      relative.resize(count);
      Eigen::Vector3d centre = Eigen::Vector3d::Zero();
      for (size_t i = 0; i < count; ++i) {
        const StrokePoint& head = sample->headPoints[i];
        Eigen::Matrix4d frame;
        matrixFromPose(head.position, head.rotation, frame.data());
        const Vector3& p = sample->handPoints[i].position;
        const Eigen::Vector4d local = frame.inverse() * Eigen::Vector4d(p.x, p.y, p.z, 1.0);
        relative[i] = local.head<3>();
        centre += relative[i];
      }
      centre /= static_cast<double>(count);
      double radius = 0.0;
      for (size_t i = 0; i < count; ++i) radius += (relative[i] - centre).norm();
      centreSum += centre.norm();
      radiusSum += radius / static_cast<double>(count);
      ++samples;
    }
  }
  model.parameters.featureScaleA = reciprocalOfMean(centreSum, samples);
  model.parameters.featureScaleB = reciprocalOfMean(radiusSum, samples);
}

bool sampleShares(int n, int* trainingShare, int* middleShare, int* lastShare) {
  int training = 0, middle = 0;
  if (n >= 4) {
    // Single precision on purpose: the shares of existing sets must not move by a row.
    const float count = static_cast<float>(n);
    training = static_cast<int>(std::floor(count * 0.6f));
    middle = static_cast<int>(std::ceil(count * 0.2f));
  } else if (n >= 1) {
    // One training sample, and of the rest one each for the last and the middle share.
    training = 1;
    middle = n == 3 ? 1 : 0;
  }
  *trainingShare = training;
  *middleShare = middle;
  *lastShare = n >= 1 ? n - training - middle : 0;
  return n >= 1 && n <= 3;
}

void splitSamples(const std::vector<Gesture*>& gestures, const ModelParameters& parameters,
                  FeatureLists& trainingLists, FeatureLists& validationLists, FeatureLists& scoringLists,
                  bool* networkInvalid) {
  const size_t gestureCount = gestures.size();
  if (trainingLists.size() < gestureCount) trainingLists.resize(gestureCount);
  if (validationLists.size() < gestureCount) validationLists.resize(gestureCount);
  if (scoringLists.size() < gestureCount) scoringLists.resize(gestureCount);
  std::vector<Stroke*> order;
  for (size_t g = gestureCount; g-- > 0;) {
    const Gesture* gesture = gestures[g];
    // A disabled gesture keeps its output, which then only ever learns "not this one".
    if (!gesture->gestureEnabled) continue;
    const int n = static_cast<int>(gesture->gestureSamples.size());
    if (n == 0) continue;
    int trainingShare, middleShare, lastShare;
    if (sampleShares(n, &trainingShare, &middleShare, &lastShare) && networkInvalid != nullptr) {
      *networkInvalid = true;
    }
    order = gesture->gestureSamples;
    shuffleMersenne(order);
    for (int i = 0; i < trainingShare; ++i) {
      trainingLists[g].push_back(extractFeatures(*order[static_cast<size_t>(i)], parameters));
    }
    // What is held back serves both as the validation set and as the scoring set.
    for (int i = trainingShare; i < n; ++i) {
      validationLists[g].push_back(extractFeatures(*order[static_cast<size_t>(i)], parameters));
      scoringLists[g].push_back(validationLists[g].back());
    }
  }
}

bool buildTrainingData(const std::vector<Gesture*>& gestures, TrainingData& data, const ModelParameters& parameters,
                       bool* networkInvalid) {
  seedRandomIfNeeded();
  const int features = featureCount(parameters);
  const int gestureCount = static_cast<int>(gestures.size());
  const double negative = parameters.transferMode == 1 ? -1.0 : 0.0;
  bool fits = true;

  FeatureLists trainingLists, validationLists, scoringLists;
  splitSamples(gestures, parameters, trainingLists, validationLists, scoringLists, networkInvalid);

  std::vector<std::pair<const std::vector<double>*, int>> rows;
  for (int g = gestureCount - 1; g >= 0; --g) {
    const auto& list = trainingLists[static_cast<size_t>(g)];
    for (size_t i = list.size(); i-- > 0;) rows.emplace_back(&list[i], g);
  }
  // Without this the rows would come in blocks of one gesture each.
  shuffleMersenne(rows);
  resizeSet(data.training, rows.size(), features, gestureCount);
  for (size_t r = 0; r < rows.size(); ++r) {
    fits &= fillRow(data.training, static_cast<Eigen::Index>(r), *rows[r].first, rows[r].second, negative);
  }

  size_t validationRows = 0, scoringRows = 0;
  for (int g = 0; g < gestureCount; ++g) {
    validationRows += validationLists[static_cast<size_t>(g)].size();
    scoringRows += scoringLists[static_cast<size_t>(g)].size();
  }
  resizeSet(data.validation, validationRows, features, gestureCount);
  resizeSet(data.scoring, scoringRows, features, gestureCount);
  Eigen::Index validationRow = 0, scoringRow = 0;
  for (int g = gestureCount - 1; g >= 0; --g) {
    const auto& validation = validationLists[static_cast<size_t>(g)];
    for (size_t i = validation.size(); i-- > 0;) fits &= fillRow(data.validation, validationRow++, validation[i], g, negative);
    const auto& scoring = scoringLists[static_cast<size_t>(g)];
    for (size_t i = scoring.size(); i-- > 0;) fits &= fillRow(data.scoring, scoringRow++, scoring[i], g, negative);
  }

  return fits && setFits(data.training, features, gestureCount) &&
         setFits(data.validation, features, gestureCount) && setFits(data.scoring, features, gestureCount);
}

}  // namespace zando
