#pragma once

namespace Tarn::Fjel::Core::Keywords {

/// The kind of a metadata node, and so of the data that it describes.
enum class MDType : int
{
    None = 0,
    YesNo = 2,      ///< item: a signed byte, 0 or 1
    Option = 3,     ///< item: an index into the option names
    Integer = 4,    ///< item: 32 bits
    RestOfLine = 5, ///< item: the rest of a line as it stands, a string
    List = 6,       ///< container: any number of elements of one kind
    Map = 7,        ///< container: a fixed set of named integers
    RawText = 8,    ///< container: text as it stands
    Real = 9,       ///< item: a double
    Record = 10,    ///< container: a fixed row of items and containers
    String = 11     ///< item: a string
};

} // namespace Tarn::Fjel::Core::Keywords
