// SPDX-License-Identifier: GPL-3.0-or-later
#include "options.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <limits>

#include "errors.h"
#include "nearest_text.h"
#include "number_text.h"
#include "parameters.h"
#include "plugin/protection.h"
#include "state_text.h"

namespace {

constexpr char kDescription[] =
    "Runs the Quillorea plug-in over an audio file: loads the built library as a host does.\n\n"
    "Reads WAV, FLAC, AIFF, OGG and whatever else libsndfile knows, of up to 8 channels, and "
    "keeps\n"
    "the rate and the channels.";

constexpr char kAutomationNote[] =
    "Automation: times are seconds of IN. A value is a position from 0 to 1, or else a text as\n"
    "--set takes it, or a choice, a switch or a whole number. As in a host, the position runs on\n"
    "a straight line from point to point and holds before the first and behind the last; two\n"
    "points at one time are a jump. It is sent ahead of each block, as it stands at the block's\n"
    "end, and the plug-in moves there across the block. Choices, switches and whole numbers hold\n"
    "until the next point and change with the first block that starts at it or later.";

constexpr char kExamples[] =
    "Examples:\n"
    "  quillorea-render guitar.wav\n"
    "  quillorea-render --list\n"
    "  quillorea-render keys.flac wide.flac --set Voices=6 --set 'Spread mode=Phase'\n"
    "  quillorea-render mix.wav --bands 3 --crossover linear --set 'Band 1 Depth=0'\n"
    "  quillorea-render pad.wav --automate 'Rate=0:0.1 Hz,4:2 Hz,8:2 Hz' --channel-mode Side\n"
    "  quillorea-render drums.wav --tempo 120 --position 0 --set sync=on --set synclength__='1 / "
    "8'\n"
    "\n"
    "Exit code: 0 done, 1 it could not be done, 2 the command line is wrong.";

// What an option's value may be: a number within a closed range or, where there is one, a word.
struct NumberRule {
    double min;
    double max;
    bool whole = false;
    std::string word = "";

