#pragma once

// What the processor can do beyond what every one of its kind can. The decoders choose their inner loops by it; all of
// them give the same bytes.
namespace Processor {

enum class Vectors {
    Common, // nothing beyond the common ground, and all there is on processors other than x86-64
    Ssse3, // 16 bytes at a time, SSSE3 and POPCNT
    Avx2, // 32 bytes
    Avx512 // 64 bytes, with AVX512-VBMI2
};

Vectors Usable();

// For tests and measurements: from now on, use no more than this.
void Limit(Vectors limit);

}
