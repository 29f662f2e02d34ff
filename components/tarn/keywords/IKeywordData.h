#pragma once

#include <memory>

#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/Slot.h>

namespace Tarn::Fjel::Core::Keywords {

/// One container of a keyword's data tree: record, list, map or raw text, as GetType() tells; a static_cast to
/// IKeywordRecordData and its siblings is safe. Items aren't objects; they are reached through a Slot.
///
/// A container keeps its address while it stands in its tree, whatever its siblings do. Trees come from
/// KeywordDataFactory, and are for one thread at a time.
class IKeywordData
{
public:
    IKeywordData(const IKeywordData&) = delete;
    IKeywordData& operator=(const IKeywordData&) = delete;
    virtual ~IKeywordData() = default;

    /// The metadata that the container was made from; never null.
    const IKeywordMD* GetMetaData() const noexcept { return m_md; }

    /// The keyword that the tree belongs to; never null.
    const IKeywordSyntax* GetSyntax() const noexcept { return m_md->GetSyntax(); }

    MDType GetType() const noexcept { return m_md->GetType(); }

    /// A tree of the same content that shares nothing that a change could show through.
    virtual std::unique_ptr<IKeywordData> CloneSafely() const = 0;

protected:
    explicit IKeywordData(const IKeywordMD& md) noexcept : m_md(&md) {}

    friend class ConstSlot;
    friend class Slot;

    /// What slots rest on. ValueAt gives the address of the value of that kind, MutableValueAt takes a list element's
    /// default mark away too; both throw KeywordException for another kind or a place out of range.
    virtual const IKeywordMD* MDAt(int index) const = 0;
    virtual const void* ValueAt(int index, MDType kind) const = 0;
    virtual void* MutableValueAt(int index, MDType kind, bool keepsDefaultMark) = 0;
    virtual bool IsDefaultedAt(int index) const = 0;
    virtual const IKeywordData* ContainerAt(int index) const = 0;
    virtual IKeywordData* MutableContainerAt(int index) = 0;
    virtual void AssignContainerAt(int index, const IKeywordData& source) = 0;

private:
    const IKeywordMD* m_md;
};

} // namespace Tarn::Fjel::Core::Keywords
