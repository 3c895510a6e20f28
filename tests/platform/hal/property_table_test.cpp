// The value of every selector of every kind of object, at every scope and element.
#include "tests/platform/hal/selectors.h"
#include "tests/platform/hal/test_device.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cctype>
#include <cstdio>
#include <set>

namespace {

using namespace haltest;

constexpr AudioObjectPropertyScope scopes[] = {
    kAudioObjectPropertyScopeGlobal, kAudioDevicePropertyScopeInput, kAudioDevicePropertyScopeOutput};
constexpr UInt32 elements = 4; // number of tested elements: elements 0 to 3

/// The expected value of a selector, and the addresses at which the property is present.
struct Fact {
    UInt32 selector;
    /// For the global, input and output scopes in turn, an x at each of the elements 0 to 3 that exists.
    const char* where;
    UInt32 size; ///< size of the value in bytes
    bool isSettable;
    const char* value; ///< value as the functions below print it; "=" and a code for an error status
};

const char* const anywhere = "x... x... x...";
const char* const atOutput = "x... .... x..."; // addresses of a device with two outputs
const char* const atInput = "x... x... ....";  // addresses of a device with one input
constexpr bool settable = true, fixed = false;
constexpr UInt32 word = 4, string = sizeof(CFStringRef), range = sizeof(AudioValueRange), rate = 8;
constexpr UInt32 format = sizeof(AudioStreamBasicDescription), layout = sizeof(AudioChannelLayout);
constexpr UInt32 translation = sizeof(AudioValueTranslation), ranged = sizeof(AudioStreamRangedDescription);
constexpr UInt32 usage = sizeof(AudioHardwareIOProcStreamUsage), list = sizeof(AudioBufferList);
constexpr UInt32 emptyList = offsetof(AudioBufferList, mBuffers);

// clang-format off
/// A simulated device with two outputs: 12345 Hz, slices of 256 frames, a latency of 17 frames.
const Fact outputFacts[] = {
    {'clas', anywhere,         word,        fixed,    "adev"},
    {'stdv', anywhere,         word,        fixed,    "system"},
    {'ownd', anywhere,         word,        fixed,    "stream"},
    {'lnam', anywhere,         string,      fixed,    "Table"},
    {'lmak', anywhere,         string,      fixed,    "KVX Audio"},
    {'lchn', ".x.. .... .x..", string,      fixed,    "Left"},
    {'lchn', "..x. .... ..x.", string,      fixed,    "Right"},
    {'lccn', ".xx. .... .xx.", string,      fixed,    "Output"},
    {'lcnn', ".x.. .... .x..", string,      fixed,    "1"},
    {'lcnn', "..x. .... ..x.", string,      fixed,    "2"},
    {'name', anywhere,         6,           fixed,    "Table"},
    {'makr', anywhere,         10,          fixed,    "KVX Audio"},
    {'chnm', ".x.. .... .x..", 5,           fixed,    "Left"},
    {'chnm', "..x. .... ..x.", 6,           fixed,    "Right"},
    {'ccnm', ".xx. .... .xx.", 7,           fixed,    "Output"},
    {'cnnm', ".x.. .... .x..", 2,           fixed,    "1"},
    {'cnnm', "..x. .... ..x.", 2,           fixed,    "2"},
    {'uid ', anywhere,         string,      fixed,    "kvx:test:table"},
    {'muid', anywhere,         string,      fixed,    "KVX Audio"},
    {'tran', anywhere,         word,        fixed,    "virt"},
    {'akin', anywhere,         word,        fixed,    "device"},
    {'clkd', anywhere,         word,        fixed,    "0"},
    {'livn', anywhere,         word,        fixed,    "1"},
    {'diff', anywhere,         word,        fixed,    "0"},
    {'goin', anywhere,         word,        fixed,    "0"},
    {'gone', anywhere,         word,        fixed,    "0"},
    {'dflt', atOutput,         word,        fixed,    "1"},
    {'dflt', ".... x... ....", word,        fixed,    "0"},
    {'sflt', atOutput,         word,        fixed,    "1"},
    {'sflt', ".... x... ....", word,        fixed,    "0"},
    {'over', anywhere,         word,        fixed,    "0"},
    {'oink', anywhere,         word,        settable, "4294967295"},
    {'ltnc', anywhere,         word,        fixed,    "17"},
    {'saft', anywhere,         word,        fixed,    "0"},
    {'fsiz', anywhere,         word,        settable, "256"},
    {'fsz#', anywhere,         range,       fixed,    "1..8192"},
    {'bsiz', atOutput,         word,        settable, "2048"},
    {'bsz#', atOutput,         range,       fixed,    "8..65536"},
    {'mix?', anywhere,         word,        fixed,    "1"},
    {'ncyc', anywhere,         word,        settable, "1"},
    // The expected status, because the caller's buffer names no procedure.
    {'suse', anywhere,         usage,       settable, "=nope"},
    {'nsrt', anywhere,         rate,        settable, "12345"},
    {'asrt', anywhere,         rate,        fixed,    "12345"},
    {'nsr#', anywhere,         range,       fixed,    "1000..768000"},
    {'stm#', atOutput,         word,        fixed,    "stream"},
    {'stm#', ".... x... ....", 0,           fixed,    ""},
    {'slay', atOutput,         list,        fixed,    nullptr},
    {'slay', ".... x... ....", emptyList,   fixed,    nullptr},
    {'sfmt', "xxx. .... xxx.", format,      settable, "12345 lpcm 9 8 1 8 2 32 0"},
    {'sfm#', "xxx. .... xxx.", format * 14, fixed,    "8000/2 11025/2 16000/2 22050/2 24000/2 32000/2 44100/2 "
                                                      "48000/2 64000/2 88200/2 96000/2 176400/2 192000/2 12345/2"},
    // A request with an empty format is supported.
    {'sfm?', "xxx. .... xxx.", format,      fixed,    "0 .... 0 0 0 0 0 0 0"},
    {'sfmm', "xxx. .... xxx.", format,      fixed,    "12345 lpcm 9 8 1 8 2 32 0"},
    {'dch2', atOutput,         word * 2,    fixed,    nullptr},
    {'srnd', atOutput,         layout,      fixed,    nullptr},
    {'hidn', anywhere,         word,        fixed,    "0"},
    {'volm', ".xx. .... .xx.", word,        settable, "1"},
    {'vold', ".xx. .... .xx.", word,        settable, "0"},
    {'vdb#', ".xx. .... .xx.", range,       fixed,    "-64..0"},
    {'v2db', ".xx. .... .xx.", word,        fixed,    "-64"}, // expected decibels for a scalar of 0
    {'db2v', ".xx. .... .xx.", word,        fixed,    "1"}, // expected scalar for 0 dB
    {'mute', "xxx. .... xxx.", word,        settable, "0"},
    {'ssrc', atOutput,         word,        settable, "spkr"},
    {'ssc#', atOutput,         word * 2,    fixed,    "spkr hdpn"},
    {'sscn', atOutput,         translation, fixed,    "=!siz"}, // expected status for an empty translation
    {'lscn', atOutput,         translation, fixed,    "=!siz"},
};

/// The simulated input device: one channel, 44100 Hz, slices of 512 frames.
const Fact inputFacts[] = {
    {'clas', anywhere,         word,        fixed,    "adev"},
    {'stdv', anywhere,         word,        fixed,    "system"},
    {'ownd', anywhere,         word,        fixed,    "stream"},
    {'lnam', anywhere,         string,      fixed,    "Simulated Input"},
    {'lmak', anywhere,         string,      fixed,    "KVX Audio"},
    {'lchn', ".x.. .x.. ....", string,      fixed,    "Channel 1"},
    {'lccn', ".x.. .x.. ....", string,      fixed,    "Input"},
    {'lcnn', ".x.. .x.. ....", string,      fixed,    "1"},
    {'name', anywhere,         16,          fixed,    "Simulated Input"},
    {'makr', anywhere,         10,          fixed,    "KVX Audio"},
    {'chnm', ".x.. .x.. ....", 10,          fixed,    "Channel 1"},
    {'ccnm', ".x.. .x.. ....", 6,           fixed,    "Input"},
    {'cnnm', ".x.. .x.. ....", 2,           fixed,    "1"},
    {'uid ', anywhere,         string,      fixed,    "kvx:simulated:input"},
    {'muid', anywhere,         string,      fixed,    "KVX Audio"},
    {'tran', anywhere,         word,        fixed,    "virt"},
    {'akin', anywhere,         word,        fixed,    "device"},
    {'clkd', anywhere,         word,        fixed,    "0"},
    {'livn', anywhere,         word,        fixed,    "1"},
    {'diff', anywhere,         word,        fixed,    "0"},
    {'goin', anywhere,         word,        fixed,    "0"},
    {'gone', anywhere,         word,        fixed,    "0"},
    {'dflt', atInput,          word,        fixed,    "1"},
    {'dflt', ".... .... x...", word,        fixed,    "0"},
    {'sflt', atInput,          word,        fixed,    "1"},
    {'sflt', ".... .... x...", word,        fixed,    "0"},
    {'over', anywhere,         word,        fixed,    "0"},
    {'oink', anywhere,         word,        settable, "4294967295"},
    {'ltnc', anywhere,         word,        fixed,    "0"},
    {'saft', anywhere,         word,        fixed,    "0"},
    {'fsiz', anywhere,         word,        settable, "512"},
    {'fsz#', anywhere,         range,       fixed,    "1..8192"},
    {'bsiz', atInput,          word,        settable, "2048"},
    {'bsz#', atInput,          range,       fixed,    "4..32768"},
    {'mix?', anywhere,         word,        fixed,    "1"},
    {'ncyc', anywhere,         word,        settable, "1"},
    {'suse', anywhere,         usage,       settable, "=nope"},
    {'nsrt', anywhere,         rate,        settable, "44100"},
    {'asrt', anywhere,         rate,        fixed,    "44100"},
    {'nsr#', anywhere,         range,       fixed,    "1000..768000"},
    {'stm#', atInput,          word,        fixed,    "stream"},
    {'stm#', ".... .... x...", 0,           fixed,    ""},
    {'slay', atInput,          list,        fixed,    nullptr},
    {'slay', ".... .... x...", emptyList,   fixed,    nullptr},
    {'sfmt', "xx.. xx.. ....", format,      settable, "44100 lpcm 9 4 1 4 1 32 0"},
    {'sfm#', "xx.. xx.. ....", format * 13, fixed,    "8000/1 11025/1 16000/1 22050/1 24000/1 32000/1 44100/1 "
                                                      "48000/1 64000/1 88200/1 96000/1 176400/1 192000/1"},
    {'sfm?', "xx.. xx.. ....", format,      fixed,    "0 .... 0 0 0 0 0 0 0"},
    {'sfmm', "xx.. xx.. ....", format,      fixed,    "44100 lpcm 9 4 1 4 1 32 0"},
    {'dch2', atInput,          word * 2,    fixed,    nullptr},
    {'srnd', atInput,          layout,      fixed,    nullptr},
    {'hidn', anywhere,         word,        fixed,    "0"},
    {'ssrc', atInput,          word,        settable, "imic"},
    {'ssc#', atInput,          word,        fixed,    "imic"},
    {'sscn', atInput,          translation, fixed,    "=!siz"},
    {'lscn', atInput,          translation, fixed,    "=!siz"},
};

const Fact outputStreamFacts[] = {
    {'clas', anywhere, word,        fixed,    "astr"},
    {'stdv', anywhere, word,        fixed,    "device"},
    {'sdir', anywhere, word,        fixed,    "0"},
    {'term', anywhere, word,        fixed,    "spkr"},
    {'schn', anywhere, word,        fixed,    "1"},
    {'ltnc', anywhere, word,        fixed,    "0"},
    {'sfmt', anywhere, format,      settable, "12345 lpcm 9 8 1 8 2 32 0"},
    // A format with a rate of 0 stands for any rate in the range.
    {'sfma', anywhere, ranged,      fixed,    "0/2 1000..768000"},
    {'pft ', anywhere, format,      settable, "12345 lpcm 9 8 1 8 2 32 0"},
    {'pfta', anywhere, ranged,      fixed,    "0/2 1000..768000"},
    {'pft#', anywhere, format * 14, fixed,    "8000/2 11025/2 16000/2 22050/2 24000/2 32000/2 44100/2 "
                                              "48000/2 64000/2 88200/2 96000/2 176400/2 192000/2 12345/2"},
    {'pft?', anywhere, format,      fixed,    "0 .... 0 0 0 0 0 0 0"},
    {'pftm', anywhere, format,      fixed,    "12345 lpcm 9 8 1 8 2 32 0"},
};

const Fact inputStreamFacts[] = {
    {'clas', anywhere, word,        fixed,    "astr"},
    {'stdv', anywhere, word,        fixed,    "device"},
    {'sdir', anywhere, word,        fixed,    "1"},
    {'term', anywhere, word,        fixed,    "micr"},
    {'schn', anywhere, word,        fixed,    "1"},
    {'ltnc', anywhere, word,        fixed,    "0"},
    {'sfmt', anywhere, format,      settable, "44100 lpcm 9 4 1 4 1 32 0"},
    {'sfma', anywhere, ranged,      fixed,    "0/1 1000..768000"},
    {'pft ', anywhere, format,      settable, "44100 lpcm 9 4 1 4 1 32 0"},
    {'pfta', anywhere, ranged,      fixed,    "0/1 1000..768000"},
    {'pft#', anywhere, format * 13, fixed,    "8000/1 11025/1 16000/1 22050/1 24000/1 32000/1 44100/1 "
                                              "48000/1 64000/1 88200/1 96000/1 176400/1 192000/1"},
    {'pft?', anywhere, format,      fixed,    "0 .... 0 0 0 0 0 0 0"},
    {'pftm', anywhere, format,      fixed,    "44100 lpcm 9 4 1 4 1 32 0"},
};

/// The default output is the built-in device and the default input is the simulated input; the tested device
/// is the third device.
const Fact systemFacts[] = {
    {'dev#', anywhere, word * 3,    fixed,    "built-in input device"},
    {'dIn ', anywhere, word,        settable, "input"},
    {'dOut', anywhere, word,        settable, "built-in"},
    {'sOut', anywhere, word,        settable, "built-in"},
    {'duid', anywhere, translation, fixed,    "=!siz"},
    {'mast', anywhere, word,        fixed,    "1"},
    {'inot', anywhere, word,        fixed,    "0"},
    {'pmut', anywhere, word,        fixed,    "1"},
    {'slep', anywhere, word,        settable, "1"},
    {'unld', anywhere, word,        settable, "0"},
    {'hogr', anywhere, word,        fixed,    "1"},
    {'user', anywhere, word,        fixed,    "1"},
    {'stmo', anywhere, word,        fixed,    "0"},
    {'clas', anywhere, word,        fixed,    "asys"},
    {'stdv', anywhere, word,        fixed,    "0"},
    {'ownd', anywhere, word * 3,    fixed,    "built-in input device"},
};
// clang-format on

/// An object, the facts about its properties, and the names of the other objects in its values.
struct Subject {
    AudioObjectID id;
    std::vector<Fact> facts;
    std::vector<Selector> selectors;
    std::vector<std::pair<UInt32, std::string>> names;
};

bool isPresent(const Fact& fact, UInt32 selector, std::size_t scope, UInt32 element)
{
    return fact.selector == selector && fact.where[scope * (elements + 1) + element] == 'x';
}

const Fact* findFact(const Subject& subject, UInt32 selector, std::size_t scope, UInt32 element)
{
    for (const Fact& fact : subject.facts)
        if (isPresent(fact, selector, scope, element)) return &fact;
    return nullptr;
}

// ---- values as text ----

std::string print(double number)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.9g", number);
    return buffer;
}

