#include "tests/platform/System.h"
#include "tests/simulated/Files.h"
#include "tests/simulated/SystemFacts.h"

namespace contract {

void Clean()
{
    simulated::Reset();
    simulated::PutFolder(L"C:\\ProgramData");
    simulated::PutEnvironmentVariable(L"ZO_CONTRACT", L"va%lue");
    // The contents of Contract.rc, which the Windows build of this program carries.
    simulated::SetVersionInfo(
        simulated::facts->executable,
        {{{0x0407, 1200}, {0x0409, 1200}},
         {{L"\\StringFileInfo\\040704b0\\ProductName", L"Produkt \u20AC"},
          {L"\\StringFileInfo\\040704b0\\ProductVersion", L"1.2.3.4 (beta)"}}});
}

} // namespace contract
