// Sound files with the test signal in stereo. The first request writes the file into the build folder.
#pragma once

#include <string>

namespace bench {

struct FileFormat {
    const char* name; ///< name of the format, such as "FLAC"
    const char* extension;
    int format; ///< SF_FORMAT constants of libsndfile
};

extern const FileFormat fileFormats[6];

constexpr int longFileMinutes = 3;

/// The path of the file of three minutes in a format. Throws std::runtime_error if writing fails.
std::string longFile(const FileFormat& format);

/// The path of a WAV file of `seconds`. Throws std::runtime_error if writing fails.
std::string fileOfLength(int seconds);

/// The path of the WAV file of 0.1 s. Throws std::runtime_error if writing fails.
std::string shortFile();

} // namespace bench
