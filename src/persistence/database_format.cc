#include "persistence/database_format.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "features/model_parameters.h"
#include "model/model_statistics.h"
#include "spatial/float_text.h"

namespace zando {

namespace {

constexpr int kEnd = std::char_traits<char>::eof();
constexpr unsigned kMaxLayers = 5;
constexpr unsigned kMaxGestures = 10000;
constexpr unsigned kMaxSamples = 10000;
// No training produces feature vectors anywhere near this wide. A wider one can only come from a
// damaged waypoint count, and would otherwise be allocated (layer buffer, recomputed statistics)
// without any text in the file to back it.
constexpr int64_t kMaxFeatureCount = int64_t{1} << 20;
// Old files carry no statistics; recomputing them allocates gestures x features numbers.
constexpr int64_t kMaxRecomputedStatistics = int64_t{1} << 22;

constexpr std::string_view kUseInitial = "UpdateHeadPositionPolicy_UseInitial";
constexpr std::string_view kUseLatest = "UpdateHeadPositionPolicy_UseLatest";
constexpr std::string_view kMetadataMarker = "METADATA:";
constexpr std::string_view kNoMetadataMarker = "NO METADATA";
constexpr std::string_view kEnabledMarker = "GESTURE_ENABLED";
constexpr std::string_view kDisabledMarker = "GESTURE_DISABLED";

// Digits of single numbers and poses, and of weights and statistics rows.
constexpr int kShortDigits = 9;
constexpr int kLongDigits = 15;

void report(ProgressHook hook, void* context, int percent) {
  if (hook != nullptr) hook(percent, context);
}

// D of the format, wide enough that no waypoint count can overflow it.
int64_t featureDimension(const ModelParameters& p) {
  return headerFeatureBase(p.headerFeatureMode) +
         static_cast<int64_t>(p.waypointCount) * waypointFeatureWidth(p.waypointFeatureMode);
}

// ---------------------------------------------------------------------------------------------
// Writing

// Gathers one line of text and hands it to the stream in one piece. Numbers are formatted here
// rather than by the stream: the shortest path to printf's "%.9e" / "%.15e" text, and so to the
// text that a stream set to scientific notation writes, "inf" and "nan" included.
class LineWriter {
 public:
  explicit LineWriter(std::ostream& stream) : stream_(stream) {}

  void text(std::string_view text) { line_.append(text); }
  void character(char c) { line_.push_back(c); }
  void integer(int64_t value) {
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    line_.append(buffer, result.ptr);
  }
  void real(double value, int digits) {
    char buffer[48];
    line_.append(buffer, writeScientific(buffer, buffer + sizeof(buffer), value, digits));
  }
  void pose(const StrokePoint& point) {
    const double values[7] = {point.position.x, point.position.y, point.position.z, point.rotation.x,
                              point.rotation.y, point.rotation.z, point.rotation.w};
    for (int k = 0; k < 7; ++k) {
      if (k > 0) character(' ');
      real(values[k], kShortDigits);
    }
  }
  // Sends what was gathered; the line goes on (used between the rows of a matrix).
  void send() {
    stream_.write(line_.data(), static_cast<std::streamsize>(line_.size()));
    line_.clear();
  }
  // A line end is a line feed followed by a flush, so that a reader of a file being written
  // never sees half a line.
  void endLine() {
    send();
    stream_.put('\n');
    stream_.flush();
  }

