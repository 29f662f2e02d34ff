#include "files/KeywordINCLUDE.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <boost/filesystem/exception.hpp>

#include "files/ExportedFileMap.h"
#include "files/FileRing.h"
#include "files/KeywordFile.h"
#include "files/LinkCounter.h"
#include "files/TagMgrForINCLUDE.h"
#include "text/KeywordFileReader.h"
#include <deckmanager/Context.h>
#include <deckmanager/IKeywordFileManager.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileUtils.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Service::Log;

KeywordINCLUDE::KeywordINCLUDE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed, IKeywordOwner* owner,
                               std::shared_ptr<KeywordFileReader> reader, long long position, long long size,
                               std::string_view name, const KeywordMarks* marks)
    : FileReferencingKeyword(syntax, variablesAllowed, owner, std::move(reader), position, size, name, marks)
{
    Wire();
}

KeywordINCLUDE::~KeywordINCLUDE()
{
    Unwire();
}

KeywordINCLUDE* KeywordINCLUDE::From(IKeyword* keyword)
{
    if (keyword == nullptr || keyword->GetSyntax()->GetKind() != Keywords::KeywordKind::Include) return nullptr;
    return static_cast<KeywordINCLUDE*>(keyword);
}

const KeywordINCLUDE* KeywordINCLUDE::From(const IKeyword* keyword)
{
    return From(const_cast<IKeyword*>(keyword));
}

KeywordFile* KeywordINCLUDE::OwnerFile() const
{
    return Owner() != nullptr ? Owner()->AsKeywordFile() : nullptr;
}

KeywordFile* KeywordINCLUDE::IncludedFile() const
{
    // A link that was refused, or a path that led to no file, may have become good since.
    if (!m_includedFile) const_cast<KeywordINCLUDE*>(this)->Wire();
    return m_includedFile.get();
}

std::shared_ptr<KeywordFile> KeywordINCLUDE::Resolve() const
{
    KeywordFile* owner = OwnerFile();
    if (owner == nullptr || m_refusedAt == FileRing::DroppedLinks()) return nullptr;

    const std::string& place = owner->GetFileName().GetFullName();
    const Log::Place logPlace(
        place, [](const void* include) { return static_cast<const KeywordINCLUDE*>(include)->GetLine(); }, this);
    const Service::ReadWatch reading;
    const Keywords::IKeywordData* data = const_cast<KeywordINCLUDE*>(this)->DataUnlessUnreadable(owner->RootContext());
    if (reading.SawFailure()) TellOfPath("The path of this INCLUDE cannot be read from its file.");
    const std::optional<std::string> text = Keywords::DataAccessUtils::GetINCLUDEFileName(data);
    if (!text) return nullptr;

    Service::FileName name;
    try {
        name = Service::FileName(*text);
    } catch (const boost::filesystem::filesystem_error&) {
        TellOfPath("The INCLUDE path \"" + *text + "\" is invalid.");
        return nullptr;
    }

    // A relative path counts from the folder of the deck's top file, wherever the keyword itself stands.
    const bool wasComplete = name.IsComplete();
    if (!wasComplete) name.MakeComplete(owner->DataFile().GetFileName().GetDirectory());

    const Service::FileStatus status = Service::FileStatus::Of(name.GetFullName());
    if (status.Exists() && !status.IsRegularFile()) {
        std::string message = "The INCLUDE path \"" + *text + "\"";
        if (!wasComplete) message += ", which resolves to \"" + name.GetFullName() + "\",";
        message +=
            " is not a file.\nEnsure that INCLUDE paths contain valid file names and are properly single-quoted.";
        TellOfPath(message);
        return nullptr;
    }

    m_pathTold = false;
    std::shared_ptr<KeywordFile> file = owner->Manager().GetKeywordFile(name, VariablesAllowed());
    if (file && ClosesRing(*file, *text)) return nullptr;
    return file;
}

/// The path is looked at whenever someone asks for the file. What is wrong with it is told once.
void KeywordINCLUDE::TellOfPath(const std::string& message) const
{
    if (!std::exchange(m_pathTold, true)) Log::SendLogMessage(message, Log::Error);
}

bool KeywordINCLUDE::ClosesRing(KeywordFile& target, const std::string& text) const
{
    const std::vector<KeywordFile*> ring = FileRing::Closing(*OwnerFile(), target);
    if (ring.empty()) {
        m_refusedAt = 0;
        m_ringTold = false;
        return false;
    }
    m_refusedAt = FileRing::DroppedLinks();
    if (!m_ringTold && !FileRing::Truce::IsOn()) {
        m_ringTold = true;
        std::string message = "The INCLUDE path \"" + text + "\" closes a ring of files: ";
        for (std::size_t i = 0; i < ring.size(); ++i) {
            if (i > 0) message += " -> ";
            message += ring[i]->GetFileName().GetFileName();
        }
        Log::SendLogMessage(message + ".", Log::Error);
    }
    return true;
}

