/// @file
/// The name by which a library offers its one type. benchmarks/components/installation.h makes copies of a library in
/// which the number is another, here as in the library's SONAME.
#pragma once

#define ZELM_NUMBERED_TYPE "numbered_0000"

/// Holds ZELM_NUMBERED_TYPE. No constant, so that the compiler can't turn the text into instructions, in which the
/// number wouldn't stand as text.
extern char numberedType[];
