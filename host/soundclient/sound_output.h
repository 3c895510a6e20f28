// The client's side of a sound output component: finds and opens a registered component, and calls its
// functions through selectors.
#pragma once

#include <cstdint>
#include <stdexcept>

struct ComponentInstanceRecord;
struct OpaqueSoundSource;
struct SoundParamBlock;

namespace soundclient {

/// The component or the platform has refused a call.
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

/// The component has no entry point, because its plug-in runs in the development environment.
class NoEntryPoint : public Refusal {
public:
    explicit NoEntryPoint(std::int32_t status);
};

/// The format of samples that the component plays without conversion.
struct OutputForm {
    int channels = 0;
    int bits = 0;    ///< bits per sample
    double rate = 0; ///< sample rate, Hz
};

/// The handle of a source: a queue of sound buffers in the component.
using Source = OpaqueSoundSource*;

/// Opens a sound output component, initialises its device and plays buffers through it. Calls of the
/// functions must not overlap.
/// Errors  every function throws Refusal.
/// [any]
class SoundOutput {
public:
    /// Open the sound output component that was registered last with this subtype and manufacturer.
    /// Errors  throws also NoComponent and NoEntryPoint, which are kinds of Refusal.
    SoundOutput(std::uint32_t subType, std::uint32_t manufacturer);
    ~SoundOutput();
    SoundOutput(const SoundOutput&) = delete;
    SoundOutput& operator=(const SoundOutput&) = delete;

    OutputForm form() const;

    Source addSource();
    /// Remove a source. After the return, the component no longer uses the buffers of the source.
    void removeSource(Source source);

    /// Add a buffer to the queue of the source. If the source is not playing, the call also starts it, unless
    /// `isPaused` is true. After the buffer has played, the audio thread calls its completion routine.
    void play(Source source, SoundParamBlock& buffer, bool isPaused = false);

    void start(Source source);
    void pause(Source source); ///< stops the sound; the buffers stay in the queue
    void stop(Source source);  ///< drops the buffers in the queue without calling their completion routines

    /// The open instance of the component, for selectors that no function of this class sends.
    ComponentInstanceRecord* instance() const { return instance_; }

private:
    ComponentInstanceRecord* instance_ = nullptr;
};

} // namespace soundclient
