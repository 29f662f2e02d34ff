#include "tests/merge/DeckPairs.h"

namespace MergeTests {

namespace {

std::string Number(std::size_t n)
{
    return std::to_string(n);
}

const std::vector<std::string> sections = {"RUNSPEC", "GRID", "PROPS", "SCHEDULE"};

} // namespace

DeckPairs::DeckPairs(unsigned seed) : m_chance(seed)
{
    std::string oldTop;
    std::string newTop;
    for (const std::string& section : sections) {
        m_day = 0;
        const Items items = MakeSection(section, 0);
        const bool isInOld = Chance(95);
        const bool isInNew = Chance(85);
        const int percentUser = Chance(20) ? 0 : 30;
        if (isInOld) oldTop += section + "\n" + OldText(items, section, percentUser);
        if (isInNew) newTop += section + "\n" + NewText(items, section);
    }
    if (Chance(70)) oldTop += "END\n";
    oldTop += EndOfFile();
    if (Chance(70)) newTop += "END\n";
    oldFiles.insert(oldFiles.begin(), {"T.DATA", oldTop});
    newFiles.insert(newFiles.begin(), {"T.DATA", newTop});
}

DeckPairs::Items DeckPairs::MakeSection(const std::string& section, int depth)
{
    Items items;
    for (std::size_t count = Below(depth == 0 ? 12 : 5); count > 0; --count)
        items.push_back(MakeKeyword(section, depth));
    return items;
}

DeckPairs::Item DeckPairs::MakeKeyword(const std::string& section, int depth)
{
    if (depth < 3 && Chance(12)) {
        Item file{"INCLUDE", "", MakeSection(section, depth + 1), "", true};
        file.data = "'F" + std::to_string(m_nextFile++) + ".INC' /\n";
        return file;
    }
    if (section == "RUNSPEC") {
        static const std::vector<std::string> names = {"TABDIMS", "EQLDIMS", "WELLDIMS", "DIMENS"};
        return {names[Below(4)], " " + Number(Below(5)) + " /\n", {}, ""};
    }
    if (section == "GRID") {
        if (depth < 3 && Chance(15)) {
            const std::string box = Number(1 + Below(2));
            return {"BOX", " 1 " + box + " 1 2 1 2 /\n", MakeSection(section, depth + 1), Chance(80) ? "ENDBOX" : ""};
        }
        if (depth < 2 && Chance(12)) {
            return {"CARFIN", " 'L" + Number(Below(2)) + "' 1 2 1 2 1 2 4 4 4 /\n", MakeSection(section, depth + 1),
                    "ENDFIN"};
        }
        static const std::vector<std::string> names = {"PERMX", "MULTZ", "COORD", "SPECGRID", "ADD", "PORO"};
        const std::string name = names[Below(6)];
        return {
            name, name == "ADD" ? " PORO " + Number(Below(3)) + " /\n/\n" : " " + Number(Below(5)) + " /\n", {}, ""};
    }
    if (section == "PROPS") {
        static const std::vector<std::string> names = {"DENSITY", "ROCK", "SWOF"};
        return {names[Below(3)], " " + Number(Below(5)) + " 1 1 /\n", {}, ""};
    }
    if (Chance(25)) {
        m_day += static_cast<int>(Below(3));
        const std::string date = Number(static_cast<std::size_t>(1 + m_day % 28)) + " JAN 2020 /\n/\n";
        if (Chance(70)) return {"DATES", date, {}, ""};
        return {"TSTEP", " 1 /\n", {}, ""};
    }
    if (depth < 2 && Chance(10)) {
        return {"ACTIONX", "A" + Number(Below(2)) + " 1 /\nFOPR > 1 /\n/\n", MakeSection(section, depth + 1),
                "ENDACTIO"};
    }
    static const std::vector<std::string> names = {"WELOPEN", "WELSPECS", "WTEST"};
    return {names[Below(3)], "'W" + Number(Below(3)) + "' /\n/\n", {}, ""};
}

std::string DeckPairs::UserKeyword(const std::string& section)
{
    const int number = m_nextUser++;
    std::string comment = Chance(30) ? "-- of " + std::to_string(number) : "";
    if (m_countsUsers) userNumbers.push_back(number);
    if (m_countsUsers && !comment.empty()) comments.push_back(comment);
    if (!comment.empty()) comment += '\n';
    const std::string text = std::to_string(number);
    if (section == "SCHEDULE") {
        switch (Below(6)) {
        case 0:
            return comment + "DATES\n" + Number(1 + Below(28)) + " JAN " + std::to_string(number + 2000) + " /\n/\n";
        case 1:
            return comment + "WELSPECS\n'W" + Number(Below(3)) + "' G " + text + " /\n/\n";
        case 2:
            return comment + "ACTIONX\nU" + text + " 1 /\nFOPR > 1 /\n/\n";
        case 3:
            return comment + "ENDACTIO\n-- " + text + " is here\n" + "WTEST\n'" + text + "' /\n/\n";
        default:
            return comment + "WELOPEN\n'W" + text + "' /\n/\n";
        }
    }
    if (section == "GRID") {
        static const std::vector<std::string> names = {"PERMY", "MULTZ", "COORD", "SPECGRID", "BOX", "PORO"};
        return comment + names[Below(6)] + "\n " + text + " /\n";
    }
    if (section == "PROPS") return comment + (Chance(50) ? "DENSITY" : "SWOF") + "\n " + text + " 1 1 /\n";
    return comment + (Chance(50) ? "TABDIMS" : "EQLDIMS") + "\n " + text + " /\n";
}

/// A comment that stands above no keyword.
std::string DeckPairs::EndOfFile()
{
    if (!Chance(30)) return "";
    const std::string comment = "-- at the end c" + std::to_string(m_nextUser++);
    if (m_countsUsers) comments.push_back(comment);
    return (Chance(50) ? "\n" : "") + comment + "\n";
}

void DeckPairs::Close(std::string& text, const Item& item)
{
    if (!item.closer.empty()) text += item.closer + "~\n";
}

/// As the generator made it once, with a user's work in it.
std::string DeckPairs::OldText(const Items& items, const std::string& section, int percentUser)
{
    std::string text;
    for (const Item& item : items) {
        while (Chance(percentUser))
            text += UserKeyword(section);
        if (Chance(12)) continue;
        const std::string tag = item.isFile && Chance(10) ? "" : "~";
        const bool isSuppressed = !item.isFile && item.closer.empty() && Chance(5);
        if (Chance(15)) {
            const std::string comment = "-- above " + item.name + " c" + std::to_string(m_nextUser++);
            if (m_countsUsers) comments.push_back(comment);
            text += comment + "\n";
        }
        if (isSuppressed) {
            text += "--@@@" + item.name + "~\n--@@@" + item.data.substr(0, item.data.find('\n')) + "\n";
            if (item.data.ends_with("/\n/\n")) text += "--@@@/\n";
            continue;
        }
        std::string name = item.isFile ? item.data.substr(1, item.data.find('\'', 1) - 1) : "";
        // A user's file may be one of the generator's.
        if (tag.empty() && Chance(50)) name = "MY_" + name;
        std::string beside;
        if (!tag.empty() && Chance(10)) {
            beside = "-- beside " + item.name + " c" + std::to_string(m_nextUser++);
            if (m_countsUsers) comments.push_back(beside);
            beside.insert(0, " ");
        }
        text += item.name + beside + tag + "\n" + (item.isFile ? "'" + name + "' /\n" : item.data);
        if (item.isFile) {
            const bool counted = m_countsUsers;
            // What a user's file holds comes with it.
            m_countsUsers = counted && !tag.empty();
            const std::string inside = OldText(item.inside, section, percentUser);
            oldFiles.emplace_back(name, inside + EndOfFile());
            m_countsUsers = counted;
        } else {
            text += OldText(item.inside, section, percentUser);
            Close(text, item);
        }
    }
    while (Chance(percentUser))
        text += UserKeyword(section);
    return text;
}

/// As the generator makes it now.
std::string DeckPairs::NewText(const Items& items, const std::string& section)
{
    std::string text;
    for (const Item& item : items) {
        if (Chance(12)) continue;
        if (Chance(8)) {
            const Item other = MakeKeyword(section, 3);
            text += other.name + "~\n" + other.data;
        }
        text += item.name + "~\n" + item.data;
        if (item.isFile) {
            const std::string name = item.data.substr(1, item.data.find('\'', 1) - 1);
            newFiles.emplace_back(name, NewText(item.inside, section));
        } else {
            text += NewText(item.inside, section);
            Close(text, item);
        }
    }
    return text;
}

} // namespace MergeTests
