// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/web_address.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "foundation/streams/hexa_digits.h"

namespace {

constexpr std::string_view kSchemeEnd = "://";

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool IsLetterOrDigit(char c) { return IsLetter(c) || IsDigit(c); }
constexpr bool IsSchemeCharacter(char c) {
    return IsLetterOrDigit(c) || c == '+' || c == '-' || c == '.';
}
constexpr bool IsUnreserved(char c) {
    return IsLetterOrDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}
constexpr bool IsHostCharacter(char c) { return IsUnreserved(c) || c == ':' || c == '%'; }

// Takes what stands in front of the first such character, or all, off the text.
std::string_view TakeUntil(std::string_view& text, std::string_view characters) {
    const std::size_t end = std::min(text.find_first_of(characters), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(end);
    return taken;
}

bool ParsePort(std::string_view text, std::uint16_t& port) {
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, port);
    return error == std::errc() && read == end && port > 0;
}

// What stands behind the host: nothing, a colon, or a colon and a port.
bool ParsePortPart(std::string_view text, std::uint16_t& port) {
    if (text.empty() || text == ":") return true;
    return text.front() == ':' && ParsePort(text.substr(1), port);
}

std::string RemoveDotSegments(std::string_view path) {
    std::vector<std::string_view> kept;
    bool endsInFolder = false;
    while (!path.empty()) {
        path.remove_prefix(1);  // the slash
        const std::string_view segment = TakeUntil(path, "/");
        endsInFolder = segment == "." || segment == "..";
        if (segment == ".." && !kept.empty()) kept.pop_back();
        if (!endsInFolder) kept.push_back(segment);
    }
    std::string result;
    for (const std::string_view segment : kept) result.append("/").append(segment);
    if (endsInFolder || kept.empty()) result += '/';
    return result;
}

}  // namespace

std::string_view AddressScheme(std::string_view address) {
    const std::string_view scheme = address.substr(0, address.find(kSchemeEnd));
    const bool isScheme = scheme.size() < address.size() && !scheme.empty() &&
                          IsLetter(scheme.front()) &&
                          std::all_of(scheme.begin(), scheme.end(), IsSchemeCharacter);
    return isScheme ? scheme : std::string_view();
}

std::string PercentEncode(std::string_view bytes, std::string_view kept) {
    std::string encoded;
    for (const char byte : bytes) {
        if (IsUnreserved(byte) || kept.find(byte) != std::string_view::npos) {
            encoded += byte;
        } else {
            encoded += '%';
            AppendHexaDigits(encoded, static_cast<std::uint8_t>(byte));
        }
    }
    return encoded;
}

std::optional<WebAddress> ParseWebAddress(std::string_view address) {
    address.remove_prefix(AddressScheme(address).size() + kSchemeEnd.size());
    std::string_view authority = TakeUntil(address, "/?#");
    authority.remove_prefix(authority.rfind('@') + 1);  // a name of a user; none: npos + 1 is 0
    WebAddress result;
    if (authority.starts_with('[')) {
        authority.remove_prefix(1);
        result.host = TakeUntil(authority, "]");
        if (authority.empty()) return std::nullopt;
        authority.remove_prefix(1);
    } else {
        result.host = TakeUntil(authority, ":");
    }
    if (result.host.empty() ||
        !std::all_of(result.host.begin(), result.host.end(), IsHostCharacter))
        return std::nullopt;
    if (!ParsePortPart(authority, result.port)) return std::nullopt;
    result.path = ResolvePath("/", address);
    return result;
}

std::string ResolvePath(std::string_view current, std::string_view reference) {
    const std::string_view target = TakeUntil(reference, "#");
    const std::string_view folderOrFile = TakeUntil(current, "?");
    std::string path(folderOrFile);
    std::string_view query = target;
    const std::string_view targetPath = TakeUntil(query, "?");
    if (target.empty()) query = current;
    if (targetPath.starts_with('/')) {
        path = targetPath;
    } else if (!targetPath.empty()) {
        path.erase(path.rfind('/') + 1);
        path += targetPath;
    }
    if (!path.starts_with('/')) path.insert(path.begin(), '/');
    return RemoveDotSegments(path).append(query);
}
