#pragma once

#include <random>
#include <string>
#include <vector>

namespace TestText {

/// Calls `check` with every text of at most `length` of the symbols.
template <class Check>
void ForEachText(const std::vector<std::string>& symbols, int length, Check check)
{
    std::vector<std::size_t> digits;
    for (;;) {
        std::string text;
        for (const std::size_t digit : digits)
            text += symbols[digit];
        check(text);
        std::size_t i = 0;
        while (i < digits.size() && ++digits[i] == symbols.size())
            digits[i++] = 0;
        if (i < digits.size()) continue;
        if (static_cast<int>(digits.size()) == length) return;
        digits.assign(digits.size() + 1, 0);
    }
}

/// Random texts that are the same in every run.
class TextGenerator
{
public:
    explicit TextGenerator(unsigned seed) : m_random(seed) {}

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    template <class T>
    const T& OneOf(const std::vector<T>& choices)
    {
        return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
    }

    /// Lines of every kind, some of them around the length at which lines are cut, of about `size` bytes in all.
    std::string Lines(int size)
    {
        static const std::vector<std::string> pieces = {
            "A",   "bc",           " ",       "\t", "-", "--", "--@@@", "/", "'", std::string(1, '\0'), "\r",
            "1.5", "\xEF\xBB\xBF", "WELSPECS"};
        static const std::vector<std::string> ends = {"\n", "\n", "\n", "\r\n", "\r\r\n"};
        std::string text = Below(4) == 0 ? "\xEF\xBB\xBF" : "";
        while (static_cast<int>(text.size()) < size) {
            const int kind = Below(12);
            if (kind == 0) {
                text += OneOf(pieces);
                text.append(static_cast<std::size_t>(1015 + Below(20)), 'x');
            } else if (kind == 1) {
                text.append(static_cast<std::size_t>(Below(9000)), Below(2) ? '7' : ' ');
            } else {
                for (int count = Below(6); count > 0; --count)
                    text += OneOf(pieces);
                if (kind < 5) text.append(static_cast<std::size_t>(Below(90)), '.');
            }
            text += OneOf(ends);
        }
        if (Below(2)) text.pop_back();
        return text;
    }

private:
    std::mt19937 m_random;
};

} // namespace TestText
