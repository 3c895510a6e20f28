// A WAV file of 32-bit float samples while it is written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace kvxplatform::hal {

/// Up to two channels have format tag 3; more have the extensible format, with the usual speakers of up to
/// eight channels. Lengths over 32 bits are 0xFFFFFFFF, which readers take for "to the end of the file"; so
/// are all lengths until finish(). The same samples make the same bytes.
/// Errors   errno values; 0 is success. After the first error it writes nothing.
/// [any], one call at a time
class FloatWave {
public:
    /// Create the file; EEXIST if it exists. An error leaves no file.
    int create(const std::string& path, std::uint32_t sampleRate, std::uint32_t channels);

    /// Append interleaved samples.
    int write(const float* samples, std::size_t count);

    /// Write the lengths and close the file.
    int finish();

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    int writeHeader(std::uint64_t samples);

    std::unique_ptr<std::FILE, Close> file_;
    std::uint32_t sampleRate_ = 0, channels_ = 0;
    std::uint64_t samples_ = 0;
    int error_ = 0;
};

} // namespace kvxplatform::hal