std::string printCode(UInt32 code)
{
    std::string four = text(code);
    for (char& c : four)
        if (!std::isprint(static_cast<unsigned char>(c))) c = '.';
    return four;
}

template <class T>
T take(const std::vector<char>& bytes, std::size_t index = 0)
{
    T item;
    std::memcpy(&item, bytes.data() + index * sizeof item, sizeof item);
    return item;
}

std::string printWord(const Subject& subject, UInt32 selector, UInt32 value)
{
    const bool isCode = std::isprint(static_cast<int>(value >> 24)) && value >= 0x20000000;
    if (isCode) return text(value);
    for (UInt32 object : {'stdv', 'ownd', 'akin', 'stm#', 'dev#', 'dIn ', 'dOut', 'sOut'})
        if (selector == object)
            for (const auto& name : subject.names)
                if (name.first == value) return name.second;
    return std::to_string(value);
}

std::string print(const AudioValueRange& r) { return print(r.mMinimum) + ".." + print(r.mMaximum); }

std::string printShort(const AudioStreamBasicDescription& f)
{
    return print(f.mSampleRate) + "/" + std::to_string(f.mChannelsPerFrame);
}

std::string print(const AudioStreamBasicDescription& f)
{
    std::string line = print(f.mSampleRate) + " " + printCode(f.mFormatID);
    for (UInt32 number : {f.mFormatFlags, f.mBytesPerPacket, f.mFramesPerPacket, f.mBytesPerFrame,
                          f.mChannelsPerFrame, f.mBitsPerChannel, f.mReserved})
        line += " " + std::to_string(number);
    return line;
}

