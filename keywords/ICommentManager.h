#pragma once

#include <string>

namespace Tarn::Fjel::Core::DeckManager {

class ILineWriter;

/// Holds the comment between a keyword's line and its first data line, as plain text without comment markers.
class ICommentManager
{
public:
    virtual ~ICommentManager() = default;

    virtual const std::string& GetComment() const = 0;
    virtual void SetComment(const std::string& text) = 0;
    virtual bool IsCommentChanged() const = 0;
    /// Back to the comment before the first change.
    virtual void RevertComment() = 0;
    /// Writes the comment as comment lines.
    virtual void WriteComment(ILineWriter& writer) const = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
