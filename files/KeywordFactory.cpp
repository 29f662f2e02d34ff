#include "files/KeywordFactory.h"

#include <algorithm>
#include <string>

#include "files/KeywordGDFILE.h"
#include "files/KeywordINCLUDE.h"
#include "files/KeywordORDGRID.h"
#include "keywords/KeywordGeneric.h"
#include "text/KeywordFileReader.h"
#include "text/KnownSyntax.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

KnownSyntax s_gdfile("GDFILE");
KnownSyntax s_ordgrid("ORDGRID");

bool IsNameOf(const Keywords::IKeywordSyntax& syntax, const std::string& name)
{
    const Keywords::SyntaxList known = Environment::Instance().GetSyntaxTable()->FindSyntaxes(name);
    return std::find(known.begin(), known.end(), &syntax) != known.end();
}

/// Whether a keyword of that syntax may be made under a name in capitals.
bool TakesName(const Keywords::IKeywordSyntax& syntax, const std::string& name)
{
    if (syntax.KeepsLongName()) {
        return !Service::AllBlanks(name) && name.find('*') == std::string::npos && IsNameOf(syntax, name);
    }
    return syntax.AcceptsAnyName() || Service::AllBlanks(name) || name == syntax.GetName() || IsNameOf(syntax, name);
}

} // namespace

std::unique_ptr<Keyword> KeywordFactory::Create(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                                std::string_view name, bool validateName, IKeywordOwner* owner,
                                                const std::shared_ptr<KeywordFileReader>& reader, long long position,
                                                long long size, const KeywordMarks* marks)
{
    if (syntax.GetKind() == Keywords::KeywordKind::Include) {
        return CreateINCLUDE(syntax, variablesAllowed, name, owner, reader, position, size, marks);
    }
    if (s_gdfile.Is(&syntax)) return CreateGDFILE(syntax, variablesAllowed, name, owner, reader, position, size, marks);
    if (s_ordgrid.Is(&syntax)) {
        return CreateORDGRID(syntax, variablesAllowed, name, owner, reader, position, size, marks);
    }
    if (!validateName) {
        return std::make_unique<KeywordGeneric>(syntax, variablesAllowed, owner, reader, position, size, name, marks);
    }
    std::string capitals(name);
    Service::StringToUpper(capitals);
    if (!TakesName(syntax, capitals)) return nullptr;
    return std::make_unique<KeywordGeneric>(syntax, variablesAllowed, owner, reader, position, size, capitals, marks);
}

std::unique_ptr<Keyword> KeywordFactory::CreateINCLUDE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                                       std::string_view name, IKeywordOwner* owner,
                                                       const std::shared_ptr<KeywordFileReader>& reader,
                                                       long long position, long long size, const KeywordMarks* marks)
{
    if (syntax.GetKind() != Keywords::KeywordKind::Include) {
        throw DeckManagerException("KeywordFactory::CreateINCLUDE: only accepts INCLUDE syntax");
    }
    return std::make_unique<KeywordINCLUDE>(syntax, variablesAllowed, owner, reader, position, size, name, marks);
}

std::unique_ptr<Keyword> KeywordFactory::CreateGDFILE(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                                      std::string_view name, IKeywordOwner* owner,
                                                      const std::shared_ptr<KeywordFileReader>& reader,
                                                      long long position, long long size, const KeywordMarks* marks)
{
    if (!s_gdfile.Is(&syntax)) {
        throw DeckManagerException("KeywordFactory::CreateGDFILE: only accepts GDFILE syntax");
    }
    return std::make_unique<KeywordGDFILE>(syntax, variablesAllowed, owner, reader, position, size, name, marks);
}

std::unique_ptr<Keyword> KeywordFactory::CreateORDGRID(const Keywords::IKeywordSyntax& syntax, bool variablesAllowed,
                                                       std::string_view name, IKeywordOwner* owner,
                                                       const std::shared_ptr<KeywordFileReader>& reader,
                                                       long long position, long long size, const KeywordMarks* marks)
{
    if (!s_ordgrid.Is(&syntax)) {
        throw DeckManagerException("KeywordFactory::CreateORDGRID: only accepts ORDGRID syntax");
    }
    return std::make_unique<KeywordORDGRID>(syntax, variablesAllowed, owner, reader, position, size, name, marks);
}

} // namespace Tarn::Fjel::Core::DeckManager
