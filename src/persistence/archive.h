// The ZIP container of a gesture database: one member holding the text.
#ifndef ZANDO_PERSISTENCE_ARCHIVE_H
#define ZANDO_PERSISTENCE_ARCHIVE_H

#include <filesystem>
#include <streambuf>
#include <string>

namespace zando {

// Name of the member that holds the database text.
extern const char* const kDatabaseMember;

// The member that switches the enhanced recognition mode on, present only when it is on, and its
// text; whether a member's text says on.
extern const char* const kEnhancedMember;
extern const char* const kEnhancedContent;
bool enhancedMemberSaysOn(const std::string& content);

// The member that keeps a detection sensitivity other than the default, its text for a value,
// and the value a member's text gives (the default for a text that is not one).
extern const char* const kDetectionMember;
constexpr double kDefaultDetectionSensitivity = 0.5;
std::string detectionMemberText(double sensitivity);
double detectionSensitivityFrom(const std::string& content);

// Creates a new archive at path holding one member, deflated at level 6. False if the archive
// could not be written; a partly written file is removed again.
bool writeArchiveMember(const char* path, const char* member, const std::string& content);

// Adds a member to the archive at path in place, creating the archive if there is none; members
// already there stay. False if it could not be written; the archive is then as it was.
bool appendArchiveMember(const char* path, const char* member, const std::string& content);

// A path as the host gives it, UTF-8 text, in the form the file system takes. (Windows' narrow
// file functions would read the text in the system's code page; libzip takes UTF-8 there.)
std::filesystem::path filePath(const char* path);

// Removes the file at path if one opens for reading there. False if such a file stays.
bool removeOldFile(const char* path);

// Whether path names a folder. A save treats one as a file that cannot be removed: a folder may
// open for reading like a file, and removing it in place of the file would take an empty one away.
bool isFolder(const char* path);

// Extracts a member of the archive at path. False if path is no archive, lacks the member, or
// the member is empty or too large for a signed 32-bit size.
bool readArchiveMember(const char* path, const char* member, std::string& content);

// The same for an archive in memory. Buffers under 22 bytes are never taken for an archive.
bool readArchiveMemberFromBuffer(const char* buffer, size_t size, const char* member, std::string& content);

// An input stream buffer over memory that the caller keeps alive: parsing reads the text in
// place instead of copying it once more into a string stream.
class MemoryInputBuffer : public std::streambuf {
 public:
  MemoryInputBuffer(const char* data, size_t size) {
    char* begin = const_cast<char*>(data);
    setg(begin, begin, begin + size);
  }
};

// An output stream buffer that appends to a string, and reports its length as the write position.
class StringOutputBuffer : public std::streambuf {
 public:
  explicit StringOutputBuffer(std::string& target) : target_(target) {}

 protected:
  int_type overflow(int_type c) override {
    if (!traits_type::eq_int_type(c, traits_type::eof())) target_.push_back(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char* s, std::streamsize n) override {
    target_.append(s, static_cast<size_t>(n));
    return n;
  }
  pos_type seekoff(off_type off, std::ios_base::seekdir dir, std::ios_base::openmode which) override {
    if (off == 0 && dir == std::ios_base::cur && (which & std::ios_base::out)) {
      return pos_type(static_cast<off_type>(target_.size()));
    }
    return pos_type(off_type(-1));
  }

 private:
  std::string& target_;
};

}  // namespace zando

#endif  // ZANDO_PERSISTENCE_ARCHIVE_H
