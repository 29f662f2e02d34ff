#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <deckmanager/KeywordItemRepeatOptions.h>
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntaxTable;
}

namespace Tarn::Fjel::Core::DeckManager {

/// The process-wide settings by which a host chooses how decks are read and written, and the holder of the syntax
/// table.
///
/// Everything asks this object at the moment it decides. A host sets it up before it loads decks; there is no lock. It
/// lives from the first `Instance()` to `destroy()`, after which the next `Instance()` starts from the defaults again.
class Environment
{
public:
    static Environment& Instance()
    {
        if (!instance) Make();
        return *instance;
    }
    /// Deletes the object. References to it, and to strings that it gave out, end here.
    void destroy();

    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /// Notes a keyword that stands inside an `ACTIONX` block. The new handling stays in force only while every such
    /// keyword is one that both kinds of action know; once lost it stays lost.
    void useNewActionX(const std::string& keyword);
    void dontUseNewActionX() { m_newActionX = false; }
    bool useNewActionX() const { return m_newActionX; }
    /// Whether `keyword` has been noted, by exact comparison.
    bool isInActionX(const std::string& keyword) const;

    void setIsDSPCase() { m_dspCase = true; }
    /// False only with the new `ACTIONX` handling and no DSP case.
    bool outputCustomScripts() const { return !m_newActionX || m_dspCase; }

    /// Whether a deck with an `ACTIONX`, `ACTIONW` or `ACTION` has been loaded.
    void hasActionKeyword(bool value) { m_hasActionKeyword = value; }
    bool hasActionKeyword() const { return m_hasActionKeyword; }

    /// From now on lines are suppressed with the QUORL marker.
    void setIsQUORLDeck() { m_quorlDeck = true; }
    bool IsQUORLDeck() const { return m_quorlDeck; }

    /// The table that all look-ups use; not owned. Null brings back the built-in catalogue.
    void SetSyntaxTable(const Keywords::IKeywordSyntaxTable* table);
    /// Never null: the table that was set, else the built-in catalogue.
    const Keywords::IKeywordSyntaxTable* GetSyntaxTable() const
    {
        return m_syntaxTable ? m_syntaxTable : DefaultSyntaxTable();
    }
    /// A number that changes whenever `GetSyntaxTable` may give another table, over the life of the process. For those
    /// who keep what they found in it.
    static std::uint64_t SyntaxTableGeneration() { return syntaxTableGeneration; }

    /// "-- Generated".
    const std::string& GetDefaultGeneratedTag() const;

    /// The host's word in the tag of generated keywords. The tag is the default tag, a blank and the word; without a
    /// word the default tag.
    void SetCustomKeywordGeneratedTag(const std::string& word);
    const std::string& GetCustomKeywordGeneratedTag() const { return m_customKeywordTag; }
    const std::string& GetKeywordGeneratedTag() const { return m_keywordTag; }
    /// The same for the tag of generated files.
    void SetCustomFileGeneratedTag(const std::string& word);
    const std::string& GetCustomFileGeneratedTag() const { return m_customFileTag; }
    const std::string& GetFileGeneratedTag() const { return m_fileTag; }

    /// Whether tags are written at all.
    void WriteGeneratedTags(bool value) { m_writeGeneratedTags = value; }
    bool WriteGeneratedTags() const { return m_writeGeneratedTags; }

    /// Whether a load looks at words behind column 1 too, and warns of those that are keywords.
    void LogWarningForPossibleIndentedKeywords(bool value) { m_warnIndentedKeywords = value; }
    bool LogWarningForPossibleIndentedKeywords() const { return m_warnIndentedKeywords; }
    /// The text at the head of that warning; the empty text brings back the default.
    void setIndentedKeywordsWarningPrefix(const std::string& prefix) { m_indentedKeywordsWarningPrefix = prefix; }
    const std::string& getIndentedKeywordsWarningPrefix() const
    {
        return m_indentedKeywordsWarningPrefix.empty() ? m_defaultIndentedKeywordsWarningPrefix
                                                       : m_indentedKeywordsWarningPrefix;
    }
    static const std::string m_defaultIndentedKeywordsWarningPrefix;

