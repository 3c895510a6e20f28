// How a voice gets to the audio thread, and an old one back: made and destroyed elsewhere, handed over
// without a lock.
#pragma once

#include "platform/audiounit/rate/voice.h"

#include <atomic>
#include <memory>

namespace kvxplatform::audiounit {

class VoiceBox {
public:
    VoiceBox() = default;
    VoiceBox(const VoiceBox&) = delete;
    ~VoiceBox() { clear(); }

    /// Hand a voice over; one that has not been taken goes. Thread [any but audio], with settings.
    void put(std::unique_ptr<Voice> voice)
    {
        std::unique_ptr<Voice>(next.exchange(voice.release())).reset();
        std::unique_ptr<Voice>(old.exchange(nullptr)).reset();
    }

    /// Destroy what is there. Likewise.
    void clear() { put(nullptr); }

    /// Whether a voice is waiting, and there is room for one that it replaces. Thread [audio & in a slice].
    bool isFull() const { return next.load() && !old.load(); }
    std::unique_ptr<Voice> take() { return std::unique_ptr<Voice>(next.exchange(nullptr)); }

    /// Give a voice away, after isFull said that there is room. Likewise.
    void retire(std::unique_ptr<Voice> voice) { old.store(voice.release()); }

private:
    std::atomic<Voice*> next{nullptr}, old{nullptr};
};

} // namespace kvxplatform::audiounit
