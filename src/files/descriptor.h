#ifndef FILES_DESCRIPTOR_H
#define FILES_DESCRIPTOR_H

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

// Ahead of the umask.
constexpr mode_t new_file_mode = 0666;
constexpr mode_t new_directory_mode = 0777;

// The target of a copy is emptied later, when it is known not to be the source.
constexpr int copy_target_flags = O_WRONLY | O_CREAT;

// A null path is the empty one, which names nothing.
inline const char* Path_Text(const char* path) {
    return path ? path : "";
}

// Opens a path so that no program started later inherits the descriptor.
inline int Open_Path(const char* path, int flags, mode_t mode = 0) {
    return open(path, flags | O_CLOEXEC, mode);
}

// Makes a system call again as long as a signal breaks it off.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

// Reads until the buffer is full or nothing is left; answers the number of bytes, or -1.
inline ssize_t Read_All(int descriptor, char* buffer, std::size_t length) {
    std::size_t filled = 0;
    while (filled < length) {
        const ssize_t count =
            Uninterrupted([&] { return read(descriptor, buffer + filled, length - filled); });
        if (count < 0)
            return -1;
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(filled);
}

// Answers whether all was written; errno tells why not, also behind a short write.
inline bool Write_All(int descriptor, const char* bytes, std::size_t length) {
    while (length > 0) {
        const ssize_t written = Uninterrupted([&] { return write(descriptor, bytes, length); });
        if (written == 0)
            errno = EIO;
        if (written <= 0)
            return false;
        bytes += written;
        length -= static_cast<std::size_t>(written);
    }
    return true;
}

// What is read from a FIFO isn't known ahead.
inline off_t Length_Of(const struct stat& status) {
    return S_ISFIFO(status.st_mode) ? 0 : status.st_size;
}

// Owns an open descriptor, or -1. Closing in the destructor leaves errno alone.
class Descriptor {
  public:
    explicit Descriptor(int fd) : fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd, other.fd);
        return *this;
    }
    ~Descriptor() {
        const int saved = errno;
        (void)Close(); // nobody is left to hear of it
        errno = saved;
    }

    explicit operator bool() const { return fd >= 0; }
    int get() const { return fd; }
    int Release() { return std::exchange(fd, -1); }
    // Whoever has written learns here what the file system reports late.
    [[nodiscard]] bool Close() { return fd < 0 || close(Release()) == 0; }

  private:
    int fd;
};

#endif
