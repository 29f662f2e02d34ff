#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/PathAliases.h>
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
}

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywords;
class IKeyword;

/// What the meaning of a keyword's data depends on besides its own text: the sizes that other keywords of the deck set,
/// and the path aliases noted so far.
///
/// Results are kept once they are known, and nothing clears them: after a change of the deck's dimensions a new context
/// is needed. Copying carries results and aliases along. One thread at a time.
class Context
{
public:
    /// A context without a deck: it answers decimal numbers only.
    Context() = default;

    /// `keywords` isn't owned, and must outlive the context; null for none.
    explicit Context(const IDeckKeywords* keywords) : m_keywords(keywords) {}

    /// The deck view; null for a context without a deck.
    const IDeckKeywords* Keywords() const { return m_keywords; }

    /// Turns to another deck view: the aliases stay, the results go.
    void Bind(const IDeckKeywords* keywords);

    /// The value of an expression: a decimal number, an item of another keyword such as "RUNSPEC:TABDIMS[3]" (the item,
    /// counted from 0, of the keyword's record), or a name such as "context:NUMREP". True when `value` holds the
    /// result; false when the deck doesn't tell it. Throws DeckManagerException without a deck, and for what a deck can
    /// never answer. Reads the data of the keywords that it asks.
    bool EvaluateIntegerExpr(const std::string& expression, int& value) const;

    /// Shows the context a keyword as the deck is read. It takes the path aliases of a PATHS keyword, if the settings
    /// support these. Null does nothing.
    void NoteKeyword(const IKeyword* keyword) const;

    /// `out` takes `in`, with a path alias at its head replaced where `keyword` is one that names a file. False when an
    /// alias has no meaning; `out` is then the text as it was.
    bool ResolvePathAliases(const IKeyword* keyword, const std::string& in, std::string& out) const;

    /// Whether `ResolvePathAliases` may change a text of this keyword.
    static bool HasPaths(const IKeyword* keyword);

private:
    /// The results that are kept, by their place.
    enum class Result : std::size_t
    {
        NCMPHW,
        NUMSLT,
        NTABSR,
        NCOMPW,
        NCOMPW_Or_Default,
        MAXUAT,
        NUMREP,
        NRPINC,
        NDETAC,
        ROCKTABTRANSMYZ,
        OILVISCT_VISCNUM,
        COMPS_OR_1,
        COMPS,
        Count
    };
    static constexpr int notComputed = -1;
    using Results = std::array<int, static_cast<std::size_t>(Result::Count)>;

    struct NamedEvaluation;
    static const NamedEvaluation* FindEvaluation(std::string_view name);

    bool Eval(Core::Keywords::SectionType section, std::string_view keyword, const std::vector<int>& indices,
              int& value) const;
    bool GetKeywordItem(Core::Keywords::SectionType section, std::string_view keyword, int index, int& value) const;
    bool IsKeywordPresent(Core::Keywords::SectionType section, std::string_view keyword) const;
    const IKeyword* FindKeyword(Core::Keywords::SectionType section, std::string_view keyword) const;
    Core::Keywords::IKeywordData* KeywordData(Core::Keywords::SectionType section, std::string_view keyword) const;
    KeywordIterator SectionBegin(Core::Keywords::SectionType section) const;
    KeywordIterator SectionEnd(Core::Keywords::SectionType section) const;
    bool EvalSpecial(const std::string& expression, int& value) const;

    bool EvalCOMPS(int& value) const;
    bool EvalCOMPSOR1(int& value) const;
    bool EvalMAXUAT(int& value) const;
    bool EvalNCMPHW(int& value) const;
    bool EvalNCOMPW(int& value) const;
    bool EvalNCOMPW_Or_Default(int& value) const;
    bool EvalNDETAC(int& value) const;
    bool EvalNRPINC(int& value) const;
    bool EvalNTABSR(int& value) const;
    bool EvalNUMREP(int& value) const;
    bool EvalNUMSLT(int& value) const;
    bool EvalOILVISCTVISCNUM(int& value) const;
    bool EvalROCKTABTRANSMYZ(int& value) const;
    void RaiseTo(Core::Keywords::SectionType section, std::string_view keyword, int index, int& value) const;

    static constexpr Results NoResults()
    {
        Results results{};
        results.fill(notComputed);
        return results;
    }

    const IDeckKeywords* m_keywords = nullptr;
    mutable Core::Keywords::PathAliases m_pathAliases;
    mutable Results m_results = NoResults();
};

} // namespace Tarn::Fjel::Core::DeckManager
