/// Answers the modal panels of the code under test by pressing their real buttons.
#pragma once

#import <Cocoa/Cocoa.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// A modal panel as it was on the screen.
struct SeenPanel {
    /// Its texts from top to bottom: an alert's message, then its informative text.
    std::vector<std::string> texts;
    /// The titles of its visible buttons, in the order in which they were added.
    std::vector<std::string> buttons;

    bool operator==(const SeenPanel &) const = default;
    /// Prints the panel in a failed test.
    friend void PrintTo(const SeenPanel &panel, std::ostream *stream);
};

/// Records each modal panel that opens during its own lifetime and presses the button with the next given title. If no
/// title is left, or the panel has no such button, the test fails and the panel is aborted so that the test goes on.
/// Only one may exist at a time.
class AlertAnswers
{
public:
    /// @param titles The buttons to press, in order, one for each panel.
    /// @param onPanel Called with each panel's number, from 0, while the panel is up and before its button is pressed.
    explicit AlertAnswers(std::vector<std::string> titles, std::function<void(std::size_t)> onPanel = {});
    ~AlertAnswers();
    AlertAnswers(AlertAnswers &&) = delete;

    /// The panels seen so far.
    const std::vector<SeenPanel> &seen() const { return _seen; }

private:
    void answer(NSWindow *panel);

    std::vector<std::string> _titles;
    std::function<void(std::size_t)> _onPanel;
    std::vector<SeenPanel> _seen;
};
