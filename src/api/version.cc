#include "api/version.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace zando {

std::string buildVersionText(const std::string& product, const std::string& version, const std::string& date) {
  if (date.size() < 10) return product + version + "_" + date.substr(0, 3);
  const std::string month = date.substr(0, 3);
  // "Aug 31 2025" has the day at position 4; "Aug  1 2025" pads a single digit with a blank.
  const std::string day = date[4] != ' ' ? date.substr(4, date.size() - 9) : date.substr(5, date.size() - 10);
  return product + version + "_" + month + day;
}

namespace {
std::atomic<char*> versionText{nullptr};
}

const char* versionString() {
  char* text = versionText.load(std::memory_order_acquire);
  if (text != nullptr) return text;
  const std::string built = buildVersionText(ZANDO_PRODUCT_WORD, ZANDO_VERSION_TEXT, ZANDO_BUILD_DATE);
  char* fresh = static_cast<char*>(std::malloc(built.size() + 1));
  if (fresh == nullptr) return nullptr;  // tried again on the next call
  std::memcpy(fresh, built.c_str(), built.size() + 1);
  // Two first calls may race; the loser frees its copy so that every caller sees one pointer.
  char* expected = nullptr;
  if (!versionText.compare_exchange_strong(expected, fresh, std::memory_order_acq_rel)) {
    std::free(fresh);
    return expected;
  }
  return fresh;
}

}  // namespace zando
