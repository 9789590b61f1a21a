// SPDX-License-Identifier: GPL-3.0-or-later

// quillorea-parameters BUNDLE [--check|--grow FILE]: a table of the parameters that songs and
// automation rely on. Prints it; or compares a file with it, row by row; or appends to the file the
// rows that it lacks. A row that is there and has changed is never written over: before the first
// release remove the file, behind it find out why.
// Exit status 1 and a sentence where the file differs or anything fails.

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "hosting/hosted_plugin.h"
#include "hosting/private_configuration.h"
#include "hosts/startup/product.h"
#include "plugin/frame/audio_plugin.h"

namespace {

using Rows = std::vector<std::string>;

constexpr char kHeader[] =
    "# Grows at its end only, by quillorea-parameters. A range is the text at 0, 1/2 and 1.\n"
    "# index|VST 3 ID|identifier|name|range|default|steps|automatable\n";

std::string Number(double position) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", position);
    return text;
}

std::string RowOf(HostedPlugin& hosted, const HostedParameter& parameter, std::size_t index,
                  MAudioPlugin& plugin) {
    std::string row = std::to_string(index) + '|' + std::to_string(parameter.id) + '|' +
                      plugin.GetParameterID(static_cast<int>(index)).ToUtf8() + '|' +
                      parameter.name + '|';
    for (const double position : {0.0, 0.5, 1.0})
        row += hosted.TextAt(parameter.id, position) + (position < 1 ? " .. " : "|");
    return row + Number(parameter.defaultPosition) + '|' + std::to_string(parameter.stepCount) +
           '|' + (parameter.isAutomatable ? "yes" : "no");
}

// Without those that only the interface has.
Rows TableOf(const std::string& bundle) {
    const PrivateConfiguration none("quillorea", "GlobalConfiguration.xml", "");
    const std::unique_ptr<HostedPlugin> hosted = OpenVst3(bundle)->Create();
    const std::unique_ptr<MAudioPlugin> plugin = CreateProductPlugin();
    if (plugin == nullptr) throw HostingError("the plug-in can't be made");
    Rows rows;
    for (const HostedParameter& parameter : hosted->Parameters())
        if (!parameter.isBypass && !parameter.isHidden)
            rows.push_back(RowOf(*hosted, parameter, rows.size(), *plugin));
    if (rows.size() != static_cast<std::size_t>(plugin->GetHostParameterCount()))
        throw HostingError("the bundle is of another build than this program");
    return rows;
}

Rows RowsIn(const std::string& path) {
    Rows rows;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (!line.starts_with('#')) rows.push_back(line);
    return rows;
}

void RequireStart(const Rows& known, const Rows& table) {
    for (std::size_t i = 0; i < known.size(); ++i)
        if (i >= table.size() || known[i] != table[i])
            throw HostingError("songs know this parameter\n  " + known[i] + "\nwhich now is\n  " +
                               (i < table.size() ? table[i] : "gone"));
}

void Grow(const std::string& path, const Rows& known, const Rows& table) {
    std::ofstream file(path, std::ios::app);
    if (known.empty()) file << kHeader;
    for (std::size_t i = known.size(); i < table.size(); ++i) file << table[i] << '\n';
    if (!file.flush()) throw HostingError("'" + path + "' can't be written");
}

void Run(const std::vector<std::string>& arguments) {
    const bool isGrowing = arguments.size() == 3 && arguments[1] == "--grow";
    if (arguments.size() != 1 && !isGrowing && (arguments.size() != 3 || arguments[1] != "--check"))
        throw HostingError("needs a bundle, and then --check or --grow with a file, or nothing");
    const Rows table = TableOf(arguments[0]);
    if (arguments.size() == 1) {
        std::fputs(kHeader, stdout);
        for (const std::string& row : table) std::puts(row.c_str());
        return;
    }
    const Rows known = RowsIn(arguments[2]);
    RequireStart(known, table);
    if (isGrowing) return Grow(arguments[2], known, table);
    if (known.size() < table.size())
        throw HostingError("the file lacks new parameters, which --grow adds to it");
}

}  // namespace

int main(int count, char** arguments) {
    try {
        Run({arguments + 1, arguments + count});
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillorea-parameters: %s\n", error.what());
        return 1;
    }
}
