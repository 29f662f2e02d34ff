#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tarn/keywords/IKeywordMD.h>

#include "output/Output.h"

namespace Deckman {

/// What the data of a keyword look like, as the catalogue has it.
namespace SyntaxShape {

using Tarn::Fjel::Core::Keywords::IKeywordMD;

/// The shape in a few words, such as "list of records".
std::string Words(const IKeywordMD* shape);

/// The shape as one JSON object with all below it; `null` for none.
void WriteJson(Output& out, const IKeywordMD* shape);

/// The shape for people: a row for each container, item and entry, indented by depth.
void WriteRows(Output& out, const IKeywordMD& shape);

} // namespace SyntaxShape

} // namespace Deckman
