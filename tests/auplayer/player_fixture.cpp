#include "tests/auplayer/player_fixture.h"

#include "auplayer/render.h"
#include "plugin/process_state.h"
#include "tests/support/service_caches.h"

#include <cstring>

namespace auplayer_test {

namespace {
constexpr Word dataOffset = 48;
constexpr std::size_t guardBytes = 64; // guard bytes after the class data
constexpr std::size_t objectBytes = dataOffset + sizeof(auplayer::AUPlayerData) + guardBytes;
constexpr char guardByte = 0x5A;

} // namespace

PlayerTest::PlayerTest()
{
    auPlayerClass.dataOffset = dataOffset;
    startOver();
}

PlayerTest::~PlayerTest()
{
    expectNothingLeft();
    host_.reset();
    gResolver = nullptr;
    auPlayerClass.dataOffset = 0;
}

void PlayerTest::startOver(double hostVersion)
{
    if (isAlive_) expectNothingLeft();
    host_.reset();
    host_ = std::make_unique<fake::Host>(hostVersion);
    gResolver = fake::Host::resolve;
    rbversion_rbversion = hostVersion;
    forgetServices();
    graph_spy::reset();
    blocksBefore_ = c_library_spy::liveBlocks();
    item_ = host().newFolderItem();
    memory_.reset(new char[objectBytes]);
    construct();
}

void PlayerTest::construct()
{
    std::memset(memory_.get(), guardByte, objectBytes);
    std::memset(memory_.get() + dataOffset, 0, sizeof(auplayer::AUPlayerData));
    members.construct(object());
    isAlive_ = true;
    spy::name(&data(), "the player");
    spy::name(reinterpret_cast<const void*>(&auplayer::renderInput), "renderInput");
}

void PlayerTest::destruct()
{
    if (!isAlive_) return;
    isAlive_ = false;
    members.destruct(object());
}

auplayer::AUPlayerData& PlayerTest::data()
{
    return *reinterpret_cast<auplayer::AUPlayerData*>(memory_.get() + dataOffset);
}

void PlayerTest::withhold(const std::string& service)
{
    host().withhold(service);
    forgetServices();
}

bool PlayerTest::load(HostInteger inputChannels, HostInteger outputChannels, std::string_view method)
{
    return members.call<HostBoolean>(std::string(method) + "(", object(), item_, inputChannels,
                                     outputChannels) != 0;
}

Notes PlayerTest::raised()
{
    Notes texts;
    for (const fake::Raised& each : host().raised())
        texts.push_back(each.className + ": " + each.message.value_or("no message"));
    return texts;
}

void PlayerTest::expectNothingLeft()
{
    destruct();
    for (REALstringStruct* text : {data().clientFormatString, data().outputFormatString})
        if (text) host().drop(text);
    data().clientFormatString = data().outputFormatString = nullptr;
    for (std::size_t i = 0; i < objectBytes; ++i) {
        const bool isData = i >= dataOffset && i < dataOffset + sizeof(auplayer::AUPlayerData);
        if (!isData && memory_[i] != guardByte)
            ADD_FAILURE() << "a byte outside the class data changed, at " << i;
    }
    if (item_) {
        EXPECT_EQ(host().references(item_), 1) << "of the folder item";
        host().drop(item_);
        item_ = nullptr;
    }
    EXPECT_EQ(host().live(), Notes()) << "host values are left";
    EXPECT_EQ(host().faults(), Notes());
    EXPECT_EQ(spy::live(), Notes()) << "platform objects are left";
    EXPECT_EQ(spy::faults(), Notes());
    EXPECT_EQ(c_library_spy::liveBlocks(), blocksBefore_) << "memory is left";
}

} // namespace auplayer_test
