// Reads what a sound file states about itself: container, codec and tags.
// All functions: [any].
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace kvx {

struct FileDetails {
    std::string
        container;     ///< "WAV (Microsoft)", in the words of libsndfile; "" if libsndfile reads no header
    std::string codec; ///< "Signed 16 bit PCM", "Vorbis"
    int bitDepth = 0;  ///< bits per sample; 0: the codec has no fixed number of bits
    std::vector<std::pair<std::string, std::string>> tags; ///< names such as "title", and texts in UTF-8
};

/// Read the details of a sound file.
/// Errors  empty details if libsndfile cannot open the file.
FileDetails readFileDetails(const std::string& path);

} // namespace kvx
