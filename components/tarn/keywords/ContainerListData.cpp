#include <limits>

#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/detail/ListDataBase.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

void ListDataBase::Fail(const char* what) const
{
    throw KeywordException("A list in the data of " + GetSyntax()->GetName() + " has no element that is a " + what);
}

void ListDataBase::FailFull() const
{
    throw KeywordException("A list in the data of " + GetSyntax()->GetName() + " has no room for a further element");
}

std::int64_t ContainerListData::GetRoom() const noexcept
{
    return std::int64_t(std::numeric_limits<int>::max()) - GetElementCount();
}

Slot ContainerListData::GetElement(int index)
{
    At(index);
    return Slot(*this, index);
}

ConstSlot ContainerListData::GetElement(int index) const
{
    At(index);
    return ConstSlot(*this, index);
}

IKeywordData& ContainerListData::GetContainer(int index)
{
    const std::size_t at = At(index);
    Part();
    return *m_block->nodes[at];
}

const IKeywordData& ContainerListData::GetContainer(int index) const
{
    return *RawAt(index);
}

void ContainerListData::AddElement(const ConstSlot* value)
{
    if (!value) {
        Append(MakeNode(*MD().GetElementMD()));
        return;
    }
    const IKeywordData* container = value->GetContainer();
    if (!container) Fail("single value");
    AddElement(*container);
}

void ContainerListData::AddElement(const IKeywordData& source)
{
    std::unique_ptr<IKeywordData> node = MakeNode(*MD().GetElementMD());
    CloneContext context;
    AssignNode(*node, source, false, context);
    Append(std::move(node));
}

void ContainerListData::SetElement(int index, const ConstSlot& source)
{
    const IKeywordData* container = source.GetContainer();
    if (!container) FailPlace(*this, index, "single value");
    SetElement(index, *container);
}

void ContainerListData::SetElement(int index, const IKeywordData& source)
{
    const std::size_t at = At(index);
    // The element ahead is what an empty element is filled in from; a longer search would cost more than it saves.
    const bool isTwin = at > 0 && m_block->nodes[at - 1].get() == &source;
    Part();
    CloneContext context;
    AssignNode(*m_block->nodes[at], isTwin ? *m_block->nodes[at - 1] : source, isTwin, context);
}

void ContainerListData::RemoveElement(int index)
{
    const std::size_t at = At(index);
    Part();
    m_block->nodes.erase(m_block->nodes.begin() + static_cast<std::ptrdiff_t>(at));
}

void ContainerListData::Assign(const ContainerListData& source, bool shares, CloneContext& context)
{
    if (m_block == source.m_block) return;
    Block* block = source.m_block;
    if (block && shares) {
        ++block->users;
    } else if (block) {
        const bool isShared = block->users > 1;
        const auto known = isShared ? context.copies.find(block) : context.copies.end();
        if (known != context.copies.end()) {
            block = static_cast<Block*>(known->second);
            ++block->users;
        } else {
            auto copy = std::make_unique<Block>();
            copy->owner = this;
            copy->nodes = CloneNodes(*block, context);
            if (isShared) context.copies.emplace(block, copy.get());
            block = copy.release();
        }
    }
    Release();
    m_block = block;
}

std::vector<std::unique_ptr<IKeywordData>> ContainerListData::CloneNodes(const Block& block, CloneContext& context)
{
    std::vector<std::unique_ptr<IKeywordData>> nodes;
    nodes.reserve(block.nodes.size());
    for (const std::unique_ptr<IKeywordData>& node : block.nodes)
        nodes.push_back(CloneNode(*node, context));
    return nodes;
}

const IKeywordMD* ContainerListData::MDAt(int index) const
{
    At(index);
    return MD().GetElementMD();
}

/// Leaves the block to those who share it. The owner takes the elements along and leaves copies behind.
void ContainerListData::Part()
{
    if (!m_block || m_block->users == 1) return;
    auto own = std::make_unique<Block>();
    own->owner = this;
    CloneContext context;
    own->nodes = CloneNodes(*m_block, context);
    if (m_block->owner == this) {
        own->nodes.swap(m_block->nodes);
        m_block->owner = nullptr;
    }
    --m_block->users;
    m_block = own.release();
}

void ContainerListData::Release() noexcept
{
    if (!m_block) return;
    if (m_block->owner == this) m_block->owner = nullptr;
    if (--m_block->users == 0) delete m_block;
    m_block = nullptr;
}

void ContainerListData::Append(std::unique_ptr<IKeywordData> node)
{
    if (GetRoom() <= 0) FailFull();
    if (!m_block) {
        m_block = new Block;
        m_block->owner = this;
    }
    Part();
    m_block->nodes.push_back(std::move(node));
}

} // namespace Tarn::Fjel::Core::Keywords::Detail
