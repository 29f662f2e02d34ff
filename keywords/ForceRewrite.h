#pragma once

namespace Tarn::Fjel::Core::DeckManager {

/// Whether keywords are written from their data trees, whatever their text in the files looks like. One switch for the
/// process, off at first.
class ForceRewrite
{
public:
    ForceRewrite() = delete;

    static bool IsOn() { return on; }
    static void Reset() { on = false; }

    /// The switch stands so until the end of the scope, and then where it stood before.
    class Scope
    {
    public:
        explicit Scope(bool value) : m_before(on) { on = value; }
        ~Scope() { on = m_before; }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        bool m_before;
    };

private:
    inline static bool on = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
