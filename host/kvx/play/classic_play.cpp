#include "host/kvx/play/classic_play.h"

#include "host/kvx/files/file_failure.h"
#include "host/kvx/files/sixteen_bits.h"
#include "host/kvx/play/end_rule.h"
#include "host/kvx/play/sound_bridge.h"
#include "host/kvx/terminal/interrupt.h"
#include "host/kvx/terminal/key.h"
#include "host/kvx/terminal/meter.h"
#include "host/kvx/terminal/terminal.h"
#include "host/kvx/text/codes.h"
#include "host/kvx/text/failure.h"
#include "host/kvx/text/message.h"
#include "host/soundclient/double_buffer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

namespace kvx {
namespace {

using soundclient::DoubleBuffer;
using soundclient::SoundOutput;

constexpr double bufferSeconds = 1;
constexpr double stepSeconds = 0.1;  // of a device that is turned by hand: a part of a buffer
constexpr double heldSeconds = 0.25; // what mixer, converter and unit may hold back, generously

std::unique_ptr<SoundOutput> openComponent()
try {
    return std::make_unique<SoundOutput>(bridgeSubType, bridgeManufacturer);
} catch (const soundclient::NoEntryPoint&) {
    throw Failure("the sound component is registered, and cannot be opened: the library gives it an entry "
                  "point in built programs only; leave out --development");
} catch (const soundclient::Refusal& refusal) {
    throw Failure(fmt::format("the sound component cannot be opened: {}; see that the library is whole",
                              printStatus(refusal.status())));
}

void checkForm(const ProgrammeFile& file, const soundclient::OutputForm& form)
{
    if (form.channels != 2 || form.bits != 16)
        throw Failure(fmt::format("the sound component plays {} channels of {} bits, not 2 of 16; see that "
                                  "the library is whole",
                                  form.channels, form.bits));
    if (file.format.sampleRate != form.rate)
        throw Failure(fmt::format("{0} has a rate of {1} Hz, and the sound component plays {2}; bring it "
                                  "there with `kvx render {0} OUT.wav --device-rate {2}`",
                                  file.path, file.format.sampleRate, form.rate));
}

void announce(Progress& progress, const ProgrammeFile& file, const ClassicOptions& options)
{
    progress.say(printAnnouncement(file));
    if (file.format.fileChannels > 2)
        progress.say(fmt::format("  Of its {} channels the first two are heard.", file.format.fileChannels));
    if (options.labelling != soundclient::Labelling::bigAsLittle)
        progress.say("  Its buffers are labelled so that it is heard byte-swapped, as noise.");
}

// The file while it sounds.
class Session {
public:
    Session(DoubleBuffer& buffers, const ProgrammeFile& file, const KVXDeviceInfo& device, bool isStepped,
            Progress& progress)
        : buffers_(buffers), file_(file), device_(device), isStepped_(isStepped), progress_(progress),
          meter_(device.device)
    {
        const char* whyNot = KeyTerminal::whyNot();
        if (isStepped) return;
        if (!whyNot) keys_.emplace();
        progress.say(whyNot ? printNoKeys(whyNot) : "Keys: space pause, q quit");
    }

    bool isHeard() const { return meter_.frames() > 0; }

    /// False once there is nothing more to hear.
    bool turn()
    {
        if (keys_) takeKeys();
        if (isQuit_ || isInterrupted() || hasEnded()) return false;
        buffers_.feed();
        progress_.show(position(), file_.format.duration(), meter_.takePeak());
        const std::uint64_t before = meter_.frames();
        passTime(device_, isStepped_, std::uint32_t(std::ceil(rate() * stepSeconds)));
        if (!isPaused_) framesPlayed_ += meter_.frames() - before;
        if (!deviceNow(device_).isAlive) throw deviceDied(device_);
        return true;
    }

private:
    double rate() const { return device_.sampleRate; }

    // By the device's clock, as far as the buffers agree.
    double position() const
    {
        const double fileRate = file_.format.sampleRate;
        return std::clamp(double(framesPlayed_) / rate(), double(buffers_.framesTaken()) / fileRate,
                          double(buffers_.framesRead()) / fileRate);
    }

    bool hasEnded()
    {
        return buffers_.isUsedUp() &&
               end_.hasEnded(meter_.frames(), framesOf(heldSeconds, rate()) + 2 * device_.sliceFrames);
    }

    void setPaused(bool isPaused)
    {
        if (isPaused == isPaused_) return;
        isPaused ? buffers_.pause() : buffers_.start();
        isPaused_ = isPaused;
    }

    void takeKeys()
    {
        if (KeyTerminal::isStopAsked()) stopWithTheProcess();
        for (const Key key : reader_.read(keys_->read())) {
            if (key == Key::quit) isQuit_ = true;
            if (key == Key::pause) setPaused(!isPaused_);
            progress_.hurry();
        }
    }

    // Ctrl-Z: the sound rests while the process does.
    void stopWithTheProcess()
    {
        const bool wasPaused = isPaused_;
        setPaused(true);
        progress_.leaveLine();
        std::fflush(stdout);
        keys_->stopProcess();
        if (!isInterrupted()) setPaused(wasPaused);
    }

    DoubleBuffer& buffers_;
    const ProgrammeFile& file_;
    const KVXDeviceInfo& device_;
    bool isStepped_;
    Progress& progress_;
    Meter meter_;
    std::optional<KeyTerminal> keys_;
    KeyReader reader_;
    EndRule end_;
    std::uint64_t framesPlayed_ = 0; // of the device
    bool isPaused_ = false, isQuit_ = false;
};

} // namespace

bool playClassic(host::Host& host, const ProgrammeFile& file, const ClassicOptions& options,
                 const KVXDeviceInfo& device, bool isStepped, Progress& progress)
try {
    SoundBridge bridge(host);
    const std::unique_ptr<SoundOutput> output = openComponent();
    const soundclient::OutputForm form = output->form();
    checkForm(file, form);

    SixteenBitReader reader(file.path, float(std::pow(10.0, options.gainDb / 20.0))); // exactly 1 at 0 dB
    DoubleBuffer buffers(
        *output, options.labelling, std::size_t(form.rate * bufferSeconds),
        [&reader](std::int16_t* out, std::size_t frames) { return reader.read(out, frames); });
    buffers.feed();
    announce(progress, file, options);
    Session session(buffers, file, device, isStepped, progress);
    bridge.start();
    buffers.start();
    while (session.turn()) {
    }
    if (reader.isDamaged()) progress.warn(damagedPart(file.path));
    if (buffers.hadGap()) printMessage("the sound had gaps: the file could not be read as fast as it plays");
    return session.isHeard();
} catch (const soundclient::Refusal& refusal) {
    throw Failure(fmt::format("{}; see that the library is whole", refusal.what()));
}

} // namespace kvx
