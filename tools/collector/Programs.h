#pragma once

#include "tools/collector/Options.h"

namespace collector {

// What the program does; each returns its exit code and throws what Main() explains.
int Serve(const Options& options);
int Read(const Options& options);
int Expect(const Options& options);

} // namespace collector