    /// From how many equal tokens on a writer joins them to a repeat.
    void SetKeywordItemRepeatOptions(const KeywordItemRepeatOptions& options) { m_repeatOptions = options; }
    const KeywordItemRepeatOptions& GetKeywordItemRepeatOptions() const { return m_repeatOptions; }

    /// Whether the empty elements of a list get the data of others, where the list's syntax provides for that.
    void AutoFillEmptyListElements(bool value) { m_autoFillEmptyListElements = value; }
    bool AutoFillEmptyListElements() const { return m_autoFillEmptyListElements; }

    /// Whether strings become capitals when a keyword's data are read, but for those that preserve their case.
    void SetUppercaseKeywordStringsOnRead(bool value) { m_uppercaseOnRead = value; }
    bool GetUppercaseKeywordStringsOnRead() const { return m_uppercaseOnRead; }
    /// The same when a host sets data on a keyword.
    void SetUppercaseKeywordStringsOnWrite(bool value) { m_uppercaseOnWrite = value; }
    bool GetUppercaseKeywordStringsOnWrite() const { return m_uppercaseOnWrite; }

    /// Whether a string that is read is cut to the length that its item allows.
    void SetLimitStringLengthOnRead(bool value) { m_limitStringLengthOnRead = value; }
    bool LimitStringLengthOnRead() const { return m_limitStringLengthOnRead; }

    /// Whether a file that isn't on the disk and has no keywords stays away from the disk on commit.
    void SetPreventEmptyFileCreation(bool value) { m_preventEmptyFileCreation = value; }
    bool GetPreventEmptyFileCreation() const { return m_preventEmptyFileCreation; }

    /// Whether a file that can't be opened counts as empty, in silence; else it is an error.
    void SetAllowIncompleteDeck(bool value) { m_allowIncompleteDeck = value; }
    bool GetAllowIncompleteDeck() const { return m_allowIncompleteDeck; }

    /// For hosts; the library doesn't read it.
    void AssertOnPartialCommitViolation(bool value) { m_assertOnPartialCommitViolation = value; }
    bool AssertOnPartialCommitViolation() const { return m_assertOnPartialCommitViolation; }

    /// Whether a commit warns of files that were changed after a partial commit, and are written once more.
    void LogWarningOnPartialCommitViolation(bool value) { m_logWarningOnPartialCommitViolation = value; }
    bool LogWarningOnPartialCommitViolation() const { return m_logWarningOnPartialCommitViolation; }

    /// Whether a deck ends logically at its `END`.
    void DeckTerminatedByENDKeyword(bool value) { m_deckTerminatedByEnd = value; }
    bool DeckTerminatedByENDKeyword() const { return m_deckTerminatedByEnd; }

    /// Whether a load honours the skip keywords, and those of which simulator.
    void EnableSKIPENDSKIP(bool enable, Keywords::SimulatorType simulator)
    {
        m_skipEnabled = enable;
        m_skipSimulator = simulator;
    }
    bool SKIPENDSKIPEnabled() const { return m_skipEnabled; }
    Keywords::SimulatorType SKIPENDSKIPSimulator() const { return m_skipSimulator; }

    /// Whether the skip keywords themselves leave no entry in a file's list.
    void EnableOrdaleLegacySkipHandling(bool value) { m_ordaleLegacySkip = value; }
    bool OrdaleLegacySkipHandlingEnabled() const { return m_ordaleLegacySkip; }

    /// Whether suppressed lines are live text; else they are comments.
    void EnableKeywordSuppression(bool value) { m_keywordSuppression = value; }
    bool KeywordSuppressionEnabled() const { return m_keywordSuppression; }

