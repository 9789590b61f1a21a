// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/streams/crypto_stream.h"

#include "foundation/text/exception.h"

void MCryptoStream::SetKeyLength(int) { RaiseUnsupportedService("set crypto key length"); }

void MCryptoStream::SetKey(const MString&) {
    RaiseUnsupportedService("set crypto-stream key in text form");
}

void RaiseInvalidKey() { throw MException("Invalid crypto key.", 2); }
