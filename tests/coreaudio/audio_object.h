// The audio-object members of CoreAudioKVX: calls with arguments that differ by position, and the expected
// platform calls.
#pragma once

#include "tests/coreaudio/subject.h"

namespace subject {

constexpr OSStatus unknownProperty = 0x77686F3F; // platform status 'who?'
constexpr OSStatus badObject = 0x216F626A;       // platform status '!obj'

// Arguments of the host program's calls, and the text in which the platform spy records these arguments.
const HostInteger objectID = static_cast<std::int32_t>(0x80000021);
constexpr std::uint32_t selector = 0xF0000001, scope = 0xE0000002, element = 0xFFFFFFFF;
const std::string where = "0x80000021, {0xF0000001, 0xE0000002, 0xFFFFFFFF}, ";

/// Value of the property on the platform.
const std::string value("AB\0\xE9Z", 5);

class AudioObjectMembers : public Subject {
protected:
    std::uint32_t getSize(Block qualifier)
    {
        return members.call<std::uint32_t>("AudioObjectGetPropertyDataSize", object(), objectID, selector,
                                           scope, element, qualifier);
    }
    Block read(Block qualifier, Block input)
    {
        return members.call<Block>("AudioObjectGetPropertyData", object(), objectID, selector, scope, element,
                                   qualifier, input);
    }
    void write(Block data, Block qualifier)
    {
        members.call<void>("AudioObjectSetPropertyData", object(), objectID, selector, scope, element, data,
                           qualifier);
    }

    Block block(const std::string& bytes, const std::string& shown)
    {
        const Block made = host().newMemoryBlock(bytes);
        spy::name(host().storageOf(made), shown);
        host().forget();
        return made;
    }

    spy::Answer& size() { return spy::answer("AudioObjectGetPropertyDataSize"); }
    spy::Answer& get() { return spy::answer("AudioObjectGetPropertyData"); }
    spy::Answer& set() { return spy::answer("AudioObjectSetPropertyData"); }

    std::string sizeCall(const std::string& qualifier = "0x0, null")
    {
        return "AudioObjectGetPropertyDataSize(" + where + qualifier + ", size 0)";
    }
    std::string getCall(UInt32 bytes, const std::string& buffer, const std::string& qualifier = "0x0, null")
    {
        return "AudioObjectGetPropertyData(" + where + qualifier + ", size " + std::to_string(bytes) + ", " +
               buffer + ")";
    }
    std::string setCall(const std::string& data, const std::string& qualifier = "0x0, null")
    {
        return "AudioObjectSetPropertyData(" + where + qualifier + ", " + data + ")";
    }

    /// Lock and unlock calls of memory blocks, in order: "m1 +" for a lock and "m1 -" for an unlock.
    spy::Calls locks()
    {
        spy::Calls found;
        for (const std::string& note : host().calls()) {
            if (note.rfind("REALLockObject(", 0) == 0)
                found.push_back(note.substr(15, note.size() - 16) + " +");
            if (note.rfind("REALUnlockObject(", 0) == 0)
                found.push_back(note.substr(17, note.size() - 18) + " -");
        }
        return found;
    }
};

} // namespace subject