    /// For hosts; the library doesn't read it.
    void ThrowOnKeywordSyntaxError(bool value) { m_throwOnSyntaxError = value; }
    bool ThrowOnKeywordSyntaxError() const { return m_throwOnSyntaxError; }

    /// `SimulatorType::NoSuppression` turns keyword suppression off, no value turns it on.
    void SetSimulatorType(Keywords::SimulatorType type);
    Keywords::SimulatorType GetSimulatorType() const { return m_simulatorType; }

    /// For hosts; the library doesn't read it.
    void SetPreferredDefaults(Keywords::SimulatorType type) { m_preferredDefaults = type; }
    Keywords::SimulatorType GetPreferredDefaults() const { return m_preferredDefaults; }

    /// Whether the import of a new root file resets all files.
    void SetAllowCacheRebuild(bool value) { m_allowCacheRebuild = value; }
    bool AllowCacheRebuild() const { return m_allowCacheRebuild; }

    /// For hosts; the library doesn't read it.
    void SetMaxDeckCacheSize(std::int32_t size) { m_maxDeckCacheSize = size; }
    std::int32_t MaxDeckCacheSize() const { return m_maxDeckCacheSize; }

    /// Whether path aliases are resolved; else a `PATHS` is an error at load.
    void SetPATHSSupport(bool value) { m_pathsSupport = value; }
    bool PATHSSupport() const { return m_pathsSupport; }

    /// The length, in characters, that a written line keeps to where it can.
    void SetDeckWriteMaxLineLength(std::int32_t length) { m_deckWriteMaxLineLength = length; }
    std::int32_t DeckWriteMaxLineLength() const { return m_deckWriteMaxLineLength; }

    /// Whether keywords are judged without the rest of their deck: sizes that other keywords tell are then not known.
    void SetIncompleteDeckKeywordValidation(bool value) { m_incompleteDeckKeywordValidation = value; }
    bool IncompleteDeckKeywordValidation() const { return m_incompleteDeckKeywordValidation; }

private:
    Environment();
    ~Environment();
    static void Make();
    static const Keywords::IKeywordSyntaxTable* DefaultSyntaxTable();

    static Environment* instance;
    static std::uint64_t syntaxTableGeneration;

    bool m_newActionX = true;
    bool m_dspCase = false;
    bool m_hasActionKeyword = false;
    bool m_quorlDeck = false;
    std::vector<std::string> m_actionXKeywords;
    const Keywords::IKeywordSyntaxTable* m_syntaxTable = nullptr;
    std::string m_customKeywordTag;
    std::string m_customFileTag;
    std::string m_keywordTag;
    std::string m_fileTag;
    bool m_writeGeneratedTags = true;
    bool m_warnIndentedKeywords = false;
    std::string m_indentedKeywordsWarningPrefix;
    KeywordItemRepeatOptions m_repeatOptions;
    bool m_autoFillEmptyListElements = true;
    bool m_uppercaseOnRead = true;
    bool m_uppercaseOnWrite = true;
    bool m_limitStringLengthOnRead = false;
    bool m_preventEmptyFileCreation = false;
    bool m_allowIncompleteDeck = false;
    bool m_assertOnPartialCommitViolation = true;
    bool m_logWarningOnPartialCommitViolation = true;
    bool m_deckTerminatedByEnd = true;
    bool m_skipEnabled = false;
    Keywords::SimulatorType m_skipSimulator{11};
    bool m_ordaleLegacySkip = false;
    bool m_keywordSuppression = true;
    bool m_throwOnSyntaxError = false;
    Keywords::SimulatorType m_simulatorType{11};
    Keywords::SimulatorType m_preferredDefaults{11};
    bool m_allowCacheRebuild = true;
    std::int32_t m_maxDeckCacheSize = 2147483647;
    bool m_pathsSupport = false;
    std::int32_t m_deckWriteMaxLineLength = 72;
    bool m_incompleteDeckKeywordValidation = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
