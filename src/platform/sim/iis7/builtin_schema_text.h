#pragma once
// The text of webrig_schema.xml, compiled into the library by the build
// (builtin_schema_text.cpp.in).

#include <string_view>

namespace webrig::sim::iis7 {

extern const std::string_view kBuiltInSchemaText;

}  // namespace webrig::sim::iis7
