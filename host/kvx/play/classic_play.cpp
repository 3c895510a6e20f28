#include "host/kvx/play/classic_play.h"

#include "host/kvx/files/sound_file.h"
#include "host/kvx/text/codes.h"
#include "host/kvx/text/failure.h"
#include "host/soundclient/double_buffer.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace kvx {
namespace {

using soundclient::DoubleBuffer;
using soundclient::Labelling;
using soundclient::SoundOutput;

constexpr double bufferSeconds = 1;   // length of each of the two sound buffers
constexpr double stepSeconds = 0.1;   // longest time between two calls of feed(); shorter than a buffer
constexpr double delaySeconds = 0.25; // upper limit of the total delay of mixer, converter and output unit

std::unique_ptr<SoundOutput> openComponent()
try {
    return std::make_unique<SoundOutput>(componentSubType, componentManufacturer);
} catch (const soundclient::NoEntryPoint&) {
    throw Failure("the sound component is registered, and cannot be opened: the library gives it an entry "
                  "point in built programs only; leave out --development");
} catch (const soundclient::Refusal& refusal) {
    throw Failure(fmt::format("the sound component cannot be opened: {}; install the library again",
                              formatStatus(refusal.status())));
}

void checkForm(const PlaylistFile& file, const soundclient::OutputForm& form)
{
    if (form.channels != 2 || form.bits != 16)
        throw Failure(fmt::format("the sound component plays {} channels of {} bits, not 2 of 16; "
                                  "install the library again",
                                  form.channels, form.bits));
    if (file.format.sampleRate != form.rate)
        throw Failure(fmt::format("{0} has a rate of {1} Hz, and the sound component plays {2}; convert it "
                                  "with `kvx render {0} OUT.wav --device-rate {2}`",
                                  file.path, file.format.sampleRate, form.rate));
}

/// Plays one file through the double buffer.
class ClassicPlayback {
public:
    ClassicPlayback(DoubleBuffer& buffers, const PlaylistFile& file, Session& session)
        : buffers_(buffers), file_(file), session_(session)
    {
    }

    /// Play until the end, or until a key or a signal of the user ends playback.
    void run()
    {
        Transport transport;
        transport.status = [this] {
            return formatPlayStatus(
                {position(), file_.format.duration(), session_.meter().takePeak(), isPaused_});
        };
        transport.keys = {Key::pause, Key::help, Key::quit};
        transport.press = [this](Key key) {
            if (key == Key::pause) setPaused(!isPaused_);
        };
        transport.isPlaying = [this] { return !isPaused_; };
        transport.pause = [this] { setPaused(true); };
        transport.play = [this] { setPaused(false); };

        const auto step = static_cast<std::uint64_t>(std::ceil(rate() * stepSeconds));
        while (session_.poll(transport, step)) {
            const std::uint64_t frames = session_.meter().frames();
            if (!isPaused_) framesPlayed_ += frames - framesSeen_;
            framesSeen_ = frames;
            if (hasEnded()) break;
            buffers_.feed();
        }
    }

private:
    double rate() const { return session_.device().sampleRate; }

    /// The position in seconds of the file, computed from the frames that the device has rendered, and
    /// limited to the buffers in the queue of the component.
    double position() const
    {
        const double fileRate = file_.format.sampleRate;
        return std::clamp(static_cast<double>(framesPlayed_) / rate(),
                          static_cast<double>(buffers_.framesTaken()) / fileRate,
                          static_cast<double>(buffers_.framesRead()) / fileRate);
    }

    bool hasEnded()
    {
        const std::uint64_t remaining = framesOf(delaySeconds, rate()) + 2 * session_.device().sliceFrames;
        return buffers_.isUsedUp() && end_.hasEnded(framesSeen_, remaining);
    }

    void setPaused(bool isPaused)
    {
        if (isPaused == isPaused_) return;
        isPaused ? buffers_.pause() : buffers_.start();
        isPaused_ = isPaused;
    }

    DoubleBuffer& buffers_;
    const PlaylistFile& file_;
    Session& session_;
    EndDetector end_;
    std::uint64_t framesSeen_ = 0;   // frames that the device has rendered
    std::uint64_t framesPlayed_ = 0; // frames that the device has rendered outside pauses
    bool isPaused_ = false;
};

} // namespace

SoundComponent::SoundComponent(host::Host& host)
    : object_(host.create("QTSoundStreamKVX")), units_(host.create("CoreAudioKVX"))
{
    object_.call("InitComponent");
    object_.call("OpenComponent");
    if (!object_.get("IsOpen").boolean())
        throw Failure("the library registers no sound component: there may be too little memory; close other "
                      "programs");
    try {
        attachUnit();
    } catch (...) {
        end();
        throw;
    }
}

SoundComponent::~SoundComponent()
{
    try {
        end();
    } catch (const std::exception&) {
        // The error is ignored, because the destructor of the library's object also stops the unit.
    }
}

void SoundComponent::check(const char* what, const host::Value& status) const
{
    if (status.integer() != 0)
        throw Failure(fmt::format("{} is refused: {}; choose another device with --device", what,
                                  formatStatus(static_cast<Status>(status.integer()))));
}

void SoundComponent::attachUnit()
{
    unit_ = object_.call("OpenDefaultAudioUnitOutputComponent").integer();
    if (unit_ == 0) throw Failure("no output unit opens; install the library and its platform again");
    check("attaching the output unit", object_.call("AttachToAudioUnitComponent", unit_));
    check("preparing the output unit", object_.call("AudioUnitInitialize", unit_));
}

void SoundComponent::start() { check("starting the device", object_.call("AudioOutputUnitStart", unit_)); }

// The method CloseComponent of the class stops the output unit and unregisters the sound component, but does
// not close the unit.
void SoundComponent::end()
{
    object_.call("CloseComponent");
    if (unit_ == 0) return;
    units_.call("AudioUnitUninitialize", unit_);
    units_.call("CloseComponent", unit_);
    unit_ = 0;
}

void playClassic(host::Host& host, const PlaylistFile& file, float gain, Labelling labelling,
                 Session& session)
try {
    SoundComponent component(host);
    const std::unique_ptr<SoundOutput> output = openComponent();
    const soundclient::OutputForm form = output->form();
    checkForm(file, form);

    Pcm16Reader reader(file.path, gain);
    DoubleBuffer buffers(
        *output, labelling, static_cast<std::size_t>(form.rate * bufferSeconds),
        [&reader](std::int16_t* out, std::size_t frames) { return reader.read(out, frames); });
    buffers.feed();
    announce(file, file.format.channels, session.progress());
    if (labelling != Labelling::bigAsLittle)
        session.progress().say("  Its buffers are labelled so that they play byte-swapped, as noise.");
    session.enableKeys();
    component.start();
    buffers.start();
    ClassicPlayback(buffers, file, session).run();
    if (reader.isDamaged()) session.progress().warn(formatDamage(file.path));
    if (buffers.hadGap()) printGap();
} catch (const soundclient::Refusal& refusal) {
    throw Failure(fmt::format("{}; install the library again", refusal.what()));
}

} // namespace kvx
