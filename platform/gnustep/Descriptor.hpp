/// Ownership of a file descriptor.
#pragma once

#include <unistd.h>
#include <utility>

/// Owns an open file descriptor, or none.
class Descriptor
{
public:
    Descriptor() = default;
    /// Becomes the owner of an open descriptor; a negative number is none.
    explicit Descriptor(int number) : _number(number) { }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor(Descriptor &&other) noexcept : _number(std::exchange(other._number, None)) { }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(_number, other._number);
        return *this;
    }
    ~Descriptor() { close(); }

    /// The descriptor's number, negative for none.
    [[nodiscard]] int number() const { return _number; }
    [[nodiscard]] bool isOpen() const { return _number >= 0; }
    /// Closes it now.
    void close()
    {
        if (isOpen()) {
            ::close(std::exchange(_number, None));
        }
    }

private:
    static constexpr int None = -1;
    int _number = None;
};
