// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

// A shared library, loaded as long as the object lives.
//
// Errors   HostingError where there is no such file or it can't be loaded, and from Require

class SharedLibrary {
public:
    explicit SharedLibrary(const std::string& path);
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;
    ~SharedLibrary();

    // Null where it exports none of that name.
    template <typename Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(FindAddress(name));
    }
    template <typename Function>
    Function Require(const char* name) const {
        const auto function = Find<Function>(name);
        if (function == nullptr) ThrowMissing(name);
        return function;
    }

    // The system's handle.
    void* Handle() const { return handle; }
    const std::string& Path() const { return path; }

private:
    void* FindAddress(const char* name) const;
    [[noreturn]] void ThrowMissing(const char* name) const;

    std::string path;
    void* handle;
};
