#include "deck/FileRenames.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include <boost/filesystem/exception.hpp>

#include "deck/DeckKeywords.h"
#include "files/FileReferencingKeyword.h"
#include "files/IteratorAccess.h"
#include "files/KeywordFile.h"
#include <deckmanager/Context.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IKeywordFileManager.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/FileSystem.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::DataAccessUtils;
using Service::FileName;
using Service::FileUtils;

namespace {

/// Of the files that a GDFILE without an extension stands for.
constexpr std::array<const char*, 4> gridExtensions = {"GRID", "EGRID", "FGRID", "FEGRID"};

/// The leaf at the end of a path as the user has written it.
std::size_t LeafBegin(const std::string& value)
{
    const std::size_t separator = value.find_last_of("/\\");
    return separator == std::string::npos ? 0 : separator + 1;
}

std::size_t CommonEnd(const std::string& a, const std::string& b)
{
    const auto differs = std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend());
    return static_cast<std::size_t>(differs.first - a.rbegin());
}

/// A text in which a path has been replaced, with no more than the leaf of it changed: what stands ahead in the path
/// may be an alias. `renamed` as it is where the old text has no such leaf there.
std::string WithLeafOnly(const std::string& text, const std::string& renamed, const std::string& from,
                         const std::string& to)
{
    const std::size_t leafEnd = text.size() - CommonEnd(text, renamed) + CommonEnd(from, to);
    if (leafEnd > text.size() || leafEnd < from.size()) return renamed;
    const std::size_t leafBegin = leafEnd - from.size();
    if (text.compare(leafBegin, from.size(), from) != 0) return renamed;
    return text.substr(0, leafBegin) + to + text.substr(leafEnd);
}

FileName Beside(const FileName& name, const std::string& leaf)
{
    return FileName(name.GetDirectory(), leaf);
}

std::string FullNameOf(const FileName& name)
{
    return name.CanonicalName();
}

FileReferencingKeyword* ReferenceAt(const KeywordFileIterator& place)
{
    return const_cast<FileReferencingKeyword*>(FileReferencingKeyword::From(*place));
}

} // namespace

FileRenames::FileRenames(DeckKeywords& keywords, IKeywordFileManager& fileManager, const Leaves& leaves,
                         bool generatedOnly)
    : m_keywords(keywords), m_fileManager(fileManager), m_leaves(leaves)
{
    const Service::ReadWatch reading;
    FindKeywordFiles(generatedOnly);
    FindGridFiles("ORDGRID", generatedOnly);
    FindGridFiles("GDFILE", generatedOnly);
    if (reading.SawFailure())
        throw DeckManagerException("The files cannot be renamed: a file of the deck cannot be read.");
}

FileRenames::~FileRenames() = default;

const std::string* FileRenames::NewLeaf(const std::string& leaf) const
{
    const auto found = m_leaves.find(leaf);
    return found != m_leaves.end() ? &found->second : nullptr;
}

void FileRenames::AddMove(KeywordFile* file, const FileName& from, const std::string& leaf)
{
    const FileName to = Beside(from, leaf);
    if (to.GetFullName() == from.GetFullName()) return;
    m_isAny = true;
    const auto isKnown = [&](const Move& move) { return move.from.GetFullName() == from.GetFullName(); };
    if (std::none_of(m_moves.begin(), m_moves.end(), isKnown)) m_moves.push_back({file, from, to, from, {}});
}

/// Another leaf, and everything else of the path as it is.
void FileRenames::AddChange(FileReferencingKeyword& keyword, const std::string& value, const std::string& leaf)
{
    const Context context(&m_keywords);
    const std::string name = value.substr(0, LeafBegin(value)) + leaf;
    if (name == value) return;
    m_isAny = true;
    const std::optional<std::string> text = keyword.TextWithName(name, context);
    if (!text) {
        throw DeckManagerException("The file " + value + " cannot be renamed to " + leaf + ": no " + keyword.GetName() +
                                   " can hold that name.");
    }
    const std::shared_ptr<std::string> before = keyword.GetDataText();
    m_changes.push_back(
        {&keyword, before ? WithLeafOnly(*before, *text, value.substr(LeafBegin(value)), leaf) : *text, before});
}

