#pragma once

#include "keywords/ITagMgr.h"

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;

/// The tag of a keyword that answers for itself. The file is asked when the object is made, unless the load of the
/// file learnt the answer in passing.
class TagMgrForKeyword : public ITagMgr
{
public:
    /// `keyword` owns this object.
    explicit TagMgrForKeyword(const Keyword& keyword);

    bool SetTag(bool tagged) override;
    bool IsTagged() const override { return m_tagged || IsFileTagged(); }
    bool IsFileTagged() const override;
    bool IsTagChanged() const override { return m_changed; }
    void RevertTag() override;
    void WriteTag(std::string& keywordLine) const override;
    void CommitTag() override { m_changed = false; }

private:
    const Keyword& m_keyword;
    bool m_tagged;
    bool m_saved = false;
    bool m_changed = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
