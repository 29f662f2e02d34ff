#pragma once

namespace Tarn::Fjel::Core::DeckManager {

/// Counts the changes of the links between files that can make an answer stale which a file keeps about its place in
/// the tree: its section at the top, its section at the end, the top file above it. Such an answer holds as long as the
/// count stands where it stood when it was found.
class LinkCounter
{
public:
    static unsigned long long Now() { return s_count; }
    /// Of those changes the ones that no reading of a file has made.
    static unsigned long long Edits() { return s_edits; }
    static void Changed()
    {
        ++s_count;
        ++s_edits;
    }
    /// A file that was read includes one that others include, too, or is such a one.
    static void Added() { ++s_count; }

private:
    inline static unsigned long long s_count = 1;
    inline static unsigned long long s_edits = 1;
};

/// An answer that holds until the links change.
template <class T>
class LinkCached
{
public:
    bool IsValid() const { return m_stamp == LinkCounter::Now(); }
    const T& Get() const { return m_value; }
    const T& Set(T value)
    {
        m_value = value;
        m_stamp = LinkCounter::Now();
        return m_value;
    }
    void Drop() { m_stamp = 0; }

private:
    T m_value{};
    unsigned long long m_stamp = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
