#pragma once

// The module's version (semver.org), which the build reads from here; C99 and C++.
#define ZOTRACKER_VERSION_MAJOR 1
#define ZOTRACKER_VERSION_MINOR 0
#define ZOTRACKER_VERSION_PATCH 0

// The version of the trackers' interface: what GetInterfaceVersion returns.
#define ZOTRACKER_INTERFACE_VERSION 8450
