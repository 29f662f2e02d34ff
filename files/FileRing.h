#pragma once

#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

class KeywordFile;

/// Keeps the files of a deck a tree, or at least without rings, so that every walk over them ends.
class FileRing
{
public:
    /// The files along the ring that an INCLUDE of `target` in `including` would close, beginning and ending with
    /// `including`; empty when it closes none. A shortest ring, of those the one whose links were made first.
    static std::vector<KeywordFile*> Closing(KeywordFile& including, KeywordFile& target);

    /// Counts the links that went away: a path that was refused may be free again when the count has moved on.
    static unsigned long long DroppedLinks() { return s_dropped; }
    static void LinkDropped() { ++s_dropped; }

    /// While several files go back to what they were, some may seem to close a ring with those that are still to go.
    /// Until the end of the scope such a link isn't made, and nothing is told; then it is looked at again.
    class Truce
    {
    public:
        Truce() { ++s_truces; }
        ~Truce()
        {
            --s_truces;
            LinkDropped();
        }
        Truce(const Truce&) = delete;
        Truce& operator=(const Truce&) = delete;
        static bool IsOn() { return s_truces > 0; }
    };

private:
    inline static unsigned long long s_dropped = 1;
    inline static int s_truces = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
