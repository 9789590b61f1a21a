// SPDX-License-Identifier: GPL-3.0-or-later
#include "prepared_plugin.h"

#include <fstream>
#include <iterator>

#include "block_cutter.h"
#include "errors.h"
#include "foundation/objects/random.h"
#include "output_file.h"
#include "text_table.h"

namespace {

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) throw RenderError("Cannot read '" + path + "'.");
    return bytes;
}

// More than two channels are surround, which has no pairs that another mode could take apart.
std::optional<ChannelMode> ModeFor(const RenderOptions& options, int channels) {
    if (channels <= 2) return options.channelMode;
    if (options.channelMode.value_or(kModeSurround) == kModeSurround) return kModeSurround;
    const char* const name = kChannelModes[static_cast<std::size_t>(*options.channelMode)].name;
    throw RenderError("Cannot render '" + options.input + "' as '" + name + "': it has " +
                      std::to_string(channels) +
                      " channels, and only 'Surround' takes more than 2.");
}

StateEdits EditsFor(const RenderOptions& options, int channels) {
    StateEdits edits = options.stateEdits;
    if (const std::optional<ChannelMode> mode = ModeFor(options, channels))
        edits.Set("ChannelMode", kChannelModes[static_cast<std::size_t>(*mode)].name);
    if (options.bypass) edits.Set("Bypass", "1");
    return edits;
}

const char* KindOf(const HostedBus& bus) {
    if (!bus.isAudio) return bus.isInput ? "event input" : "event output";
    return bus.isInput ? "audio input" : "audio output";
}

}  // namespace

PreparedPlugin::PreparedPlugin(const RenderOptions& options, int channels, int rate)
    : runner(options.plugin, channels > 2), parameters(runner.Plugin(), description) {
    if (options.seed) SetRandomSeed(*options.seed);
    runner.Start(SetupFor(options, channels, rate));
}

PluginRunner::Setup PreparedPlugin::SetupFor(const RenderOptions& options, int channels, int rate) {
    PluginRunner::Setup setup = {.channels = channels,
                                 .rate = rate,
                                 .largestBlock = BlockCutter(options.blockSize).Largest(),
                                 .start = {options.tempo, options.position},
                                 .state = std::nullopt,
                                 .stateSource = "'" + options.stateIn + "'",
                                 .stateEdits = EditsFor(options, channels),
                                 .isBypassed = options.bypass,
                                 .settings = {},
                                 .lanes = parameters.ReadLanes(options.automation)};
    if (!options.stateIn.empty()) setup.state = ReadFile(options.stateIn);
    const auto add = [&setup](const std::vector<ParameterSetting>& more) {
        setup.settings.insert(setup.settings.end(), more.begin(), more.end());
    };
    if (options.randomize) add(parameters.Draw(*options.randomize));
    add(parameters.ReadSettings(options.settings));
    add(parameters.ReadPositions(options.positions));
    return setup;
}

void PreparedPlugin::SaveState(const std::string& path) {
    const std::string state = runner.Plugin().State();
    OutputFile file(path);
    file.Write(state.data(), static_cast<std::int64_t>(state.size()));
    file.Commit();
}

std::string PreparedPlugin::Info() {
    HostedPlugin& plugin = runner.Plugin();
    const HostedInfo& info = plugin.Info();
    const std::int64_t tail = plugin.TailLength();
    std::vector<std::vector<std::string>> rows = {
        {"Name:", info.name},           {"Vendor:", info.vendor},     {"Version:", info.version},
        {"Interface:", info.interface}, {"Category:", info.category}, {"Identity:", info.identity}};
    for (const HostedBus& bus : plugin.Buses())
        rows.push_back({"Bus:", bus.name + ", " + (bus.isMain ? "main " : "auxiliary ") +
                                    KindOf(bus) + ", " + std::to_string(bus.channels) +
                                    (bus.channels == 1 ? " channel" : " channels")});
    rows.push_back({"Latency:", std::to_string(plugin.Latency()) + " samples"});
    rows.push_back(
        {"Tail:", tail == HostedPlugin::kEndless ? "endless" : std::to_string(tail) + " samples"});
    rows.push_back({"Parameters:", std::to_string(plugin.Parameters().size())});
    return AlignedTable(rows);
}
