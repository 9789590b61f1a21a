// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/processor.h"

// The compiler's queries include whether the system saves the wide registers.
bool HasProcessorVariant(ProcessorVariant variant) {
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                      __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
    switch (variant) {
        case ProcessorVariant::Avx512:
            return avx2 && __builtin_cpu_supports("avx512f") &&
                   __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                   __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd");
        case ProcessorVariant::Avx2:
            return avx2;
        case ProcessorVariant::Baseline:
            return true;
    }
    return false;
}

ProcessorVariant BestProcessorVariant() {
    if (HasProcessorVariant(ProcessorVariant::Avx512)) return ProcessorVariant::Avx512;
    if (HasProcessorVariant(ProcessorVariant::Avx2)) return ProcessorVariant::Avx2;
    return ProcessorVariant::Baseline;
}
