// Reading a whole regular file: open, fstat, one read sized from the file's length.
#include "fbx/format/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace fbx {

namespace {

// Closes the descriptor when the read is over, however it ends.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_Fd(fd) {}
    ~Descriptor() {
        if (m_Fd >= 0)
            ::close(m_Fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return m_Fd; }

private:
    int m_Fd;
};

bool NamesSomethingElse(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
}

// Reads until the buffer is full or the file ends; false on a read error.
bool ReadInto(int fd, std::uint8_t* into, std::size_t wanted, std::size_t& got) {
    got = 0;
    while (got < wanted) {
        const ssize_t n = ::read(fd, into + got, wanted - got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return false;
        if (n == 0)
            break;
        got += static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

FileReadResult ReadWholeFile(const std::string& path, ByteBuffer& bytes) {
    FileReadResult result;
    bytes.clear();
    // Non-blocking, so that opening a FIFO does not wait for a writer.
    Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.Get() < 0) {
        result.status = FileReadStatus::CannotOpen;
        result.notRegular = NamesSomethingElse(path);
        return result;
    }
    struct stat info;
    if (::fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode)) {
        result.status = FileReadStatus::NotRegular;
        result.notRegular = true;
        return result;
    }
    // One block of the file's length, and one byte more to see the end without another
    // read; a file that grew since fstat (or that reports no length) is read on in doubling
    // blocks.
    std::size_t capacity = (info.st_size > 0 ? static_cast<std::size_t>(info.st_size) : 0) + 1;
    std::size_t used = 0;
    for (;;) {
        bytes.resize(capacity);
        std::size_t got = 0;
        const bool ok = ReadInto(file.Get(), bytes.data() + used, capacity - used, got);
        used += got;
        if (!ok) {
            bytes.resize(used);
            result.status = FileReadStatus::ReadError;
            return result;
        }
        if (used < capacity)
            break;
        capacity *= 2;
    }
    bytes.resize(used);
    result.status = FileReadStatus::Read;
    return result;
}

}  // namespace fbx
