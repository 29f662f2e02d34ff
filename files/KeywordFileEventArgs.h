#pragma once

#include <unordered_set>
#include <vector>

#include <tarn/keywords/SectionType.h>
#include <tarn/service/DelegateArgs.h>

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;
class KeywordFile;

/// What happened to a file. Every change goes out on the file's `fileChanged`, and from there up to every file that
/// includes it.
class KeywordFileEventArgs : public Service::DelegateArgs
{
public:
    enum Kind : int
    {
        Insert = 0,
        Remove = 1,
        Move = 2,
        Cancel = 3,
        Overwrite = 4,
        KeywordUpdated = 5
    };

    /// The file concerned; outlives the event.
    KeywordFile& File() const { return *m_file; }
    Kind GetKind() const { return m_kind; }
    /// The keyword concerned; null for the events of a whole file. Outlives the event.
    Keyword* GetKeyword() const { return m_keyword; }
    /// True at the first call for a file: one that is reached on two ways passes the event on once.
    bool ComesTo(const KeywordFile& file) { return m_passed.insert(&file).second; }

protected:
    KeywordFileEventArgs(KeywordFile& file, Kind kind, Keyword* keyword)
        : m_file(&file), m_kind(kind), m_keyword(keyword)
    {
    }

private:
    KeywordFile* m_file;
    Kind m_kind;
    Keyword* m_keyword;
    std::unordered_set<const KeywordFile*> m_passed;
};

class KeywordFileInsertEventArgs : public KeywordFileEventArgs
{
public:
    KeywordFileInsertEventArgs(KeywordFile& file, Keyword& keyword) : KeywordFileEventArgs(file, Insert, &keyword) {}
};

class KeywordFileRemoveEventArgs : public KeywordFileEventArgs
{
public:
    KeywordFileRemoveEventArgs(KeywordFile& file, Keyword& keyword) : KeywordFileEventArgs(file, Remove, &keyword) {}
};

class KeywordFileMoveEventArgs : public KeywordFileEventArgs
{
public:
    KeywordFileMoveEventArgs(KeywordFile& source, KeywordFile& target, Keyword& keyword)
        : KeywordFileEventArgs(source, Move, &keyword), m_target(&target)
    {
    }
    KeywordFile& Target() const { return *m_target; }

private:
    KeywordFile* m_target;
};

class KeywordFileCancelEventArgs : public KeywordFileEventArgs
{
public:
    explicit KeywordFileCancelEventArgs(KeywordFile& file) : KeywordFileEventArgs(file, Cancel, nullptr) {}
};

class KeywordFileOverwriteEventArgs : public KeywordFileEventArgs
{
public:
    explicit KeywordFileOverwriteEventArgs(KeywordFile& file) : KeywordFileEventArgs(file, Overwrite, nullptr) {}
};

class KeywordFileSelectKeywordUpdatedEventArgs : public KeywordFileEventArgs
{
public:
    KeywordFileSelectKeywordUpdatedEventArgs(KeywordFile& file, Keyword& keyword)
        : KeywordFileEventArgs(file, KeywordUpdated, &keyword)
    {
    }
};

/// Asks which section is in force at the top of a file. Each handler that knows appends its answer.
class KeywordFileSectionQueryEventArgs : public Service::DelegateArgs
{
public:
    std::vector<Keywords::SectionType> sections;
};

/// Asks for the top file of the deck. A handler that knows sets it.
class KeywordFileDataFileQueryEventArgs : public Service::DelegateArgs
{
public:
    KeywordFile* dataFile = nullptr;
};

} // namespace Tarn::Fjel::Core::DeckManager
