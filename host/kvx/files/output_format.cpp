#include "host/kvx/files/output_format.h"

#include "host/kvx/files/streams.h"
#include "host/kvx/text/failure.h"

#include <fmt/core.h>
#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <vector>

namespace kvx {

struct FormatFacts {
    const char* name; ///< name for --format
    const char* title;
    std::vector<std::string> extensions; ///< extensions of file names, the usual one first
    std::vector<std::string> bits;       ///< values of --bits, the default first; empty: samples are encoded
    int type;                            ///< type for libsndfile, with the encoding of encoded samples
    int mostChannels;
    int (*nearestRate)(int rate); ///< returns the nearest sample rate that a file can have, in Hz
    int usualRate;                ///< sample rate without a request, in Hz; 0: the rate of the input
    std::uint64_t mostBytes;      ///< size of the longest file, in bytes; 0: no limit in practice
    bool isStreamable;            ///< whether a program can read the format without the lengths in its header
};

namespace {

int nearestOf(const std::vector<int>& rates, int rate)
{
    return *std::min_element(rates.begin(), rates.end(),
                             [rate](int a, int b) { return std::abs(a - rate) < std::abs(b - rate); });
}

int anyRate(int rate) { return rate; }

// FLAC states a rate above 65535 Hz in units of 10 Hz.
int nearestFlacRate(int rate) { return rate <= 65535 ? rate : std::min(rate / 10 * 10, 655350); }

int nearestVorbisRate(int rate) { return std::min(rate, 200000); }

int nearestOpusRate(int rate) { return nearestOf({8000, 12000, 16000, 24000, 48000}, rate); }

int nearestMp3Rate(int rate)
{
    return nearestOf({8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000}, rate);
}

constexpr int mostDeviceChannels = 64;
constexpr std::uint64_t nearly4GiB = 0xFFFF0000; // leaves space for headers

const std::vector<std::string> anyBits = {"float", "32", "24", "16"};

const FormatFacts formats[] = {
    // clang-format off
    // name   title         extensions                  bits          type                                        channels            nearest rate       usual  longest     stream
    {"wav",  "WAV",        {".wav", ".wave"},           anyBits,      SF_FORMAT_WAV,                              mostDeviceChannels, anyRate,               0, nearly4GiB, true},
    {"aiff", "AIFF",       {".aiff", ".aif", ".aifc"},  anyBits,      SF_FORMAT_AIFF,                             mostDeviceChannels, anyRate,               0, nearly4GiB, false},
    {"caf",  "CAF",        {".caf"},                    anyBits,      SF_FORMAT_CAF,                              mostDeviceChannels, anyRate,               0, 0,          false},
    {"flac", "FLAC",       {".flac"},                   {"24", "16"}, SF_FORMAT_FLAC,                             8,                  nearestFlacRate,       0, 0,          true},
    {"ogg",  "Ogg Vorbis", {".ogg", ".oga"},            {},           SF_FORMAT_OGG | SF_FORMAT_VORBIS,           8,                  nearestVorbisRate,     0, 0,          true},
    {"opus", "Opus",       {".opus"},                   {},           SF_FORMAT_OGG | SF_FORMAT_OPUS,             8,                  nearestOpusRate,   48000, 0,          true},
    {"mp3",  "MP3",        {".mp3"},                    {},           SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III,  2,                  nearestMp3Rate,        0, 0,          true},
    // clang-format on
};

const struct {
    const char* name;
    int bits;
    int encoding; ///< encoding for libsndfile
    const char* title;
} bitFacts[] = {
    {"16", 16, SF_FORMAT_PCM_16, "16 bits"},
    {"24", 24, SF_FORMAT_PCM_24, "24 bits"},
    {"32", 32, SF_FORMAT_PCM_32, "32 bits"},
    {"float", 0, SF_FORMAT_FLOAT, "32-bit float"},
};

/// The order of Vorbis and Opus, for more than two channels.
const int vorbisOrders[][8] = {
    {0, 2, 1},          {0, 1, 2, 3},          {0, 2, 1, 3, 4},
    {0, 2, 1, 4, 5, 3}, {0, 2, 1, 4, 5, 6, 3}, {0, 2, 1, 6, 7, 4, 5, 3},
};

/// List names for a message: "a, b or c".
std::string alternatives(const std::vector<std::string>& names)
{
    std::string list;
    for (std::size_t i = 0; i < names.size(); ++i)
        list += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return list;
}

/// The row of a table with this name; the name must be in the table.
template <class Table>
const auto& rowNamed(const Table& table, const std::string& name)
{
    return *std::find_if(std::begin(table), std::end(table),
                         [&name](const auto& row) { return name == row.name; });
}

template <class Table>
std::vector<std::string> namesOf(const Table& table)
{
    std::vector<std::string> names;
    for (const auto& row : table) names.emplace_back(row.name);
    return names;
}

std::string extensionOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char character) { return std::tolower(character); });
    return extension;
}

/// The format of files with this extension in lower case; null if there is none.
const FormatFacts* formatWithExtension(const std::string& extension)
{
    for (const FormatFacts& each : formats)
        if (std::count(each.extensions.begin(), each.extensions.end(), extension)) return &each;
    return nullptr;
}

