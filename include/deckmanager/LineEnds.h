#pragma once

namespace Tarn::Fjel::Core::DeckManager {

/// Which line ends this process writes into files. What is written into strings doesn't depend on it.
class LineEnds
{
public:
    enum class Policy
    {
        /// CR LF everywhere, also in what is copied. The default.
        CrLf,
        /// A file that exists keeps its own. What is copied keeps every byte, and what is written afresh ends its lines
        /// as the file's first line does. A new file gets the line ends of its deck's top file, or the platform's. Text
        /// from a file of the other kind is converted.
        Keep
    };

    LineEnds() = delete;

    static void SetPolicy(Policy policy);
    static Policy GetPolicy();
};

} // namespace Tarn::Fjel::Core::DeckManager
