// What the application calls training: a local search with restarts over weight decay, network
// shape and feature settings, training one candidate network after the other and keeping the
// best, until the time limit, a stop request or a perfect score.
#ifndef ZANDO_MODEL_TRAINING_SEARCH_H
#define ZANDO_MODEL_TRAINING_SEARCH_H

#include "model/network_training.h"

namespace zando {

// Training parameter ids: the settings an application can pin through the parameter map.
enum TrainingParameterId : int {
  TrainingParameter_Lambda = 0,
  TrainingParameter_HiddenNodes = 1,
  TrainingParameter_HiddenLayers = 2,
  TrainingParameter_WaypointCount = 3,
  TrainingParameter_WaypointFeatureMode = 4,
  TrainingParameter_FeatureFlagC = 5,
  TrainingParameter_FeatureSelector = 6,
  TrainingParameter_FeatureFlagA = 7,
  TrainingParameter_FeatureFlagB = 8,
  TrainingParameter_TransferMode = 9,
  TrainingParameter_TransferSlope = 10,
};

// The body of a training thread, from the first step to the model's final update. The host's
// training state must be TrainingState_Running (or a stop request) on entry; on return it is
// TrainingState_Finished and the finish callback has been called exactly once with the model's
// final recognitionScore. The results land in host.model(): the winner's parameters, figures,
// weights, one-row layer buffers and gesture statistics; 1.0 and no network for a set without
// gestures; 0.0 and no network when no training data can be built or the run fails for want of
// memory. Throws only what the finish callback throws.
void runTraining(TrainingHost& host);

}  // namespace zando

#endif  // ZANDO_MODEL_TRAINING_SEARCH_H