 private:
  std::ostream& stream_;
  std::string line_;
};

// Rows by line feeds, columns by one blank, nothing around them; an empty matrix writes nothing.
void writeMatrix(LineWriter& out, const Matrix& matrix) {
  if (matrix.size() == 0) return;
  for (Eigen::Index r = 0; r < matrix.rows(); ++r) {
    if (r > 0) {
      out.character('\n');
      out.send();
    }
    for (Eigen::Index c = 0; c < matrix.cols(); ++c) {
      if (c > 0) out.character(' ');
      out.real(matrix(r, c), kLongDigits);
    }
  }
}

// A mean or deviation row. A missing or misfit row is written as zeros, each followed by a blank,
// so that the file stays readable.
void writeStatisticsRow(LineWriter& out, const std::vector<std::vector<double>>& rows, size_t index,
                        int64_t featureCount) {
  if (index < rows.size() && static_cast<int64_t>(rows[index].size()) == featureCount) {
    const std::vector<double>& row = rows[index];
    for (size_t k = 0; k < row.size(); ++k) {
      if (k > 0) out.character(' ');
      out.real(row[k], kLongDigits);
    }
  } else {
    for (int64_t k = 0; k < featureCount; ++k) out.text("0 ");
  }
  out.endLine();
}

// The metadata block is the object's own text, with no line end behind it.
void writeMetadata(LineWriter& out, std::ostream& stream, IGestureRecognition::Metadata* metadata) {
  if (metadata == nullptr) {
    out.text(kNoMetadataMarker);
    out.endLine();
    return;
  }
  out.text(kMetadataMarker);
  out.endLine();
  metadata->writeToStream(stream);
}

// Head and hand poses are stored in pairs. A stroke whose head poses ran out repeats the last
// one; one with none at all pairs each hand pose with the head pose at its start.
void writeSample(LineWriter& out, const Stroke& stroke) {
  out.integer(stroke.sampleType);
  out.character(' ');
  out.pose(stroke.headStart);
  for (size_t i = 0; i < stroke.handPoints.size(); ++i) {
    out.character(' ');
    out.pose(stroke.handPoints[i]);
    out.character(' ');
    if (stroke.headPoints.empty()) {
      out.pose(stroke.headStart);
    } else {
      out.pose(stroke.headPoints[std::min(i, stroke.headPoints.size() - 1)]);
    }
  }
  out.endLine();
}

void writeGesture(LineWriter& out, std::ostream& stream, const GestureModel& model, size_t index,
                  int64_t featureCount) {
  const Gesture& gesture = *model.gestures[index];
  // A name is one line of the file; breaks inside it would split it.
  for (char c : gesture.gestureName) {
    if (c != '\n' && c != '\r') out.character(c);
  }
  out.endLine();
  out.text(gesture.gestureEnabled ? kEnabledMarker : kDisabledMarker);
  out.endLine();
  writeMetadata(out, stream, gesture.gestureMetadata);
  writeStatisticsRow(out, model.gestureMeans, index, featureCount);
  writeStatisticsRow(out, model.gestureDeviations, index, featureCount);
  out.integer(static_cast<int64_t>(gesture.gestureSamples.size()));
  out.endLine();
  for (const Stroke* sample : gesture.gestureSamples) writeSample(out, *sample);
}

// ---------------------------------------------------------------------------------------------
// Reading
//
// The reader behaves exactly as formatted extraction from a standard stream would: a failed or
// exhausted stream makes every later step fail and leave its target alone, a number that cannot
// be read becomes 0, and damage surfaces at the next range check, marker or matrix. The character
// work is done here, on the stream's buffer, instead of through the stream's own operators, which
// would cost a sentry and a locale look-up for every number.

using State = std::ios_base::iostate;

// The caller's stream, read through its buffer. The state bits are mirrored into the stream as
// they arise, so that a metadata block or a line read can be handed to the stream itself at any
// point; `refresh` takes the state back after such a step.
class StreamInput {
 public:
  explicit StreamInput(std::istream& stream) : stream_(stream), buffer_(stream.rdbuf()) { refresh(); }

  bool good() const { return state_ == std::ios_base::goodbit; }
  void setState(State bits) {
    state_ |= bits;
    stream_.setstate(bits);
  }
  void refresh() { state_ = stream_.rdstate(); }
  // Raw access, only valid while the state is good.
  int rawPeek() { return buffer_->sgetc(); }
  void rawBump() { buffer_->sbumpc(); }
  std::istream& stream() { return stream_; }

 private:
  std::istream& stream_;
  std::streambuf* buffer_;
  State state_ = std::ios_base::goodbit;
};

// One line of text, read as a string stream over it would be read.
class LineInput {
 public:
  LineInput(const char* begin, const char* end) : position_(begin), end_(end) {}

  bool good() const { return state_ == std::ios_base::goodbit; }
  bool atEnd() const { return (state_ & std::ios_base::eofbit) != 0; }
  void setState(State bits) { state_ |= bits; }
  int rawPeek() const { return position_ < end_ ? static_cast<unsigned char>(*position_) : kEnd; }
  void rawBump() { ++position_; }
  const char* position() const { return position_; }

