// Takes any bytes as the XML cache file of a project, as they are and with the checksum of a whole one, and loads the
// project's deck.

#include <cstdint>

#include "fuzz/CacheFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace CacheFuzzing;
    static const Project project(CacheForm::Kind::Xml);
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    project.Try(input, false);
    project.Try(CacheForm::WithChecksum(std::string(input)), true);
    return 0;
}
