#pragma once

#include <string>

#include "files/FileReferencingKeyword.h"
#include "files/KeywordFileEventArgs.h"
#include <tarn/service/Delegate.h>

namespace Tarn::Fjel::Core::DeckManager {

class KeywordFile;

/// INCLUDE: names a further keyword file and so builds the tree of files of a deck.
///
/// The link to the file exists from the construction on. Through it the included file asks which section and which top
/// file apply, and every change of it travels up to the including file.
class KeywordINCLUDE : public FileReferencingKeyword
{
public:
    KeywordINCLUDE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                   std::shared_ptr<KeywordFileReader> reader, long long position, long long size, std::string_view name,
                   const KeywordMarks* marks);
    ~KeywordINCLUDE() override;

    /// The keyword as an INCLUDE; null for any other keyword and for null.
    static KeywordINCLUDE* From(IKeyword* keyword);
    static const KeywordINCLUDE* From(const IKeyword* keyword);

    /// Raised with the same arguments whenever the included file raises `fileChanged`.
    Service::Delegate<KeywordFileEventArgs> forwardedChange;

    /// The file that the keyword names, which need not exist on disk. Null when the name is no usable path, when the
    /// keyword stands in no file, and when the link would close a ring of files.
    KeywordFile* IncludedFile() const;

    /// The keyword has been taken out of its file's list, and may be put back: it names no file until it is.
    void LeaveList();
    void ComeBack();

    void OnDataChanging() override;
    void OnDataChanged() override;
    void OnDataReverted() override;
    ITagMgr& GetTagMgr() const override;
    bool HasTagMgr() const override { return m_tagMgr != nullptr; }

    std::optional<std::string> NameInCopy(const Service::Directory& directory, const Context& context,
                                          ExportedFileMap& fileMap) const override;

    /// The included file is there, readable or not, or has keywords that no commit has written yet.
    bool BringsSomething() const;
    /// What the keyword names and isn't there, so that it brings nothing in; not set where it names nothing. No value
    /// when something stands there: when that brings nothing in, it was told why.
    std::optional<Service::FileName> MissingFile(const Context& context) const;

protected:
    void OnOwnerChanged() override;
    std::optional<std::string> NameIn(const Keywords::IKeywordData* data) const override;
    void PutName(Keywords::IKeywordData& data, const std::string& name) const override;

private:
    void Wire();
    void Unwire();
    void LetGo();
    std::shared_ptr<KeywordFile> Resolve() const;
    void TellOfPath(const std::string& message) const;
    bool ClosesRing(KeywordFile& target, const std::string& text) const;
    KeywordFile* OwnerFile() const;

    void AnswerSection(KeywordFileSectionQueryEventArgs& args);
    void AnswerDataFile(KeywordFileDataFileQueryEventArgs& args);
    void ForwardChange(KeywordFileEventArgs& args);

    mutable std::shared_ptr<KeywordFile> m_includedFile;
    mutable std::unique_ptr<ITagMgr> m_tagMgr;
    bool m_wired = false;
    bool m_hasLeft = false;
    /// The count of dropped links at which the path was last refused for closing a ring; 0: not refused.
    mutable unsigned long long m_refusedAt = 0;
    mutable bool m_ringTold = false;
    mutable bool m_pathTold = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