 private:
  const char* position_;
  const char* end_;
  State state_ = std::ios_base::goodbit;
};

bool isSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(int c) { return c >= '0' && c <= '9'; }
bool isLineEnd(int c) { return c == '\r' || c == '\n'; }

template <class Input>
int peekChar(Input& in) {
  if (!in.good()) {
    in.setState(std::ios_base::failbit);
    return kEnd;
  }
  const int c = in.rawPeek();
  if (c == kEnd) in.setState(std::ios_base::eofbit);
  return c;
}

template <class Input>
int getChar(Input& in) {
  if (!in.good()) {
    in.setState(std::ios_base::failbit);
    return kEnd;
  }
  const int c = in.rawPeek();
  if (c == kEnd) {
    in.setState(std::ios_base::eofbit | std::ios_base::failbit);
    return kEnd;
  }
  in.rawBump();
  return c;
}

// The guard of a formatted extraction: white space is skipped, and a stream that is not good or
// runs out first fails.
template <class Input>
bool beginExtraction(Input& in) {
  if (!in.good()) {
    in.setState(std::ios_base::failbit);
    return false;
  }
  for (;;) {
    const int c = in.rawPeek();
    if (c == kEnd) {
      in.setState(std::ios_base::eofbit | std::ios_base::failbit);
      return false;
    }
    if (!isSpace(c)) return true;
    in.rawBump();
  }
}

// Sign and decimal digits of an integer; the magnitude saturates far above any int.
template <class Input>
bool scanInteger(Input& in, bool& negative, uint64_t& magnitude) {
  constexpr uint64_t kSaturation = uint64_t{1} << 40;
  negative = false;
  magnitude = 0;
  bool digits = false;
  int c = in.rawPeek();
  if (c == '-' || c == '+') {
    negative = c == '-';
    in.rawBump();
  }
  for (;;) {
    c = in.rawPeek();
    if (c == kEnd) {
      in.setState(std::ios_base::eofbit);
      break;
    }
    if (!isDigit(c)) break;
    digits = true;
    if (magnitude < kSaturation) magnitude = magnitude * 10 + static_cast<uint64_t>(c - '0');
    in.rawBump();
  }
  return digits;
}

// `stream >> int`: no digits give 0, a value out of range the nearest limit; both fail the stream.
template <class Input>
void extractInt(Input& in, int& value) {
  if (!beginExtraction(in)) return;
  bool negative = false;
  uint64_t magnitude = 0;
  if (!scanInteger(in, negative, magnitude)) {
    value = 0;
    in.setState(std::ios_base::failbit);
  } else if (negative && magnitude > uint64_t{1} + INT_MAX) {
    value = INT_MIN;
    in.setState(std::ios_base::failbit);
  } else if (!negative && magnitude > static_cast<uint64_t>(INT_MAX)) {
    value = INT_MAX;
    in.setState(std::ios_base::failbit);
  } else {
    value = negative ? static_cast<int>(-static_cast<int64_t>(magnitude)) : static_cast<int>(magnitude);
  }
}

// `stream >> unsigned`: a minus sign wraps around, as the stream's own conversion does.
template <class Input>
void extractUnsigned(Input& in, unsigned& value) {
  if (!beginExtraction(in)) return;
  bool negative = false;
  uint64_t magnitude = 0;
  if (!scanInteger(in, negative, magnitude)) {
    value = 0;
    in.setState(std::ios_base::failbit);
  } else if (magnitude > UINT_MAX) {
    value = UINT_MAX;
    in.setState(std::ios_base::failbit);
  } else {
    value = negative ? 0u - static_cast<unsigned>(magnitude) : static_cast<unsigned>(magnitude);
  }
}

// The characters that a stream takes for a floating-point number: a sign, digits with one
// decimal point, and an exponent once a digit has been seen. No "inf" or "nan", no hex.
template <class Input>
void scanFloat(Input& in, std::string& token) {
  token.clear();
  int c = in.rawPeek();
  if (c == '+' || c == '-') {
    token.push_back(static_cast<char>(c));
    in.rawBump();
  }
  bool mantissa = false;
  bool point = false;
  bool exponent = false;
  for (;;) {
    c = in.rawPeek();
    if (c == kEnd) {
      in.setState(std::ios_base::eofbit);
      return;
    }
    if (isDigit(c)) {
      mantissa = true;
    } else if (c == '.' && !point && !exponent) {
      point = true;
    } else if ((c == 'e' || c == 'E') && !exponent && mantissa) {
      exponent = true;
      token.push_back('e');
      in.rawBump();
      c = in.rawPeek();
      if (c == '+' || c == '-') {
        token.push_back(static_cast<char>(c));
        in.rawBump();
      }
      continue;
    } else {
      return;
    }
    token.push_back(static_cast<char>(c));
    in.rawBump();
  }
}

// Whether a decimal number that does not fit a double is too large rather than too small.
bool exceedsRange(const char* begin, const char* end) {
  int64_t integerDigits = 0;
  int64_t index = 0;
  int64_t firstSignificant = -1;
  bool point = false;
  const char* p = begin;
  for (; p < end && *p != 'e'; ++p) {
    if (*p == '.') {
      point = true;
      continue;
    }
    if (!point) ++integerDigits;
    if (*p != '0' && firstSignificant < 0) firstSignificant = index;
    ++index;
  }
  if (firstSignificant < 0) return false;
  int64_t exponent = 0;
  if (p < end) {
    ++p;
    bool negative = false;
    if (p < end && (*p == '+' || *p == '-')) negative = *p++ == '-';
    for (; p < end; ++p) {
      if (exponent < (int64_t{1} << 40)) exponent = exponent * 10 + (*p - '0');
    }
    if (negative) exponent = -exponent;
  }
  return exponent + integerDigits - firstSignificant > 0;
}

// The stream's conversion of the scanned characters: a token that is not a whole number gives 0,
// one beyond the range of double the largest finite value of its sign; both are failures.
// Values too small for a double come out as zero without failing.
bool convertFloat(const std::string& token, double& value) {
  const char* begin = token.data();
  const char* end = begin + token.size();
  bool negative = false;
  if (begin < end && (*begin == '+' || *begin == '-')) negative = *begin++ == '-';
  double magnitude = 0.0;
  const auto result = readFloat(begin, end, magnitude);
  if (begin == end || result.ptr != end || (result.ec != std::errc() && result.ec != std::errc::result_out_of_range)) {
    value = 0.0;
    return false;
  }
  if (result.ec == std::errc::result_out_of_range) {
    if (exceedsRange(begin, end)) {
      value = negative ? -std::numeric_limits<double>::max() : std::numeric_limits<double>::max();
      return false;
    }
    magnitude = 0.0;
  }
  value = negative ? -magnitude : magnitude;
  return true;
}

// `stream >> double`.
template <class Input>
void extractDouble(Input& in, double& value, std::string& token) {
  if (!beginExtraction(in)) return;
  scanFloat(in, token);
  if (!convertFloat(token, value)) in.setState(std::ios_base::failbit);
}

template <class Input>
void skipBlanks(Input& in) {
  while (peekChar(in) == ' ') in.rawBump();
}

// One number of a matrix row or a pose. Beside what a stream reads, it takes the text that a
// stream writes for infinities and NaNs: a word starting with "i" or "I" is an infinity, any
// other word a NaN.
template <class Input>
double readNumber(Input& in, std::string& token) {
  skipBlanks(in);
  int c = peekChar(in);
  if (isLineEnd(c) || c == kEnd) return 0.0;
  bool negative = false;
  if (c == '-') {
    in.rawBump();
    negative = true;
    c = peekChar(in);
  }
  if (isDigit(c)) {
    double value = 0.0;
    extractDouble(in, value, token);
    return negative ? -value : value;
  }
  const int first = getChar(in);
  for (;;) {
    const int next = peekChar(in);
    if (next == ' ' || isLineEnd(next) || next == kEnd) break;
    in.rawBump();
  }
  if (first == 'i' || first == 'I') {
    return negative ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
  }
  return std::numeric_limits<double>::quiet_NaN();
}

bool isTrimmed(char c) { return c == ' ' || c == '\f' || c == '\n' || c == '\r' || c == '\t' || c == '\v'; }

StrokePoint pointFromPose(const double pose[7]) {
  return StrokePoint(Vector3(pose[0], pose[1], pose[2]), Quaternion(pose[3], pose[4], pose[5], pose[6]));
}

using RowMajorMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

class DatabaseReader {
 public:
  DatabaseReader(GestureModel& model, std::istream& stream, IGestureRecognition::MetadataCreatorFunction creator,
                 IGestureRecognition* owner)
      : model_(model), in_(stream), creator_(creator), owner_(owner) {}

