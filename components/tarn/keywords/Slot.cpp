#include <tarn/keywords/Slot.h>

#include <tarn/keywords/CompactString.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordException.h>
#include <tarn/keywords/UnsetValue.h>

namespace Tarn::Fjel::Core::Keywords {

namespace {

template <class T>
const T& As(const void* value)
{
    return *static_cast<const T*>(value);
}

template <class T>
T& As(void* value)
{
    return *static_cast<T*>(value);
}

const IKeywordData& Need(const IKeywordData* node)
{
    if (!node) throw KeywordException("A slot without a place was asked for a value");
    return *node;
}

} // namespace

MDType ConstSlot::Kind() const
{
    return GetMD()->GetType();
}

const IKeywordMD* ConstSlot::GetMD() const
{
    return Need(m_node).MDAt(m_index);
}

bool ConstSlot::HasValue() const
{
    const IKeywordData& node = Need(m_node);
    const MDType kind = Kind();
    if (node.IsDefaultedAt(m_index)) return false;
    switch (kind) {
    case MDType::YesNo:
        return As<signed char>(node.ValueAt(m_index, kind)) != UnsetValue::YesNo;
    case MDType::Option:
    case MDType::Integer:
        return As<int>(node.ValueAt(m_index, kind)) != UnsetValue::Integer;
    case MDType::Real:
        return As<double>(node.ValueAt(m_index, kind)) != UnsetValue::Real;
    case MDType::String:
    case MDType::RestOfLine:
        return As<CompactString>(node.ValueAt(m_index, kind)).HasValue();
    default:
        return true;
    }
}

signed char ConstSlot::GetYesNo() const
{
    return As<signed char>(Need(m_node).ValueAt(m_index, MDType::YesNo));
}

int ConstSlot::GetOption() const
{
    return As<int>(Need(m_node).ValueAt(m_index, MDType::Option));
}

int ConstSlot::GetInteger() const
{
    return As<int>(Need(m_node).ValueAt(m_index, MDType::Integer));
}

double ConstSlot::GetReal() const
{
    return As<double>(Need(m_node).ValueAt(m_index, MDType::Real));
}

std::string_view ConstSlot::GetString() const
{
    return As<CompactString>(Need(m_node).ValueAt(m_index, MDType::String)).View();
}

const IKeywordData* ConstSlot::GetContainer() const
{
    return Need(m_node).ContainerAt(m_index);
}

IKeywordData& Slot::Node() const noexcept
{
    return *const_cast<IKeywordData*>(m_node); // made from a container that may be changed
}

void Slot::SetYesNo(signed char value)
{
    Need(m_node);
    As<signed char>(Node().MutableValueAt(m_index, MDType::YesNo, false)) = value;
}

void Slot::SetOption(int index)
{
    Need(m_node);
    As<int>(Node().MutableValueAt(m_index, MDType::Option, false)) = index;
}

void Slot::SetInteger(int value)
{
    Need(m_node);
    As<int>(Node().MutableValueAt(m_index, MDType::Integer, false)) = value;
}

void Slot::SetReal(double value)
{
    Need(m_node);
    As<double>(Node().MutableValueAt(m_index, MDType::Real, false)) = value;
}

void Slot::SetString(std::string_view value)
{
    Need(m_node);
    As<CompactString>(Node().MutableValueAt(m_index, MDType::String, false)).Set(value);
}

void Slot::SetUnset()
{
    const MDType kind = Kind();
    switch (kind) {
    case MDType::YesNo:
        As<signed char>(Node().MutableValueAt(m_index, kind, true)) = UnsetValue::YesNo;
        break;
    case MDType::Option:
    case MDType::Integer:
        As<int>(Node().MutableValueAt(m_index, kind, true)) = UnsetValue::Integer;
        break;
    case MDType::Real:
        As<double>(Node().MutableValueAt(m_index, kind, true)) = UnsetValue::Real;
        break;
    case MDType::String:
    case MDType::RestOfLine:
        As<CompactString>(Node().MutableValueAt(m_index, kind, true)).Clear();
        break;
    default:
        throw KeywordException("A container in the data of " + Node().GetSyntax()->GetName() +
                               " can't be unset through a slot");
    }
}

void Slot::Assign(const ConstSlot& source)
{
    switch (Kind()) {
    case MDType::YesNo:
        return SetYesNo(source.GetYesNo());
    case MDType::Option:
        return SetOption(source.GetOption());
    case MDType::Integer:
        return SetInteger(source.GetInteger());
    case MDType::Real:
        return SetReal(source.GetReal());
    case MDType::String:
    case MDType::RestOfLine: {
        // Read first: when source and target share an array, the change gives this one a copy of its own.
        const CompactString value = As<CompactString>(Need(source.m_node).ValueAt(source.m_index, MDType::String));
        As<CompactString>(Node().MutableValueAt(m_index, MDType::String, false)) = value;
        return;
    }
    default:
        if (const IKeywordData* container = source.GetContainer()) {
            return Node().AssignContainerAt(m_index, *container);
        }
        throw KeywordException("A container in the data of " + Node().GetSyntax()->GetName() +
                               " can't take over a single value");
    }
}

IKeywordData* Slot::GetContainer()
{
    Need(m_node);
    return Node().MutableContainerAt(m_index);
}

} // namespace Tarn::Fjel::Core::Keywords
