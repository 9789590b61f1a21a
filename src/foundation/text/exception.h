// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <exception>
#include <memory>
#include <string>

#include "foundation/text/mstring.h"

// What the system raises, by value; caught by reference.
//
//     throw MException("Index out of range.");
//
// Ranges   code 0 general, 1 unsupported, 2 bad argument, 256 bad data, 257 codec set-up,
//          258 not initialised, 512 network, 513 HTTP, 768 drawing
// Threads  any; what it holds is fixed when it is made
// Memory   a literal message costs no allocation

class MException : public std::exception {
public:
    explicit MException(const MString& message, int code = 0);
    MException(const MString& context, const MString& message, int code);

    // The message as UTF-8, valid as long as the exception or a copy of it. Where there was no
    // memory for a message that is not a literal, a text that says so.
    const char* what() const noexcept override;

    const MString context;  // name of the operation for tracing, empty where the raiser has none
    const MString message;
    const int code;

private:
    std::shared_ptr<const std::string> utf8;  // null for a literal
};
