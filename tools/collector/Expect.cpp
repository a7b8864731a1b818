#include "tools/collector/Programs.h"

#include <stdexcept>

namespace collector {

int Expect(const Options&) { throw std::runtime_error("not yet"); }

} // namespace collector
