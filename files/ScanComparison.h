#pragma once

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

class KeywordFile;

enum class ScanComparison
{
    Same,
    Other,
    Unreadable
};

/// Whether a scan of the text on the disk would find the keywords that the file lists, when `start` is the section in
/// force at its top. The file is loaded and neither edited nor pending.
///
/// Which words are keywords goes by the section in force. So only what stands in another section than when it was found
/// is read, and what stands in the text for the first time; where all is the same, it counts as found in its present
/// section from here on.
ScanComparison CompareWithScan(const KeywordFile& file, Keywords::SectionType start);

} // namespace Tarn::Fjel::Core::DeckManager
