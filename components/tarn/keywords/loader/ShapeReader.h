#pragma once

#include <string>

#include <tarn/keywords/loader/FieldReader.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

/// Reads data shapes, those of one file's "shapes" included.
class ShapeReader
{
public:
    /// shapes: the file's named shapes, null if it has none; it must outlive the reader.
    explicit ShapeReader(const Json* shapes) : m_shapes(shapes) {}

    ShapeDefinition Read(const FieldReader& fields) const;

    /// The shape holds a record with an identity.
    static bool HasIdentity(const ShapeDefinition& shape);

private:
    ShapeDefinition ReadUse(const FieldReader& fields) const;
    void ReadRecord(const FieldReader& fields, ShapeDefinition& shape) const;
    void ReadList(const FieldReader& fields, ShapeDefinition& shape) const;
    void ReadMap(const FieldReader& fields, ShapeDefinition& shape) const;
    void ReadItem(const FieldReader& fields, ShapeDefinition& shape) const;
    void ReadOptions(const FieldReader& fields, ShapeDefinition& shape) const;
    void ReadDefaults(const FieldReader& fields, ShapeDefinition& shape) const;
    std::string DefaultText(const FieldReader& fields, const Json& value, const ShapeDefinition& shape) const;

    const Json* m_shapes;
    mutable int m_depth = 0; // of shapes within shapes
};

} // namespace Tarn::Fjel::Core::Keywords::Loader
