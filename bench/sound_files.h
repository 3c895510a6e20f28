// Sound files with the test signal in stereo. The first use of a file writes it into the build folder.
#pragma once

#include <string>

namespace bench {

struct FileFormat {
    const char* name; ///< the usual name of the format
    const char* extension;
    int format; ///< format constants of libsndfile
};

extern const FileFormat fileFormats[6];

constexpr int longFileMinutes = 3;

/// The path of a file of three minutes. Throws std::runtime_error if the file cannot be written.
std::string longFile(const FileFormat& format);

/// The path of a WAV file of 0.1 s. Throws std::runtime_error if the file cannot be written.
std::string shortFile();

} // namespace bench