  bool read() {
    report(1);
    if (!readSettings()) return false;
    report(10);
    if (!readLayers()) return false;
    if (!readGestures()) return false;
    report(99);

    if (version_ >= 2) {
      // Untrimmed on purpose: "i" followed by a carriage return is not "i".
      readLine();
      model_.networkInvalid = line_ == "i";
    }
    delete model_.metadata;
    model_.metadata = nullptr;
    if (version_ >= 16 && !readModelMetadata()) return false;

    if (version_ < 2) {
      bool invalid = lastWidth_ != static_cast<int64_t>(model_.gestures.size());
      for (const Gesture* gesture : model_.gestures) {
        if (gesture->gestureSamples.size() < 4) invalid = true;
      }
      model_.networkInvalid = invalid;
    }
    // Before version 15 the stored rows came from an older statistics routine.
    if (version_ < 15) computeGestureMeans(model_);
    return true;
  }

 private:
  void report(int percent) { zando::report(model_.loadProgress, model_.loadProgressContext, percent); }

  // std::getline into a line that starts empty, as a fresh string would.
  bool readLine() {
    line_.clear();
    std::getline(in_.stream(), line_);
    in_.refresh();
    return !in_.stream().fail();
  }

  void readTrimmedLine() {
    readLine();
    trimLine(line_);
  }

