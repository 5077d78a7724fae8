/// Ownership of platform objects, expressed by the type.
///
/// Both platforms manage memory with retain and release, because Debian's Objective-C runtime has no ARC. No other file
/// of the product sends these messages.
#pragma once

#import <Foundation/Foundation.h>

#include <utility>

/// Owns one reference to a platform object, or none, and releases it when it is destroyed. `T` is the object type
/// without its asterisk.
template <typename T> class Retained
{
public:
    Retained() = default;
    Retained(const Retained &) = delete;
    Retained &operator=(const Retained &) = delete;
    Retained(Retained &&other) noexcept : _object(std::exchange(other._object, nil)) { }
    Retained &operator=(Retained &&other) noexcept
    {
        std::swap(_object, other._object);
        return *this;
    }
    ~Retained() { [_object release]; }

    /// Takes over the reference that `alloc`/`init`, `copy` or `mutableCopy` returned; nil is allowed.
    [[nodiscard]] static Retained adopting(T *object) { return Retained(object); }
    /// Takes an additional reference to an object that another owner holds; nil is allowed.
    [[nodiscard]] static Retained sharing(T *object) { return Retained([object retain]); }

    /// The object, or nil. It stays owned here.
    [[nodiscard]] T *get() const { return _object; }
    /// Passes the reference to the current autorelease pool and returns the object. A method returns its result in this
    /// way unless its name begins with `alloc`, `new` or `copy`.
    [[nodiscard]] T *autoreleased() && { return [std::exchange(_object, nil) autorelease]; }

private:
    explicit Retained(T *object) : _object(object) { }
    T *_object = nil;
};

/// Adopts a newly made object: `auto alert = adopt([[NSAlert alloc] init]);`.
template <typename T> [[nodiscard]] Retained<T> adopt(T *object)
{
    return Retained<T>::adopting(object);
}

/// Releases the object that an instance variable holds and sets the variable to nil.
template <typename T> void releaseAndClear(T *&reference)
{
    [std::exchange(reference, nil) release];
}
