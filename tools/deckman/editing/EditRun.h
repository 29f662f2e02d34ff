#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include <tarn/service/FileName.h>

#include "output/Output.h"

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

class DeckSession;
struct Options;

/// The last step of a verb that has edited its deck in memory: the changed files are written, all or none, or with
/// --dry-run none is.
class EditRun
{
public:
    /// `before` are the files that the deck had ahead of the edits: what was changed in one goes to the disk also when
    /// the deck has it no more.
    EditRun(DeckSession& session, const Options& options,
            const std::vector<Tarn::Fjel::Core::DeckManager::IKeywordFile*>& before = {});
    /// For a step that changes those files, puts others in the place of `replaced`, and commits by itself.
    EditRun(DeckSession& session, const Options& options,
            const std::vector<Tarn::Fjel::Core::DeckManager::IKeywordFile*>& changed,
            std::vector<Tarn::Fjel::Core::Service::FileName> replaced);

    /// Nothing has changed.
    bool IsEmpty() const { return m_changed.empty(); }

    /// Commits; with --backup each file that changes or goes is copied to `FILE~` before. With --dry-run makes the new
    /// texts instead. Throws `Failure` when that can't be done: the files are then as they were.
    void Finish();

    /// The same with that step in the place of the commit, and without --dry-run.
    void Finish(const std::function<void()>& commit);

    /// Throws `Failure` when some changed file can't be written, as far as permissions tell.
    void RequireWritable() const;

    /// The line of a keyword in its file's new text, once finished; -1 for one that is none any more.
    int NewLine(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword) const;

    /// After a --dry-run: what would change, as a unified diff, file by file in deck order.
    void PrintDiff(Output& out) const;

private:
    struct NewText
    {
        const Tarn::Fjel::Core::DeckManager::IKeywordFile* file;
        std::string text;
    };

    struct Backup
    {
        Tarn::Fjel::Core::Service::FileName file;
        Tarn::Fjel::Core::Service::FileName copy; ///< of the old text, until the new one is in its place
        Tarn::Fjel::Core::Service::FileName name;
    };

    void MakeTexts();
    const std::string& Place() const;
    void Commit(const std::function<void()>& commit);
    void MakeBackups(std::vector<Backup>& backups) const;
    void MakeBackup(const Tarn::Fjel::Core::Service::FileName& file, std::vector<Backup>& backups) const;
    void Settle(const std::vector<Backup>& backups, bool isDone) const;

    DeckSession& m_session;
    const Options& m_options;
    std::vector<Tarn::Fjel::Core::DeckManager::IKeywordFile*> m_changed;
    std::vector<Tarn::Fjel::Core::Service::FileName> m_replaced;
    std::vector<NewText> m_texts; ///< of a --dry-run
    std::unordered_map<const Tarn::Fjel::Core::DeckManager::IKeyword*, int> m_lines;
};

} // namespace Deckman
