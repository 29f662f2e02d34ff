#include "keywords/ListElementReader.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include <deckmanager/IKeyword.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/CompactString.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/Log.h>

#include "keywords/DeserializeState.h"
#include "keywords/IDeserializer.h"
#include "keywords/KeywordDataStore.h"
#include "keywords/ValueConversions.h"
#include "text/Tokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

namespace {

class Search
{
public:
    Search(std::int64_t index, const Keywords::IKeywordListMD& md)
        : m_index(index), m_kind(md.GetElementMD()->GetType()), m_allowsDefaults(md.AllowsDefaultElements()),
          m_isTerminated(md.GetTermination() == Keywords::Termination::Slash),
          m_allowCommas(m_kind == MDType::String &&
                        static_cast<const Keywords::IKeywordStringMD*>(md.GetElementMD())->AllowsCommas())
    {
    }

    /// False when the data must be read whole.
    bool Run(KeywordDataStore& store)
    {
        const Service::Log::Witness witness;
        bool ended = false;
        do {
            if (IsCut(store) || !TakeLine(store, ended) || witness.Count() > 0) return false;
            if (!ended && m_kind != MDType::String && !PassPlainLines(store)) return false;
        } while (!ended && store.AdvanceLine());
        if (!m_isTerminated) return true;
        // Behind the terminator the whole read goes on to the next line too.
        return ended && (!store.AdvanceLine() || !IsCut(store));
    }

    ListElementReader::Found& Result() { return m_found; }

private:
    /// Part of the line lies behind the last column, and a message tells it.
    static bool IsCut(const KeywordDataStore& store)
    {
        return store.Line().size() > static_cast<std::size_t>(Tokenizer::MaxLineLength);
    }

    /// Takes what is left of the line, up to a terminator.
    bool TakeLine(KeywordDataStore& store, bool& ended)
    {
        std::string_view token;
        while (store.NextTokenView(token, true, m_allowCommas, nullptr)) {
            ended = token == VeldaneDeckInfo::TERMINATION_TOKEN;
            if (ended) return true;
            const std::int64_t run = 1 + store.TakeRun(std::numeric_limits<std::int32_t>::max());
            if (!IsValue(token)) return false;
            if (m_index >= m_found.count && m_index < m_found.count + run) m_found.token.emplace(token);
            if (!Add(run, token)) return false;
        }
        return true;
    }

    bool PassPlainLines(KeywordDataStore& store)
    {
        const PlainNumbers::Rules rules{
            m_kind == MDType::Integer ? PlainNumbers::Kind::Integer : PlainNumbers::Kind::Real, m_allowsDefaults};
        // The line that holds the element is read by its tokens.
        const std::int64_t most =
            m_index >= m_found.count ? m_index - m_found.count : std::numeric_limits<std::int64_t>::max();
        return Add(store.PassPlainLines(rules, most), {});
    }

    bool IsValue(std::string_view token) const
    {
        if (token == VeldaneDeckInfo::DEFAULT_TOKEN) return m_allowsDefaults;
        // Quotes that are part of a word stand for themselves: nothing could be put around them.
        if (token.find_first_of("$'") != std::string_view::npos) return false;
        int integer = 0;
        double real = 0.0;
        return m_kind == MDType::String || (m_kind == MDType::Integer ? ValueConversions::ToInteger(token, integer)
                                                                      : ValueConversions::ToReal(token, real));
    }

    /// False when the list could not hold so much.
    bool Add(std::int64_t run, std::string_view token)
    {
        m_found.count += run;
        std::int64_t size = m_kind == MDType::Integer ? sizeof(int) : sizeof(double);
        // At least what a string takes: who comes near the limit has it read whole.
        if (m_kind == MDType::String)
            size = static_cast<std::int64_t>(sizeof(Keywords::CompactString) + 4 * token.size() + 64);
        m_bytes += run * size;
        return m_bytes <= Keywords::IKeywordListData::MaxBytes &&
               m_found.count <= std::min<std::int64_t>(DeserializeState::DefaultLimits().elementsOfList,
                                                       std::numeric_limits<int>::max());
    }

    const std::int64_t m_index;
    const MDType m_kind;
    const bool m_allowsDefaults;
    const bool m_isTerminated;
    const bool m_allowCommas;
    ListElementReader::Found m_found;
    std::int64_t m_bytes = 0;
};

} // namespace

bool ListElementReader::Suits(const Keywords::IKeywordMD& md)
{
    if (md.GetType() != MDType::List) return false;
    const auto& list = static_cast<const Keywords::IKeywordListMD&>(md);
    const MDType kind = list.GetElementMD()->GetType();
    return (kind == MDType::Integer || kind == MDType::Real || kind == MDType::String) &&
           list.GetListEndDetector() == nullptr && CustomDeserializers::InForce().Find(&md) == nullptr;
}

std::optional<ListElementReader::Found> ListElementReader::Find(std::int64_t index, const IKeyword& keyword,
                                                                ILineReader& reader, long long start, long long length,
                                                                bool firstLineIsKeywordName)
{
    const Service::LogEnabler silence(false);
    KeywordDataStore store(&reader);
    if (!store.Open(keyword, start, length, firstLineIsKeywordName)) return std::nullopt;
    Search search(index, static_cast<const Keywords::IKeywordListMD&>(*keyword.GetSyntax()->GetMetaData()));
    if (!search.Run(store)) return std::nullopt;
    return std::move(search.Result());
}

} // namespace Tarn::Fjel::Core::DeckManager
