// SPDX-License-Identifier: GPL-3.0-or-later

// Finds the unwind table for a code address, for the exception handling that is linked into the
// shared library.
//
// libgcc of GCC 12 and later asks the C library for it with _dl_find_object, which is there from
// version 2.35 on. This one takes its place inside the library, so that the library loads with an
// older C library too. Nobody outside sees it.
//
// Threads  any; the loader's own lock guards its list
// Memory   none
// Method   walks the list of loaded objects, as libgcc did before

#include <dlfcn.h>
#include <link.h>

#include <cstddef>
#include <cstdint>

#ifdef DLFO_EH_SEGMENT_TYPE

namespace {

struct Search {
    std::uintptr_t address;
    dl_find_object* result;
};

// Answers 1, which ends the walk, at the object that holds the address.
int VisitObject(dl_phdr_info* object, std::size_t, void* data) {
    const Search& search = *static_cast<Search*>(data);
    bool found = false;
    std::uintptr_t unwindTable = 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = object->dlpi_phdr[i];
        const std::uintptr_t start = object->dlpi_addr + segment.p_vaddr;
        if (segment.p_type == DLFO_EH_SEGMENT_TYPE) unwindTable = start;
        if (segment.p_type != PT_LOAD || search.address - start >= segment.p_memsz) continue;
        found = true;
        search.result->dlfo_map_start = reinterpret_cast<void*>(start);
        search.result->dlfo_map_end = reinterpret_cast<void*>(start + segment.p_memsz);
    }
    if (!found) return 0;
    search.result->dlfo_eh_frame = reinterpret_cast<void*>(unwindTable);
    return unwindTable != 0 ? 1 : -1;
}

}  // namespace

int _dl_find_object(void* address, dl_find_object* result) noexcept {
    *result = {};
    Search search{reinterpret_cast<std::uintptr_t>(address), result};
    return dl_iterate_phdr(VisitObject, &search) == 1 ? 0 : -1;
}

#endif
