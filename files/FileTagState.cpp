#include "files/FileTagState.h"

#include <string>

#include "text/ILineWriter.h"
#include "text/TagRecognisers.h"
#include <deckmanager/Environment.h>
#include <deckmanager/ILineReader.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

bool FileTagState::Set(bool value)
{
    const bool before = m_value;
    if (value != before) {
        if (!m_changed) m_saved = before;
        m_changed = true;
        m_value = value;
    }
    return before;
}

void FileTagState::Restore()
{
    if (!m_changed) return;
    m_value = m_saved;
    m_changed = false;
}

void FileTagState::Read(ILineReader& reader)
{
    Clear();
    reader.Seek(0, 0);

    long long behindTag = 0;
    std::string line;
    while (reader.ReadNextLine(line, nullptr, true)) {
        if (Service::AllBlanks(line)) continue;
        if (!IsFileTagLine(line)) {
            reader.Seek(behindTag, 0);
            return;
        }
        m_value = true;
        behindTag = reader.Tell();
    }
    if (!m_value) reader.Seek(0, 0);
}

void FileTagState::Write(ILineWriter& writer) const
{
    const Environment& environment = Environment::Instance();
    if (m_value && environment.WriteGeneratedTags()) writer.WriteText(environment.GetFileGeneratedTag());
}

} // namespace Tarn::Fjel::Core::DeckManager
