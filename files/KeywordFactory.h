#pragma once

#include <memory>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class IKeywordOwner;
class Keyword;
class KeywordFileReader;
struct KeywordMarks;

/// Makes keyword objects, each of the class that its syntax asks for.
class KeywordFactory
{
public:
    /// `name` blank: the syntax's own. With `validateName` an ordinary keyword is made only under a name that its
    /// syntax takes, in capitals; null otherwise. `marks` is what a scan has learnt; null: the file is asked.
    static std::unique_ptr<Keyword> Create(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                           std::string_view name, bool validateName, IKeywordOwner* owner,
                                           const std::shared_ptr<KeywordFileReader>& reader, long long position,
                                           long long size, const KeywordMarks* marks = nullptr);

    /// These throw `DeckManagerException` for any other syntax.
    static std::unique_ptr<Keyword> CreateINCLUDE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                                  std::string_view name, IKeywordOwner* owner,
                                                  const std::shared_ptr<KeywordFileReader>& reader, long long position,
                                                  long long size, const KeywordMarks* marks = nullptr);
    static std::unique_ptr<Keyword> CreateGDFILE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                                 std::string_view name, IKeywordOwner* owner,
                                                 const std::shared_ptr<KeywordFileReader>& reader, long long position,
                                                 long long size, const KeywordMarks* marks = nullptr);
    static std::unique_ptr<Keyword> CreateORDGRID(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                                  std::string_view name, IKeywordOwner* owner,
                                                  const std::shared_ptr<KeywordFileReader>& reader, long long position,
                                                  long long size, const KeywordMarks* marks = nullptr);
};

} // namespace Tarn::Fjel::Core::DeckManager
