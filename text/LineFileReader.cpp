#include "text/LineFileReader.h"

#include <tarn/service/FileStream.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// The reader's own window is the buffer: its smallest read already goes past that of the stream.
constexpr std::size_t StreamBufferSize = 4096;

} // namespace

LineFileReader::LineFileReader() : m_lines(std::make_unique<LineStreamReader>()) {}

LineFileReader::~LineFileReader()
{
    try {
        Close();
    } catch (...) {
    }
}

bool LineFileReader::Open(const std::string& fileName)
{
    Close();
    std::unique_ptr<std::istream> stream = std::make_unique<Service::FileInputStream>(fileName, StreamBufferSize);
    if (!stream->good()) return false;
    m_lines->Attach(stream);
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager
