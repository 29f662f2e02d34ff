#pragma once

#include <memory>

#include <deckmanager/IKeywordFile.h>

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class ILineReader;
class Keyword;
class KeywordFileReader;

/// What a keyword asks of the file whose list holds it. `KeywordFile` is the one implementation; the interface keeps
/// the keyword classes free of the file classes.
class IKeywordOwner : public IKeywordFile
{
public:
    /// The file bears the generated tag.
    virtual bool IsFileTagged() const = 0;

    /// The keyword file for the text that a reader reads; null when the path is no file.
    virtual KeywordFile* DiskFileOf(const KeywordFileReader& reader, bool useVariables) const = 0;

    /// The reader that a pass over many keywords of the file keeps open, where it reads what `reader` reads; else null.
    virtual std::shared_ptr<ILineReader> OpenedReader(const KeywordFileReader& reader) const = 0;

    /// The context in which all files of the deck evaluate expressions.
    virtual const Context& RootContext() const = 0;

    /// The data of an INCLUDE keyword of this file have changed.
    virtual void KeywordUpdated(Keyword& keyword) = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
