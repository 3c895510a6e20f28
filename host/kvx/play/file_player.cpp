#include "host/kvx/play/file_player.h"

#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/text/failure.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

constexpr const char* outputUnit = "OutputHandle";
constexpr const char* units[] = {"ConverterHandle", "MixerHandle",     "EqualizerHandle",
                                 "TimePitchHandle", "VariSpeedHandle", outputUnit};

// Numbers of properties and parameters of units, all in the global scope.
constexpr std::uint32_t latencyProperty = 12, tailProperty = 20, renderErrorProperty = 22;
constexpr std::uint32_t varispeedRate = 0, varispeedCents = 1;

/// While an object exists, the host calls `whileLoading` each time that the library yields to other threads.
struct YieldGuard {
    host::Host& host;
    YieldGuard(host::Host& program, const std::function<void()>& whileLoading) : host(program)
    {
        host.onYield(whileLoading);
    }
    ~YieldGuard() { host.onYield({}); }
    YieldGuard(const YieldGuard&) = delete;
    YieldGuard& operator=(const YieldGuard&) = delete;
};

} // namespace

double undoSinglePrecision(double rate)
{
    const double hundredth = std::round(rate * 100.0) / 100.0;
    return static_cast<float>(hundredth) == static_cast<float>(rate) ? hundredth : rate;
}

Range rateRange(RateUnit unit) { return unit == RateUnit::varispeed ? Range{0.25, 4} : Range{0.04, 32}; }

FilePlayer::FilePlayer(host::Host& host, const CoreAudio& core, const Advice& advice)
    : host_(host), core_(core), advice_(advice), object_(host.create("AUPlayerKVX"))
{
}

FilePlayer::~FilePlayer()
{
    try {
        pause();
    } catch (const std::exception&) {
        // The error is ignored, because the destructor of the library's object also stops the player.
    }
}

Status FilePlayer::lastError() const { return static_cast<Status>(object_.get("Lasterror").integer()); }

void FilePlayer::check(const char* what) const
{
    if (const Status status = lastError(); status != 0)
        throw Failure(fmt::format("{} is refused: {}; give another one", what, formatStatus(status)));
}

void FilePlayer::write(const char* property, const host::Value& value, const char* what)
{
    object_.set(property, value);
    check(what);
}

// The class reports an error, because it has no units before the load. The error is ignored, because the load
// uses the property nevertheless.
void FilePlayer::chooseRateUnit(RateUnit unit) { object_.set("TimePitchUnit", static_cast<int>(unit)); }

RateUnit FilePlayer::rateUnit() const
{
    return object_.get("TimePitchUnit").integer() == static_cast<int>(RateUnit::varispeed)
               ? RateUnit::varispeed
               : RateUnit::timePitch;
}

void FilePlayer::loadWith(const char* method, const std::string& path, int channels)
{
    bool isLoaded = false;
    const HangGuard guard;
    try {
        isLoaded = object_.call(method, host::FolderItem::at(path), channels, channels).boolean();
    } catch (const host::HostException& error) {
        if (error.className() != "OutOfMemoryException") throw;
        throw Failure(fmt::format("{} is too long for the memory; {}", path, advice_.whenNotLoaded));
    }
    if (isLoaded) return;
    const Status status = lastError();
    throw Failure(fmt::format("{} is not loaded: {}; {}", path,
                              status == 0 ? "it cannot be read to its end" : formatStatus(status),
                              advice_.whenNotLoaded));
}

void FilePlayer::load(const std::string& path, int channels) { loadWith("LoadFile", path, channels); }

void FilePlayer::loadInBackground(const std::string& path, int channels,
                                  const std::function<void()>& whileLoading)
{
    const YieldGuard guard(host_, whileLoading);
    loadWith("LoadFileMT", path, channels);
}

std::string FilePlayer::clientFormat() const { return object_.get("ClientFormatString").text(); }
std::string FilePlayer::outputFormat() const { return object_.get("OutputFormatString").text(); }
double FilePlayer::sampleRate() const { return object_.get("SampleRate").number(); }
int FilePlayer::channels() const { return static_cast<int>(object_.get("DataNumberChannels").integer()); }
double FilePlayer::duration() const { return object_.get("TrackLength").number(); }

// The class does not report the number of loaded frames. If `frames` frames are loaded, a seek to the middle
// of the second frame moves the position to the start of that frame, because the class rounds times down.
bool FilePlayer::holdsAll(std::int64_t frames)
{
    const double oneFrame = duration() / static_cast<double>(frames);
    object_.set("CurrentTime", 1.5 * oneFrame);
    const bool isWhole = std::fabs(position() / oneFrame - 1) < 0.1 / static_cast<double>(frames);
    object_.set("CurrentTime", 0.0);
    return isWhole;
}

