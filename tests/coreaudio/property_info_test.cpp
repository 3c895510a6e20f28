// The getters of size and writability in the property family.
#include "tests/coreaudio/targets.h"

namespace {

using namespace subject;
using spy::Calls;

constexpr OSStatus unknown = 0x77686F3F; // platform status 'who?'
const std::optional<UInt32> noSize;
const std::optional<Boolean> noFlag;

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

TEST_F(PropertyInfo, IsWhatThePlatformWrote)
{
    const struct {
        const char* why;
        OSStatus status;
        std::optional<UInt32> reported;
        std::optional<Boolean> writable;
        UInt32 size;
        HostBoolean isWritable;
    } rows[] = {
        {"a writable property", 0, 12, Boolean{1}, 12, 1},
        {"a read-only property", 0, 4, Boolean{0}, 4, 0},
        {"an empty property", 0, 0, Boolean{1}, 0, 1},
        {"a size of 32 bits", 0, 0xFFFFFFFF, Boolean{1}, 0xFFFFFFFF, 1},
        {"an error without values", unknown, noSize, noFlag, 0, 0},
        {"an error with both values", unknown, 16, Boolean{1}, 16, 1},
        {"an error with a size", -1, 16, noFlag, 16, 0},
        {"success without values", 0, noSize, noFlag, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        forAll([&](const Target& target) {
            spy::answer(target.infoFunction()).status = row.status;
            spy::answer(target.infoFunction()).size = row.reported;
            spy::answer(target.infoFunction()).writable = row.writable;
            HostInteger size = 0x5A5A5A5A;
            HostBoolean writeable[3] = {0x5A, 0x5A, 0x5A};
            target.getInfo(object(), &size, &writeable[1]);
            EXPECT_EQ(spy::calls(), Calls{target.infoCall("0")});
            EXPECT_EQ(static_cast<UInt32>(size), row.size);
            EXPECT_EQ(writeable[1], row.isWritable);
            EXPECT_TRUE(writeable[0] == 0x5A && writeable[2] == 0x5A) << "a Boolean is one byte";
            EXPECT_EQ(lasterror(), row.status);
        });
    }
}

TEST_F(PropertyInfo, IsZeroAndFalseDuringThePlatformCall)
{
    forAll([&](const Target& target) {
        HostInteger size = 4711, sizeDuring = 0, lasterrorDuring = 0;
        HostBoolean writeable = 1, writeableDuring = 0;
        spy::answer(target.infoFunction()).during = [&] {
            sizeDuring = size;
            writeableDuring = writeable;
            lasterrorDuring = lasterror();
        };
        sizeDuring = writeableDuring = 1;
        target.getInfo(object(), &size, &writeable);
        EXPECT_EQ(sizeDuring, 0);
        EXPECT_EQ(writeableDuring, 0);
        EXPECT_EQ(lasterrorDuring, -1);
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

TEST_F(PropertyInfo, SetsLasterrorBeforeAnyOtherCall)
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
