#pragma once

#include <string>

#include "text/ForwardingLineWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Writes lines into a text in memory. Lines end with LF there, but for those of blocks (`WriteText`), which end with
/// CR LF; a block made of it brings a file its own line ends everywhere.
class LineStringWriter final : public ForwardingLineWriter
{
public:
    LineStringWriter();
    ~LineStringWriter() override;

    /// A copy of what was written. What is in hand doesn't count.
    std::string GetText() const;
    /// The same, taken out of the writer, which is then empty.
    std::string TakeText();
    /// Replaces what was written, and drops what is in hand.
    void SetText(const std::string& text);
};

} // namespace Tarn::Fjel::Core::DeckManager
