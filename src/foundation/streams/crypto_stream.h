// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/streams/buffering_stream.h"

// Data in the blocks of a cipher. The key comes from the caller; before it the stream is not
// initialised.
//
// Threads  those of the source
// Errors   those of MBufferingStream; MException "Invalid crypto key." with code 2

class MCryptoStream : public MBufferingStream {
public:
    // In bits. Not supported ("set crypto key length") by a cipher whose key tells its length.
    virtual void SetKeyLength(int bits);
    // Not supported ("set crypto-stream key in text form") by a cipher whose key is no plain bytes.
    virtual void SetKey(const MString& text);

protected:
    using MBufferingStream::MBufferingStream;
};

[[noreturn]] void RaiseInvalidKey();
