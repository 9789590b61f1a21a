// SPDX-License-Identifier: GPL-3.0-or-later
#include "hosts/suite/built_plugin.h"

#include <malloc.h>

#include <cstdlib>
#include <map>
#include <optional>

#include "support/allocation_trap.h"

#if QUILLOREA_SANITIZED
#include <sanitizer/allocator_interface.h>
#endif

namespace fs = std::filesystem;

namespace {

thread_local bool isWarmThread = false;

std::shared_ptr<HostedLibrary> OpenAt(Interface interface, const std::string& vst3,
                                      const std::string& vst2) {
    return interface == Interface::Vst3 ? OpenVst3(vst3) : OpenVst2(vst2);
}

void TellHome(const fs::path& home) {
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
}

// Of the whole program, so that nobody's settings reach the library.
const struct EmptyHome {
    EmptyHome() { TellHome(folder.path); }

    const TestFolder folder;
} emptyHome;

// IDs by name.
const std::map<std::string, std::uint32_t>& IDs() {
    static const auto ids = [] {
        std::map<std::string, std::uint32_t> found;
        for (const HostedParameter& parameter : OpenBuilt(Interface::Vst3)->Create()->Parameters())
            if (!parameter.isBypass && !parameter.isHidden) found[parameter.name] = parameter.id;
        return found;
    }();
    return ids;
}

}  // namespace

std::shared_ptr<HostedLibrary> OpenBuilt(Interface interface) {
    return OpenAt(interface, QUILLOREA_BUNDLE, QUILLOREA_LIBRARY);
}

BuiltPlugin::BuiltPlugin(Interface interface, const std::string& state, double rate)
    : BuiltPlugin(*OpenBuilt(interface), state, rate) {}

BuiltPlugin::BuiltPlugin(HostedLibrary& library, const std::string& state, double rate)
    : plugin(library.Create()) {
    if (!state.empty()) {
        EXPECT_TRUE(plugin->SetState(state)) << state;
    }
    plugin->Setup(rate, kLargestBlock);
    plugin->Activate(true);
}

void BuiltPlugin::Process(HostedBlock& block) {
    const std::size_t list = std::max(block.changes.size(), block.midi.size());
    std::optional<AllocationTrap> trap;
    if (isWarm && isWarmThread && list <= largestList) trap.emplace("process");
    plugin->Process(block);
    isWarm = isWarmThread = true;
    largestList = std::max(largestList, list);
}

Audio BuiltPlugin::Run(const Audio& input, const std::vector<int>& blockSizes,
                       const Prepare& prepare) {
    const int length = static_cast<int>(input.at(0).size());
    const int channels = static_cast<int>(input.size());
    Audio in = input;
    Audio out = Constant(channels, length, 0.5f);  // nothing may be left of it
    HostedBlock block;
    for (int from = 0, b = 0; from < length; from += block.sampleCount, ++b) {
        auto inputs = WritePointers(in, from), outputs = WritePointers(out, from);
        block.sampleCount =
            std::min(blockSizes[static_cast<std::size_t>(b) % blockSizes.size()], length - from);
        block.inputs = {{inputs.data(), channels}};
        block.outputs = {{outputs.data(), channels}};
        block.changes.clear();
        block.midi.clear();
        if (prepare) prepare(block, from);
        Process(block);
    }
    return out;
}

void BuiltPlugin::Flush(const std::vector<HostedChange>& changes) {
    HostedBlock block{.changes = changes};
    plugin->Process(block);
}

std::vector<double> BuiltPlugin::Positions() const {
    std::vector<double> positions;
    for (std::uint32_t id = 0; id < ParameterCount(); ++id)
        positions.push_back(plugin->Position(id));
    return positions;
}

std::string StateOf(const std::string& attributes, const std::string& bandAttributes) {
    std::string text = "<settings " + attributes + '>';
    for (const char band : {'0', '1', '2', '3', '4', '5'})
        text += std::string("<band") + band + ' ' + bandAttributes + "/>";
    return text + "</settings>";
}

std::uint32_t IDOf(const std::string& name) {
    const auto found = IDs().find(name);
    if (found != IDs().end()) return found->second;
    ADD_FAILURE() << "no parameter " << name;
    return 0;
}

std::uint32_t ParameterCount() { return static_cast<std::uint32_t>(IDs().size()); }

FreshLibrary::FreshLibrary(const std::string& settings) {
    fs::create_directories(home / "config/quillorea");
    fs::copy(QUILLOREA_LIBRARY, folder.path);
    if (!settings.empty())
        folder.SetContent("home/config/quillorea/GlobalConfiguration.xml", settings);
    TellHome(home);
}

FreshLibrary::~FreshLibrary() {
    TellHome(emptyHome.folder.path);
    fs::permissions(home, fs::perms::owner_all);
}

std::shared_ptr<HostedLibrary> FreshLibrary::Open(Interface interface) const {
    const std::string copy = folder.path / fs::path(QUILLOREA_LIBRARY).filename();
    return OpenAt(interface, copy, copy);
}

int ThreadCount() {
    return static_cast<int>(std::distance(fs::directory_iterator("/proc/self/task"), {}));
}

std::int64_t BytesInUse() {
#if QUILLOREA_SANITIZED
    return static_cast<std::int64_t>(__sanitizer_get_current_allocated_bytes());
#else
    return static_cast<std::int64_t>(mallinfo2().uordblks);
#endif
}
