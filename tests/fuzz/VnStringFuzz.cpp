#include "tests/unit/vnosal/StringModel.h"

void fuzz::Check(FuzzInput input)
{
    const std::string fault = vnosal_test::CompareWithModel(input);
    Require(fault.empty(), fault.c_str());
}
