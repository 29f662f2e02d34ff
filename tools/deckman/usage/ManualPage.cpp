#include <algorithm>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "command/Verbs.h"
#include "usage/Help.h"

namespace Deckman {

namespace {

/// Text as the formatter of manual pages takes it: nothing in it is an order, and what can be typed can be copied.
std::string Escaped(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        const bool beginsLine = escaped.empty() || escaped.back() == '\n';
        if (beginsLine && (c == '.' || c == '\'')) escaped += "\\&";
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else if (c == '\'')
            escaped += "\\(aq";
        else if (c == '^')
            escaped += "\\(ha";
        else if (c == '~')
            escaped += "\\(ti";
        else if (c == '`')
            escaped += "\\(ga";
        else
            escaped += c;
    }
    return escaped;
}

class Page
{
public:
    void Section(std::string_view title) { m_text += fmt::format(".SH {}\n", title); }
    void Subsection(std::string_view title)
    {
        m_text += fmt::format(".SS {}\n", Escaped(title));
        m_atHead = true;
    }
    /// A paragraph; several where the text has line ends.
    void Paragraph(std::string_view text)
    {
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            m_text += fmt::format("{}{}\n", m_atHead ? "" : ".PP\n", Escaped(text.substr(0, end)));
            m_atHead = false;
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    }
    void Item(std::string_view written, std::string_view is)
    {
        m_atHead = false;
        m_text += fmt::format(".TP\n.B {}\n{}\n", Escaped(written), Escaped(is));
    }
    void Commands(std::string_view commands)
    {
        m_text += fmt::format(".PP\n.RS 4\n.nf\n{}\n.fi\n.RE\n", Escaped(commands));
    }
    void Raw(std::string_view text) { m_text += text; }
    const std::string& Text() const { return m_text; }

private:
    std::string m_text;
    bool m_atHead = false; ///< a paragraph follows a title without a break
};

std::string Written(const CLI::Option& option)
{
    std::string written;
    for (const std::string& name : option.get_snames())
        written += fmt::format("-{}, ", name);
    written += "--" + option.get_lnames().front();
    if (!option.get_type_name().empty()) written += " " + option.get_type_name();
    return written;
}

bool IsHelp(const CLI::Option& option)
{
    return !option.get_configurable();
}

void AddVerb(Page& page, const CLI::App& command, const VerbEntry& entry)
{
    std::string synopsis = NameOf(command);
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_positional()) continue;
        const std::string name = option->get_name();
        synopsis += option->get_required() ? " " + name : fmt::format(" [{}]", name);
    }
    page.Subsection(synopsis);
    page.Paragraph(entry.does);
    page.Paragraph(entry.more);
    page.Paragraph(entry.json);
    for (const CLI::Option* option : command.get_options()) {
        if (!option->get_positional() && !IsHelp(*option)) page.Item(Written(*option), option->get_description());
    }
    page.Paragraph(entry.shows.empty() ? std::string("Example:") : fmt::format("Example: {}", entry.shows));
    page.Commands(entry.examples);
}

const CLI::App* CommandOf(const CLI::App& app, std::string_view name)
{
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* command : commands) {
        if (NameOf(*command) == name) return command;
        if (const CLI::App* below = CommandOf(*command, name)) return below;
    }
    return nullptr;
}

} // namespace

std::string ManualPage(const CLI::App& app)
{
    Page page;
    page.Raw("." + fmt::format("TH DECKMAN 1 \"\" \"deckman {}\" \"User Commands\"\n.nh\n.ad l\n", DECKMAN_VERSION));
    page.Section("NAME");
    page.Raw(fmt::format("deckman \\- {}\n", whatItIs));
    page.Section("SYNOPSIS");
    page.Raw(".B deckman\n.I VERB\n.RI [ ARGUMENT ...]\n.RI [ OPTION ...]\n");
    page.Section("DESCRIPTION");
    page.Raw("A deck is named by its top file; the files that it includes come along by themselves. Nothing is\n"
             "changed on the disk but by the verbs that say so, and those show what they would do with\n"
             ".BR \\-\\-dry\\-run .\n");
    for (const VerbGroup& group : VerbGroups()) {
        page.Subsection(group.want);
        for (const HelpRow& row : group.rows)
            page.Item(row.written, row.is);
    }
    page.Section("PLACES");
    page.Raw("WHERE is a place in a deck, and so is a path to an item, which stands behind any form of a place.\n");
    for (const HelpRow& row : PlaceForms())
        page.Item(row.written, row.is);
    page.Paragraph(countingRule);
    page.Section("VERBS");
    page.Raw("The examples work in the folder of the example decks.\n");
    for (const VerbEntry& entry : AllVerbs()) {
        if (const CLI::App* command = CommandOf(app, entry.name)) AddVerb(page, *command, entry);
    }
    page.Section("OPTIONS");
    page.Raw("Every verb takes these, ahead of it or behind.\n");
    for (const CLI::Option* option : app.get_options())
        page.Item(Written(*option), option->get_description());
    page.Section("EXIT STATUS");
    for (const HelpRow& row : ExitStatuses())
        page.Item(row.written, row.is);
    page.Section("ENVIRONMENT");
    for (const HelpRow& row : EnvironmentVariables())
        page.Item(row.written, row.is);
    page.Section("FILES");
    page.Item("DeckCache.ptd",
              "in a project and its folders: what lets an unchanged deck open fast; it can be deleted");
    page.Section("SEE ALSO");
    page.Raw("The documents and example decks in\n.IR /usr/share/doc/tarn\\-deckmanager .\n");
    return page.Text();
}

} // namespace Deckman
