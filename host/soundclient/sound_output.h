// A sound output component as a client sees it: the client finds and opens the component, and sends
// selectors.
#pragma once

#include <cstdint>
#include <stdexcept>

struct ComponentInstanceRecord;
struct OpaqueSoundSource;
struct SoundParamBlock;

namespace soundclient {

/// A call that the component or the platform has refused.
class Refusal : public std::runtime_error {
public:
    Refusal(const char* what, std::int32_t status);

    std::int32_t status() const { return status_; } ///< status that the platform returned

private:
    std::int32_t status_;
};

/// No component has the requested subtype and manufacturer.
class NoComponent : public Refusal {
public:
    NoComponent();
};

/// The component has no entry point, because its plug-in is running in the development environment.
class NoEntryPoint : public Refusal {
public:
    explicit NoEntryPoint(std::int32_t status);
};

/// The format that the component plays without conversion.
struct OutputForm {
    int channels = 0;
    int bits = 0;    ///< bits per sample
    double rate = 0; ///< Hz
};

/// A source: one stream of sound buffers into the component.
using Source = OpaqueSoundSource*;

/// An open component with an initialised device. Calls must not overlap.
/// Errors  every function throws Refusal.
/// [any]
class SoundOutput {
public:
    /// Open the last registered sound output component with this subtype and manufacturer.
    /// Errors  also throws NoComponent and NoEntryPoint.
    SoundOutput(std::uint32_t subType, std::uint32_t manufacturer);
    ~SoundOutput();
    SoundOutput(const SoundOutput&) = delete;
    SoundOutput& operator=(const SoundOutput&) = delete;

    OutputForm form() const;

    Source addSource();
    void removeSource(Source source); ///< after the call, the component uses no buffer of the source

    /// Add a buffer to the queue of the source. The audio thread calls the completion routine of the buffer.
    /// The call starts a source that is not playing, unless `isPaused`.
    void play(Source source, SoundParamBlock& buffer, bool isPaused = false);

    void start(Source source);
    void pause(Source source); ///< keeps the queued buffers
    void stop(Source source);  ///< drops the queued buffers without calling their completion routines

    /// The instance, for selectors without a function in this class.
    ComponentInstanceRecord* instance() const { return instance_; }

private:
    ComponentInstanceRecord* instance_ = nullptr;
};

} // namespace soundclient
