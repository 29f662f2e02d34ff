#include <deckmanager/DeckUtils.h>

#include <string_view>

#include <deckmanager/Environment.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>

#include "keywords/KeywordTextSplitter.h"
#include "keywords/ScheduleSectionContextQuery.h"
#include "text/KeywordLine.h"
#include "text/LineStreamReader.h"
#include "text/SectionNames.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::IKeywordSyntax;
using Keywords::SectionType;

namespace {

/// The syntax of a word that is a keyword in some section; null where it is none in this one. `None`: any will do. A
/// word that is longer than what mostly counts of it may be known by its head alone.
const IKeywordSyntax* SyntaxIn(SectionType section, std::string_view word)
{
    const Keywords::IKeywordSyntaxTable& table = *Environment::Instance().GetSyntaxTable();
    const auto find = [&](std::string_view name) {
        return section == SectionType::None ? table.FindSyntax(name, true) : table.FindSyntax(name, section, true);
    };
    const IKeywordSyntax* syntax = find(word);
    return syntax != nullptr ? syntax : find(word.substr(0, SignificantCharacters));
}

void AddError(std::string& errors, std::string_view message)
{
    if (!errors.empty()) errors += '\n';
    errors += message;
}

/// The keyword whose end has not been met so far.
struct CurrentKeyword
{
    const IKeywordSyntax* syntax = nullptr;
    long long begin = -1;
    std::string name;
};

/// Where the keywords go.
struct Import
{
    std::string_view text;
    std::vector<std::string>& keywords;
    std::vector<std::string>& data;
    std::vector<const IKeywordSyntax*>& syntaxes;
    std::string& errors;

    void Finish(const CurrentKeyword& keyword, long long end)
    {
        if (!keyword.syntax) return;
        const auto begin = static_cast<std::size_t>(keyword.begin);
        std::string name;
        std::string dataText;
        std::string tagText;
        if (!SplitKeywordText(text.substr(begin, static_cast<std::size_t>(end) - begin), name, dataText, tagText)) {
            AddError(errors, "Error extracting data for keyword: " + keyword.name);
            return;
        }
        keywords.push_back(keyword.name);
        data.push_back(std::move(dataText));
        syntaxes.push_back(keyword.syntax);
    }
};

} // namespace

bool DeckUtils::getKeywordsAndDataFromString(const std::string& text, std::vector<std::string>& keywords,
                                             std::vector<std::string>& data,
                                             std::vector<const IKeywordSyntax*>& syntaxes, std::string& errors)
{
    errors.clear();
    if (text.empty()) {
        errors = "No data to extract keywords from";
        return false;
    }

    LineStreamReader reader;
    reader.AttachText(text);
    const ScheduleSectionContextQuery query;
    const Environment& environment = Environment::Instance();
    const bool allowIndented = environment.LogWarningForPossibleIndentedKeywords();
    Import import{text, keywords, data, syntaxes, errors};
    CurrentKeyword current;
    const IKeywordSyntax* found = nullptr;
    std::string word;
    long long pos = -1;
    bool indented = false;
    while (LineReaderUtil::FindNextKeywordSyntax(reader, query, word, &pos, allowIndented, &indented, found, nullptr)) {
        if (indented && allowIndented) {
            AddError(errors, environment.getIndentedKeywordsWarningPrefix() + " " + word +
                                 " will be ignored, at line " + std::to_string(reader.LineNumber()));
            continue;
        }
        import.Finish(current, pos);
        current = {found, pos, word};
        LineReaderUtil::ConsumeDataLines(found, reader);
    }
    import.Finish(current, reader.Eof() ? static_cast<long long>(text.size()) : reader.Tell());

    if (keywords.empty()) AddError(errors, "Failed to convert to any valid keywords");
    return !keywords.empty() && errors.empty();
}

std::vector<DeckUtils::KeywordLine> DeckUtils::findKeywordLines(std::string_view text, SectionType section)
{
    std::vector<KeywordLine> found;
    LineStreamReader reader;
    reader.AttachText(text);
    std::string word;
    long long pos = -1;
    while (LineReaderUtil::ReadNextValidLineAsKeyword(reader, word, &pos, false, nullptr, nullptr)) {
        if (word.empty() || !LineReaderUtil::IsNameInAnySection(word)) continue;
        const IKeywordSyntax* const syntax = SyntaxIn(section, word);
        const IKeywordSyntax* const any = syntax != nullptr ? syntax : SyntaxIn(SectionType::None, word);
        if (any->GetKind() == Keywords::KeywordKind::Section) FindSection(word, section);
        found.push_back({word, static_cast<std::size_t>(pos), syntax, section});
        LineReaderUtil::ConsumeDataLines(any, reader);
    }
    return found;
}

} // namespace Tarn::Fjel::Core::DeckManager
