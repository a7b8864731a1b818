#include "app/ZoTrackerApp.h"

namespace {

app::CZoTrackerApp application;

} // namespace
