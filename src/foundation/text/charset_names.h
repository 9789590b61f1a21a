// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/text/table_codec.h"

// The codec of a charset table by one of its names, in any case; null where no table has it. The
// codecs are made with the first call, on any thread.
const MEncoding::TableCodec* FindTableCodec(const MString& name);
