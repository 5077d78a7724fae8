/// Random text for the quotings: any UTF-16 code units, with those that quotings stumble over more often than chance
/// has it.
#pragma once

#include <random>
#include <string>
#include <string_view>

/// Makes the same texts in every run.
class RandomText
{
public:
    /// What a text may hold beside ordinary characters.
    enum class Holding {
        Everything,
        NoNulls,  ///< A null character can't stand in a shell word.
        NoHalves, ///< Half a surrogate pair can't stand in a string that Debian's platform makes of code units.
    };
    explicit RandomText(Holding holding) : _holding(holding) { }

    /// The next text, of up to 40 code units: quotes, escapes, line ends, letters and halves of surrogate pairs.
    std::u16string next()
    {
        std::u16string text(below(41), u'\0');
        for (auto &unit : text) {
            do {
                unit = nextUnit();
            } while (!allowed(unit));
        }
        return text;
    }

private:
    bool allowed(char16_t unit) const
    {
        return !(_holding == Holding::NoNulls && unit == u'\0') &&
            !(_holding == Holding::NoHalves && unit >= 0xd800 && unit < 0xe000);
    }
    std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(_numbers); }
    char16_t nextUnit()
    {
        static constexpr std::u16string_view awkward = u"''\\\\\"\"\n\nnrt\r\t $`!*~#;&|<>(){}[]\u2019\u00e9\u2028";
        switch (below(4)) {
        case 0:
            return static_cast<char16_t>(below(0x10000));
        case 1:
            return static_cast<char16_t>(0xd800 + below(0x800));
        default:
            return awkward[below(awkward.size())];
        }
    }

    const Holding _holding;
    std::mt19937 _numbers { 20261121 };
};
