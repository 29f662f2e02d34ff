#include <deckmanager/KeywordFormatter.h>

#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/service/Strings.h>

#include "keywords/KeywordDataSerializer.h"
#include "text/LineStringWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

std::string KeywordFormatter::CreationTemplate(const Keywords::IKeywordSyntax& syntax, const std::string& name)
{
    std::string text;
    if (syntax.KeepsLongName())
        text += "-- * Must provide a complete keyword name by replacing the * in the name below.\n";
    const bool hasData = syntax.GetMetaData() != nullptr;
    if (hasData) {
        text += "-- * This keyword contains data.  The data can be provided below the keyword name.\n"
                "--   If none is provided, it will be defaulted.\n";
    } else {
        text += "-- * This keyword has no data.\n";
    }
    text += "\n" + (Service::AllBlanks(name) ? syntax.GetName() : name) + "\n";
    if (!hasData) return text;

    const auto data = Keywords::KeywordDataFactory::Instance().ConstructSafely(syntax);
    LineStringWriter writer;
    KeywordDataSerializer::Serialize(*data, writer, false, Keywords::SimulatorType::Any);
    return text + writer.GetText();
}

} // namespace Tarn::Fjel::Core::DeckManager
