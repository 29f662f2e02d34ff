#pragma once

#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
}

namespace Tarn::Fjel::Core::DeckManager {

class KeywordDataStore;

/// Where in a text the tokens of one container stand: noted by the reader of data as it goes, when somebody asks.
///
/// The container is given by its way from the root, so that nothing is kept of any other. Of a list of items only one
/// element's token is kept, however many there are. Positions are bytes of the text.
class SlotPlaces
{
public:
    /// A token, and which of the slots that it fills is meant.
    struct Token
    {
        std::int64_t begin = -1;
        std::int64_t end = -1;
        std::int64_t copies = 1; ///< how many slots the token stands for; more than 1 for a repeat alone
        std::int64_t copy = 0;   ///< which of these the slot is

        bool IsKnown() const { return begin >= 0; }
    };

    /// `text` is what is going to be read into `root`; both must outlive this. `way` leads to the container. `wanted`
    /// is the element whose token is asked for where the container is a list of items; records and maps have the
    /// tokens of all their items noted.
    SlotPlaces(const Keywords::IKeywordData& root, std::string_view text, std::vector<int> way, std::int64_t wanted);

    /// The token of that item or entry; unknown when none stands in the text.
    Token Find(std::int64_t index) const;

    /// The token of the container's item, entry or element that stands furthest behind; also one of a container inside.
    const Token& LastValue() const { return m_lastValue; }

    /// The first token of the container, its terminator if there is no other.
    const Token& First() const { return m_first; }

    /// The last token that was taken for the container, its terminator as a rule.
    const Token& Last() const { return m_last; }
    bool EndsWithTerminator() const { return m_endsWithTerminator; }

    /// The container was met in the text.
    bool WasMet() const { return m_met; }

    /// Every position is good. False for a text whose lines the reader saw differently.
    bool AreReliable() const { return m_reliable; }

    // For the reader.

    /// A container is read while this lives. Null places note nothing.
    class Scope
    {
    public:
        Scope(SlotPlaces* places, const Keywords::IKeywordData& container, const KeywordDataStore& store)
            : m_places(places), m_container(container), m_store(store)
        {
            if (m_places) m_places->Begin(m_container);
        }
        ~Scope()
        {
            if (m_places) m_places->End(m_container, m_store);
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        SlotPlaces* m_places;
        const Keywords::IKeywordData& m_container;
        const KeywordDataStore& m_store;
    };

    /// For a reader that has its scope set up by another, so as to have none itself: true when it is asked for a
    /// container the first time, false when it is asked again from within the scope.
    bool NeedsScope(const Keywords::IKeywordData& container)
    {
        const bool entered = m_entered == &container;
        m_entered = entered ? nullptr : &container;
        return !entered;
    }

    /// The token just taken fills `run` slots of the container, from `index` on.
    void Note(const Keywords::IKeywordData& container, std::int64_t index, std::int64_t run,
              const KeywordDataStore& store);
    /// The same for a token that was cut by other means: the characters `begin` to `end` of a line.
    void Note(const Keywords::IKeywordData& container, std::int64_t index, std::int64_t linePosition,
              std::string_view line, std::size_t begin, std::size_t end);
    /// The same for a token taken earlier.
    void Note(const Keywords::IKeywordData& container, std::int64_t index, std::int64_t run, const Token& token);

    /// The token just taken, with how many of its copies are already spoken for.
    Token Taken(std::int64_t run, const KeywordDataStore& store);

    /// Up to which element a list may be read without a word on its tokens.
    std::int64_t UnnotedLimit(const Keywords::IKeywordData& list, std::int64_t index) const;

private:
    void Begin(const Keywords::IKeywordData& container);
    void End(const Keywords::IKeywordData& container, const KeywordDataStore& store);
    bool IsSought(const Keywords::IKeywordData& container) const;
    std::string_view TextOf(const Token& token) const;
    Token PlaceOf(std::int64_t linePosition, std::string_view line, std::size_t begin, std::size_t end);

    const Keywords::IKeywordData* m_root;
    std::string_view m_text;
    std::vector<int> m_way;
    std::int64_t m_wanted;
    const Keywords::IKeywordData* m_open = nullptr; ///< the container, while it is read
    const Keywords::IKeywordData* m_entered = nullptr;
    bool m_openIsItemList = false;
    bool m_met = false;
    bool m_reliable = true;
    bool m_endsWithTerminator = false;
    Token m_first;
    Token m_last;
    Token m_lastValue;
    std::vector<std::pair<std::int64_t, Token>> m_tokens;
};

} // namespace Tarn::Fjel::Core::DeckManager
