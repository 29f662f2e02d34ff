#include <tarn/service/Exception.h>

namespace Tarn::Fjel::Core::Service {

Exception::~Exception() = default;

} // namespace Tarn::Fjel::Core::Service
