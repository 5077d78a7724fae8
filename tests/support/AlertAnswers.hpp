/// Answers the modal panels that the code under test opens, by pressing their real buttons while they run.
#pragma once

#import <Cocoa/Cocoa.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// A modal panel as it stood on the screen.
struct SeenPanel {
    /// Its texts from top to bottom: an alert's message, then its informative text.
    std::vector<std::string> texts;
    /// The titles of its visible buttons, in the order in which they were added.
    std::vector<std::string> buttons;

    bool operator==(const SeenPanel &) const = default;
    /// Says in a failing test what was seen.
    friend void PrintTo(const SeenPanel &panel, std::ostream *stream);
};

/// While it lives, each modal panel that opens is noted and answered with the next of the given titles. A panel that
/// finds no title left, or no button of that title, is a test failure, and is aborted so that the test goes on.
class AlertAnswers
{
public:
    /// @param titles The buttons to press, one a panel, in order.
    /// @param onPanel Called with each panel's number, from 0, while the panel is up and before its button is pressed.
    explicit AlertAnswers(std::vector<std::string> titles, std::function<void(std::size_t)> onPanel = {});
    ~AlertAnswers();
    AlertAnswers(const AlertAnswers &) = delete;
    AlertAnswers &operator=(const AlertAnswers &) = delete;

    /// The panels seen so far.
    const std::vector<SeenPanel> &seen() const { return _seen; }

private:
    void answer(NSWindow *panel);

    std::vector<std::string> _titles;
    std::function<void(std::size_t)> _onPanel;
    std::vector<SeenPanel> _seen;
    NSTimer *_timer;
};
