// A host object of QTSoundStreamKVX.
#pragma once

#include "plugin/classes.h"
#include "soundstream/sound_stream.h"
#include "tests/support/class_members.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace soundstream_test {

using Object = REALobjectStruct*;
inline const support::ClassMembers members(soundStreamClass);

using Notes = std::vector<std::string>;

/// A host object with guard bytes around its class data. It begins constructed, and its C++ destructor
/// destroys it if necessary.
class StreamObject {
public:
    static constexpr Word dataOffset = 32;

    StreamObject();
    ~StreamObject();
    StreamObject(const StreamObject&) = delete;
    StreamObject& operator=(const StreamObject&) = delete;

    void construct();
    void destroy();

    Object get() const { return reinterpret_cast<Object>(memory_.get()); }
    soundstream::SoundStreamData& data() const;
    soundstream::StreamState* state() const { return data().state; }

    void initComponent() const { call<void>("InitComponent"); }
    void openComponent() const { call<void>("OpenComponent"); }
    void closeComponent() const { call<void>("CloseComponent"); }
    HostInteger openUnit() const
    {
        return call<HostInteger>("OpenDefaultAudioUnitOutputComponent as integer");
    }
    HostInteger attach(HostInteger unit) const
    {
        return call<HostInteger>("AttachToAudioUnitComponent(componenthandle as integer) as integer", unit);
    }
    HostInteger attach(HostInteger unit, HostInteger element) const
    {
        return call<HostInteger>(
            "AttachToAudioUnitComponent(componenthandle as integer, element as integer) as integer", unit,
            element);
    }
    HostInteger initialize(HostInteger unit) const
    {
        return call<HostInteger>("AudioUnitInitialize(componenthandle as integer) as integer", unit);
    }
    HostInteger start(HostInteger unit) const
    {
        return call<HostInteger>("AudioOutputUnitStart(componenthandle as integer) as integer", unit);
    }

    bool isOpen() const { return soundstream_test::members.get<HostBoolean>(get(), "IsOpen") != 0; }
    bool isActive() const { return soundstream_test::members.get<HostBoolean>(get(), "IsStreamActive") != 0; }

    template <class Result, class... Arguments>
    Result call(std::string_view declaration, Arguments... arguments) const
    {
        return members.call<Result>(declaration, get(), arguments...);
    }

    /// Whether the guard bytes are unchanged.
    bool isUntouchedAround() const;

private:
    std::unique_ptr<char[]> memory_;
    bool isAlive_ = false;
};

/// The component's entry point, cast to the type that the platform calls.
inline ComponentRoutineProcPtr dispatcher()
{
    return reinterpret_cast<ComponentRoutineProcPtr>(soundStreamDispatcher);
}

} // namespace soundstream_test
