#include "tests/fuzz/FuzzInput.h"
#include "tests/unit/vnosal/StringModel.h"

void fuzz::Check(FuzzInput input)
{
    const auto* script = reinterpret_cast<const std::uint8_t*>(input.rest.data());
    const std::string fault = vnosal_test::CompareWithModel({script, input.rest.size()});
    Require(fault.empty(), fault.c_str());
}
