// Waiting for a background job in a test: a bounded poll, so that a lost callback fails the test
// instead of hanging the run.
#ifndef ZANDO_TESTS_WAITING_H
#define ZANDO_TESTS_WAITING_H

#include <chrono>
#include <thread>

namespace zando {
namespace testing_support {

// Polls `done` every 5 ms for up to `seconds`; its last answer.
template <typename Condition>
bool waitUntil(Condition done, int seconds = 20) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (!done() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return done();
}

}  // namespace testing_support
}  // namespace zando

#endif  // ZANDO_TESTS_WAITING_H
