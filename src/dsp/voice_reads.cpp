// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/voice_reads.h"

#include "dsp/sinc_kernel.h"
#include "dsp/voice_reads_variants.h"

// The kernel is made here, so that no read has to.
const VoiceReads& GetVoiceReads() {
    SincKernel::Get();
    static const VoiceReads& best = GetVoiceReads(BestProcessorVariant());
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