const FormatFacts& formatOfPath(const std::string& path)
{
    const std::string extension = extensionOf(path);
    if (extension.empty() || isOutputStream(path)) return formats[0];
    if (const FormatFacts* const facts = formatWithExtension(extension)) return *facts;
    std::vector<std::string> usual;
    for (const FormatFacts& each : formats) usual.push_back(each.extensions.front());
    throw WrongUsage(fmt::format(
        "{}: kvx writes no {} files; name a file that ends in {}, or choose the format with --format", path,
        extension, alternatives(usual)));
}

const auto& factsOfBits(int bits)
{
    return *std::find_if(std::begin(bitFacts), std::end(bitFacts),
                         [bits](const auto& each) { return bits == each.bits; });
}

int bitsOf(const FormatFacts& format, const std::string& requested)
{
    if (requested.empty()) return format.bits.empty() ? 0 : rowNamed(bitFacts, format.bits.front()).bits;
    if (format.bits.empty())
        throw WrongUsage(
            fmt::format("--bits {}: {} encodes its samples without a number of bits; leave --bits out",
                        requested, format.title));
    if (!std::count(format.bits.begin(), format.bits.end(), requested))
        throw WrongUsage(fmt::format("--bits {}: {} does not hold such samples; give --bits {}", requested,
                                     format.title, alternatives(format.bits)));
    return rowNamed(bitFacts, requested).bits;
}

/// The channel map that selects the first `count` channels.
std::string firstChannels(int count)
{
    std::string map = "0";
    for (int channel = 1; channel < count; ++channel) map += fmt::format(",{}", channel);
    return map;
}

} // namespace

OutputFormat chooseFormat(const std::string& path, const FormatRequest& request)
{
    const FormatFacts& facts = request.name.empty() ? formatOfPath(path) : rowNamed(formats, request.name);
    if (isOutputStream(path) && !facts.isStreamable) {
        std::vector<std::string> streamable;
        for (const FormatFacts& each : formats)
            if (each.isStreamable) streamable.emplace_back(each.name);
        throw WrongUsage(
            fmt::format("{}: the header of {} states the length before the sound; write to a file, or "
                        "give --format {}",
                        path, facts.title, alternatives(streamable)));
    }
    return {&facts, bitsOf(facts, request.bits)};
}

void refuseOtherThanWave(const std::string& path, const std::string& argument)
{
    const FormatFacts* const facts = formatWithExtension(extensionOf(path));
    if (facts && facts->type != SF_FORMAT_WAV)
        throw WrongUsage(fmt::format("{}: the file is WAV and not {}; name a file that ends in .wav",
                                     argument, facts->title));
}

int rateOfResult(const OutputFormat& format, int fileRate)
{
    return format.facts->usualRate > 0 ? format.facts->usualRate : fileRate;
}

void checkFormat(const OutputFormat& format, const std::string& path, int rate, int channels)
{
    const FormatFacts& facts = *format.facts;
    if (channels > facts.mostChannels)
        throw Failure(
            fmt::format("{}: {} holds at most {} channels, not {}; give `--channel-map {}`, or write a "
                        ".wav file",
                        path, facts.title, facts.mostChannels, channels, firstChannels(facts.mostChannels)));
    if (const int nearest = facts.nearestRate(rate); nearest != rate)
        throw Failure(fmt::format("{}: {} cannot have {} Hz; give `--device-rate {}`, or write a .wav file",
                                  path, facts.title, rate, nearest));
}

void checkLength(const OutputFormat& format, const std::string& path, std::uint64_t frames, int channels)
{
    const std::uint64_t sampleBytes =
        format.bits > 0 ? static_cast<std::uint64_t>(format.bits) / 8 : sizeof(float);
    const std::uint64_t most = format.facts->mostBytes;
    if (most > 0 && !isOutputStream(path) &&
        frames > most / (sampleBytes * static_cast<std::uint64_t>(channels)))
        throw Failure(
            fmt::format("{} would be longer than {} file can be; give a shorter --duration, or write a "
                        ".caf or .flac file",
                        path, format.facts->type == SF_FORMAT_AIFF ? "an AIFF" : "a WAV"));
}

int libraryFormat(const OutputFormat& format)
{
    const int type = isWave(format) ? SF_FORMAT_RAW | SF_ENDIAN_LITTLE : format.facts->type;
    return isExact(format) ? type | factsOfBits(format.bits).encoding : type;
}

bool isWave(const OutputFormat& format) { return format.facts->type == SF_FORMAT_WAV; }

const int* channelOrder(const OutputFormat& format, int channels)
{
    const bool isOgg = (format.facts->type & SF_FORMAT_TYPEMASK) == SF_FORMAT_OGG;
    return isOgg && channels > 2 ? vorbisOrders[channels - 3] : nullptr;
}

bool isExact(const OutputFormat& format) { return !format.facts->bits.empty(); }

std::string formatName(const OutputFormat& format)
{
    const FormatFacts& facts = *format.facts;
    return facts.bits.empty() ? facts.title
                              : fmt::format("{}, {}", facts.title, factsOfBits(format.bits).title);
}

std::vector<std::string> formatNames() { return namesOf(formats); }

std::vector<std::string> bitNames() { return namesOf(bitFacts); }

} // namespace kvx
