#pragma once

#include <cstdint>

#include "text/ILineWriter.h"
#include "text/Tokenizer.h"

namespace Tarn::Fjel::Core::DeckManager {

/// A container's way of laying out its tokens, until the end of the scope; then what was in force before.
class LayoutScope
{
public:
    LayoutScope(ILineWriter& writer, bool dropTrailingDefaults, std::int32_t valueRepeat, std::int32_t defaultRepeat)
        : m_writer(writer), m_drop(writer.SetDropTrailingDefaults(dropTrailingDefaults)),
          m_valueRepeat(writer.SetValueRepeatLimit(valueRepeat)),
          m_defaultRepeat(writer.SetDefaultRepeatLimit(defaultRepeat))
    {
    }
    ~LayoutScope()
    {
        m_writer.SetDropTrailingDefaults(m_drop);
        m_writer.SetValueRepeatLimit(m_valueRepeat);
        m_writer.SetDefaultRepeatLimit(m_defaultRepeat);
    }
    LayoutScope(const LayoutScope&) = delete;
    LayoutScope& operator=(const LayoutScope&) = delete;

private:
    ILineWriter& m_writer;
    bool m_drop;
    std::int32_t m_valueRepeat;
    std::int32_t m_defaultRepeat;
};

/// Until the end of the scope, lines are as long as a reader takes them: for what must stand on one line.
class WholeLineScope
{
public:
    WholeLineScope(ILineWriter& writer, bool applies) : m_writer(writer), m_applies(applies)
    {
        if (m_applies) m_before = writer.SetLineLimit(Tokenizer::MaxLineLength);
    }
    ~WholeLineScope()
    {
        if (m_applies) m_writer.SetLineLimit(m_before);
    }
    WholeLineScope(const WholeLineScope&) = delete;
    WholeLineScope& operator=(const WholeLineScope&) = delete;

private:
    ILineWriter& m_writer;
    bool m_applies;
    std::int32_t m_before = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
