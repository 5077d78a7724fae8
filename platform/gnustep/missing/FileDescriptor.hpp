/// Ownership of a file descriptor.
#pragma once

#include <unistd.h>
#include <utility>

/// Owns an open file descriptor, or none.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    /// Becomes the owner of an open descriptor; a negative number is none.
    explicit FileDescriptor(int number) : _number(number) { }
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;
    FileDescriptor(FileDescriptor &&other) noexcept : _number(std::exchange(other._number, none)) { }
    FileDescriptor &operator=(FileDescriptor &&other) noexcept
    {
        std::swap(_number, other._number);
        return *this;
    }
    ~FileDescriptor() { close(); }

    /// The descriptor's number, or a negative number for none.
    [[nodiscard]] int number() const { return _number; }
    [[nodiscard]] bool isOpen() const { return _number >= 0; }
    /// Closes it now.
    void close()
    {
        if (isOpen()) {
            ::close(std::exchange(_number, none));
        }
    }

private:
    static constexpr int none = -1;
    int _number = none;
};
