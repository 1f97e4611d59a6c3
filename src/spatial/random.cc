#include "spatial/random.h"

#include <atomic>
#include <ctime>
#include <mutex>
#include <random>

namespace zando {

namespace {

std::atomic<uint32_t> randomState{1};
std::atomic<bool> randomSeeded{false};
std::once_flag seedOnce;

std::mutex& mersenneMutex() {
  static std::mutex mutex;
  return mutex;
}

std::mt19937& mersenneEngine() {
  static std::mt19937 engine{std::random_device{}()};
  return engine;
}

}  // namespace

void seedRandom(uint32_t seed) {
  randomState.store(seed, std::memory_order_relaxed);
  randomSeeded.store(true, std::memory_order_release);
}

void seedRandomIfNeeded() {
  if (randomSeeded.load(std::memory_order_acquire)) return;
  std::call_once(seedOnce, [] {
    if (randomSeeded.load(std::memory_order_acquire)) return;
    const uint32_t t = static_cast<uint32_t>(std::time(nullptr));
    seedRandom(static_cast<uint32_t>(std::clock()) ^ t);
  });
}

int randomInt() {
  seedRandomIfNeeded();
  // The linear congruence of the classic C library generator, advanced atomically so that the
  // training thread and the application thread never lose or repeat a step.
  uint32_t current = randomState.load(std::memory_order_relaxed);
  uint32_t next;
  do {
    next = current * 1103515245u + 12345u;
  } while (!randomState.compare_exchange_weak(current, next, std::memory_order_relaxed));
  return static_cast<int>((next >> 16) & 0x7FFFu);
}

uint32_t randomMersenne() {
  std::lock_guard<std::mutex> lock(mersenneMutex());
  return mersenneEngine()();
}

}  // namespace zando
