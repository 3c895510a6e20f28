// The method updateEQ, which sets the equaliser's gains from a host array of Double or Single.
#include "plugin/host_array.h"
#include "tests/auplayer/watched_player_fixture.h"

#include <cmath>
#include <type_traits>

namespace {

using namespace auplayer_test;
using Array = REALarrayStruct*;

template <class Element>
class Equaliser : public WatchedPlayerTest {
protected:
    static constexpr bool isDouble = std::is_same_v<Element, double>;

    void update(Array bands)
    {
        members.call<void>(isDouble ? "updateEQ(eqBands() as double)" : "updateEQ(eqBands() as single)",
                           object(), static_cast<ArrayOf<Element>*>(bands));
    }
    Array newArray(const std::vector<Element>& gains)
    {
        if constexpr (isDouble)
            return host().newDoubles(gains);
        else
            return host().newSingles(gains);
    }
    static const char* getter() { return isDouble ? "PluginDoubleArrayGetProc" : "PluginSingleArrayGetProc"; }
    static fake::ElementType elementType()
    {
        return isDouble ? fake::ElementType::doubleFloat : fake::ElementType::single;
    }
};

using Elements = testing::Types<double, float>;
TYPED_TEST_SUITE(Equaliser, Elements, );

std::string band(std::size_t index, const std::string& gain)
{
    return "AudioUnitSetParameter(equalizer, " + std::to_string(index) + ", global, 0, " + gain + ", 0)";
}

TYPED_TEST(Equaliser, SetsOneGainPerElement)
{
    for (const std::size_t count : {1u, 2u, 10u, 31u, 32u, 100u}) {
        this->begin();
        std::vector<TypeParam> gains;
        Notes expected;
        for (std::size_t i = 0; i < count; ++i) {
            gains.push_back(static_cast<TypeParam>(i) / 4 - 12);
            char text[40];
            std::snprintf(text, sizeof text, "%.9g", static_cast<double>(gains.back()));
            expected.push_back(band(i, text));
        }
        const Array bands = this->newArray(gains);
        this->update(bands);
        EXPECT_EQ(spy::calls(), expected) << "the number of bands does not limit it";
        EXPECT_EQ(this->data().lasterror, 4711);
        EXPECT_EQ(this->raised(), Notes());
        this->host().drop(bands);
    }
}

TYPED_TEST(Equaliser, ReadsElementsThroughTheHost)
{
    this->begin();
    const Array bands = this->newArray({-6, 3});
    this->update(bands);
    const std::string getter = std::string(this->getter()) + "(a1)";
    EXPECT_EQ(this->host().calls(), (Notes{"RuntimeUBound(a1) = 1", "RuntimeUBound(a1) = 1", getter,
                                           "get(a1, 0)", "RuntimeUBound(a1) = 1", getter, "get(a1, 1)"}));
    this->host().drop(bands);
}

TYPED_TEST(Equaliser, RaisesForNilEvenBeforeALoad)
{
    const auto expectRefusal = [&] {
        this->update(nullptr);
        EXPECT_EQ(this->raised(), Notes{"NilObjectException: eqBands is nil!"});
        EXPECT_EQ(spy::calls(), Notes());
        EXPECT_EQ(this->data().lasterror, 4711);
    };
    this->beginEmpty();
    expectRefusal();
    this->begin();
    expectRefusal();
}

TYPED_TEST(Equaliser, DoesNothingBeforeALoad)
{
    this->beginEmpty();
    const Array bands = this->newArray({1, 2, 3});
    this->update(bands);
    EXPECT_EQ(spy::calls(), Notes());
    EXPECT_EQ(this->host().calls(), Notes());
    EXPECT_EQ(this->data().lasterror, 4711);
    this->host().drop(bands);
}

TYPED_TEST(Equaliser, DoesNothingForAnEmptyArray)
{
    for (const HostInteger bound : {HostInteger{-1}, HostInteger{-2}, HostInteger{INT32_MIN}}) {
        this->begin();
        const Array bands = this->newArray({5});
        this->host().setUpperBound(bands, bound);
        this->update(bands);
        EXPECT_EQ(spy::calls(), Notes());
        EXPECT_EQ(this->raised(), Notes());
        this->host().drop(bands);
    }
}

TYPED_TEST(Equaliser, SetsZeroForElementsThatVanish)
{
    this->begin();
    const Array bands = this->newArray({6, 5, 4});
    this->host().inNext("get", [&] { this->host().setUpperBound(bands, 0); });
    this->update(bands);
    EXPECT_EQ(spy::calls(), (Notes{band(0, "6"), band(1, "0"), band(2, "0")}));
    const std::string text =
        "OutOfBoundsException: Parameter index  is too big. Range is 0 to 0, but value is ";
    EXPECT_EQ(this->raised(), (Notes{text + "1.", text + "2."}));
    EXPECT_EQ(this->data().lasterror, 4711);
    this->host().drop(bands);
}

TYPED_TEST(Equaliser, ReadsTheArrayRecordsOfAnOlderHost)
{
    for (const double version : {2011.0, 2015.9}) {
        this->clearScripts();
        this->startOver(version);
        ASSERT_TRUE(this->load());
        this->watch();
        const Array bands = this->newArray({-6, 3});
        this->update(bands);
        EXPECT_EQ(spy::calls(), (Notes{band(0, "-6"), band(1, "3")}));
        for (const std::string& note : this->host().calls()) EXPECT_EQ(note, "RuntimeUBound(a1) = 1");
        this->host().drop(bands);
    }
}

TYPED_TEST(Equaliser, UsesTheServiceForARecordWithoutStorage)
{
    this->clearScripts();
    this->startOver(2015.9);
    ASSERT_TRUE(this->load());
    this->watch();
    const Array bands = this->newArray({-6, 3});
    bands->elements = nullptr;
    this->update(bands);
    EXPECT_EQ(spy::calls(), (Notes{band(0, "-6"), band(1, "3")}));
    this->host().drop(bands);
}

TYPED_TEST(Equaliser, UsesTheOlderServiceIfTheFirstIsMissing)
{
    this->begin();
    this->withhold(this->getter());
    this->host().directGet = this->elementType();
    const Array bands = this->newArray({-6, 3});
    this->update(bands);
    EXPECT_EQ(spy::calls(), (Notes{band(0, "-6"), band(1, "3")}));
    this->host().drop(bands);

    this->begin();
    this->withhold(this->getter());
    this->withhold("RuntimeArrayDirectGetGetProc");
    const Array unread = this->newArray({-6, 3});
    this->update(unread);
    EXPECT_EQ(spy::calls(), (Notes{band(0, "0"), band(1, "0")}));
    EXPECT_EQ(this->raised(), Notes());
    this->host().drop(unread);
}

TYPED_TEST(Equaliser, DoesNotKeepTheUnitsStatus)
{
    this->begin();
    spy::answer("AudioUnitSetParameter").status = -10878;
    const Array bands = this->newArray({1, 2, 3});
    this->update(bands);
    EXPECT_EQ(spy::calls().size(), 3u) << "a refusal does not end the loop";
    EXPECT_EQ(this->seen(), (Lasterrors{4711, 4711, 4711}));
    EXPECT_EQ(this->data().lasterror, 4711);
    this->host().drop(bands);
}

TYPED_TEST(Equaliser, CatchesExceptions)
{
    for (const char* service : {"RuntimeUBound", this->getter(), "get"}) {
        SCOPED_TRACE(service);
        this->begin();
        const Array bands = this->newArray({1, 2});
        this->host().inNext(service, [] { throw Thrown(); });
        EXPECT_NO_THROW(this->update(bands));
        EXPECT_EQ(spy::calls(), Notes());
        this->host().drop(bands);
    }
    this->begin();
    const Array bands = this->newArray({1, 2});
    spy::script().inEachCall = [](std::size_t) { throw Thrown(); };
    EXPECT_NO_THROW(this->update(bands));
    EXPECT_EQ(spy::calls().size(), 1u);
    this->host().inNext("PluginNewInstance", [] { throw Thrown(); });
    EXPECT_NO_THROW(this->update(nullptr));
    EXPECT_EQ(this->data().lasterror, 4711);
    this->host().drop(bands);
    EXPECT_EQ(this->host().faults(), Notes());
}

using EqualiserOfDoubles = Equaliser<double>;

TEST_F(EqualiserOfDoubles, NarrowsToSinglePrecision)
{
    begin();
    const Array bands = newArray({0.1, -0.0, 16777217, 1e300, -1e300, 1e-50, NAN, INFINITY});
    update(bands);
    EXPECT_EQ(spy::calls(), (Notes{band(0, "0.100000001"), band(1, "-0"), band(2, "16777216"), band(3, "inf"),
                                   band(4, "-inf"), band(5, "0"), band(6, "nan"), band(7, "inf")}));
    host().drop(bands);
}

} // namespace
