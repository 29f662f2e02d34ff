#pragma once

#include "text/LineStreamWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

/// The common part of the writers that own a `LineStreamWriter` and leave the work to it.
class ForwardingLineWriter : public ILineWriter
{
public:
    using ILineWriter::Write;
    void Write(const char* text, std::int32_t length, bool indent) final { m_lines.Write(text, length, indent); }
    void Write(const char* text, bool indent) final { m_lines.Write(text, indent); }
    void Write(const std::string& text, bool indent) final { m_lines.Write(text, indent); }
    void FlushItems() final { m_lines.FlushItems(); }
    void WriteText(std::string_view text) final { m_lines.WriteText(text); }
    std::int64_t Copy(ILineReader& reader, long long first, long long last) final
    {
        return m_lines.Copy(reader, first, last);
    }
    void NewLine() final { m_lines.NewLine(); }
    void FlushLine() final { m_lines.FlushLine(); }
    bool GetDropTrailingDefaults() const final { return m_lines.GetDropTrailingDefaults(); }
    bool SetDropTrailingDefaults(bool value) final { return m_lines.SetDropTrailingDefaults(value); }
    std::int32_t SetValueRepeatLimit(std::int32_t limit) final { return m_lines.SetValueRepeatLimit(limit); }
    std::int32_t GetValueRepeatLimit() const final { return m_lines.GetValueRepeatLimit(); }
    std::int32_t SetDefaultRepeatLimit(std::int32_t limit) final { return m_lines.SetDefaultRepeatLimit(limit); }
    std::int32_t GetDefaultRepeatLimit() const final { return m_lines.GetDefaultRepeatLimit(); }
    void WriteRun(std::string_view text, bool indent, std::int64_t count) final
    {
        m_lines.WriteRun(text, indent, count);
    }
    void EndLine() final { m_lines.EndLine(); }
    std::int32_t SetLineLimit(std::int32_t limit) final { return m_lines.SetLineLimit(limit); }
    LineStreamWriter* Stream() final { return &m_lines; }

protected:
    explicit ForwardingLineWriter(LineStreamWriter::Target target) : m_lines(target) {}

    LineStreamWriter m_lines;
};

} // namespace Tarn::Fjel::Core::DeckManager
