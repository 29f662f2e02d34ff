#pragma once

#include <list>
#include <memory>
#include <unordered_map>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;
class Keyword;
class KeywordFile;

/// The keyword list of one file.
///
/// It is a list, so that positions in it stay good while other keywords come and go. Whoever gets into the list of a
/// file with an INCLUDE keyword hands the changes of the included file on to that file; who leaves it stops.
class KeywordFileContents
{
public:
    using List = std::list<std::shared_ptr<IKeyword>>;

    /// `owner` null: a holder that belongs to no file.
    explicit KeywordFileContents(KeywordFile* owner) : m_owner(owner) {}
    ~KeywordFileContents();
    KeywordFileContents(const KeywordFileContents&) = delete;
    KeywordFileContents& operator=(const KeywordFileContents&) = delete;

    List& Keywords() { return m_keywords; }
    const List& Keywords() const { return m_keywords; }

    /// Appends a keyword of the scan.
    void Append(std::shared_ptr<IKeyword> keyword);

    /// Puts a keyword ahead of `position`.
    List::iterator Insert(List::iterator position, std::shared_ptr<IKeyword> keyword);
    void Erase(List::iterator node);
    /// Moves an element of `source`, which may be this list, ahead of `position`. Positions of it stay good.
    void Splice(List::iterator position, KeywordFileContents& source, List::iterator node);

    /// Puts another list in the place of this one.
    void Replace(const List& keywords);

    /// The place of a keyword; the list's end when it is not in it.
    List::iterator Find(const IKeyword* keyword);

    /// How many keywords stand ahead of `node`. The list's end counts as one more place.
    std::size_t OrdinalOf(List::iterator node);

    static Keyword& AsKeyword(const std::shared_ptr<IKeyword>& keyword);

private:
    struct Place
    {
        List::iterator node;
        std::size_t ordinal;
    };
    using Index = std::unordered_map<const IKeyword*, Place>;

    void NoteNode(List::iterator node);
    void Subscribe(const std::shared_ptr<IKeyword>& keyword);
    void Unsubscribe(const std::shared_ptr<IKeyword>& keyword);
    Index& GetIndex();

    KeywordFile* m_owner;
    List m_keywords;
    std::unique_ptr<Index> m_index; ///< made when first asked, since a plain walk needs none
    bool m_ordinalsHold = false;    ///< those of the index; an edit changes many at once
};

} // namespace Tarn::Fjel::Core::DeckManager