    bool Fits(const std::string& text) const {
        const std::optional<double> number = ParseNumber(text);
        if (!number) return !word.empty() && text == word;
        return *number >= min && *number <= max && !(whole && *number != std::floor(*number));
    }
    std::string Refusal(const std::string& text) const {
        return std::string("takes a ") + (whole ? "whole number" : "number") + " from " +
               FormatNumber(min) + " to " + FormatNumber(max) +
               (word.empty() ? "" : " or '" + word + "'") + ", not '" + text + "'";
    }
};

// store gets the number, or nothing for the rule's word.
CLI::Option* AddNumber(CLI::App& app, const std::string& name, const NumberRule& rule,
                       const std::function<void(std::optional<double>)>& store,
                       const std::string& description) {
    const CLI::Validator check(
        [rule](std::string& text) { return rule.Fits(text) ? "" : rule.Refusal(text); }, "");
    const auto parse = [store](const std::string& text) { store(ParseNumber(text)); };
    return app.add_option_function<std::string>(name, parse, description)->check(check);
}

std::string ChannelModeNames() {
    std::string names;
    for (const ChannelModeRecord& mode : kChannelModes)
        names += std::string(names.empty() ? "" : ",\n") + mode.shortName + " or " + mode.name;
    return names;
}

ChannelMode ChannelModeNamed(const std::string& text) {
    std::vector<std::string> known;
    for (std::size_t m = 0; m < kChannelModes.size(); ++m) {
        const ChannelModeRecord& mode = kChannelModes[m];
        for (const char* const name : {mode.name, mode.midSideName, mode.shortName}) {
            if (Folded(name) == Folded(text)) return static_cast<ChannelMode>(m);
            known.push_back(name);
        }
    }
    throw UsageError("There is no channel mode '" + text + "'; the nearest is '" +
                     NearestText(text, known) + "'.");
}

int ProtectionNamed(const std::string& text) {
    std::vector<std::string> known;
    for (const ProtectionRecord& protection : kProtections) {
        known.push_back(protection.name);
        if (Folded(protection.name).starts_with(Folded(text))) return protection.subBlock;
    }
    throw UsageError("There is no protection '" + text + "'; the nearest is '" +
                     NearestText(text, known) + "'.");
}

void AddFiles(CLI::App& app, RenderOptions& options) {
    app.add_option("IN", options.input, "The audio file to read");
    app.add_option("OUT", options.output,
                   "The file to write; without it, IN's name with \"-chorus.wav\" beside IN.\n"
                   ".wav: 32-bit float, .flac and .aiff (.aif): 24 bit, .ogg: Vorbis");
}

void AddSound(CLI::App& app, RenderOptions& options) {
    app.add_option("--set", options.settings,
                   "Sets a parameter, given by identifier, name or index; may be\nrepeated")
        ->type_name("PARAMETER=VALUE")
        ->allow_extra_args(false)
        ->group("Sound");
    app.add_option("--automate", options.automation,
                   "Moves a parameter, see below; may be repeated for others")
        ->type_name("PARAMETER=SECONDS:VALUE,...")
        ->allow_extra_args(false)
        ->group("Sound");
    AddNumber(
        app, "--randomize", {0, 1}, [&](auto amount) { options.randomize = amount; },
        "Draws the settings: 1 from nothing, less around their defaults;\n--set comes after it")
        ->type_name("AMOUNT")
        ->group("Sound");
    AddNumber(
        app, "--seed", {0, std::numeric_limits<std::uint32_t>::max(), true},
        [&](auto seed) { options.seed = static_cast<std::uint32_t>(*seed); },
        "Where the draws of --randomize start")
        ->type_name("N")
        ->group("Sound");
    app.add_option_function<std::string>(
           "--quality",
           [&](const std::string& text) {
               // The second is the switch's older name, and wins where both stand.
               for (const char* const key : {"hqupsampling", "Sinc"})
                   options.stateEdits.Set(key, text == "hq" ? "1" : "0");
           },
           "How delayed sound is read: hq (37-tap sinc), which is how the\n"
           "plug-in comes, or normal (cubic)")
        ->check(CLI::IsMember({"hq", "normal"}).description(""))
        ->type_name("hq|normal")
        ->group("Sound");
    app.add_option_function<std::string>(
           "--channel-mode",
           [&](const std::string& text) { options.channelMode = ChannelModeNamed(text); },
           "Which channels are processed, \"Left + Right\" unless told:\n" + ChannelModeNames())
        ->type_name("MODE")
        ->group("Sound");
    app.add_flag("--bypass", options.bypass, "Passes IN by, as the host's bypass does")
        ->group("Sound");
}

void AddStructure(CLI::App& app, RenderOptions& options) {
    AddNumber(
        app, "--bands", {1, 6, true},
        [&](auto count) { SetBands(options.stateEdits, static_cast<int>(*count)); },
        "How many bands, split where the plug-in itself would first\nsplit them")
        ->type_name("N")
        ->group("Sound");
    app.add_option_function<std::string>(
           "--crossover",
           [&](const std::string& kind) {
               if (!SetCrossover(options.stateEdits, kind))
                   throw UsageError("There is no crossover '" + kind + "'; the nearest is '" +
                                    NearestText(kind, CrossoverNames()) + "'.");
           },
           "How bands are split: 12dB/oct, 24dB/oct (the default), 48dB/oct,\n"
           "72dB/oct, 96dB/oct, 120dB/oct, linear or hybrid")
        ->type_name("KIND")
        ->group("Sound");
    app.add_option_function<std::string>(
           "--protection",
           [&](const std::string& text) {
               options.stateEdits.Set("MaxLFOBlockSize", std::to_string(ProtectionNamed(text)));
           },
           "How finely what moves is followed: Minimal, Normal, High,\nVery high or Extreme")
        ->type_name("PROTECTION")
        ->group("Sound");
}

void AddPlugin(CLI::App& app, RenderOptions& options) {
    app.add_option("--plugin", options.plugin.path,
                   "The bundle, or with --vst2 the library, to load instead of the one\n"
                   "that was built or installed with this program")
        ->type_name("PATH")
        ->take_last()
        ->group("Plug-in");
    app.add_flag("--vst2", options.plugin.isVst2, "Loads it through VST 2 instead of VST 3")
        ->group("Plug-in");
    app.add_option("--state-in", options.stateIn,
                   "Starts from a state as a host stores it; all other settings come\non top of it")
        ->type_name("FILE")
        ->group("Plug-in");
    app.add_option("--state-out", options.stateOut,
                   "Stores the state with all settings, as the first block finds it;\nneeds no IN")
        ->type_name("FILE")
        ->group("Plug-in");
    app.add_option("--param", options.positions,
                   "Sets a parameter as a host does: to a position from 0 to 1 or a\n"
                   "text; comes after --set, and may be repeated")
        ->type_name("NAME|INDEX|ID=VALUE")
        ->allow_extra_args(false)
        ->group("Plug-in");
}

void AddInformation(CLI::App& app, RenderOptions& options) {
    app.set_help_flag("-h,--help", "Shows this text")->group("Information");
    app.set_version_flag("--version", "quillorea-render " QUILLOREA_VERSION, "Shows the version")
        ->group("Information");
    using Information = RenderOptions::Information;
    const auto add = [&](const char* name, Information shown, const char* description) {
        app.add_flag_callback(
               name, [&options, shown] { options.information = shown; }, description)
            ->group("Information");
    };
    add("--list", Information::List,
        "Lists the parameters: index, name, identifier, range, default;\nneeds no IN");
    add("--list-params", Information::InterfaceList,
        "Lists the parameters as the interface tells them: index, ID, name,\n"
        "section, steps, default; needs no IN");
    add("--info", Information::Plugin, "Shows name, version, buses, latency, tail; needs no IN");
}

void AddTransport(CLI::App& app, RenderOptions& options) {
    CLI::Option* tempo = AddNumber(
        app, "--tempo", {1, 1000}, [&](auto tempo) { options.tempo = *tempo; },
        "Tempo in beats a minute, for --set sync=on");
    tempo->type_name("BPM")->group("Transport");
    AddNumber(
        app, "--position", {0, 1e6}, [&](auto position) { options.position = *position; },
        "Plays: the song position in quarter notes where IN begins,\n"
        "moving on with the tempo. Without it the transport stands\nstill; needs --tempo")
        ->type_name("QUARTERS")
        ->needs(tempo)
        ->group("Transport");
}

void AddRendering(CLI::App& app, RenderOptions& options) {
    AddNumber(
        app, "--block", {1, RenderOptions::kMaxBlock, true, "random"},
        [&](auto size) {
            options.blockSize = static_cast<int>(size.value_or(RenderOptions::kRandomBlocks));
        },
        "Samples the plug-in gets at a time, 512 unless told;\n"
        "random: 1 to 4096, the same sequence every time")
        ->type_name("N|random")
        ->group("Rendering");
    AddNumber(
        app, "--tail", {0, 86400, false, "auto"},
        [&](auto seconds) { options.tailSeconds = seconds; },
        "How long to render on after IN ends; auto (the default):\nuntil the plug-in is silent")
        ->type_name("SECONDS|auto")
        ->group("Rendering");
}

void CompletePaths(RenderOptions& options) {
    const bool isInformed = options.information != RenderOptions::Information::None;
    if (isInformed) options.input.clear();
    if (isInformed || (options.input.empty() && !options.stateOut.empty())) return;
    if (options.input.empty())
        throw UsageError("No input file is given; quillorea-render --help tells how to use it.");
    if (!options.output.empty()) return;
    const std::filesystem::path input = options.input;
    options.output = (input.parent_path() / input.stem()).string() + "-chorus.wav";
}

}  // namespace

std::optional<int> ParseOptions(int argc, const char* const* argv, RenderOptions& options) {
    CLI::App app(kDescription, "quillorea-render");
    app.footer(std::string(kUnitsNote) + "\n\n" + kAutomationNote + "\n\n" + kExamples);
    app.get_formatter()->column_width(26);
    AddInformation(app, options);
    AddFiles(app, options);
    AddPlugin(app, options);
    AddSound(app, options);
    AddStructure(app, options);
    AddTransport(app, options);
    AddRendering(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& done) {
        return app.exit(done);
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    CompletePaths(options);
    return std::nullopt;
}
