// Turns the catalogue files into a C++ source with constant tables.
//
//     catalogue_compiler OUTPUT.cpp FILE.json...
//
// Says what is wrong with a broken definition on stderr and ends with status 1; the output is then left as it was.
#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include <tarn/keywords/loader/CatalogueImage.h>
#include <tarn/keywords/loader/CatalogueReader.h>

namespace {

using namespace Tarn::Fjel::Core::Keywords::Loader;

template <class Values, class Write>
void WriteArray(std::ostream& out, const char* type, const char* name, const Values& values, Write write)
{
    constexpr std::size_t perLine = 20;
    out << "constexpr " << type << " " << name << "[] = {";
    std::size_t column = 0;
    for (const auto value : values) {
        if (column++ % perLine == 0) out << "\n    ";
        write(value);
        out << ',';
    }
    out << "\n};\n\n";
}

void WriteSource(std::ostream& out, const OwnedImage& image)
{
    out << "// Made by catalogue_compiler from the catalogue files.\n"
           "#include <tarn/keywords/loader/BuiltInCatalogue.h>\n\n"
           "namespace Tarn::Fjel::Core::Keywords::Loader {\n\n"
           "namespace {\n\n";
    WriteArray(out, "std::uint32_t", "words", image.words, [&](std::uint32_t word) { out << word << 'u'; });
    // A closing zero keeps the array from being empty.
    WriteArray(out, "char", "characters", image.characters + '\0',
               [&](char c) { out << static_cast<int>(static_cast<signed char>(c)); });
    out << "} // namespace\n\n"
           "CatalogueImage BuiltInCatalogue()\n"
           "{\n"
           "    return {words, std::string_view(characters, sizeof characters - 1)};\n"
           "}\n\n"
           "} // namespace Tarn::Fjel::Core::Keywords::Loader\n";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: catalogue_compiler OUTPUT.cpp FILE.json...\n";
        return 2;
    }
    try {
        std::vector<std::string> files(argv + 2, argv + argc);
        std::sort(files.begin(), files.end());
        CatalogueReader reader;
        for (const std::string& file : files)
            reader.AddFile(file);
        reader.CheckWhole();
        std::ofstream out(argv[1], std::ios::binary);
        WriteSource(out, WriteImage(reader.Keywords()));
        out.close();
        if (!out) {
            std::cerr << argv[1] << " can't be written.\n";
            return 1;
        }
    } catch (const std::exception& problem) {
        std::cerr << problem.what() << '\n';
        return 1;
    }
    return 0;
}
