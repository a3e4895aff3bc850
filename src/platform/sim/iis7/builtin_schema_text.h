#pragma once
// The schema files in src/platform/sim/iis7/schema, compiled into the library by the build
// (builtin_schema_text.cpp.in): machine creation installs them in the machine's schema folder.

#include <span>
#include <string_view>

namespace webrig::sim::iis7 {

struct BuiltInSchemaFile {
    std::string_view name;  // "IIS_schema.xml"
    std::string_view text;
};

// In the order IIS reads a schema folder: by file name.
extern const std::span<const BuiltInSchemaFile> kBuiltInSchemaFiles;

}  // namespace webrig::sim::iis7