  void skipLineEnds() {
    while (isLineEnd(peekChar(in_))) in_.rawBump();
  }

  // An unsigned value of the owner; without an owner the line is still consumed.
  void readOwnerValue(int* field) {
    unsigned value = field != nullptr ? static_cast<unsigned>(*field) : 0u;
    extractUnsigned(in_, value);
    skipLineEnds();
    if (field != nullptr) *field = static_cast<int>(value);
  }

  // An int that must lie in 0 .. limit when seen as unsigned.
  bool readBoundedInt(int initial, unsigned limit, int32_t& field) {
    int value = initial;
    extractInt(in_, value);
    skipLineEnds();
    if (static_cast<unsigned>(value) > limit) return false;
    field = value;
    return true;
  }

  bool readSettings() {
    skipLineEnds();
    if (peekChar(in_) == '#') {
      in_.rawBump();
      skipLineEnds();
      extractInt(in_, version_);
      skipLineEnds();
    } else {
      version_ = 1;
    }

    double score = 0.0;
    extractDouble(in_, score, token_);
    skipLineEnds();
    if (score < 0.0 || score > 1.0) return false;
    model_.recognitionScore = score;

    ModelParameters& p = model_.parameters;
    if (version_ >= 3) {
      readTrimmedLine();
      if (line_.size() != (version_ >= 14 ? 4u : 3u)) return false;
      p.rotationFrameX = line_[0] == '1' ? 1 : 0;
      p.rotationFrameY = line_[1] == '1' ? 1 : 0;
      p.rotationFrameZ = line_[2] == '1' ? 1 : 0;
      if (version_ >= 14) p.rotationOrder = line_[3] - '0';
    }

    if (version_ >= 17) {
      readTrimmedLine();
      p.updateHeadPositionPolicy = line_ == kUseInitial ? 1 : 0;
    } else {
      p.updateHeadPositionPolicy = 0;
    }

    if (version_ >= 18) {
      readOwnerValue(owner_ != nullptr ? &owner_->contdIdentificationPeriod : nullptr);
      readOwnerValue(owner_ != nullptr ? &owner_->contdIdentificationSmoothing : nullptr);
    } else if (owner_ != nullptr) {
      owner_->contdIdentificationPeriod = 1000;
      owner_->contdIdentificationSmoothing = 3;
    }

    // One number on the line stands for both scales. (strtod, as atof is defined, since the atof
    // of Windows' C runtime reads no "inf", "nan" or hexadecimal numbers.)
    readLine();
    const size_t blank = line_.find(' ');
    double scaleA = 0.0;
    double scaleB = 0.0;
    if (blank == std::string::npos) {
      scaleA = scaleB = std::strtod(line_.c_str(), nullptr);
    } else {
      scaleA = std::strtod(line_.substr(0, blank).c_str(), nullptr);
      scaleB = std::strtod(line_.c_str() + blank + 1, nullptr);
    }
    if (!(scaleA > 0.0) || !std::isfinite(scaleA) || !(scaleB > 0.0) || !std::isfinite(scaleB)) return false;
    p.featureScaleA = scaleA;
    p.featureScaleB = scaleB;

    int layers = 0;
    extractInt(in_, layers);
    skipLineEnds();
    if (static_cast<unsigned>(layers) > kMaxLayers) return false;
    layerCount_ = layers;
    model_.weights.resize(static_cast<size_t>(layers));
    model_.layerBuffers.resize(static_cast<size_t>(layers) + 1);

    if (version_ >= 2) {
      extractInt(in_, p.waypointCount);
      skipLineEnds();
    } else {
      p.waypointCount = 8;
    }
    if (version_ >= 12) {
      extractInt(in_, p.headerFeatureMode);
      skipLineEnds();
    } else {
      p.headerFeatureMode = 4;
    }
    if (version_ >= 4) {
      extractInt(in_, p.waypointFeatureMode);
      skipLineEnds();
    } else {
      p.waypointFeatureMode = 0;
    }
    if (version_ >= 7) {
      int flag = 0;
      extractInt(in_, flag);
      skipLineEnds();
      p.featureFlagC = flag != 0;
    } else {
      p.featureFlagC = true;
    }
    if (version_ >= 6) {
      if (!readBoundedInt(1, 3, p.featureSelector)) return false;
    } else {
      p.featureSelector = 1;
    }
    if (version_ >= 10) {
      if (!readBoundedInt(0, 1, p.featureFlagA)) return false;
    } else {
      p.featureFlagA = 0;
    }
    if (version_ >= 11) {
      if (!readBoundedInt(0, 1, p.featureFlagB)) return false;
    } else {
      p.featureFlagB = 0;
    }
    if (version_ >= 15) {
      if (!readBoundedInt(0, 1, p.transferMode)) return false;
      double slope = 0.0;
      extractDouble(in_, slope, token_);
      skipLineEnds();
      if (!(slope > 0.0 && slope < 1.0)) return false;
      p.transferSlope = slope;
    } else {
      p.transferMode = 0;
      p.transferSlope = 0.33333;
    }

    featureCount_ = featureDimension(p);
    return featureCount_ >= 0 && featureCount_ <= kMaxFeatureCount;
  }

