// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

// What the host interfaces do not carry is changed in the text of the plug-in's state: an XML tree
// whose root is "settings".
//
// Errors   RenderError where a text is no state

// Attributes of the root, by name.
struct StateEdits {
    struct Edit {
        std::string name;
        std::string value;
    };
    std::vector<Edit> edits;

    void Set(const std::string& name, const std::string& value) { edits.push_back({name, value}); }
    bool IsEmpty() const { return edits.empty(); }
};

// count bands, split at the frequencies that the plug-in itself starts with.
void SetBands(StateEdits& edits, int count);

// The kinds of crossover that people name: "12dB/oct" and up to "120dB/oct" for the analog one,
// "linear" and "hybrid". False where it is none of them.
bool SetCrossover(StateEdits& edits, const std::string& kind);
std::vector<std::string> CrossoverNames();

// source names the text in messages.
std::string EditedState(const std::string& state, const StateEdits& edits,
                        const std::string& source);
