// A sound output component of a test's own: notes what it is asked, and hands buffers back by hand.
#pragma once

#include <Carbon/Carbon.h>

#include <map>
#include <string>
#include <vector>

namespace soundclient {

/// Registered while it lives. One at a time.
class RegisteredComponent {
public:
    static constexpr OSType subType = 'tSub', manufacturer = 'tMan';

    explicit RegisteredComponent(bool hasEntryPoint = true);
    ~RegisteredComponent();
    RegisteredComponent(const RegisteredComponent&) = delete;
    RegisteredComponent& operator=(const RegisteredComponent&) = delete;

    /// Instances open now.
    long instances() const { return CountComponentInstances(component_); }

    /// The oldest buffer that waits has been played.
    void finishOne();

    std::vector<std::string> asked;           ///< "start 1 source 7", …, in order
    std::map<SInt16, ComponentResult> refuse; ///< by selector
    short channels = 2, bits = 16;
    UnsignedFixed rate = 0xAC440000; // 44100
    std::vector<SoundParamBlockPtr> waiting;

private:
    static ComponentResult enter(ComponentParameters* parameters, Handle storage);
    ComponentResult answer(ComponentParameters& parameters);
    ComponentResult tell(OSType what, void* place);

    Component component_;
};

} // namespace soundclient
