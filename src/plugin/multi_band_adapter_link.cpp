// SPDX-License-Identifier: GPL-3.0-or-later

// The parameters of bands: which there are, and how a change of one goes to the others.

#include "foundation/objects/guarded.h"
#include "plugin/frame/editor_factory.h"
#include "plugin/multi_band_adapter.h"

namespace {

constexpr const char* kBandPrefix = "Band ";
constexpr int kNumberPlace = 5;  // behind the prefix
constexpr std::uint32_t kLinkingKeys = 0x20;

bool IsDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

bool HasPrefixAt(const MString& identifier, int place) {
    return identifier.SubString(place, kNumberPlace) == kBandPrefix;
}

// The first number behind the prefix, wherever that stands; 0 without one.
int BandNumberOf(const MString& identifier) {
    int place = 0;
    while (place < identifier.Length() && !HasPrefixAt(identifier, place)) ++place;
    while (place < identifier.Length() && !IsDigit(identifier[place])) ++place;
    return MString::ToInt(identifier.SubString(place));
}

MString IdentifierInBand(const MString& identifier, int band) {
    return identifier.SubString(0, kNumberPlace)
        .Append(MString::FromInt(band + 1))
        .Append(identifier.SubString(kNumberPlace + 1));
}

}  // namespace

bool MAudioEffectPluginToAudioPluginMultiBandAdapter::IsParameterAvailable(int index) {
    return BandNumberOf(GetParameterID(index)) <= GetBandCount();
}

MString MAudioEffectPluginToAudioPluginMultiBandAdapter::GetParameterShortName(int index) {
    const MString name = GetParameterNameWithoutSection(index);
    const bool isOfBand = HasPrefixAt(name, 0) && IsDigit(name[kNumberPlace]);
    return isOfBand ? name.SubString(kNumberPlace) : name;
}

// Without a lock: who holds processLock may be the one that changes a parameter.
bool MAudioEffectPluginToAudioPluginMultiBandAdapter::AreBandsLinked() const {
    return linkBands.load(kRelaxed) ||
           (isEditorOpen.load(kRelaxed) && (editorFactory->KeyState() & kLinkingKeys) != 0);
}

void MAudioEffectPluginToAudioPluginMultiBandAdapter::ParameterChanged(int index) {
    using Base = MAudioEffectPluginToAudioPluginAdapter;
    Guarded("MAudioEffectPluginToAudioPluginMultiBandAdapter::ParameterChanged", [&] {
        Base::ParameterChanged(index);
        if (!AreBandsLinked()) return;
        const MString identifier = GetParameterID(index);
        if (!HasPrefixAt(identifier, 0)) return;
        const int band = identifier[kNumberPlace] - u'1';
        if (band < 0 || band >= GetBandCount()) return;

        const double value = GetParameter(index);
        for (int b = 0; b < GetBandCount(); ++b) {
            const int twin = b != band ? FindParameter(IdentifierInBand(identifier, b)) : -1;
            if (twin < 0) continue;
            SetParameter(twin, value, false);
            Base::ParameterChanged(twin);
        }
        ParametersChanged();
    });
}
