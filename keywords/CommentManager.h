#pragma once

#include <memory>
#include <string>

#include "keywords/ICommentManager.h"

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;

/// The comment of an ordinary keyword, read from its file when the object is made.
class CommentManager : public ICommentManager
{
public:
    /// `keyword` may be null; it is asked in the constructor only.
    explicit CommentManager(const Keyword* keyword);

    const std::string& GetComment() const override { return m_comment; }
    void SetComment(const std::string& text) override;
    bool IsCommentChanged() const override { return m_saved != nullptr; }
    void RevertComment() override;
    void WriteComment(ILineWriter& writer) const override;

private:
    std::unique_ptr<std::string> m_saved; ///< the comment as it was read; null until the first change
    std::string m_comment;
};

/// Stands for keywords whose data lines may look like comments (a title, raw text): they have no comment.
class CommentManagerDummy : public ICommentManager
{
public:
    const std::string& GetComment() const override;
    void SetComment(const std::string&) override {}
    bool IsCommentChanged() const override { return false; }
    void RevertComment() override {}
    void WriteComment(ILineWriter&) const override {}
};

} // namespace Tarn::Fjel::Core::DeckManager
