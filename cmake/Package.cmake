# What "cmake --install" lays out: all that the programmer of a host needs, and no source tree.
include(CMakePackageConfigHelpers)

set(package_folder lib/cmake/ZoTracker)
write_basic_package_version_file(ZoTrackerConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/ZoTrackerConfig.cmake ${PROJECT_BINARY_DIR}/ZoTrackerConfigVersion.cmake
        DESTINATION ${package_folder})

# Microsoft's linker reads libraries of another form. They hold the four functions only: the string
# library's names are the module's own compiler's.
find_program(ZO_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
if(ZO_DLLTOOL)
  set(microsoft_library ${PROJECT_BINARY_DIR}/ZoTracker.lib)
  add_custom_command(OUTPUT ${microsoft_library} DEPENDS app/ZoTracker.def
    COMMAND ${ZO_DLLTOOL} -m i386:x86-64 -D ZoTracker.dll
            -d ${PROJECT_SOURCE_DIR}/app/ZoTracker.def -l ${microsoft_library})
  add_custom_target(microsoft_library ALL DEPENDS ${microsoft_library})
  install(FILES ${microsoft_library} DESTINATION lib)
endif()
install(TARGETS ZoTracker ARCHIVE DESTINATION lib RUNTIME DESTINATION bin)
install(FILES ${PROJECT_BINARY_DIR}/ZoTracker.dll.debug DESTINATION bin OPTIONAL)
install(TARGETS host zotrust RUNTIME DESTINATION bin)
install(DIRECTORY include/zotracker DESTINATION include)

install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION .)
install(FILES LICENSE DESTINATION . OPTIONAL) # the owner's to choose
install(FILES docs/notices.md DESTINATION . RENAME NOTICES.md)
install(DIRECTORY docs DESTINATION .)
install(DIRECTORY samples DESTINATION .)
foreach(runtime gcc-mingw-w64-base mingw-w64-x86-64-dev)
  install(FILES /usr/share/doc/${runtime}/copyright DESTINATION notices RENAME ${runtime}.txt OPTIONAL)
endforeach()
install(FILES /usr/share/common-licenses/GPL-3 DESTINATION notices RENAME GPL-3.txt OPTIONAL)
