// The CFString getters of the property family.
#include "tests/coreaudio/targets.h"

namespace {

using namespace subject;
using property_spy::PlatformString;
using spy::Calls;

constexpr std::uint32_t referenceSize = sizeof(CFStringRef);
constexpr OSStatus unknown = 0x77686F3F; // platform status 'who?'

class PropertyCFStrings : public Subject {
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

    void announce(const Target& target, UInt32 size) { spy::answer(target.infoFunction()).size = size; }
    void answerWith(const Target& target, const PlatformString& text)
    {
        announce(target, referenceSize);
        spy::answer(target.getFunction()).value = text.asValue();
        spy::name(text.reference(), "text");
    }

    std::string getCall(const Target& target)
    {
        // The buffer that the platform receives contains a null reference.
        return target.getCall(referenceSize, std::to_string(referenceSize) + " zeros");
    }
};

TEST_F(PropertyCFStrings, AreConvertedAndReleased)
{
    const struct {
        std::string text;
        std::uint32_t encoding;
    } texts[] = {{"Built-in Output", encodingUTF8}, {"\xC3\xA9t\xC3\xA9", encodingUTF8}};
    for (const auto& each : texts)
        forAll([&](const Target& target) {
            PlatformString text(each.text);
            answerWith(target, text);
            const Text result = target.getCFString(object());
            ASSERT_NE(result, nullptr);
            EXPECT_EQ(host().bytesOf(result), each.text);
            EXPECT_EQ(host().encodingOf(result), each.encoding);
            EXPECT_EQ(host().references(result), 1);
            host().drop(result);
            EXPECT_EQ(lasterror(), 0);
            EXPECT_EQ(text.releases, 1);
            EXPECT_EQ(spy::calls(),
                      (Calls{target.infoCall("null"), getCall(target), "CFStringGetLength(text)",
                             "CFStringGetCString(text, 0x258, 0x8000100)", "CFRelease(text)"}));
        });
}

TEST_F(PropertyCFStrings, AreNilWithoutAnErrorForAnotherSize)
{
    for (const std::uint32_t size : {0u, 1u, referenceSize - 1, referenceSize + 1, referenceSize * 2,
                                     0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(size);
        forAll([&](const Target& target) {
            announce(target, size);
            c_library_spy::begin();
            EXPECT_EQ(target.getCFString(object()), nullptr);
            EXPECT_EQ(c_library_spy::end(), Calls());
            EXPECT_EQ(lasterror(), 0);
            EXPECT_EQ(spy::calls(), Calls{target.infoCall("null")});
        });
    }
}

// If the info call for a device fails, `Lasterror` stays -1; for other targets, it is the platform's status.
TEST_F(PropertyCFStrings, StoreAFailedInfoCallExceptForDevices)
{
    int kept = 0;
    for (const OSStatus status : {unknown, OSStatus{1}})
        forAll([&](const Target& target) {
            spy::answer(target.infoFunction()).status = status;
            announce(target, referenceSize);
            EXPECT_EQ(target.getCFString(object()), nullptr);
            EXPECT_EQ(lasterror(), target.name == "AudioDevice" ? -1 : status);
            EXPECT_EQ(spy::calls(), Calls{target.infoCall("null")});
            kept += lasterror() == -1;
        });
    EXPECT_EQ(kept, 2) << "one target of four, for two statuses";
}

TEST_F(PropertyCFStrings, AreNilAndNotReleasedIfNull)
{
    forAll([&](const Target& target) {
        announce(target, referenceSize);
        EXPECT_EQ(target.getCFString(object()), nullptr);
        EXPECT_EQ(lasterror(), 0);
        EXPECT_EQ(spy::calls(), (Calls{target.infoCall("null"), getCall(target)}));
    });
}

TEST_F(PropertyCFStrings, AreNotReleasedAfterAnError)
{
    forAll([&](const Target& target) {
        PlatformString text("not owned");
        answerWith(target, text);
        spy::answer(target.getFunction()).status = unknown;
        EXPECT_EQ(target.getCFString(object()), nullptr);
        EXPECT_EQ(lasterror(), unknown);
        EXPECT_EQ(text.releases, 0);
        EXPECT_EQ(spy::calls(), (Calls{target.infoCall("null"), getCall(target)}));
    });
}

TEST_F(PropertyCFStrings, AreReleasedAfterAnyFailure)
{
    const struct {
        const char* why;
        std::optional<std::string> utf8;
        CFIndex units;
        bool callocFails;
        const char* platformThrows;
        const char* builderFails;
        const char* builderThrows;
    } rows[] = {
        {"an empty text", "", 0, false, "", "", ""},
        {"a text that cannot be converted", {}, 5, false, "", "", ""},
        {"a long text, no memory", std::string(100, 'x'), 100, true, "", "", ""},
        {"getting the length throws", "text", 4, false, "CFStringGetLength", "", ""},
        {"converting throws", "text", 4, false, "CFStringGetCString", "", ""},
        {"converting a long text throws", std::string(100, 'x'), 100, false, "CFStringGetCString", "", ""},
        {"the host builds no string", "text", 4, false, "", "REALBuildString", ""},
        {"the host's builder throws", "text", 4, false, "", "", "REALBuildString"},
        {"setting the encoding throws", "text", 4, false, "", "", "REALSetStringEncoding"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        forAll([&](const Target& target) {
            PlatformString text(row.utf8, row.units);
            answerWith(target, text);
            if (row.callocFails) c_library_spy::refuseCalloc(1);
            if (*row.platformThrows) throwInPlatform(row.platformThrows);
            if (*row.builderFails) host().failNext(row.builderFails);
            if (*row.builderThrows) throwInHost(row.builderThrows);
            EXPECT_NO_THROW(EXPECT_EQ(target.getCFString(object()), nullptr));
            EXPECT_EQ(lasterror(), 0) << "the platform call succeeded";
            EXPECT_EQ(text.releases, 1);
            EXPECT_EQ(spy::calls().back(), "CFRelease(text)");
        });
    }
}

TEST_F(PropertyCFStrings, PassNoExceptionToTheHost)
{
    forAll([&](const Target& target) {
        PlatformString text("not returned");
        answerWith(target, text);
        throwInPlatform(target.getFunction());
        EXPECT_NO_THROW(EXPECT_EQ(target.getCFString(object()), nullptr));
        EXPECT_EQ(lasterror(), -1);
        EXPECT_EQ(text.releases, 0);

        spy::forgetCalls();
        throwInPlatform(target.infoFunction());
        lasterror() = 4711;
        EXPECT_NO_THROW(EXPECT_EQ(target.getCFString(object()), nullptr));
        EXPECT_EQ(lasterror(), -1);
        EXPECT_EQ(spy::calls(), Calls{target.infoCall("null")});
    });
}

TEST_F(PropertyCFStrings, AreConvertedOnTheHeapIfLong)
{
    forAll([&](const Target& target) {
        PlatformString text(std::string(100, 'x'));
        answerWith(target, text);
        c_library_spy::begin();
        const Text result = target.getCFString(object());
        EXPECT_EQ(c_library_spy::end(), (Calls{"calloc 600", "free"}));
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(host().bytesOf(result), std::string(100, 'x'));
        host().drop(result);
    });
}

TEST_F(PropertyCFStrings, SetLasterrorBeforeAnyOtherCall)
{
    forAll([&](const Target& target) {
        watchFirstCall();
        target.getCFString(object());
        EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
    });
}

} // namespace
