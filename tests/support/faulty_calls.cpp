// The C library's calls on files, put in front of the C library's own for a whole program, shared
// libraries included: each is counted and may fail as planned, and is made otherwise. Calls that
// the C library makes inside itself (in stdio, or in mkstemp) are not counted.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "fault_points.h"

namespace {

using faults::Fate;
using faults::Kind;
using faults::Meet;

int Failed(const Fate& fate) {
    errno = fate.error;
    return -1;
}

// Makes a call, unless it is to fail.
template <typename... Arguments>
int Call(const Fate& fate, long number, Arguments... arguments) {
    return fate.error != 0 ? Failed(fate) : static_cast<int>(syscall(number, arguments...));
}

bool IsForPeople(int descriptor) {
    return descriptor == STDOUT_FILENO || descriptor == STDERR_FILENO;
}

// Writes `size` bytes, or fewer as planned, by calling `write` with their number.
template <typename Write>
ssize_t WriteAsPlanned(int descriptor, std::size_t size, Write write) {
    // How much is written for people to read depends on the time that passes; counts must not.
    const Fate fate = IsForPeople(descriptor) ? Fate{} : Meet(Kind::Write, descriptor);
    if (fate.error != 0) {
        return Failed(fate);
    }
    const ssize_t written = write(fate.half ? (size + 1) / 2 : size);
    if (fate.killsThen) {
        faults::KillNow();
    }
    return written;
}

ssize_t WriteAt(int file, const void* bytes, std::size_t size, off_t at) {
    return WriteAsPlanned(file, size, [&](std::size_t count) {
        return syscall(SYS_pwrite64, file, bytes, count, at);
    });
}

ssize_t ReadAt(int file, void* bytes, std::size_t size, off_t at) {
    const Fate fate = Meet(Kind::Read, file);
    return fate.error != 0 ? Failed(fate) : syscall(SYS_pread64, file, bytes, size, at);
}

int Open(int folder, const char* path, int flags, mode_t mode) {
    return Call(Meet(Kind::Open, path), SYS_openat, folder, path, flags, mode);
}

// The mode of an open call, which has that argument with these flags only.
template <typename List>
mode_t ModeOf(int flags, List& arguments) {
    return (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

std::FILE* OpenStream(const char* name, const char* path, const char* mode) {
    const Fate fate = Meet(Kind::Open, path);
    if (fate.error != 0) {
        errno = fate.error;
        return nullptr;
    }
    using Function = std::FILE*(const char*, const char*);
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name))(path, mode);
}

int Control(int file, int command, void* argument) {
    const bool locks = command == F_SETLK || command == F_SETLKW || command == F_OFD_SETLK ||
                       command == F_OFD_SETLKW;
    if (locks && static_cast<const struct flock*>(argument)->l_type != F_UNLCK) {
        return Call(Meet(Kind::Lock, file), SYS_fcntl, file, command, argument);
    }
    return static_cast<int>(syscall(SYS_fcntl, file, command, argument));
}

}  // namespace

extern "C" {

ssize_t write(int file, const void* bytes, std::size_t size) {
    return WriteAsPlanned(
        file, size, [&](std::size_t count) { return syscall(SYS_write, file, bytes, count); });
}

ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t at) {
    return WriteAt(file, bytes, size, at);
}

ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t at) {
    return WriteAt(file, bytes, size, at);
}

ssize_t writev(int file, const iovec* pieces, int count) {
    std::size_t size = 0;
    for (int i = 0; i < count; ++i) {
        size += pieces[i].iov_len;
    }
    return WriteAsPlanned(file, size, [&](std::size_t planned) -> ssize_t {
        // A half is made of the first piece alone: how much is left out does not matter.
        return planned == size
                   ? syscall(SYS_writev, file, pieces, count)
                   : syscall(SYS_write, file, pieces[0].iov_base, pieces[0].iov_len / 2);
    });
}

ssize_t read(int file, void* bytes, std::size_t size) {
    const Fate fate = Meet(Kind::Read, file);
    return fate.error != 0 ? Failed(fate) : syscall(SYS_read, file, bytes, size);
}

ssize_t pread(int file, void* bytes, std::size_t size, off_t at) {
    return ReadAt(file, bytes, size, at);
}

ssize_t pread64(int file, void* bytes, std::size_t size, off64_t at) {
    return ReadAt(file, bytes, size, at);
}

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(AT_FDCWD, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Open(folder, path, flags, mode);
}

std::FILE* fopen(const char* path, const char* mode) {
    return OpenStream("fopen", path, mode);
}

std::FILE* fopen64(const char* path, const char* mode) {
    return OpenStream("fopen64", path, mode);
}

int fsync(int file) {
    return Call(Meet(Kind::Sync, file), SYS_fsync, file);
}

int fdatasync(int file) {
    return Call(Meet(Kind::Sync, file), SYS_fdatasync, file);
}

int ftruncate(int file, off_t size) noexcept {
    return Call(Meet(Kind::Truncate, file), SYS_ftruncate, file, size);
}

int ftruncate64(int file, off64_t size) noexcept {
    return Call(Meet(Kind::Truncate, file), SYS_ftruncate, file, size);
}

int truncate(const char* path, off_t size) noexcept {
    return Call(Meet(Kind::Truncate, path), SYS_truncate, path, size);
}

int rename(const char* from, const char* to) noexcept {
    return Call(Meet(Kind::Rename, to), SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return Call(Meet(Kind::Rename, to), SYS_renameat2, fromFolder, from, toFolder, to, 0);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
    return Call(Meet(Kind::Rename, to), SYS_renameat2, fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) noexcept {
    return Call(Meet(Kind::Rename, to), SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return Call(Meet(Kind::Rename, to), SYS_linkat, fromFolder, from, toFolder, to, flags);
}

int unlink(const char* path) noexcept {
    return Call(Meet(Kind::Remove, path), SYS_unlinkat, AT_FDCWD, path, 0);
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    return Call(Meet(Kind::Remove, path), SYS_unlinkat, folder, path, flags);
}

int remove(const char* path) noexcept {
    const Fate fate = Meet(Kind::Remove, path);
    if (fate.error != 0) {
        return Failed(fate);
    }
    const auto removed = static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
    return removed != 0 && errno == EISDIR
               ? static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR))
               : removed;
}

int mkdir(const char* path, mode_t mode) noexcept {
    return Call(Meet(Kind::Folder, path), SYS_mkdirat, AT_FDCWD, path, mode);
}

int flock(int file, int operation) noexcept {
    return (operation & LOCK_UN) != 0 ? static_cast<int>(syscall(SYS_flock, file, operation))
                                      : Call(Meet(Kind::Lock, file), SYS_flock, file, operation);
}

int fcntl(int file, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return Control(file, command, argument);
}

int fcntl64(int file, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return Control(file, command, argument);
}
}