  // `rows` lines with text, each holding exactly `columns` numbers; blank lines are passed over.
  // Storage grows only with numbers actually read, whatever size the file claims.
  bool readMatrix(int64_t rows, int64_t columns, std::vector<double>& values) {
    values.clear();
    for (int64_t filled = 0; filled < rows;) {
      if (!readLine()) return false;
      const char* begin = line_.data();
      const char* end = begin + line_.size();
      while (begin < end && isTrimmed(*begin)) ++begin;
      while (end > begin && isTrimmed(end[-1])) --end;
      if (begin == end) continue;
      LineInput row(begin, end);
      int64_t count = 0;
      while (!row.atEnd()) {
        const char* before = row.position();
        const double value = readNumber(row, token_);
        if (count == columns) return false;
        values.push_back(value);
        ++count;
        // A read that takes nothing (a line break inside the row, a failed number) yields zeros
        // forever after, so the row can only overflow.
        if (row.position() == before && !row.atEnd()) return false;
      }
      if (count != columns) return false;
      ++filled;
    }
    return true;
  }

  // Each layer has one row more than its input width (the biases); only the column count is
  // stored. The buffers of the forward pass are sized to match.
  bool readLayers() {
    int64_t width = featureCount_;
    for (int i = 0; i < layerCount_; ++i) {
      int columns = 0;
      extractInt(in_, columns);
      if (columns < 0) return false;
      const int64_t rows = width + 1;
      if (!readMatrix(rows, columns, values_)) return false;
      model_.weights[static_cast<size_t>(i)] = Eigen::Map<const RowMajorMatrix>(values_.data(), rows, columns);
      model_.layerBuffers[static_cast<size_t>(i)] = Matrix::Zero(1, rows);
      width = columns;
      report(10 + 10 * (i + 1) / layerCount_);
    }
    model_.layerBuffers[static_cast<size_t>(layerCount_)] = Matrix::Zero(1, width);
    lastWidth_ = width;
    return true;
  }

