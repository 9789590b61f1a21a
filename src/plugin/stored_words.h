// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>

#include "foundation/xml/store_visitor.h"

// Words that several threads share, through a tree item in either direction.
//
// Ranges   a byte and a bool are switches: 1 or 0 in a tree, any other number reads as 1
// Threads  a word is written and read without a lock
// Errors   std::bad_alloc

template <typename Word>
void SetStoredWord(std::atomic<Word>& word, std::int64_t number) {
    constexpr bool kIsSwitch = sizeof(Word) == 1;
    word.store(kIsSwitch ? Word{number != 0} : static_cast<Word>(number),
               std::memory_order_relaxed);
}

// Unwritten where it equals its standard, which is what an absent one reads as.
template <typename Word>
void StoreWord(const MStoreVisitor& visitor, const char* key, std::atomic<Word>& word,
               std::int64_t standard = 0) {
    std::int64_t number = word.load(std::memory_order_relaxed);
    visitor.Number(key, number, standard);
    if (!visitor.storing) SetStoredWord(word, number);
}

// Always written; an absent one leaves the word.
template <typename Word>
void KeepWord(const MStoreVisitor& visitor, const char* key, std::atomic<Word>& word) {
    std::int64_t number = word.load(std::memory_order_relaxed);
    visitor.KeptNumber(key, number);
    if (!visitor.storing) SetStoredWord(word, number);
}
