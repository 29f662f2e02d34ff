#include <string>
#include <string_view>

#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <re2/re2.h>
#include <tarn/keywords/IKeywordSyntax.h>

#include "command/Verbs.h"
#include "reading/KeywordRows.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"
#include "session/Schedule.h"

namespace Deckman {

namespace {

RE2::Options Settings()
{
    RE2::Options options;
    options.set_encoding(RE2::Options::EncodingLatin1); // decks are bytes, not always UTF-8
    options.set_log_errors(false);
    return options;
}

bool Matches(const RE2& expression, const DeckManager::IKeyword& keyword)
{
    if (keyword.GetSyntax()->GetMetaData() == nullptr) return false;
    // Not IDeckKeywords::GetDataText: the keyword would keep the text, and a search would hold the whole deck in
    // memory.
    const DeckManager::KeywordText text(keyword);
    const std::string_view data = text.Data();
    if (data.find(DeckManager::VeldaneDeckInfo::SUPPRESS_MARKER) == std::string_view::npos)
        return RE2::PartialMatch(re2::StringPiece(data.data(), data.size()), expression);
    std::string live(data);
    DeckManager::LineReaderUtil::ActivateLines(live);
    return RE2::PartialMatch(live, expression);
}

} // namespace

ExitStatus RunFind(DeckSession& session, const Options& options, Output& out)
{
    const RE2 expression("(?m)" + options.regex, Settings());
    if (!expression.ok()) {
        // Of the expression as the user wrote it.
        const std::string error = RE2(options.regex, Settings()).error();
        throw Failure(WrongUsage, fmt::format("'{}' is no regular expression: {}.", options.regex,
                                              error.empty() ? expression.error() : error));
    }

    const WhereLimits limits = LimitsOf(session, options);
    KeywordRows rows(session, out, options.json);
    bool found = false;
    DeckWalk walk(session, options.all);
    while (!out.Closed() && walk.Next()) {
        if (!limits.Hold(walk.Index()) || !Passes(options.filter, walk)) continue;
        try {
            if (!Matches(expression, walk.Keyword())) continue;
        } catch (const Service::Exception& exception) {
            session.Log().Error(session.PlaceOf(*walk.Keyword().GetFile()), exception.what());
            continue;
        }
        rows.Add(walk);
        found = true;
    }
    rows.Finish();
    return found ? Done : NotThere;
}

} // namespace Deckman
