// The demo's continuous act, run after the two-handed one.
#ifndef ZANDO_TOOLS_DEMO_CONTINUOUS_H
#define ZANDO_TOOLS_DEMO_CONTINUOUS_H

// Trains a set and detects the gestures performed in a marker-free motion of gestures, moves and
// idle stretches.
void runContinuousDemo(int trainingSeconds);

#endif  // ZANDO_TOOLS_DEMO_CONTINUOUS_H
