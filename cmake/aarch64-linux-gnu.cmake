# Cross-building for 64-bit ARM Linux on a Debian machine of another architecture:
#   cmake -S . -B build-arm64 -DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake
# Compiler: Debian's g++-aarch64-linux-gnu. Libraries: the arm64 packages of the multiarch folders
# (dpkg --add-architecture arm64; libzip-dev:arm64, libgtest-dev:arm64, ...), so the root is the
# machine's own and the target's libraries are the ones under /usr/lib/aarch64-linux-gnu.
# Programs that the build or CTest runs go through qemu-aarch64 (qemu-user).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# The machine's own libraries are of the wrong architecture: never take one of them.
list(APPEND CMAKE_IGNORE_PATH /usr/lib/x86_64-linux-gnu /lib/x86_64-linux-gnu)

# pkg-config's cross personality, which looks in the target's folders.
set(PKG_CONFIG_EXECUTABLE aarch64-linux-gnu-pkg-config CACHE FILEPATH "pkg-config for the target")

# The programs run on the arm64 C and C++ runtimes of the multiarch folders (libc6:arm64 and
# libstdc++6:arm64, which the libraries above were built with), found at their usual places. Not
# with "-L /usr/aarch64-linux-gnu": the loader would then come from the cross toolchain's copy of
# the C library and libc.so.6 from the multiarch one, and when the two packages' versions differ,
# every program that starts a thread hangs.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
