// Three minutes of stereo in every kind of file, and a short one. Written once, into the build folder.
#pragma once

#include <string>

namespace bench {

struct FileKind {
    const char* name; ///< as a reader knows it
    const char* extension;
    int format; ///< libsndfile's
};

extern const FileKind fileKinds[6];

constexpr int fileMinutes = 3;

/// Its path. Throws std::runtime_error where it cannot be written.
std::string fileOf(const FileKind& kind);

/// A tenth of a second, WAV; throws likewise.
std::string shortFile();

} // namespace bench
