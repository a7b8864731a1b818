#include "../unit/vnosal/StringModel.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string fault = vnosal_test::CompareWithModel({data, size});
    if (!fault.empty())
    {
        std::fprintf(stderr, "%s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
