// The demo's continuous act, run after the two-handed one.
#ifndef ZANDO_TOOLS_DEMO_CONTINUOUS_H
#define ZANDO_TOOLS_DEMO_CONTINUOUS_H

// Trains a set on continuous samples and identifies a marker-free stream of gestures and pauses.
void runContinuousDemo(int trainingSeconds);

#endif  // ZANDO_TOOLS_DEMO_CONTINUOUS_H
