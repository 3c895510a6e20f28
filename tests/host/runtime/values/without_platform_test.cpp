// The host in a program that does not link the platform.
#include "host/runtime/host.h"

#include <gtest/gtest.h>

namespace {

using namespace host;

TEST(WithoutPlatform, FolderItemsHaveNoReference)
{
    Host host;
    unsigned char reference[80], name[512];
    EXPECT_FALSE(itemReference(FolderItem::at("/"), reference));
    EXPECT_FALSE(parentReference(FolderItem::at("/x"), reference, name));
}

} // namespace
