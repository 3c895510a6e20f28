// A sound output component for tests: it logs each call that it receives, and plays no sound.
#pragma once

#include <Carbon/Carbon.h>

#include <map>
#include <string>
#include <vector>

namespace soundclient {

/// Registers the component while an object exists. Only one object may exist at a time.
class RegisteredComponent {
public:
    static constexpr OSType subType = 'tSub', manufacturer = 'tMan';

    explicit RegisteredComponent(bool hasEntryPoint = true);
    ~RegisteredComponent();
    RegisteredComponent(const RegisteredComponent&) = delete;
    RegisteredComponent& operator=(const RegisteredComponent&) = delete;

    /// The number of open instances of the component.
    long instances() const { return CountComponentInstances(component_); }

    /// Remove the oldest buffer from the queue and call its completion routine, as if the buffer had been
    /// played.
    void completeOne();

    std::vector<std::string> calls; ///< the calls that the component received, such as "start 1 source 7"
    std::map<SInt16, ComponentResult> refusals; ///< the statuses with which the component refuses selectors
    short channels = 2, bits = 16;
    UnsignedFixed rate = 0xAC440000;        // 44100 Hz, as a fixed-point number
    std::vector<SoundParamBlockPtr> queued; ///< the buffers in the queue, oldest first

private:
    static ComponentResult enter(ComponentParameters* parameters, Handle storage);
    ComponentResult answer(ComponentParameters& parameters);
    ComponentResult getInfo(OSType what, void* out);

    Component component_;
};

} // namespace soundclient
