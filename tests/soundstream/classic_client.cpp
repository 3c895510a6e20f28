#include "tests/soundstream/classic_client.h"

#include <algorithm>

namespace soundstream_test {

namespace {
ComponentDescription ours() { return {'sdev', 'QTso', 'QTso', 0, 0}; }
} // namespace

Component findComponent()
{
    ComponentDescription looking = ours();
    Component found = nullptr;
    while (const Component next = FindNextComponent(found, &looking)) found = next;
    return found;
}

Component findFirstComponent()
{
    ComponentDescription looking = ours();
    return FindNextComponent(nullptr, &looking);
}

void unregisterAll()
{
    while (const Component component = findComponent())
        if (UnregisterComponent(component) != noErr) return;
}

ComponentResult send(ComponentInstance instance, SInt16 selector, std::initializer_list<long> words)
{
    struct {
        ComponentParameters parameters;
        long more[8];
    } request = {{0, static_cast<UInt8>(words.size() * sizeof(long)), selector, {0}}, {}};
    std::copy(words.begin(), words.end(), request.parameters.params);
    return DelegateComponentCall(&request.parameters, instance);
}

UInt32 alive(const std::string& kind)
{
    KVXLiveCount rows[64];
    const uint32_t count = KVXPlatformGetLiveCounts(rows, 64);
    for (uint32_t i = 0; i < count; ++i)
        if (rows[i].kind == kind) return rows[i].count;
    return 0;
}

ClassicClient::ClassicClient(Component component)
{
    OpenAComponent(component, &instance);
    if (instance && SoundComponentInitOutputDevice(instance, 0) == noErr)
        SoundComponentAddSource(instance, &source);
}

ClassicClient::~ClassicClient() { close(); }

void ClassicClient::close()
{
    if (instance) CloseComponent(instance);
    instance = nullptr;
    source = nullptr;
}

ComponentResult ClassicClient::play(SoundParamBlock& block, long actions)
{
    return SoundComponentPlaySourceBuffer(instance, source, &block, actions);
}
ComponentResult ClassicClient::start() { return SoundComponentStartSource(instance, 1, &source); }
ComponentResult ClassicClient::stop() { return SoundComponentStopSource(instance, 1, &source); }
ComponentResult ClassicClient::pause() { return SoundComponentPauseSource(instance, 1, &source); }

SoundParamBlock blockOf(const void* samples, long frames, OSType format)
{
    SoundParamBlock block = {};
    block.recordSize = sizeof block;
    block.desc = {0, format, 2, 16, 0xAC440000, frames, static_cast<Byte*>(const_cast<void*>(samples)), 0};
    block.rateMultiplier = 0x10000;
    block.leftVolume = block.rightVolume = kFullVolume;
    return block;
}

} // namespace soundstream_test
