#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include <tarn/keywords/CompactString.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordListMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// The data of a list. A list of items is one array of its kind, grown in place; a list of records or lists holds
/// containers. An index out of range, or a call meant for a list of another kind, throws KeywordException.
///
/// A list holds at most MaxBytes of items and 2147483647 elements. AddElement throws KeywordException beyond that;
/// the Append operations append what still has room and say how many that were.
class IKeywordListData : public IKeywordData
{
public:
    static constexpr std::int64_t MaxBytes = std::int64_t(4) << 30;

    const IKeywordListMD* GetListMD() const noexcept { return static_cast<const IKeywordListMD*>(GetMetaData()); }
    MDType GetElementType() const noexcept { return GetListMD()->GetElementMD()->GetType(); }

    virtual int GetElementCount() const noexcept = 0;

    /// How many elements more the list has room for.
    virtual std::int64_t GetRoom() const noexcept = 0;

    /// A handle on the element; it follows the place, not the value, when elements ahead of it go.
    virtual Slot GetElement(int index) = 0;
    virtual ConstSlot GetElement(int index) const = 0;

    /// The record or list at index. The const form is the one to read with: the other first gives a filled-in list
    /// its own copy of the data that it shares.
    virtual IKeywordData& GetContainer(int index) = 0;
    virtual const IKeywordData& GetContainer(int index) const = 0;

    /// Appends a copy of the value, or an unset element (an empty container) for null. No default mark is set.
    virtual void AddElement(const ConstSlot* value = nullptr) = 0;
    /// Appends a copy of a container of the elements' metadata.
    virtual void AddElement(const IKeywordData& source) = 0;

    /// Replaces the element by a copy. A container that is an element of this very list is shared until one of the two
    /// is changed through a call that begins at this list; a reference into the source that was taken before isn't to
    /// be used for changes any more. The element's own address stays.
    virtual void SetElement(int index, const ConstSlot& source) = 0;
    virtual void SetElement(int index, const IKeywordData& source) = 0;

    virtual void RemoveElement(int index) = 0;
    virtual void Clear() noexcept = 0;

    /// The mark of an element that was left to its default. Its value isn't looked at, and HasValue of its slot is
    /// false. Elements that are containers have no such mark: false, and setting one throws.
    virtual bool IsElementDefaulted(int index) const = 0;
    virtual void SetElementDefaulted(int index, bool defaulted) = 0;
    virtual bool HasDefaultedElements() const noexcept = 0;

    /// The same item count times; count unset elements with the default mark. They return how many had room.
    virtual std::int64_t AppendRun(const ConstSlot& value, std::int64_t count) = 0;
    virtual std::int64_t AppendDefaults(std::int64_t count) = 0;
    virtual std::int64_t AppendYesNoRun(signed char value, std::int64_t count) = 0;
    virtual std::int64_t AppendOptionRun(int value, std::int64_t count) = 0;
    virtual std::int64_t AppendIntegerRun(int value, std::int64_t count) = 0;
    virtual std::int64_t AppendRealRun(double value, std::int64_t count) = 0;
    virtual std::int64_t AppendStringRun(std::string_view value, std::int64_t count) = 0;

    /// Blocks of values at once; they return how many had room.
    virtual std::int64_t AppendIntegers(std::span<const int> values) = 0;
    virtual std::int64_t AppendReals(std::span<const double> values) = 0;

    /// All values at once, unset ones as their sentinel; good until the next change of the list.
    virtual std::span<const signed char> YesNos() const = 0;
    virtual std::span<const int> Options() const = 0;
    virtual std::span<const int> Integers() const = 0;
    virtual std::span<const double> Reals() const = 0;
    virtual std::span<const CompactString> Strings() const = 0; ///< of strings or rests of lines

    /// The same, to be changed in place. Default marks stay as they are.
    virtual std::span<int> MutableIntegers() = 0;
    virtual std::span<double> MutableReals() = 0;

protected:
    using IKeywordData::IKeywordData;
};

} // namespace Tarn::Fjel::Core::Keywords
