#pragma once

#include <memory>

#include <deckmanager/ISingleKeywordIterator.h>
#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordIterator.h>

namespace Tarn::Fjel::Core::DeckManager {

class KeywordFile;

/// The walk over an INCLUDE keyword and the file that it includes.
class KeywordINCLUDEIterator : public ISingleKeywordIterator
{
public:
    /// With `atBegin` on the INCLUDE keyword itself; else on the last keyword of the included file.
    KeywordINCLUDEIterator(KeywordFile* file, const KeywordFileIterator& position, bool atBegin,
                           bool ignoreLogicalEnds);
    /// Inside the included file, at a place of its walk.
    KeywordINCLUDEIterator(KeywordFile* file, const KeywordFileIterator& position, KeywordIterator nested,
                           bool ignoreLogicalEnds);
    KeywordINCLUDEIterator(const KeywordINCLUDEIterator& other);
    KeywordINCLUDEIterator& operator=(const KeywordINCLUDEIterator&) = delete;

    std::unique_ptr<ISingleKeywordIterator> Clone() const override;
    bool Equals(const ISingleKeywordIterator& other) const override;
    const IKeyword* Current() const override;
    bool Increment() override;
    bool Decrement() override;
    bool Less(const ISingleKeywordIterator& other) const override;
    bool IsValid() const override { return Current() != nullptr; }
    KeywordFile* CurrentFile() const override;
    KeywordFileIterator CurrentFileIter() const override;
    bool IsIdentical(const ISingleKeywordIterator& other) const override;
    bool AfterLogicalEnd() const override;
    void SetIgnoreLogicalEnds(bool ignore) override;

    /// The walk inside the included file; null outside it.
    const KeywordIterator* Nested() const { return m_state == State::Inside ? m_nested.get() : nullptr; }

private:
    enum class State : int
    {
        Ahead = 0,
        OnKeyword = 1,
        Inside = 2
    };

    const KeywordINCLUDEIterator* Alike(const ISingleKeywordIterator& other) const;

    KeywordFile* m_file;
    KeywordFileIterator m_position;
    std::unique_ptr<KeywordIterator> m_nested;
    bool m_ignoreLogicalEnds;
    State m_state = State::OnKeyword;
};

} // namespace Tarn::Fjel::Core::DeckManager
