// An AUPlayerKVX object in a fake host, with a spy instead of the platform. The tests use properties and
// methods as a host does: by name, through the class table.
#pragma once

#include "auplayer/au_player.h"
#include "plugin/classes.h"
#include "tests/auplayer/graph_spy.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/class_members.h"
#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

namespace auplayer_test {

using Object = REALobjectStruct*;
using FolderItem = REALfolderItemStruct*;
inline const support::ClassMembers members(auPlayerClass);

using Notes = std::vector<std::string>;

/// An exception type that the plug-in does not know.
struct Thrown {};

/// Fixture with one fake host, one spied platform and one player object. At its end the fixture destroys the
/// object if the test has not done so, and expects that no reference, URL, file, graph or memory is left.
class PlayerTest : public testing::Test {
protected:
    PlayerTest();
    ~PlayerTest() override;

    /// Replace the host, the platform and the object by a new host, platform and object. The new object is
    /// constructed in zeroed memory.
    void startOver(double hostVersion = 2016.0);
    /// Construct or destroy the object. destruct() without an object does nothing.
    void construct();
    void destruct();

    fake::Host& host() { return *host_; }
    Object object() { return reinterpret_cast<Object>(memory_.get()); }
    auplayer::AUPlayerData& data();

    /// Make the host no longer export this function.
    void withhold(const std::string& service);

    /// Load the fixture's folder item. `method` is "LoadFile" or "LoadFileMT".
    bool load(HostInteger inputChannels = 2, HostInteger outputChannels = 2,
              std::string_view method = "LoadFile");
    FolderItem item() const { return item_; }

    /// Return the exceptions that the plug-in raised, as "Class: message".
    Notes raised();

    /// Destroy the object, release the object's strings as a host does, and expect that no reference or
    /// memory is left.
    void expectNothingLeft();

private:
    std::unique_ptr<fake::Host> host_;
    std::unique_ptr<char[]> memory_;
    FolderItem item_ = nullptr;
    long blocksBefore_ = 0;
    bool isAlive_ = false;
};

} // namespace auplayer_test
