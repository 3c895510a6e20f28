// The bytes that an encoder writes: into a file, or in order into a stream.
// All functions: [main].
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace kvx {

/// Receives the bytes of an encoder. Until start() the bytes are kept in memory, because encoders write their
/// header more than once before the first sample.
///
/// In a stream, later changes of bytes that were written are dropped: headers keep the values of start().
class EncodedOutput {
public:
    /// `isStopped` returns whether a signal has ended the command.
    /// Owner  `file` is closed by the destructor.
    EncodedOutput(int file, bool isStream, std::function<bool()> isStopped)
        : file_(file), isStream_(isStream), isStopped_(std::move(isStopped))
    {
    }
    ~EncodedOutput();
    EncodedOutput(const EncodedOutput&) = delete;
    EncodedOutput& operator=(const EncodedOutput&) = delete;

    /// The functions through which libsndfile writes; their context is this object.
    static SF_VIRTUAL_IO functions();

    /// Write `prefix`, then the bytes of the encoder up to its present position, and all later bytes
    /// directly.
    void start(const std::string& prefix);

    /// Replace the prefix by one of the same size, except in a stream, and close the file. After a prefix, an
    /// odd number of bytes is made even.
    void finish(const std::string& prefix);

    /// The first error, a value of errno; 0: no error; EINTR: a signal has ended a write. After an error
    /// nothing more is written.
    int error() const { return error_; }

private:
    std::int64_t write(const char* bytes, std::int64_t count);
    void writeAt(std::int64_t position, const char* bytes, std::int64_t count);
    void closeFile();

    int file_;
    bool isStream_;
    const std::function<bool()> isStopped_;
    bool isStarted_ = false;
    std::string header_;
    std::int64_t prefixBytes_ = 0;
    std::int64_t position_ = 0, length_ = 0; // of the encoder's bytes
    int error_ = 0;
};

} // namespace kvx
