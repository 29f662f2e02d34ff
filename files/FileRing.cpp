#include "files/FileRing.h"

#include <deque>
#include <unordered_map>

#include "files/KeywordFile.h"

namespace Tarn::Fjel::Core::DeckManager {

std::vector<KeywordFile*> FileRing::Closing(KeywordFile& including, KeywordFile& target)
{
    if (&including == &target) return {&including, &including};
    // A file that isn't loaded has no INCLUDE keywords.
    if (!target.IsLoaded()) return {};

    // Upwards from the including file: a file has few files above it, and may have thousands below.
    std::unordered_map<KeywordFile*, KeywordFile*> below{{&including, nullptr}};
    std::deque<KeywordFile*> waiting{&including};
    while (!waiting.empty()) {
        KeywordFile* file = waiting.front();
        waiting.pop_front();
        for (KeywordFile* parent : file->IncludingFiles()) {
            if (!below.emplace(parent, file).second) continue;
            if (parent != &target) {
                waiting.push_back(parent);
                continue;
            }
            std::vector<KeywordFile*> ring{&including};
            for (KeywordFile* step = parent; step != nullptr; step = below[step]) {
                ring.push_back(step);
            }
            return ring;
        }
    }
    return {};
}

} // namespace Tarn::Fjel::Core::DeckManager
