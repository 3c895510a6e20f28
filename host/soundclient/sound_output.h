// A sound output component, as a program that plays sees it: found by what it is, opened, sent selectors.
#pragma once

#include <cstdint>
#include <stdexcept>

struct ComponentInstanceRecord;
struct OpaqueSoundSource;
struct SoundParamBlock;

namespace soundclient {

/// What a component, or the platform in front of it, said no to.
class Refusal : public std::runtime_error {
public:
    Refusal(const char* what, std::int32_t status);

    std::int32_t status() const { return status_; } ///< the platform's

private:
    std::int32_t status_;
};

/// There is no such component.
class NoComponent : public Refusal {
public:
    NoComponent();
};

/// There is one, without a function to call: what a plug-in registers where components cannot be used.
class NoEntryPoint : public Refusal {
public:
    explicit NoEntryPoint(std::int32_t status);
};

/// What an output plays as it is.
struct OutputForm {
    int channels = 0;
    int bits = 0;    ///< of a sample
    double rate = 0; ///< Hz
};

/// One of a component's sources of sound.
using Source = OpaqueSoundSource*;

/// An open component whose device is initialised.
/// Thread  [any], one call at a time.
/// Errors  Refusal, and what stands there.
class SoundOutput {
public:
    /// Open the sound output device component of this subtype and manufacturer that was registered last.
    /// Throws NoComponent and NoEntryPoint, too.
    SoundOutput(std::uint32_t subType, std::uint32_t manufacturer);
    ~SoundOutput();
    SoundOutput(const SoundOutput&) = delete;
    SoundOutput& operator=(const SoundOutput&) = delete;

    OutputForm form() const;

    Source addSource();
    void removeSource(Source source); ///< afterwards none of its buffers is used

    /// Queue a buffer behind those that wait. Its completion routine is called on the audio thread. A source
    /// that is not playing begins with it, unless it is to be paused.
    void play(Source source, SoundParamBlock& buffer, bool isPaused = false);

    void start(Source source);
    void pause(Source source); ///< what waits goes on waiting
    void stop(Source source);  ///< what waits is dropped; its completion routines are not called

    /// The component's own, for what is not done here.
    ComponentInstanceRecord* instance() const { return instance_; }

private:
    ComponentInstanceRecord* instance_ = nullptr;
};

} // namespace soundclient
