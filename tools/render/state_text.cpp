// SPDX-License-Identifier: GPL-3.0-or-later
#include "state_text.h"

#include <cmath>

#include "errors.h"
#include "foundation/streams/memory_stream.h"
#include "foundation/text/exception.h"
#include "foundation/xml/xml_document.h"
#include "nearest_text.h"
#include "number_text.h"
#include "plugin/multi_band_adapter.h"
#include "plugin/product_settings.h"

namespace {

using Adapter = MAudioEffectPluginToAudioPluginMultiBandAdapter;

constexpr const char* kRoot = "settings";

}  // namespace

void SetBands(StateEdits& edits, int count) {
    edits.Set("BandCount", std::to_string(count));
    for (int limit = 0; limit + 1 < count; ++limit) {
        const double hertz = Adapter::GetDefaultLimit(count, limit);
        edits.Set("Limit" + std::to_string(limit), FormatDigits(std::log10(hertz), 12));
    }
}

bool SetCrossover(StateEdits& edits, const std::string& kind) {
    for (std::size_t slope = 0; slope < kCrossoverSlopes.size(); ++slope) {
        if (Folded(kCrossoverSlopes[slope]) != Folded(kind)) continue;
        edits.Set("CrossoverMode", std::to_string(slope));
        edits.Set("LinearPhaseCrossover", "0");
        return true;
    }
    const bool isHybrid = Folded(kind) == "hybrid";
    if (!isHybrid && Folded(kind) != "linear") return false;
    edits.Set("LinearPhaseCrossover", "1");
    edits.Set("LinearPhaseCrossoverFixedQ", isHybrid ? "1" : "0");
    return true;
}

std::vector<std::string> CrossoverNames() {
    std::vector<std::string> names(kCrossoverSlopes.begin(), kCrossoverSlopes.end());
    names.insert(names.end(), {"linear", "hybrid"});
    return names;
}

std::string EditedState(const std::string& state, const StateEdits& edits,
                        const std::string& source) {
    try {
        MMemoryStream stream(state.data(), static_cast<std::int32_t>(state.size()));
        MXMLDocument document;
        document.Load(stream);
        if (document.Root().GetName().CompareNoCase(kRoot) != 0)
            throw RenderError(source + " is no state of the plug-in.");
        for (const StateEdits::Edit& edit : edits.edits)
            document.Root().SetAttribute(MString::FromUtf8(edit.name),
                                         MString::FromUtf8(edit.value));
        MMemoryStream edited;
        document.Save(edited, true, "utf-8");
        return {reinterpret_cast<const char*>(edited.GetData()),
                static_cast<std::size_t>(edited.GetSize())};
    } catch (const MException& error) {
        throw RenderError(source + " is no state of the plug-in: " + error.message.ToUtf8());
    }
}
