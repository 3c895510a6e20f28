// The file formats that kvx writes, and what each of them can hold.
// All functions: [main].
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kvx {

struct FormatFacts; // a row of the table of formats

/// The requests of the user for the format of a result.
struct FormatRequest {
    std::string name; ///< one of formatNames(); empty: the format of the file name
    std::string bits; ///< one of bitNames(); empty: the default of the format
};

/// The format of a result.
struct OutputFormat {
    const FormatFacts* facts = nullptr;
    int bits = 0; ///< bits of a sample that is an integer; 0: samples are 32-bit float, or are encoded
};

/// Choose the format of a result from the request and from the extension of `path`. A path without an
/// extension and a stream are WAV.
/// Errors  throws WrongUsage with the possible formats or bits.
OutputFormat chooseFormat(const std::string& path, const FormatRequest& request);

/// Check that the name of a file that is always WAV is not that of another format. `argument` is the argument
/// in the message.
/// Errors  throws WrongUsage.
void refuseOtherThanWave(const std::string& path, const std::string& argument);

/// The rate of a result for which the user requests no rate: `fileRate`, except for Opus.
/// Units  Hz.
int rateOfResult(const OutputFormat& format, int fileRate);

/// Check that the format can hold this rate (Hz) and number of channels.
/// Errors  throws Failure with the nearest possible ones.
void checkFormat(const OutputFormat& format, const std::string& path, int rate, int channels);

/// Check that the format can hold this number of frames. A stream can hold any number.
/// Errors  throws Failure.
void checkLength(const OutputFormat& format, const std::string& path, std::uint64_t frames, int channels);

/// The format for libsndfile, such as SF_FORMAT_FLAC | SF_FORMAT_PCM_24. libsndfile writes the samples of a
/// WAV file as raw data, and the header is that of waveHeader().
int libraryFormat(const OutputFormat& format);

bool isWave(const OutputFormat& format);

/// The order in which a file of this format stores channels: channel order[i] is stored as number i.
/// Returns  null if the file keeps the order left, right, centre, low frequencies, back, side.
const int* channelOrder(const OutputFormat& format, int channels);

/// Whether samples are stored without a loss, as floats or integers.
bool isExact(const OutputFormat& format);

/// Describe the format for a message: "FLAC, 24 bits", "MP3".
std::string formatName(const OutputFormat& format);

std::vector<std::string> formatNames(); ///< the names for FormatRequest::name
std::vector<std::string> bitNames();    ///< the values for FormatRequest::bits

} // namespace kvx
