// Fixtures of device tests: a private device, procedures whose body is a lambda, and one-line property
// access.
#pragma once

#include <CoreAudio/CoreAudio.h>
#include <KVXPlatform/KVXPlatform.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace haltest {

/// The text of a four-character code.
std::string text(UInt32 code);

/// The arguments of one call of a procedure.
struct Call {
    AudioDeviceID device;
    const AudioTimeStamp* now;
    const AudioBufferList* input;
    const AudioTimeStamp* inputTime;
    AudioBufferList* output;
    const AudioTimeStamp* outputTime;

    UInt32 channels() const { return output->mNumberBuffers ? output->mBuffers[0].mNumberChannels : 0; }
    UInt32 frames() const { return channels() ? output->mBuffers[0].mDataByteSize / 4 / channels() : 0; }
    UInt32 samples() const { return frames() * channels(); }
    float* data() const { return static_cast<float*>(output->mBuffers[0].mData); }
    void fill(float value) const { std::fill_n(data(), samples(), value); }
};

/// A simulated device, which the destructor unplugs. By default it is stepped and stereo, with a rate of
/// 44100 Hz and slices of 64 frames.
class Device {
public:
    explicit Device(const KVXSimulatedDevice& description = stepped());
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    operator AudioDeviceID() const { return id_; }
    void unplug();

    static KVXSimulatedDevice stepped();
    static KVXSimulatedDevice paced();

private:
    AudioDeviceID id_;
};

/// A procedure with a unique ID, which the destructor removes.
class Procedure {
public:
    using Body = std::function<void(const Call&)>;

    Procedure(AudioDeviceID device, Body body);
    ~Procedure();
    Procedure(const Procedure&) = delete;
    Procedure& operator=(const Procedure&) = delete;

    OSStatus start() { return AudioDeviceStart(device_, id_); }
    OSStatus stop() { return AudioDeviceStop(device_, id_); }
    /// Remove the procedure. The function may be called inside the procedure itself.
    OSStatus remove();

    AudioDeviceIOProcID id() const { return id_; }
    int calls() const { return calls_; }

private:
    static OSStatus call(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* input,
                         const AudioTimeStamp* inputTime, AudioBufferList* output,
                         const AudioTimeStamp* outputTime, void* client);

    AudioDeviceID device_;
    AudioDeviceIOProcID id_ = nullptr;
    Body body_;
    std::atomic<int> calls_{0};
};

/// Records the output of a device, by means of the device's tap.
class Recording {
public:
    explicit Recording(AudioDeviceID device);
    ~Recording();
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    std::vector<float> samples;
    std::vector<UInt32> slices; ///< number of frames in each slice

private:
    static void take(void* context, const float* samples, uint32_t frames, uint32_t channels);
    AudioDeviceID device_;
};

// ---- properties ----

AudioObjectPropertyAddress address(AudioObjectPropertySelector selector,
                                   AudioObjectPropertyScope scope = kAudioObjectPropertyScopeGlobal,
                                   AudioObjectPropertyElement element = 0);

template <class T>
T get(AudioObjectID object, const AudioObjectPropertyAddress& at)
{
    T value = {};
    UInt32 size = sizeof value;
    EXPECT_EQ(AudioObjectGetPropertyData(object, &at, 0, nullptr, &size, &value), noErr)
        << text(at.mSelector);
    EXPECT_EQ(size, sizeof value) << text(at.mSelector);
    return value;
}

template <class T>
std::vector<T> getAll(AudioObjectID object, const AudioObjectPropertyAddress& at)
{
    UInt32 size = 0;
    EXPECT_EQ(AudioObjectGetPropertyDataSize(object, &at, 0, nullptr, &size), noErr) << text(at.mSelector);
    std::vector<T> values(size / sizeof(T));
    EXPECT_EQ(AudioObjectGetPropertyData(object, &at, 0, nullptr, &size, values.data()), noErr)
        << text(at.mSelector);
    values.resize(size / sizeof(T));
    return values;
}

template <class T>
OSStatus set(AudioObjectID object, const AudioObjectPropertyAddress& at, const T& value)
{
    return AudioObjectSetPropertyData(object, &at, 0, nullptr, sizeof value, &value);
}

AudioDeviceID defaultOutput();

/// The platform's number of live objects of a kind, such as "CFString".
uint32_t liveCount(const std::string& kind);

/// Wait until `condition` is true. The only time limit is that of the whole test.
void waitFor(const std::function<bool()>& condition);

} // namespace haltest
