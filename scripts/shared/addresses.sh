# shellcheck shell=bash
# How programs with a sanitizer are started:
#
#     . "$(dirname "$0")/shared/addresses.sh"
#     "${fixed_addresses[@]}" ctest --preset asan
#
# A sanitizer's runtime keeps its own memory at addresses that it takes to be free. Where the kernel scatters a program
# over more of them than the runtime knows of (32 bits for vm.mmap_rnd_bits, which is usual by now), a program falls onto
# them now and then, and ends before it begins. Nothing is scattered here, unless the system forbids asking for that, as
# some containers do.

fixed_addresses=()
if setarch -R true 2>/dev/null; then
    fixed_addresses=(setarch -R)
fi
