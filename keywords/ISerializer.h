#pragma once

#include "keywords/CustomForms.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordMD;
class IKeywordSyntaxTable;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class ILineWriter;

/// A writer that takes the place of the generic one for the data of one metadata node: a form of text that the metadata
/// cannot tell.
class ISerializer
{
public:
    virtual ~ISerializer() = default;

    /// True when the data was written. When false, nothing was, and the generic writer takes over. `useVariables`: the
    /// deck's values may be references to variables.
    virtual bool Serialize(const Keywords::IKeywordData& data, ILineWriter& writer, bool useVariables) = 0;
};

/// Which metadata nodes of a syntax table have a writer of their own. A keyword that the table lacks has none.
class CustomSerializers : public CustomForms<ISerializer>
{
public:
    /// The writers for the table in force. Built when a table is first met and kept for as long as it stays in force.
    /// Throws DeckManagerException, at each call, while that table gives one of these keywords another shape than its
    /// writer expects.
    static const CustomSerializers& InForce();

private:
    explicit CustomSerializers(const Keywords::IKeywordSyntaxTable& table);
};

} // namespace Tarn::Fjel::Core::DeckManager