void KeywordINCLUDE::Wire()
{
    if (m_wired || m_hasLeft) return;
    if (!m_includedFile) m_includedFile = Resolve();
    if (!m_includedFile) return;
    m_wired = true;
    m_includedFile->sectionQuery.Add(this, &KeywordINCLUDE::AnswerSection);
    m_includedFile->dataFileQuery.Add(this, &KeywordINCLUDE::AnswerDataFile);
    m_includedFile->fileChanged.Add(this, &KeywordINCLUDE::ForwardChange);
    m_includedFile->LinkAdded(*this);
}

void KeywordINCLUDE::Unwire()
{
    if (!m_wired) return;
    m_wired = false;
    m_includedFile->sectionQuery.Remove(this, &KeywordINCLUDE::AnswerSection);
    m_includedFile->dataFileQuery.Remove(this, &KeywordINCLUDE::AnswerDataFile);
    m_includedFile->fileChanged.Remove(this, &KeywordINCLUDE::ForwardChange);
    m_includedFile->LinkDropped(*this);
}

/// What the file has been edited while the keyword named it goes with the deck all the same.
void KeywordINCLUDE::LetGo()
{
    Unwire();
    if (KeywordFile* owner = m_includedFile ? OwnerFile() : nullptr) owner->NoteFormerFile(m_includedFile);
    m_includedFile.reset();
    m_refusedAt = 0;
    m_ringTold = false;
    m_pathTold = false;
}

void KeywordINCLUDE::LeaveList()
{
    LetGo();
    m_hasLeft = true;
}

void KeywordINCLUDE::ComeBack()
{
    m_hasLeft = false;
    Wire();
}

void KeywordINCLUDE::OnDataChanging()
{
    Unwire();
}

void KeywordINCLUDE::OnDataChanged()
{
    LetGo();
    Wire();
}

void KeywordINCLUDE::OnDataReverted()
{
    LetGo();
    Wire();
}

void KeywordINCLUDE::OnOwnerChanged()
{
    LetGo();
    Wire();
}

ITagMgr& KeywordINCLUDE::GetTagMgr() const
{
    if (!m_tagMgr) m_tagMgr = std::make_unique<TagMgrForINCLUDE>(*this);
    return *m_tagMgr;
}

bool KeywordINCLUDE::BringsSomething() const
{
    const KeywordFile* file = IncludedFile();
    if (file == nullptr) return false;
    const Service::FileStatus status = Service::FileStatus::Of(file->GetFileName());
    return status.IsRegularFile() || status.isUnknown || file->Begin() != file->End();
}

std::optional<Service::FileName> KeywordINCLUDE::MissingFile(const Context& context) const
{
    if (BringsSomething()) return std::nullopt;
    const KeywordFile* file = IncludedFile();
    const Service::FileName name = file != nullptr ? file->GetFileName() : NamedFile(context);
    if (name.IsSet() && Service::FileStatus::Of(name).Exists()) return std::nullopt;
    return name;
}

std::optional<std::string> KeywordINCLUDE::NameInCopy(const Service::Directory& directory, const Context& context,
                                                      ExportedFileMap& fileMap) const
{
    KeywordFile* file = IncludedFile();
    const bool exists = BringsSomething();
    // A name with a variable in it is no file's yet, and keeps it.
    const Service::FileName name = file != nullptr ? file->GetFileName() : NamedFile(context);
    if (const std::optional<Service::FileName> missing = MissingFile(context)) fileMap.NoteMissing(*this, *missing);
    if (!name.IsSet()) return std::nullopt;
    if (fileMap.HasOld(name)) return fileMap.NewNameOf(name).GetFileName();
    // A quote can't stand in a name that stands in quotes.
    std::string leaf = name.GetFileName();
    std::replace(leaf.begin(), leaf.end(), VeldaneDeckInfo::QUOTE, '_');
    Service::FileName target(directory, leaf);
    const auto isTaken = [&](const Service::FileName& candidate) { return fileMap.HasNew(candidate); };
    if (isTaken(target)) target = Service::FileUtils::ConstructUniqueName(target, isTaken);
    // The name of a file that isn't there is taken too: another file must not come to stand for it.
    if (exists)
        fileMap.AddWaiting(file, name, target);
    else
        fileMap.Add(name, target);
    return target.GetFileName();
}

std::optional<std::string> KeywordINCLUDE::NameIn(const Keywords::IKeywordData* data) const
{
    return Keywords::DataAccessUtils::GetINCLUDEFileName(data);
}

void KeywordINCLUDE::PutName(Keywords::IKeywordData& data, const std::string& name) const
{
    Keywords::DataAccessUtils::SetINCLUDEFileName(&data, name);
}

void KeywordINCLUDE::AnswerSection(KeywordFileSectionQueryEventArgs& args)
{
    KeywordFile* owner = OwnerFile();
    if (owner == nullptr) return;
    const KeywordFileIterator position = owner->Find(this);
    if (position == owner->End()) return;
    const Keywords::SectionType section = owner->SectionAt(position, true);
    if (section != Keywords::SectionType::None) args.sections.push_back(section);
}

void KeywordINCLUDE::AnswerDataFile(KeywordFileDataFileQueryEventArgs& args)
{
    if (KeywordFile* owner = OwnerFile()) args.dataFile = &owner->DataFile();
}

void KeywordINCLUDE::ForwardChange(KeywordFileEventArgs& args)
{
    forwardedChange.Raise(args);
}

} // namespace Tarn::Fjel::Core::DeckManager
