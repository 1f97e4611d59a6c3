# Cross-compiling for 64-bit Windows with Debian's MinGW-w64 compilers (the POSIX-threads variant,
# which std::thread needs). Programs and DLLs link the compiler's runtime statically, so that a
# Windows machine needs nothing beyond its own system DLLs; tests run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ZANDO_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ZANDO_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZANDO_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${ZANDO_MINGW_TRIPLE}-windres)

# Libraries and packages come from the MinGW sysroot only (and from prefixes named explicitly);
# the build machine's own are for another system.
set(CMAKE_FIND_ROOT_PATH /usr/${ZANDO_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# libgcc, libstdc++ and winpthread linked in, not shipped as DLLs of their own.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

# Tests run under Wine, without a display, in a Wine prefix of the build folder's own.
set(CMAKE_CROSSCOMPILING_EMULATOR env WINEPREFIX=${CMAKE_BINARY_DIR}/wineprefix WINEDEBUG=-all
    WINEDLLOVERRIDES=mscoree,mshtml= DISPLAY= wine)