  bool readGestures() {
    int64_t count = 0;
    if (version_ >= 3) {
      readTrimmedLine();
      const int value = std::atoi(line_.c_str());
      if (static_cast<unsigned>(value) > kMaxGestures) return false;
      count = value;
    } else {
      count = lastWidth_;
      if (count < 0 || count > kMaxGestures) return false;
    }
    if (version_ < 15 && count * featureCount_ > kMaxRecomputedStatistics) return false;

    for (Gesture* gesture : model_.gestures) delete gesture;
    model_.gestures.clear();
    model_.gestures.reserve(static_cast<size_t>(count));
    for (int64_t i = 0; i < count; ++i) model_.gestures.push_back(new Gesture());
    if (version_ >= 5) {
      model_.gestureMeans.resize(static_cast<size_t>(count));
      model_.gestureDeviations.resize(static_cast<size_t>(count));
    }

    for (int64_t i = 0; i < count; ++i) {
      report(static_cast<int>(20 + 70 * (i + 1) / count));
      if (!readGesture(static_cast<size_t>(i))) return false;
    }
    return true;
  }

  bool readGesture(size_t index) {
    Gesture& gesture = *model_.gestures[index];
    if (readLine()) {
      trimLine(line_);
      line_.resize(std::char_traits<char>::length(line_.c_str()));
      gesture.gestureName = line_;
    } else {
      gesture.gestureName = "ERROR";
    }

    if (version_ >= 16) {
      readTrimmedLine();
      if (line_ == kEnabledMarker) {
        gesture.gestureEnabled = true;
      } else if (line_ == kDisabledMarker) {
        gesture.gestureEnabled = false;
      } else {
        return false;
      }
    }

    // A gesture's block may report failure without failing the load.
    readTrimmedLine();
    if (line_ == kMetadataMarker) {
      if (creator_ == nullptr) return false;
      IGestureRecognition::Metadata* metadata = creator_();
      if (metadata == nullptr) return false;
      gesture.gestureMetadata = metadata;
      metadata->readFromStream(in_.stream());
      in_.refresh();
    } else if (line_ != kNoMetadataMarker) {
      return false;
    }

    if (version_ >= 5) {
      if (!readMatrix(1, featureCount_, values_)) return false;
      model_.gestureMeans[index] = values_;
      if (!readMatrix(1, featureCount_, values_)) return false;
      model_.gestureDeviations[index] = values_;
    }

    readTrimmedLine();
    const int samples = std::atoi(line_.c_str());
    if (static_cast<unsigned>(samples) > kMaxSamples) return false;
    for (int s = 0; s < samples; ++s) {
      auto stroke = std::make_unique<Stroke>();
      if (!readSample(*stroke)) return false;
      gesture.gestureSamples.push_back(stroke.get());
      stroke.release();
    }
    return true;
  }

  // Seven numbers on the current line. Meeting the line's end (or the input's) first fails,
  // after taking the line breaks that follow.
  bool readPose(double pose[7]) {
    for (int k = 0; k < 7; ++k) {
      skipBlanks(in_);
      const int c = peekChar(in_);
      if (isLineEnd(c) || c == kEnd) {
        skipLineEnds();
        return false;
      }
      pose[k] = readNumber(in_, token_);
    }
    return true;
  }

  // A sample line ends at the first pose that cannot be read; a line holding no head pose at all
  // is an empty sample.
  bool readSample(Stroke& stroke) {
    if (version_ >= 9) {
      int type = 0;
      extractInt(in_, type);
      if (static_cast<unsigned>(type) > 1) return false;
      stroke.sampleType = type;
    }
    double pose[7];
    if (!readPose(pose)) return true;
    stroke.headStart = pointFromPose(pose);
    bool handNext = true;
    while (readPose(pose)) {
      if (version_ >= 13) {
        (handNext ? stroke.handPoints : stroke.headPoints).push_back(pointFromPose(pose));
        handNext = !handNext;
      } else {
        // Before per-point head poses, every point was seen from where the stroke began.
        stroke.handPoints.push_back(pointFromPose(pose));
        stroke.headPoints.push_back(stroke.headStart);
      }
    }
    return stroke.handPoints.size() == stroke.headPoints.size();
  }

  // The set's block must read back whole: a new object whose read fails is deleted.
  bool readModelMetadata() {
    readTrimmedLine();
    if (line_ == kNoMetadataMarker) return true;
    if (line_ != kMetadataMarker || creator_ == nullptr) return false;
    IGestureRecognition::Metadata* metadata = creator_();
    if (metadata == nullptr) return false;
    model_.metadata = metadata;
    const bool complete = metadata->readFromStream(in_.stream());
    in_.refresh();
    if (!complete) {
      delete metadata;
      model_.metadata = nullptr;
      return false;
    }
    return true;
  }

