#pragma once

#include <string>

#include <tarn/keywords/MDType.h>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordSyntax;

/// One node of the metadata of a keyword: what the data in its place look like.
///
/// Metadata are immutable, are owned by the syntax table and live as long as it does, so that a pointer to a node
/// is the node's identity. GetType() tells which derived interface a node has; a static_cast to it is safe.
class IKeywordMD
{
public:
    IKeywordMD(const IKeywordMD&) = delete;
    IKeywordMD& operator=(const IKeywordMD&) = delete;
    virtual ~IKeywordMD() = default;

    MDType GetType() const noexcept { return m_type; }

    /// The name in the catalogue: an item's or a nested container's; empty for a root or an element without one.
    virtual const std::string& GetName() const noexcept = 0;

    /// The keyword that the node belongs to; never null.
    virtual const IKeywordSyntax* GetSyntax() const noexcept = 0;

protected:
    explicit IKeywordMD(MDType type) noexcept : m_type(type) {}

private:
    MDType m_type;
};

} // namespace Tarn::Fjel::Core::Keywords
