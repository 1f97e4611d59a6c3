// The version text, built once per process from the build constants.
#ifndef ZANDO_API_VERSION_H
#define ZANDO_API_VERSION_H

#include <string>

namespace zando {

// Product word, version, "_", month and day of a build date in the form "Mmm dd yyyy" (a
// single-digit day may be padded with a blank); the year is dropped.
std::string buildVersionText(const std::string& product, const std::string& version, const std::string& date);

// The process-wide text, allocated on first use and never freed; null if it could not be had.
const char* versionString();

}  // namespace zando

#endif  // ZANDO_API_VERSION_H
