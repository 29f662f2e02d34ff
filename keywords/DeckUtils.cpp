#include <deckmanager/DeckUtils.h>

#include <string_view>

#include <deckmanager/Environment.h>
#include <deckmanager/LineReaderUtil.h>

#include "keywords/KeywordTextSplitter.h"
#include "keywords/ScheduleSectionContextQuery.h"
#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::IKeywordSyntax;

namespace {

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

} // namespace Tarn::Fjel::Core::DeckManager
