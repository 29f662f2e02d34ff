#include <tarn/keywords/detail/DataNodes.h>

#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/detail/ListDataBase.h>

namespace Tarn::Fjel::Core::Keywords {

namespace Detail {

void FailPlace(const IKeywordData& data, int index, const char* what)
{
    throw KeywordException("The data of " + data.GetSyntax()->GetName() + " have no " + what + " at index " +
                           std::to_string(index));
}

std::unique_ptr<IKeywordData> MakeNode(const IKeywordMD& md)
{
    switch (md.GetType()) {
    case MDType::Record:
        return RecordData::Create(static_cast<const RecordMD&>(md));
    case MDType::List: {
        const auto& list = static_cast<const ListMD&>(md);
        if (KeywordUtils::IsItemMDType(list.GetElementMD())) return MakeItemList(list);
        return std::make_unique<ContainerListData>(list);
    }
    case MDType::Map:
        return std::make_unique<MapData>(static_cast<const MapMD&>(md));
    case MDType::RawText:
        return std::make_unique<RawTextData>(static_cast<const RawTextMD&>(md));
    default:
        throw KeywordException("The metadata of " + md.GetSyntax()->GetName() + " name no container");
    }
}

void AssignNode(IKeywordData& target, const IKeywordData& source, bool shares, CloneContext& context)
{
    if (&target == &source) return;
    if (target.GetMetaData() != source.GetMetaData()) {
        throw KeywordException("The data of " + target.GetSyntax()->GetName() +
                               " can't take over data of another kind");
    }
    switch (target.GetType()) {
    case MDType::Record:
        return static_cast<RecordData&>(target).Assign(static_cast<const RecordData&>(source), shares, context);
    case MDType::List: {
        auto& list = static_cast<IKeywordListData&>(target);
        const auto& from = static_cast<const IKeywordListData&>(source);
        if (KeywordUtils::IsItemMDType(list.GetElementType())) return AssignItemList(list, from);
        return static_cast<ContainerListData&>(list).Assign(static_cast<const ContainerListData&>(from), shares,
                                                            context);
    }
    case MDType::Map:
        return static_cast<MapData&>(target).Assign(static_cast<const MapData&>(source));
    default:
        return static_cast<RawTextData&>(target).SetText(static_cast<const RawTextData&>(source).GetText());
    }
}

std::unique_ptr<IKeywordData> CloneNode(const IKeywordData& source, CloneContext& context)
{
    std::unique_ptr<IKeywordData> copy = MakeNode(*source.GetMetaData());
    AssignNode(*copy, source, false, context);
    return copy;
}

std::unique_ptr<IKeywordData> CloneTree(const IKeywordData& source)
{
    CloneContext context;
    return CloneNode(source, context);
}

IKeywordData* RawChild(IKeywordData& container, int index)
{
    if (container.GetType() == MDType::Record) return &static_cast<RecordData&>(container).GetContainer(index);
    return static_cast<ContainerListData&>(container).RawAt(index);
}

const void* SharedBlock(const IKeywordData& data)
{
    if (data.GetType() != MDType::List) return nullptr;
    const auto& list = static_cast<const IKeywordListData&>(data);
    if (KeywordUtils::IsItemMDType(list.GetElementType())) return nullptr;
    return static_cast<const ContainerListData&>(list).SharedBlock();
}

namespace {

/// Trees are made from this library's own metadata only; a host's own classes behind the interfaces are refused.
bool IsOwn(const IKeywordMD& md)
{
    switch (md.GetType()) {
    case MDType::Record:
        return dynamic_cast<const RecordMD*>(&md) != nullptr;
    case MDType::List:
        return dynamic_cast<const ListMD*>(&md) != nullptr;
    case MDType::Map:
        return dynamic_cast<const MapMD*>(&md) != nullptr;
    case MDType::RawText:
        return dynamic_cast<const RawTextMD*>(&md) != nullptr;
    default:
        return false;
    }
}

} // namespace

} // namespace Detail

const KeywordDataFactory& KeywordDataFactory::Instance()
{
    static const KeywordDataFactory instance;
    return instance;
}

std::unique_ptr<IKeywordData> KeywordDataFactory::ConstructSafely(const IKeywordSyntax* syntax) const
{
    return syntax ? ConstructSafely(*syntax) : nullptr;
}

std::unique_ptr<IKeywordData> KeywordDataFactory::ConstructSafely(const IKeywordSyntax& syntax) const
{
    const IKeywordMD* md = syntax.GetMetaData();
    if (!md) return nullptr;
    if (!Detail::IsOwn(*md)) {
        throw KeywordException("Data of " + syntax.GetName() + " can't be made from metadata of another library");
    }
    return Detail::MakeNode(*md);
}

} // namespace Tarn::Fjel::Core::Keywords
