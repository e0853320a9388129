# For 64-bit Arm Linux with Debian's cross compiler and its arm64 packages (scripts/setup --arm64 installs them). Programs
# that were built run by QEMU's user-mode emulation, called by name: nothing needs to be registered with the kernel.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

# Debian keeps the headers and libraries for Arm beside those of the system, below directories called aarch64-linux-gnu,
# so there is no other root to look in.

if(NOT CMAKE_HOST_SYSTEM_PROCESSOR STREQUAL "aarch64")
  find_program(ZELM_EMULATOR NAMES qemu-aarch64-static qemu-aarch64)
  mark_as_advanced(ZELM_EMULATOR)
  if(ZELM_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${ZELM_EMULATOR}")
  endif()
endif()
