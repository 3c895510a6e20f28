#include "host/kvx/play/sound_bridge.h"

#include "host/kvx/text/codes.h"
#include "host/kvx/text/failure.h"

#include <fmt/format.h>

namespace kvx {

SoundBridge::SoundBridge(host::Host& host)
    : object_(host.create("QTSoundStreamKVX")), units_(host.create("CoreAudioKVX"))
{
    object_.call("InitComponent");
    object_.call("OpenComponent");
    if (!object_.get("IsOpen").boolean())
        throw Failure("the library registers no sound component; see that there is memory left");
    try {
        attachUnit();
    } catch (...) {
        end();
        throw;
    }
}

SoundBridge::~SoundBridge()
{
    try {
        end();
    } catch (const std::exception&) {
        // Nobody is left to tell; the object's destructor stops the unit as well.
    }
}

void SoundBridge::check(const char* what, const host::Value& status) const
{
    if (status.integer() != 0)
        throw Failure(fmt::format("{} is refused: {}; choose another device with --device", what,
                                  printStatus(Status(status.integer()))));
}

void SoundBridge::attachUnit()
{
    unit_ = object_.call("OpenDefaultAudioUnitOutputComponent").integer();
    if (unit_ == 0)
        throw Failure("no output unit opens; see that the library and its platform belong together");
    check("attaching the output unit", object_.call("AttachToAudioUnitComponent", unit_));
    check("preparing the output unit", object_.call("AudioUnitInitialize", unit_));
}

void SoundBridge::start() { check("starting the device", object_.call("AudioOutputUnitStart", unit_)); }

// The class stops the unit and takes the component back; the unit itself is this program's to close.
void SoundBridge::end()
{
    object_.call("CloseComponent");
    if (unit_ == 0) return;
    units_.call("AudioUnitUninitialize", unit_);
    units_.call("CloseComponent", unit_);
    unit_ = 0;
}

} // namespace kvx
