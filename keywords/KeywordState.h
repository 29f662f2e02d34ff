#pragma once

#include <memory>
#include <string>

#include "keywords/ICommentManager.h"
#include "keywords/Keyword.h"
#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordData.h>

namespace Tarn::Fjel::Core::DeckManager {

/// What only a keyword has that was read or edited.
struct Keyword::State
{
    static constexpr long long Unknown = -2;

    std::unique_ptr<Keywords::IKeywordData> data;
    std::shared_ptr<std::string> heldText;
    std::unique_ptr<ICommentManager> commentManager;
    std::string leadingComment;
    std::string besideName; ///< of a keyword that stands in no file
    std::unique_ptr<KeywordVariables> variables;
    /// Behind the last line of the extent from which the reader of the data took something, counted from the keyword's
    /// line; -1: it took nothing.
    long long takenSize = Unknown;
    /// What that reader took is all in its data. Known with `takenSize`.
    bool isReadWhole = true;
    bool beingRead = false;
    /// The held text has replaced the data. Else it is a copy, of the file or of the tree.
    bool textIsData = false;

    bool IsInUse() const
    {
        return data || heldText || commentManager || variables || !leadingComment.empty() || !besideName.empty() ||
               beingRead;
    }
};

/// A keyword's data are being read until the end of the scope, also when the read ends by an exception.
class ReadingMark
{
public:
    explicit ReadingMark(bool& flag) : m_flag(flag) { m_flag = true; }
    ~ReadingMark() { m_flag = false; }
    ReadingMark(const ReadingMark&) = delete;
    ReadingMark& operator=(const ReadingMark&) = delete;

private:
    bool& m_flag;
};

} // namespace Tarn::Fjel::Core::DeckManager
