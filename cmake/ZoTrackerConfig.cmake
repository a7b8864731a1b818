# find_package(ZoTracker): the target ZoTracker::ZoTracker has the headers, the import library for the
# compiler in use and the place of the DLL. A host that loads the DLL by Loader.h or zotracker.h uses
# the same target: it then imports nothing.
get_filename_component(_zotracker_root "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
if(NOT WIN32 OR "${CMAKE_SIZEOF_VOID_P}" STREQUAL 4)
  set(ZoTracker_FOUND FALSE)
  set(ZoTracker_NOT_FOUND_MESSAGE "ZoTracker is for 64-bit Windows")
  return()
endif()

if(NOT TARGET ZoTracker::ZoTracker)
  add_library(ZoTracker::ZoTracker SHARED IMPORTED)
  set(_zotracker_import lib/libZoTracker.dll.a)
  if(MSVC OR "${CMAKE_CXX_SIMULATE_ID}${CMAKE_C_SIMULATE_ID}" MATCHES MSVC)
    set(_zotracker_import lib/ZoTracker.lib)
  endif()
  set_target_properties(ZoTracker::ZoTracker PROPERTIES
    IMPORTED_LOCATION "${_zotracker_root}/bin/ZoTracker.dll"
    IMPORTED_IMPLIB "${_zotracker_root}/${_zotracker_import}"
    INTERFACE_INCLUDE_DIRECTORIES "${_zotracker_root}/include")
endif()
