// SPDX-License-Identifier: GPL-3.0-or-later
#include "foundation/objects/thread_local_index.h"

#include <mutex>
#include <utility>

#include "foundation/objects/array_queue.h"

namespace {

struct OwnedWord {
    std::uint64_t serial;  // of the index that wrote it last, 0 for none
    std::uint32_t word;
};

using Words = GrowingBuffer<OwnedWord>;

// A plain pointer lives as long as the thread: what is destroyed behind WordsOwner still finds its
// words, if only fresh ones.
thread_local Words* words = nullptr;

struct WordsOwner {
    Words* Make() { return words = new Words; }
    ~WordsOwner() { delete std::exchange(words, nullptr); }
};
thread_local WordsOwner wordsOwner;

struct Indices {
    std::mutex mutex;
    MArrayQueue<int> unused;  // under mutex, like the rest
    int count = 0;
    std::uint64_t serial = 0;
};

Indices& AllIndices() {
    static Indices* const indices = new Indices;  // leaked: locks may be static objects
    return *indices;
}

}  // namespace

MThreadLocalIndex::MThreadLocalIndex() {
    Indices& indices = AllIndices();
    const std::lock_guard lock(indices.mutex);
    if (indices.unused.IsEmpty()) {
        indices.unused.Reserve(indices.count + 1);  // the destructor must not allocate
        indices.unused.Push(indices.count++);
    }
    index = indices.unused.Pull();
    serial = ++indices.serial;
}

MThreadLocalIndex::~MThreadLocalIndex() {
    Indices& indices = AllIndices();
    const std::lock_guard lock(indices.mutex);
    indices.unused.Push(index);
}

std::uint32_t& MThreadLocalIndex::Word() {
    Words& own = words != nullptr ? *words : *wordsOwner.Make();
    own.Reserve(index + 1);
    OwnedWord& found = own[index];
    if (found.serial != serial) found = {serial, 0};
    return found.word;
}
