#pragma once

#include <vector>

#include <tarn/keywords/IKeywordMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Walks a metadata tree, each node ahead of what lies below it, the given one first.
///
///     for (ConstMetaDataIterator it(md); !it.AtEnd(); it.Next()) ... it.Get() ...
class ConstMetaDataIterator
{
public:
    /// Null gives an iterator at its end.
    explicit ConstMetaDataIterator(const IKeywordMD* md);

    bool AtEnd() const noexcept { return m_pending.empty(); }
    void Next();

    /// REQUIRES: !AtEnd().
    const IKeywordMD* Get() const noexcept { return m_pending.back(); }
    const IKeywordMD* operator*() const noexcept { return Get(); }
    ConstMetaDataIterator& operator++()
    {
        Next();
        return *this;
    }

private:
    std::vector<const IKeywordMD*> m_pending; // the current node at the back
};

} // namespace Tarn::Fjel::Core::Keywords
