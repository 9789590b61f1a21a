// SPDX-License-Identifier: GPL-3.0-or-later
#include "options.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <limits>

#include "errors.h"
#include "number_text.h"
#include "parameters.h"

namespace {

constexpr char kDescription[] =
    "Runs the Quillorea chorus over an audio file.\n\n"
    "Reads WAV, FLAC, AIFF, OGG and whatever else libsndfile knows, of up to 8 channels, and "
    "keeps\n"
    "the rate and the channels.";

constexpr char kExamples[] =
    "Examples:\n"
    "  quillorea-render guitar.wav\n"
    "  quillorea-render --list\n"
    "  quillorea-render keys.flac wide.flac --quality hq --set Voices=6 --set 'Spread mode=Phase'\n"
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

void AddFiles(CLI::App& app, RenderOptions& options) {
    app.add_option("IN", options.input, "The audio file to read");
    app.add_option("OUT", options.output,
                   "The file to write; without it, IN's name with \"-chorus.wav\" beside IN.\n"
                   ".wav: 32-bit float, .flac and .aiff (.aif): 24 bit, .ogg: Vorbis");
}

void AddSound(CLI::App& app, RenderOptions& options) {
    app.add_option("--set", options.settings,
                   "Sets a parameter, given by identifier or name; may be repeated")
        ->type_name("PARAMETER=VALUE")
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
           "--quality", [&](const std::string& text) { options.highQuality = text == "hq"; },
           "How delayed sound is read: normal (cubic, the default) or\nhq (37-tap sinc)")
        ->check(CLI::IsMember({"hq", "normal"}).description(""))
        ->type_name("hq|normal")
        ->group("Sound");
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
        "Samples the effect gets at a time, 512 unless told;\n"
        "random: 1 to 4096, the same sequence every time")
        ->type_name("N|random")
        ->group("Rendering");
    AddNumber(
        app, "--tail", {0, 86400, false, "auto"},
        [&](auto seconds) { options.tailSeconds = seconds; },
        "How long to render on after IN ends; auto (the default):\nuntil the effect is silent")
        ->type_name("SECONDS|auto")
        ->group("Rendering");
}

void CompletePaths(RenderOptions& options) {
    if (options.list) return;
    if (options.input.empty())
        throw UsageError("No input file is given; quillorea-render --help tells how to use it.");
    if (!options.output.empty()) return;
    const std::filesystem::path input = options.input;
    options.output = (input.parent_path() / input.stem()).string() + "-chorus.wav";
}

}  // namespace

std::optional<int> ParseOptions(int argc, const char* const* argv, RenderOptions& options) {
    CLI::App app(kDescription, "quillorea-render");
    app.footer(std::string(kUnitsNote) + "\n\n" + kExamples);
    app.get_formatter()->column_width(26);
    app.set_help_flag("-h,--help", "Shows this text")->group("Information");
    app.set_version_flag("--version", "quillorea-render " QUILLOREA_VERSION, "Shows the version")
        ->group("Information");
    app.add_flag("--list", options.list,
                 "Lists the parameters: index, name, identifier, range, default; needs no IN")
        ->group("Information");
    AddFiles(app, options);
    AddSound(app, options);
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