/// Return the text of a string, and release the string.
std::string printString(CFStringRef value)
{
    if (!value) return "(none)";
    char buffer[200] = "";
    CFStringGetCString(value, buffer, sizeof buffer, kCFStringEncodingUTF8);
    CFRelease(value);
    return buffer;
}

template <class T, class Print>
std::string printAll(const std::vector<char>& bytes, Print printOne)
{
    std::string line;
    for (std::size_t i = 0; i < bytes.size() / sizeof(T); ++i)
        line += (i ? " " : "") + printOne(take<T>(bytes, i));
    return line;
}

std::string print(const Subject& subject, const Selector& selector, const std::vector<char>& bytes)
{
    const auto asWord = [&](UInt32 value) { return printWord(subject, selector.code, value); };
    switch (selector.kind) {
    case Kind::word:
        return asWord(take<UInt32>(bytes));
    case Kind::words:
        return printAll<UInt32>(bytes, asWord);
    case Kind::single:
        return print(double{take<Float32>(bytes)});
    case Kind::real:
        return print(take<Float64>(bytes));
    case Kind::string:
        return printString(take<CFStringRef>(bytes));
    case Kind::text:
        EXPECT_EQ(bytes.back(), '\0');
        return bytes.data();
    case Kind::range:
        return print(take<AudioValueRange>(bytes));
    case Kind::ranges:
        return printAll<AudioValueRange>(bytes, [](const AudioValueRange& r) { return print(r); });
    case Kind::format:
        return print(take<AudioStreamBasicDescription>(bytes));
    case Kind::formats:
        return printAll<AudioStreamBasicDescription>(bytes, printShort);
    case Kind::ranged:
        return printAll<AudioStreamRangedDescription>(bytes, [](const AudioStreamRangedDescription& r) {
            return printShort(r.mFormat) + " " + print(r.mSampleRateRange);
        });
    default:
        return "(a record)";
    }
}

