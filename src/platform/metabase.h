#pragma once
// Value types of the IIS 6 metabase as IMSAdminBase takes them: open keys and the record that
// carries one property.

#include <cstddef>
#include <cstdint>

namespace webrig::platform {

// An open metabase key (METADATA_HANDLE). Handle 0 is the master root: paths opened from it are
// absolute ("/LM/W3SVC").
enum class MetadataHandle : uint32_t {};
inline constexpr MetadataHandle kMasterRootHandle{0};

// Open permissions (METADATA_PERMISSION_xxx).
namespace metadata_permission {
constexpr uint32_t read = 1;
constexpr uint32_t write = 2;
constexpr uint32_t read_write = read | write;
}  // namespace metadata_permission

// METADATA_RECORD: one property, with the buffer its data is read from or written to.
struct MetadataRecord {
    uint32_t identifier = 0;
    uint32_t attributes = 0;  // 1 inherit, 4 secure
    uint32_t userType = 0;    // 1 server, 2 file, 100 WAM, 101 ASP application
    uint32_t dataType = 0;    // 1 DWORD, 2 string, 3 binary, 5 multi-string
    uint32_t dataLength = 0;  // in bytes
    std::byte* data = nullptr;
    uint32_t dataTag = 0;
};

}  // namespace webrig::platform
