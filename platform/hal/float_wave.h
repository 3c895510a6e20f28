// Writes a WAV file of 32-bit float samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace kvxplatform::hal {

/// The file has format tag 3 for one or two channels; for more channels it has the extensible format, with
/// the usual speaker assignment up to eight channels. The length fields are 0xFFFFFFFF until finish(), and
/// stay so if a length exceeds 32 bits: readers then read to the end of the file. Equal samples make equal
/// files.
/// Errors   errno values; 0 is success. After the first error nothing more is written.
/// One call at a time.
/// [any]
class FloatWave {
public:
    /// Create the file. Returns EEXIST if the file exists. Throws std::bad_alloc. After an error or an
    /// exception no new file remains.
    int create(const std::string& path, std::uint32_t sampleRate, std::uint32_t channels);

    /// Append interleaved samples.
    int write(const float* samples, std::size_t count);

    /// Write the length fields and close the file. Throws std::bad_alloc.
    int finish();

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    int writeHeader(const std::string& header);

    std::vector<char> buffer_; ///< buffer of the file, which outlives the file
    std::unique_ptr<std::FILE, Close> file_;
    std::uint32_t sampleRate_ = 0, channels_ = 0;
    std::uint64_t samples_ = 0;
    int error_ = 0;
};

} // namespace kvxplatform::hal
