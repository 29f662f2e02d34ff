#pragma once

#include <string_view>

#include <tarn/keywords/MDType.h>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordData;
class IKeywordItemMD;
class IKeywordMD;

/// A handle on one place of a record or list: an item of a record, an element of a list. It owns nothing and is
/// passed by value; it is good while its container lives, also when a list grows.
///
/// A value asked for as another kind than it is, or a place out of range, throws KeywordException.
class ConstSlot
{
public:
    ConstSlot() noexcept = default;
    ConstSlot(const IKeywordData& container, int index) noexcept : m_node(&container), m_index(index) {}

    bool IsNull() const noexcept { return m_node == nullptr; }
    explicit operator bool() const noexcept { return m_node != nullptr; }

    /// The kind of what stands here: one of the six kinds of item, or a container's.
    MDType Kind() const;

    /// The metadata of what stands here.
    const IKeywordMD* GetMD() const;

    /// False for an unset and for a defaulted value; a string that was set to be empty has one. A container here has
    /// a value always.
    bool HasValue() const;

    signed char GetYesNo() const;       ///< 0, 1, or -1 while unset
    int GetOption() const;              ///< the index of the option, or UnsetValue::Option
    int GetInteger() const;             ///< or UnsetValue::Integer
    double GetReal() const;             ///< or UnsetValue::Real
    std::string_view GetString() const; ///< of a string or rest of line; empty while unset; good until the next change

    /// The container that stands here; null for an item.
    const IKeywordData* GetContainer() const;

    friend bool operator==(const ConstSlot& a, const ConstSlot& b) noexcept = default;

protected:
    friend class Slot;

    const IKeywordData* m_node = nullptr;
    int m_index = -1;
};

/// A slot whose value can be changed. Setting a list element takes its default mark away.
class Slot : public ConstSlot
{
public:
    Slot() noexcept = default;
    Slot(IKeywordData& container, int index) noexcept : ConstSlot(container, index) {}

    void SetYesNo(signed char value);
    void SetOption(int index);
    void SetInteger(int value);
    void SetReal(double value);
    void SetString(std::string_view value);

    /// Puts the sentinel here; for a string, takes its value away. A default mark stays.
    void SetUnset();

    /// Takes over value, default mark aside, of a slot of the same kind. Containers are copied in depth.
    void Assign(const ConstSlot& source);

    /// The container that stands here; null for an item.
    IKeywordData* GetContainer();
    using ConstSlot::GetContainer;

private:
    IKeywordData& Node() const noexcept;
};

} // namespace Tarn::Fjel::Core::Keywords
