#include "tests/platform/augraph/graph_calls.h"

namespace test {

OSStatus emptySource(void*, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32, UInt32,
                     AudioBufferList*)
{
    return noErr;
}

std::vector<GraphCall> graphCalls(AUNode node)
{
    static const AudioComponentDescription hal = {'auou', 'ahal', 'appl', 0, 0};
    static const AURenderCallbackStruct callback = {emptySource, nullptr};
    // clang-format off
    return {
        {"AddNode",              false, [](AUGraph g) { AUNode n; return AUGraphAddNode(g, &hal, &n); }},
        {"GetNodeCount",         false, [](AUGraph g) { UInt32 n; return AUGraphGetNodeCount(g, &n); }},
        {"GetIndNode",           false, [](AUGraph g) { AUNode n; return AUGraphGetIndNode(g, 0, &n); }},
        {"NodeInfo",             false, [=](AUGraph g) { return AUGraphNodeInfo(g, node, nullptr, nullptr); }},
        {"ConnectNodeInput",     false, [=](AUGraph g) { return AUGraphConnectNodeInput(g, node, 0, node, 0); }},
        {"SetNodeInputCallback", false, [=](AUGraph g) { return AUGraphSetNodeInputCallback(g, node, 0, &callback); }},
        {"IsOpen",               false, [](AUGraph g) { Boolean is; return AUGraphIsOpen(g, &is); }},
        {"IsInitialized",        false, [](AUGraph g) { Boolean is; return AUGraphIsInitialized(g, &is); }},
        {"Open",                 true,  [](AUGraph g) { return AUGraphOpen(g); }},
        {"Initialize",           true,  [](AUGraph g) { return AUGraphInitialize(g); }},
        {"Uninitialize",         true,  [](AUGraph g) { return AUGraphUninitialize(g); }},
        {"Close",                true,  [](AUGraph g) { return AUGraphClose(g); }},
    };
    // clang-format on
}

} // namespace test
