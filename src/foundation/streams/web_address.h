// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Web addresses as bytes.
//
// Threads  any
// Errors   std::bad_alloc
// Method   RFC 3986

// "http" of "http://example.org/a"; empty where no "scheme://" stands at the front. A "://" further
// behind, as in a query, makes no scheme.
std::string_view AddressScheme(std::string_view address);

// Each byte but letters, digits and "-._~" as "%" and two digits; also those of kept stay.
std::string PercentEncode(std::string_view bytes, std::string_view kept = {});

struct WebAddress {
    std::string host;  // an IPv6 address without its brackets
    std::uint16_t port = 80;
    std::string path;  // with its query, without a fragment; begins with a slash
};

// Of an address with a scheme. None where host or port is malformed.
std::optional<WebAddress> ParseWebAddress(std::string_view address);

// The path that a reference without a scheme means beside the current path: "." and ".." are
// resolved, a fragment is left out.
std::string ResolvePath(std::string_view current, std::string_view reference);
