#include "tests/simulated/Simulated.h"

#include "tests/simulated/State.h"
#include "tests/simulated/VirtualTime.h"

#include <vector>

namespace simulated {

namespace {

std::vector<CResettable*>& GetStates()
{
    static auto& states = *new std::vector<CResettable*>;
    return states;
}

} // namespace

CResettable::CResettable() { GetStates().push_back(this); }

void Reset()
{
    for (CResettable* state : GetStates())
        state->Reset();
    ResetTime();
}

} // namespace simulated
