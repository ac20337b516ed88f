# Cross build for AArch64 Linux with Debian's cross toolchain (g++-aarch64-linux-gnu). Built
# programs run under qemu-user: ctest, gtest_discover_tests and the tests that start a binary go
# through CMAKE_CROSSCOMPILING_EMULATOR.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Headers and libraries come from the target's sysroot only, never from the build machine's
# /usr (its libpng or GoogleTest would be x86-64).
set(CWB_AARCH64_SYSROOT /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH ${CWB_AARCH64_SYSROOT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# -L lets qemu find the target's dynamic loader and shared libraries. An absolute path: the death
# tests' re-execution runs it with execv, which does not search PATH.
find_program(CWB_QEMU_AARCH64 qemu-aarch64 REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CWB_QEMU_AARCH64} -L ${CWB_AARCH64_SYSROOT})
