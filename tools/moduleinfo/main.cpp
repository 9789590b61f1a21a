// SPDX-License-Identifier: GPL-3.0-or-later

// quillorea-moduleinfo LIBRARY FILE: asks the library's factory for what its moduleinfo.json says.
// Exit status 1 and a sentence where that can't be had.

#include <cstdio>
#include <fstream>

#include "foundation/text/exception.h"
#include "hosting/vst3_plugin.h"
#include "hosts/vst3/module_info.h"

namespace {

int Fail(const char* text) {
    std::fprintf(stderr, "quillorea-moduleinfo: %s\n", text);
    return 1;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) return Fail("needs a library and the file to write");
    try {
        Vst3Library library(arguments[1]);
        const Steinberg::FUnknownPtr<Steinberg::IPluginFactory3> factory(&library.Factory());
        if (!factory) return Fail("the library has no factory of version 3");
        std::ofstream file(arguments[2], std::ios::binary);
        file << ModuleInfoText(*factory);
        file.close();
        return file ? 0 : Fail("the file can't be written");
    } catch (const std::exception& error) {
        return Fail(error.what());
    }
}
