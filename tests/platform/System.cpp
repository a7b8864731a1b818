#include "tests/platform/System.h"

#include "platform/Files.h"
#include "platform/HostPaths.h"

namespace contract {

CFolderTest::CFolderTest()
    : folder((BeginCase(), platform::GetSpecialFolder(35) + L"\\ZoTracker contract"))
{
    RemoveFolder(folder);
    EXPECT_TRUE(platform::CreateFolder(folder));
}

CFolderTest::~CFolderTest() { RemoveFolder(folder); }

} // namespace contract
