// The demo's two-handed act, run after the single recogniser's.
#ifndef ZANDO_TOOLS_DEMO_TWO_HANDS_H
#define ZANDO_TOOLS_DEMO_TWO_HANDS_H

// Records, trains, identifies, saves and reloads a two-part combination object.
void runTwoHandedDemo(int trainingSeconds);

#endif  // ZANDO_TOOLS_DEMO_TWO_HANDS_H
