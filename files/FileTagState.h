#pragma once

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;
class ILineWriter;

/// The generated tag of a file: what the file says, and what an edit has made of it since.
class FileTagState
{
public:
    void Clear() { *this = FileTagState(); }
    bool GetValue() const { return m_value; }
    bool IsChanged() const { return m_changed; }

    /// Sets the tag; the value before comes back.
    bool Set(bool value);
    /// Back to the tag before the first change.
    void Restore();
    /// Reads the tag block at the head of the file. The reader then stands behind the last tag line, or at 0 when the
    /// file bears no tag.
    void Read(ILineReader& reader);
    /// Writes the tag's line where the file bears the tag and tags are written at all.
    void Write(ILineWriter& writer) const;
    /// The tag counts as what the file says.
    void Commit() { m_changed = false; }

private:
    bool m_value = false;
    bool m_saved = false;
    bool m_changed = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
