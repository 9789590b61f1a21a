// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "foundation/streams/crypto_stream.h"

// RSA block by block: a stored block is as long as the modulus, a plain block 11 bytes shorter.
// Written with the public key, read with the private one. A last block that is not full comes back
// as long as it was.
//
// Units    numbers of keys as hexadecimal digits
// Ranges   a modulus of 12 .. 2048 bytes
// Threads  those of the source
// Errors   those of MCryptoStream; MException "Invalid file contents." with code 256 for a block
//          that was not made with the key. Without a private key the stream cannot be read
// Method   PKCS #1 version 1.5 (RFC 8017, section 7.2)

class MRSAStream : public MCryptoStream {
public:
    explicit MRSAStream(MStream& source) : MCryptoStream(source) {}

    void SetPublicKey(const std::string& modulus, const std::string& exponent);
    // The prime factors of the modulus, and the exponent of the public key.
    void SetPrivateKey(const std::string& p, const std::string& q, const std::string& exponent);
};
