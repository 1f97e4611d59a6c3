#include "persistence/archive.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>

#include <zip.h>

namespace zando {

const char* const kDatabaseMember = "nn.txt";

namespace {

// Reads a whole member. The size in the archive's directory may be a lie, so memory grows only
// as decompressed bytes actually arrive, and never past the largest signed 32-bit size.
bool readMember(zip_t* archive, const char* member, std::string& content) {
  zip_stat_t stat;
  zip_stat_init(&stat);
  if (zip_stat(archive, member, 0, &stat) != 0) return false;
  if ((stat.valid & ZIP_STAT_SIZE) == 0 || stat.size == 0) return false;
  if (stat.size > static_cast<zip_uint64_t>(std::numeric_limits<int32_t>::max())) return false;
  zip_file_t* file = zip_fopen(archive, member, 0);
  if (file == nullptr) return false;
  content.clear();
  char chunk[1 << 16];
  bool ok = true;
  while (true) {
    const zip_int64_t got = zip_fread(file, chunk, sizeof(chunk));
    if (got < 0) {
      ok = false;
      break;
    }
    if (got == 0) break;
    if (content.size() + static_cast<size_t>(got) > stat.size) {
      ok = false;
      break;
    }
    content.append(chunk, static_cast<size_t>(got));
  }
  zip_fclose(file);
  return ok && !content.empty();
}

}  // namespace

namespace {

// Adds one member, deflated at level 6, and writes the archive out. False if anything failed;
// the archive handle is gone either way.
bool addMemberAndClose(zip_t* archive, const char* member, const std::string& content) {
  zip_source_t* source = zip_source_buffer(archive, content.data(), content.size(), 0);
  if (source == nullptr) {
    zip_discard(archive);
    return false;
  }
  const zip_int64_t index = zip_file_add(archive, member, source, ZIP_FL_ENC_UTF_8 | ZIP_FL_OVERWRITE);
  if (index < 0) {
    zip_source_free(source);
    zip_discard(archive);
    return false;
  }
  if (zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_DEFLATE, 6) != 0 ||
      zip_close(archive) != 0) {
    zip_discard(archive);
    return false;
  }
  return true;
}

}  // namespace

bool writeArchiveMember(const char* path, const char* member, const std::string& content) {
  int error = 0;
  zip_t* archive = zip_open(path, ZIP_CREATE | ZIP_TRUNCATE, &error);
  if (archive == nullptr) return false;
  if (!addMemberAndClose(archive, member, content)) {
    std::error_code error;
    std::filesystem::remove(filePath(path), error);
    return false;
  }
  return true;
}

bool appendArchiveMember(const char* path, const char* member, const std::string& content) {
  int error = 0;
  zip_t* archive = zip_open(path, ZIP_CREATE, &error);
  if (archive == nullptr) return false;
  return addMemberAndClose(archive, member, content);
}

std::filesystem::path filePath(const char* path) { return std::filesystem::u8path(path); }

bool removeOldFile(const char* path) {
  const std::filesystem::path file = filePath(path);
  if (!std::ifstream(file, std::ios::binary).is_open()) return true;
  std::error_code error;
  return std::filesystem::remove(file, error);
}

bool isFolder(const char* path) {
  std::error_code error;
  return std::filesystem::is_directory(filePath(path), error);
}

bool readArchiveMember(const char* path, const char* member, std::string& content) {
  int error = 0;
  zip_t* archive = zip_open(path, ZIP_RDONLY, &error);
  if (archive == nullptr) return false;
  const bool found = readMember(archive, member, content);
  zip_discard(archive);
  return found;
}

bool readArchiveMemberFromBuffer(const char* buffer, size_t size, const char* member, std::string& content) {
  if (buffer == nullptr || size < 22) return false;
  zip_error_t error;
  zip_error_init(&error);
  zip_source_t* source = zip_source_buffer_create(buffer, size, 0, &error);
  if (source == nullptr) {
    zip_error_fini(&error);
    return false;
  }
  zip_t* archive = zip_open_from_source(source, ZIP_RDONLY, &error);
  zip_error_fini(&error);
  if (archive == nullptr) {
    zip_source_free(source);
    return false;
  }
  const bool found = readMember(archive, member, content);
  zip_discard(archive);
  return found;
}

}  // namespace zando
