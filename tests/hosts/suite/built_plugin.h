// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/streams/stream_support.h"
#include "hosting/hosted_plugin.h"
#include "support/signals.h"

// The built plug-in as hosts have it: each case of the suite runs through the bundle's VST 3 entry
// and through the plain library's VST 2 entry.
//
// Settings go in as states, since these carry everything, and by parameter IDs, which both
// interfaces have in common.

enum class Interface { Vst3, Vst2 };

// The library in the build folder.
std::shared_ptr<HostedLibrary> OpenBuilt(Interface interface);

// A plug-in that runs, at 48 kHz and in blocks of up to 8192 samples unless told otherwise.
// Everything behind its first block, and the first one of each thread, runs in an allocation trap.
class BuiltPlugin {
public:
    static constexpr int kLargestBlock = 8192;

    explicit BuiltPlugin(Interface interface, const std::string& state = {}, double rate = 48000);
    BuiltPlugin(HostedLibrary& library, const std::string& state, double rate = 48000);

    HostedPlugin* operator->() const { return plugin.get(); }

    // In blocks of these sizes, one after the other and again. `prepare` may put changes and
    // messages into a block.
    using Prepare = std::function<void(HostedBlock& block, int from)>;
    Audio Run(const Audio& input, const std::vector<int>& blockSizes = {512},
              const Prepare& prepare = {});
    // One block as it is.
    void Process(HostedBlock& block);
    // A block without samples, which still carries the changes.
    void Flush(const std::vector<HostedChange>& changes);

    std::vector<double> Positions() const;

private:
    std::unique_ptr<HostedPlugin> plugin;
    std::size_t largestList = 0;  // of changes and messages in one block so far
    bool isWarm = false;
};

// Of a case with an interface, and of one for each.
class Suite : public testing::TestWithParam<Interface> {};

#define FOR_BOTH_INTERFACES(Fixture)                                                           \
    INSTANTIATE_TEST_SUITE_P(Both, Fixture, testing::Values(Interface::Vst3, Interface::Vst2), \
                             [](const auto& interface) {                                       \
                                 return interface.param == Interface::Vst3 ? "Vst3" : "Vst2";  \
                             })

// A state with these attributes of the root and, between them, those of each band's effect.
std::string StateOf(const std::string& attributes, const std::string& bandAttributes = {});

// ID of a parameter by the name that VST 3 tells: "Band 1 - Rate".
std::uint32_t IDOf(const std::string& name);
// How many there are besides the interface's own.
std::uint32_t ParameterCount();

// A home of its own for the library, which is loaded anew, from a copy: what a process has of the
// built library does not come back to its start.
class FreshLibrary {
public:
    // With this text as the file of settings, where there is any.
    explicit FreshLibrary(const std::string& settings = {});
    FreshLibrary(const FreshLibrary&) = delete;
    FreshLibrary& operator=(const FreshLibrary&) = delete;
    ~FreshLibrary();

    std::shared_ptr<HostedLibrary> Open(Interface interface) const;

    const TestFolder folder;
    // With the folders "config" and "data", which XDG's variables name.
    const std::filesystem::path home = folder.path / "home";
};

int ThreadCount();
// Of the C library's heap, by this process.
std::int64_t BytesInUse();
