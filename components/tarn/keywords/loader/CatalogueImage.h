#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tarn/keywords/loader/KeywordDefinition.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

/// A catalogue in the form in which it lies in a program: plain words and one block of characters, so that it needs
/// no work at start and no relocation. Keywords are decoded one at a time.
struct CatalogueImage
{
    std::span<const std::uint32_t> words;
    std::string_view characters;
};

/// The memory of an image that was made at run time.
struct OwnedImage
{
    std::vector<std::uint32_t> words;
    std::string characters;

    CatalogueImage View() const { return {words, characters}; }
};

OwnedImage WriteImage(const std::vector<KeywordDefinition>& keywords);

/// Reads an image made by WriteImage. The image must outlive the reader.
class ImageReader
{
public:
    explicit ImageReader(const CatalogueImage& image) : m_image(image) {}

    std::size_t KeywordCount() const;
    KeywordHead ReadHead(std::size_t keyword) const;
    KeywordTexts ReadTexts(std::size_t keyword) const;
    bool HasData(std::size_t keyword) const;
    /// REQUIRES: HasData(keyword).
    ShapeDefinition ReadData(std::size_t keyword) const;

private:
    CatalogueImage m_image;
};

} // namespace Tarn::Fjel::Core::Keywords::Loader