// ---- all addresses ----

class PropertyTable : public testing::Test {
protected:
    static KVXSimulatedDevice description()
    {
        KVXSimulatedDevice result = Device::stepped();
        result.name = "Table";
        result.uid = "kvx:test:table";
        result.sampleRate = 12345;
        result.sliceFrames = 256;
        result.latencyFrames = 17;
        return result;
    }

    template <std::size_t n>
    Subject subject(AudioObjectID id, const Fact (&facts)[n], const std::vector<Selector>& selectors,
                    AudioDeviceID device, AudioStreamID stream)
    {
        return {id,
                {facts, facts + n},
                selectors,
                {{kAudioObjectSystemObject, "system"}, {device, "device"}, {stream, "stream"}}};
    }

    std::vector<Subject> subjects()
    {
        Subject system = {
            kAudioObjectSystemObject,
            {std::begin(systemFacts), std::end(systemFacts)},
            systemSelectors,
            {{KVXPlatformBuiltInSimulatedDevice(), "built-in"}, {input_, "input"}, {device_, "device"}}};
        return {subject(device_, outputFacts, deviceSelectors, device_, outputStream_),
                subject(input_, inputFacts, deviceSelectors, input_, inputStream_),
                subject(outputStream_, outputStreamFacts, streamSelectors, device_, outputStream_),
                subject(inputStream_, inputStreamFacts, streamSelectors, input_, inputStream_), system};
    }

