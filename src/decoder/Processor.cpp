#include "decoder/Processor.h"

#include <algorithm>

namespace Processor {

namespace {

Vectors Found()
{
#if defined(__x86_64__) && defined(__GNUC__)
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("ssse3") || !__builtin_cpu_supports("popcnt"))
        return Vectors::Common;
    if (!__builtin_cpu_supports("avx2"))
        return Vectors::Ssse3;
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi2") ? Vectors::Avx512
                                                                                       : Vectors::Avx2;
#else
    return Vectors::Common;
#endif
}

Vectors usable = Found();

}

Vectors Usable() { return usable; }

void Limit(Vectors limit) { usable = std::min(Found(), limit); }

}
