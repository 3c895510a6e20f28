// Elements of the host's numeric arrays, read from the array's structure in older hosts and through host
// services in newer hosts.
#include "plugin/host_array.h"
#include "tests/plugin/host_fixture.h"

#include <limits>

namespace {

/// Test data for arrays of one element type.
template <class T>
struct Kind;
template <>
struct Kind<HostInteger> {
    static constexpr const char* getter = "PluginIntegerArrayGetProc";
    static constexpr auto type = fake::ElementType::integer;
    static REALarrayStruct* make(fake::Host& host)
    {
        return host.newIntegers({7, -2147483647 - 1, 2147483647});
    }
    static constexpr HostInteger values[] = {7, -2147483647 - 1, 2147483647};
};
template <>
struct Kind<float> {
    static constexpr const char* getter = "PluginSingleArrayGetProc";
    static constexpr auto type = fake::ElementType::single;
    static REALarrayStruct* make(fake::Host& host) { return host.newSingles({0.5f, -1e38f, 3.25f}); }
    static constexpr float values[] = {0.5f, -1e38f, 3.25f};
};
template <>
struct Kind<double> {
    static constexpr const char* getter = "PluginDoubleArrayGetProc";
    static constexpr auto type = fake::ElementType::doubleFloat;
    static REALarrayStruct* make(fake::Host& host) { return host.newDoubles({0.1, -1e300, 3.25}); }
    static constexpr double values[] = {0.1, -1e300, 3.25};
};

template <class T>
class HostArrayTest : public HostTest {
protected:
    std::string getCall() const { return std::string(Kind<T>::getter) + "(a1)"; }
};
using Kinds = ::testing::Types<HostInteger, float, double>;
TYPED_TEST_SUITE(HostArrayTest, Kinds, );

TYPED_TEST(HostArrayTest, OlderHostsStoreTheElementsInTheRecord)
{
    for (double version : {0.0, 2012.0, 2015.9999}) {
        SCOPED_TRACE(version);
        this->enter(version);
        REALarrayStruct* array = Kind<TypeParam>::make(this->host);
        for (HostInteger i = 0; i < 3; ++i) {
            TypeParam element = 99;
            EXPECT_TRUE(readArrayElement(array, i, element));
            EXPECT_EQ(element, Kind<TypeParam>::values[i]);
            EXPECT_EQ(this->takeCalls(), Notes{"RuntimeUBound(a1) = 2"});
        }
        this->host.drop(array);
    }
}

TYPED_TEST(HostArrayTest, NewerHostsReturnAGetter)
{
    for (double version : {2016.0, 2019.01}) {
        SCOPED_TRACE(version);
        this->enter(version);
        REALarrayStruct* array = Kind<TypeParam>::make(this->host);
        for (HostInteger i = 0; i < 3; ++i) {
            TypeParam element = 99;
            EXPECT_TRUE(readArrayElement(array, i, element));
            EXPECT_EQ(element, Kind<TypeParam>::values[i]);
            EXPECT_EQ(this->takeCalls(), (Notes{"RuntimeUBound(a1) = 2", this->getCall(),
                                                "get(a1, " + std::to_string(i) + ")"}));
        }
        this->host.drop(array);
    }
}

TYPED_TEST(HostArrayTest, AnOlderHostWithElementsElsewhereReturnsAGetter)
{
    this->enter(2015.0);
    REALarrayStruct* array = Kind<TypeParam>::make(this->host);
    array->elements = nullptr;
    TypeParam element = 99;
    EXPECT_TRUE(readArrayElement(array, 1, element));
    EXPECT_EQ(element, Kind<TypeParam>::values[1]);
    EXPECT_EQ(this->takeCalls(), (Notes{"RuntimeUBound(a1) = 2", this->getCall(), "get(a1, 1)"}));
    this->host.drop(array);
}

TYPED_TEST(HostArrayTest, TheGetterServiceHasASecondName)
{
    this->host.directGet = Kind<TypeParam>::type;
    this->withhold(Kind<TypeParam>::getter);
    REALarrayStruct* array = Kind<TypeParam>::make(this->host);
    TypeParam element = 99;
    EXPECT_TRUE(readArrayElement(array, 2, element));
    EXPECT_EQ(element, Kind<TypeParam>::values[2]);
    EXPECT_EQ(this->host.lookUps(),
              (Notes{"RuntimeUBound", Kind<TypeParam>::getter, "RuntimeArrayDirectGetGetProc"}));
    EXPECT_EQ(this->takeCalls(),
              (Notes{"RuntimeUBound(a1) = 2", "RuntimeArrayDirectGetGetProc(a1)", "get(a1, 2)"}));
    this->host.drop(array);
}

TYPED_TEST(HostArrayTest, AnElementIsZeroWithoutAGetter)
{
    REALarrayStruct* array = Kind<TypeParam>::make(this->host);
    this->host.failNext(Kind<TypeParam>::getter);
    TypeParam element = 99;
    EXPECT_TRUE(readArrayElement(array, 0, element));
    EXPECT_EQ(element, TypeParam(0)) << "the service returns null";

    this->withhold(Kind<TypeParam>::getter, "RuntimeArrayDirectGetGetProc");
    element = 99;
    EXPECT_TRUE(readArrayElement(array, 0, element));
    EXPECT_EQ(element, TypeParam(0)) << "the service is missing";
    EXPECT_TRUE(this->host.raised().empty());
    this->host.drop(array);
}

TYPED_TEST(HostArrayTest, AnIndexOutOfRangeRaisesAndKeepsTheElement)
{
    constexpr HostInteger last = std::numeric_limits<HostInteger>::max();
    // clang-format off
    const struct { HostInteger upperBound, index; const char* message; } facts[] = {
        { 2,   -1, "Parameter index  is too small. Range is 0 to 2, but value is -1."},
        { 2,    3, "Parameter index  is too big. Range is 0 to 2, but value is 3."},
        { 2, last, sizeof(HostInteger) == 4 ? "Parameter index  is too big. Range is 0 to 2, but value is 2147483647."
                                            : "Parameter index  is too big. Range is 0 to 2, but value is 9223372036854775807."},
        {-1,    0, "Parameter index  is too big. Range is 0 to -1, but value is 0."},
        {-7,    0, "Parameter index  is too big. Range is 0 to -1, but value is 0."},
        {-7,   -1, "Parameter index  is too small. Range is 0 to -1, but value is -1."},
    };
    // clang-format on
    for (double version : {2015.0, 2016.0})
        for (const auto& fact : facts) {
            SCOPED_TRACE(testing::Message() << version << ": " << fact.message);
            this->enter(version);
            REALarrayStruct* array = Kind<TypeParam>::make(this->host);
            this->host.setUpperBound(array, fact.upperBound);
            TypeParam element = 99;
            EXPECT_FALSE(readArrayElement(array, fact.index, element));
            EXPECT_EQ(element, TypeParam(99));
            ASSERT_EQ(this->host.raised().size(), 1u);
            EXPECT_EQ(this->host.raised()[0].className, "OutOfBoundsException");
            EXPECT_EQ(this->host.raised()[0].message, fact.message);
            this->host.drop(array);
        }
}

TYPED_TEST(HostArrayTest, TheArrayHasOneElementWithoutTheUpperBoundService)
{
    this->enter(2015.0);
    this->withhold("RuntimeUBound");
    REALarrayStruct* array = Kind<TypeParam>::make(this->host);
    TypeParam element = 99;
    EXPECT_TRUE(readArrayElement(array, 0, element)) << "a missing service returns 0";
    EXPECT_EQ(element, Kind<TypeParam>::values[0]);
    EXPECT_FALSE(readArrayElement(array, 1, element));
    this->host.drop(array);
}

class HostArrayCountTest : public HostTest {};

TEST_F(HostArrayCountTest, IsTheUpperBoundPlusOneAndNeverNegative)
{
    constexpr HostInteger last = 2147483647;
    // clang-format off
    const struct { HostInteger upperBound; std::int64_t count; const char* why; } facts[] = {
        {0,           1,          "one element"},
        {-1,          0,          "an empty array"},
        {-2,          0,          "any negative bound is an empty array"},
        {-2147483647, 0,          "the lowest bound"},
        {9,           10,         "ten"},
        {last,        2147483648, "one more than the host's Integer holds"},
    };
    // clang-format on
    REALarrayStruct* array = host.newIntegers({});
    for (const auto& fact : facts) {
        host.setUpperBound(array, fact.upperBound);
        EXPECT_EQ(arrayCount(array), fact.count) << fact.why;
    }
    host.drop(array);
}

TEST_F(HostArrayCountTest, AValueIsAppendedByInsertingAfterTheUpperBound)
{
    for (const char* missing : {"", "PluginIntegerArrayInsertProc"}) {
        SCOPED_TRACE(missing);
        enter(2016.0);
        withhold(missing);
        REALarrayStruct* array = REALCreateArray(0, -1);
        ASSERT_NE(array, nullptr);
        for (HostInteger value : {11, -22, 33}) {
            const InsertInteger insert = REALInsertArrayValueInteger(array);
            ASSERT_NE(insert, nullptr);
            insert(array, static_cast<HostInteger>(arrayCount(array)), value);
        }
        ASSERT_EQ(arrayCount(array), 3);
        HostInteger element = 0;
        EXPECT_TRUE(readArrayElement(array, 1, element) && element == -22);
        EXPECT_TRUE(readArrayElement(array, 2, element) && element == 33);
        host.drop(array);
    }
}

} // namespace
