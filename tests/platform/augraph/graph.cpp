#include "tests/platform/augraph/graph.h"

#include <KVXPlatform/KVXPlatform.h>

#include <string>

namespace test {

OSStatus Graph::dispose()
{
    const OSStatus status = graph_ ? DisposeAUGraph(graph_) : noErr;
    if (!status) graph_ = nullptr;
    return status;
}

AUNode Graph::add(OSType type, OSType subType, OSStatus* status) const
{
    const AudioComponentDescription description = {type, subType, 'appl', 0, 0};
    AUNode node = 0;
    const OSStatus result = AUGraphAddNode(graph_, &description, &node);
    if (status) *status = result;
    return result ? 0 : node;
}

AudioUnit Graph::unit(AUNode node) const
{
    AudioUnit found = nullptr;
    AUGraphNodeInfo(graph_, node, nullptr, &found);
    return found;
}

std::uint32_t alive(const char* kind)
{
    KVXLiveCount rows[32];
    const std::uint32_t kinds = KVXPlatformGetLiveCounts(rows, 32);
    for (std::uint32_t i = 0; i < kinds && i < 32; ++i)
        if (std::string(rows[i].kind) == kind) return rows[i].count;
    return 0;
}

} // namespace test
