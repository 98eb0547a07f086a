#include "Neural/Model/MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "Neural/Model/NeuralError.h"

namespace quillmere::neural {
namespace {

class Descriptor {
public:
    explicit Descriptor(int value) : value_(value) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (value_ >= 0) ::close(value_);
    }
    int get() const { return value_; }

private:
    int value_;
};

Error unreadable(const std::filesystem::path& path, int reason) {
    return makeError(ErrorCode::unreadable, "The file " + path.string() + " can't be read: " +
                                                std::generic_category().message(reason) + ".");
}

}  // namespace

Result<MappedFile> MappedFile::open(const std::filesystem::path& path) {
    // Without O_NONBLOCK, a named pipe in the place of the file would block for ever.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0) return unreadable(path, errno);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return unreadable(path, errno);
    if (S_ISDIR(status.st_mode)) return unreadable(path, EISDIR);
    if (!S_ISREG(status.st_mode)) return unreadable(path, EINVAL);
    if (status.st_size == 0) return MappedFile();
    const auto size = static_cast<std::size_t>(status.st_size);
    void* address = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, file.get(), 0);
    if (address == MAP_FAILED) return unreadable(path, errno);
    return MappedFile(std::span(static_cast<const std::byte*>(address), size));
}

MappedFile::MappedFile(MappedFile&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    return *this;
}

MappedFile::~MappedFile() {
    if (!bytes_.empty()) ::munmap(const_cast<std::byte*>(bytes_.data()), bytes_.size());
}

}  // namespace quillmere::neural
