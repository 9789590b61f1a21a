// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

class MMemoryStream;

namespace Steinberg {
class IBStream;
}

// The streams in which a host keeps states. Some give or take less than they are asked for.
//
// Units    bytes
// Threads  whatever thread the host calls on
// Errors   std::bad_alloc

// All that is left in the stream, at most `limit` and then one byte more, so that what is too long
// is seen; an error of the stream counts as its end.
MMemoryStream ReadAll(Steinberg::IBStream& stream, std::int32_t limit);
// False where the stream did not take all of it.
bool WriteAll(Steinberg::IBStream& stream, const MMemoryStream& source, std::int32_t size);
