// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/text/exception.h"

#include <new>

namespace {

// An exception that runs out of memory for its own description is still that exception.
std::shared_ptr<const std::string> Describe(const MString& message) noexcept {
    if (message.Literal() != nullptr) return nullptr;
    try {
        return std::make_shared<const std::string>(message.ToUtf8());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

MException::MException(const MString& message, int code) : MException(MString(), message, code) {}

MException::MException(const MString& context, const MString& message, int code)
    : context(context), message(message), code(code), utf8(Describe(message)) {}

const char* MException::what() const noexcept {
    if (message.Literal() != nullptr) return message.Literal();
    return utf8 != nullptr ? utf8->c_str() : "(no memory for the message)";
}
