#pragma once

#include <unordered_set>
#include <vector>

#include <tarn/keywords/IKeywordItemMD.h>
#include <tarn/keywords/Slot.h>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordData;

/// Walks the single values of a data tree in deck order; maps and raw text have none.
///
///     for (DataIterator it(data, MDType::String); !it.AtEnd(); it.Next()) it.GetSlot().SetString(...);
///
/// Data that several filled-in list elements share are visited once, and a change made there shows in all of them.
/// The shape of the tree must not change during the walk.
class DataIterator
{
public:
    /// only: visits the values of that kind alone, and passes over whole lists of others. None: visits all.
    explicit DataIterator(IKeywordData& data, MDType only = MDType::None);

    bool AtEnd() const noexcept { return m_path.empty(); }
    void Next();

    /// The value. REQUIRES: !AtEnd(), here and below.
    Slot GetSlot() const;
    const IKeywordItemMD* GetItemMD() const;

    /// The record or list that holds it, and its place there.
    IKeywordData& GetContainer() const { return *m_path.back().node; }
    int GetIndex() const noexcept { return m_path.back().index; }

private:
    struct Level
    {
        IKeywordData* node;
        int index;
        int count;
    };

    void Push(IKeywordData& node);
    void Settle();

    std::vector<Level> m_path;
    std::unordered_set<const void*> m_sharedSeen;
    MDType m_only;
};

} // namespace Tarn::Fjel::Core::Keywords
