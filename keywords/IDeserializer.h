#pragma once

#include "keywords/CustomForms.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordMD;
class IKeywordSyntaxTable;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class KeywordDataStore;
class KeywordVariables;
struct DeserializeState;

/// A reader that takes the place of the generic one for the data of one metadata node: a form of text that the
/// metadata cannot tell.
class IDeserializer
{
public:
    virtual ~IDeserializer() = default;

    /// True when the data was taken. When false, the generic reader goes on from where the store then stands, with the
    /// data filled so far.
    virtual bool Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store, const Context& context,
                             DeserializeState& state, KeywordVariables* variables) = 0;
};

/// Which metadata nodes of a syntax table have a reader of their own. A keyword that the table lacks has none.
class CustomDeserializers : public CustomForms<IDeserializer>
{
public:
    /// The readers for the table in force. Built when a table is first met and kept for as long as it stays in force.
    /// Throws DeckManagerException, at each call, while that table gives one of these keywords another shape than its
    /// reader expects.
    static const CustomDeserializers& InForce();

private:
    explicit CustomDeserializers(const Keywords::IKeywordSyntaxTable& table);
};

} // namespace Tarn::Fjel::Core::DeckManager
