// The edit that replaces references to variables.

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordVariablesResolver.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/service/Strings.h>

#include "command/Verbs.h"
#include "editing/DataEdits.h"
#include "output/Nearest.h"

namespace Deckman {

using DeckManager::IKeyword;
using DeckManager::VeldaneDeckInfo;

namespace {

constexpr std::size_t mostColumns = 132;

/// A reference at the head of a text.
struct Reference
{
    std::string_view name;
    std::size_t size; ///< of all of it
};

std::optional<Reference> ReferenceAt(std::string_view text)
{
    const auto isLetter = [](char c) { return Service::IsAlpha(c) || c == '_'; };
    const bool isBraced = text.starts_with("${");
    const std::size_t begin = isBraced ? 2 : 1;
    std::size_t end = begin;
    while (end < text.size() && (isLetter(text[end]) || (end > begin && Service::IsDigit(text[end]))))
        ++end;
    if (end == begin || (isBraced && !text.substr(end).starts_with('}'))) return std::nullopt;
    return Reference{text.substr(begin, end - begin), isBraced ? end + 1 : end};
}

/// Replaces the references in one text after the other by the values that a user has given.
class Values : public DeckManager::IKeywordVariablesResolver
{
public:
    explicit Values(const Options& options) : m_values(options.variables) {}

    bool Resolve(const Keywords::IKeywordData* /*data*/, const Keywords::IKeywordVariables* /*variables*/,
                 std::string& text) override
    {
        m_trouble.clear();
        std::string resolved;
        for (std::string_view rest = text; !rest.empty();) {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            resolved += Line(line);
            if (line.size() < rest.size()) resolved += '\n';
            rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        }
        const bool isChanged = m_trouble.empty() && resolved != text;
        if (isChanged) text = std::move(resolved);
        return isChanged;
    }

    /// Why the last text could not have the values; empty when it could.
    const std::string& Trouble() const { return m_trouble; }
    const std::set<std::string, std::less<>>& Used() const { return m_used; }
    /// The names of references that nobody has given a value.
    const std::set<std::string, std::less<>>& Others() const { return m_others; }

private:
    std::string Line(std::string_view line)
    {
        std::string made;
        bool isQuoted = false;
        bool isChanged = false;
        std::size_t end = 0; // of the data
        for (std::size_t i = 0; i < line.size();) {
            if (line[i] == '\'') isQuoted = !isQuoted;
            if (!isQuoted && line.substr(i).starts_with(VeldaneDeckInfo::COMMENT_MARKER) &&
                !line.substr(i).starts_with(VeldaneDeckInfo::SUPPRESS_MARKER))
            {
                end = made.size();
                made += line.substr(i);
                break;
            }
            const auto reference = line[i] == '$' ? ReferenceAt(line.substr(i)) : std::nullopt;
            const std::string* value = reference ? ValueOf(reference->name) : nullptr;
            if (value != nullptr) {
                Require(*value, isQuoted);
                made += *value;
                i += reference->size;
                isChanged = true;
            } else {
                made += line[i++];
            }
            end = made.size();
        }
        const std::string_view data = Service::TrimmedRight(std::string_view(made).substr(0, end));
        if (isChanged && data.size() > mostColumns)
            m_trouble = fmt::format("The line would pass column {}: {}", mostColumns, data);
        return made;
    }

    const std::string* ValueOf(std::string_view name)
    {
        for (const auto& [known, value] : m_values) {
            if (known != name) continue;
            m_used.emplace(name);
            return &value;
        }
        m_others.emplace(name);
        return nullptr;
    }

    /// Where it stands, the value must be one token, or part of a text in quotes.
    void Require(const std::string& value, bool isQuoted)
    {
        const bool bearsQuotes = value.size() > 1 && value.front() == '\'' && value.find('\'', 1) == value.size() - 1;
        const bool isOne = isQuoted
                               ? value.find('\'') == std::string::npos
                               : bearsQuotes || (value.find_first_of(" \t,/'") == std::string::npos &&
                                                 value.find(VeldaneDeckInfo::COMMENT_MARKER) == std::string::npos &&
                                                 (value.find('*') == std::string::npos || value == "1*"));
        if (value.find_first_of("\r\n") != std::string::npos) {
            m_trouble = "A value may not go on in a further line.";
            return;
        }
        if (isOne) return;
        m_trouble = isQuoted ? fmt::format("The value {} holds a quote, and stands in quotes.", value)
                             : fmt::format("The value {} is not one value; it may need quotes: '{}'.", value, value);
    }

    const std::vector<std::pair<std::string, std::string>>& m_values;
    std::string m_trouble;
    std::set<std::string, std::less<>> m_used;
    std::set<std::string, std::less<>> m_others;
};

} // namespace

void EditResolve(KeywordEdits& run, const Options& options)
{
    std::map<std::string_view, std::string_view> given;
    for (const auto& [name, value] : options.variables) {
        if (given.try_emplace(name, value).first->second != value)
            throw Failure(WrongUsage, fmt::format("--set: {} is given two values.", name));
    }
    Values values(options);
    for (const KeywordEdits::Target& target : run.AllKeywords(options)) {
        const IKeyword& keyword = *target.keyword;
        const DeckManager::IDeckKeywords& keywords = run.Session().Keywords();
        // What begins a path may be an alias of PATHS, and no variable.
        if (!keywords.HasVariables(&keyword) || keywords.GetVariables(&keyword) == nullptr) continue;
        run.Log().Touch(keyword);
        const bool isResolved = run.Editor().ResolveVariables(target.position, values);
        if (!values.Trouble().empty()) run.Refuse(keyword, values.Trouble());
        if (isResolved) RequireReadable(run, keyword);
    }
    const std::vector<std::string_view> others(values.Others().begin(), values.Others().end());
    for (const auto& [name, value] : options.variables) {
        if (values.Used().count(name) == 0) {
            throw Failure(NotThere, fmt::format("There is no reference to a variable {} in the deck.{}", name,
                                                NearestOrAllHint(name, others, "Its variables")));
        }
    }
}

} // namespace Deckman
