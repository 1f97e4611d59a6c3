// The gesture database: the versioned text form of one GestureModel (settings, network weights,
// gestures with their samples and statistics, metadata blocks), on standard character streams.
// Files and archives are handled one level up.
#ifndef ZANDO_PERSISTENCE_DATABASE_FORMAT_H
#define ZANDO_PERSISTENCE_DATABASE_FORMAT_H

#include <istream>
#include <ostream>
#include <string>

#include "model/gesture_model.h"
#include "zando/zando.h"

namespace zando {

// The version the writer emits; the reader takes every version up to it, and reads higher ones
// as this one.
constexpr int kDatabaseVersion = 18;

// Writes `model` in the current version, with the owner's continuous-identification period and
// smoothing (1000 and 3 when owner is null). Always returns 0: the caller inspects the stream's
// state. Leaves the stream scientific with precision 9. Reports progress through saveProgress.
int writeGestureDatabase(GestureModel& model, std::ostream& stream, IGestureRecognition* owner);

// Reads a database of any version into `model` in place, creating metadata objects with
// `metadataCreator` (may be null when the text holds no metadata block). 0 on success, -4 for any
// damage; on failure the model keeps what was read so far. The owner's period and smoothing are
// set as they are read (owner may be null). Reports progress through loadProgress.
int readGestureDatabase(GestureModel& model, std::istream& stream,
                        IGestureRecognition::MetadataCreatorFunction metadataCreator, IGestureRecognition* owner);

// Strips blanks, form feeds, line ends and tabs from both ends, as the readers of the text
// formats trim their lines.
void trimLine(std::string& text);

}  // namespace zando

#endif  // ZANDO_PERSISTENCE_DATABASE_FORMAT_H
