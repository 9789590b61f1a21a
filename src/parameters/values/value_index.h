// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>

#include "parameters/values/value.h"

// A value that is one entry of several: the base of enumerations and lists.
//
// Ranges   an index outside the entries reads as the nearest entry; without entries it is 0 and the
//          text is empty. A step is one entry, whatever its shift

// Index: a signed 32-bit integer or an enumeration whose enumerators are 0, 1, 2 ...
template <typename Index>
class MValueIndex : public MValue {
public:
    int Get() const { return static_cast<int>(ref.Get<Index>()); }
    // Not limited.
    void Set(int index) { ref.Set(static_cast<Index>(index)); }

    MString GetString() override { return GetText(); }
    void SetString(const MString& text) override { SetText(text); }
    bool SetDefault() override { return Assign(defaultIndex); }
    // "default" and "value" are names of entries.
    void LoadXmlAttributes(MAttribute& item) override;
    MValueType GetType() const override { return MValueType::Enumeration; }

    MString GetTextInternal() const override { return EntryOrEmpty(Get()); }
    MString GetTextFrom01(double position) const override {
        return EntryOrEmpty(IndexAt(position));
    }
    bool SetTextInternal(const MString& text) override {
        const int index = FindEntry(text);
        return index >= 0 && Assign(index);
    }

    void Limit() override {
        const int limited = Limited(Get());
        if (limited != Get()) Set(limited);
    }
    bool Step(int count, int) override { return Assign(Moved(count)); }
    bool StepFine(int count) override { return Assign(Moved(count)); }

    double Get01() const override {
        const int last = GetItemCount() - 1;
        return last > 0 ? Limited01(static_cast<double>(Get()) / last) : 0;
    }
    bool Set01(double position) override { return Assign(IndexAt(position)); }
    bool SetItem(int i) override { return Assign(i); }

    bool HasChanged() const override { return ref.changed; }
    void ClearChanged() override { ref.changed = false; }

    int defaultIndex;

protected:
    // One that owns its index starts at the default.
    explicit MValueIndex(const MValueRef& source, int defaultIndex)
        : defaultIndex(defaultIndex), ref(source) {
        if (ref.IsOwner()) Set(defaultIndex);
        ref.changed = false;
    }

    // index 0 .. GetItemCount() - 1
    virtual MString GetEntry(int index) const = 0;

private:
    // The index of the first entry of this name in any case, -1 where there is none.
    int FindEntry(const MString& name) const {
        for (int i = 0; i < GetItemCount(); ++i) {
            if (name.CompareNoCase(GetEntry(i)) == 0) return i;
        }
        return -1;
    }
    int Limited(int index) const { return std::clamp(index, 0, std::max(GetItemCount() - 1, 0)); }
    int Moved(int count) const {
        const std::int64_t index = std::int64_t{Get()} + count;
        return static_cast<int>(std::clamp<std::int64_t>(index, 0, Limited(INT32_MAX)));
    }
    int IndexAt(double position) const {
        return static_cast<int>(Limited(INT32_MAX) * Limited01(position) + 0.5);
    }
    MString EntryOrEmpty(int index) const {
        return GetItemCount() > 0 ? GetEntry(Limited(index)) : MString();
    }
    bool Assign(int index) {
        const int before = Get();
        Set(Limited(index));
        return Get() != before;
    }

    MValueRef ref;
};

template <typename Index>
void MValueIndex<Index>::LoadXmlAttributes(MAttribute& item) {
    const auto read = [this, &item](const MString& name, int& index) {
        const int found = item.HasAttribute(name) ? FindEntry(item.GetCachedAttribute()) : -1;
        if (found >= 0) Set(index = found);
        return found >= 0;
    };
    MValue::LoadXmlAttributes(item);
    const bool hasDefault = read("default", defaultIndex);
    if (int value = 0; read("value", value) && !hasDefault) defaultIndex = value;
}
