#pragma once

#include "platform/SystemFacts.h"

#include <cstdint>
#include <string>
#include <vector>

namespace env {

// The machine's identifier: 32 lower-case hexadecimal digits, or whatever a store holds. It is
// looked for in the registry and in `ComputerID.dat` in the suite's folder; when none has it, it is
// made and saved in the first store that takes it. Found out once per process. Any thread.
std::wstring GetComputerId();

// The text whose digest becomes a new identifier: the hardware address of the first Ethernet
// adapter with a gateway and a plausible address, the processor's vendor and the time, without
// separators.
std::wstring BuildComputerIdSeed(const std::vector<platform::NetworkAdapter>& adapters,
                                 const platform::ProcessorVendor& vendor, std::int64_t time,
                                 std::uint32_t tick);

} // namespace env
