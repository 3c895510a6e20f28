#include "host/kvx/play/player_options.h"

#include "host/kvx/devices/shared_options.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/number_text.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>

namespace kvx {
namespace {

constexpr const char* curveList = "list";

CLI::Validator within(const Range& range) { return inRange(range.low, range.high); }

Loop readLoop(const std::string& text)
{
    const auto colon = text.find(':');
    const auto in = readReal(std::string_view(text).substr(0, colon));
    const auto out = colon == text.npos ? std::nullopt : readReal(std::string_view(text).substr(colon + 1));
    if (!in || !out)
        throw CLI::ValidationError("--loop", text + " is not IN:OUT, two times in seconds, as in 1.5:4");
    if (*in < 0 || !(*in < *out))
        throw CLI::ValidationError("--loop", text + ": IN is 0 or more, and OUT behind it");
    return {*in, *out};
}

std::vector<int> readChannelMap(const std::string& text)
{
    std::vector<int> channels;
    for (double number : readReals(text).value_or(std::vector<double>{0.5})) {
        if (number != std::floor(number) || number < -1 || number >= 1024)
            throw CLI::ValidationError(
                "--channel-map", text + " is not a list of channels, as in 1,0: each counts from 0, -1 is "
                                        "silence");
        channels.push_back(int(number));
    }
    return channels;
}

void takeGains(PlayerOptions& options, const std::string& text)
{
    options.isCurveListWanted = text == curveList;
    if (options.isCurveListWanted) return;
    try {
        options.gains = readGains(text);
    } catch (const Failure& failure) {
        throw CLI::ValidationError("--eq", failure.what());
    }
}

} // namespace

std::vector<CLI::Option*> addPlayerOptions(CLI::App& command, PlayerOptions& options)
{
    const auto number = [&command](const char* name, std::optional<double>& place, const char* help,
                                   const char* type) {
        return command.add_option(name, place, help)->type_name(type);
    };
    const auto text = [&command](const char* name, std::function<void(const std::string&)> take,
                                 const char* help, const char* type) {
        return command.add_option_function<std::string>(name, std::move(take), help)->type_name(type);
    };
    std::vector<CLI::Option*> all = {
        number("--rate", options.rate,
               "Speed, rounded to hundredths: 2 is twice as fast [1]; 0.04 to 32, with varispeed 0.25 to 4",
               "FACTOR"),
        number("--pitch", options.pitch, "Higher or lower, in cents; an octave is 1200 [0]", "CENTS")
            ->check(within(pitchRange)),
        number("--volume", options.volume, "0 is silence, 1 leaves every sample as it is [1]", "FACTOR")
            ->check(within(volumeRange)),
        number("--pan", options.pan, "Of mono and stereo: -1 left only, 1 right only [0]", "SIDE")
            ->check(within(panRange)),
        text(
            "--eq", [&options](const std::string& value) { takeGains(options, value); },
            "31 gains from -20 to 20 dB with commas between, or the name of a curve; `--eq list` shows them",
            "GAINS"),
        text(
            "--loop", [&options](const std::string& value) { options.loop = readLoop(value); },
            "Begin at IN, and again at each OUT; in seconds", "IN:OUT"),
        number("--start", options.start, "Begin there, in seconds of the file", "SECONDS")
            ->check(inRange(0, 1e9)),
        text(
            "--channel-map",
            [&options](const std::string& value) { options.channelMap = readChannelMap(value); },
            "Which channel each of the device's plays: 1,0 swaps sides; they count from 0, -1 is silence",
            "LIST"),
        text(
            "--unit",
            [&options](const std::string& value) {
                options.unit = value == "varispeed" ? RateUnit::varispeed : RateUnit::timePitch;
            },
            "What changes speed: time-pitch keeps the pitch, varispeed changes both as a tape does "
            "[time-pitch]",
            "UNIT")
            ->check(CLI::IsMember({"time-pitch", "varispeed"})),
        command.add_flag("--background", options.isInBackground,
                         "Load in a thread of the library's while this program goes on"),
    };
    return all;
}

int showNamedCurves()
{
    std::fputs(printNamedCurves().c_str(), stdout);
    return 0;
}

void checkTogether(const PlayerOptions& options)
{
    const Range range = rateRange(options.unit);
    if (options.rate && !range.holds(*options.rate))
        throw CLI::ValidationError(
            "--rate", fmt::format("{} is not a number from {} to {}", *options.rate, range.low, range.high));
    if (options.unit == RateUnit::varispeed && options.rate && options.pitch)
        throw CLI::ValidationError("--pitch",
                                   "with --unit varispeed it is another word for --rate; give one of them");
    if (!options.start || !options.loop) return;
    if (*options.start < options.loop->in || *options.start >= options.loop->out)
        throw CLI::ValidationError("--start",
                                   fmt::format("{} is not in the loop, which goes from {} to {}",
                                               *options.start, options.loop->in, options.loop->out));
}

void checkAgainstFile(const PlayerOptions& options, const std::string& path, double duration, int channels,
                      int deviceChannels)
{
    if (options.start && *options.start >= duration)
        throw Failure(
            fmt::format("--start {} is not in front of the end of {}; give a time before {:.3f} seconds",
                        *options.start, path, duration));
    if (options.loop && options.loop->out > duration)
        throw Failure(fmt::format("--loop ends at {}, behind the end of {}; give a time up to {:.3f} seconds",
                                  options.loop->out, path, duration));
    if (options.pan && *options.pan != 0 && channels != 2)
        throw Failure(
            fmt::format("--pan is for two channels and {} plays in {}; leave it out", path, channels));
    if (!options.channelMap) return;
    if (options.channelMap->size() > std::size_t(deviceChannels))
        throw Failure(fmt::format("--channel-map names {} channels and the device has {}; name no more",
                                  options.channelMap->size(), deviceChannels));
    for (int channel : *options.channelMap)
        if (channel >= channels)
            throw Failure(
                fmt::format("--channel-map asks for channel {} of {}; name channels from 0 to {}, or -1",
                            channel, path, channels - 1));
}

void applyBeforeLoad(const PlayerOptions& options, FilePlayer& player)
{
    player.chooseRateUnit(options.unit);
}

void applyAfterLoad(const PlayerOptions& options, FilePlayer& player)
{
    if (options.rate) player.setRate(*options.rate);
    if (options.pitch) player.setPitch(*options.pitch);
    if (options.volume) player.setVolume(*options.volume);
    if (options.pan) player.setPan(*options.pan);
    if (options.gains) player.setGains(*options.gains);
    if (options.channelMap) player.setChannelMap(*options.channelMap);
    if (options.loop) {
        player.setLoopIn(options.loop->in);
        player.setLoopOut(options.loop->out);
        player.setLooping(true);
    }
    // The class jumps forward to the loop only behind the first slice: what is in front would be heard.
    if (options.start)
        player.seek(*options.start);
    else if (options.loop)
        player.seek(options.loop->in);
}

} // namespace kvx