    /// Call `look` for every address of every object, with the fact at this address; the fact is null if the
    /// object has no such property.
    void walk(const std::function<void(const Subject&, const Selector&, const AudioObjectPropertyAddress&,
                                       const Fact*)>& look)
    {
        for (const Subject& subject : subjects())
            for (const Selector& selector : subject.selectors)
                for (std::size_t scope = 0; scope < std::size(scopes); ++scope)
                    for (UInt32 element = 0; element < elements; ++element) {
                        const auto at = address(selector.code, scopes[scope], element);
                        SCOPED_TRACE("'" + text(selector.code) + "' of " +
                                     text(get<UInt32>(subject.id, address('clas'))) + " " +
                                     std::to_string(subject.id) + " at " + text(at.mScope) + " " +
                                     std::to_string(element));
                        look(subject, selector, at, findFact(subject, selector.code, scope, element));
                    }
    }

    Device device_{description()};
    const AudioDeviceID input_ =
        get<AudioDeviceID>(kAudioObjectSystemObject, address(kAudioHardwarePropertyDefaultInputDevice));
    const AudioStreamID outputStream_ =
        getAll<AudioStreamID>(device_, address('stm#', kAudioDevicePropertyScopeOutput)).at(0);
    const AudioStreamID inputStream_ =
        getAll<AudioStreamID>(input_, address('stm#', kAudioDevicePropertyScopeInput)).at(0);
};

