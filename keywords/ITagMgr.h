#pragma once

#include <string>

namespace Tarn::Fjel::Core::DeckManager {

/// Answers for the generated tag of one keyword: what the file says, and what an edit has made of it since.
class ITagMgr
{
public:
    virtual ~ITagMgr() = default;

    /// Sets the tag; the value before comes back.
    virtual bool SetTag(bool tagged) = 0;
    /// The keyword, or the file that it belongs to, bears the tag.
    virtual bool IsTagged() const = 0;
    /// The file that the keyword stands in bears the tag.
    virtual bool IsFileTagged() const = 0;
    /// An edit changed the tag since the last commit.
    virtual bool IsTagChanged() const = 0;
    /// Back to the tag before the first change.
    virtual void RevertTag() = 0;
    /// Puts the tag behind a keyword line that is to be written: at column 37 (from 0), or one blank behind what stands
    /// there. Nothing, unless the keyword itself is tagged and tags are written at all.
    virtual void WriteTag(std::string& keywordLine) const = 0;
    /// The tag counts as what the file says.
    virtual void CommitTag() = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
