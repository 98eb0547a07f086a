#include "Neural/Compile/SourceFiles.h"

#include <algorithm>

#include "Neural/Compile/GraphBuilder.h"
#include "Neural/Model/Sha256.h"

namespace quillmere::neural {

MappedFile SourceFiles::open(const std::filesystem::path& path) {
    const bool climbs = std::any_of(path.begin(), path.end(),
                                    [](const std::filesystem::path& part) { return part == ".."; });
    if (path.empty() || path.is_absolute() || climbs) {
        throw ImportFailure{"\"" + path.string() + "\" is not a path inside the package"};
    }
    auto file = MappedFile::open(root_ / path);
    if (!file) throw ImportFailure{file.error().localizedDescription};
    opened_.push_back({path.generic_string(), Sha256::of(file->bytes())});
    return std::move(*file);
}

}  // namespace quillmere::neural
