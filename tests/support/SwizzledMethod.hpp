/// Sets up faults and times that a test cannot stage on the practice Mac.
#pragma once

#import <Cocoa/Cocoa.h>

#import "platform/Retained.hpp"
#import "tests/support/Stage.hpp"

#import <objc/runtime.h>

#include <gtest/gtest.h>

/// Replaces a method for its own lifetime.
class SwizzledMethod
{
public:
    /// @param type The class that answers the message; for a class method, its metaclass.
    /// @param selector The method.
    /// @param function The replacement. It takes the receiver and the selector before the method's own arguments.
    template <typename Function>
    SwizzledMethod(Class type, SEL selector, Function *function) :
        _method(class_getInstanceMethod(type, selector)),
        _original(method_setImplementation(_method, reinterpret_cast<IMP>(reinterpret_cast<void (*)()>(function))))
    {
        EXPECT_NE(_method, nullptr) << "the platform has no such method: " << sel_getName(selector);
    }
    ~SwizzledMethod() { method_setImplementation(_method, _original); }
    SwizzledMethod(SwizzledMethod &&) = delete;

private:
    const Method _method;
    const IMP _original;
};

/// Stops the clock at a given time for its own lifetime. Only one may exist at a time.
class StoppedClock
{
public:
    /// @param seconds Seconds since midnight at the start of 2026-11-15, local time.
    explicit StoppedClock(int seconds) { moveTo(seconds); }

    /// Sets the clock to another second.
    void moveTo(int seconds)
    {
        std::tm midnight {};
        strptime("2026-11-15", "%F", &midnight);
        _now = static_cast<double>(std::mktime(&midnight)) + seconds;
        _step = 0;
    }
    /// From now on each reading of the clock advances it by one second.
    static void moveOnAtEachReading() { _step = 1; }

private:
    inline static double _now, _step;
    const SwizzledMethod _date
    {
        object_getClass([NSDate class]), @selector(date),
            +[](id, SEL) { return [NSDate dateWithTimeIntervalSince1970:std::exchange(_now, _now + _step)]; }
    };
};

/// Prevents the creation of script objects for its own lifetime and keeps the last source. Only one may exist at a
/// time.
class NoScripts
{
public:
    NoScripts() { _source.clear(); }
    /// The source of the last requested script.
    [[nodiscard]] static const std::string &source() { return _source; }

private:
    inline static std::string _source;
    const Retained<NSAppleScript> _anyScript = adopt([[NSAppleScript alloc] initWithSource:@""]);
    const SwizzledMethod _maker
    {
        [_anyScript.get() class], @selector(initWithSource:), +[](id script, SEL, NSString *text) {
            _source = utf8(text);
            [script release];
            return id();
        }
    };
};
