// Takes any bytes as the binary cache file of a project, as they are and with the head and the checksum of a whole one,
// and loads the project's deck.

#include <cstdint>

#include "fuzz/CacheFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace CacheFuzzing;
    namespace Form = Service::BinaryForm;
    static const Project project(CacheForm::Kind::Binary);
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    project.Try(input, false);

    std::string whole(Form::head);
    whole += input;
    const std::uint64_t checksum = Form::Checksum(input);
    for (std::size_t i = 0; i < Form::checksumSize; ++i)
        whole += static_cast<char>(checksum >> (8 * i));
    project.Try(whole, true);
    return 0;
}
