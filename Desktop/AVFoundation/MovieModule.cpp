#include "Desktop/AVFoundation/MovieModule.h"

#include <dlfcn.h>

#include <cstdlib>
#include <system_error>

namespace quillmere {
namespace {

namespace fs = std::filesystem;

fs::path libraryFolder() {
    if (const char* named = std::getenv("QUILLMERE_LIBRARY_FOLDER")) return named;
    std::error_code none;
    const fs::path program = fs::read_symlink("/proc/self/exe", none);
    return program.parent_path().parent_path() / "lib" / "quillmere";
}

}  // namespace

const MovieModule* loadMovieModule() {
    static const MovieModule* const module = [] {
        const fs::path file = libraryFolder() / "quillmere-movies.so";
        void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        const void* symbol = library ? dlsym(library, movieModuleSymbol) : nullptr;
        return static_cast<const MovieModule*>(symbol);
    }();
    return module;
}

}  // namespace quillmere