TEST_F(PropertyTable, HasEachSelectorOnceAtEachAddress)
{
    for (const Subject& subject : subjects()) {
        std::set<std::string> addresses;
        for (const Fact& fact : subject.facts) {
            EXPECT_TRUE(std::any_of(subject.selectors.begin(), subject.selectors.end(),
                                    [&](const Selector& s) { return s.code == fact.selector; }))
                << text(fact.selector);
            for (std::size_t scope = 0; scope < std::size(scopes); ++scope)
                for (UInt32 element = 0; element < elements; ++element)
                    if (isPresent(fact, fact.selector, scope, element))
                        EXPECT_TRUE(
                            addresses
                                .insert(text(fact.selector) + text(scopes[scope]) + std::to_string(element))
                                .second)
                            << text(fact.selector) << " has two facts";
        }
    }
}

TEST_F(PropertyTable, ReturnsTheStatedValues)
{
    const uint32_t strings = liveCount("CFString");
    walk([](const Subject& subject, const Selector& selector, const AudioObjectPropertyAddress& at,
            const Fact* fact) {
        UInt32 size = 0xCCCCCCCC;
        Boolean isSettable = 7;
        std::vector<char> bytes(4096);
        UInt32 capacity = static_cast<UInt32>(bytes.size());
        const OSStatus sized = AudioObjectGetPropertyDataSize(subject.id, &at, 0, nullptr, &size);
        const OSStatus settable = AudioObjectIsPropertySettable(subject.id, &at, &isSettable);
        const OSStatus read =
            AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &capacity, bytes.data());
        EXPECT_EQ(AudioObjectHasProperty(subject.id, &at), fact != nullptr);
        if (!fact) {
            for (OSStatus status : {sized, settable, read}) EXPECT_EQ(text(status), "who?");
            EXPECT_EQ(size, 0xCCCCCCCCu) << "nothing is written";
            EXPECT_EQ(isSettable, 7);
            EXPECT_EQ(capacity, bytes.size());
            return;
        }
        EXPECT_EQ(text(sized), text(noErr));
        EXPECT_EQ(text(settable), text(noErr));
        EXPECT_EQ(size, fact->size);
        EXPECT_EQ(isSettable != 0, fact->isSettable);
        if (fact->value && fact->value[0] == '=') {
            EXPECT_EQ(text(read), fact->value + 1);
            return;
        }
        ASSERT_EQ(text(read), text(noErr));
        EXPECT_EQ(capacity, fact->size);
        bytes.resize(capacity);
        if (fact->value) EXPECT_EQ(print(subject, selector, bytes), fact->value);
    });
    EXPECT_EQ(liveCount("CFString"), strings) << "the caller released every string";
}

/// The buffers are shorter than the value, null, and of the exact size.
TEST_F(PropertyTable, ValuesTextsAndLayoutsRequireTheirFullSize)
{
    walk([](const Subject& subject, const Selector& selector, const AudioObjectPropertyAddress& at,
            const Fact* fact) {
        const bool isList = selector.kind == Kind::words || selector.kind == Kind::ranges ||
                            selector.kind == Kind::formats || selector.kind == Kind::ranged;
        if (!fact || isList) return;
        std::vector<char> bytes(fact->size + 1, '\xCC');
        for (UInt32 capacity : {UInt32{0}, UInt32{1}, fact->size - 1}) {
            UInt32 size = capacity;
            EXPECT_EQ(text(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &size, bytes.data())),
                      "!siz")
                << capacity;
            EXPECT_EQ(size, capacity);
        }
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\xCC'), static_cast<std::ptrdiff_t>(bytes.size()));
        UInt32 size = fact->size;
        EXPECT_EQ(text(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &size, nullptr)), "nope");
        EXPECT_EQ(text(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, nullptr, bytes.data())),
                  "nope");
        if (fact->value && fact->value[0] == '=') return;
        std::fill(bytes.begin(), bytes.end() - 1, char{0}); // translations read their input from this buffer
        size = fact->size;
        EXPECT_EQ(text(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &size, bytes.data())),
                  text(noErr));
        EXPECT_EQ(bytes.back(), '\xCC') << "no write past the end";
        if (selector.kind == Kind::string) CFRelease(take<CFStringRef>(bytes));
    });
}

