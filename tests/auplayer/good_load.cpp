#include "tests/auplayer/good_load.h"

namespace auplayer_test {

Notes goodLoad(const Choices& choices)
{
    const std::string handleBytes = std::to_string(sizeof(void*));
    const std::string client = "{48000, 'lpcm', 0x9, 8, 1, 8, 2, 32, 0}";
    const std::string output = "{48000, 'lpcm', 0x29, 4, 1, 4, 2, 32, 0}";
    // clang-format off
    Notes calls = {
        "CFURLCreateFromFSRef(default, \"the item\")",
        // calls that decode the file
        "ExtAudioFileOpenURL(url1)",
        "ExtAudioFileGetProperty(file1, 'ffmt', size 40)",
        "ExtAudioFileGetProperty(file1, '#frm', size 8)",
        "ExtAudioFileSetProperty(file1, 'cfmt', 40 bytes, " + client + ")",
        "ExtAudioFileRead(file1, 1000, {2 channels, 8000 bytes, memory})",
        "ExtAudioFileGetProperty(file1, 'afil', size " + handleBytes + ")",
        "AudioFileGetProperty(audio1, 'edur', size 8)",
        "AudioFileClose(audio1)",
        "ExtAudioFileDispose(file1)",
        // calls that make the graph
        "NewAUGraph()",
        "AUGraphAddNode(graph1, {'auou', " + choices.outputUnit + ", 'appl', 0, 0})",
        "AUGraphAddNode(graph1, {'aufc', 'vari', 'appl', 0, 0})",
        "AUGraphAddNode(graph1, {'aufc', " + choices.timePitch + ", 'appl', 0, 0})",
        "AUGraphAddNode(graph1, {'aufx', 'greq', 'appl', 0, 0})",
        "AUGraphAddNode(graph1, {'aumx', 'mcmx', 'appl', 0, 0})",
        "AUGraphAddNode(graph1, {'aufc', 'conv', 'appl', 0, 0})",
        "AUGraphConnectNodeInput(graph1, converter node, 0, mixer node, 0)",
        "AUGraphConnectNodeInput(graph1, mixer node, 0, equalizer node, 0)",
        "AUGraphConnectNodeInput(graph1, equalizer node, 0, timePitch node, 0)",
        "AUGraphConnectNodeInput(graph1, timePitch node, 0, varispeed node, 0)",
        "AUGraphConnectNodeInput(graph1, varispeed node, 0, output node, 0)",
        "AUGraphOpen(graph1)",
        "AUGraphNodeInfo(graph1, output node, null)",
        "AUGraphNodeInfo(graph1, converter node, null)",
        "AUGraphNodeInfo(graph1, mixer node, null)",
        "AUGraphNodeInfo(graph1, timePitch node, null)",
        "AUGraphNodeInfo(graph1, varispeed node, null)",
        "AUGraphNodeInfo(graph1, equalizer node, null)",
        // calls that set up the units
        "AudioUnitSetProperty(mixer, 11, input, 0, 1, 4 bytes)",
        "AudioUnitSetProperty(mixer, 3007, input, 0, 1, 4 bytes)",
    };
    // clang-format on
    const auto add = [&calls](const std::string& call) { calls.push_back(call); };
    if (!choices.bypassed.empty())
        add("AudioUnitSetProperty(" + choices.bypassed + ", 21, global, 0, 1, 4 bytes)");
    add("AUGraphSetNodeInputCallback(graph1, converter node, 0, {renderInput, the player})");
    add("AudioUnitSetProperty(converter, 8, input, 0, " + client + ", 40 bytes)");
    for (const char* unit : {"converter", "mixer", "equalizer", "timePitch", "varispeed"})
        add("AudioUnitSetProperty(" + std::string(unit) + ", 8, output, 0, " + output + ", 40 bytes)");
    if (!choices.sliceLimit.empty())
        for (const char* unit : {"timePitch", "equalizer", "mixer", "converter", "varispeed"})
            add("AudioUnitSetProperty(" + std::string(unit) + ", 14, global, 0, " + choices.sliceLimit +
                ", 4 bytes)");
    add("AudioUnitSetParameter(equalizer, 10000, global, 0, 1, 0)");
    add("AUGraphInitialize(graph1)");
    add("AudioUnitSetProperty(timePitch, 26, global, 0, 127, 4 bytes)");
    add("AudioUnitSetProperty(varispeed, 26, global, 0, 127, 4 bytes)");
    add("CFRelease(url1)");
    return calls;
}

} // namespace auplayer_test
