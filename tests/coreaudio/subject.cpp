#include "tests/coreaudio/subject.h"

#include "coreaudio/core_audio.h"
#include "plugin/process_state.h"
#include "tests/support/service_caches.h"

#include <algorithm>
#include <cstring>

namespace subject {

static constexpr Word dataOffset = 48;

Subject::Subject() : memory_(new char[dataOffset + sizeof(coreaudio::CoreAudioData)])
{
    property_spy::reset();
    blocksBefore_ = c_library_spy::liveBlocks();
    coreAudioClass.dataOffset = dataOffset;
    std::memset(memory_.get(), 0x5A, dataOffset + sizeof(coreaudio::CoreAudioData));
    gResolver = fake::Host::resolve;
    startHost(2016.0);
}

Subject::~Subject()
{
    coreAudioClass.dataOffset = 0;
    for (std::size_t i = 0; i < dataOffset; ++i)
        if (memory_[i] != 0x5A) ADD_FAILURE() << "the object was changed outside its class data, at " << i;
    EXPECT_EQ(c_library_spy::liveBlocks(), blocksBefore_) << "some buffers were not freed";
}

void Subject::startHost(double version)
{
    host_.reset();
    host_ = std::make_unique<fake::Host>(version);
    rbversion_rbversion = version;
    forgetServices();
}

HostInteger& Subject::lasterror() { return *reinterpret_cast<HostInteger*>(memory_.get() + dataOffset); }

void Subject::throwInPlatform(const std::string& function)
{
    spy::answer(function).during = [] { throw Thrown(); };
}

void Subject::throwInHost(const std::string& service)
{
    host().inNext(service, [] { throw Thrown(); });
}

void Subject::watchFirstCall()
{
    firstSeen_.clear();
    const auto note = [this] {
        if (firstSeen_.empty()) firstSeen_.push_back(lasterror());
    };
    host().inEachCall = note;
    spy::script().inEachCall = [note](std::size_t) { note(); };
}

void Subject::expectBalance(const fake::Notes& live)
{
    fake::Notes found = host().live(); // live values in address order
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, live);
    EXPECT_EQ(host().faults(), fake::Notes());
}

} // namespace subject