void FileRenames::FindKeywordFiles(bool generatedOnly)
{
    const Context context(&m_keywords);
    std::vector<KeywordFile*> files{m_keywords.RootFile().get()};
    for (const KeywordFileIterator& place : m_keywords.FindKeywords("INCLUDE", generatedOnly)) {
        FileReferencingKeyword* keyword = ReferenceAt(place);
        if (keyword == nullptr) continue;
        KeywordFile* included = KeywordFile::IncludedFileOf(keyword);
        if (included != nullptr && std::find(files.begin(), files.end(), included) == files.end())
            files.push_back(included);
        const std::optional<std::string> value = DataAccessUtils::GetINCLUDEFileName(keyword->GetData(context));
        if (!value) continue;
        const std::string* leaf = NewLeaf(value->substr(LeafBegin(*value)));
        if (leaf == nullptr) continue;
        m_isAny = true;
        AddChange(*keyword, *value, *leaf);
    }
    for (KeywordFile* file : files) {
        if (const std::string* leaf = NewLeaf(file->GetFileName().GetFileName()))
            AddMove(file, file->GetFileName(), *leaf);
    }
}

void FileRenames::FindGridFiles(const char* name, bool generatedOnly)
{
    const Context context(&m_keywords);
    const bool isGdfile = std::string_view(name) == "GDFILE";
    for (const KeywordFileIterator& place : m_keywords.FindKeywords(name, generatedOnly)) {
        FileReferencingKeyword* keyword = ReferenceAt(place);
        if (keyword == nullptr) continue;
        const Keywords::IKeywordData* data = keyword->GetData(context);
        const std::optional<std::string> value =
            isGdfile ? DataAccessUtils::GetGDFILEName(data) : DataAccessUtils::GetORDGRIDName(data);
        if (value) FindGridFile(*keyword, *value, isGdfile);
    }
}

void FileRenames::FindGridFile(FileReferencingKeyword& keyword, const std::string& value, bool hasManyFiles)
{
    const FileName file = keyword.NamedFile(Context(&m_keywords));
    if (!file.IsSet()) return;
    if (!hasManyFiles || !file.GetExtension().empty()) {
        const std::string* leaf = NewLeaf(file.GetFileName());
        if (leaf == nullptr) return;
        AddChange(keyword, value, *leaf);
        AddMove(nullptr, file, *leaf);
        return;
    }
    // The keyword names all of them at once.
    std::optional<std::string> root;
    for (const char* extension : gridExtensions) {
        FileName one = file;
        one.SetExtension(extension);
        const std::string* leaf = NewLeaf(one.GetFileName());
        if (leaf == nullptr) continue;
        const FileName renamed = Beside(one, *leaf);
        if (root && *root != renamed.GetRootName()) {
            throw DeckManagerException("The grid files of " + file.GetFullName() +
                                       " cannot be renamed: one keyword names them all, and their new names differ.");
        }
        if (!root) AddChange(keyword, value, renamed.GetRootName());
        root = renamed.GetRootName();
        AddMove(nullptr, one, *leaf);
    }
}

FileRenames::Leaves FileRenames::LeavesOf(const std::map<FileName, FileName>& names)
{
    Leaves leaves;
    for (const auto& [from, to] : names)
        leaves[from.GetFileName()] = to.GetFileName();
    return leaves;
}

FileRenamePlan FileRenames::Plan() const
{
    FileRenamePlan plan;
    for (const Move& move : m_moves)
        plan.moves.push_back({move.from, move.to});
    for (const Change& change : m_changes)
        plan.changes.push_back({change.keyword, change.before ? *change.before : std::string(), change.text});
    return plan;
}

