// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/voice_reads.h"

#include "dsp/sinc_kernel.h"
#include "dsp/voice_reads_variants.h"

namespace {

const VoiceReads& BestVoiceReads() {
    if (HasProcessorVariant(ProcessorVariant::Avx512)) return kAvx512VoiceReads;
    if (HasProcessorVariant(ProcessorVariant::Avx2)) return kAvx2VoiceReads;
    return kBaselineVoiceReads;
}

}  // namespace

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

// The kernel is made here, so that no read has to.
const VoiceReads& GetVoiceReads() {
    SincKernel::Get();
    static const VoiceReads& best = BestVoiceReads();
    return best;
}

const VoiceReads& GetVoiceReads(ProcessorVariant variant) {
    SincKernel::Get();
    switch (variant) {
        case ProcessorVariant::Avx512:
            return kAvx512VoiceReads;
        case ProcessorVariant::Avx2:
            return kAvx2VoiceReads;
        case ProcessorVariant::Baseline:
            break;
    }
    return kBaselineVoiceReads;
}
