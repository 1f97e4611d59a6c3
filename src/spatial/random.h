// Process-wide random sources.
//
// Two generators, as the trained models expect: a 15-bit generator in the manner of the C
// runtime's rand() (weights, waypoint annealing, the training search's redraws), whose constants
// elsewhere assume the range 0..32767 that the platform's own rand() does not guarantee; and one
// 32-bit Mersenne twister for all shuffles. Both are shared by every object and by the training
// threads, so both are safe to call from several threads.
#ifndef ZANDO_SPATIAL_RANDOM_H
#define ZANDO_SPATIAL_RANDOM_H

#include <cstdint>

namespace zando {

constexpr int kRandomMax = 32767;

// Seeds the 15-bit generator from clock() and the time on its first use in the process.
void seedRandomIfNeeded();
// Reseeds the 15-bit generator explicitly and marks it seeded (tests use this for repeatable runs).
void seedRandom(uint32_t seed);
// The next value from 0 to 32767 inclusive; seeds first if needed.
int randomInt();
// The next 32-bit value of the process-wide Mersenne twister, seeded once from the random device.
uint32_t randomMersenne();

}  // namespace zando

#endif  // ZANDO_SPATIAL_RANDOM_H
