# Cross build for 64-bit Windows with Debian's mingw-w64 (the posix thread model, so std::thread
# and std::mutex work). The third-party libraries come from scripts/build-win64-deps, which
# installs them under the cache folder named here.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(DEFINED ENV{KELPDEX_WIN64_CACHE})
  set(KELPDEX_WIN64_PREFIX "$ENV{KELPDEX_WIN64_CACHE}/prefix")
else()
  set(KELPDEX_WIN64_PREFIX "$ENV{HOME}/.cache/kelpdex-win64/prefix")
endif()

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "${KELPDEX_WIN64_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# pkg-config must see the Windows libraries only, never the host's.
set(ENV{PKG_CONFIG_LIBDIR} "${KELPDEX_WIN64_PREFIX}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# Static programs run under Wine or on a bare Windows without the compiler's DLLs beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/lib/wine/wine64)
