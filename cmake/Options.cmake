# What every target is built with, and the places a module reports to.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

set(ZO_CLASSIC_HOST "collect.zotracker.example" CACHE STRING
    "Host of the classic collection endpoint when install.cfg names none")
set(ZO_UA_HOST "collect.zotracker.example" CACHE STRING
    "Host of the measurement-protocol endpoint when install.cfg names none")
set(ZO_KPI_HOST "kpi.zotracker.example" CACHE STRING
    "Host of the KPI server when install.cfg names none")
set(ZO_SITE_ADDRESS "www.zotracker.example" CACHE STRING
    "Web site address, without scheme, that KPI requests carry")
set(ZO_SANITIZE "" CACHE STRING "Value for -fsanitize= in every target, or nothing")
option(ZO_BENCH "Build the benchmarks" OFF)
option(ZO_FUZZ "Build the fuzz targets (Clang only)" OFF)

# The include root, the warnings and the sanitizers of every target.
add_library(zo_options INTERFACE)
target_include_directories(zo_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_compile_options(zo_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -ffunction-sections
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>)
if(ZO_SANITIZE)
  add_compile_options(-fsanitize=${ZO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZO_SANITIZE})
endif()
if(ZO_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(WIN32)
  target_compile_definitions(zo_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                             _WIN32_WINNT=0x0601)
  # Hosts do not ship the compiler's runtime libraries.
  add_link_options(-static)
  # The same sources make the same files, wherever and whenever they are built.
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
                      -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
  add_link_options(-Wl,--no-insert-timestamp)
else()
  find_package(Threads REQUIRED)
  target_link_libraries(zo_options INTERFACE Threads::Threads)
endif()
