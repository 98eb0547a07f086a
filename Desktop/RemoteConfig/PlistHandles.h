// Owners of what libplist hands out.
#pragma once

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace quillmere {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using PlistRef = std::unique_ptr<void, PlistDeleter>;

/// Texts and iterators.
struct PlistMemoryDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
using PlistText = std::unique_ptr<char, PlistMemoryDeleter>;
using PlistIterator = std::unique_ptr<void, PlistMemoryDeleter>;

}  // namespace quillmere
