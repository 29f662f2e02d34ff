#pragma once

#include <string>
#include <string_view>

/// What the two XML serializers agree on. Each value is an element that bears its name, with the index as `i` where it
/// isn't 0; a scalar has its value as `v`, an array its count as `n`, an object its type as `t` and its version as
/// `version` where it has them.
namespace Tarn::Fjel::Core::Service::XMLForm {

inline constexpr const char* indexName = "i";
inline constexpr const char* valueName = "v";
inline constexpr const char* countName = "n";
inline constexpr const char* typeName = "t";
inline constexpr const char* versionName = "version";

/// Any bytes as text that XML can hold: `\xHH` for control bytes, for the backslash, and, when text isn't valid UTF-8,
/// for bytes above 127.
std::string Escape(std::string_view text);
/// The bytes that Escape was given; false when text is nothing that it makes.
bool Unescape(std::string_view text, std::string& bytes);

} // namespace Tarn::Fjel::Core::Service::XMLForm
