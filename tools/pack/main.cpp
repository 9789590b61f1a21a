// SPDX-License-Identifier: GPL-3.0-or-later
// Packs a folder of resources into the container that the plug-in reads.
#include <CLI/CLI.hpp>
#include <iostream>
#include <string>

#include "foundation/streams/user_file.h"
#include "foundation/text/exception.h"
#include "pack.h"

int main(int argc, char** argv) {
    CLI::App app("Packs a folder of resources into an mrf file.");
    std::string folder, output;
    app.add_option("FOLDER", folder, "has resources.mrdef, which names the others")->required();
    app.add_option("OUTPUT", output, "the container, which is replaced as a whole")->required();
    CLI11_PARSE(app, argc, argv);
    try {
        WriteUserFile(MString::FromUtf8(output), [&folder](MStream& container) {
            PackFolder(MString::FromUtf8(folder), container);
        });
    } catch (const std::exception& error) {
        std::cerr << "quillorea-pack: " << folder << ": " << error.what() << '\n';
        return 1;
    }
    return 0;
}
