#pragma once

#include <memory>
#include <optional>

#include <tarn/keywords/IKeywordListData.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywords;
class IKeyword;
class KeywordVariables;

/// One element of a keyword whose data are a list of single values.
struct KeywordElement
{
    /// A list of the keyword's metadata that holds this element alone, at 0, with its default mark; empty when the
    /// keyword's list has no element of that number.
    std::unique_ptr<Keywords::IKeywordListData> list;
    /// How many elements the keyword's list has.
    int count = 0;
};

/// Reads one element, counted from 0, of the list that `ReadKeywordData` would give.
///
/// Value, count, messages and their places are those of that read, but a list of numbers or strings whose text gives no
/// cause for a message is only counted, and no tree of it is built: an element of an array of hundreds of megabytes
/// comes in about the time in which these can be read from memory.
///
/// Where the deck allows variables, `variables` takes the element's reference, if it is one; it refers to the new list.
/// Null for a caller that doesn't ask. Empty for a keyword whose data are of another shape, for one without data, and
/// for one that is being read.
///
/// REQUIRES: `keyword` stands in a file of `deck`.
std::optional<KeywordElement> ReadKeywordElement(const IDeckKeywords& deck, const IKeyword& keyword, int index,
                                                 KeywordVariables* variables = nullptr);

} // namespace Tarn::Fjel::Core::DeckManager
