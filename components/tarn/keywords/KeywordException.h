#pragma once

#include <tarn/service/Exception.h>

namespace Tarn::Fjel::Core::Keywords {

/// Thrown where data, metadata or a catalogue are used in a way that they don't allow: a value asked for as another
/// kind, an index out of range, a definition that makes no sense. Bad deck text never leads here.
class KeywordException : public Service::Exception
{
public:
    using Service::Exception::Exception;
};

} // namespace Tarn::Fjel::Core::Keywords
