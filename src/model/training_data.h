// From recorded samples to the matrices a network trains on: the two global feature scales, the
// split of each gesture's samples into a training share and a held-back share, and the input and
// target matrices of the three sets.
#ifndef ZANDO_MODEL_TRAINING_DATA_H
#define ZANDO_MODEL_TRAINING_DATA_H

#include <cstdint>
#include <utility>
#include <vector>

#include "features/model_parameters.h"
#include "model/gesture.h"
#include "model/gesture_model.h"

namespace zando {

// One set of rows: inputs are count x (F + 1) with column 0 at 1.0; targets are count x G with
// 1.0 in the sample's gesture column and -1.0 (tanh transfer) or 0.0 (logistic) elsewhere.
struct SampleSet {
  int32_t count = 0;
  Matrix inputs;
  Matrix targets;
};

// The sets of one training. validation and scoring hold the same rows in the same order.
struct TrainingData {
  SampleSet training;
  SampleSet validation;
  SampleSet scoring;
};

// Per gesture (indexed like the gesture list), a list of feature vectors.
using FeatureLists = std::vector<std::vector<std::vector<double>>>;

// Sets featureScaleA (reciprocal of the mean distance of a stroke's centre from the head) and
// featureScaleB (reciprocal of the mean radius) of model.parameters from every sample with hand
// points, disabled gestures included; 1.0 where there is nothing to measure or the result is not
// finite. A sample with fewer head records than hand points gets copies of its latest head pose
// appended, so this changes stored samples.
void computeFeatureScales(GestureModel& model);

// How n samples of one gesture are shared: trainingShare + middleShare + lastShare == n. Returns
// true when so few samples make the network unusable for identification (1 to 3).
bool sampleShares(int n, int* trainingShare, int* middleShare, int* lastShare);

// Extracts the features of every sample of every enabled gesture, gestures from the last to the
// first, and appends about 60 percent of each gesture's samples (a fresh random choice) to its
// training list and the rest to both its validation and its scoring list. The outer lists grow
// to the gesture count if shorter. Sets *networkInvalid for any enabled gesture with 1 to 3
// samples; never clears it.
void splitSamples(const std::vector<Gesture*>& gestures, const ModelParameters& parameters,
                  FeatureLists& trainingLists, FeatureLists& validationLists, FeatureLists& scoringLists,
                  bool* networkInvalid);

// Rebuilds all three sets of `data` with a new split; training rows are shuffled across
// gestures, held-back rows are not. Returns false when there is no usable training data (no
// training rows, nothing held back, or a feature vector of the wrong length).
bool buildTrainingData(const std::vector<Gesture*>& gestures, TrainingData& data, const ModelParameters& parameters,
                       bool* networkInvalid);

// A uniform draw from 0 to upper inclusive from the process-wide Mersenne twister, by rejection
// of the draws that would favour low values.
uint32_t uniformMersenne(uint32_t upper);

// Fisher-Yates pass on the process-wide Mersenne twister: for each position i from 1 up, an index
// j from 0 to i, swapped with i unless the same.
template <typename T>
void shuffleMersenne(std::vector<T>& list) {
  for (size_t i = 1; i < list.size(); ++i) {
    const size_t j = uniformMersenne(static_cast<uint32_t>(i));
    if (j != i) std::swap(list[i], list[j]);
  }
}

}  // namespace zando

#endif  // ZANDO_MODEL_TRAINING_DATA_H