TEST_F(PropertyTable, ListsAreCutToWholeItems)
{
    const auto itemOf = [](Kind kind) -> UInt32 {
        switch (kind) {
        case Kind::words:
            return 4;
        case Kind::ranges:
            return range;
        case Kind::formats:
            return format;
        case Kind::ranged:
            return ranged;
        default:
            return 0;
        }
    };
    walk([&](const Subject& subject, const Selector& selector, const AudioObjectPropertyAddress& at,
             const Fact* fact) {
        const UInt32 item = itemOf(selector.kind);
        if (!fact || !item) return;
        std::vector<char> whole(fact->size + 8);
        UInt32 all = static_cast<UInt32>(whole.size());
        ASSERT_EQ(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &all, whole.data()), noErr);
        ASSERT_EQ(all, fact->size);
        for (UInt32 capacity = 0; capacity <= fact->size + 5;
             capacity += capacity < 2 * item ? 1 : item - 1) {
            std::vector<char> bytes(fact->size + 8, '\xCC');
            UInt32 size = capacity;
            ASSERT_EQ(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &size, bytes.data()), noErr)
                << capacity;
            ASSERT_EQ(size, std::min(capacity, fact->size) / item * item) << capacity;
            ASSERT_TRUE(
                std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size), whole.begin()));
            ASSERT_EQ(bytes[size], '\xCC');
        }
        UInt32 none = 0;
        EXPECT_EQ(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &none, nullptr), noErr)
            << "an empty list needs no buffer";
        if (!fact->size) return;
        UInt32 size = fact->size;
        EXPECT_EQ(text(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &size, nullptr)), "nope");
    });
}

TEST_F(PropertyTable, RefusesInvalidSets)
{
    walk([](const Subject& subject, const Selector&, const AudioObjectPropertyAddress& at, const Fact* fact) {
        std::vector<char> bytes(fact ? fact->size + 1 : 8);
        const auto setting = [&](std::size_t size, const void* data) {
            return text(
                AudioObjectSetPropertyData(subject.id, &at, 0, nullptr, static_cast<UInt32>(size), data));
        };
        if (!fact) {
            EXPECT_EQ(setting(4, bytes.data()), "who?");
        } else if (!fact->isSettable) {
            for (std::size_t size : {std::size_t{0}, std::size_t{fact->size}, bytes.size()})
                EXPECT_EQ(setting(size, bytes.data()), "unop") << size;
            EXPECT_EQ(setting(0, nullptr), "unop");
        } else {
            for (UInt32 size : {UInt32{0}, UInt32{1}, fact->size - 1, fact->size + 1})
                EXPECT_EQ(setting(size, bytes.data()), "!siz") << size;
            EXPECT_EQ(setting(fact->size, nullptr), "nope");
        }
    });
}

TEST_F(PropertyTable, RefusesWildcardsAndOtherScopes)
{
    for (const Subject& subject : subjects())
        for (const auto& at :
             {address(kAudioObjectPropertySelectorWildcard),
              address('clas', kAudioObjectPropertyScopeWildcard),
              address('clas', kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementWildcard),
              address('clas', kAudioDevicePropertyScopePlayThrough), address('clas', 0),
              address('clas', 0xFF), address(0)}) {
            SCOPED_TRACE(text(at.mSelector) + " " + text(at.mScope));
            UInt32 value = 0, size = sizeof value;
            EXPECT_EQ(text(AudioObjectGetPropertyData(subject.id, &at, 0, nullptr, &size, &value)), "who?");
            EXPECT_EQ(text(AudioObjectSetPropertyData(subject.id, &at, 0, nullptr, size, &value)), "who?");
            EXPECT_EQ(text(AudioObjectGetPropertyDataSize(subject.id, &at, 0, nullptr, &size)), "who?");
            EXPECT_FALSE(AudioObjectHasProperty(subject.id, &at));
        }
}

} // namespace
