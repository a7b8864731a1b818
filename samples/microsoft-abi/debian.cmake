# Microsoft's C++ ABI on Debian: clang, lld and llvm, MinGW-w64's headers (package
# g++-mingw-w64-x86-64-posix), no C runtime.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_RC_COMPILER llvm-rc)
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_CXX_STANDARD_LIBRARIES "" CACHE STRING "")

# These headers must not see Microsoft's version, which stands for Microsoft's headers.
execute_process(COMMAND x86_64-w64-mingw32-g++-posix -print-file-name=include/c++
                OUTPUT_VARIABLE runtime OUTPUT_STRIP_TRAILING_WHITESPACE)
add_compile_options(-fms-compatibility -U_MSC_VER -D__MINGW32__ -D__MINGW64__ -D__GNUC__=4
  -D__GNUC_MINOR__=2 -D__STRICT_ANSI__ -D__declspec=__declspec -nostdinc++ -isystem${runtime}
  -isystem${runtime}/x86_64-w64-mingw32 -isystem/usr/x86_64-w64-mingw32/include
  -fno-exceptions -Wall -Wextra -Werror)
execute_process(COMMAND llvm-dlltool -m i386:x86-64 -D kernel32.dll
                -d ${CMAKE_CURRENT_LIST_DIR}/kernel32.def -l ${CMAKE_BINARY_DIR}/kernel32.lib)
add_link_options(-fuse-ld=lld-link -nostdlib -Wl,/entry:main,/subsystem:console,/nodefaultlib
  ${CMAKE_BINARY_DIR}/kernel32.lib)
