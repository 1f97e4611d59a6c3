// Waiting for a background job in a test, and the time limits tests check: a bounded poll, so that
// a lost callback fails the test instead of hanging the run, and limits stretched for slow runs.
#ifndef ZANDO_TESTS_WAITING_H
#define ZANDO_TESTS_WAITING_H

#include <chrono>
#include <cstdlib>
#include <thread>

namespace zando {
namespace testing_support {

// How many times slower than a native run this run goes: ZANDO_TEST_TIME_SCALE, a whole number (1
// when unset or not a positive number). An emulated run sets it (make test-arm64). Time limits a
// test checks, and training times whose outcome it checks, are multiplied by it: they then allow
// as much work as a native run has, and the test checks the same outcome.
inline int timeScale() {
  static const int scale = [] {
    const char* text = std::getenv("ZANDO_TEST_TIME_SCALE");
    const long value = text != nullptr ? std::strtol(text, nullptr, 10) : 1;
    return value >= 1 && value <= 1000 ? static_cast<int>(value) : 1;
  }();
  return scale;
}

// `seconds` of a native run, in this run's time.
inline std::chrono::seconds scaledSeconds(int seconds) { return std::chrono::seconds(seconds * timeScale()); }

// Polls `done` every 5 ms for up to `seconds` (scaled); its last answer.
template <typename Condition>
bool waitUntil(Condition done, int seconds = 20) {
  const auto end = std::chrono::steady_clock::now() + scaledSeconds(seconds);
  while (!done() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return done();
}

}  // namespace testing_support
}  // namespace zando

#endif  // ZANDO_TESTS_WAITING_H