void FilePlayer::play()
{
    object_.call("Play");
    if (const Status status = lastError(); status != 0)
        throw Failure(
            fmt::format("the device does not start: {}; {}", formatStatus(status), advice_.whenNotStarted));
}

void FilePlayer::pause() { object_.call("Pause"); }
bool FilePlayer::isPlaying() const { return object_.get("Playing").boolean(); }

double FilePlayer::position() const { return object_.get("CurrentTime").number(); }

double FilePlayer::audiblePosition() const
{
    const double ahead = isPlaying() ? delay().latency * rate() : 0;
    const double now = position();
    // After a jump to the loop start, the end of the loop is still audible.
    const double first = isLooping() && now >= loopIn() ? loopIn() : 0;
    return std::max(first, now - ahead);
}

// The class rounds a time down to a frame, and the binary fraction may be slightly less than the exact time
// of the frame, so use the middle of the frame.
double FilePlayer::nearestFrame(double seconds) const
{
    return (std::round(seconds * sampleRate()) + 0.5) / sampleRate();
}

void FilePlayer::seek(double seconds)
{
    object_.set("CurrentTime", nearestFrame(std::clamp(seconds, 0.0, duration())));
}

// The class computes the position as a frame number of up to 32 bits, divided by the sample rate. The
// tolerance is less than one frame and more than the rounding error of this division.
bool FilePlayer::isAtEnd() const { return position() >= duration() * (1 - 1e-11); }

void FilePlayer::setDevice(ObjectID device) { write("CurrentDeviceID", device, "the device"); }

double FilePlayer::volume() const { return object_.get("OutputVolume").number(); }
void FilePlayer::setVolume(double volume) { write("OutputVolume", volume, "the volume"); }
void FilePlayer::setPan(double pan) { write("Pan", pan, "the pan"); }

double FilePlayer::rate() const
{
    if (rateUnit() == RateUnit::varispeed)
        return undoSinglePrecision(
            core_.unitParameter(object_.get("VariSpeedHandle").integer(), varispeedRate));
    return undoSinglePrecision(object_.get("TimeRate").number());
}

double FilePlayer::pitch() const
{
    if (rateUnit() == RateUnit::varispeed)
        return core_.unitParameter(object_.get("VariSpeedHandle").integer(), varispeedCents);
    return object_.get("PitchRate").number();
}

// The class rounds the rate down to hundredths, and the binary fraction of 0.29 may be slightly less than
// 0.29, so use the middle between this hundredth and the next.
void FilePlayer::setRate(double rate)
{
    write("TimeRate", (std::round(rate * 100.0) + 0.5) / 100.0, "the rate");
}

void FilePlayer::setPitch(double cents) { write("PitchRate", cents, "the pitch"); }

void FilePlayer::setGains(const Gains& gains)
{
    object_.call("updateEQ", host::Array::of(std::vector<double>(gains.begin(), gains.end())));
}

void FilePlayer::setChannelMap(const std::vector<int>& channels)
{
    const std::vector<HostInteger> values(channels.begin(), channels.end());
    object_.call("setChannelMap", host::Array::of(values));
    check("the channel map");
}

double FilePlayer::loopIn() const { return object_.get("LoopIn").number(); }
double FilePlayer::loopOut() const { return object_.get("LoopOut").number(); }
void FilePlayer::setLoopIn(double seconds) { object_.set("LoopIn", nearestFrame(seconds)); }
void FilePlayer::setLoopOut(double seconds) { object_.set("LoopOut", nearestFrame(seconds)); }
bool FilePlayer::isLooping() const { return object_.get("Looping").boolean(); }
void FilePlayer::setLooping(bool isOn) { object_.set("Looping", isOn); }

/// Read a time in seconds from a property of a unit.
/// Returns  0 if the unit does not have the property, or if the time is not positive and finite.
double FilePlayer::unitSeconds(const char* unit, std::uint32_t property) const
{
    const Answer answer = core_.readUnit(object_.get(unit).integer(), property);
    const double seconds = itemOf<double>(answer.value).value_or(0);
    return std::isfinite(seconds) && seconds > 0 ? seconds : 0;
}

Delay FilePlayer::delay() const
{
    Delay sum;
    for (const char* unit : units) {
        const bool isOutput = unit == outputUnit;
        // The output unit reports the latency of the device, and as its tail the input that it has pulled
        // ahead.
        (isOutput ? sum.device : sum.latency) += unitSeconds(unit, latencyProperty);
        (isOutput ? sum.latency : sum.tail) += unitSeconds(unit, tailProperty);
    }
    return sum;
}

Status FilePlayer::renderError() const
{
    Status first = 0;
    for (const char* unit : units) {
        const Answer answer = core_.readUnit(object_.get(unit).integer(), renderErrorProperty);
        const Status status = itemOf<Status>(answer.value).value_or(0);
        if (first == 0) first = status;
    }
    return first;
}

} // namespace kvx
