// A sound output component for tests: it logs its calls, and completes buffers when the test says so.
#pragma once

#include <Carbon/Carbon.h>

#include <map>
#include <string>
#include <vector>

namespace soundclient {

/// The component is registered while the object exists. Only one object may exist.
class RegisteredComponent {
public:
    static constexpr OSType subType = 'tSub', manufacturer = 'tMan';

    explicit RegisteredComponent(bool hasEntryPoint = true);
    ~RegisteredComponent();
    RegisteredComponent(const RegisteredComponent&) = delete;
    RegisteredComponent& operator=(const RegisteredComponent&) = delete;

    /// Number of open instances.
    long instances() const { return CountComponentInstances(component_); }

    /// Complete the oldest queued buffer, as after playing it.
    void completeOne();

    std::vector<std::string> calls;             ///< log of the calls, such as "start 1 source 7"
    std::map<SInt16, ComponentResult> refusals; ///< results of selectors that fail
    short channels = 2, bits = 16;
    UnsignedFixed rate = 0xAC440000; // 44100
    std::vector<SoundParamBlockPtr> queued;

private:
    static ComponentResult enter(ComponentParameters* parameters, Handle storage);
    ComponentResult answer(ComponentParameters& parameters);
    ComponentResult getInfo(OSType what, void* out);

    Component component_;
};

} // namespace soundclient
