#include "tests/soundstream/stream_fixture.h"

#include "soundstream/render.h"
#include "tests/support/c_library_spy.h"

#include <algorithm>

namespace soundstream_test {

StreamTest::StreamTest()
{
    soundComponentEntry = soundStreamDispatcher;
    startOver();
}

StreamTest::~StreamTest()
{
    expectNothingLeft();
    soundComponentEntry = nullptr;
}

void StreamTest::startOver()
{
    if (object_) expectNothingLeft();
    object_.reset();
    sound_spy::reset();
    object_.emplace();
    spy::name(&unit_, "unit");
    spy::name(reinterpret_cast<void*>(soundStreamDispatcher), "the dispatcher");
    spy::name(reinterpret_cast<void*>(&soundstream::renderFromMixer), "renderFromMixer");
    spy::name(reinterpret_cast<void*>(&soundstream::giveMixerSamples), "giveMixerSamples");
}

void StreamTest::open()
{
    object().initComponent();
    object().openComponent();
    spy::name(object().state(), "the state");
    spy::forgetCalls();
}

ComponentInstance StreamTest::openInstance()
{
    const ComponentInstance instance = sound_spy::newInstance();
    EXPECT_EQ(send(instance, -1, {reinterpret_cast<long>(instance)}), noErr);
    instances_.push_back(instance);
    spy::forgetCalls();
    return instance;
}

ComponentInstance StreamTest::openInstanceWithMixer()
{
    const ComponentInstance instance = openInstance();
    EXPECT_EQ(send(instance, 1, {0}), noErr);
    spy::forgetCalls();
    return instance;
}

ComponentResult StreamTest::sendWith(Handle storage, SInt16 selector, std::initializer_list<long> words)
{
    struct {
        ComponentParameters parameters;
        long more[8];
    } request = {{0, static_cast<UInt8>(words.size() * sizeof(long)), selector, {0}}, {}};
    std::copy(words.begin(), words.end(), request.parameters.params);
    spy::name(&request.parameters, "the request");
    return dispatcher()(&request.parameters, storage);
}

ComponentResult StreamTest::send(ComponentInstance instance, SInt16 selector,
                                 std::initializer_list<long> words)
{
    return sendWith(sound_spy::storageOf(instance), selector, words);
}

void StreamTest::closeInstance(ComponentInstance instance)
{
    EXPECT_EQ(send(instance, -2, {reinterpret_cast<long>(instance)}), noErr);
    instances_.erase(std::remove(instances_.begin(), instances_.end(), instance), instances_.end());
}

void StreamTest::expectNothingLeft()
{
    spy::script().answers.clear();
    spy::script().inEachCall = nullptr;
    sound_spy::platform().callsHandlers = true;
    object().destroy();
    while (!instances_.empty()) closeInstance(instances_.back());
    EXPECT_TRUE(object().isUntouchedAround()) << "the object is written to outside its class data";
    EXPECT_EQ(spy::live(), Notes()) << "platform objects are left";
    EXPECT_EQ(spy::faults(), Notes());
    for (const std::string& call : spy::calls())
        EXPECT_NE(call.substr(0, 21), "AudioConverterDispose") << "the converter is never disposed";
    EXPECT_EQ(c_library_spy::liveBlocks(), 0) << "no record stays allocated";
}

} // namespace soundstream_test
