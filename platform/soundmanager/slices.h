// When a slice is over: what clients wait for before they take something away from the audio thread.
#pragma once

#include <MacTypes.h>

#include <atomic>

namespace kvxplatform::soundmanager {

class Slices {
public:
    /// The turn to make a slice, for as long as this lives; false while another has it. [audio]
    class Turn {
    public:
        explicit Turn(Slices& slices);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        explicit operator bool() const { return isOurs; }

    private:
        Slices& slices;
        const bool isOurs;
    };

    /// The slice under way, or the next one.
    UInt32 current() const { return over; }

    /// Whether a slice that was under way is over. Slices that begin later are not waited for.
    bool isOver(UInt32 slice) const { return !isUnderWay || over != slice; }

    /// Wait until what is under way is over. Inside a slice of any mixer at once: two threads in there could
    /// wait for each other for ever. [any]
    void wait() const;

private:
    std::atomic<bool> isUnderWay{false};
    std::atomic<UInt32> over{0}; // how many are; it wraps
};

} // namespace kvxplatform::soundmanager