bool FileRenames::IsFileOfDeck(const FileName& name) const
{
    const std::vector<KeywordFile*>& files = m_keywords.FilesInDeckOrder();
    return std::any_of(files.begin(), files.end(),
                       [&name](const KeywordFile* file) { return file->GetFileName() == name; });
}

void FileRenames::Check() const
{
    std::set<std::string> targets;
    std::set<std::string> sources;
    for (const Move& move : m_moves)
        sources.insert(FullNameOf(move.from));
    for (const Move& move : m_moves) {
        const auto refuse = [&move](const std::string& reason) {
            throw DeckManagerException("The file " + move.from.GetFullName() + " cannot be renamed to " +
                                       move.to.GetFullName() + ": " + reason + ".");
        };
        const std::string target = FullNameOf(move.to);
        if (!targets.insert(target).second) refuse("another file takes that name");
        if (sources.count(target) > 0) continue;
        if (IsFileOfDeck(move.to)) refuse("it is a file of the deck");
        if (Service::Directory(move.to.GetFullName()).IsDirectory()) refuse("it is a directory");
    }
    for (const Change& change : m_changes) {
        const KeywordFile* file =
            change.keyword->Owner() != nullptr ? change.keyword->Owner()->AsKeywordFile() : nullptr;
        if (file == nullptr || file->IsReadOnly()) {
            throw DeckManagerException("The keyword " + change.keyword->GetName() +
                                       " cannot be changed: its file is read-only.");
        }
    }
}

void FileRenames::Go(Move& move, const FileName& to)
{
    if (move.now.GetFullName() == to.GetFullName()) return;
    if (move.file != nullptr)
        m_fileManager.MoveKeywordFile(*move.file, to);
    else if (move.now.FileExists())
        FileName::Rename(move.now, to);
    move.now = to;
}

void FileRenames::Apply()
{
    try {
        // Names may be exchanged.
        for (Move& move : m_moves) {
            const std::string from = FullNameOf(move.from);
            const auto takesIt = [&](const Move& other) { return &other != &move && FullNameOf(other.to) == from; };
            if (std::any_of(m_moves.begin(), m_moves.end(), takesIt))
                Go(move, FileUtils::ConstructUniqueName(Beside(move.from, move.from.GetFileName() + ".renamed")));
        }
        for (Move& move : m_moves) {
            if (move.to.FileExists()) {
                const FileName aside =
                    FileUtils::ConstructUniqueName(Beside(move.to, move.to.GetFileName() + ".replaced"));
                FileName::Rename(move.to, aside);
                move.aside = aside;
            }
            Go(move, move.to);
        }
    } catch (const boost::filesystem::filesystem_error& failure) {
        TakeBack();
        throw DeckManagerException(std::string("Files of the deck cannot be renamed: ") + failure.what() + ".");
    } catch (...) {
        TakeBack();
        throw;
    }
    for (const Change& change : m_changes)
        change.keyword->SetDataText(change.text, true);
}

void FileRenames::TakeBack()
{
    // The same detour in the other direction.
    const auto quietly = [](const auto& step) {
        try {
            step();
        } catch (const std::exception&) {
            // What can't be taken back stays under the name that it has.
        }
    };
    for (Move& move : m_moves) {
        if (move.now.GetFullName() == move.from.GetFullName()) continue;
        quietly(
            [&] { Go(move, FileUtils::ConstructUniqueName(Beside(move.from, move.from.GetFileName() + ".renamed"))); });
    }
    for (Move& move : m_moves) {
        quietly([&] { Go(move, move.from); });
        if (move.aside.IsSet()) quietly([&] { FileName::Rename(std::exchange(move.aside, {}), move.to); });
    }
    for (const Change& change : m_changes) {
        if (change.before) change.keyword->SetDataText(*change.before, true);
    }
}

void FileRenames::Settle()
{
    for (const Move& move : m_moves) {
        Service::FileSystem::ErrorCode ignored;
        if (move.aside.IsSet()) Service::FileSystem::Instance().Unlink(move.aside.GetFullName(), ignored);
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