  GestureModel& model_;
  StreamInput in_;
  IGestureRecognition::MetadataCreatorFunction creator_;
  IGestureRecognition* owner_;
  int version_ = 0;
  int layerCount_ = 0;
  int64_t featureCount_ = 0;
  int64_t lastWidth_ = 0;
  std::string line_;
  std::string token_;
  std::vector<double> values_;
};

}  // namespace

void trimLine(std::string& text) {
  size_t end = text.size();
  while (end > 0 && isTrimmed(text[end - 1])) --end;
  size_t begin = 0;
  while (begin < end && isTrimmed(text[begin])) ++begin;
  text.erase(end);
  text.erase(0, begin);
}

int writeGestureDatabase(GestureModel& model, std::ostream& stream, IGestureRecognition* owner) {
  report(model.saveProgress, model.saveProgressContext, 1);
  stream.setf(std::ios_base::scientific, std::ios_base::floatfield);
  stream.precision(kShortDigits);
  const ModelParameters& p = model.parameters;
  const int64_t featureCount = featureDimension(p);
  LineWriter out(stream);

  out.character('#');
  out.integer(kDatabaseVersion);
  out.endLine();
  out.real(model.recognitionScore, kShortDigits);
  out.endLine();
  out.character(p.rotationFrameX != 0 ? '1' : '0');
  out.character(p.rotationFrameY != 0 ? '1' : '0');
  out.character(p.rotationFrameZ != 0 ? '1' : '0');
  out.character(static_cast<char>(static_cast<unsigned>(p.rotationOrder) + '0'));
  out.endLine();
  out.text(p.updateHeadPositionPolicy == 1 ? kUseInitial : kUseLatest);
  out.endLine();
  // Without an owner the values are those that an older file implies.
  out.integer(static_cast<unsigned>(owner != nullptr ? owner->contdIdentificationPeriod : 1000));
  out.endLine();
  out.integer(static_cast<unsigned>(owner != nullptr ? owner->contdIdentificationSmoothing : 3));
  out.endLine();
  out.real(p.featureScaleA, kShortDigits);
  out.character(' ');
  out.real(p.featureScaleB, kShortDigits);
  out.endLine();
  const size_t layers = model.weights.size();
  out.integer(static_cast<int64_t>(layers));
  out.endLine();
  const int32_t settings[] = {p.waypointCount, p.headerFeatureMode, p.waypointFeatureMode, p.featureFlagC ? 1 : 0,
                              p.featureSelector, p.featureFlagA, p.featureFlagB, p.transferMode};
  for (int32_t value : settings) {
    out.integer(value);
    out.endLine();
  }
  out.real(p.transferSlope, kShortDigits);
  out.endLine();
  report(model.saveProgress, model.saveProgressContext, 10);

  for (size_t i = 0; i < layers; ++i) {
    const Matrix& weights = model.weights[i];
    out.integer(static_cast<int64_t>(weights.cols()));
    out.endLine();
    writeMatrix(out, weights);
    out.endLine();
    report(model.saveProgress, model.saveProgressContext, static_cast<int>(10 + 10 * (i + 1) / layers));
  }

  const size_t gestures = model.gestures.size();
  out.integer(static_cast<int64_t>(gestures));
  out.endLine();
  for (size_t i = 0; i < gestures; ++i) {
    writeGesture(out, stream, model, i, featureCount);
    report(model.saveProgress, model.saveProgressContext, static_cast<int>(20 + 70 * (i + 1) / gestures));
  }

  out.text(model.networkInvalid ? "i" : "o");
  out.endLine();
  writeMetadata(out, stream, model.metadata);
  report(model.saveProgress, model.saveProgressContext, 99);
  return ReturnCode_Success;
}

int readGestureDatabase(GestureModel& model, std::istream& stream,
                        IGestureRecognition::MetadataCreatorFunction metadataCreator, IGestureRecognition* owner) {
  try {
    DatabaseReader reader(model, stream, metadataCreator, owner);
    return reader.read() ? ReturnCode_Success : ReturnCode_InvalidFile;
  } catch (...) {
    // Allocation failures and whatever a metadata object or the stream may throw.
    return ReturnCode_InvalidFile;
  }
}

}  // namespace zando
