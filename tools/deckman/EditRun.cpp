#include "EditRun.h"

#include <iterator>

#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/TextToCommit.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileUtils.h>

#include "DeckSession.h"
#include "UnifiedDiff.h"

namespace Deckman {

namespace {

std::string WithLineFeeds(std::string text)
{
    std::erase(text, '\r');
    return text;
}

std::string TextOnDisk(const DeckManager::IKeywordFile& file)
{
    Service::FileInputStream stream(file.GetFileName().GetFullName());
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace

EditRun::EditRun(DeckSession& session, const Options& options) : m_session(session), m_options(options)
{
    for (DeckManager::IKeywordFile* file : session.FilesInDeckOrder()) {
        if (file->IsModified()) m_changed.push_back(file);
    }
}

void EditRun::Finish()
{
    try {
        if (m_options.dryRun)
            MakeTexts();
        else
            Commit();
    } catch (const Service::Exception& exception) {
        throw Failure(FileFailure, exception.what(), m_options.deck);
    }
}

void EditRun::MakeTexts()
{
    for (const DeckManager::IKeywordFile* file : m_changed) {
        DeckManager::TextToCommit made = DeckManager::TextToCommit::Of(*file);
        auto line = made.lines.begin();
        for (DeckManager::KeywordFileIterator place = file->Begin(); place != file->End(); ++place)
            m_lines.emplace(*place, *line++);
        m_texts.push_back({file, std::move(made.text)});
    }
}

void EditRun::Commit()
{
    if (m_options.backup) {
        for (const DeckManager::IKeywordFile* file : m_changed) {
            const Service::FileName& name = file->GetFileName();
            if (!name.FileExists()) continue;
            const Service::FileName backup(name.GetFullName() + "~");
            if (Service::FileUtils::Copy(name, backup, true)) continue;
            throw Failure(FileFailure, "The file could not be copied for --backup; nothing is changed.",
                          m_session.PlaceOf(*file));
        }
    }
    m_session.Editor().Commit();
}

int EditRun::NewLine(const DeckManager::IKeyword& keyword) const
{
    const auto found = m_lines.find(&keyword);
    return found != m_lines.end() ? found->second : keyword.GetLine();
}

void EditRun::PrintDiff(Output& out) const
{
    UnifiedDiff diff(out);
    for (const NewText& made : m_texts)
        diff.AddFile(m_session.PlaceOf(*made.file), WithLineFeeds(TextOnDisk(*made.file)), WithLineFeeds(made.text));
}

} // namespace Deckman
