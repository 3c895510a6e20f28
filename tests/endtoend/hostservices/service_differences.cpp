#include "tests/endtoend/hostservices/service_differences.h"

#include <algorithm>
#include <iterator>

namespace endtoend {

Era eraOf(double version)
{
    constexpr double firsts[] = {2012.0, 2013.0, 2015.03, 2016.0};
    return Era(
        std::count_if(std::begin(firsts), std::end(firsts), [=](double first) { return version >= first; }));
}

// clang-format off
const std::vector<ServiceUse>& serviceUses()
{
    static const std::vector<ServiceUse> uses = {
        // before 2012.0, from 2012.0, 2013.0, 2015.03, 2016.0. Only a text read as UTF-8 would tell 2015.03 from
        // its predecessor, and nothing in the library reads one.
        {"REALGetRBVersion",          { 1,  1,  1,  1,  1}},
        {"RegisterPluginVersion",     { 1,  1,  1,  1,  1}},
        {"REALinRuntime",             { 1,  1,  1,  1,  1}},
        {"PluginRegisterClass",       { 5,  5,  5,  5,  5}},
        {"PluginNewInstance",         { 2,  2,  2,  2,  2}},
        {"REALLockObject",            { 3,  3,  3,  3,  3}},
        {"REALUnlockObject",          { 4,  4,  4,  4,  4}},
        {"REALLockString",            {22, 22, 22, 22, 22}},
        {"REALUnlockString",          {40, 25, 25, 25, 25}},
        {"REALBuildString",           { 8,  8,  8,  8,  8}},
        {"REALGetStringEncoding",     {18, 18, 18, 18, 18}},
        {"REALSetStringEncoding",     { 8,  8,  8,  8,  8}},
        {"REALConvertString",         {15,  0,  0,  0,  0}},
        {"StringGetCString",          { 0,  3,  3,  3,  8}},
        {"REALLoadGlobalMethod",      { 0,  1,  1,  1,  1}},
        {"PluginGetStringData",       { 0, 15, 15, 15, 15}},
        {"PluginDisposeStringData",   { 0, 15, 15, 15, 15}},
        {"newMemoryBlock",            { 4,  4,  4,  4,  4}},
        {"memoryBlockGetPtr",         {22, 22, 22, 22, 22}},
        {"memoryBlockGetSize",        { 6,  6,  6,  6,  6}},
        {"REALSetPropValueString",    { 2,  2,  2,  2,  2}},
        {"REALSetPropValueInteger",   { 0,  0,  2,  2,  2}},
        {"REALSetPropValueInt",       { 2,  2,  0,  0,  0}},
        {"GetEventInstance",          { 2,  2,  2,  2,  2}},
        {"RuntimeRaiseException",     { 2,  2,  2,  2,  2}},
    };
    return uses;
}

const std::vector<ServiceDifference>& serviceDifferences()
{
    static constexpr auto instead = ServiceDifference::instead, besides = ServiceDifference::besides;
    static const std::vector<ServiceDifference> differences = {
        // no exception object can be made: the refusal is all
        {"PluginNewInstance", before2012, from2016, instead, "false", {"AddAudio, nil", "PlayAudioStereo, second nil"}},
        // a block is given back without having been taken
        {"REALLockObject", before2012, from2016, besides, ", references -2", {"its rate, into a block"}},
        {"REALLockObject", before2012, from2016, besides, ", references -1", {"set its rate"}},
        // nothing can be given back
        {"REALUnlockObject", before2012, from2016, besides, ", references +1", {"its rate, into a block", "set its rate"}},
        {"REALUnlockObject", before2012, from2016, instead, "2 objects of class NilObjectException\n2 strings\n", {"left over"}},
        // each text that is read is given back without having been taken, those of no known encoding once more
        {"REALLockString", before2012, from2016, besides, ", references -1, references -1", {"set dOut by a string", "open a unit"}},
        {"REALLockString", before2012, from2016, besides, ", references -1", {"dOut by a string", "dOut by a block", "UTF-8, three characters", "UTF-8, four characters", "UTF-8, more characters", "Mac Roman, three characters", "Mac Roman, four characters", "Mac Roman, more characters", "unknown encoding, more than ASCII", "the device's name", "its encoding too", "whether it runs"}},
        {"REALLockString", before2012, from2016, besides, ", references -2", {"unknown encoding, three characters", "unknown encoding, four characters", "unknown encoding, more characters"}},
        // no text is given back; the older hosts convert to another one each time
        {"REALUnlockString", before2012, from2016, besides, ", references +1, references +1", {"set dOut by a string"}},
        {"REALUnlockString", before2012, from2016, besides, ", references +1", {"dOut by a string", "dOut by a block", "UTF-8, three characters", "UTF-8, four characters", "UTF-8, more characters", "unknown encoding, more than ASCII", "the device's name", "its encoding too", "whether it runs"}},
        {"REALUnlockString", before2012, before2012, besides, ", references +2", {"Mac Roman, three characters", "Mac Roman, four characters", "Mac Roman, more characters"}},
        {"REALUnlockString", before2012, from2016, besides, ", references +2", {"unknown encoding, three characters", "unknown encoding, four characters", "unknown encoding, more characters"}},
        {"REALUnlockString", before2012, before2012, besides, ", references +1, references +2", {"open a unit"}},
        {"REALUnlockString", before2012, before2012, instead, "13 strings\n", {"left over"}},
        {"REALUnlockString", from2012, from2016, besides, ", references +1", {"Mac Roman, three characters", "Mac Roman, four characters", "Mac Roman, more characters"}},
        {"REALUnlockString", from2012, from2016, besides, ", references +1, references +1", {"open a unit"}},
        {"REALUnlockString", from2012, from2016, instead, "3 strings\n", {"left over"}},
        // no message, no result, no copy of a text that is not ASCII and of no known encoding
        {"REALBuildString", before2012, from2016, instead, "NilObjectException", {"AddAudio, nil", "PlayAudioStereo, second nil"}},
        {"REALBuildString", before2012, from2016, instead, "", {"a constant"}},
        {"REALBuildString", before2012, from2016, instead, "65535", {"its encoding", "its encoding too"}},
        {"REALBuildString", before2012, from2016, instead, "status 0", {"dOut by a string", "the device's name"}},
        {"REALBuildString", before2012, from2016, instead, "0 bytes, writable false, status 2003332927", {"unknown encoding, more than ASCII"}},
        // a text of no known encoding is taken for one of some encoding; the host converts ASCII all the same
        {"REALGetStringEncoding", before2012, from2016, instead, "0 bytes, writable false, status 2003332927", {"unknown encoding, more than ASCII"}},
        // every text that is made has no known encoding
        {"REALSetStringEncoding", before2012, from2016, instead, "65535", {"its encoding", "its encoding too"}},
        {"REALSetStringEncoding", before2012, from2016, instead, "0 bytes, writable false, status 2003332927", {"unknown encoding, more than ASCII"}},
        // the older hosts convert no text: property IDs and component types are four spaces
        {"REALConvertString", before2012, before2012, instead, "2003332927", {"set dOut by a string"}},
        {"REALConvertString", before2012, before2012, instead, "status 2003332927", {"dOut by a string", "dOut by a block", "whether it runs"}},
        {"REALConvertString", before2012, before2012, instead, "0 bytes, writable false, status 2003332927", {"UTF-8, four characters", "UTF-8, more characters", "Mac Roman, four characters", "Mac Roman, more characters", "unknown encoding, more than ASCII"}},
        {"REALConvertString", before2012, before2012, instead, "status -1", {"the device's name"}},
        {"REALConvertString", before2012, before2012, instead, "65535", {"its encoding too"}},
        {"REALConvertString", before2012, before2012, instead, "none, status -1", {"open a unit"}},
        {"REALConvertString", before2012, before2012, instead, "-2147450879", {"initialise it", "uninitialise it"}},
        {"REALConvertString", before2012, before2012, instead, "status -2147450879", {"its slice"}},
        {"REALConvertString", before2012, before2012, instead, "-32767", {"close it"}},
        // no bytes of raw texts; from 2016.0 on, of no text that is read as it is
        {"StringGetCString", from2012, from2016, instead, "0 bytes, writable false, status 2003332927", {"unknown encoding, four characters", "unknown encoding, more characters"}},
        {"StringGetCString", from2016, from2016, instead, "1852797029", {"set dOut by a string"}},
        {"StringGetCString", from2016, from2016, instead, "status 0", {"dOut by a string"}},
        {"StringGetCString", from2016, from2016, instead, "another", {"dOut by a block"}},
        {"StringGetCString", from2016, from2016, instead, "0 bytes, writable false, status 2003332927", {"unknown encoding, more than ASCII"}},
        // likewise, no length
        {"REALLoadGlobalMethod", from2012, from2016, instead, "0 bytes, writable false, status 2003332927", {"unknown encoding, four characters", "unknown encoding, more characters"}},
        {"REALLoadGlobalMethod", from2016, from2016, instead, "561211770", {"set dOut by a string"}},
        {"REALLoadGlobalMethod", from2016, from2016, instead, "status 0", {"dOut by a string"}},
        {"REALLoadGlobalMethod", from2016, from2016, instead, "another", {"dOut by a block"}},
        {"REALLoadGlobalMethod", from2016, from2016, instead, "0 bytes, writable false, status 2003332927", {"unknown encoding, more than ASCII"}},
        // the newer hosts convert no text: property IDs and component types are four spaces
        {"PluginGetStringData", from2012, from2016, instead, "2003332927", {"set dOut by a string"}},
        {"PluginGetStringData", from2012, from2016, instead, "status 2003332927", {"dOut by a string", "dOut by a block", "whether it runs"}},
        {"PluginGetStringData", from2012, from2016, instead, "0 bytes, writable false, status 2003332927", {"UTF-8, four characters", "UTF-8, more characters", "Mac Roman, four characters", "Mac Roman, more characters", "unknown encoding, more than ASCII"}},
        {"PluginGetStringData", from2012, from2016, instead, "status -1", {"the device's name"}},
        {"PluginGetStringData", from2012, from2016, instead, "65535", {"its encoding too"}},
        {"PluginGetStringData", from2012, from2016, instead, "none, status -1", {"open a unit"}},
        {"PluginGetStringData", from2012, from2016, instead, "-2147450879", {"initialise it", "uninitialise it"}},
        {"PluginGetStringData", from2012, from2016, instead, "status -2147450879", {"its slice"}},
        {"PluginGetStringData", from2012, from2016, instead, "-32767", {"close it"}},
        // what was converted is not given back; where nothing had to be converted, it is the text itself
        {"PluginDisposeStringData", from2012, from2016, besides, ", references +1", {"Mac Roman, three characters", "Mac Roman, four characters", "Mac Roman, more characters", "open a unit"}},
        {"PluginDisposeStringData", from2012, from2016, instead, "11 strings\n15 string data\n", {"left over"}},
        // no block can be made
        {"newMemoryBlock", before2012, from2016, instead, "OutOfMemoryException: Failed to allocate a memoryblock with 4 bytes in size.", {"dOut by a block", "whether it runs", "its slice"}},
        {"newMemoryBlock", before2012, from2016, instead, "OutOfMemoryException: Failed to allocate a memoryblock with 8 bytes in size.", {"its rate"}},
        // no bytes: as if the block were nil, or could not be made
        {"memoryBlockGetPtr", before2012, from2016, instead, "NilObjectException: Memoryblock is nil", {"AddAudio", "AddAudio, a count", "AddAudio, 15 bits", "AddAudioStereo", "PlayAudio", "PlayAudioStereo"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "false", {"AddFloatAudio", "AddFloatAudio, a count", "AddFloatAudioStereo", "PlayFloatAudio", "PlayFloatAudioStereo", "AddFloatAudio, clearing"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "200", {"FreeSpace", "FreeSpace, playing", "FreeSpace, cleared"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0", {"left"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "0", {"OutputPosition, played"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "OutOfMemoryException: Failed to allocate a memoryblock with 4 bytes in size.", {"dOut by a block", "whether it runs", "its slice"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "OutOfMemoryException: Failed to allocate a memoryblock with 8 bytes in size.", {"its rate"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "status 561211770", {"its rate, into a block"}},
        {"memoryBlockGetPtr", before2012, from2016, instead, "561211770", {"set its rate"}},
        // no size: without a count there is nothing to add, what has a count is added; a value of no bytes
        {"memoryBlockGetSize", before2012, from2016, instead, "false", {"AddAudio", "AddFloatAudio", "AddAudioStereo", "AddFloatAudioStereo"}},
        {"memoryBlockGetSize", before2012, from2016, instead, "197", {"FreeSpace"}},
        {"memoryBlockGetSize", before2012, from2016, instead, "0.25 0.25 0.125 0.875 0 0 0 0 0 0 0 0 0 0 0 0", {"left"}},
        {"memoryBlockGetSize", before2012, from2016, instead, "8", {"OutputPosition, played"}},
        {"memoryBlockGetSize", before2012, from2016, instead, "status 561211770", {"its rate, into a block"}},
        {"memoryBlockGetSize", before2012, from2016, instead, "561211770", {"set its rate"}},
        // the message cannot be set
        {"REALSetPropValueString", before2012, from2016, instead, "NilObjectException", {"AddAudio, nil", "PlayAudioStereo, second nil"}},
        // no handler is found
        {"GetEventInstance", before2012, from2016, instead, "0", {"a change", "another", "a change that nobody hears"}},
        // nothing can be raised: the refusal is all
        {"RuntimeRaiseException", before2012, from2016, instead, "false", {"AddAudio, nil", "PlayAudioStereo, second nil"}},
    };
    return differences;
}

const std::vector<UnseenService>& unseenServices()
{
    static const std::vector<UnseenService> services = {
        {"REALGetRBVersion",        "the host is taken for the oldest, which is asked in another way for the same"},
        {"REALinRuntime",           "it decides about the sound component, which no step opens"},
        {"REALSetPropValueInteger", "the older name is asked for; and the number is 0 anyway"},
        {"REALSetPropValueInt",     "the newer name has been asked for; and the number is 0 anyway"},
    };
    return services;
}
// clang-format on

} // namespace endtoend
