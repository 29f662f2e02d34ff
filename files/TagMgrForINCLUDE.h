#pragma once

#include "keywords/TagMgrForKeyword.h"

namespace Tarn::Fjel::Core::DeckManager {

class KeywordINCLUDE;

/// The tag of an INCLUDE keyword: its own, or the file tag of the file that it brings in.
class TagMgrForINCLUDE : public ITagMgr
{
public:
    /// `keyword` owns this object.
    explicit TagMgrForINCLUDE(const KeywordINCLUDE& keyword);

    bool SetTag(bool tagged) override { return m_inner.SetTag(tagged); }
    bool IsTagged() const override;
    bool IsFileTagged() const override { return false; }
    bool IsTagChanged() const override { return m_inner.IsTagChanged(); }
    void RevertTag() override { m_inner.RevertTag(); }
    void WriteTag(std::string& keywordLine) const override { m_inner.WriteTag(keywordLine); }
    void CommitTag() override { m_inner.CommitTag(); }

private:
    const KeywordINCLUDE& m_keyword;
    TagMgrForKeyword m_inner;
};

} // namespace Tarn::Fjel::Core::DeckManager
