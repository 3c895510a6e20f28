// The property family's questions for size and writability.
#include "tests/coreaudio/targets.h"

namespace {

using namespace subject;
using property_spy::Notes;

constexpr OSStatus unknown = 0x77686F3F; // 'who?'
const std::optional<UInt32> silent;
const std::optional<Boolean> silentToo;

class PropertyInfo : public Subject {
protected:
    template <class Test>
    void forAll(Test test)
    {
        for (std::size_t i = 0; i < 4; ++i) {
            property_spy::reset();
            const Text selector = host().newString(selectorText, encodingASCII);
            const Target target = targets(selector)[i];
            SCOPED_TRACE(target.name);
            lasterror() = 4711;
            test(target);
            host().drop(selector);
            expectBalance();
        }
    }
};

TEST_F(PropertyInfo, HoldsWhatThePlatformLeft)
{
    const struct {
        const char* why;
        OSStatus status;
        std::optional<UInt32> told;
        std::optional<Boolean> writable;
        UInt32 size;
        HostBoolean isWritable;
    } rows[] = {
        {"a property that can be written", 0, 12, Boolean{1}, 12, 1},
        {"one that cannot", 0, 4, Boolean{0}, 4, 0},
        {"an empty one", 0, 0, Boolean{1}, 0, 1},
        {"sizes of all 32 bits", 0, 0xFFFFFFFF, Boolean{1}, 0xFFFFFFFF, 1},
        {"an error that tells nothing", unknown, silent, silentToo, 0, 0},
        {"an error that tells both", unknown, 16, Boolean{1}, 16, 1},
        {"an error that tells the size", -1, 16, silentToo, 16, 0},
        {"success without a word", 0, silent, silentToo, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        forAll([&](const Target& target) {
            property_spy::answer(target.infoFunction()).status = row.status;
            property_spy::answer(target.infoFunction()).size = row.told;
            property_spy::answer(target.infoFunction()).writable = row.writable;
            HostInteger size = 0x5A5A5A5A;
            HostBoolean writeable[3] = {0x5A, 0x5A, 0x5A};
            target.getInfo(object(), &size, &writeable[1]);
            EXPECT_EQ(property_spy::calls(), Notes{target.infoCall("0")});
            EXPECT_EQ(static_cast<UInt32>(size), row.size);
            EXPECT_EQ(writeable[1], row.isWritable);
            EXPECT_TRUE(writeable[0] == 0x5A && writeable[2] == 0x5A) << "a Boolean is one byte";
            EXPECT_EQ(lasterror(), row.status);
        });
    }
}

TEST_F(PropertyInfo, IsZeroAndFalseWhileThePlatformIsAsked)
{
    forAll([&](const Target& target) {
        HostInteger size = 4711, sizeMeanwhile = 0, lasterrorMeanwhile = 0;
        HostBoolean writeable = 1, writeableMeanwhile = 0;
        property_spy::answer(target.infoFunction()).during = [&] {
            sizeMeanwhile = size;
            writeableMeanwhile = writeable;
            lasterrorMeanwhile = lasterror();
        };
        sizeMeanwhile = writeableMeanwhile = 1;
        target.getInfo(object(), &size, &writeable);
        EXPECT_EQ(sizeMeanwhile, 0);
        EXPECT_EQ(writeableMeanwhile, 0);
        EXPECT_EQ(lasterrorMeanwhile, -1);
    });
}

TEST_F(PropertyInfo, IsZeroAndFalseWhenThePlatformThrows)
{
    forAll([&](const Target& target) {
        throwInPlatform(target.infoFunction());
        HostInteger size = 4711;
        HostBoolean writeable = 1;
        EXPECT_NO_THROW(target.getInfo(object(), &size, &writeable));
        EXPECT_EQ(size, 0);
        EXPECT_EQ(writeable, 0);
        EXPECT_EQ(lasterror(), -1);
    });
}

TEST_F(PropertyInfo, SetsLasterrorBeforeAnyOtherWork)
{
    forAll([&](const Target& target) {
        watchFirstCall();
        HostInteger size;
        HostBoolean writeable;
        target.getInfo(object(), &size, &writeable);
        EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
    });
}

} // namespace
