// A library to preload under a program, which puts faults into its file operations.
//
// QUILLMERE_FAULT=CALL:N:WHAT  the N-th CALL (from 1) fails, and every later one of the same kind:
//                              CALL is write, fsync, linkat or rename (which count pwrite64,
//                              fdatasync and renameat2 too); WHAT is ENOSPC, EIO, or KILL, which
//                              ends the process by SIGKILL in the place of the call. A write that
//                              fails first writes half of its bytes, as a full disk does.
// QUILLMERE_NO_TMPFILE=1       files without a name are not supported.
//
// Only writes to regular files count, and each pwrite64.
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <string>

namespace {

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// The fault that the environment asks for.
struct Fault {
    std::string call;
    int number = 0;
    std::string what;

    Fault() {
        const char* text = std::getenv("QUILLMERE_FAULT");
        if (!text) return;
        const std::string fault(text);
        const auto first = fault.find(':'), second = fault.rfind(':');
        call = fault.substr(0, first);
        number = std::stoi(fault.substr(first + 1, second - first - 1));
        what = fault.substr(second + 1);
    }
};

/// Counts a call; answers whether it fails, with errno set.
bool fails(const char* call) {
    static const Fault fault;
    static std::atomic<int> calls = 0;
    if (fault.call != call || ++calls < fault.number) return false;
    if (fault.what == "KILL") raise(SIGKILL);
    errno = fault.what == "ENOSPC" ? ENOSPC : EIO;
    return true;
}

int openWith(const char* symbol, const char* path, int flags, mode_t mode) {
    const bool unnamed = (flags & O_TMPFILE) == O_TMPFILE;
    if (unnamed && std::getenv("QUILLMERE_NO_TMPFILE")) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return next<int(const char*, int, ...)>(symbol)(path, flags, mode);
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return openWith("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = va_arg(arguments, mode_t);
    va_end(arguments);
    return openWith("open64", path, flags, mode);
}

ssize_t write(int file, const void* bytes, size_t count) {
    auto* const real = next<ssize_t(int, const void*, size_t)>("write");
    struct stat status {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && fails("write")) {
        const int error = errno;
        (void)real(file, bytes, count / 2);
        errno = error;
        return -1;
    }
    return real(file, bytes, count);
}

ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t offset) {
    auto* const real = next<ssize_t(int, const void*, size_t, off64_t)>("pwrite64");
    if (fails("write")) {
        const int error = errno;
        (void)real(file, bytes, count / 2, offset);
        errno = error;
        return -1;
    }
    return real(file, bytes, count, offset);
}

int fsync(int file) { return fails("fsync") ? -1 : next<int(int)>("fsync")(file); }

int fdatasync(int file) { return fails("fsync") ? -1 : next<int(int)>("fdatasync")(file); }

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    if (fails("linkat")) return -1;
    return next<int(int, const char*, int, const char*, int)>("linkat")(fromFolder, from, toFolder,
                                                                        to, flags);
}

int rename(const char* from, const char* to) {
    return fails("rename") ? -1 : next<int(const char*, const char*)>("rename")(from, to);
}

long syscall(long number, ...) {
    va_list arguments;
    va_start(arguments, number);
    long values[6];
    for (long& value : values) value = va_arg(arguments, long);
    va_end(arguments);
    if (number == SYS_renameat2 && fails("rename")) return -1;
    return next<long(long, ...)>("syscall")(number, values[0], values[1], values[2], values[3],
                                            values[4], values[5]);
}

}  // extern "C"
