#pragma once

#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "files/KeywordFile.h"
#include "keywords/Keyword.h"
#include "tests/support/FailingFileSystem.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/TempDir.h"
#include "tests/support/TestDeck.h"
#include "tests/support/Thrown.h"
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordFileManager.h>
#include <deckmanager/LineEnds.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

/// What nearly every test of a deck uses: one include, and `using namespace DeckTests`.
namespace DeckTests {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;
using Keywords::SectionType;
using Keywords::SimulatorType;
using TestSupport::FailingFileSystem;
using TestSupport::LogRecorder;
using TestSupport::TempDir;
using TestSupport::TestDeck;
using TestSupport::Thrown;
using Call = FailingFileSystem::Call;

/// The syntax of that name in the table in force, which must have one.
inline const Keywords::IKeywordSyntax& SyntaxOf(const std::string& name)
{
    return *Environment::Instance().GetSyntaxTable()->FindSyntax(name, true);
}

} // namespace DeckTests
